#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/styles/MarlixStyle.h>
#include <MarlixLibQt/widgets/frame/Collapsible.h>

#include <QApplication>
#include <QEvent>
#include <QIcon>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QStyleOption>

#include <algorithm>

namespace Marlix {

namespace {

constexpr double COLOR_SLIDER_HANDLE_LENGTH = 6.0;
constexpr int COLOR_SLIDER_THICKNESS = 16777215;
constexpr int ROW_HEIGHT_EXTRA = 9;
constexpr int TOOLTIP_PADDING = 1;
constexpr int TOOLTIP_FORMAT_COLUMNS = 40;
constexpr int DRAG_HOVER_OUTLINE_WIDTH = 2;

bool isColorSlider(const QWidget* widget)
{
    return widget && widget->inherits("Marlix::Widgets::ColorSlider");
}

// Item text has no widget argument: the widget being painted is the painter's device.
const QWidget* paintedWidget(const QPainter* painter)
{
    const QPaintDevice* device = painter ? painter->device() : nullptr;
    if (!device || device->devType() != QInternal::Widget)
        return nullptr;
    return static_cast<const QWidget*>(device);
}

QString elideLines(const QString& text, const QFontMetrics& metrics, int width, int flags)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString& line : lines)
        line = metrics.elidedText(line, Qt::ElideRight, width, flags);
    return lines.join(QLatin1Char('\n'));
}

} // namespace

MarlixStyle::MarlixStyle(QStyle* baseStyle)
    : QProxyStyle(baseStyle)
{
}

MarlixStyle::~MarlixStyle() = default;

void MarlixStyle::polish(QWidget* widget)
{
    QProxyStyle::polish(widget);
    // A label's minimum size hint is its whole text; an eliding label must be allowed to be narrower.
    if (auto* label = qobject_cast<QLabel*>(widget);
        label && label->property("Zorva.UseEllipsis").toBool() && label->minimumWidth() == 0)
        label->setMinimumWidth(1);
}

void MarlixStyle::polish(QApplication* application)
{
    QProxyStyle::polish(application);
    if (application)
        application->installEventFilter(this);
}

void MarlixStyle::unpolish(QApplication* application)
{
    if (application)
        application->removeEventFilter(this);
    QProxyStyle::unpolish(application);
}

void MarlixStyle::drawPrimitive(
    PrimitiveElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    switch (element) {
    case PE_PanelButtonTool:
        if (isFlatButton(widget))
            return;
        if (widget && !widget->isEnabled() && widget->inherits("Marlix::Widgets::ValuePicker")) {
            if (const auto* tool = qstyleoption_cast<const QStyleOptionToolButton*>(option)) {
                QStyleOptionToolButton copy(*tool);
                copy.state &= ~(State_Enabled | State_Sunken);
                QProxyStyle::drawPrimitive(element, &copy, painter, widget);
            } else {
                QStyleOption copy(*option);
                copy.state &= ~(State_Enabled | State_Sunken);
                QProxyStyle::drawPrimitive(element, &copy, painter, widget);
            }
            return;
        }
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        drawDragHoveredOutline(option->rect, option, painter, widget);
        return;
    case PE_IndicatorBranch: {
        const int display = branchDisplay(widget);
        if (display == 0)
            return;
        if (display == 1)
            drawBranchLines(option, painter);
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    case PE_Frame:
    case PE_FrameLineEdit:
    case PE_PanelLineEdit:
    case PE_PanelButtonCommand:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        drawDragHoveredOutline(option->rect, option, painter, widget);
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void MarlixStyle::drawComplexControl(
    ComplexControl control, const QStyleOptionComplex* option, QPainter* painter, const QWidget* widget) const
{
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control == CC_SpinBox || control == CC_ComboBox)
        drawDragHoveredOutline(option->rect, option, painter, widget);
}

void MarlixStyle::drawItemText(QPainter* painter, const QRect& rect, int flags, const QPalette& palette, bool enabled,
    const QString& text, QPalette::ColorRole textRole) const
{
    const QWidget* widget = paintedWidget(painter);
    if (!widget || text.isEmpty()) {
        QProxyStyle::drawItemText(painter, rect, flags, palette, enabled, text, textRole);
        return;
    }
    if (const QVariant mnemonic = widget->property("Zorva.ShowMnemonic"); mnemonic.isValid()) {
        flags &= ~(Qt::TextShowMnemonic | Qt::TextHideMnemonic);
        flags |= mnemonic.toBool() ? Qt::TextShowMnemonic : Qt::TextHideMnemonic;
    }
    if (widget->property("Zorva.UseEllipsis").toBool() && !(flags & Qt::TextWordWrap)) {
        const QString elided = elideLines(text, painter->fontMetrics(), rect.width(), flags);
        QProxyStyle::drawItemText(painter, rect, flags, palette, enabled, elided, textRole);
        return;
    }
    QProxyStyle::drawItemText(painter, rect, flags, palette, enabled, text, textRole);
}

QRect MarlixStyle::subControlRect(
    ComplexControl control, const QStyleOptionComplex* option, SubControl subControl, const QWidget* widget) const
{
    // A colour slider's handle marks the exact colour under it: centred on the position, as tall as the slider.
    if (control == CC_Slider && isColorSlider(widget)) {
        if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option)) {
            const QRect& r = slider->rect;
            if (subControl == SC_SliderGroove)
                return r;
            if (subControl == SC_SliderHandle) {
                const int length = proxy()->pixelMetric(PM_SliderLength, option, widget);
                const bool horizontal = slider->orientation == Qt::Horizontal;
                const int span = horizontal ? r.width() : r.height();
                const int pos = sliderPositionFromValue(
                    slider->minimum, slider->maximum, slider->sliderPosition, span, slider->upsideDown);
                return horizontal ? QRect(r.x() + pos - length / 2, r.y(), length, r.height())
                                  : QRect(r.x(), r.y() + pos - length / 2, r.width(), length);
            }
        }
    }
    return QProxyStyle::subControlRect(control, option, subControl, widget);
}

