#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/styles/MarlixOriginalStyle.h>

#include <QAbstractSpinBox>
#include <QLineEdit>
#include <QStyleFactory>
#include <QStyleOption>

namespace Marlix {

namespace {

constexpr int ALTERNATE_BASE_LIGHTER = 110;
constexpr double SPIN_BUTTON_WIDTH = 14.0;
constexpr double GRADIENT_DISPLAY_THICKNESS = 40.0;
constexpr double LINE_EDIT_PADDING = 2.0;
constexpr int TOOLTIP_MAXIMUM_WIDTH = 300;

} // namespace

MarlixOriginalStyle::MarlixOriginalStyle()
    : MarlixStyle(QStyleFactory::create(QStringLiteral("fusion")))
{
}

MarlixOriginalStyle::~MarlixOriginalStyle() = default;

void MarlixOriginalStyle::polish(QWidget* widget)
{
    MarlixStyle::polish(widget);
    // Fields draw a lighter outline under the mouse, which needs hover events on plain line edits too.
    if (qobject_cast<QLineEdit*>(widget) || qobject_cast<QAbstractSpinBox*>(widget))
        widget->setAttribute(Qt::WA_Hover, true);
}

void MarlixOriginalStyle::polish(QPalette& palette)
{
    MarlixStyle::polish(palette);
    const QColor window = QColor::fromRgb(WINDOW_COLOR);
    const QColor text = QColor::fromRgb(TEXT_COLOR);
    const QColor disabledText = QColor::fromRgb(DISABLED_TEXT_COLOR);
    palette.setColor(QPalette::All, QPalette::Window, window);
    palette.setColor(QPalette::All, QPalette::WindowText, text);
    palette.setColor(QPalette::All, QPalette::Base, window);
    palette.setColor(QPalette::All, QPalette::Text, text);
    palette.setColor(QPalette::Disabled, QPalette::Text, disabledText);
    palette.setColor(QPalette::All, QPalette::Button, window);
    palette.setColor(QPalette::All, QPalette::ButtonText, text);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, disabledText);
    palette.setColor(QPalette::All, QPalette::Highlight, QColor::fromRgb(HIGHLIGHT_COLOR));
    palette.setColor(QPalette::All, QPalette::AlternateBase, window.lighter(ALTERNATE_BASE_LIGHTER));
}

QRect MarlixOriginalStyle::subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const
{
    QRect rect = MarlixStyle::subElementRect(element, option, widget);
    // Text inside a rounded field keeps clear of the corners.
    if (element == SE_LineEditContents) {
        if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option); frame && frame->lineWidth > 0) {
            const int padding = getDeviceIndependentPixels(LINE_EDIT_PADDING, widget);
            rect.adjust(padding, 0, -padding, 0);
        }
    }
    return rect;
}

QRect MarlixOriginalStyle::subControlRect(
    ComplexControl control, const QStyleOptionComplex* option, SubControl subControl, const QWidget* widget) const
{
    if (control == CC_SpinBox) {
        if (const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option)) {
            const QRect& r = spin->rect;
            const int frame = spin->frame ? 1 : 0;
            const int buttonWidth = spin->buttonSymbols == QAbstractSpinBox::NoButtons
                ? 0
                : getDeviceIndependentPixels(SPIN_BUTTON_WIDTH, widget);
            const int inner = r.height() - 2 * frame;
            const int upHeight = inner / 2;
            const int buttonLeft = r.right() - frame - buttonWidth + 1;
            switch (subControl) {
            case SC_SpinBoxFrame:
                return r;
            case SC_SpinBoxUp:
                return buttonWidth ? QRect(buttonLeft, r.top() + frame, buttonWidth, upHeight) : QRect();
            case SC_SpinBoxDown:
                return buttonWidth ? QRect(buttonLeft, r.top() + frame + upHeight, buttonWidth, inner - upHeight)
                                   : QRect();
            case SC_SpinBoxEditField:
                return QRect(r.left() + frame + 1, r.top() + frame, r.width() - buttonWidth - 2 * frame - 1, inner);
            default:
                break;
            }
        }
    }
    return MarlixStyle::subControlRect(control, option, subControl, widget);
}

QSize MarlixOriginalStyle::sizeFromContents(
    ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const
{
    if (type == CT_SpinBox) {
        if (const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option)) {
            const int frame = spin->frame ? 1 : 0;
            const int buttonWidth = spin->buttonSymbols == QAbstractSpinBox::NoButtons
                ? 0
                : getDeviceIndependentPixels(SPIN_BUTTON_WIDTH, widget);
            const QSize own(size.width() + buttonWidth + 2 * frame + 1, size.height() + 2 * frame + 2);
            return adjustContentsSize(type, option, own, widget);
        }
    }
    return MarlixStyle::sizeFromContents(type, option, size, widget);
}

int MarlixOriginalStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const
{
    if (static_cast<unsigned int>(metric) == PM_ToolTipMaximumWidth)
        return TOOLTIP_MAXIMUM_WIDTH;
    if (metric == PM_SliderThickness && widget && widget->inherits("Marlix::Widgets::GradientDisplay"))
        return getDeviceIndependentPixels(GRADIENT_DISPLAY_THICKNESS, widget);
    if (metric == PM_SpinBoxFrameWidth)
        return 1;
    return MarlixStyle::pixelMetric(metric, option, widget);
}

int MarlixOriginalStyle::styleHint(
    StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* returnData) const
{
    switch (static_cast<unsigned int>(hint)) {
    case SH_UnifyLabelColumnWidth:
    case SH_InstallPropertyControllerPin:
        return 0;
    case SH_InstallPropertyControllerHandler:
    case SH_SpinBoxDraggingHint:
    case SH_PropertySheetContextMenu:
        return 1;
    default:
        break;
    }
    if (hint == SH_ComboBox_Popup)
        return 0;
    return MarlixStyle::styleHint(hint, option, widget, returnData);
}

} // namespace Marlix
