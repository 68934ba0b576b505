#include <MarlixLib/base/Exception.h>
#include <MarlixLib/curves/CurveFile.h>
#include <MarlixLib/curves/CurveReduction.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <system_error>

namespace Marlix {

namespace {

using Format = CurveFileFormat;

constexpr char EXTENDED_SIGNATURE[] = "Crv ";
// A curve takes at least its point count and two points.
constexpr std::size_t MIN_CURVE_SIZE = 2 + Format::MIN_POINT_COUNT * 4;

class ByteReader
{
public:
    explicit ByteReader(ArrayView<const std::byte> bytes)
        : bytes(bytes)
    {
    }

    std::size_t remaining() const noexcept { return bytes.size() - offset; }

    Optional<std::uint16_t> u16() noexcept
    {
        if (remaining() < 2)
            return std::nullopt;
        const auto value = std::uint16_t(
            std::to_integer<unsigned>(bytes[offset]) << 8 | std::to_integer<unsigned>(bytes[offset + 1]));
        offset += 2;
        return value;
    }

    Optional<std::uint32_t> u32() noexcept
    {
        const auto high = u16();
        const auto low = high ? u16() : std::nullopt;
        if (!low)
            return std::nullopt;
        return std::uint32_t(*high) << 16 | *low;
    }

    bool skipSignature(StringView signature) noexcept
    {
        if (remaining() < signature.size())
            return false;
        for (std::size_t i = 0; i < signature.size(); ++i)
            if (std::to_integer<char>(bytes[offset + i]) != signature[i])
                return false;
        offset += signature.size();
        return true;
    }

private:
    ArrayView<const std::byte> bytes;
    std::size_t offset = 0;
};

String curveName(std::size_t index)
{
    return "curve " + std::to_string(index + 1);
}

// One curve's point count and points; `number` is the curve's place in the file for the messages.
Expected<Curve, String> readCurve(ByteReader& in, std::size_t number)
{
    const auto count = in.u16();
    if (!count)
        return Unexpected<String>("The curve file ends inside " + curveName(number));
    if (*count < Format::MIN_POINT_COUNT || *count > Format::MAX_POINT_COUNT)
        return Unexpected<String>("Curve " + std::to_string(number + 1) + " has " + std::to_string(*count)
            + (*count == 1 ? " point" : " points") + "; a curve has 2 to 19");
    if (in.remaining() < std::size_t(*count) * 4)
        return Unexpected<String>("The curve file ends inside " + curveName(number));
    Array<Vector2> positions;
    positions.reserve(*count);
    int previousInput = -1;
    for (std::size_t i = 0; i < *count; ++i) {
        const int output = *in.u16();
        const int input = *in.u16();
        const String point = "Point " + std::to_string(i + 1) + " of " + curveName(number);
        if (input > Format::MAX_TONE)
            return Unexpected<String>(point + " has the input " + std::to_string(input) + "; inputs are 0 to 255");
        if (output > Format::MAX_TONE)
            return Unexpected<String>(point + " has the output " + std::to_string(output) + "; outputs are 0 to 255");
        if (input <= previousInput)
            return Unexpected<String>(
                "Inputs of " + curveName(number) + " do not increase at point " + std::to_string(i + 1));
        previousInput = input;
        positions.push_back({ input / double(Format::MAX_TONE), output / double(Format::MAX_TONE) });
    }
    return Curve(positions, CurveInterpolation::CubicSpline);
}

// The block after the curves of a version 4 file: "Crv ", its version (4), a 32-bit count, then per curve a channel
// index before the point count. Files in the wild differ in what they put there, and the first block already holds
// every curve, so a block that is not understood is passed over; one that is understood places its curves on the
// channels it names.
void readExtendedBlock(ByteReader& in, Array<Curve>& curves)
{
    if (!in.skipSignature(EXTENDED_SIGNATURE) || in.u16() != Format::EXTENDED_VERSION)
        return;
    const auto count = in.u32();
    if (!count || *count > in.remaining() / (2 + MIN_CURVE_SIZE))
        return;
    Array<Curve> placed = curves;
    for (std::size_t i = 0; i < *count; ++i) {
        const auto channel = in.u16();
        if (!channel || *channel >= placed.size())
            return;
        auto curve = readCurve(in, i);
        if (!curve)
            return;
        placed[*channel] = std::move(*curve);
    }
    if (in.remaining() == 0)
        curves = std::move(placed);
}

std::uint16_t tone(double value)
{
    return static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0, 1.0) * Format::MAX_TONE));
}