QSize MarlixStyle::sizeFromContents(
    ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const
{
    return adjustContentsSize(type, option, QProxyStyle::sizeFromContents(type, option, size, widget), widget);
}

QSize MarlixStyle::adjustContentsSize(
    ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const
{
    switch (type) {
    case CT_LineEdit:
    case CT_SpinBox:
    case CT_ComboBox:
    case CT_PushButton:
    case CT_ToolButton:
        break;
    default:
        return size;
    }
    if (!isPropertySheetItem(widget))
        return size;
    const int rowHeight = proxy()->pixelMetric(static_cast<PixelMetric>(PM_PropertySheetRowHeight), option, widget);
    if (rowHeight <= 2)
        return size;
    return { size.width(), rowHeight - 2 };
}

int MarlixStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const
{
    switch (static_cast<unsigned int>(metric)) {
    case PM_PropertySheetRowHeight:
        if (option)
            return option->fontMetrics.height() + ROW_HEIGHT_EXTRA;
        return widget ? widget->fontMetrics().height() + ROW_HEIGHT_EXTRA : 0;
    case PM_ToolTipMaximumWidth:
        return 0;
    case PM_ToolTipPadding:
        return TOOLTIP_PADDING;
    case PM_ToolTipFormatColumns:
        return TOOLTIP_FORMAT_COLUMNS;
    default:
        break;
    }
    switch (metric) {
    case PM_ToolTipLabelFrameWidth:
        return QProxyStyle::pixelMetric(metric, option, widget) + 1;
    case PM_SliderLength:
        if (isColorSlider(widget))
            return getDeviceIndependentPixels(COLOR_SLIDER_HANDLE_LENGTH, widget);
        break;
    case PM_SliderThickness:
        if (isColorSlider(widget))
            return COLOR_SLIDER_THICKNESS;
        break;
    default:
        break;
    }
    return QProxyStyle::pixelMetric(metric, option, widget);
}

QIcon MarlixStyle::standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const
{
    // The base style's restore button is a pixmap of a few pixels that a scaled screen shows blurred; the undock
    // buttons get the library's own icon, drawn for single and double density.
    if (icon == SP_TitleBarNormalButton) {
        QIcon undock;
        for (const char* file : { ":icons/ui/Zorva.Dock/Undock.png", ":icons/ui/Zorva.Dock/Undock@2x.png" })
            undock.addPixmap(QPixmap(QString::fromLatin1(file)));
        if (!undock.isNull())
            return undock;
    }
    return QProxyStyle::standardIcon(icon, option, widget);
}

int MarlixStyle::styleHint(
    StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* returnData) const
{
    switch (static_cast<unsigned int>(hint)) {
    case SH_UnifyLabelColumnWidth:
        return 1;
    case SH_InstallPropertyControllerPin:
    case SH_InstallPropertyControllerHandler:
    case SH_SpinBoxDraggingHint:
    case SH_PropertySheetContextMenu:
        return 0;
    default:
        break;
    }
    switch (hint) {
    case SH_Menu_Scrollable:
        return 1;
    case SH_ItemView_ShowDecorationSelected:
        if (widget) {
            if (const QVariant show = widget->property("Zorva.ShowSelection"); show.isValid())
                return show.toBool() ? 1 : 0;
        }
        break;
    default:
        break;
    }
    return QProxyStyle::styleHint(hint, option, widget, returnData);
}

QCursor MarlixStyle::standardCursor(Qt::CursorShape, const QStyleOption*, const QWidget*) const
{
    Detail::throwStopException("styles/MarlixStyle", __LINE__);
}

bool MarlixStyle::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::Resize && object->isWidgetType() && object->inherits("QTipLabel")
        && toolTipResizeDepth.load() == 0) {
        // Resizing the label sends another resize event to this filter; the counter cuts that loop.
        struct Guard
        {
            std::atomic<int>& depth;
            explicit Guard(std::atomic<int>& d)
                : depth(d)
            {
                ++depth;
            }
            ~Guard() { --depth; }
        } guard(toolTipResizeDepth);
        resizeToolTip(static_cast<QWidget*>(object));
    }
    return QProxyStyle::eventFilter(object, event);
}

