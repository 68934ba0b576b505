#pragma once

#include <MarlixLib/color/Rgb.h>
#include <MarlixLib/data/ValueTraits.h>
#include <MarlixLib/math/Dir.h>
#include <MarlixLib/math/Pixel.h>
#include <MarlixLib/math/Pos.h>
#include <MarlixLib/math/Vector2.h>
#include <MarlixLib/math/Vector2f.h>
#include <MarlixLib/math/Vector3.h>

#include <array>

namespace Marlix {

namespace Detail {
/// Text form "(a, b, c)" and serialization as an array of numbers, for small fixed-size vectors of `C`.
template <class T, class Access, class C, std::size_t N> struct ComponentValueTraits
{
    using Components = std::array<C, N>;

    static String toString(const T& value)
    {
        const Components components = Access::toComponents(value);
        String text = "(";
        for (std::size_t i = 0; i < N; ++i) {
            if (i)
                text += ", ";
            text += ValueTraits<C>::toString(components[i]);
        }
        return text + ")";
    }

    static Expected<T, String> fromString(StringView text)
    {
        while (!text.empty() && text.front() == ' ')
            text.remove_prefix(1);
        while (!text.empty() && text.back() == ' ')
            text.remove_suffix(1);
        if (text.size() >= 2 && text.front() == '(' && text.back() == ')')
            text = text.substr(1, text.size() - 2);
        Components components {};
        for (std::size_t i = 0; i < N; ++i) {
            const std::size_t comma = text.find(',');
            if ((comma == StringView::npos) != (i + 1 == N))
                return Unexpected<String>("Expected " + std::to_string(N) + " numbers separated by commas");
            auto parsed = ValueTraits<C>::fromString(text.substr(0, comma));
            if (!parsed)
                return Unexpected<String>(parsed.error());
            components[i] = *parsed;
            if (comma != StringView::npos)
                text.remove_prefix(comma + 1);
        }
        return Access::fromComponents(components);
    }

    static void serialize(ISerializer& out, StringView key, const T& value)
    {
        const Components components = Access::toComponents(value);
        out.beginArray(key, N);
        for (const C& component : components)
            ValueTraits<C>::serialize(out, "c", component);
        out.endArray();
    }

    static Expected<T, String> deserialize(IDeserializer& in, StringView key)
    {
        const auto count = in.enterArray(key);
        if (!count)
            return Unexpected<String>(count.error());
        if (*count != N) {
            in.leaveArray();
            return Unexpected<String>("\"" + String(key) + "\" has " + std::to_string(*count) + " components, not "
                + std::to_string(N));
        }
        Components components {};
        for (std::size_t i = 0; i < N; ++i) {
            auto read = ValueTraits<C>::deserialize(in, "c");
            if (!read) {
                in.leaveArray();
                return Unexpected<String>(read.error());
            }
            components[i] = *read;
        }
        in.leaveArray();
        return Access::fromComponents(components);
    }
};

struct Vector2Components
{
    static std::array<double, 2> toComponents(const Vector2& v) { return { v.x, v.y }; }
    static Vector2 fromComponents(const std::array<double, 2>& c) { return { c[0], c[1] }; }
};
struct Vector2fComponents
{
    static std::array<float, 2> toComponents(const Vector2f& v) { return { v.x, v.y }; }
    static Vector2f fromComponents(const std::array<float, 2>& c) { return { c[0], c[1] }; }
};
struct Vector3Components
{
    static std::array<double, 3> toComponents(const Vector3& v) { return { v.x, v.y, v.z }; }
    static Vector3 fromComponents(const std::array<double, 3>& c) { return { c[0], c[1], c[2] }; }
};
struct PosComponents
{
    static std::array<double, 3> toComponents(const Pos& v) { return { v.x, v.y, v.z }; }
    static Pos fromComponents(const std::array<double, 3>& c) { return { c[0], c[1], c[2] }; }
};
struct DirComponents
{
    static std::array<double, 3> toComponents(const Dir& v) { return { v.x, v.y, v.z }; }
    static Dir fromComponents(const std::array<double, 3>& c) { return { c[0], c[1], c[2] }; }
};
struct PixelComponents
{
    static std::array<std::int32_t, 2> toComponents(const Pixel& v) { return { v.x, v.y }; }
    static Pixel fromComponents(const std::array<std::int32_t, 2>& c) { return { c[0], c[1] }; }
};
struct RgbComponents
{
    static std::array<float, 4> toComponents(const Rgb& v) { return { v.r, v.g, v.b, v.a }; }
    static Rgb fromComponents(const std::array<float, 4>& c) { return { c[0], c[1], c[2], c[3] }; }
};

} // namespace Detail

template <> struct ValueTraits<Vector2> : Detail::ComponentValueTraits<Vector2, Detail::Vector2Components, double, 2>
{
};
template <> struct ValueTraits<Vector2f> : Detail::ComponentValueTraits<Vector2f, Detail::Vector2fComponents, float, 2>
{
};
template <> struct ValueTraits<Vector3> : Detail::ComponentValueTraits<Vector3, Detail::Vector3Components, double, 3>
{
};
template <> struct ValueTraits<Pos> : Detail::ComponentValueTraits<Pos, Detail::PosComponents, double, 3>
{
};
template <> struct ValueTraits<Dir> : Detail::ComponentValueTraits<Dir, Detail::DirComponents, double, 3>
{
};
template <> struct ValueTraits<Pixel> : Detail::ComponentValueTraits<Pixel, Detail::PixelComponents, std::int32_t, 2>
{
};
template <> struct ValueTraits<Rgb> : Detail::ComponentValueTraits<Rgb, Detail::RgbComponents, float, 4>
{
};

} // namespace Marlix
