#include <MarlixLibQt/widgets/color/GradientDisplay.h>

#include <MarlixLibQt/QtUtils.h>

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Marlix::Widgets {

namespace {

// The ramp has one column per device pixel, so that a scaled screen shows it as finely as it can.
QSize devicePixels(const QSize& size, qreal ratio)
{
    return { static_cast<int>(std::ceil(size.width() * ratio)), static_cast<int>(std::ceil(size.height() * ratio)) };
}

} // namespace

GradientDisplay::GradientDisplay(MappingFunction mapping, QWidget* parent)
    : QWidget(parent)
    , mapping(std::move(mapping))
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    // A derived editor's mapping may read members that do not exist yet, so the ramp is only made when it is painted.
    resize(width(), getDeviceIndependentPixels(RAMP_HEIGHT + MARGIN, this));
}

GradientDisplay::~GradientDisplay() = default;

void GradientDisplay::setMappingFunction(MappingFunction newMapping)
{
    mapping = std::move(newMapping);
    updateDisplay();
}

int GradientDisplay::getMarginSize() const
{
    return getDeviceIndependentPixels(MARGIN, this);
}

QRect GradientDisplay::getGradientRectangle() const
{
    const int m = getMarginSize();
    return QRect(m, 0, std::max(0, width() - 2 * m), std::max(0, height() - m));
}

float GradientDisplay::getRelativePosition(int x) const
{
    const QRect rect = getGradientRectangle();
    if (rect.width() <= 1)
        return 0.0f;
    const float t = static_cast<float>(x - rect.x()) / static_cast<float>(rect.width() - 1);
    return std::clamp(t, 0.0f, 1.0f);
}

void GradientDisplay::updateDisplay()
{
    rampOutdated = true;
    update();
}

QSize GradientDisplay::sizeHint() const
{
    const QWidget* parent = parentWidget();
    return QSize(parent ? parent->width() : width(), height());
}

QSize GradientDisplay::minimumSizeHint() const
{
    const int m = getMarginSize();
    return QSize(4 * m, getDeviceIndependentPixels(RAMP_HEIGHT / 2.0, this) + m);
}

void GradientDisplay::calculateFade()
{
    const QRect rect = getGradientRectangle();
    if (rect.isEmpty() || !mapping) {
        ramp = QPixmap();
        return;
    }
    const qreal ratio = devicePixelRatioF();
    QImage image(devicePixels(rect.size(), ratio), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    const int columns = image.width();
    auto* first = reinterpret_cast<QRgb*>(image.scanLine(0));
    for (int x = 0; x < columns; ++x) {
        const float t = columns > 1 ? static_cast<float>(x) / static_cast<float>(columns - 1) : 0.0f;
        const RgbBytes c = mapping(t);
        first[x] = qRgb(c.r, c.g, c.b);
    }
    const auto lineBytes = static_cast<std::size_t>(image.bytesPerLine());
    for (int y = 1; y < image.height(); ++y)
        std::memcpy(image.scanLine(y), first, lineBytes);
    ramp = QPixmap::fromImage(std::move(image));
}

void GradientDisplay::paintEvent(QPaintEvent*)
{
    // A window moved to a screen of another scale paints again without a resize.
    if (rampOutdated || ramp.size() != devicePixels(getGradientRectangle().size(), devicePixelRatioF())
        || ramp.devicePixelRatio() != devicePixelRatioF()) {
        calculateFade();
        rampOutdated = false;
    }
    if (ramp.isNull())
        return;
    QPainter painter(this);
    painter.drawPixmap(getGradientRectangle().topLeft(), ramp);
}

void GradientDisplay::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    rampOutdated = true;
}

} // namespace Marlix::Widgets
