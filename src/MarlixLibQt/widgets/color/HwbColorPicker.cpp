#include <MarlixLibQt/widgets/color/HwbColorPicker.h>

#include <MarlixLibQt/widgets/accessibility/AccessibleWidgetsPrivate.h>

#include <MarlixLib/base/Exception.h>

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

namespace Marlix::Widgets {

namespace {

// The cursor is drawn in the inverse of the colour under it, half transparent, so it shows on any colour.
constexpr int CURSOR_ALPHA = 128;
constexpr int CURSOR_ARM = 7;
constexpr int CURSOR_DIAMETER = 10;
// Qt's arcs are measured in sixteenths of a degree.
constexpr int ARC_START = 90 * 16;
constexpr int ARC_HALF_TURN = 180 * 16;

// Position i of n along a side as a fraction of the last position; a side of one pixel is all the first value.
float fractionOf(int i, int n)
{
    return n > 1 ? static_cast<float>(i) / static_cast<float>(n - 1) : 0.0f;
}

double clampedFraction(double position, int extent)
{
    return extent > 0 ? std::clamp(position, 0.0, static_cast<double>(extent)) / extent : 0.0;
}

// An arrow moves the cursor by one 0-255 step, Page Up and Page Down by a tenth.
constexpr double KEY_STEP = 1.0 / 255.0;
constexpr double PAGE_STEP = 0.1;
// Wide enough to be seen against any colour of the field.
constexpr double FOCUS_WIDTH = 2.0;

/// How far a key moves the cursor along x and y (down is positive); nothing for other keys.
Optional<QPointF> keyMovement(const QKeyEvent& event)
{
    const double step = event.modifiers() & Qt::ShiftModifier ? PAGE_STEP : KEY_STEP;
    switch (event.key()) {
    case Qt::Key_Left:
        return QPointF(-step, 0.0);
    case Qt::Key_Right:
        return QPointF(step, 0.0);
    case Qt::Key_Up:
        return QPointF(0.0, -step);
    case Qt::Key_Down:
        return QPointF(0.0, step);
    case Qt::Key_PageUp:
        return QPointF(0.0, -PAGE_STEP);
    case Qt::Key_PageDown:
        return QPointF(0.0, PAGE_STEP);
    default:
        return {};
    }
}

} // namespace

HueBlacknessPicker::HueBlacknessPicker(SharedPtr<Model<QPointF>> point, QWidget* parent)
    : QWidget(parent)
    , point(std::move(point))
{
    if (!this->point)
        Marlix::Detail::throwStopException("widgets/HwbColorPicker", __LINE__);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    registerCallback(this->point->addCallback([this](QPointF) { notify(); }));
    notify();
}

HueBlacknessPicker::~HueBlacknessPicker()
{
    if (pressed)
        point->commitChange();
}

QImage HueBlacknessPicker::makeField(const QSize& size)
{
    if (size.isEmpty())
        return {};
    QImage image(size, QImage::Format_RGB32);
    const int w = size.width();
    const int h = size.height();
    std::vector<float> hues(static_cast<std::size_t>(w));
    for (int x = 0; x < w; ++x)
        hues[static_cast<std::size_t>(x)] = fractionOf(x, w);
    // At whiteness 0, fromHwbF is the fully saturated HSV colour of value 1 - blackness, and black at blackness 1:
    // the same colours, without the per-pixel cost of going through the HWB rules (a field is 92160 of them).
    for (int y = 0; y < h; ++y) {
        const float blackness = fractionOf(y, h);
        const float saturation = blackness == 1.0f ? 0.0f : 1.0f;
        const float value = 1.0f - blackness;
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x)
            line[x] = QColor::fromHsvF(hues[static_cast<std::size_t>(x)], saturation, value).rgb();
    }
    return image;
}

void HueBlacknessPicker::calculateFade()
{
    // Every pixel is a colour conversion: a hidden field is not worth it until it is shown.
    if (!isVisible()) {
        fieldOutdated = true;
        return;
    }
    fieldOutdated = false;
    // Made per device pixel: a field stretched from logical pixels shows steps on a scaled screen.
    const qreal ratio = devicePixelRatioF();
    QImage image
        = makeField(QSize(static_cast<int>(std::ceil(width() * ratio)), static_cast<int>(std::ceil(height() * ratio))));
    image.setDevicePixelRatio(ratio);
    field = QPixmap::fromImage(std::move(image));
    ++fieldUpdates;
    update();
}

