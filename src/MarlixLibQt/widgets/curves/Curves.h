#pragma once

#include <MarlixLib/curves/Curves.h>
#include <MarlixLib/curves/Histogram.h>
#include <MarlixLib/tasks/Task.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Container.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/curves/CurveModels.h>
#include <MarlixLibQt/widgets/frame/ViewportHost.h>

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QPointF>

#include <cstddef>

namespace Marlix::Widgets {

/// Edits tone curves, one per channel, over a grid and the histogram of a viewport's image: points are added with a
/// click, dragged (one undo step per drag), removed with a right click; Shift and the wheel zoom, the middle button
/// pans.
class MARLIXLIBQT_EXPORT Curves : public Container, public BaseWithModel, public IViewportClient
{
    Q_OBJECT

public:
    static constexpr double MARGIN = 5; ///< Space around the grid, in pixels at 96 DPI.
    static constexpr double RADIUS = 5; ///< Radius of a drawn point, in pixels at 96 DPI.
    static constexpr double DIAMETER = 10; ///< Diameter of a drawn point (2 × RADIUS), in pixels at 96 DPI.
    static constexpr double GRID_FACTOR = 10; ///< Grid divisions along each axis.
    /// Points closer than this along x count as one (Curve::EPSILON).
    static constexpr double EPSILON = Curve::EPSILON;
    static constexpr double BINS_PER_PIXEL = 2; ///< Histogram bins per pixel of grid width.
    /// How far from a point or handle a press still takes it.
    static constexpr double HIT_DISTANCE = 11;
    static constexpr double MIN_ZOOM = 1; ///< The zoom factor of the whole curve in view.
    static constexpr double MAX_ZOOM = 8; ///< The largest zoom factor.

    /// `layer` picks the image of the viewport host whose histogram and tones are read (none: the one shown);
    /// `channelColors` give each channel's pen, the palette's text colour standing in for missing ones.
    Curves(SharedPtr<Model<Marlix::Curves>> curves, SharedPtr<Model<int>> activeChannel,
        SharedPtr<Model<CurveInterpolation>> interpolation, Optional<int> layer = {}, Stack<QColor> channelColors = {},
        QWidget* parent = nullptr);
    ~Curves() override;

    /// Curve space to curve-area pixels (origin bottom left, y up), through the zoom and the offset; unmap inverts.
    QPointF map(const QPointF& point) const;
    QPointF unmap(const QPointF& point) const; ///< Curve-area pixels back to curve space.
    /// Widget pixels to curve-area pixels and back.
    QPointF toArea(const QPointF& widgetPosition) const;
    QPointF fromArea(const QPointF& areaPosition) const; ///< Curve-area pixels to widget pixels.
    /// Curve space to widget pixels and back: where a point is drawn, and which point a click means.
    QPointF toWidget(const Vector2& point) const;
    /// The curve-space point under widget pixel \p position; outside [0, 1] beyond the grid.
    Vector2 fromWidget(const QPointF& position) const;
    int gridWidth() const; ///< The grid's width in pixels: the widget's width less the margins, at least 1.
    int gridHeight() const; ///< The grid's height in pixels: the widget's height less the margins, at least 1.
    QSize sizeHint() const override; ///< 200 × 200 pixels at 96 DPI.

    double getZoom() const { return zoomFactor; } ///< The zoom factor, 1 (the whole curve) to 8.
    QPointF getOffset() const { return offset; } ///< The pan offset in curve-area pixels; (0, 0) at zoom 1.
    /// Multiplies the zoom (kept within 1 to 8) around `anchor`, in curve-area pixels, which stays where it is.
    void zoom(double factor, const QPointF& anchor);
    /// Moves the zoomed curve; the offset is clamped so that the curve fills the area. False when nothing moved.
    bool pan(const QPointF& newOffset);

    /// The index of the edited channel, clamped to the channels there are; 0 without curves.
    int getActiveChannel() const;
    /// The active channel's curve as edited; a drag writes the model on every move, so it is never ahead of it.
    const Curve& getActiveCurve() const;
    /// The tone under the mouse (or picked in the viewport), none when the mouse is elsewhere.
    Optional<double> getCursorValue() const { return cursorValue; }

    /// Resets the active channel's curve to the default \p type as one change of the model; nothing without curves.
    void reset(DefaultCurveType type);
    /// Replaces the active curve by the one that equalizes the viewport image's histogram of that channel, once it is
    /// counted; nothing without a histogram source.
    void equalize();
    /// Reads a curve file holding one curve per channel; anything else is reported in a message box and changes
    /// nothing. False when the curves stayed as they were.
    bool load(const Io::Path& path);
    /// Writes the model's curves to a curve file; a failure is reported in a message box and returns false.
    bool save(const Io::Path& path);

    /// The active channel's edited curve into the model's curves, redrawn at once (the model is written separately).
    void convertToCurves();
    /// Re-reads the model; `resetView` also returns to zoom 1.
    void convertFromCurves(bool resetView);

