#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/accessibility/AccessibleWidgetsPrivate.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Container.h>

#include <QLabel>
#include <QPainter>
#include <QPointer>

#include <algorithm>
#include <cmath>

namespace Marlix::Widgets {

namespace {

// How far up a widget's parents its editor may sit: a field in a number in a vector in a transform editor.
constexpr int EDITOR_DEPTH = 4;

QString stripMnemonic(QString text)
{
    // "&&" is a literal ampersand; a single one marks the mnemonic and is not read aloud.
    text.replace(QLatin1String("&&"), QStringLiteral("\x01"));
    text.remove(QLatin1Char('&'));
    text.replace(QLatin1Char('\x01'), QLatin1Char('&'));
    return text;
}

/// The text of a label among the children of `scope` whose buddy is `widget` or `level`.
QString findBuddyText(const QWidget* scope, const QWidget* widget, const QWidget* level)
{
    for (const QObject* child : scope->children()) {
        const auto* label = qobject_cast<const QLabel*>(child);
        if (label && (label->buddy() == widget || label->buddy() == level) && !label->text().isEmpty())
            return stripMnemonic(label->text());
    }
    return {};
}

/// The parents that belong to the same editor as the widget: library editors and composites, or widgets whose focus
/// they take. A page or a dock is none, so a field outside any editor never takes its page's name.
bool belongsToEditor(const QWidget* parent)
{
    return dynamic_cast<const BaseWithModel*>(parent) || qobject_cast<const Container*>(parent) || parent->focusProxy();
}

/// One child that is no widget, or a part of such a child (`sub` not negative): it asks its composite for its
/// description each time, so it never holds stale data.
class AccessiblePart final : public QAccessibleInterface, public QAccessibleValueInterface
{
public:
    AccessiblePart(QWidget* owner, int index, int sub)
        : owner(owner)
        , index(index)
        , sub(sub)
    {
    }

    bool isValid() const override
    {
        const AccessibleCompositeWidget* c = composite();
        return c && index < c->partCount() && sub < (sub < 0 ? 0 : c->subPartCount(index));
    }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override
    {
        const AccessibleCompositeWidget* c = composite();
        return c ? c->window() : nullptr;
    }
    QAccessibleInterface* parent() const override
    {
        AccessibleCompositeWidget* c = composite();
        return c && sub >= 0 ? c->partInterface(index, -1) : c;
    }
    QAccessibleInterface* child(int i) const override
    {
        return i >= 0 && i < childCount() ? composite()->partInterface(index, i) : nullptr;
    }
    int childCount() const override { return sub < 0 && isValid() ? composite()->subPartCount(index) : 0; }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        const auto* part = dynamic_cast<const AccessiblePart*>(child);
        return part && part->owner == owner && part->index == index && sub < 0 && part->sub >= 0
                && part->sub < childCount()
            ? part->sub
            : -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override
    {
        for (int i = childCount() - 1; i >= 0; --i) {
            if (composite()->describeSubPart(index, i).rect.contains(x, y))
                return child(i);
        }
        return nullptr;
    }
    QAccessibleInterface* focusChild() const override { return nullptr; }
    QString text(QAccessible::Text t) const override
    {
        if (!isValid())
            return {};
        const AccessiblePartDescription part = describe();
        if (t == QAccessible::Name)
            return part.name;
        if (t == QAccessible::Description)
            return part.description;
        if (t == QAccessible::Value && part.value)
            return QString::number(part.value(), 'f', 2);
        return {};
    }
    void setText(QAccessible::Text, const QString&) override { }
    QRect rect() const override { return isValid() ? describe().rect : QRect(); }
    QAccessible::Role role() const override { return isValid() ? describe().role : QAccessible::NoRole; }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        return describe().state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface && isValid() && describe().value)
            return static_cast<QAccessibleValueInterface*>(this);
        return nullptr;
    }