QPointF HueBlacknessPicker::getPositionOf(const QPointF& value) const
{
    return { width() * value.x(), height() * value.y() };
}

void HueBlacknessPicker::notify()
{
    update();
}

QSize HueBlacknessPicker::sizeHint() const
{
    return { INITIAL_WIDTH, INITIAL_HEIGHT };
}

void HueBlacknessPicker::paintEvent(QPaintEvent*)
{
    if (fieldOutdated || field.devicePixelRatio() != devicePixelRatioF())
        calculateFade();
    QPainter painter(this);
    painter.drawPixmap(0, 0, field);
    drawCursor(painter);
    drawKeyboardFocus(painter, *this, rect(), FOCUS_WIDTH);
}

void HueBlacknessPicker::drawCursor(QPainter& painter) const
{
    const QPointF value = point->get();
    const auto hue = static_cast<float>(value.x());
    const auto blackness = static_cast<float>(value.y());
    const QPoint centre(
        static_cast<int>(std::lround(width() * value.x())), static_cast<int>(std::lround(height() * value.y())));
    painter.setPen(QColorExtended::fromHwbF(hue, 0.0f, blackness).inverted(CURSOR_ALPHA).getColor());
    painter.setBrush(Qt::NoBrush);
    painter.drawLine(centre.x() - CURSOR_ARM, centre.y(), centre.x() + CURSOR_ARM, centre.y());
    painter.drawLine(centre.x(), centre.y() - CURSOR_ARM, centre.x(), centre.y() + CURSOR_ARM);
    painter.drawEllipse(centre, CURSOR_DIAMETER / 2, CURSOR_DIAMETER / 2);
}

void HueBlacknessPicker::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    calculateFade();
}

void HueBlacknessPicker::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (fieldOutdated)
        calculateFade();
}

void HueBlacknessPicker::setFromPosition(const QPointF& position)
{
    point->set({ clampedFraction(position.x(), width()), clampedFraction(position.y(), height()) });
}

void HueBlacknessPicker::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    event->accept();
    if (pressed)
        point->commitChange();
    pressed = true;
    point->beginChange();
    setFromPosition(event->position());
}

void HueBlacknessPicker::mouseMoveEvent(QMouseEvent* event)
{
    if (!pressed || !(event->buttons() & Qt::LeftButton)) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    event->accept();
    setFromPosition(event->position());
}

void HueBlacknessPicker::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !pressed) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    event->accept();
    pressed = false;
    point->commitChange();
}

void HueBlacknessPicker::keyPressEvent(QKeyEvent* event)
{
    const Optional<QPointF> movement = keyMovement(*event);
    if (!movement || pressed) {
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
    const QPointF moved = point->get() + *movement;
    // Every key press is a change of its own, as one click is.
    point->beginChange();
    point->set({ std::clamp(moved.x(), 0.0, 1.0), std::clamp(moved.y(), 0.0, 1.0) });
    point->commitChange();
}

WhitenessPicker::WhitenessPicker(SharedPtr<Model<QColorExtended>> color, QWidget* parent)
    : QWidget(parent)
    , color(std::move(color))
{
    if (!this->color)
        Marlix::Detail::throwStopException("widgets/HwbColorPicker", __LINE__);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    // The bar shows the current hue and blackness, so every colour change makes it again.
    registerCallback(this->color->addCallback([this](const QColorExtended&) { calculateFade(); }));
    notify();
}

WhitenessPicker::~WhitenessPicker()
{
    if (pressed)
        color->commitChange();
}

void WhitenessPicker::calculateFade()
{
    if (!isVisible() || size().isEmpty()) {
        barOutdated = true;
        return;
    }
    barOutdated = false;
    const QColorExtended current = color->get();
    const float hue = current.hueF();
    const float blackness = current.blacknessF();
    const qreal ratio = devicePixelRatioF();
    const int w = static_cast<int>(std::ceil(width() * ratio));
    const int h = static_cast<int>(std::ceil(height() * ratio));
    QImage image(w, h, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    for (int y = 0; y < h; ++y) {
        const QRgb pixel = QColorExtended::fromHwbF(hue, fractionOf(y, h), blackness).getColor().rgb();
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        std::fill(line, line + w, pixel);
    }
    bar = QPixmap::fromImage(std::move(image));
    ++barUpdates;
    update();
}

double WhitenessPicker::getPositionOf(float whiteness) const
{
    return height() * std::clamp(static_cast<double>(whiteness), 0.0, 1.0);
}

void WhitenessPicker::notify()
{
    calculateFade();
}

QSize WhitenessPicker::sizeHint() const
{
    return { INITIAL_WIDTH, INITIAL_HEIGHT };
}

void WhitenessPicker::paintEvent(QPaintEvent*)
{
    if (barOutdated || bar.devicePixelRatio() != devicePixelRatioF())
        calculateFade();
    QPainter painter(this);
    painter.drawPixmap(0, 0, bar);
    drawCursor(painter);
    drawKeyboardFocus(painter, *this, rect(), FOCUS_WIDTH);
}

void WhitenessPicker::drawCursor(QPainter& painter) const
{
    const QColorExtended current = color->get();
    // The 0-255 whiteness is the row itself, not scaled to the height: at the bar's first height of 256 rows it
    // matches the mouse, and hosts that lay the bar out taller rely on the cursor staying where it always was.
    const int y = current.whiteness();
    const int right = width() - 1;
    painter.setPen(current.inverted(CURSOR_ALPHA).getColor());
    painter.setBrush(Qt::NoBrush);
    painter.drawLine(0, y, right, y);
    painter.drawLine(0, y - CURSOR_ARM, 0, y + CURSOR_ARM);
    painter.drawLine(right, y - CURSOR_ARM, right, y + CURSOR_ARM);
    const int radius = CURSOR_DIAMETER / 2;
    painter.drawArc(QRect(-radius, y - radius, CURSOR_DIAMETER, CURSOR_DIAMETER), ARC_START, -ARC_HALF_TURN);
    painter.drawArc(QRect(right - radius, y - radius, CURSOR_DIAMETER, CURSOR_DIAMETER), ARC_START, ARC_HALF_TURN);
}

void WhitenessPicker::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    calculateFade();
}

void WhitenessPicker::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (barOutdated)
        calculateFade();
}

