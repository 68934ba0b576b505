#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/styles/MarlixOriginalStyle.h>

#include <QAbstractSpinBox>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>

#include <algorithm>

namespace Marlix {

namespace {

constexpr QRgb FIELD_OUTLINE_COLOR = 0xff282828;
constexpr QRgb HOVER_OUTLINE_COLOR = 0xff626262;
constexpr QRgb BUTTON_HOVER_COLOR = 0xff3d3d3d;
constexpr QRgb PANEL_RAISED_COLOR = 0xff4e4e4e;
constexpr QRgb PANEL_HOVER_COLOR = 0xff575757;
constexpr QRgb PANEL_SUNKEN_COLOR = 0xff2e2e2e;
constexpr QRgb GROUP_FILL_COLOR = 0xff3e3e3e;
constexpr QRgb GROUP_OUTLINE_COLOR = 0xff343434;
constexpr QRgb HANDLE_COLOR = 0xffb4b4b4;
constexpr QRgb HANDLE_HOVER_COLOR = 0xffdcdcdc;
constexpr QRgb HANDLE_OUTLINE_COLOR = 0xff1e1e1e;
constexpr QRgb DISABLED_FILL_COLOR = 0xff5a5a5a;

constexpr QRgb CONTROLLED_COLOR = 0xff3fb6a8;
constexpr QRgb OVERRIDDEN_COLOR = 0xffe6a23c;
constexpr QRgb MIXED_COLOR = 0xffc06bd0;
constexpr QRgb OTHER_STATE_COLOR = 0xff9a9a9a;

constexpr double CORNER_RADIUS = 2.0;
constexpr double ARROW_WIDTH = 7.0;
constexpr double ARROW_HEIGHT = 4.0;
constexpr double TRACK_THICKNESS = 4.0;
constexpr double TICK_LENGTH = 3.0;
constexpr double OVERLAY_MARKER_SIZE = 8.0;
constexpr double BRANCH_ARROW_WIDTH = 8.0;
constexpr double BRANCH_ARROW_HEIGHT = 4.0;

QPainterPath roundedPath(const QRectF& rect, double radius)
{
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return path;
}

// A frame one logical pixel wide just inside `rect`, filled: an outline stroked on the rectangle's edge would straddle
// device pixels on a scaled screen, half outside the rectangle and leaving a sliver of the inside beyond it.
void fillFrame(QPainter* painter, const QRect& rect, const QColor& color)
{
    QPainterPath ring;
    ring.addRect(QRectF(rect));
    ring.addRect(QRectF(rect).adjusted(1.0, 1.0, -1.0, -1.0));
    painter->fillPath(ring, color);
}

// A triangle pointing up, down, left or right, centred in `rect`.
void drawArrow(
    QPainter* painter, const QRectF& rect, Qt::ArrowType direction, double width, double height, const QColor& color)
{
    const QPointF c = rect.center();
    const double w = width / 2.0;
    const double h = height / 2.0;
    QPolygonF triangle;
    switch (direction) {
    case Qt::UpArrow:
        triangle << QPointF(c.x() - w, c.y() + h) << QPointF(c.x() + w, c.y() + h) << QPointF(c.x(), c.y() - h);
        break;
    case Qt::DownArrow:
        triangle << QPointF(c.x() - w, c.y() - h) << QPointF(c.x() + w, c.y() - h) << QPointF(c.x(), c.y() + h);
        break;
    case Qt::RightArrow:
        triangle << QPointF(c.x() - h, c.y() - w) << QPointF(c.x() - h, c.y() + w) << QPointF(c.x() + h, c.y());
        break;
    default:
        triangle << QPointF(c.x() + h, c.y() - w) << QPointF(c.x() + h, c.y() + w) << QPointF(c.x() - h, c.y());
        break;
    }
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    painter->drawPolygon(triangle);
}

bool isInsideSpinBox(const QWidget* widget)
{
    return widget && qobject_cast<const QLineEdit*>(widget)
        && qobject_cast<const QAbstractSpinBox*>(widget->parentWidget());
}

unsigned int controllerState(const QWidget* widget)
{
    if (!widget)
        return 0;
    QVariant value = widget->property("Zorva.PropertyControllerState");
    if (!value.isValid() && isInsideSpinBox(widget))
        value = widget->parentWidget()->property("Zorva.PropertyControllerState");
    if (!value.isValid())
        return 0;
    bool ok = false;
    const unsigned int bits = value.toUInt(&ok);
    return ok ? bits : 0;
}

} // namespace

void MarlixOriginalStyle::drawPrimitive(
    PrimitiveElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    switch (element) {
    case PE_PanelButtonTool:
        if (isFlatButton(widget)
            || (widget && !widget->isEnabled() && widget->inherits("Marlix::Widgets::ValuePicker"))) {
            MarlixStyle::drawPrimitive(element, option, painter, widget);
            return;
        }
        drawToolButtonPanel(option, painter, widget);
        drawDragHoveredOutline(option->rect, option, painter, widget);
        return;
    case PE_IndicatorBranch: {
        const int display = branchDisplay(widget);
        if (display == 0)
            return;
        if (display == 1)
            drawBranchLines(option, painter);
        if (option->state & State_Children)
            drawBranchArrow(option, painter, widget);
        return;
    }
    case PE_PanelLineEdit: {
        const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        if (frame && frame->lineWidth > 0) {
            painter->save();
            painter->setRenderHint(QPainter::Antialiasing, true);
            // A read-only field sits flat on the window, so that it does not look like one that takes typing.
            const QColor fill = (option->state & State_ReadOnly) ? option->palette.color(QPalette::Window)
                                                                 : QColor::fromRgb(CONTROL_COLOR);
            painter->fillPath(roundedPath(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5), CORNER_RADIUS), fill);
            painter->restore();
            drawFrame(option->rect, option, painter, widget);
            drawAnimationOverlay(option->rect, option, painter, widget);
            drawDragHoveredOutline(option->rect, option, painter, widget);
            return;
        }
        if (isInsideSpinBox(widget)) {
            painter->fillRect(option->rect, QColor::fromRgb(CONTROL_COLOR));
            // The field covers the spin box's own corner, so the marker is drawn again on top of it.
            drawAnimationOverlay(option->rect, option, painter, widget);
            return;
        }
        MarlixStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    case PE_FrameLineEdit:
        drawFrame(option->rect, option, painter, widget);
        return;
    case PE_Frame: {
        fillFrame(painter, option->rect, QColor::fromRgb(FIELD_OUTLINE_COLOR));
        drawDragHoveredOutline(option->rect, option, painter, widget);
        return;
    }
    case PE_FrameGroupBox: {
        const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        painter->save();
        if (frame && (frame->features & QStyleOptionFrame::Flat)) {
            const QRect& r = option->rect;
            painter->fillRect(QRectF(r.left(), r.top(), r.width(), 1.0), QColor::fromRgb(GROUP_OUTLINE_COLOR));
        } else {
            painter->setRenderHint(QPainter::Antialiasing, true);
            painter->setPen(QColor::fromRgb(GROUP_OUTLINE_COLOR));
            painter->setBrush(QColor::fromRgb(GROUP_FILL_COLOR));
            const double radius = getDeviceIndependentPixels(3, widget);
            painter->drawRoundedRect(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
        }
        painter->restore();
        return;
    }
    default:
        MarlixStyle::drawPrimitive(element, option, painter, widget);
    }
}

void MarlixOriginalStyle::drawControl(
    ControlElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    MarlixStyle::drawControl(element, option, painter, widget);
    switch (element) {
    case CE_PushButton:
    case CE_CheckBox:
    case CE_RadioButton:
        drawAnimationOverlay(option->rect, option, painter, widget);
        break;
    default:
        break;
    }
}

void MarlixOriginalStyle::drawComplexControl(
    ComplexControl control, const QStyleOptionComplex* option, QPainter* painter, const QWidget* widget) const
{
    switch (control) {
    case CC_SpinBox:
        if (const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option)) {
            drawSpinBox(spin, painter, widget);
            drawAnimationOverlay(option->rect, option, painter, widget);
            drawDragHoveredOutline(option->rect, option, painter, widget);
            return;
        }
        break;
    case CC_Slider:
        if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option)) {
            drawSlider(slider, painter, widget);
            drawAnimationOverlay(option->rect, option, painter, widget);
            return;
        }
        break;
    case CC_GroupBox:
        if (const auto* group = qstyleoption_cast<const QStyleOptionGroupBox*>(option)) {
            drawGroupBox(group, painter, widget);
            return;
        }
        break;
    case CC_ComboBox:
    case CC_ToolButton:
        MarlixStyle::drawComplexControl(control, option, painter, widget);
        drawAnimationOverlay(option->rect, option, painter, widget);
        return;
    default:
        break;
    }
    MarlixStyle::drawComplexControl(control, option, painter, widget);
}

