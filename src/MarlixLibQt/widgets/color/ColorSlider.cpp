#include <MarlixLibQt/widgets/color/ColorSlider.h>

#include <MarlixLibQt/Icons.h>

#include <MarlixLib/base/Exception.h>

#include <QEvent>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Marlix::Widgets {

namespace {
// An opaque image must not carry the mapping's alpha into its unused byte.
constexpr QRgb OPAQUE_ALPHA = 0xff000000u;
} // namespace

ColorSlider::ColorSlider(
    SharedPtr<Model<float>> model, MappingFunction mapping, int widthHint, bool showTransparency, QWidget* parent)
    : QWidget(parent)
    , model(std::move(model))
    , mapping(std::move(mapping))
    , widthHint(widthHint)
    , showTransparency(showTransparency)
{
    if (!this->model || !this->mapping)
        Marlix::Detail::throwStopException("widgets/ColorSlider", __LINE__);
    setFocusPolicy(Qt::NoFocus);
    // The style may ask for a slider as thick as the row: the row's other widgets decide its height.
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    registerCallback(this->model->addCallback([this](float) { notify(); }));
    notify();
}

ColorSlider::~ColorSlider()
{
    if (pressed)
        model->commitChange();
}

void ColorSlider::setMappingFunction(MappingFunction newMapping)
{
    if (!newMapping)
        Marlix::Detail::throwStopException("widgets/ColorSlider", __LINE__);
    mapping = std::move(newMapping);
    // A hidden slider (a panel on another tab) waits for its show event instead of evaluating every column now.
    if (isVisible())
        calculateFade();
    else
        gradientOutdated = true;
    update();
}

void ColorSlider::notify()
{
    update();
}

void ColorSlider::calculateFade()
{
    gradientOutdated = false;
    // One column per device pixel: on a scaled screen a track made per logical pixel would be stretched into steps.
    const qreal ratio = devicePixelRatioF();
    const int w = static_cast<int>(std::ceil(width() * ratio));
    const int h = static_cast<int>(std::ceil(height() * ratio));
    if (w <= 0 || h <= 0) {
        gradient = QPixmap();
        return;
    }
    QImage image(w, h, showTransparency ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    auto* line = reinterpret_cast<QRgb*>(image.scanLine(0));
    const QRgb fill = showTransparency ? 0u : OPAQUE_ALPHA;
    // A slider one pixel wide shows the left end rather than dividing by zero.
    const double last = w > 1 ? static_cast<double>(w - 1) : 1.0;
    for (int x = 0; x < w; ++x)
        line[x] = mapping(static_cast<float>(x / last)).rgba() | fill;
    const auto bytes = static_cast<std::size_t>(w) * sizeof(QRgb);
    for (int y = 1; y < h; ++y)
        std::memcpy(image.scanLine(y), line, bytes);
    gradient = QPixmap::fromImage(std::move(image));
    ++gradientUpdates;
}

double ColorSlider::getPositionOfValue(float value) const
{
    return width() * std::clamp(static_cast<double>(value), 0.0, 1.0);
}

int ColorSlider::getHandlePosition() const
{
    return static_cast<int>(std::lround(getPositionOfValue(model->get())));
}

void ColorSlider::initStyleOption(QStyleOptionSlider& option) const
{
    option.initFrom(this);
    option.orientation = Qt::Horizontal;
    option.subControls = QStyle::SC_SliderHandle;
    // One slider step per pixel, the whole width: the handle's centre stands on the column of the value's colour.
    option.minimum = 0;
    option.maximum = width();
    option.sliderPosition = getHandlePosition();
    option.sliderValue = option.sliderPosition;
    option.tickPosition = QSlider::NoTicks;
    if (pressed) {
        option.activeSubControls = QStyle::SC_SliderHandle;
        option.state |= QStyle::State_Sunken;
    }
}

int ColorSlider::getThickness() const
{
    QStyleOptionSlider option;
    option.initFrom(this);
    option.orientation = Qt::Horizontal;
    return style()->pixelMetric(QStyle::PM_SliderThickness, &option, this);
}

QSize ColorSlider::sizeHint() const
{
    return { widthHint, getThickness() };
}

void ColorSlider::paintEvent(QPaintEvent*)
{
    // A window moved to a screen of another scale paints again without a resize.
    if (gradientOutdated || gradient.devicePixelRatio() != devicePixelRatioF())
        calculateFade();
    QPainter painter(this);
    if (showTransparency) {
        painter.fillRect(rect(), checkerboardBrush4X4());
    }
    painter.drawPixmap(0, 0, gradient);
    QStyleOptionSlider option;
    initStyleOption(option);
    style()->drawComplexControl(QStyle::CC_Slider, &option, &painter, this);
}

void ColorSlider::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (isVisible())
        calculateFade();
    else
        gradientOutdated = true;
}

void ColorSlider::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (gradientOutdated)
        calculateFade();
}

void ColorSlider::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        setMaximumHeight(getThickness());
}

void ColorSlider::setFromPosition(double x)
{
    const int w = width();
    const double value = w > 0 ? std::clamp(x, 0.0, static_cast<double>(w)) / w : 0.0;
    model->set(static_cast<float>(value));
}

void ColorSlider::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    event->accept();
    if (pressed)
        model->commitChange();
    pressed = true;
    model->beginChange();
    setFromPosition(event->position().x());
}

void ColorSlider::mouseMoveEvent(QMouseEvent* event)
{
    if (!pressed || !(event->buttons() & Qt::LeftButton)) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    event->accept();
    setFromPosition(event->position().x());
}

void ColorSlider::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !pressed) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    event->accept();
    pressed = false;
    update();
    model->commitChange();
}

} // namespace Marlix::Widgets
