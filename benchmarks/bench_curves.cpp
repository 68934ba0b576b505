#include "RatioReporter.h"

#include <MarlixLib/curves/ColorCurves.h>
#include <MarlixLib/curves/Histogram.h>

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

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    // Wall-clock time: the scheduler's gain is in running on every core at once, which CPU time would hide.
    Benchmarks::RatioReporter reporter(Benchmarks::Clock::Real,
        {
            { "histogramOnScheduler/real_time", "histogramBareLoop/real_time", "histogram of 4096 x 4096 RGBA",
                "goal 0.6 or less" },
            { "histogramOnOneWorker/real_time", "histogramBareLoop/real_time", "the same on one worker" },
            { "applyCurvesThroughTables/real_time", "applyPrecomputedTable/real_time",
                "curves applied to 4096 x 4096 RGBA", "goal 1.2 or less" },
        });
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
