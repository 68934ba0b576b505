#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/math/Vector2.h>

#include <cstddef>

namespace Marlix::Detail {

/// Picks from samples sorted by x the few that, joined by straight lines, follow all of them within `tolerance`: the
/// ends always, then one by one the sample farthest from the lines so far, until every sample is within `tolerance`
/// or `maxCount` are picked. A sample closer than `minSpacing` in x to a picked one is never picked.
Array<Vector2> reduceCurvePoints(
    ArrayView<const Vector2> samples, std::size_t maxCount, double tolerance, double minSpacing);

} // namespace Marlix::Detail
