#include <MarlixLibQt/widgets/properties/PropertySheetItem.h>

#include <MarlixLib/data/Observable.h>
#include <MarlixLib/undo/IUndoManager.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/accessibility/AccessibleWidgetsPrivate.h>
#include <MarlixLibQt/widgets/frame/Collapsible.h>
#include <MarlixLibQt/widgets/properties/IPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/PropertyModelBase.h>
#include <MarlixLibQt/widgets/properties/PropertySheet.h>
#include <MarlixLibQt/widgets/properties/PropertyWidgetConstructor.h>
#include <MarlixLibQt/widgets/properties/UiAttributes.h>

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QEvent>
#include <QLabel>
#include <QMenu>
#include <QStyle>
#include <QToolButton>

#include <algorithm>

namespace Marlix::Widgets {

namespace {

const char* const RESET_ICON = ":icons/ui/Zorva.Common/Reset.png";
const char* const FLAT_BUTTON_PROPERTY = "Zorva.FlatButton";

// The conjunction of `predicate` over `objects`, recording what it reads. It stops at the first object for which the
// predicate fails: while that one fails the result cannot change, and what it read is recorded.
bool holdsForEvery(const Function<bool(const GenericDataObject&)>& predicate,
    const Array<EntityHolder<Entity>>& objects, FlatSet<const PropertyDefinition*>& dependencies, const String& path)
{
    if (!predicate)
        return true;
    for (const auto& object : objects) {
        const ObservationScope scope;
        bool holds = true;
        try {
            holds = predicate(*object);
        } catch (const Exception& error) {
            // A condition that cannot be decided leaves the property reachable rather than hiding it for good.
            qWarning("The row condition of \"%s\" failed: %s", path.c_str(), error.getMessage().c_str());
        }
        for (const PropertyDefinition* read : scope.getAccessedProperties())
            dependencies.insert(read);
        if (!holds)
            return false;
    }
    return true;
}

} // namespace

PropertySheetItem::PropertySheetItem(PropertySheet& sheet, GenericPropertyAccessor property, Collapsible* section)
    : QWidget(section)
    , sheet(sheet)
    , section(section)
    , accessor(std::move(property))
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    const GenericProperty first = accessor.getProperty();
    const PropertyDefinition& definition = first.getDefinition();
    uiName = getPropertyUiName(first);
    description = getPropertyUiDescription(first);
    const UserData& options = definition.getUserData();
    const Flags<UiFlag> flags = UiFlags::of(options);
    writable = !definition.getFlags().has(PropertyFlag::ReadOnly) && !flags.has(UiFlag::ReadOnly);
    hidden = flags.has(UiFlag::Hidden);
    resetOffered = !flags.has(UiFlag::NoReset);
    visibleIf = options.get<UiVisibleIf>(UiVisibleIf::ATTRIBUTE);
    enabledIf = options.get<UiEnabledIf>(UiEnabledIf::ATTRIBUTE);
    dynamicName = options.get<UiDynamicName>(UiDynamicName::ATTRIBUTE);
    if (dynamicName && !dynamicName->name)
        dynamicName = nullptr;
    valueSetter = options.get<UiValueSetter>(UiValueSetter::ATTRIBUTE);
    if (const auto* name = options.get<String>(ENABLER_PROPERTY_ATTRIBUTE))
        enabler = *name;

    nameLabel = new QLabel(uiName, this);
    nameLabel->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    // Drawn like the editors' text, whose palettes dim it in a disabled row, so a row off by its condition reads so.
    nameLabel->setForegroundRole(QPalette::Text);

    // The row is the editor's parent: it places the editor, and the editor stays a descendant of the section.
    PropertyWidgetConstructor::Arguments arguments;
    arguments.parent = this;
    arguments.host = sheet.getPropertySheetHost();
    arguments.displayName = fromQt(uiName);
    QWidget* made = nullptr;
    try {
        made = PropertyWidgetConstructor::make(accessor, arguments);
    } catch (const Exception& error) {
        made = PropertyWidgetConstructor::unsupportedPropertyConstructor(toQt(error.getMessage()), this);
    }
    if (!made)
        made = PropertyWidgetConstructor::unsupportedPropertyConstructor(tr("No editor"), this);
    if (made->parentWidget() != this)
        made->setParent(this);
    setEditorAccessibleName(made, uiName);
    nameLabel->setBuddy(made);
    editorWidget = made;

    refreshValueState();
    updateLabel();
}

PropertySheetItem::~PropertySheetItem() = default;

