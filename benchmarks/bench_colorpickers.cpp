#include "RatioReporter.h"

#include <MarlixLibQt/widgets/color/ColorPicker.h>
#include <MarlixLibQt/widgets/color/HwbColorPicker.h>

#include <QApplication>
#include <QImage>

#include <benchmark/benchmark.h>

#include <cstdio>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

constexpr int FIELD_WIDTH = HueBlacknessPicker::INITIAL_WIDTH;
constexpr int FIELD_HEIGHT = HueBlacknessPicker::INITIAL_HEIGHT;
// The budget of one frame at 60 Hz, in nanoseconds.
constexpr double FRAME_NS = 1e9 / 60.0;

} // namespace

/// The field as the picker makes it on a resize or show: one HWB colour per pixel, into its pixmap.
static void hwbFieldRecompute(benchmark::State& state)
{
    HueBlacknessPicker field(makeSharedPtr<VariableModel<QPointF>>(QPointF(0.3, 0.4)));
    field.resize(FIELD_WIDTH, FIELD_HEIGHT);
    field.show();
    for (auto _ : state) {
        field.calculateFade();
        benchmark::DoNotOptimize(field.getField().cacheKey());
    }
    state.counters["pixels"] = FIELD_WIDTH * FIELD_HEIGHT;
}
BENCHMARK(hwbFieldRecompute)->Unit(benchmark::kMicrosecond);

/// The baseline: the same picture from a bare loop of QColor::fromHsvF, written into an image.
static void hsvLoopBaseline(benchmark::State& state)
{
    QImage image(FIELD_WIDTH, FIELD_HEIGHT, QImage::Format_RGB32);
    for (auto _ : state) {
        for (int y = 0; y < FIELD_HEIGHT; ++y) {
            const float value = 1.0f - static_cast<float>(y) / (FIELD_HEIGHT - 1);
            auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
            for (int x = 0; x < FIELD_WIDTH; ++x)
                line[x] = QColor::fromHsvF(static_cast<float>(x) / (FIELD_WIDTH - 1), 1.0f, value).rgb();
        }
        benchmark::DoNotOptimize(image.constBits());
        benchmark::ClobberMemory();
    }
    state.counters["pixels"] = FIELD_WIDTH * FIELD_HEIGHT;
}
BENCHMARK(hsvLoopBaseline)->Unit(benchmark::kMicrosecond);

/// One colour change of a shown RGBA panel: every row's gradient made again, the numbers updated, the panel painted.
static void rgbaPanelColorChange(benchmark::State& state)
{
    auto color = makeSharedPtr<VariableModel<QColorExtended>>(QColorExtended(QColor(200, 100, 50)));
    auto valueType = makeSharedPtr<VariableModel<long long>>(0);
    RgbaColorPicker panel(color, valueType);
    panel.resize(480, 140);
    panel.show();
    int step = 0;
    for (auto _ : state) {
        ++step;
        color->set(QColorExtended(QColor::fromRgbF(0.5f, (step % 100) / 100.0f, 0.25f, 0.75f)));
        panel.repaint();
    }
}
BENCHMARK(rgbaPanelColorChange)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    // Widgets need a platform; without a display the run still measures what the library computes.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    Benchmarks::RatioReporter reporter(Benchmarks::Clock::Real,
        { { "hwbFieldRecompute", "hsvLoopBaseline", "HWB field / fromHsvF loop", "goal 1.2 or less" } },
        [](const Benchmarks::RatioReporter& figures) {
            if (const auto* panel = figures.find("rgbaPanelColorChange"); panel && panel->nanoseconds > 0.0)
                std::printf("RGBA panel colour change: %.3f ms, %.1f %% of a 16.7 ms frame\n", panel->nanoseconds / 1e6,
                    100.0 * panel->nanoseconds / FRAME_NS);
        });
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