void MarlixOriginalStyle::drawFrame(
    const QRect& rect, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    const bool enabled = option->state & State_Enabled;
    QColor color = QColor::fromRgb(FIELD_OUTLINE_COLOR);
    if (enabled && (option->state & State_HasFocus) && !(option->state & State_ReadOnly))
        color = option->palette.color(QPalette::Active, QPalette::Highlight);
    else if (enabled && (option->state & State_MouseOver))
        color = QColor::fromRgb(HOVER_OUTLINE_COLOR);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);
    painter->setPen(QPen(color, 1));
    painter->setBrush(Qt::NoBrush);
    const double radius = std::max(1, getDeviceIndependentPixels(CORNER_RADIUS, widget));
    painter->drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter->restore();
}

void MarlixOriginalStyle::drawAnimationOverlay(
    const QRect& rect, const QStyleOption*, QPainter* painter, const QWidget* widget) const
{
    const unsigned int state = controllerState(widget);
    if (state == 0)
        return;
    QColor color = QColor::fromRgb(OTHER_STATE_COLOR);
    if (state & ControllerStateOverridden)
        color = QColor::fromRgb(OVERRIDDEN_COLOR);
    else if (state & ControllerStateMixed)
        color = QColor::fromRgb(MIXED_COLOR);
    else if (state & ControllerStateControlled)
        color = QColor::fromRgb(CONTROLLED_COLOR);
    // A corner tag, like a note on a spreadsheet cell: visible on any field, covering none of its text.
    const double size = std::max(3, getDeviceIndependentPixels(OVERLAY_MARKER_SIZE, widget));
    const QPointF corner = QRectF(rect).topLeft() + QPointF(1.0, 1.0);
    const QPolygonF tag({ corner, corner + QPointF(size, 0.0), corner + QPointF(0.0, size) });
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    painter->drawPolygon(tag);
    painter->restore();
}