    QVariant currentValue() const override { return isValid() && describe().value ? describe().value() : QVariant(); }
    void setCurrentValue(const QVariant& value) override
    {
        if (!isValid())
            return;
        const AccessiblePartDescription part = describe();
        bool ok = false;
        const double number = value.toDouble(&ok);
        // As for whole widgets: the part of a disabled widget takes no value from assistive technology.
        if (ok && std::isfinite(number) && part.setValue && owner->isEnabled())
            part.setValue(clampAccessibleValue(part, number));
    }
    QVariant maximumValue() const override { return isValid() ? describe().maximum : QVariant(); }
    QVariant minimumValue() const override { return isValid() ? describe().minimum : QVariant(); }
    QVariant minimumStepSize() const override { return isValid() ? describe().step : QVariant(); }

    const QWidget* getOwner() const { return owner.data(); }
    int getIndex() const { return index; }
    int getSub() const { return sub; }

private:
    AccessibleCompositeWidget* composite() const
    {
        return owner ? dynamic_cast<AccessibleCompositeWidget*>(QAccessible::queryAccessibleInterface(owner.data()))
                     : nullptr;
    }
    AccessiblePartDescription describe() const
    {
        return sub < 0 ? composite()->describePart(index) : composite()->describeSubPart(index, sub);
    }

    QPointer<QWidget> owner;
    int index;
    int sub;
};

QAccessibleInterface* factory(const QString& className, QObject* object)
{
    // Only widgets of this library are answered; everything else keeps Qt's own interfaces.
    if (!object || !object->isWidgetType() || !className.startsWith(QLatin1String("Marlix::")))
        return nullptr;
    return makeEditorAccessible(className, object);
}

} // namespace

void installAccessibleFactory()
{
    QAccessible::installFactory(&factory);
}

void removeAccessibleFactory()
{
    QAccessible::removeFactory(&factory);
}

void drawKeyboardFocus(QPainter& painter, const QWidget& widget, const QRect& rect, double width)
{
    if (!widget.hasFocus() || rect.isEmpty())
        return;
    const int pixels = std::max(1, getDeviceIndependentPixels(width, &widget));
    painter.save();
    // The pen is centred on the path: half its width inside the rectangle covers whole pixels along the edge.
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(widget.palette().color(QPalette::Active, QPalette::Highlight), pixels, Qt::SolidLine,
        Qt::SquareCap, Qt::MiterJoin));
    const double half = pixels / 2.0;
    painter.drawRect(QRectF(rect).adjusted(half, half, -half, -half));
    painter.restore();
}

void setEditorAccessibleName(QWidget* editor, const QString& name)
{
    editor->setAccessibleName(name);
    QWidget* field = editor;
    while (field->focusProxy())
        field = field->focusProxy();
    const bool libraryField = QByteArrayView(field->metaObject()->className()).startsWith("Marlix::");
    if (field != editor && !libraryField)
        field->setAccessibleName(name);
}

QString getContextualAccessibleName(const QWidget* widget)
{
    if (!widget)
        return {};
    if (!widget->accessibleName().isEmpty())
        return widget->accessibleName();
    // The innermost label names the part (the "X" of a vector, whose buddy is the field inside the component); the
    // nearest named editor above it gives the context.
    QString label;
    const QWidget* level = widget;
    for (int depth = 0; level && depth <= EDITOR_DEPTH; ++depth) {
        if (depth > 0 && !level->accessibleName().isEmpty())
            return label.isEmpty() ? level->accessibleName()
                                   : AccessibleCompositeWidget::tr("%1 %2").arg(level->accessibleName(), label);
        const QWidget* parent = level->parentWidget();
        if (!parent || level->isWindow())
            break;
        if (label.isEmpty())
            label = findBuddyText(parent, widget, level);
        if (!belongsToEditor(parent))
            break;
        level = parent;
    }
    return label;
}

double clampAccessibleValue(const AccessiblePartDescription& part, double value)
{
    return std::clamp(value, std::min(part.minimum, part.maximum), std::max(part.minimum, part.maximum));
}

