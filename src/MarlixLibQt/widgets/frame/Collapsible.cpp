#include <MarlixLibQt/widgets/frame/Collapsible.h>

#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/accessibility/AccessibleWidgetsPrivate.h>

#include <QChildEvent>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStyleOptionGroupBox>

namespace Marlix::Widgets {

namespace {

// Gap between the elements of the title row, at 96 DPI.
constexpr double TITLE_SPACING = 4.0;
const char* const WRAPPED_QT_WIDGET_PROPERTY = "Zorva.WrappedQtWidget";

} // namespace

Collapsible::Collapsible(QWidget* parent)
    : Collapsible(makeSharedPtr<VariableModel<bool>>(false), QString(), parent)
{
}

Collapsible::Collapsible(SharedPtr<Model<bool>> collapsed, QWidget* parent)
    : Collapsible(std::move(collapsed), QString(), parent)
{
}

Collapsible::Collapsible(SharedPtr<Model<bool>> collapsed, const QString& title, QWidget* parent)
    : QGroupBox(QStringLiteral("COLLAPSIBLE_DUMMY_TITLE"), parent)
{
    setTitle(title);
    // The group box's own check box would disable the contents; its keyboard toggle is routed to the model instead.
    connect(this, &QGroupBox::toggled, this, [this](bool) {
        {
            const QSignalBlocker blocker(this);
            QGroupBox::setChecked(true);
        }
        if (checkModel)
            checkModel->set(!checkModel->get());
    });
    setCollapsibleModel(collapsed ? std::move(collapsed) : makeSharedPtr<VariableModel<bool>>(false));
    setCheckBoxModel(nullptr);
}

Collapsible::~Collapsible() = default;

void Collapsible::setCollapsibleModel(SharedPtr<Model<bool>> model)
{
    if (!model)
        throw Exception("A collapsible needs a model of its collapsed state.");
    collapsedModel = std::move(model);
    collapsedSubscription = collapsedModel->addCallback([this](bool) { notify(); });
    notify();
}

void Collapsible::setCheckBoxModel(SharedPtr<Model<bool>> model)
{
    checkModel = std::move(model);
    checkSubscription = checkModel ? checkModel->addCallback([this](bool) { update(); }) : CallbackLifetime();
    {
        const QSignalBlocker blocker(this);
        // Checkable only so that the style makes the title row tall enough for the indicator.
        setCheckable(bool(checkModel));
    }
    updateFocusPolicy();
    updateGeometry();
    update();
}

bool Collapsible::isCollapsed() const
{
    return !title().isEmpty() && collapsedModel->get();
}

void Collapsible::setCollapsed(bool collapsed)
{
    collapsedModel->set(!title().isEmpty() && collapsed);
}

void Collapsible::collapse()
{
    setCollapsed(true);
}

void Collapsible::expand()
{
    setCollapsed(false);
}

void Collapsible::setCollapsible(bool value)
{
    collapsible = value;
    updateFocusPolicy();
    update();
}

void Collapsible::notify()
{
    updateGeometryAndVisibility(isCollapsed());
    update();
}

void Collapsible::setCornerWidget(QWidget* widget)
{
    if (corner == widget)
        return;
    delete corner.data();
    corner = widget;
    if (corner) {
        corner->setParent(this);
        corner->setGeometry(cornerWidgetRectangle());
        corner->show();
    }
    update();
}

QWidget* Collapsible::takeCornerWidget()
{
    QWidget* widget = corner;
    corner = nullptr;
    if (widget) {
        widget->hide();
        widget->setParent(nullptr);
    }
    update();
    return widget;
}

void Collapsible::setCornerWidgetMargin(int margin)
{
    cornerMargin = margin;
    if (corner)
        corner->setGeometry(cornerWidgetRectangle());
    update();
}

void Collapsible::setCornerWidgetFixedWidth(int width)
{
    cornerFixedWidth = width;
    if (corner)
        corner->setGeometry(cornerWidgetRectangle());
    update();
}

void Collapsible::setLabelFixedWidth(int width)
{
    labelFixedWidth = width;
    updateGeometry();
}

int Collapsible::labelWidthHint() const
{
    return fontMetrics().size(Qt::TextShowMnemonic, title()).width();
}

void Collapsible::setArrowPosition(Position position)
{
    arrowPos = position;
    update();
}

void Collapsible::setCheckBoxPosition(Position position)
{
    checkPos = position;
    update();
}

int Collapsible::indicatorSize() const
{
    return fontMetrics().height();
}

Collapsible::Layout Collapsible::computeTitleLayout() const
{
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    const QRect styleLabel = style()->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxLabel, this);
    QRect styleCheck;
    if (isCheckable())
        styleCheck = style()->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxCheckBox, this);
    const QRect span = styleLabel.united(styleCheck);

    Layout layout;
    if (span.height() <= 0)
        return layout;
    layout.row = QRect(0, span.top(), width(), span.height());

    const int gap = getDeviceIndependentPixels(TITLE_SPACING, this);
    int left = layout.row.left() + gap;
    int right = layout.row.right() - gap;
    if (corner)
        right = cornerWidgetRectangle().left() - gap;
    const auto place = [&](Position position, QSize size) {
        const int top = layout.row.top() + (layout.row.height() - size.height()) / 2;
        if (position == Position::Left) {
            const QRect rect(QPoint(left, top), size);
            left = rect.right() + 1 + gap;
            return rect;
        }
        const QRect rect(QPoint(right - size.width() + 1, top), size);
        right = rect.left() - 1 - gap;
        return rect;
    };
    if (collapsible && !title().isEmpty()) {
        const int arrow = std::min(indicatorSize(), layout.row.height());
        layout.arrow = place(arrowPos, QSize(arrow, arrow));
    }
    if (checkModel) {
        const int indicator = std::min(
            std::max(style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, this), 1), layout.row.height());
        layout.checkBox = place(checkPos, QSize(indicator, indicator));
    }
    layout.label = QRect(left, layout.row.top(), std::max(0, right - left + 1), layout.row.height());
    return layout;
}