void MarlixOriginalStyle::drawSpinBox(const QStyleOptionSpinBox* option, QPainter* painter, const QWidget* widget) const
{
    const bool enabled = option->state & State_Enabled;
    const QRectF field = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
    const QPainterPath fieldPath = roundedPath(field, std::max(1, getDeviceIndependentPixels(CORNER_RADIUS, widget)));
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);
    painter->fillPath(fieldPath, QColor::fromRgb(CONTROL_COLOR));

    if (option->buttonSymbols != QAbstractSpinBox::NoButtons) {
        // Only a button's highlight reaches the rounded corners. Clipping to the field costs more than the rest of
        // the field's painting, so it is set only while a button is lit.
        const auto lit = [&](SubControl subControl, QAbstractSpinBox::StepEnabledFlag step) {
            return enabled && (option->stepEnabled & step) && (option->activeSubControls & subControl)
                && (option->state & (State_Sunken | State_MouseOver));
        };
        if (lit(SC_SpinBoxUp, QAbstractSpinBox::StepUpEnabled)
            || lit(SC_SpinBoxDown, QAbstractSpinBox::StepDownEnabled))
            painter->setClipPath(fieldPath);
        const auto drawButton = [&](SubControl subControl, QAbstractSpinBox::StepEnabledFlag step,
                                    Qt::ArrowType arrow) {
            const QRect button = subControlRect(CC_SpinBox, option, subControl, widget);
            const bool stepEnabled = enabled && (option->stepEnabled & step);
            const bool active = stepEnabled && (option->activeSubControls & subControl);
            if (active && (option->state & State_Sunken))
                painter->fillRect(button, option->palette.color(QPalette::Active, QPalette::Highlight).darker(130));
            else if (active && (option->state & State_MouseOver))
                painter->fillRect(button, QColor::fromRgb(BUTTON_HOVER_COLOR));
            const QColor color = stepEnabled ? option->palette.color(QPalette::Active, QPalette::Text)
                                             : QColor::fromRgb(DISABLED_TEXT_COLOR);
            const bool plusMinus = option->buttonSymbols == QAbstractSpinBox::PlusMinus;
            if (plusMinus) {
                const double half = getDeviceIndependentPixels(ARROW_WIDTH, widget) / 2.0;
                const QPointF c = QRectF(button).center();
                painter->setPen(QPen(color, 1.5));
                painter->drawLine(QPointF(c.x() - half, c.y()), QPointF(c.x() + half, c.y()));
                if (arrow == Qt::UpArrow)
                    painter->drawLine(QPointF(c.x(), c.y() - half), QPointF(c.x(), c.y() + half));
            } else {
                drawArrow(painter, QRectF(button), arrow, getDeviceIndependentPixels(ARROW_WIDTH, widget),
                    getDeviceIndependentPixels(ARROW_HEIGHT, widget), color);
            }
        };
        drawButton(SC_SpinBoxUp, QAbstractSpinBox::StepUpEnabled, Qt::UpArrow);
        drawButton(SC_SpinBoxDown, QAbstractSpinBox::StepDownEnabled, Qt::DownArrow);
        const QRect up = subControlRect(CC_SpinBox, option, SC_SpinBoxUp, widget);
        painter->setRenderHint(QPainter::Antialiasing, false);
        painter->setPen(QColor::fromRgb(FIELD_OUTLINE_COLOR));
        painter->drawLine(up.left() - 1, option->rect.top() + 3, up.left() - 1, option->rect.bottom() - 3);
        painter->setClipping(false);
    }
    painter->restore();
    if (option->frame)
        drawFrame(option->rect, option, painter, widget);
}

