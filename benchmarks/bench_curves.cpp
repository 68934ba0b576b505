#include "RatioReporter.h"

#include <MarlixLib/curves/ColorCurves.h>
#include <MarlixLib/curves/Histogram.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/curves/Curves.h>

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QWidget>

#include <array>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>

using namespace Marlix;

namespace {

constexpr int SIZE = 4096;

// Smooth ramps with a finer pattern over them, as in a rendered image: long runs of equal tones in some channels.
const BitmapImpl<RgbaBytes>& image()
{
    static const BitmapImpl<RgbaBytes> bitmap = [] {
        BitmapImpl<RgbaBytes> made(SIZE, SIZE);
        for (int y = 0; y < SIZE; ++y)
            for (int x = 0; x < SIZE; ++x)
                made.at(x, y) = { std::uint8_t(x >> 4), std::uint8_t(y >> 4), std::uint8_t((x ^ y) & 0xff), 255 };
        return made;
    }();
    return bitmap;
}

const Curves& sampleCurves()
{
    static const Curves curves(Array<Curve> {
        Curve(Array<Vector2> { { 0.0, 0.0 }, { 0.25, 0.2 }, { 0.75, 0.85 }, { 1.0, 1.0 } },
            CurveInterpolation::CubicSpline),
        Curve(Array<Vector2> { { 0.0, 0.05 }, { 1.0, 0.95 } }, CurveInterpolation::Linear),
        Curve(),
        Curve(Array<Vector2> { { 0.0, 0.0 }, { 0.5, 0.6 }, { 1.0, 1.0 } }, CurveInterpolation::CubicChordal),
    });
    return curves;
}

void histogramOnScheduler(benchmark::State& state)
{
    const auto& bitmap = image();
    for (auto _ : state)
        benchmark::DoNotOptimize(Histogram::compute(bitmap).getPixelCount());
    state.SetItemsProcessed(std::int64_t(state.iterations()) * SIZE * SIZE);
}
BENCHMARK(histogramOnScheduler)->Unit(benchmark::kMillisecond)->UseRealTime();

// The same on a pool of one worker: the counting loop's own share of the gain, without a second core.
void histogramOnOneWorker(benchmark::State& state)
{
    const auto& bitmap = image();
    Scheduler scheduler("BenchOneWorker", 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(Histogram::compute(bitmap, Histogram::DEFAULT_BIN_COUNT, scheduler).getPixelCount());
    state.SetItemsProcessed(std::int64_t(state.iterations()) * SIZE * SIZE);
}
BENCHMARK(histogramOnOneWorker)->Unit(benchmark::kMillisecond)->UseRealTime();

// The loop anyone would write: one thread, one counter per tone and channel, the same five channels.
void histogramBareLoop(benchmark::State& state)
{
    const auto& bitmap = image();
    for (auto _ : state) {
        std::array<std::array<std::uint64_t, 256>, 5> counts {};
        for (const RgbaBytes& p : bitmap.getPixels()) {
            ++counts[0][(54u * p.r + 183u * p.g + 19u * p.b + 128u) >> 8];
            ++counts[1][p.r];
            ++counts[2][p.g];
            ++counts[3][p.b];
            ++counts[4][p.a];
        }
        benchmark::DoNotOptimize(counts.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(std::int64_t(state.iterations()) * SIZE * SIZE);
}
BENCHMARK(histogramBareLoop)->Unit(benchmark::kMillisecond)->UseRealTime();

void applyCurvesThroughTables(benchmark::State& state)
{
    BitmapImpl<RgbaBytes> target = image();
    for (auto _ : state) {
        applyColorCurves(sampleCurves(), target.getPixels());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(applyCurvesThroughTables)->Unit(benchmark::kMillisecond)->UseRealTime();

void applyPrecomputedTable(benchmark::State& state)
{
    BitmapImpl<RgbaBytes> target = image();
    const auto tables = makeColorCurveTables(sampleCurves());
    for (auto _ : state) {
        for (RgbaBytes& p : target.getPixels()) {
            p.r = tables[0][p.r];
            p.g = tables[1][p.g];
            p.b = tables[2][p.b];
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(applyPrecomputedTable)->Unit(benchmark::kMillisecond)->UseRealTime();

constexpr int DRAG_WIDTH = 420;
constexpr int DRAG_HEIGHT = 320;
constexpr int DRAG_BINS = 1024;

// The point under the hand moves between two heights, as a drag that goes up and down.
QPointF dragPosition(const Widgets::Curves& widget, std::int64_t step)
{
    return widget.toWidget({ 0.25, step % 2 ? 0.35 : 0.15 });
}

void sendMouse(QWidget& widget, QEvent::Type type, const QPointF& at, Qt::MouseButtons buttons)
{
    QMouseEvent event(type, at, widget.mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
        buttons, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

// One step of a drag of a point: the mouse moves, the curve and the model are written, and the widget with a
// 1024-bin histogram behind the curve repaints into an image.
void curvesDragStep(benchmark::State& state)
{
    auto model = makeSharedPtr<Widgets::VariableModel<Curves>>(sampleCurves());
    Widgets::Curves widget(model, makeSharedPtr<Widgets::VariableModel<int>>(0),
        makeSharedPtr<Widgets::VariableModel<CurveInterpolation>>(CurveInterpolation::CubicSpline));
    widget.resize(DRAG_WIDTH, DRAG_HEIGHT);
    widget.setHistogram(Histogram::compute(image(), DRAG_BINS));
    QImage target(widget.size(), QImage::Format_ARGB32_Premultiplied);
    sendMouse(widget, QEvent::MouseButtonPress, widget.toWidget({ 0.25, 0.2 }), Qt::LeftButton);
    std::int64_t step = 0;
    for (auto _ : state) {
        sendMouse(widget, QEvent::MouseMove, dragPosition(widget, ++step), Qt::LeftButton);
        widget.render(&target);
    }
    sendMouse(widget, QEvent::MouseButtonRelease, dragPosition(widget, step), Qt::NoButton);
    if (model->get().getChannel(0).getPointCount() != sampleCurves().getChannel(0).getPointCount())
        state.SkipWithError("the drag added or lost a point");
}
BENCHMARK(curvesDragStep)->Unit(benchmark::kMillisecond)->UseRealTime();

/// The least any widget showing the curve does: a plain QWidget stroking the same polyline, one vertex per column.
class PolylineWidget : public QWidget
{
public:
    PolylineWidget()
    {
        const Curve& curve = sampleCurves().getChannel(0);
        for (int x = 0; x < DRAG_WIDTH; ++x)
            line.append(QPointF(x, DRAG_HEIGHT * (1.0 - curve.evaluate(double(x) / (DRAG_WIDTH - 1)))));
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), palette().color(QPalette::Base));
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(palette().color(QPalette::Text), 1.5));
        painter.drawPolyline(line.data(), int(line.size()));
    }

private:
    QList<QPointF> line;
};

void plainPolylineRepaint(benchmark::State& state)
{
    PolylineWidget widget;
    widget.resize(DRAG_WIDTH, DRAG_HEIGHT);
    QImage target(widget.size(), QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state)
        widget.render(&target);
}
BENCHMARK(plainPolylineRepaint)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    // Without a display the widgets are drawn offscreen; the events and the painting are the same.
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    benchmark::Initialize(&argc, argv);
    LibQt::startup("bench_curves");
    // Wall-clock time: the scheduler's gain is in running on every core at once, which CPU time would hide.
    Benchmarks::RatioReporter reporter(Benchmarks::Clock::Real,
        {
            { "histogramOnScheduler/real_time", "histogramBareLoop/real_time", "histogram of 4096 x 4096 RGBA",
                "goal 0.6 or less" },
            { "histogramOnOneWorker/real_time", "histogramBareLoop/real_time", "the same on one worker" },
            { "applyCurvesThroughTables/real_time", "applyPrecomputedTable/real_time",
                "curves applied to 4096 x 4096 RGBA", "goal 1.2 or less" },
            { "curvesDragStep/real_time", "plainPolylineRepaint/real_time",
                "drag step of a point over a 1024-bin histogram / plain polyline repaint", "goal under 2 ms a step" },
        });
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    LibQt::shutdown();
    return 0;
}