void PropertySheetItem::setRowMetrics(int height, int gap)
{
    rowHeight = std::max(0, height);
    spacing = std::max(0, gap);
    if (resetTool)
        resetTool->setIconSize(QSize(rowHeight, rowHeight) * 2 / 3);
    updateGeometry();
    placeChildren();
}

void PropertySheetItem::setLabelWidth(int width)
{
    if (width == labelColumnWidth)
        return;
    labelColumnWidth = std::max(0, width);
    updateGeometry();
    placeChildren();
}

int PropertySheetItem::labelWidthHint() const
{
    return nameLabel->sizeHint().width();
}

int PropertySheetItem::resetSlotWidth() const
{
    if (resetTool)
        return std::max(rowHeight, resetTool->sizeHint().width());
    return rowHeight > 0 ? rowHeight : fontMetrics().height();
}

QSize PropertySheetItem::sizeHint() const
{
    const QSize editorHint = editorWidget ? editorWidget->sizeHint() : QSize();
    return { labelColumnWidth + spacing + std::max(0, editorHint.width()) + spacing + resetSlotWidth(),
        std::max({ rowHeight, editorHint.height(), nameLabel->sizeHint().height() }) };
}

QSize PropertySheetItem::minimumSizeHint() const
{
    const QSize editorMinimum = editorWidget ? editorWidget->minimumSizeHint() : QSize();
    return { labelColumnWidth + spacing + std::max(0, editorMinimum.width()) + spacing + resetSlotWidth(),
        sizeHint().height() };
}

void PropertySheetItem::placeChildren()
{
    // Placed by hand: a layout object per row would cost more than the row's own widgets in a sheet of hundreds.
    const QRect area = rect();
    const int lineHeight = rowHeight > 0 ? std::min(rowHeight, area.height()) : area.height();
    const int slot = resetSlotWidth();
    const auto place = [this, &area](QWidget* widget, const QRect& logical) {
        widget->setGeometry(QStyle::visualRect(layoutDirection(), area, logical));
    };
    place(nameLabel, QRect(0, 0, labelColumnWidth, lineHeight));
    const int editorLeft = labelColumnWidth + spacing;
    const int editorWidth = std::max(0, area.width() - editorLeft - spacing - slot);
    if (editorWidget)
        place(editorWidget, QRect(editorLeft, 0, editorWidth, area.height()));
    if (resetTool) {
        const int side = std::min(slot, lineHeight);
        place(resetTool, QRect(area.width() - slot + (slot - side) / 2, (lineHeight - side) / 2, side, side));
    }
}

bool PropertySheetItem::event(QEvent* event)
{
    // A child whose size hint changed (an editor that grows a line) asks its parent to lay out again.
    if (event->type() == QEvent::LayoutRequest) {
        updateGeometry();
        placeChildren();
        return true;
    }
    return QWidget::event(event);
}

void PropertySheetItem::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    placeChildren();
}

void PropertySheetItem::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu(this);
    QAction* reset = nullptr;
    if (resetOffered) {
        reset = menu.addAction(QIcon(QString::fromLatin1(RESET_ICON)), tr("Reset to Default"));
        reset->setEnabled(resettable);
    }
    QAction* setter = nullptr;
    if (valueSetter) {
        setter = menu.addAction(toQt(valueSetter->label));
        setter->setEnabled(writable && enabledByCondition);
    }
    if (menu.isEmpty()) {
        event->ignore();
        return;
    }
    QAction* chosen = menu.exec(event->globalPos());
    if (chosen && chosen == reset)
        resetToDefault();
    else if (chosen && chosen == setter)
        applyValueSetter();
    event->accept();
}

bool PropertySheetItem::evaluateConditions()
{
    const bool wasShown = shownByCondition;
    dependencies = {};
    const Array<EntityHolder<Entity>>& objects = accessor.getObjects();
    shownByCondition = !hidden && (!visibleIf || holdsForEvery(visibleIf->predicate, objects, dependencies, getPath()));
    enabledByCondition = !enabledIf || holdsForEvery(enabledIf->predicate, objects, dependencies, getPath());
    if (enabledByCondition && !enabler.empty()) {
        // A switch that is not a bool property of the object leaves the row enabled rather than locked for good.
        const auto switchedOn = [this](const GenericDataObject& object) {
            const int index = object.indexOfProperty(enabler);
            if (index < 0)
                return true;
            const GenericProperty property = object.getProperty(static_cast<std::uint32_t>(index));
            dependencies.insert(&property.getDefinition());
            return !property.getTypeDefinition().isNative<bool>() || property.get<bool>();
        };
        enabledByCondition = holdsForEvery(switchedOn, objects, dependencies, getPath());
    }
    if (dynamicName)
        updateDynamicName();
    // Also when the sheet itself is disabled: the row's own state must be right once the sheet is enabled again.
    setEnabled(enabledByCondition);
    return shownByCondition != wasShown;
}

