#include <MarlixLib/base/Exception.h>
#include <MarlixLib/curves/Curves.h>
#include <MarlixLib/data/MathValueTraits.h>
#include <MarlixLib/data/ValueTraits.h>

#include <algorithm>

namespace Marlix {

namespace {

constexpr StringView UNIT = "curves/Curves";
// Nothing in a text form or stream may make the reader reserve more than this before the values are there.
constexpr std::size_t MAX_RESERVE = 256;

StringView trim(StringView text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

// Splits at `separator`, which the caller has already trimmed around.
Array<StringView> split(StringView text, char separator)
{
    Array<StringView> parts;
    while (true) {
        const std::size_t end = text.find(separator);
        parts.push_back(trim(text.substr(0, end)));
        if (end == StringView::npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

// Numbers separated by blanks, exactly `count` of them.
Expected<Array<double>, String> parseNumbers(StringView text, std::size_t count)
{
    Array<double> numbers;
    text = trim(text);
    while (!text.empty()) {
        const std::size_t end = text.find_first_of(" \t");
        auto parsed = ValueTraits<double>::fromString(text.substr(0, end));
        if (!parsed)
            return Unexpected<String>(parsed.error());
        if (numbers.size() == count)
            return Unexpected<String>("expected " + std::to_string(count) + " numbers");
        numbers.push_back(*parsed);
        text = end == StringView::npos ? StringView {} : trim(text.substr(end));
    }
    if (numbers.size() != count)
        return Unexpected<String>("expected " + std::to_string(count) + " numbers");
    return numbers;
}

Expected<CurvePoint, String> parsePoint(StringView text)
{
    const std::size_t open = text.find('[');
    auto position = parseNumbers(text.substr(0, open), 2);
    if (!position)
        return Unexpected<String>(position.error());
    CurvePoint point = CurvePoint::at({ (*position)[0], (*position)[1] });
    if (open != StringView::npos) {
        if (text.back() != ']')
            return Unexpected<String>("the handles lack their closing \"]\"");
        auto handles = parseNumbers(text.substr(open + 1, text.size() - open - 2), 4);
        if (!handles)
            return Unexpected<String>("handles: " + handles.error());
        point.leftHandle = { (*handles)[0], (*handles)[1] };
        point.rightHandle = { (*handles)[2], (*handles)[3] };
    }
    return point;
}

Expected<Curve, String> parseCurve(StringView text)
{
    const std::size_t colon = text.find(':');
    if (colon == StringView::npos)
        return Unexpected<String>("expected an interpolation, a colon and the points");
    const auto interpolation = parseCurveInterpolation(trim(text.substr(0, colon)));
    if (!interpolation)
        return Unexpected<String>(interpolation.error());
    Array<CurvePoint> points;
    for (const StringView item : split(trim(text.substr(colon + 1)), ',')) {
        auto point = parsePoint(item);
        if (!point)
            return Unexpected<String>(
                "point " + std::to_string(points.size() + 1) + " \"" + String(item) + "\": " + point.error());
        points.push_back(*point);
    }
    return Curve::make(std::move(points), *interpolation);
}

String pointText(const CurvePoint& point)
{
    const auto number = [](double value) { return ValueTraits<double>::toString(value); };
    String text = number(point.position.x) + " " + number(point.position.y);
    if (CurvePoint::at(point.position) != point)
        text += " [" + number(point.leftHandle.x) + " " + number(point.leftHandle.y) + " " + number(point.rightHandle.x)
            + " " + number(point.rightHandle.y) + "]";
    return text;
}

} // namespace

Curves::Curves(std::size_t channelCount, DefaultCurveType type, CurveInterpolation interpolation)
    : channels(channelCount, Curve(type, interpolation))
{
}

const Curve& Curves::getChannel(std::size_t index) const
{
    if (index >= channels.size())
        Detail::throwStopException(UNIT, __LINE__);
    return channels[index];
}

Curve& Curves::getChannel(std::size_t index)
{
    if (index >= channels.size())
        Detail::throwStopException(UNIT, __LINE__);
    return channels[index];
}

void Curves::setChannel(std::size_t index, Curve curve)
{
    getChannel(index) = std::move(curve);
}

String ValueTraits<Curves>::toString(const Curves& value)
{
    String text;
    for (const Curve& curve : value.getChannels()) {
        if (!text.empty())
            text += "; ";
        text += String(getCurveInterpolationName(curve.getInterpolation())) + ":";
        for (std::size_t i = 0; i < curve.getPointCount(); ++i)
            text += (i ? ", " : " ") + pointText(curve.getPoint(i));
    }
    return text;
}

Expected<Curves, String> ValueTraits<Curves>::fromString(StringView text)
{
    text = trim(text);
    Array<Curve> channels;
    if (text.empty())
        return Curves();
    for (const StringView item : split(text, ';')) {
        auto curve = parseCurve(item);
        if (!curve)
            return Unexpected<String>("Curve " + std::to_string(channels.size() + 1) + ": " + curve.error());
        channels.push_back(std::move(*curve));
    }
    return Curves(std::move(channels));
}

void ValueTraits<Curves>::serialize(ISerializer& out, StringView key, const Curves& value)
{
    out.beginArray(key, value.getChannelCount());
    for (const Curve& curve : value.getChannels()) {
        out.beginRecord("curve");
        out.writeUInt("interpolation", static_cast<std::uint64_t>(curve.getInterpolation()));
        out.beginArray("points", curve.getPointCount());
        for (const CurvePoint& point : curve.getPoints()) {
            out.beginRecord("point");
            ValueTraits<Vector2>::serialize(out, "position", point.position);
            ValueTraits<Vector2>::serialize(out, "left", point.leftHandle);
            ValueTraits<Vector2>::serialize(out, "right", point.rightHandle);
            out.endRecord();
        }
        out.endArray();
        out.endRecord();
    }
    out.endArray();
}

namespace {
Expected<Curve, String> deserializeCurve(IDeserializer& in)
{
    const auto interpolation = ValueTraits<std::uint8_t>::deserialize(in, "interpolation");
    if (!interpolation)
        return Unexpected<String>(interpolation.error());
    const auto count = in.enterArray("points");
    if (!count)
        return Unexpected<String>(count.error());
    Array<CurvePoint> points;
    points.reserve(std::min(*count, MAX_RESERVE));
    for (std::size_t i = 0; i < *count; ++i) {
        if (auto entered = in.enterRecord("point"); !entered) {
            in.leaveArray();
            return Unexpected<String>(entered.error());
        }
        const auto position = ValueTraits<Vector2>::deserialize(in, "position");
        const auto left = ValueTraits<Vector2>::deserialize(in, "left");
        const auto right = ValueTraits<Vector2>::deserialize(in, "right");
        in.leaveRecord();
        for (const auto* read : { &position, &left, &right })
            if (!*read) {
                in.leaveArray();
                return Unexpected<String>(read->error());
            }
        points.push_back({ *position, *left, *right });
    }
    in.leaveArray();
    return Curve::make(std::move(points), static_cast<CurveInterpolation>(*interpolation));
}
} // namespace

Expected<Curves, String> ValueTraits<Curves>::deserialize(IDeserializer& in, StringView key)
{
    const auto count = in.enterArray(key);
    if (!count)
        return Unexpected<String>(count.error());
    Array<Curve> channels;
    channels.reserve(std::min(*count, MAX_RESERVE));
    for (std::size_t i = 0; i < *count; ++i) {
        if (auto entered = in.enterRecord("curve"); !entered) {
            in.leaveArray();
            return Unexpected<String>(entered.error());
        }
        auto curve = deserializeCurve(in);
        in.leaveRecord();
        if (!curve) {
            in.leaveArray();
            return Unexpected<String>(
                "Curve " + std::to_string(i + 1) + " of \"" + String(key) + "\": " + curve.error());
        }
        channels.push_back(std::move(*curve));
    }
    in.leaveArray();
    return Curves(std::move(channels));
}

} // namespace Marlix
