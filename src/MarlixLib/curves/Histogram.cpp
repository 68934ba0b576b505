#include <MarlixLib/base/Exception.h>
#include <MarlixLib/curves/CurveReduction.h>
#include <MarlixLib/curves/Histogram.h>

#include <algorithm>
#include <cmath>

namespace Marlix {

namespace {

constexpr StringView UNIT = "curves/Histogram";
constexpr std::size_t MASTER = std::size_t(ColorCurveChannel::Master);
constexpr std::size_t RED = std::size_t(ColorCurveChannel::Red);
constexpr std::size_t GREEN = std::size_t(ColorCurveChannel::Green);
constexpr std::size_t BLUE = std::size_t(ColorCurveChannel::Blue);
constexpr std::size_t ALPHA = std::size_t(ColorCurveChannel::Alpha);
// A band is big enough that a task's start and merge cost little next to its counting, and small enough that 32-bit
// counters cannot overflow in it.
constexpr std::size_t MIN_BAND_PIXELS = 1 << 16;
constexpr std::size_t MAX_BAND_PIXELS = std::size_t(1) << 30;
// Bands per worker: a spare band or two lets a worker that started late still share the work evenly.
constexpr std::size_t BANDS_PER_WORKER = 2;

std::uint8_t luminance(const RgbaBytes& p) noexcept
{
    // Rec. 709 weights in 1/256 steps (54 + 183 + 19 = 256), so white stays 255.
    return std::uint8_t((54u * p.r + 183u * p.g + 19u * p.b + 128u) >> 8);
}

// 8-bit pixels are counted per tone first and spread over the bins at the end, so the loop that touches every pixel
// is the same for every bin count. Four sets of counters take turns by pixel: runs of equal pixels (flat areas)
// would otherwise make every increment wait for the one before.
struct ByteCounts
{
    static constexpr std::size_t SETS = 4;
    std::array<std::array<std::array<std::uint32_t, 256>, Histogram::CHANNEL_COUNT>, SETS> sets {};

    static void add(std::array<std::array<std::uint32_t, 256>, Histogram::CHANNEL_COUNT>& set, RgbaBytes p) noexcept
    {
        ++set[RED][p.r];
        ++set[GREEN][p.g];
        ++set[BLUE][p.b];
        ++set[ALPHA][p.a];
        ++set[MASTER][luminance(p)];
    }

    void count(ArrayView<const RgbaBytes> pixels) noexcept
    {
        std::size_t i = 0;
        for (; i + SETS <= pixels.size(); i += SETS)
            for (std::size_t s = 0; s < SETS; ++s)
                add(sets[s], pixels[i + s]);
        for (; i < pixels.size(); ++i)
            add(sets[0], pixels[i]);
    }