void PropertySheetItem::refreshValueState()
{
    const bool wasMixed = mixed;
    const Array<EntityHolder<Entity>>& objects = accessor.getObjects();
    mixed = objects.size() > 1 && !accessor.hasSameValues();

    const PropertyDefinition& definition = accessor.getDefinition();
    const TypeDefinition& type = definition.getTypeDefinition();
    const void* defaultValue = definition.getDefaultValue().data();
    resettable = writable && std::ranges::any_of(objects, [&](const EntityHolder<Entity>& object) {
        return !type.equals(defaultValue, object->getProperty(getPath()).getData());
    });

    if (mixed != wasMixed) {
        updateLabel();
        sheet.scheduleLabelColumnUpdate();
    }
    updateResetButton();
}

void PropertySheetItem::updateLabel()
{
    QFont font = nameLabel->font();
    if (font.italic() != mixed) {
        font.setItalic(mixed);
        nameLabel->setFont(font);
    }
    QString tip = description;
    if (mixed)
        tip += (tip.isEmpty() ? QString() : QStringLiteral("\n"))
            + QCoreApplication::translate("Marlix::Widgets::SpinBox", "<different values>");
    nameLabel->setToolTip(tip);
    if (editorWidget && editorWidget->property(MIXED_VALUES_PROPERTY).toBool() != mixed) {
        editorWidget->setProperty(MIXED_VALUES_PROPERTY, mixed);
        editorWidget->update();
    }
}

void PropertySheetItem::updateResetButton()
{
    if (!resetTool) {
        if (!resettable || !resetOffered)
            return;
        resetTool = new QToolButton(this);
        resetTool->setIcon(QIcon(QString::fromLatin1(RESET_ICON)));
        resetTool->setIconSize(QSize(rowHeight, rowHeight) * 2 / 3);
        resetTool->setAutoRaise(true);
        resetTool->setFocusPolicy(Qt::NoFocus);
        resetTool->setProperty(FLAT_BUTTON_PROPERTY, true);
        resetTool->setToolTip(tr("Reset to the default value"));
        connect(resetTool, &QToolButton::clicked, this, &PropertySheetItem::resetToDefault);
        placeChildren();
    }
    resetTool->setVisible(resettable && resetOffered);
}

void PropertySheetItem::resetToDefault()
{
    if (resettable)
        writeToEvery(accessor.getDefinition().getDefaultValue(), fromQt(tr(RESET_ACTION_PREFIX.data()) + uiName));
}

bool PropertySheetItem::applyValueSetter()
{
    if (!valueSetter || !writable)
        return false;
    return writeToEvery(valueSetter->value,
        fromQt(QCoreApplication::translate(
                   "Marlix::Widgets::PropertyModelBase", PropertyModelBase<double>::ACTION_LABEL_PREFIX.data())
            + uiName));
}

bool PropertySheetItem::writeToEvery(const Value& value, const String& label)
{
    const SharedPtr<IUndoManager> undoManager = sheet.getPropertySheetHost()->getUndoManager();
    ActionHolder action;
    if (undoManager)
        action = undoManager->createAction(label, ActionFlag::UserEdit);
    bool written = true;
    try {
        accessor.setValue(value);
        if (action.isOpen())
            action.commit();
    } catch (const Exception& error) {
        // The accessor checks every object before it writes one; the action takes back whatever still changed.
        if (action.isOpen())
            action.revert();
        qWarning("\"%s\" could not be written: %s", getPath().c_str(), error.getMessage().c_str());
        written = false;
    }
    refreshValueState();
    return written;
}

void PropertySheetItem::updateDynamicName()
{
    // Several objects that name the row differently keep the definition's name, as a label cannot show both.
    Optional<String> agreed;
    for (const auto& object : accessor.getObjects()) {
        const ObservationScope scope;
        String name;
        try {
            name = dynamicName->name(*object);
        } catch (const Exception& error) {
            qWarning("The row name of \"%s\" failed: %s", getPath().c_str(), error.getMessage().c_str());
        }
        for (const PropertyDefinition* read : scope.getAccessedProperties())
            dependencies.insert(read);
        if (agreed && *agreed != name)
            agreed = String();
        else if (!agreed)
            agreed = std::move(name);
    }
    const QString shown = agreed && !agreed->empty() ? toQt(*agreed) : uiName;
    if (nameLabel->text() != shown) {
        nameLabel->setText(shown);
        sheet.scheduleLabelColumnUpdate();
    }
}

} // namespace Marlix::Widgets
