#pragma once

namespace Marlix {

/// A 2D vector of single-precision floats: positions stored in bulk, where a double's precision buys nothing.
struct Vector2f
{
    float x = 0.0f; ///< The X component.
    float y = 0.0f; ///< The Y component.

    friend constexpr bool operator==(const Vector2f&, const Vector2f&) = default; ///< Exact component-wise comparison.
};

} // namespace Marlix