QRect Collapsible::titleRowRectangle() const
{
    return computeTitleLayout().row;
}

QRect Collapsible::arrowRectangle() const
{
    return computeTitleLayout().arrow;
}

QRect Collapsible::checkBoxRectangle() const
{
    return computeTitleLayout().checkBox;
}

QRect Collapsible::labelRectangle() const
{
    return computeTitleLayout().label;
}

QRect Collapsible::cornerWidgetRectangle() const
{
    if (!corner)
        return {};
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    const QRect label = style()->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxLabel, this);
    const int width = cornerFixedWidth > 0 ? cornerFixedWidth : corner->sizeHint().width();
    const int height = std::max(label.height(), std::min(corner->sizeHint().height(), contentsRect().top()));
    return QRect(this->width() - cornerMargin - width, std::max(0, label.center().y() - height / 2), width, height);
}

QSize Collapsible::sizeHint() const
{
    return isCollapsed() ? minimumSizeHint() : QGroupBox::sizeHint();
}

QSize Collapsible::minimumSizeHint() const
{
    if (!isCollapsed())
        return QGroupBox::minimumSizeHint();
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    int height = fontMetrics().height();
    if (isCheckable())
        height = std::max(height, style()->pixelMetric(QStyle::PM_IndicatorHeight, &option, this));
    int width = labelFixedWidth;
    if (width <= 0) {
        const int gap = getDeviceIndependentPixels(TITLE_SPACING, this);
        width = labelWidthHint() + indicatorSize() + 2 * gap;
        if (checkModel)
            width += style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, this) + gap;
        if (corner)
            width += (cornerFixedWidth > 0 ? cornerFixedWidth : corner->sizeHint().width()) + cornerMargin + gap;
    }
    return style()->sizeFromContents(QStyle::CT_GroupBox, &option, QSize(width, height), this);
}

void Collapsible::updateGeometryAndVisibility(bool collapsed)
{
    QLayout* contents = layout();
    if (!contents)
        return;
    if (collapsed == appliedCollapsed && !forceUpdate)
        return;

    contents->setEnabled(!collapsed);
    for (int i = 0; i < contents->count(); ++i) {
        QWidget* widget = contents->itemAt(i)->widget();
        if (!widget)
            continue;
        if (QLayout* inner = widget->layout())
            inner->setEnabled(true);
        widget->setVisible(!collapsed);
    }

    forceUpdate = false;
    updateGeometry();
    if (collapsed != appliedCollapsed) {
        appliedCollapsed = collapsed;
        Q_EMIT collapsibleStateChanged(collapsed);
    }

    if (property(WRAPPED_QT_WIDGET_PROPERTY).toBool()) {
        setMinimumSize(sizeHint());
        update();
        QCoreApplication::postEvent(this, new QEvent(QEvent::LayoutRequest));
    }
}