void MarlixStyle::resizeToolTip(QWidget* widget) const
{
    auto* label = qobject_cast<QLabel*>(widget);
    if (!label)
        return;
    const int maximumWidth = pixelMetric(static_cast<PixelMetric>(PM_ToolTipMaximumWidth), nullptr, label);
    const int frame = pixelMetric(PM_ToolTipLabelFrameWidth, nullptr, label);
    const int padding = pixelMetric(static_cast<PixelMetric>(PM_ToolTipPadding), nullptr, label);
    label->setIndent(0);
    label->setMargin(0);
    label->setContentsMargins(padding + frame, frame, padding + frame, frame);
    if (maximumWidth < 1) {
        label->resize(label->sizeHint());
        return;
    }
    label->setWordWrap(false);
    const int naturalWidth = label->sizeHint().width();
    label->setWordWrap(true);
    const int width = std::min(naturalWidth, maximumWidth);
    label->resize(width, label->heightForWidth(width));
}

bool MarlixStyle::isPropertySheetItem(const QWidget* widget)
{
    if (!widget)
        return false;
    const auto* section = qobject_cast<const Widgets::Collapsible*>(widget->parentWidget());
    if (!section)
        return false;
    if (qobject_cast<const Widgets::Collapsible*>(widget) || qobject_cast<const QMenu*>(widget)
        || widget->inherits("Marlix::Widgets::PropertyControllerPin"))
        return false;
    return section->cornerWidget() != widget;
}

void MarlixStyle::drawDragHoveredOutline(
    const QRect& rect, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    if (!isDragHovered(widget))
        return;
    const int width = std::max(1, getDeviceIndependentPixels(DRAG_HOVER_OUTLINE_WIDTH, widget));
    painter->save();
    QPen pen(option->palette.color(QPalette::Active, QPalette::Highlight), width);
    pen.setJoinStyle(Qt::MiterJoin);
    painter->setPen(pen);
    painter->setBrush(Qt::NoBrush);
    const qreal inset = width / 2.0;
    painter->drawRect(QRectF(rect).adjusted(inset, inset, -inset, -inset));
    painter->restore();
}

void MarlixStyle::drawBranchLines(const QStyleOption* option, QPainter* painter) const
{
    const QRect& r = option->rect;
    const int midX = r.x() + r.width() / 2;
    const int midY = r.y() + r.height() / 2;
    QColor color = option->palette.color(QPalette::Text);
    color.setAlpha(90);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setPen(QPen(color, 1));
    // Lines stop short of the expand arrow that the base style draws in the middle.
    const int gap = (option->state & State_Children) ? std::max(2, std::min(r.width(), r.height()) / 2 - 1) : 0;
    if (option->state & State_Item) {
        painter->drawLine(midX + gap, midY, r.right(), midY);
        painter->drawLine(midX, r.top(), midX, midY - gap);
        if (option->state & State_Sibling)
            painter->drawLine(midX, midY + gap, midX, r.bottom());
    } else if (option->state & State_Sibling) {
        painter->drawLine(midX, r.top(), midX, r.bottom());
    }
    painter->restore();
}

bool MarlixStyle::isDragHovered(const QWidget* widget)
{
    return widget && widget->property("Zorva.DragHovered").toBool();
}

bool MarlixStyle::isFlatButton(const QWidget* widget)
{
    return widget && widget->property("Zorva.FlatButton").toBool();
}

int MarlixStyle::branchDisplay(const QWidget* widget)
{
    if (!widget)
        return -1;
    const QVariant show = widget->property("Zorva.ShowBranches");
    if (!show.isValid())
        return -1;
    return show.toBool() ? 1 : 0;
}

} // namespace Marlix
