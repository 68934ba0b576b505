#pragma once

#include <MarlixLib/curves/Histogram.h>
#include <MarlixLib/tasks/Task.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/curves/CurveModels.h>
#include <MarlixLibQt/widgets/frame/ViewportHost.h>

#include <QWidget>

#include <cstdint>

namespace Marlix::Widgets {

/// The histogram of a viewport's image, of one channel or of red, green and blue together; counted on workers when
/// the widget is shown and whenever the image changes.
class MARLIXLIBQT_EXPORT Histogram : public QWidget, public BaseWithModel, public IViewportClient
{
    Q_OBJECT

public:
    using DisplayMode = HistogramType; ///< How the counts are drawn.

    /// No channel shows red, green and blue over each other. The host must outlive the widget.
    Histogram(SharedPtr<Model<Optional<ColorCurveChannel>>> channel, SharedPtr<Model<DisplayMode>> displayMode,
        IViewportHost& host, QWidget* parent = nullptr);
    ~Histogram() override;

    QSize sizeHint() const override; ///< 256 × 100 pixels at 96 DPI.
    QSize minimumSizeHint() const override; ///< 64 × 64 pixels at 96 DPI.

    /// Counts the host's image again; the result is drawn when it arrives.
    void updateHistogram();
    /// The latest counts drawn; none before the first count arrives.
    const Optional<Marlix::Histogram>& getCounts() const { return counts; }

    void notify() override;
    void onViewportChanged() override;
    Optional<QCursor> getExclusiveMouseCursor() const override { return {}; }

Q_SIGNALS:
    void histogramChanged(); ///< Emitted when new counts arrived and are drawn.

protected:
    /// Draws the counts of the chosen channel, or red, green and blue over each other.
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override; ///< Counts the host's image again.
    void hideEvent(QHideEvent* event) override; ///< Drops any count still under way.

private:
    SharedPtr<Model<Optional<ColorCurveChannel>>> channel;
    SharedPtr<Model<DisplayMode>> displayMode;
    IViewportHost& host;
    Optional<Marlix::Histogram> counts;
    SharedPtr<Task> task;
    // A count that arrives after a newer request, or after the widget was hidden, is dropped.
    std::uint64_t request = 0;
};

} // namespace Marlix::Widgets
