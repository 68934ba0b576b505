#pragma once

#include <initializer_list>
#include <type_traits>

namespace Marlix {

/// A set of bit flags over an enumeration whose values are distinct bits.
template <class E>
    requires std::is_enum_v<E>
class Flags
{
public:
    using Underlying = std::underlying_type_t<E>;

    constexpr Flags() = default;
    constexpr Flags(E flag)
        : bits(static_cast<Underlying>(flag))
    {
    }
    constexpr Flags(std::initializer_list<E> flags)
    {
        for (E flag : flags)
            bits |= static_cast<Underlying>(flag);
    }
    static constexpr Flags fromBits(Underlying bits)
    {
        Flags f;
        f.bits = bits;
        return f;
    }

    constexpr Underlying toBits() const { return bits; }
    constexpr bool has(E flag) const
    {
        return static_cast<Underlying>(flag) != 0 && (bits & static_cast<Underlying>(flag)) == static_cast<Underlying>(flag);
    }
    constexpr bool hasAny(Flags other) const { return (bits & other.bits) != 0; }
    constexpr bool isEmpty() const { return bits == 0; }

    constexpr Flags& set(E flag, bool on = true)
    {
        if (on)
            bits |= static_cast<Underlying>(flag);
        else
            bits &= static_cast<Underlying>(~static_cast<Underlying>(flag));
        return *this;
    }

    constexpr Flags operator|(Flags other) const { return fromBits(bits | other.bits); }
    constexpr Flags operator&(Flags other) const { return fromBits(bits & other.bits); }
    constexpr Flags& operator|=(Flags other)
    {
        bits |= other.bits;
        return *this;
    }
    constexpr Flags& operator&=(Flags other)
    {
        bits &= other.bits;
        return *this;
    }
    constexpr bool operator==(const Flags&) const = default;

private:
    Underlying bits = 0;
};

} // namespace Marlix
