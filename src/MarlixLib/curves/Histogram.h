#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/color/Rgb.h>
#include <MarlixLib/color/RgbBytes.h>
#include <MarlixLib/curves/ColorCurves.h>
#include <MarlixLib/curves/Curve.h>
#include <MarlixLib/image/BitmapImpl.h>
#include <MarlixLib/tasks/Scheduler.h>

#include <cstddef>
#include <cstdint>

namespace Marlix {

/// Per-channel bin counts of an image: red, green, blue, alpha and luminance (Rec. 709 weights), each tone in [0, 1]
/// falling into one of getBinCount() equal bins (8-bit tone v in bin v * bins / 255, rounded down). Values outside
/// [0, 1] count in the end bins, a NaN in the first.
class MARLIXLIB_EXPORT Histogram
{
public:
    static constexpr int CHANNEL_COUNT = 5; ///< Luminance, red, green, blue and alpha, in ColorCurveChannel order.
    static constexpr int DEFAULT_BIN_COUNT = 256; ///< One bin per 8-bit tone.
    static constexpr int MAX_BIN_COUNT = 1 << 16; ///< The most bins a histogram may have.
    /// Equalizing curves stop at this many points, so that they fit a curve file unchanged.
    static constexpr std::size_t MAX_EQUALIZING_POINTS = 19;

    /// No pixel counted yet, DEFAULT_BIN_COUNT bins.
    Histogram();
    /// Throws Exception unless 1 <= binCount <= MAX_BIN_COUNT.
    explicit Histogram(int binCount);

    /// Counts an image as tasks on `scheduler`, one per band of rows, and waits for them; the calling thread takes
    /// over bands that no worker has started. Throws Exception for a bad bin count.
    static Histogram compute(const BitmapImpl<RgbaBytes>& image, int binCount = DEFAULT_BIN_COUNT,
        Scheduler& scheduler = Scheduler::highPriorityInstance());
    /// \overload
    static Histogram compute(const BitmapImpl<Rgb>& image, int binCount = DEFAULT_BIN_COUNT,
        Scheduler& scheduler = Scheduler::highPriorityInstance());
    /// compute() without blocking the caller: `done` gets the histogram on a worker thread (a GUI hands it over to its
    /// own thread). The image is shared, never copied; the returned task reports a failure, `done`'s included.
    static SharedPtr<Task> computeAsync(SharedPtr<const BitmapImpl<RgbaBytes>> image, int binCount,
        Function<void(Histogram)> done, Scheduler& scheduler = Scheduler::highPriorityInstance());
    /// \overload
    static SharedPtr<Task> computeAsync(SharedPtr<const BitmapImpl<Rgb>> image, int binCount,
        Function<void(Histogram)> done, Scheduler& scheduler = Scheduler::highPriorityInstance());

    /// Counts pixels on this thread.
    void addPixels(ArrayView<const RgbaBytes> pixels);
    void addPixels(ArrayView<const Rgb> pixels); ///< \overload
    /// Adds the counts of another histogram; throws Exception when the bin counts differ.
    void merge(const Histogram& other);

    int getBinCount() const noexcept { return binCount; } ///< The number of bins of every channel.
    std::uint64_t getPixelCount() const noexcept { return pixelCount; } ///< The number of pixels counted.
    /// The counts of one channel (a ColorCurveChannel value); another value stops the program, here and below.
    ArrayView<const std::uint64_t> getBins(int channel) const;
    std::uint64_t getMaximum(int channel) const; ///< The largest count of one channel's bins, to scale a display.
    /// The share of the pixels at or below each bin, rising to 1 (all 0 when nothing was counted).
    Stack<float> getCumulativeHistogram(int channel = int(ColorCurveChannel::Master)) const;
    /// The curve that spreads the channel's tones evenly (histogram equalization): the cumulative share of each bin,
    /// stretched so that the darkest tone present maps to 0, as a linear curve through at most MAX_EQUALIZING_POINTS
    /// points that follow it within half a tone step where they can. The identity when fewer than two tones occur.
    Curve computeEqualizingCurve(int channel) const;

    friend bool operator==(const Histogram&, const Histogram&) = default; ///< Same bins with the same counts.

private:
    std::size_t channelOffset(int channel, int line) const;

    int binCount = DEFAULT_BIN_COUNT;
    std::uint64_t pixelCount = 0;
    // CHANNEL_COUNT runs of binCount counts, in ColorCurveChannel order.
    Array<std::uint64_t> counts;
};

} // namespace Marlix
