#include <MarlixLib/base/Exception.h>
#include <MarlixLib/curves/Curve.h>
#include <MarlixLib/curves/CurveSpans.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Marlix {

namespace {

constexpr StringView UNIT = "curves/Curve";
// Points read from 8-bit files lie exactly one tone apart, which double arithmetic may leave a hair short of EPSILON.
constexpr double SPACING_TOLERANCE = 1e-9;

constexpr std::array<StringView, CURVE_INTERPOLATION_COUNT> INTERPOLATION_NAMES {
    "cubic",
    "linear",
    "cubic uniform",
    "cubic chordal",
    "bezier",
};

bool isFinite(const Vector2& v) noexcept
{
    return std::isfinite(v.x) && std::isfinite(v.y);
}

bool isInUnitSquare(const Vector2& v) noexcept
{
    return v.x >= 0.0 && v.x <= 1.0 && v.y >= 0.0 && v.y <= 1.0;
}

bool isValid(CurveInterpolation interpolation) noexcept
{
    return static_cast<int>(interpolation) < CURVE_INTERPOLATION_COUNT;
}

String number(double value)
{
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return String(buffer, result.ptr);
}

Array<CurvePoint> defaultPoints(DefaultCurveType type)
{
    const double start = type == DefaultCurveType::Identity ? 0.0 : 1.0;
    return { CurvePoint::at({ 0.0, start }), CurvePoint::at({ 1.0, 1.0 }) };
}

} // namespace

StringView getCurveInterpolationName(CurveInterpolation interpolation) noexcept
{
    return isValid(interpolation) ? INTERPOLATION_NAMES[static_cast<std::size_t>(interpolation)] : StringView {};
}

Expected<CurveInterpolation, String> parseCurveInterpolation(StringView name)
{
    for (std::size_t i = 0; i < INTERPOLATION_NAMES.size(); ++i)
        if (INTERPOLATION_NAMES[i] == name)
            return static_cast<CurveInterpolation>(i);
    String known;
    for (const StringView option : INTERPOLATION_NAMES)
        known += (known.empty() ? "\"" : ", \"") + String(option) + "\"";
    return Unexpected<String>("\"" + String(name) + "\" is not an interpolation; known are " + known);
}

CurvePoint CurvePoint::at(const Vector2& position) noexcept
{
    const Vector2 offset { Curve::HANDLE_OFFSET, Curve::HANDLE_OFFSET };
    return { position, position - offset, position + offset };
}

Curve::Curve()
    : Curve(DefaultCurveType::Identity)
{
}

Curve::Curve(DefaultCurveType type, CurveInterpolation interpolation)
    : Curve(defaultPoints(type), interpolation, true)
{
    if (!isValid(interpolation))
        Detail::throwStopException(UNIT, __LINE__);
}

Curve::Curve(Array<CurvePoint> points, CurveInterpolation interpolation)
{
    auto made = make(std::move(points), interpolation);
    if (!made)
        throw Exception(made.error());
    *this = std::move(*made);
}

Curve::Curve(const Array<Vector2>& positions, CurveInterpolation interpolation)
{
    Array<CurvePoint> withHandles;
    withHandles.reserve(positions.size());
    for (const Vector2& position : positions)
        withHandles.push_back(CurvePoint::at(position));
    *this = Curve(std::move(withHandles), interpolation);
}

Curve::Curve(Array<CurvePoint> points, CurveInterpolation interpolation, bool)
    : points(std::move(points))
    , interpolation(interpolation)
{
    rebuild();
}

Expected<Curve, String> Curve::make(Array<CurvePoint> points, CurveInterpolation interpolation)
{
    if (!isValid(interpolation))
        return Unexpected<String>(
            "Interpolation " + std::to_string(static_cast<int>(interpolation)) + " is not a curve interpolation");
    if (points.size() < MIN_POINT_COUNT)
        return Unexpected<String>("A curve needs at least 2 points, not " + std::to_string(points.size()));
    for (std::size_t i = 0; i < points.size(); ++i) {
        const CurvePoint& point = points[i];
        const String name = "Point " + std::to_string(i + 1);
        if (!isFinite(point.position) || !isInUnitSquare(point.position))
            return Unexpected<String>(name + " lies at (" + number(point.position.x) + ", " + number(point.position.y)
                + "); points lie between 0 and 1");
        if (!isFinite(point.leftHandle) || !isFinite(point.rightHandle))
            return Unexpected<String>(name + " has a handle that is not a finite number");
        if (i > 0 && point.position.x - points[i - 1].position.x < EPSILON - SPACING_TOLERANCE)
            return Unexpected<String>(name + " lies at x " + number(point.position.x) + ", less than 1/255 after "
                + number(points[i - 1].position.x) + "; points are sorted by x and at least 1/255 apart");
    }
    return Curve(std::move(points), interpolation, true);
}

