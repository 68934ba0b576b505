#include <MarlixLibQt/widgets/color/EyeDropperButton.h>

#include <MarlixLibQt/widgets/color/ScreenColorPicker.h>

#include <MarlixLib/base/Exception.h>

#include <QIcon>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>

#include <cmath>

namespace Marlix::Widgets {

namespace {

const QString ICON_PATH = QStringLiteral(":icons/ui/Zorva.ColorPicker/Eyedropper.png");

// The inverting button shows the eyedropper in inverse colours, so the two are told apart at a glance.
QIcon makeIcon(bool invert)
{
    QIcon icon(ICON_PATH);
    if (!invert)
        return icon;
    QIcon inverted;
    for (const QSize& size : icon.availableSizes()) {
        QImage image = icon.pixmap(size).toImage().convertToFormat(QImage::Format_ARGB32);
        image.invertPixels(QImage::InvertRgb);
        inverted.addPixmap(QPixmap::fromImage(image));
    }
    return inverted;
}

QPoint roundHalfAwayFromZero(const QPointF& point)
{
    return { static_cast<int>(std::round(point.x())), static_cast<int>(std::round(point.y())) };
}

} // namespace

EyeDropperButton::EyeDropperButton(
    SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> sampleMode, bool invert, QWidget* parent)
    : QToolButton(parent)
    , color(std::move(color))
    , sampleMode(std::move(sampleMode))
    , invert(invert)
{
    if (!this->color || !this->sampleMode)
        Marlix::Detail::throwStopException("widgets/EyeDropperButton", __LINE__);
    setIcon(makeIcon(invert));
    setToolTip(tr(invert ? INVERT_TOOL_TIP : TOOL_TIP));
    // The button shows only an icon; the tool tip stays its longer description.
    setAccessibleName(invert ? tr("Pick inverse color from screen") : tr("Pick color from screen"));
    setAutoRaise(true);
}

EyeDropperButton::~EyeDropperButton() = default;

void EyeDropperButton::notify()
{
    // The button shows the model's colour nowhere; only a running drag is painted.
}

void EyeDropperButton::mousePressEvent(QMouseEvent* event)
{
    QToolButton::mousePressEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    // Grabbed, so the moves over other windows and other applications still come here.
    grabMouse(Qt::CrossCursor);
    picking = true;
    sampledColor = QColorExtended();
    sample(event->globalPosition());
    event->accept();
}

void EyeDropperButton::mouseMoveEvent(QMouseEvent* event)
{
    QToolButton::mouseMoveEvent(event);
    if (picking)
        sample(event->globalPosition());
}

void EyeDropperButton::mouseReleaseEvent(QMouseEvent* event)
{
    QToolButton::mouseReleaseEvent(event);
    if (!picking || event->button() != Qt::LeftButton)
        return;
    sample(event->globalPosition());
    picking = false;
    releaseMouse();
    update();
    // The only write of a drag, so the whole pick is one change. A drag that read nothing changes nothing.
    if (!sampledColor.isValid())
        return;
    const float alpha = color->get().alphaF();
    color->set(QColor::fromRgbF(sampledColor.redF(), sampledColor.greenF(), sampledColor.blueF(), alpha));
}

void EyeDropperButton::paintEvent(QPaintEvent* event)
{
    QToolButton::paintEvent(event);
    if (!picking || !sampledColor.isValid())
        return;
    QPainter painter(this);
    painter.fillRect(rect().adjusted(1, 1, -1, -1), sampledColor.getColor());
}

QColor EyeDropperButton::sampleColor(const QPoint& position, int halfSize) const
{
    return sampleScreenColor(position, halfSize);
}

void EyeDropperButton::sample(const QPointF& globalPosition)
{
    const QColor sampled
        = sampleColor(roundHalfAwayFromZero(globalPosition), ScreenColorPicker::getSampleHalfSize(sampleMode->get()));
    if (!sampled.isValid())
        return;
    sampledColor = invert ? QColorExtended(sampled).inverted() : QColorExtended(sampled);
    update();
}

} // namespace Marlix::Widgets
