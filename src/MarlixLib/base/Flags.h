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
    using Underlying = std::underlying_type_t<E>; ///< The integer the bits are kept in.

    constexpr Flags() = default;
    /// One flag set; implicit, so a single flag passes where flags are asked for.
    constexpr Flags(E flag)
        : bits(static_cast<Underlying>(flag))
    {
    }
    /// Every listed flag set: `{ Flag::A, Flag::B }`.
    constexpr Flags(std::initializer_list<E> flags)
    {
        for (E flag : flags)
            bits |= static_cast<Underlying>(flag);
    }
    /// Flags from stored bits, taken as they are (bits that name no enumerator are kept).
    static constexpr Flags fromBits(Underlying bits)
    {
        Flags f;
        f.bits = bits;
        return f;
    }

    constexpr Underlying toBits() const { return bits; } ///< The bits, for storing; fromBits() reads them back.
    /// Whether every bit of \p flag is set; false for an enumerator whose value is 0.
    constexpr bool has(E flag) const
    {
        return static_cast<Underlying>(flag) != 0 && (bits & static_cast<Underlying>(flag)) == static_cast<Underlying>(flag);
    }
    constexpr bool hasAny(Flags other) const { return (bits & other.bits) != 0; } ///< Whether any flag is in both.
    constexpr bool isEmpty() const { return bits == 0; } ///< Whether no flag is set.

    /// Sets \p flag, or clears it when \p on is false; returns this set for chaining.
    constexpr Flags& set(E flag, bool on = true)
    {
        if (on)
            bits |= static_cast<Underlying>(flag);
        else
            bits &= static_cast<Underlying>(~static_cast<Underlying>(flag));
        return *this;
    }

    constexpr Flags operator|(Flags other) const { return fromBits(bits | other.bits); } ///< The flags of either set.
    constexpr Flags operator&(Flags other) const { return fromBits(bits & other.bits); } ///< The flags of both sets.
    /// Adds the flags of \p other.
    constexpr Flags& operator|=(Flags other)
    {
        bits |= other.bits;
        return *this;
    }
    /// Keeps only the flags that \p other has too.
    constexpr Flags& operator&=(Flags other)
    {
        bits &= other.bits;
        return *this;
    }
    constexpr bool operator==(const Flags&) const = default; ///< Equal when the same bits are set.

private:
    Underlying bits = 0;
};

} // namespace Marlix