void Collapsible::scheduleForcedUpdate()
{
    forceUpdate = true;
    if (forcedUpdateQueued)
        return;
    forcedUpdateQueued = true;
    // A child that arrives is put into the layout only after this event, so the state is applied once it is there.
    QMetaObject::invokeMethod(
        this,
        [this] {
            forcedUpdateQueued = false;
            updateGeometryAndVisibility(isCollapsed());
        },
        Qt::QueuedConnection);
}

void Collapsible::childEvent(QChildEvent* event)
{
    QGroupBox::childEvent(event);
    if (event->type() == QEvent::ChildAdded && event->child() != corner.data())
        scheduleForcedUpdate();
}

void Collapsible::mousePressEvent(QMouseEvent* event)
{
    pressed = Pressed::None;
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    const Layout parts = computeTitleLayout();
    const QPoint position = event->position().toPoint();
    if (parts.checkBox.contains(position))
        pressed = Pressed::CheckBox;
    else if (collapsible && parts.row.contains(position) && !parts.arrow.isNull())
        pressed = Pressed::Toggle;
    event->setAccepted(pressed != Pressed::None);
}

void Collapsible::mouseMoveEvent(QMouseEvent* event)
{
    event->setAccepted(pressed != Pressed::None);
}

void Collapsible::mouseReleaseEvent(QMouseEvent* event)
{
    const Pressed was = std::exchange(pressed, Pressed::None);
    if (event->button() != Qt::LeftButton || was == Pressed::None) {
        event->ignore();
        return;
    }
    const Layout parts = computeTitleLayout();
    const QPoint position = event->position().toPoint();
    if (was == Pressed::CheckBox && parts.checkBox.contains(position) && checkModel)
        checkModel->set(!checkModel->get());
    else if (was == Pressed::Toggle && parts.row.contains(position) && !parts.checkBox.contains(position))
        setCollapsed(!isCollapsed());
    event->accept();
}

void Collapsible::updateFocusPolicy()
{
    // The title row is reached with Tab only: a click on it folds the section and leaves the focus in the editor
    // that had it.
    setFocusPolicy(isCheckable() || collapsible ? Qt::TabFocus : Qt::NoFocus);
}

void Collapsible::keyPressEvent(QKeyEvent* event)
{
    // Keys of a disclosure control: Left folds, Right unfolds, Enter flips; Space flips too unless it checks the box.
    const bool folds = collapsible && !title().isEmpty();
    const int key = event->key();
    if (folds && (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier) {
        if (key == Qt::Key_Left || key == Qt::Key_Right) {
            setCollapsed(key == Qt::Key_Left);
            event->accept();
            return;
        }
        if (key == Qt::Key_Return || key == Qt::Key_Enter || (key == Qt::Key_Space && !checkModel)) {
            setCollapsed(!isCollapsed());
            event->accept();
            return;
        }
    }
    QGroupBox::keyPressEvent(event);
}

void Collapsible::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    const bool collapsed = isCollapsed();

    // The frame through the style; title, arrow and check box are this widget's own.
    if (!collapsed) {
        option.subControls = QStyle::SC_GroupBoxFrame;
        option.text.clear();
        style()->drawComplexControl(QStyle::CC_GroupBox, &option, &painter, this);
    }

    const Layout parts = computeTitleLayout();
    if (!parts.arrow.isNull()) {
        QStyleOption arrow;
        arrow.initFrom(this);
        arrow.rect = parts.arrow;
        style()->drawPrimitive(collapsed ? QStyle::PE_IndicatorArrowRight : QStyle::PE_IndicatorArrowDown, &arrow,
            &painter, this);
    }
    if (!parts.checkBox.isNull() && checkModel) {
        QStyleOptionButton box;
        box.initFrom(this);
        box.rect = parts.checkBox;
        box.state |= checkModel->get() ? QStyle::State_On : QStyle::State_Off;
        style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, &painter, this);
    }
    if (!title().isEmpty()) {
        const QString text = fontMetrics().elidedText(title(), Qt::ElideRight, parts.label.width(), Qt::TextShowMnemonic);
        style()->drawItemText(&painter, parts.label, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextShowMnemonic, palette(),
            isEnabled(), text, QPalette::WindowText);
    }
    drawKeyboardFocus(painter, *this, parts.row);
}

void Collapsible::resizeEvent(QResizeEvent* event)
{
    QGroupBox::resizeEvent(event);
    if (corner)
        corner->setGeometry(cornerWidgetRectangle());
}

void Collapsible::showEvent(QShowEvent* event)
{
    forceUpdate = true;
    updateGeometryAndVisibility(isCollapsed());
    QGroupBox::showEvent(event);
}

} // namespace Marlix::Widgets
