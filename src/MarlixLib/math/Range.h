#pragma once

#include <algorithm>

namespace Marlix {

/// A closed interval [minimum, maximum] of T. A range whose minimum lies above its maximum is empty.
template <class T> struct Range
{
    T minimum {}; ///< The lower bound, included.
    T maximum {}; ///< The upper bound, included.

    constexpr Range() = default; ///< The range [T{}, T{}], which holds T{}: it is not empty.
    /// The range [\p minimum, \p maximum]; empty when \p minimum lies above \p maximum.
    constexpr Range(T minimum, T maximum)
        : minimum(minimum)
        , maximum(maximum)
    {
    }

    constexpr bool isEmpty() const { return maximum < minimum; } ///< True when the minimum lies above the maximum.
    /// maximum - minimum; T{} for an empty range.
    constexpr T size() const { return isEmpty() ? T {} : T(maximum - minimum); }
    /// True when \p value lies within the bounds, both included.
    constexpr bool contains(const T& value) const { return !(value < minimum) && !(maximum < value); }
    /// The nearest value inside the range; an empty range returns the value unchanged.
    constexpr T clamp(const T& value) const
    {
        if (isEmpty())
            return value;
        return value < minimum ? minimum : maximum < value ? maximum : value;
    }
    /// The smallest range holding both (an empty range holds nothing).
    constexpr Range united(const Range& o) const
    {
        if (isEmpty())
            return o;
        if (o.isEmpty())
            return *this;
        return { std::min(minimum, o.minimum), std::max(maximum, o.maximum) };
    }
    /// The values in both ranges; empty when they do not overlap.
    constexpr Range intersected(const Range& o) const
    {
        return { std::max(minimum, o.minimum), std::min(maximum, o.maximum) };
    }
    /// Widens the range to hold the value.
    constexpr void include(const T& value)
    {
        if (isEmpty()) {
            minimum = maximum = value;
            return;
        }
        minimum = std::min(minimum, value);
        maximum = std::max(maximum, value);
    }

    /// Equal bounds (two empty ranges with different bounds differ).
    friend constexpr bool operator==(const Range&, const Range&) = default;
};

} // namespace Marlix
