#include <MarlixLibQt/widgets/editors/Slider.h>

#include <MarlixLib/base/Exception.h>

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

#include <algorithm>
#include <cmath>

namespace Marlix::Widgets {

Slider::Slider(SharedPtr<Model<double>> model, QWidget* parent)
    : QWidget(parent)
    , model(std::move(model))
{
    if (!this->model)
        Marlix::Detail::throwStopException("widgets/Slider", __LINE__);
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    registerCallback(this->model->addCallback([this](double) { notify(); }));
    notify();
}

Slider::~Slider() = default;

void Slider::setConversion(SliderConverter newConverter)
{
    converter = std::move(newConverter);
    notify();
}

void Slider::notify()
{
    position = converter.toSlider(model->get());
    update();
}

int Slider::getHalfHandle() const
{
    QStyleOptionSlider option;
    option.initFrom(this);
    option.orientation = Qt::Horizontal;
    return style()->pixelMetric(QStyle::PM_SliderLength, &option, this) / 2;
}

int Slider::getTrackLeft() const
{
    return getHalfHandle();
}

int Slider::getTrackRight() const
{
    return width() - getHalfHandle();
}

void Slider::initStyleOption(QStyleOptionSlider& option) const
{
    option.initFrom(this);
    option.orientation = Qt::Horizontal;
    option.subControls = QStyle::SC_SliderGroove | QStyle::SC_SliderHandle;
    option.minimum = 0;
    option.maximum = std::max(0, width() - style()->pixelMetric(QStyle::PM_SliderLength, &option, this));
    // One slider step is one pixel of track.
    // A value far below the minimum of a logarithmic scale has no position (the logarithm of a negative number):
    // its handle rests at the start, as any other value below the minimum does.
    const double shown = std::isnan(position) ? 0.0 : std::clamp(position, 0.0, 1.0);
    const auto sliderPosition = static_cast<int>(std::lround(option.maximum * shown));
    option.sliderPosition = sliderPosition;
    option.sliderValue = sliderPosition;
    option.tickPosition = QSlider::NoTicks;
    if (pressed) {
        option.activeSubControls = QStyle::SC_SliderHandle;
        option.state |= QStyle::State_Sunken;
    }
}

void Slider::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QStyleOptionSlider option;
    initStyleOption(option);
    style()->drawComplexControl(QStyle::CC_Slider, &option, &painter, this);
}

QSize Slider::sizeHint() const
{
    ensurePolished();
    QStyleOptionSlider option;
    initStyleOption(option);
    const int thickness = style()->pixelMetric(QStyle::PM_SliderThickness, &option, this);
    return style()->sizeFromContents(QStyle::CT_Slider, &option, QSize(width(), thickness), this);
}

QSize Slider::minimumSizeHint() const
{
    QStyleOptionSlider option;
    initStyleOption(option);
    return { style()->pixelMetric(QStyle::PM_SliderLength, &option, this), sizeHint().height() };
}

void Slider::mouseEvent(QMouseEvent* event)
{
    const int half = getHalfHandle();
    const int span = width() - 2 * half;
    const int x = std::clamp(qRound(event->position().x()), half, std::max(half, width() - half)) - half;
    position = span > 0 ? static_cast<double>(x) / span : 0.0;
    model->set(converter.fromSlider(position));
    update();
}

void Slider::mousePressEvent(QMouseEvent* event)
{
    QWidget::mousePressEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    event->accept();
    pressed = true;
    model->beginChange();
    mouseEvent(event);
}

void Slider::mouseMoveEvent(QMouseEvent* event)
{
    QWidget::mouseMoveEvent(event);
    if (!pressed || !(event->buttons() & Qt::LeftButton))
        return;
    event->accept();
    mouseEvent(event);
}

void Slider::mouseReleaseEvent(QMouseEvent* event)
{
    QWidget::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton || !pressed)
        return;
    event->accept();
    mouseEvent(event);
    pressed = false;
    model->commitChange();
}

} // namespace Marlix::Widgets
