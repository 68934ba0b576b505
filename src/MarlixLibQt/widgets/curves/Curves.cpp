#include <MarlixLib/curves/CurveFile.h>
#include <MarlixLibQt/MessageBox.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/curves/Curves.h>
#include <MarlixLibQt/widgets/curves/CurvesGuard.h>

#include <QCoreApplication>
#include <QPointer>

#include <algorithm>
#include <cmath>

namespace Marlix::Widgets {

using Detail::guardedCurves;

Curves::Curves(SharedPtr<Model<Marlix::Curves>> curves, SharedPtr<Model<int>> activeChannel,
    SharedPtr<Model<CurveInterpolation>> interpolation, Optional<int> layer, Stack<QColor> channelColors,
    QWidget* parent)
    : Container(parent)
    , curvesModel(std::move(curves))
    , activeChannelModel(std::move(activeChannel))
    , interpolationModel(std::move(interpolation))
    , layer(layer)
    , channelColors(std::move(channelColors))
{
    setAccessibleName(tr("Curves"));
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(scaleByDpi(QSize(64, 64), this));
    registerCallback(curvesModel->addCallback([this](const Marlix::Curves&) {
        notify();
        // Undo or another editor may have changed the channel's interpolation; the chooser follows it.
        syncInterpolationModel();
    }));
    registerCallback(activeChannelModel->addCallback([this](int) {
        finishGesture();
        notify();
        syncInterpolationModel();
    }));
    registerCallback(interpolationModel->addCallback([this](CurveInterpolation chosen) {
        if (edited.isEmpty() || chosen == getActiveCurve().getInterpolation())
            return;
        guardedCurves("interpolation", [&] {
            activeCurve().setInterpolation(chosen);
            storeToModel();
        });
    }));
    notify();
    syncInterpolationModel();
}

Curves::~Curves()
{
    if (host) {
        if (exclusiveControl)
            host->releaseExclusiveMouseControl(*this);
        host->removeClient(*this);
    }
}

double Curves::margin() const
{
    return getDeviceIndependentPixels(MARGIN, this);
}

int Curves::gridWidth() const
{
    return std::max(1, width() - 2 * int(margin()));
}

int Curves::gridHeight() const
{
    return std::max(1, height() - 2 * int(margin()));
}

QSize Curves::sizeHint() const
{
    return scaleByDpi(QSize(200, 200), this);
}

QPointF Curves::map(const QPointF& point) const
{
    return { offset.x() + point.x() * gridWidth() * zoomFactor, offset.y() + point.y() * gridHeight() * zoomFactor };
}

QPointF Curves::unmap(const QPointF& point) const
{
    return { (point.x() - offset.x()) / (gridWidth() * zoomFactor),
        (point.y() - offset.y()) / (gridHeight() * zoomFactor) };
}

QPointF Curves::toArea(const QPointF& widgetPosition) const
{
    return { widgetPosition.x() - margin(), height() - widgetPosition.y() - margin() };
}

QPointF Curves::fromArea(const QPointF& areaPosition) const
{
    return { areaPosition.x() + margin(), height() - areaPosition.y() - margin() };
}

QPointF Curves::toWidget(const Vector2& point) const
{
    return fromArea(map(QPointF(point.x, point.y)));
}

Vector2 Curves::fromWidget(const QPointF& position) const
{
    const QPointF point = unmap(toArea(position));
    return { point.x(), point.y() };
}

int Curves::getActiveChannel() const
{
    if (edited.isEmpty())
        return 0;
    return std::clamp(activeChannelModel->get(), 0, int(edited.getChannelCount()) - 1);
}

const Curve& Curves::getActiveCurve() const
{
    static const Curve none;
    return edited.isEmpty() ? none : edited.getChannel(std::size_t(getActiveChannel()));
}

Curve& Curves::activeCurve()
{
    return edited.getChannel(std::size_t(getActiveChannel()));
}

bool Curves::showsHandles() const
{
    return getActiveCurve().getInterpolation() == CurveInterpolation::Bezier;
}

void Curves::zoom(double factor, const QPointF& anchor)
{
    const double zoomed = std::clamp(zoomFactor * factor, MIN_ZOOM, MAX_ZOOM);
    if (!std::isfinite(zoomed) || zoomed == zoomFactor)
        return;
    const QPointF before = unmap(anchor);
    zoomFactor = zoomed;
    const QPointF after = unmap(anchor);
    const QPointF moved = offset
        + QPointF((after.x() - before.x()) * gridWidth() * zoomed, (after.y() - before.y()) * gridHeight() * zoomed);
    if (!pan(moved)) {
        cache();
        cacheGrid();
        cacheHistogram();
        update();
    }
}

bool Curves::pan(const QPointF& newOffset)
{
    const double w = gridWidth();
    const double h = gridHeight();
    const QPointF clamped(
        std::clamp(newOffset.x(), w - w * zoomFactor, 0.0), std::clamp(newOffset.y(), h - h * zoomFactor, 0.0));
    if (clamped == offset)
        return false;
    offset = clamped;
    cache();
    cacheGrid();
    cacheHistogram();
    update();
    return true;
}

void Curves::reset(DefaultCurveType type)
{
    if (edited.isEmpty())
        return;
    finishGesture();
    activeCurve().reset(type);
    storeToModel();
}

void Curves::equalize()
{
    if (!host || edited.isEmpty())
        return;
    const int channel = getActiveChannel();
    updateHistorgram(channel, Marlix::Histogram::DEFAULT_BIN_COUNT, [this, channel](Marlix::Histogram counted) {
        if (channel >= int(edited.getChannelCount()))
            return;
        // A linear curve through points on the equalizing function: the chooser follows it to "Linear".
        Curve equalizing = counted.computeEqualizingCurve(histogramChannel());
        edited.setChannel(std::size_t(channel), std::move(equalizing));
        storeToModel();
        syncInterpolationModel();
    });
}

bool Curves::load(const Io::Path& path)
{
    const Expected<Marlix::Curves, String> loaded = loadCurves(path);
    const std::size_t expected = curvesModel->get().getChannelCount();
    if (loaded && loaded->getChannelCount() == expected) {
        finishGesture();
        curvesModel->set(*loaded);
        convertFromCurves(false);
        syncInterpolationModel();
        return true;
    }
    const QString details = loaded
        ? tr("Found %n curve(s), but %1 were expected.\n\nThis can be caused for example by mismatching motion blur "
             "shutter curve and tone mapping curve files.",
            nullptr, int(loaded->getChannelCount()))
              .arg(expected)
        : toQt(loaded.error());
    showOkMessageBox(QMessageBox::Critical, fromQt(tr("Error")), fromQt(tr("Cannot load curves from a file.")),
        fromQt(details), {}, this);
    return false;
}

bool Curves::save(const Io::Path& path)
{
    if (saveCurves(curvesModel->get(), path))
        return true;
    showOkMessageBox(QMessageBox::Critical, fromQt(tr("Error")), fromQt(tr("Cannot save curves to a file.")),
        path.string(), {}, this);
    return false;
}

void Curves::convertToCurves()
{
    cache();
    // Scheduled rather than painted here: a drag writes faster than the screen shows, and Qt merges the requests.
    update();
}

void Curves::convertFromCurves(bool resetView)
{
    Marlix::Curves fresh = curvesModel->get();
    // The notification of the widget's own write: what it shows was cached when it wrote.
    if (!resetView && fresh == edited && getActiveChannel() == histogramCachedChannel)
        return;
    edited = std::move(fresh);
    if (dragged && dragged->index >= getActiveCurve().getPointCount())
        dragged.reset();
    if (resetView) {
        zoomFactor = 1.0;
        offset = {};
        cacheGrid();
    }
    cache();
    if (resetView || getActiveChannel() != histogramCachedChannel)
        cacheHistogram();
    update();
}

void Curves::notify()
{
    convertFromCurves(false);
}

void Curves::storeToModel()
{
    convertToCurves();
    curvesModel->set(edited);
}

void Curves::syncInterpolationModel()
{
    if (!edited.isEmpty() && interpolationModel->get() != getActiveCurve().getInterpolation())
        interpolationModel->set(getActiveCurve().getInterpolation());
}

void Curves::setHistogramModel(IViewportHost& newHost, SharedPtr<Model<HistogramType>> type)
{
    if (host)
        host->removeClient(*this);
    host = &newHost;
    host->addClient(*this);
    histogramTypeModel = std::move(type);
    if (histogramTypeModel)
        registerCallback(histogramTypeModel->addCallback([this](HistogramType) {
            cacheHistogram();
            update();
        }));
    onViewportChanged();
}

void Curves::setHistogram(Marlix::Histogram counted)
{
    histogram = std::move(counted);
    cacheHistogram();
    update();
    Q_EMIT histogramChanged();
}

int Curves::histogramChannel() const
{
    // Curves with fewer channels than a colour set (a single tone curve) read the luminance.
    const int channel = getActiveChannel();
    return edited.getChannelCount() >= 4 && channel < Marlix::Histogram::CHANNEL_COUNT ? channel
                                                                                       : int(ColorCurveChannel::Master);
}

void Curves::updateHistorgram(int channel, int binCount, Function<void(Marlix::Histogram)> done)
{
    const SharedPtr<const BitmapImpl<RgbaBytes>> image = host ? host->getViewportImage(layer) : nullptr;
    if (!image)
        return;
    const std::uint64_t request = ++histogramRequest;
    QPointer<Curves> self(this);
    // The counts arrive on a worker; the widget is touched only back on its own thread, and only if it still exists
    // and has not asked again since.
    histogramTask = Marlix::Histogram::computeAsync(image, std::clamp(binCount, 1, Marlix::Histogram::MAX_BIN_COUNT),
        [self, request, channel, done = std::move(done)](Marlix::Histogram counted) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [self, request, channel, done, counted = std::move(counted)]() mutable {
                    if (!self || self->histogramRequest != request)
                        return;
                    guardedCurves("histogram", [&] {
                        self->setHistogram(counted);
                        if (done && channel == self->getActiveChannel())
                            done(std::move(counted));
                    });
                },
                Qt::QueuedConnection);
        });
}

void Curves::setForbiddenCursor(bool forbidden)
{
    forbiddenCursor = forbidden;
    if (forbidden)
        setCursor(Qt::ForbiddenCursor);
    else
        unsetCursor();
}

QColor Curves::channelColor(int channel) const
{
    if (channel >= 0 && std::size_t(channel) < channelColors.size() && channelColors[std::size_t(channel)].isValid())
        return channelColors[std::size_t(channel)];
    return palette().color(QPalette::Text);
}

} // namespace Marlix::Widgets