void Curve::setInterpolation(CurveInterpolation newInterpolation)
{
    if (!isValid(newInterpolation))
        Detail::throwStopException(UNIT, __LINE__);
    if (newInterpolation == interpolation)
        return;
    interpolation = newInterpolation;
    rebuild();
}

const CurvePoint& Curve::getPoint(std::size_t index) const
{
    return points[checkedIndex(index, __LINE__)];
}

Optional<std::size_t> Curve::addPoint(const Vector2& position)
{
    return addPoint(CurvePoint::at(position));
}

Optional<std::size_t> Curve::addPoint(const CurvePoint& point)
{
    if (!isFinite(point.position) || !isInUnitSquare(point.position) || !isFinite(point.leftHandle)
        || !isFinite(point.rightHandle))
        return std::nullopt;
    const auto after = std::upper_bound(
        points.begin(), points.end(), point.position.x, [](double x, const CurvePoint& p) { return x < p.position.x; });
    if (after != points.end() && after->position.x - point.position.x < EPSILON - SPACING_TOLERANCE)
        return std::nullopt;
    if (after != points.begin() && point.position.x - (after - 1)->position.x < EPSILON - SPACING_TOLERANCE)
        return std::nullopt;
    const auto inserted = points.insert(after, point);
    rebuild();
    return std::size_t(inserted - points.begin());
}

Vector2 Curve::movePoint(std::size_t index, const Vector2& position)
{
    CurvePoint& point = points[checkedIndex(index, __LINE__)];
    if (!isFinite(position))
        return point.position;
    const double low = index > 0 ? points[index - 1].position.x + EPSILON : 0.0;
    const double high = index + 1 < points.size() ? points[index + 1].position.x - EPSILON : 1.0;
    const double lowest = std::clamp(low, 0.0, 1.0);
    const Vector2 target { std::clamp(position.x, lowest, std::max(std::min(high, 1.0), lowest)),
        std::clamp(position.y, 0.0, 1.0) };
    const Vector2 shift = target - point.position;
    point.position = target;
    point.leftHandle += shift;
    point.rightHandle += shift;
    rebuild();
    return target;
}

bool Curve::setHandles(std::size_t index, const Vector2& left, const Vector2& right)
{
    CurvePoint& point = points[checkedIndex(index, __LINE__)];
    if (!isFinite(left) || !isFinite(right))
        return false;
    point.leftHandle = left;
    point.rightHandle = right;
    rebuild();
    return true;
}

bool Curve::removePoint(std::size_t index)
{
    checkedIndex(index, __LINE__);
    if (points.size() <= MIN_POINT_COUNT)
        return false;
    points.erase(points.begin() + std::ptrdiff_t(index));
    rebuild();
    return true;
}

void Curve::reset(DefaultCurveType type)
{
    points = defaultPoints(type);
    rebuild();
}

double Curve::evaluate(double x) const noexcept
{
    x = std::isnan(x) ? 0.0 : std::clamp(x, 0.0, 1.0);
    if (x <= points.front().position.x)
        return points.front().position.y;
    if (x >= points.back().position.x)
        return points.back().position.y;
    const auto after = std::upper_bound(
        points.begin(), points.end(), x, [](double value, const CurvePoint& p) { return value < p.position.x; });
    const auto span = std::size_t(after - points.begin()) - 1;
    const double y = Detail::evaluateCurveSpan(spans[span], x);
    return std::isnan(y) ? 0.0 : std::clamp(y, 0.0, 1.0);
}

Array<float> Curve::sample(std::size_t count) const
{
    Array<float> table(count);
    sample(table);
    return table;
}

void Curve::sample(ArrayView<float> table) const noexcept
{
    const std::size_t count = table.size();
    for (std::size_t i = 0; i < count; ++i)
        table[i] = static_cast<float>(evaluate(count > 1 ? double(i) / double(count - 1) : 0.0));
}

std::array<std::uint8_t, 256> Curve::makeByteTable() const noexcept
{
    std::array<std::uint8_t, 256> table {};
    for (std::size_t v = 0; v < table.size(); ++v)
        table[v] = static_cast<std::uint8_t>(std::lround(evaluate(double(v) / 255.0) * 255.0));
    return table;
}

void Curve::rebuild()
{
    spans = Detail::buildCurveSpans(points, interpolation);
}

std::size_t Curve::checkedIndex(std::size_t index, int line) const
{
    if (index >= points.size())
        Detail::throwStopException(UNIT, line);
    return index;
}

} // namespace Marlix
