#include <MarlixLibQt/widgets/curves/Curves.h>
#include <MarlixLibQt/widgets/curves/CurvesGuard.h>

#include <MarlixLibQt/MessageBox.h>
#include <MarlixLibQt/QtUtils.h>

#include <MarlixLib/curves/CurveFile.h>

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPointer>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <exception>

namespace Marlix::Widgets {

namespace {

using Detail::guardedCurves;

double distance(const QPointF& a, const QPointF& b)
{
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

} // namespace

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
    const QPointF clamped(std::clamp(newOffset.x(), w - w * zoomFactor, 0.0),
        std::clamp(newOffset.y(), h - h * zoomFactor, 0.0));
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
        const CurveInterpolation kept = edited.getChannel(std::size_t(channel)).getInterpolation();
        Curve equalizing = counted.computeEqualizingCurve(histogramChannel());
        // Its points lie on the equalizing function; any interpolation but linear would bend between them.
        if (kept != CurveInterpolation::Linear)
            equalizing.setInterpolation(CurveInterpolation::Linear);
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
        ? tr("Found ") + QString::number(loaded->getChannelCount()) + tr(" curve(s), but ") + QString::number(expected)
            + tr(" were expected.\n\nThis can be caused for example by mismatching motion blur shutter curve and tone "
                 "mapping curve files.")
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
    repaint();
}

void Curves::convertFromCurves(bool resetView)
{
    edited = curvesModel->get();
    if (dragged && dragged->index >= getActiveCurve().getPointCount())
        dragged.reset();
    if (resetView) {
        zoomFactor = 1.0;
        offset = {};
        cacheGrid();
    }
    cache();
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
    return edited.getChannelCount() >= 4 && channel < Marlix::Histogram::CHANNEL_COUNT
        ? channel
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

Optional<Curves::Hit> Curves::hitTest(const QPointF& position) const
{
    const double reach = getDeviceIndependentPixels(HIT_DISTANCE, this);
    Optional<Hit> best;
    double bestDistance = reach;
    const auto consider = [&](const Vector2& point, std::size_t index, Part part) {
        const double d = distance(toWidget(point), position);
        if (d <= bestDistance) {
            bestDistance = d;
            best = Hit { index, part };
        }
    };
    const Array<CurvePoint>& points = getActiveCurve().getPoints();
    for (std::size_t i = 0; i < points.size(); ++i) {
        consider(points[i].position, i, Part::Point);
        if (showsHandles()) {
            consider(points[i].leftHandle, i, Part::LeftHandle);
            consider(points[i].rightHandle, i, Part::RightHandle);
        }
    }
    // A point under its own handle is the one meant.
    if (best && best->part != Part::Point
        && distance(toWidget(points[best->index].position), position) <= reach)
        best->part = Part::Point;
    return best;
}

void Curves::mousePressEvent(QMouseEvent* event)
{
    event->accept();
    guardedCurves("press", [&] { press(event); });
}

void Curves::press(QMouseEvent* event)
{
    const QPointF position = event->position();
    if (event->button() == Qt::MiddleButton) {
        panStart = position;
        panStartOffset = offset;
        return;
    }
    if (edited.isEmpty())
        return;
    Curve& curve = activeCurve();
    if (event->button() == Qt::RightButton) {
        const Optional<Hit> hit = hitTest(position);
        const std::size_t last = curve.getPointCount() - 1;
        // The end points hold the curve's range; they move but never go.
        if (hit && hit->part == Part::Point && hit->index != 0 && hit->index != last
            && curve.getPointCount() > Curve::MIN_POINT_COUNT) {
            finishGesture();
            curve.removePoint(hit->index);
            storeToModel();
        }
        return;
    }
    if (event->button() != Qt::LeftButton)
        return;
    finishGesture();
    const Optional<Hit> hit = hitTest(position);
    if (hit) {
        dragged = hit;
    } else {
        const Vector2 at = fromWidget(position);
        if (at.x < 0.0 || at.x > 1.0 || at.y < 0.0 || at.y > 1.0)
            return;
        Optional<std::size_t> added = curve.addPoint(at);
        if (added && showsHandles()) {
            // A Bézier point between the facing handles of its neighbours, or closer to one than its handle reaches,
            // would fold the curve back on itself.
            const Array<CurvePoint>& points = curve.getPoints();
            const std::size_t i = *added;
            bool fits = true;
            if (i > 0) {
                const CurvePoint& before = points[i - 1];
                fits = fits && at.x > before.rightHandle.x
                    && at.x - before.position.x > std::abs(before.rightHandle.x - before.position.x);
            }
            if (i + 1 < points.size()) {
                const CurvePoint& next = points[i + 1];
                fits = fits && at.x < next.leftHandle.x
                    && next.position.x - at.x > std::abs(next.position.x - next.leftHandle.x);
            }
            if (!fits) {
                curve.removePoint(i);
                added.reset();
            }
        }
        if (!added) {
            setForbiddenCursor(true);
            return;
        }
        dragged = Hit { *added, Part::Point };
    }
    setForbiddenCursor(false);
    gestureOpen = true;
    curvesModel->beginChange();
    // A new point is an edit by itself; a press on an existing one changes nothing until it moves.
    if (!hit)
        storeToModel();
}

void Curves::mouseMoveEvent(QMouseEvent* event)
{
    event->accept();
    guardedCurves("move", [&] {
        const QPointF position = event->position();
        if (panStart) {
            pan(panStartOffset + QPointF(position.x() - panStart->x(), panStart->y() - position.y()));
            return;
        }
        if (dragged && (event->buttons() & Qt::LeftButton)) {
            dragTo(position);
            return;
        }
        // A refused click shows its cursor until the mouse moves on.
        if (forbiddenCursor && event->buttons() == Qt::NoButton)
            setForbiddenCursor(false);
        const double x = fromWidget(position).x;
        cursorValue = std::clamp(x, 0.0, 1.0);
        update();
    });
}

void Curves::dragTo(const QPointF& position)
{
    Curve& curve = activeCurve();
    const Vector2 to = fromWidget(position);
    const CurvePoint& point = curve.getPoint(dragged->index);
    if (dragged->part == Part::Point) {
        cursorValue = curve.movePoint(dragged->index, to).x;
    } else {
        // The partner handle turns with the dragged one and keeps its length, so the curve stays smooth there.
        const bool left = dragged->part == Part::LeftHandle;
        const Vector2 partner = left ? point.rightHandle : point.leftHandle;
        const double dx = to.x - point.position.x;
        const double dy = to.y - point.position.y;
        const double length = std::hypot(dx, dy);
        const double partnerLength
            = std::hypot(partner.x - point.position.x, partner.y - point.position.y);
        Vector2 mirrored = partner;
        if (length > 0.0)
            mirrored = { point.position.x - dx / length * partnerLength, point.position.y - dy / length * partnerLength };
        // A left handle stays left of its point and a right one right, or the span would run backwards.
        Vector2 moved = to;
        moved.x = left ? std::min(moved.x, point.position.x) : std::max(moved.x, point.position.x);
        mirrored.x = left ? std::max(mirrored.x, point.position.x) : std::min(mirrored.x, point.position.x);
        if (left)
            curve.setHandles(dragged->index, moved, mirrored);
        else
            curve.setHandles(dragged->index, mirrored, moved);
    }
    storeToModel();
}

void Curves::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    guardedCurves("release", [&] {
        if (event->button() == Qt::MiddleButton) {
            panStart.reset();
            return;
        }
        if (event->button() == Qt::LeftButton)
            finishGesture();
    });
}

void Curves::finishGesture()
{
    dragged.reset();
    if (!gestureOpen)
        return;
    gestureOpen = false;
    curvesModel->commitChange();
}

void Curves::wheelEvent(QWheelEvent* event)
{
    if (!(event->modifiers() & Qt::ShiftModifier)) {
        event->ignore();
        return;
    }
    event->accept();
    guardedCurves("wheel", [&] {
        // Some platforms turn Shift with a vertical wheel into horizontal scrolling.
        const QPoint delta = event->angleDelta();
        const int steps = delta.y() != 0 ? delta.y() : delta.x();
        zoom(std::pow(2.0, steps / 360.0), toArea(event->position()));
    });
}

void Curves::resizeEvent(QResizeEvent* event)
{
    Container::resizeEvent(event);
    guardedCurves("resize", [&] {
        if (!pan(offset)) {
            cache();
            cacheGrid();
            cacheHistogram();
        }
    });
}

void Curves::leaveEvent(QEvent* event)
{
    Container::leaveEvent(event);
    cursorValue.reset();
    update();
}

QColor Curves::channelColor(int channel) const
{
    if (channel >= 0 && std::size_t(channel) < channelColors.size() && channelColors[std::size_t(channel)].isValid())
        return channelColors[std::size_t(channel)];
    return palette().color(QPalette::Text);
}

} // namespace Marlix::Widgets
