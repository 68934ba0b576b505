#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/io/IDeserializer.h>
#include <MarlixLib/io/ISerializer.h>

#include <charconv>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace Marlix {

/// Text form and serialization of one native value type. A type becomes a plain type of the type database by
/// specialising this template; every read reports an error instead of throwing.
template <class T> struct ValueTraits;

namespace Detail {
template <class T> Expected<T, String> parseNumber(StringView text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    T value {};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error == std::errc::invalid_argument || end != text.data() + text.size())
        return Unexpected<String>("\"" + String(text) + "\" is not a number");
    if (error == std::errc::result_out_of_range)
        return Unexpected<String>("\"" + String(text) + "\" is out of range");
    return value;
}
} // namespace Detail

/// Booleans: "true" and "false" (reads also accept "1" and "0").
template <> struct ValueTraits<bool>
{
    static String toString(bool value) { return value ? "true" : "false"; } ///< "true" or "false".
    /// Accepts "true", "false", "1" and "0" exactly; anything else is an error.
    static Expected<bool, String> fromString(StringView text)
    {
        if (text == "true" || text == "1")
            return true;
        if (text == "false" || text == "0")
            return false;
        return Unexpected<String>("\"" + String(text) + "\" is not a boolean (true or false)");
    }
    /// Writes a stream boolean.
    static void serialize(ISerializer& out, StringView key, bool value) { out.writeBool(key, value); }
    /// Reads a stream boolean; the stream's error otherwise.
    static Expected<bool, String> deserialize(IDeserializer& in, StringView key) { return in.readBool(key); }
};

/// Integers and floating point numbers other than bool.
template <class T>
    requires(std::is_arithmetic_v<T> && !std::same_as<T, bool>)
struct ValueTraits<T>
{
    /// The shortest text that reads back to the same value, without locale.
    static String toString(T value)
    {
        char buffer[64];
        const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
        return String(buffer, result.ptr);
    }
    /// Reads a number, ignoring surrounding blanks and a leading '+'; an error for other text and out of range.
    static Expected<T, String> fromString(StringView text) { return Detail::parseNumber<T>(text); }
    /// Writes floating point numbers as doubles and integers as 64-bit signed or unsigned numbers.
    static void serialize(ISerializer& out, StringView key, T value)
    {
        if constexpr (std::is_floating_point_v<T>)
            out.writeFloat(key, static_cast<double>(value));
        else if constexpr (std::is_signed_v<T>)
            out.writeInt(key, static_cast<std::int64_t>(value));
        else
            out.writeUInt(key, static_cast<std::uint64_t>(value));
    }
    /// Reads the wide form back; an error when the value does not fit `T`.
    static Expected<T, String> deserialize(IDeserializer& in, StringView key)
    {
        if constexpr (std::is_floating_point_v<T>) {
            const auto value = in.readFloat(key);
            if (!value)
                return Unexpected<String>(value.error());
            if (std::isfinite(*value) && std::abs(*value) > static_cast<double>(std::numeric_limits<T>::max()))
                return Unexpected<String>("The value of \"" + String(key) + "\" is out of range");
            return static_cast<T>(*value);
        } else if constexpr (std::is_signed_v<T>) {
            const auto value = in.readInt(key);
            if (!value)
                return Unexpected<String>(value.error());
            if (*value < std::numeric_limits<T>::min() || *value > std::numeric_limits<T>::max())
                return Unexpected<String>("The value of \"" + String(key) + "\" is out of range");
            return static_cast<T>(*value);
        } else {
            const auto value = in.readUInt(key);
            if (!value)
                return Unexpected<String>(value.error());
            if (*value > std::numeric_limits<T>::max())
                return Unexpected<String>("The value of \"" + String(key) + "\" is out of range");
            return static_cast<T>(*value);
        }
    }
};

/// Text, stored as it is.
template <> struct ValueTraits<String>
{
    static String toString(const String& value) { return value; } ///< The text itself.
    /// The text itself; never an error.
    static Expected<String, String> fromString(StringView text) { return String(text); }
    /// Writes a stream string.
    static void serialize(ISerializer& out, StringView key, const String& value) { out.writeString(key, value); }
    /// Reads a stream string; the stream's error otherwise.
    static Expected<String, String> deserialize(IDeserializer& in, StringView key) { return in.readString(key); }
};

/// File paths, written with forward slashes on every platform.
template <> struct ValueTraits<Io::Path>
{
    static String toString(const Io::Path& value) { return value.generic_string(); } ///< The path with forward slashes.
    /// The path as written; never an error.
    static Expected<Io::Path, String> fromString(StringView text) { return Io::Path(text); }
    /// Writes the path as a string with forward slashes.
    static void serialize(ISerializer& out, StringView key, const Io::Path& value)
    {
        out.writeString(key, value.generic_string());
    }
    /// Reads a path string; the stream's error otherwise.
    static Expected<Io::Path, String> deserialize(IDeserializer& in, StringView key)
    {
        auto text = in.readString(key);
        if (!text)
            return Unexpected<String>(text.error());
        return Io::Path(*text);
    }
};

} // namespace Marlix
