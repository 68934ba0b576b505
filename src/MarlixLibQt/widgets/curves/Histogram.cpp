#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/curves/CurvesGuard.h>
#include <MarlixLibQt/widgets/curves/Histogram.h>

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>

#include <algorithm>
#include <array>
#include <cmath>

namespace Marlix::Widgets {

namespace {

constexpr int BIN_COUNT = 256;

QColor channelColor(ColorCurveChannel channel, const QPalette& palette)
{
    switch (channel) {
    case ColorCurveChannel::Red:
        return QColor(230, 60, 60);
    case ColorCurveChannel::Green:
        return QColor(60, 200, 80);
    case ColorCurveChannel::Blue:
        return QColor(70, 110, 240);
    case ColorCurveChannel::Master:
    case ColorCurveChannel::Alpha:
        break;
    }
    return palette.color(QPalette::Text);
}

} // namespace

Histogram::Histogram(SharedPtr<Model<Optional<ColorCurveChannel>>> channelModel,
    SharedPtr<Model<DisplayMode>> modeModel, IViewportHost& viewportHost, QWidget* parent)
    : QWidget(parent)
    , channel(std::move(channelModel))
    , displayMode(std::move(modeModel))
    , host(viewportHost)
{
    setAccessibleName(tr("Histogram"));
    registerCallback(channel->addCallback([this](const Optional<ColorCurveChannel>&) { notify(); }));
    registerCallback(displayMode->addCallback([this](DisplayMode) { notify(); }));
    host.addClient(*this);
    notify();
}

Histogram::~Histogram()
{
    host.removeClient(*this);
}

QSize Histogram::sizeHint() const
{
    return scaleByDpi(QSize(256, 100), this);
}

QSize Histogram::minimumSizeHint() const
{
    return scaleByDpi(QSize(64, 64), this);
}

void Histogram::notify()
{
    update();
}

void Histogram::onViewportChanged()
{
    if (isVisible())
        updateHistogram();
}

void Histogram::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    Detail::guardedCurves("histogram", [&] { updateHistogram(); });
}

void Histogram::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    ++request;
}

void Histogram::updateHistogram()
{
    const SharedPtr<const BitmapImpl<RgbaBytes>> image = host.getViewportImage({});
    if (!image) {
        counts.reset();
        update();
        return;
    }
    const std::uint64_t asked = ++request;
    QPointer<Histogram> self(this);
    task = Marlix::Histogram::computeAsync(image, BIN_COUNT, [self, asked](Marlix::Histogram counted) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, asked, counted = std::move(counted)]() mutable {
                if (!self || self->request != asked)
                    return;
                self->counts = std::move(counted);
                self->update();
                Q_EMIT self->histogramChanged();
            },
            Qt::QueuedConnection);
    });
}

void Histogram::paintEvent(QPaintEvent*)
{
    Detail::guardedCurves("histogram paint", [&] {
        QPainter painter(this);
        painter.fillRect(rect(), palette().color(QPalette::Base));
        const Optional<ColorCurveChannel> shown = channel->get();
        if (counts && counts->getPixelCount() > 0) {
            const DisplayMode mode = displayMode->get();
            const auto drawChannel = [&](ColorCurveChannel which, QColor color) {
                const int index = int(which);
                const ArrayView<const std::uint64_t> bins = counts->getBins(index);
                const Stack<float> cumulative
                    = mode == DisplayMode::Cumulative ? counts->getCumulativeHistogram(index) : Stack<float>();
                const double peak = double(counts->getMaximum(index));
                QPainterPath path;
                path.moveTo(0, height());
                for (std::size_t bin = 0; bin < bins.size(); ++bin) {
                    double share = peak > 0.0 ? bins[bin] / peak : 0.0;
                    if (mode == DisplayMode::Logarithmic)
                        share = peak > 0.0 ? std::log1p(double(bins[bin])) / std::log1p(peak) : 0.0;
                    else if (mode == DisplayMode::Cumulative)
                        share = cumulative[bin];
                    const double y = height() - share * height();
                    path.lineTo(double(bin) * width() / bins.size(), y);
                    path.lineTo(double(bin + 1) * width() / bins.size(), y);
                }
                path.lineTo(width(), height());
                path.closeSubpath();
                color.setAlpha(shown ? 150 : 90);
                painter.fillPath(path, color);
            };
            if (shown) {
                drawChannel(*shown, channelColor(*shown, palette()));
            } else {
                painter.setCompositionMode(QPainter::CompositionMode_Plus);
                for (ColorCurveChannel each :
                    { ColorCurveChannel::Red, ColorCurveChannel::Green, ColorCurveChannel::Blue })
                    drawChannel(each, channelColor(each, palette()));
                painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
            }
        }
        //: The channel of all colours together
        const std::array<QString, 5> names = { tr("Master"), tr("Red"), tr("Green"), tr("Blue"), tr("Alpha") };
        const QString label = shown ? names[std::size_t(*shown)] : tr("RGB");
        const int inset = getDeviceIndependentPixels(4, this);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(rect().adjusted(inset, inset, -inset, -inset), Qt::AlignLeft | Qt::AlignTop, label);
    });
}

} // namespace Marlix::Widgets