void MarlixOriginalStyle::drawSlider(const QStyleOptionSlider* option, QPainter* painter, const QWidget* widget) const
{
    const bool enabled = option->state & State_Enabled;
    const QRect handle = subControlRect(CC_Slider, option, SC_SliderHandle, widget);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);

    if (widget && widget->inherits("Marlix::Widgets::ColorSlider")) {
        // Only the handle: a dark and a light frame stay visible over any colour of the ramp beneath.
        if (option->subControls & SC_SliderHandle) {
            painter->setBrush(Qt::NoBrush);
            painter->setPen(QPen(QColor(0, 0, 0, 200), 1.0));
            painter->drawRect(QRectF(handle).adjusted(0.5, 0.5, -0.5, -0.5));
            painter->setPen(QPen(enabled ? QColor(255, 255, 255, 230) : QColor(170, 170, 170, 200), 1.0));
            painter->drawRect(QRectF(handle).adjusted(1.5, 1.5, -1.5, -1.5));
        }
        painter->restore();
        return;
    }

    const bool horizontal = option->orientation == Qt::Horizontal;
    const QRect groove = subControlRect(CC_Slider, option, SC_SliderGroove, widget);
    const double thickness = std::max(2, getDeviceIndependentPixels(TRACK_THICKNESS, widget));
    const QPointF handleCenter = QRectF(handle).center();
    if (option->subControls & SC_SliderGroove) {
        const QRectF track = horizontal
            ? QRectF(groove.left(), QRectF(groove).center().y() - thickness / 2.0, groove.width(), thickness)
            : QRectF(QRectF(groove).center().x() - thickness / 2.0, groove.top(), thickness, groove.height());
        painter->setPen(QPen(QColor::fromRgb(FIELD_OUTLINE_COLOR), 1.0));
        painter->setBrush(QColor::fromRgb(CONTROL_COLOR));
        painter->drawRoundedRect(track, thickness / 2.0, thickness / 2.0);
        // The filled part runs from the minimum end to the handle.
        QRectF filled = track;
        const bool minimumAtStart = !option->upsideDown;
        if (horizontal)
            minimumAtStart ? filled.setRight(handleCenter.x()) : filled.setLeft(handleCenter.x());
        else
            minimumAtStart ? filled.setBottom(handleCenter.y()) : filled.setTop(handleCenter.y());
        painter->setPen(Qt::NoPen);
        painter->setBrush(enabled ? option->palette.color(QPalette::Active, QPalette::Highlight)
                                  : QColor::fromRgb(DISABLED_FILL_COLOR));
        painter->drawRoundedRect(filled, thickness / 2.0, thickness / 2.0);
    }

    if ((option->subControls & SC_SliderTickmarks) && option->tickPosition != QSlider::NoTicks) {
        const int length = proxy()->pixelMetric(PM_SliderLength, option, widget);
        const int available = (horizontal ? groove.width() : groove.height()) - length;
        const int interval = option->tickInterval > 0 ? option->tickInterval : std::max(1, option->pageStep);
        const double tick = getDeviceIndependentPixels(TICK_LENGTH, widget);
        QColor tickColor = option->palette.color(QPalette::WindowText);
        tickColor.setAlpha(110);
        painter->setPen(QPen(tickColor, 1.0));
        painter->setRenderHint(QPainter::Antialiasing, false);
        for (qint64 value = option->minimum; value <= option->maximum; value += interval) {
            const int pos = sliderPositionFromValue(option->minimum, option->maximum, static_cast<int>(value),
                                available, option->upsideDown)
                + length / 2;
            if (horizontal) {
                const int x = groove.left() + pos;
                if (option->tickPosition & QSlider::TicksAbove)
                    painter->drawLine(QPointF(x, groove.top()), QPointF(x, groove.top() + tick));
                if (option->tickPosition & QSlider::TicksBelow)
                    painter->drawLine(QPointF(x, groove.bottom() - tick), QPointF(x, groove.bottom()));
            } else {
                const int y = groove.top() + pos;
                if (option->tickPosition & QSlider::TicksLeft)
                    painter->drawLine(QPointF(groove.left(), y), QPointF(groove.left() + tick, y));
                if (option->tickPosition & QSlider::TicksRight)
                    painter->drawLine(QPointF(groove.right() - tick, y), QPointF(groove.right(), y));
            }
        }
        painter->setRenderHint(QPainter::Antialiasing, true);
    }

    if (option->subControls & SC_SliderHandle) {
        const bool hovered
            = enabled && (option->activeSubControls & SC_SliderHandle) && (option->state & State_MouseOver);
        const bool pressed = enabled && (option->state & State_Sunken);
        const double diameter = std::max(4, std::min(handle.width(), handle.height()) - 2);
        const QRectF knob(handleCenter.x() - diameter / 2.0, handleCenter.y() - diameter / 2.0, diameter, diameter);
        QColor fill = QColor::fromRgb(HANDLE_COLOR);
        if (!enabled)
            fill = QColor::fromRgb(DISABLED_FILL_COLOR).lighter(120);
        else if (pressed)
            fill = option->palette.color(QPalette::Active, QPalette::Highlight).lighter(140);
        else if (hovered)
            fill = QColor::fromRgb(HANDLE_HOVER_COLOR);
        const QColor outline = enabled && (option->state & State_HasFocus)
            ? option->palette.color(QPalette::Active, QPalette::Highlight)
            : QColor::fromRgb(HANDLE_OUTLINE_COLOR);
        painter->setPen(QPen(outline, 1.0));
        painter->setBrush(fill);
        painter->drawEllipse(knob.adjusted(0.5, 0.5, -0.5, -0.5));
    }
    painter->restore();
}