AccessibleCompositeWidget::AccessibleCompositeWidget(QWidget* widget, QAccessible::Role role)
    : QAccessibleWidget(widget, role)
{
}

AccessibleCompositeWidget::~AccessibleCompositeWidget()
{
    for (const auto& [index, id] : parts)
        QAccessible::deleteAccessibleInterface(id);
}

QString AccessibleCompositeWidget::text(QAccessible::Text t) const
{
    if (t == QAccessible::Name)
        return getContextualAccessibleName(widget());
    return QAccessibleWidget::text(t);
}

AccessiblePartDescription AccessibleCompositeWidget::describePart(int) const
{
    return {};
}

int AccessibleCompositeWidget::subPartCount(int) const
{
    return 0;
}

AccessiblePartDescription AccessibleCompositeWidget::describeSubPart(int, int) const
{
    return {};
}

QAccessibleInterface* AccessibleCompositeWidget::partInterface(int part, int sub) const
{
    if (const auto found = parts.find({ part, sub }); found != parts.end())
        return QAccessible::accessibleInterface(found->second);
    auto* made = new AccessiblePart(widget(), part, sub);
    parts.emplace(std::pair(part, sub), QAccessible::registerAccessibleInterface(made));
    return made;
}

int AccessibleCompositeWidget::widgetChildCount() const
{
    return QAccessibleWidget::childCount();
}

int AccessibleCompositeWidget::childCount() const
{
    return widgetChildCount() + partCount();
}

QAccessibleInterface* AccessibleCompositeWidget::child(int index) const
{
    const int widgets = widgetChildCount();
    if (index < widgets)
        return QAccessibleWidget::child(index);
    const int part = index - widgets;
    return part < partCount() ? partInterface(part, -1) : nullptr;
}

int AccessibleCompositeWidget::indexOfChild(const QAccessibleInterface* child) const
{
    if (const auto* part = dynamic_cast<const AccessiblePart*>(child))
        return part->getOwner() == widget() && part->getSub() < 0 && part->getIndex() < partCount()
            ? widgetChildCount() + part->getIndex()
            : -1;
    return QAccessibleWidget::indexOfChild(child);
}

QAccessibleInterface* AccessibleCompositeWidget::childAt(int x, int y) const
{
    // Parts lie over the widget's own area, so they are asked first; the topmost (last drawn) wins.
    for (int part = partCount() - 1; part >= 0; --part) {
        if (describePart(part).rect.contains(x, y))
            return child(widgetChildCount() + part);
    }
    return QAccessibleWidget::childAt(x, y);
}

QString AccessibleValueWidget::text(QAccessible::Text t) const
{
    if (t == QAccessible::Value) {
        const AccessiblePartDescription value = describeValue();
        return value.value ? QString::number(value.value(), 'g', 6) : QString();
    }
    return AccessibleCompositeWidget::text(t);
}

void* AccessibleValueWidget::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::ValueInterface)
        return static_cast<QAccessibleValueInterface*>(this);
    return AccessibleCompositeWidget::interface_cast(type);
}

QVariant AccessibleValueWidget::currentValue() const
{
    const AccessiblePartDescription value = describeValue();
    return value.value ? QVariant(value.value()) : QVariant();
}

void AccessibleValueWidget::setCurrentValue(const QVariant& value)
{
    const AccessiblePartDescription part = describeValue();
    bool ok = false;
    const double number = value.toDouble(&ok);
    // A disabled widget takes no value from the keyboard or the mouse, nor from assistive technology.
    if (ok && std::isfinite(number) && part.setValue && widget()->isEnabled())
        part.setValue(clampAccessibleValue(part, number));
}

QVariant AccessibleValueWidget::maximumValue() const
{
    return describeValue().maximum;
}

QVariant AccessibleValueWidget::minimumValue() const
{
    return describeValue().minimum;
}

QVariant AccessibleValueWidget::minimumStepSize() const
{
    return describeValue().step;
}

} // namespace Marlix::Widgets