    void addTo(ArrayView<std::uint64_t> counts, int binCount) const noexcept
    {
        for (std::size_t channel = 0; channel < Histogram::CHANNEL_COUNT; ++channel)
            for (std::size_t v = 0; v < 256; ++v) {
                const std::size_t bin = std::min<std::size_t>(v * std::size_t(binCount) / 255, binCount - 1);
                std::uint64_t sum = 0;
                for (const auto& set : sets)
                    sum += set[channel][v];
                counts[channel * std::size_t(binCount) + bin] += sum;
            }
    }
};

void countPixels(ArrayView<const RgbaBytes> pixels, ArrayView<std::uint64_t> counts, int binCount)
{
    const auto local = std::make_unique<ByteCounts>();
    for (std::size_t start = 0; start < pixels.size(); start += MAX_BAND_PIXELS) {
        local->count(pixels.subspan(start, std::min(MAX_BAND_PIXELS, pixels.size() - start)));
        local->addTo(counts, binCount);
        *local = {};
    }
}

void countPixels(ArrayView<const Rgb> pixels, ArrayView<std::uint64_t> counts, int binCount)
{
    const auto bins = std::size_t(binCount);
    const auto scale = float(binCount);
    const auto bin = [bins, scale](float value) -> std::size_t {
        if (!(value > 0.0f))
            return 0;
        return std::min(bins - 1, std::size_t(std::min(value * scale, scale)));
    };
    for (const Rgb& p : pixels) {
        ++counts[RED * bins + bin(p.r)];
        ++counts[GREEN * bins + bin(p.g)];
        ++counts[BLUE * bins + bin(p.b)];
        ++counts[ALPHA * bins + bin(p.a)];
        ++counts[MASTER * bins + bin(0.2126f * p.r + 0.7152f * p.g + 0.0722f * p.b)];
    }
}

template <class P> Histogram computeBands(const BitmapImpl<P>& image, int binCount, Scheduler& scheduler)
{
    Histogram total(binCount);
    const ArrayView<const P> pixels = image.getPixels();
    if (pixels.empty())
        return total;
    const auto width = std::size_t(image.getWidth());
    const auto rows = std::size_t(image.getHeight());
    const std::size_t byWork = std::max<std::size_t>(1, pixels.size() / MIN_BAND_PIXELS);
    const std::size_t bandCount = std::min({ rows, byWork, scheduler.getThreadCount() * BANDS_PER_WORKER });
    Array<Histogram> partial(bandCount, Histogram(binCount));
    Array<SharedPtr<Task>> tasks;
    tasks.reserve(bandCount);
    for (std::size_t band = 0; band < bandCount; ++band) {
        const std::size_t first = rows * band / bandCount * width;
        const std::size_t last = rows * (band + 1) / bandCount * width;
        Histogram* target = &partial[band];
        const ArrayView<const P> rowsOfBand = pixels.subspan(first, last - first);
        tasks.push_back(scheduler.submit([target, rowsOfBand] { target->addPixels(rowsOfBand); }));
    }
    for (const auto& task : tasks)
        task->rethrowFailure();
    for (const Histogram& band : partial)
        total.merge(band);
    return total;
}

template <class P>
SharedPtr<Task> submitCompute(
    SharedPtr<const BitmapImpl<P>> image, int binCount, Function<void(Histogram)> done, Scheduler& scheduler)
{
    if (!image || !done)
        Detail::throwStopException(UNIT, __LINE__);
    // A bad bin count is reported now, to the caller, rather than as the failure of a task.
    (void)Histogram(binCount);
    return scheduler.submit([image = std::move(image), binCount, done = std::move(done), &scheduler] {
        done(computeBands(*image, binCount, scheduler));
    });
}

} // namespace

Histogram::Histogram()
    : Histogram(DEFAULT_BIN_COUNT)
{
}

Histogram::Histogram(int binCount)
    : binCount(binCount)
{
    if (binCount < 1 || binCount > MAX_BIN_COUNT)
        throw Exception(
            "A histogram has 1 to " + std::to_string(MAX_BIN_COUNT) + " bins, not " + std::to_string(binCount));
    counts.assign(std::size_t(CHANNEL_COUNT) * std::size_t(binCount), 0);
}

Histogram Histogram::compute(const BitmapImpl<RgbaBytes>& image, int binCount, Scheduler& scheduler)
{
    return computeBands(image, binCount, scheduler);
}

Histogram Histogram::compute(const BitmapImpl<Rgb>& image, int binCount, Scheduler& scheduler)
{
    return computeBands(image, binCount, scheduler);
}

SharedPtr<Task> Histogram::computeAsync(
    SharedPtr<const BitmapImpl<RgbaBytes>> image, int binCount, Function<void(Histogram)> done, Scheduler& scheduler)
{
    return submitCompute(std::move(image), binCount, std::move(done), scheduler);
}

SharedPtr<Task> Histogram::computeAsync(
    SharedPtr<const BitmapImpl<Rgb>> image, int binCount, Function<void(Histogram)> done, Scheduler& scheduler)
{
    return submitCompute(std::move(image), binCount, std::move(done), scheduler);
}

void Histogram::addPixels(ArrayView<const RgbaBytes> pixels)
{
    countPixels(pixels, counts, binCount);
    pixelCount += pixels.size();
}

void Histogram::addPixels(ArrayView<const Rgb> pixels)
{
    countPixels(pixels, counts, binCount);
    pixelCount += pixels.size();
}

void Histogram::merge(const Histogram& other)
{
    if (other.binCount != binCount)
        throw Exception("Cannot merge a histogram of " + std::to_string(other.binCount) + " bins into one of "
            + std::to_string(binCount));
    for (std::size_t i = 0; i < counts.size(); ++i)
        counts[i] += other.counts[i];
    pixelCount += other.pixelCount;
}

ArrayView<const std::uint64_t> Histogram::getBins(int channel) const
{
    return ArrayView<const std::uint64_t>(counts).subspan(channelOffset(channel, __LINE__), std::size_t(binCount));
}

std::uint64_t Histogram::getMaximum(int channel) const
{
    const auto bins = getBins(channel);
    return *std::max_element(bins.begin(), bins.end());
}

Stack<float> Histogram::getCumulativeHistogram(int channel) const
{
    const auto bins = getBins(channel);
    Stack<float> cumulative(bins.size(), 0.0f);
    if (pixelCount == 0)
        return cumulative;
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < bins.size(); ++i) {
        sum += bins[i];
        cumulative[i] = float(double(sum) / double(pixelCount));
    }
    return cumulative;
}

Curve Histogram::computeEqualizingCurve(int channel) const
{
    const auto bins = getBins(channel);
    const auto firstUsed = std::find_if(bins.begin(), bins.end(), [](std::uint64_t n) { return n > 0; });
    if (firstUsed == bins.end() || *firstUsed == pixelCount || bins.size() < 2)
        return Curve(DefaultCurveType::Identity, CurveInterpolation::Linear);
    // The classic mapping: (cdf - cdf of the darkest tone present) / (pixels - that), so the darkest tone goes to 0
    // and the brightest to 1.
    const double darkest = double(*firstUsed);
    const double spread = double(pixelCount) - darkest;
    Array<Vector2> samples(bins.size());
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < bins.size(); ++i) {
        sum += bins[i];
        samples[i] = { double(i) / double(bins.size() - 1), std::clamp((double(sum) - darkest) / spread, 0.0, 1.0) };
    }
    constexpr double HALF_TONE_STEP = 0.5 / 255.0;
    return Curve(Detail::reduceCurvePoints(samples, MAX_EQUALIZING_POINTS, HALF_TONE_STEP, Curve::EPSILON),
        CurveInterpolation::Linear);
}

std::size_t Histogram::channelOffset(int channel, int line) const
{
    if (channel < 0 || channel >= CHANNEL_COUNT)
        Detail::throwStopException(UNIT, line);
    return std::size_t(channel) * std::size_t(binCount);
}

} // namespace Marlix