void MarlixOriginalStyle::drawGroupBox(
    const QStyleOptionGroupBox* option, QPainter* painter, const QWidget* widget) const
{
    if (option->subControls & SC_GroupBoxFrame) {
        QStyleOptionFrame frame;
        frame.QStyleOption::operator=(*option);
        frame.features = option->features;
        frame.lineWidth = option->lineWidth;
        frame.midLineWidth = option->midLineWidth;
        frame.rect = subControlRect(CC_GroupBox, option, SC_GroupBoxFrame, widget);
        proxy()->drawPrimitive(PE_FrameGroupBox, &frame, painter, widget);
    }
    if ((option->subControls & SC_GroupBoxLabel) && !option->text.isEmpty()) {
        const QRect label = subControlRect(CC_GroupBox, option, SC_GroupBoxLabel, widget);
        QPalette palette = option->palette;
        if (option->textColor.isValid())
            palette.setColor(QPalette::WindowText, option->textColor);
        int alignment = int(option->textAlignment);
        if (!proxy()->styleHint(SH_UnderlineShortcut, option, widget))
            alignment |= Qt::TextHideMnemonic;
        proxy()->drawItemText(painter, label, Qt::TextShowMnemonic | Qt::AlignVCenter | alignment, palette,
            option->state & State_Enabled, option->text, QPalette::WindowText);
    }
    if (option->subControls & SC_GroupBoxCheckBox) {
        QStyleOptionButton box;
        box.QStyleOption::operator=(*option);
        box.rect = subControlRect(CC_GroupBox, option, SC_GroupBoxCheckBox, widget);
        proxy()->drawPrimitive(PE_IndicatorCheckBox, &box, painter, widget);
    }
}

