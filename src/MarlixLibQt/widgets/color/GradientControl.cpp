#include <MarlixLibQt/widgets/color/GradientControl.h>

#include <MarlixLibQt/Color.h>
#include <MarlixLibQt/Icons.h>
#include <MarlixLibQt/widgets/color/ColorPickerDialog.h>

#include <MarlixLib/base/Exception.h>

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPointer>

#include <algorithm>
#include <cmath>

namespace Marlix::Widgets {

namespace {
std::uint8_t toDisplayByte(float linear)
{
    const float encoded = std::pow(std::clamp(linear, 0.0f, 1.0f), 1.0f / 2.2f);
    return static_cast<std::uint8_t>(std::lround(encoded * 255.0f));
}
} // namespace

GradientControl::GradientControl(SharedPtr<Model<ColorGradient>> gradient, QWidget* parent)
    : GradientDisplay([this](float t) { return rampColorAt(t); }, parent)
    , model(std::move(gradient))
{
    if (!model)
        Marlix::Detail::throwStopException("widgets/GradientControl", __LINE__);
    registerCallback(model->addCallback([this](ColorGradient) { notify(); }));
    notify();
}

GradientControl::~GradientControl() = default;

RgbBytes GradientControl::rampColorAt(float position) const
{
    const Rgb c = shown.getColorAt(position).toRgb();
    return RgbBytes { toDisplayByte(c.r), toDisplayByte(c.g), toDisplayByte(c.b) };
}

void GradientControl::notify()
{
    shown = model->get();
    stops = shown.getStops();
    if (selected && *selected >= static_cast<int>(stops.size()))
        selected.reset();
    updateDisplay();
}

QPointF GradientControl::getControlPointPosition(int index) const
{
    if (index < 0 || index >= static_cast<int>(stops.size()))
        Marlix::Detail::throwStopException("widgets/GradientControl", __LINE__);
    const QRect rect = getGradientRectangle();
    const float position = std::clamp(stops[static_cast<std::size_t>(index)].position, 0.0f, 1.0f);
    const int x = rect.x() + static_cast<int>(static_cast<float>(rect.width()) * position);
    return QPointF(x, rect.y() + rect.height());
}

Optional<int> GradientControl::getControlPointAtPosition(const QPoint& point) const
{
    const int reach = getMarginSize() - 1;
    for (int i = 0; i < static_cast<int>(stops.size()); ++i) {
        const QPoint tip = getControlPointPosition(i).toPoint();
        const int dx = tip.x() - point.x();
        const int dy = tip.y() - point.y();
        if (dx * dx + dy * dy <= reach * reach)
            return i;
    }
    return {};
}

void GradientControl::writeModel()
{
    model->set(ColorGradient(stops));
}

void GradientControl::paintEvent(QPaintEvent* event)
{
    GradientDisplay::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int m = getMarginSize();
    const QColor outline = palette().color(QPalette::WindowText);
    const QColor highlight = palette().color(QPalette::Highlight);
    for (int i = 0; i < static_cast<int>(stops.size()); ++i) {
        const QPointF tip = getControlPointPosition(i);
        // A triangle in the strip under the ramp, pointing at the stop's place on the ramp.
        QPainterPath handle;
        handle.moveTo(tip);
        handle.lineTo(tip.x() - m + 0.5, tip.y() + m - 0.5);
        handle.lineTo(tip.x() + m - 0.5, tip.y() + m - 0.5);
        handle.closeSubpath();
        const QColor color = fromRgb(stops[static_cast<std::size_t>(i)].color, true);
        if (color.alpha() < 255)
            painter.fillPath(handle, checkerboardBrush4X4());
        painter.fillPath(handle, color);
        const bool isSelected = selected == i;
        painter.setPen(QPen(isSelected ? highlight : outline, isSelected ? 2.0 : 1.0));
        painter.drawPath(handle);
        // A tick across the ramp, so a stop can be told apart from the colours around it.
        const QColor tick = isSelected ? highlight : QColorExtended(color).inverted(160).getColor();
        painter.setPen(QPen(tick, 1.0));
        painter.drawLine(QPointF(tip.x(), tip.y() - m), tip);
    }
}

void GradientControl::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        selected = getControlPointAtPosition(event->position().toPoint());
    else if (event->button() == Qt::RightButton)
        selected.reset();
    update();
    event->accept();
}

void GradientControl::mouseMoveEvent(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::LeftButton) || !selected)
        return;
    ColorGradient::Stop moved = stops[static_cast<std::size_t>(*selected)];
    moved.position = getRelativePosition(event->position().toPoint().x());
    stops[static_cast<std::size_t>(*selected)] = moved;
    std::stable_sort(stops.begin(), stops.end(), [](const auto& a, const auto& b) { return a.position < b.position; });
    const auto found = std::find_if(stops.begin(), stops.end(), [&moved](const ColorGradient::Stop& stop) {
        return stop.color.r == moved.color.r && stop.color.g == moved.color.g && stop.color.b == moved.color.b
            && stop.position == moved.position;
    });
    if (found == stops.end())
        Marlix::Detail::throwStopException("widgets/GradientControl", __LINE__);
    selected = static_cast<int>(found - stops.begin());
    shown.setStops(stops);
    updateDisplay();
}

void GradientControl::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        const bool dragged = selected.has_value();
        selected.reset();
        update();
        // A press on a stop without movement changes nothing and leaves no undo step.
        if (dragged && stops != model->get().getStops())
            writeModel();
    } else if (event->button() == Qt::RightButton) {
        if (const auto hit = getControlPointAtPosition(event->position().toPoint())) {
            stops.erase(stops.begin() + *hit);
            writeModel();
        }
    }
}

void GradientControl::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    selected.reset();
    update();
    const QPoint point = event->position().toPoint();
    if (const auto hit = getControlPointAtPosition(point)) {
        editStopColor(*hit);
    } else if (getGradientRectangle().contains(point)) {
        const float position = getRelativePosition(point.x());
        ColorGradient gradient(stops);
        gradient.addStop({ gradient.getRgbAt(position), position });
        stops = gradient.getStops();
        writeModel();
    }
}

void GradientControl::editStopColor(int index)
{
    QPointer<ColorPickerDialog> dialog = new ColorPickerDialog(this, ColorFormat::Rgba);
    dialog->setWindowTitle(tr(COLOR_DIALOG_TITLE));
    dialog->setValue(stops[static_cast<std::size_t>(index)].color);
    const bool accepted = dialog->exec() == QDialog::Accepted;
    // The control may have been destroyed while the dialog's event loop ran; the dialog went with it.
    if (!dialog)
        return;
    const Rgb color = dialog->value();
    dialog->deleteLater();
    // The model may have changed while the dialog was open; the stop is only recoloured if it is still there.
    if (accepted && index < static_cast<int>(stops.size())) {
        stops[static_cast<std::size_t>(index)].color = color;
        writeModel();
    }
}

} // namespace Marlix::Widgets