// The points a curve file holds for a curve, as (output, input) tones with rising inputs.
Array<std::pair<std::uint16_t, std::uint16_t>> filePoints(const Curve& curve)
{
    Array<Vector2> positions;
    if (curve.getPointCount() <= Format::MAX_POINT_COUNT) {
        for (const CurvePoint& point : curve.getPoints())
            positions.push_back(point.position);
    } else {
        Array<Vector2> samples;
        for (int v = 0; v <= Format::MAX_TONE; ++v)
            samples.push_back({ v / double(Format::MAX_TONE), curve.evaluate(v / double(Format::MAX_TONE)) });
        positions = Detail::reduceCurvePoints(samples, Format::MAX_POINT_COUNT, 0.0, Curve::EPSILON);
    }
    Array<std::pair<std::uint16_t, std::uint16_t>> points;
    for (const Vector2& position : positions)
        if (points.empty() || tone(position.x) > points.back().second)
            points.emplace_back(tone(position.y), tone(position.x));
    // Points closer than a tone step may have merged; a file curve still needs two ends.
    if (points.size() < Format::MIN_POINT_COUNT)
        points.emplace_back(tone(curve.evaluate(1.0)), std::uint16_t(Format::MAX_TONE));
    if (points.size() < Format::MIN_POINT_COUNT)
        points.insert(points.begin(), { tone(curve.evaluate(0.0)), std::uint16_t(0) });
    return points;
}

void put(Array<std::byte>& bytes, std::uint16_t value)
{
    bytes.push_back(std::byte(value >> 8));
    bytes.push_back(std::byte(value & 0xff));
}

} // namespace

Expected<Curves, String> readCurves(ArrayView<const std::byte> bytes)
{
    if (bytes.empty())
        return Unexpected<String>("The curve file is empty");
    ByteReader in(bytes);
    const auto version = in.u16();
    const auto count = in.u16();
    if (!count)
        return Unexpected<String>("The curve file is too short to hold its version and curve count");
    if (*version != Format::VERSION && *version != Format::EXTENDED_VERSION)
        return Unexpected<String>("Version " + std::to_string(*version) + " is not a curve file version");
    Array<Curve> curves;
    curves.reserve(std::min<std::size_t>(*count, in.remaining() / MIN_CURVE_SIZE));
    for (std::size_t i = 0; i < *count; ++i) {
        auto curve = readCurve(in, i);
        if (!curve)
            return Unexpected<String>(curve.error());
        curves.push_back(std::move(*curve));
    }
    // Without a signature, the exact length is what tells a version 1 curve file from any other file.
    if (*version == Format::VERSION && in.remaining() > 0)
        return Unexpected<String>(
            "The curve file has " + std::to_string(in.remaining()) + " bytes after its last curve");
    if (*version == Format::EXTENDED_VERSION)
        readExtendedBlock(in, curves);
    return Curves(std::move(curves));
}

Array<std::byte> writeCurves(const Curves& curves)
{
    if (curves.getChannelCount() > std::numeric_limits<std::uint16_t>::max())
        throw Exception("A curve file holds at most 65535 curves, not " + std::to_string(curves.getChannelCount()));
    Array<std::byte> bytes;
    put(bytes, Format::VERSION);
    put(bytes, std::uint16_t(curves.getChannelCount()));
    for (const Curve& curve : curves.getChannels()) {
        const auto points = filePoints(curve);
        put(bytes, std::uint16_t(points.size()));
        for (const auto& [output, input] : points) {
            put(bytes, output);
            put(bytes, input);
        }
    }
    return bytes;
}

Expected<Curves, String> loadCurves(const Io::Path& path)
{
    const String name = "\"" + path.generic_string() + "\"";
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error)
        return Unexpected<String>("Cannot read the curve file " + name + ": " + error.message());
    if (size > Format::MAX_FILE_SIZE)
        return Unexpected<String>("The file " + name + " is too large to be a curve file");
    std::ifstream file(path, std::ios::binary);
    Array<std::byte> bytes(size);
    if (!file || !file.read(reinterpret_cast<char*>(bytes.data()), std::streamsize(size)))
        return Unexpected<String>("Cannot read the curve file " + name);
    return readCurves(bytes);
}

bool saveCurves(const Curves& curves, const Io::Path& path)
{
    Array<std::byte> bytes;
    try {
        bytes = writeCurves(curves);
    } catch (const Exception&) {
        return false;
    }
    Io::Path partial = path;
    partial += ".partial";
    {
        std::ofstream file(partial, std::ios::binary | std::ios::trunc);
        if (!file.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size())) || !file.flush()) {
            std::error_code ignored;
            std::filesystem::remove(partial, ignored);
            return false;
        }
    }
    std::error_code error;
    std::filesystem::rename(partial, path, error);
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(partial, ignored);
        return false;
    }
    return true;
}

} // namespace Marlix