void MarlixOriginalStyle::drawToolButtonPanel(
    const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    const bool enabled = option->state & State_Enabled;
    const bool sunken = option->state & (State_Sunken | State_On);
    const bool hovered = enabled && (option->state & State_MouseOver);
    const bool autoRaise = option->state & State_AutoRaise;
    QColor fill;
    QColor outline;
    if (sunken) {
        fill = QColor::fromRgb(PANEL_SUNKEN_COLOR);
        outline = (option->state & State_On) && enabled
            ? option->palette.color(QPalette::Active, QPalette::Highlight).darker(115)
            : QColor::fromRgb(FIELD_OUTLINE_COLOR);
    } else if (hovered) {
        fill = QColor::fromRgb(PANEL_HOVER_COLOR);
        outline = QColor::fromRgb(FIELD_OUTLINE_COLOR);
    } else if (!autoRaise) {
        fill = QColor::fromRgb(PANEL_RAISED_COLOR);
        outline = QColor::fromRgb(FIELD_OUTLINE_COLOR);
    } else {
        return;
    }
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);
    painter->setPen(QPen(outline, 1.0));
    painter->setBrush(fill);
    const double radius = std::max(1, getDeviceIndependentPixels(CORNER_RADIUS, widget));
    painter->drawRoundedRect(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter->restore();
}

void MarlixOriginalStyle::drawBranchArrow(const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    QColor color = option->palette.color(QPalette::Text);
    if (!(option->state & State_MouseOver))
        color.setAlpha(190);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);
    const Qt::ArrowType direction = (option->state & State_Open)
        ? Qt::DownArrow
        : (option->direction == Qt::RightToLeft ? Qt::LeftArrow : Qt::RightArrow);
    drawArrow(painter, QRectF(option->rect), direction, getDeviceIndependentPixels(BRANCH_ARROW_WIDTH, widget),
        getDeviceIndependentPixels(BRANCH_ARROW_HEIGHT, widget), color);
    painter->restore();
}

} // namespace Marlix