void WhitenessPicker::setFromPosition(double y)
{
    const QColorExtended current = color->get();
    const auto whiteness = static_cast<float>(clampedFraction(y, height()));
    color->set(QColorExtended::fromHwbF(current.hueF(), whiteness, current.blacknessF(), current.alphaF()));
}

void WhitenessPicker::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    event->accept();
    if (pressed)
        color->commitChange();
    pressed = true;
    color->beginChange();
    setFromPosition(event->position().y());
}

void WhitenessPicker::mouseMoveEvent(QMouseEvent* event)
{
    if (!pressed || !(event->buttons() & Qt::LeftButton)) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    event->accept();
    setFromPosition(event->position().y());
}

void WhitenessPicker::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !pressed) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    event->accept();
    pressed = false;
    color->commitChange();
}

void WhitenessPicker::keyPressEvent(QKeyEvent* event)
{
    const Optional<QPointF> movement = keyMovement(*event);
    // The bar runs from top to bottom: only up and down move along it.
    if (!movement || movement->y() == 0.0 || pressed) {
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
    const QColorExtended current = color->get();
    const auto whiteness = static_cast<float>(std::clamp(current.whitenessF() + movement->y(), 0.0, 1.0));
    color->beginChange();
    color->set(QColorExtended::fromHwbF(current.hueF(), whiteness, current.blacknessF(), current.alphaF()));
    color->commitChange();
}

HwbColorPicker::HwbColorPicker(SharedPtr<Model<QColorExtended>> color, QWidget* parent)
    : QFrame(parent)
    , color(std::move(color))
{
    if (!this->color)
        Marlix::Detail::throwStopException("widgets/HwbColorPicker", __LINE__);
    Model<QColorExtended>* source = this->color.get();
    // The whiteness is read back as entered: a field move at blackness 1 must not lose it.
    auto point = makeSharedPtr<LambdaModel<QPointF>>(
        this->color,
        [source] {
            const QColorExtended current = source->get();
            return QPointF(current.hueF(), current.blacknessF());
        },
        [source](QPointF value) {
            const QColorExtended current = source->get();
            source->set(QColorExtended::fromHwbF(
                static_cast<float>(value.x()), current.whitenessF(), static_cast<float>(value.y()), current.alphaF()));
        });
    field = new HueBlacknessPicker(std::move(point), this);
    whitenessBar = new WhitenessPicker(this->color, this);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(field);
    layout->addWidget(whitenessBar);
}

HwbColorPicker::~HwbColorPicker() = default;

} // namespace Marlix::Widgets