    /// Shows the histogram of `host`'s image behind the curve, drawn as `type` says, and lets equalize() and the
    /// tone picking read it. The host must outlive the widget.
    void setHistogramModel(IViewportHost& host, SharedPtr<Model<HistogramType>> type);
    /// A histogram counted elsewhere, shown until the host's image changes.
    void setHistogram(Marlix::Histogram histogram);
    /// The histogram drawn behind the curve; none until one is counted or set.
    const Optional<Marlix::Histogram>& getHistogram() const { return histogram; }

    /// Shows the forbidden cursor (a press where no point may go) or the normal one again.
    void setForbiddenCursor(bool forbidden);
    bool isForbiddenCursorShown() const { return forbiddenCursor; } ///< Whether the forbidden cursor is shown.

    /// Clicks in the host's viewport then pick tones for this widget, until releaseExclusiveMouseControl().
    bool requestExclusiveMouseControl();
    /// Hands the viewport's clicks back to the host; nothing when this widget does not hold them.
    void releaseExclusiveMouseControl();
    /// Whether viewport clicks now pick tones for this widget.
    bool hasExclusiveMouseControl() const { return exclusiveControl; }

    void notify() override;

    void onExclusiveMouseControlGained() override; ///< Records that viewport clicks now come here.
    void onExclusiveMouseControlLost() override;
    /// Picks the tone under \p position in the viewport and opens a drag of its point (adding one when needed).
    void onExclusiveMousePress(const Vector2& position) override;
    /// Ends the drag that the press opened as one change.
    void onExclusiveMouseRelease(const Vector2& position) override;
    /// While a picked point is dragged, moves it with the vertical movement; else follows the tone under the cursor.
    void onMouseMove(const Vector2& position) override;
    void onMouseLeave() override; ///< Clears the tone under the mouse.
    void onViewportChanged() override;
    Optional<QCursor> getExclusiveMouseCursor() const override;

Q_SIGNALS:
    /// Viewport clicks no longer come here: another client took them, or they were released.
    void exclusiveMouseControlLost();
    /// A histogram arrived from the workers (or was set) and is drawn.
    void histogramChanged();

protected:
    /// Draws the grid, the histogram, the curves and the active curve's points from cached paths.
    void paintEvent(QPaintEvent* event) override;
    /// Left adds or takes a point, right removes one (never an end point), middle starts panning.
    void mousePressEvent(QMouseEvent* event) override;
    /// Drags the taken point or pans; otherwise follows the tone under the mouse.
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override; ///< Ends a drag as one change, or the panning.
    /// Zooms around the cursor while Shift is held; otherwise the wheel goes to the surrounding view.
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override; ///< Keeps the pan offset valid for the new size and redraws.
    void leaveEvent(QEvent* event) override; ///< Clears the tone under the mouse.

private:
    enum class Part
    {
        Point,
        LeftHandle,
        RightHandle,
    };
    struct Hit
    {
        std::size_t index = 0;
        Part part = Part::Point;
    };

    Curve& activeCurve();
    bool showsHandles() const;
    double margin() const;
    Optional<Hit> hitTest(const QPointF& position) const;
    void press(QMouseEvent* event);
    void dragTo(const QPointF& position);
    void finishGesture();
    void cache();
    void cacheGrid();
    void cacheHistogram();
    void storeToModel();
    void syncInterpolationModel();
    void updateHistorgram(int channel, int binCount, Function<void(Marlix::Histogram)> done);
    int histogramChannel() const;
    void setCurveCursor(double tone);
    void setValueOnCursor(double value);
    QColor channelColor(int channel) const;

    SharedPtr<Model<Marlix::Curves>> curvesModel;
    SharedPtr<Model<int>> activeChannelModel;
    SharedPtr<Model<CurveInterpolation>> interpolationModel;
    SharedPtr<Model<HistogramType>> histogramTypeModel;
    Optional<int> layer;
    Stack<QColor> channelColors;
    IViewportHost* host = nullptr;

    // The model's curves with the active channel as edited.
    Marlix::Curves edited;
    double zoomFactor = 1.0;
    QPointF offset;
    Optional<Hit> dragged;
    bool gestureOpen = false;
    Optional<QPointF> panStart;
    QPointF panStartOffset;
    Optional<double> cursorValue;
    bool forbiddenCursor = false;

    bool exclusiveControl = false;
    Optional<double> exclusivePressY;
    double exclusiveStartValue = 0.0;

    Optional<Marlix::Histogram> histogram;
    SharedPtr<Task> histogramTask;
    // Results of requests older than the latest are dropped when they arrive.
    std::uint64_t histogramRequest = 0;

    QPainterPath curvePath;
    QPainterPath gridPath;
    QPainterPath histogramPath;
    QImage histogramImage;
    // The channel whose histogram the path shows: the histogram is redrawn on a change of channel, not of curve.
    int histogramCachedChannel = -1;
};

} // namespace Marlix::Widgets
