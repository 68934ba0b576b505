#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/curves/Curves.h>

#include <cstddef>
#include <cstdint>

namespace Marlix {

/// The limits of the published 8-bit curves format (".acv"): big-endian 16-bit integers, the version (1 or 4), the
/// curve count, then per curve its point count and that many (output, input) pairs of 8-bit tones. A version 4 file
/// may carry after them a block that starts with "Crv " and repeats the curves with a channel index each.
struct CurveFileFormat
{
    static constexpr std::uint16_t VERSION = 1; ///< The version written; every reader of the format knows it.
    static constexpr std::uint16_t EXTENDED_VERSION = 4; ///< Also read: may carry the block of indexed curves.
    static constexpr std::size_t MIN_POINT_COUNT = 2; ///< The fewest points a curve of a file has.
    static constexpr std::size_t MAX_POINT_COUNT = 19; ///< The most points a curve of a file has.
    static constexpr int MAX_TONE = 255; ///< Tones are stored as 0 to 255 and map to 0 to 1.
    /// The largest file a reader accepts: 65 535 curves of 19 points, twice (the extended block), and some slack.
    static constexpr std::size_t MAX_FILE_SIZE = 16u << 20;
};

/// Reads curves from the bytes of a curve file. Each curve becomes a cubic spline through its points. An error names
/// what is wrong and where ("Curve 3 has 25 points; a curve has 2 to 19"); nothing is ever allocated from a count
/// that the bytes have not been checked to hold.
MARLIXLIB_EXPORT Expected<Curves, String> readCurves(ArrayView<const std::byte> bytes);

/// The bytes of a version 1 curve file, the version every reader of the format knows. Points are rounded to 8-bit
/// tones (points that then share an input keep the first); a curve of more than 19 points is written as the 19
/// points that follow its shape most closely. Throws Exception for more than 65 535 curves.
MARLIXLIB_EXPORT Array<std::byte> writeCurves(const Curves& curves);

/// readCurves of a file; a file that cannot be read, or is larger than any curve file, is an error naming it.
MARLIXLIB_EXPORT Expected<Curves, String> loadCurves(const Io::Path& path);

/// Writes a curve file; false when it cannot. A file already at `path` is replaced only once the new one is complete.
MARLIXLIB_EXPORT bool saveCurves(const Curves& curves, const Io::Path& path);

} // namespace Marlix
