#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Exception.h>

#include <cstddef>
#include <cstdint>
#include <limits>

namespace Marlix {

/// A width x height image of pixels of type T, stored row by row from the top without padding.
template <class T> class BitmapImpl
{
public:
    using Pixel = T; ///< The pixel type.

    BitmapImpl() = default; ///< An empty bitmap, 0 x 0.
    /// Throws Exception when a dimension is negative or the pixel count does not fit in memory addressing.
    BitmapImpl(int width, int height, const T& fill = T {})
        : width(width)
        , height(height)
        , pixels(checkedCount(width, height), fill)
    {
    }
    /// Takes pixels that are already laid out; their count must be width * height.
    BitmapImpl(int width, int height, Array<T> pixels)
        : width(width)
        , height(height)
        , pixels(std::move(pixels))
    {
        if (this->pixels.size() != checkedCount(width, height))
            throw Exception("The pixel count of the bitmap does not match its width and height.");
    }

    int getWidth() const noexcept { return width; } ///< Pixels per row.
    int getHeight() const noexcept { return height; } ///< Rows.
    bool isEmpty() const noexcept { return pixels.empty(); } ///< True when there is no pixel.
    std::size_t getPixelCount() const noexcept { return pixels.size(); } ///< width x height.

    /// The pixel in column x of row y (0, 0 is the top left); outside the bitmap it stops the program.
    const T& at(int x, int y) const { return pixels[index(x, y)]; }
    T& at(int x, int y) { return pixels[index(x, y)]; } ///< \overload
    /// The pixels of row y, left to right; a row outside the bitmap stops the program.
    ArrayView<const T> getRow(int y) const { return { pixels.data() + index(0, y), std::size_t(width) }; }
    /// \overload
    ArrayView<T> getRow(int y) { return { pixels.data() + index(0, y), std::size_t(width) }; }
    ArrayView<const T> getPixels() const noexcept { return pixels; } ///< Every pixel, row by row from the top.
    ArrayView<T> getPixels() noexcept { return pixels; } ///< \overload

    /// Equal when the sizes and every pixel are equal.
    friend bool operator==(const BitmapImpl&, const BitmapImpl&) = default;

private:
    static std::size_t checkedCount(int width, int height)
    {
        if (width < 0 || height < 0)
            throw Exception("A bitmap cannot have a negative width or height.");
        const auto count = std::uint64_t(width) * std::uint64_t(height);
        if (count > std::numeric_limits<std::size_t>::max() / sizeof(T))
            throw Exception("The bitmap is too large.");
        return std::size_t(count);
    }
    std::size_t index(int x, int y) const
    {
        if (x < 0 || y < 0 || x >= width || y >= height)
            Detail::throwStopException("image/BitmapImpl", __LINE__);
        return std::size_t(y) * std::size_t(width) + std::size_t(x);
    }

    int width = 0;
    int height = 0;
    Array<T> pixels;
};

} // namespace Marlix
