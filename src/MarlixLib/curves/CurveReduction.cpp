#include <MarlixLib/curves/CurveReduction.h>

#include <cmath>
#include <iterator>
#include <set>

namespace Marlix::Detail {

Array<Vector2> reduceCurvePoints(
    ArrayView<const Vector2> samples, std::size_t maxCount, double tolerance, double minSpacing)
{
    if (samples.size() <= 2)
        return Array<Vector2>(samples.begin(), samples.end());
    constexpr double SPACING_TOLERANCE = 1e-9;
    std::set<std::size_t> picked { 0, samples.size() - 1 };
    while (picked.size() < maxCount) {
        double worst = tolerance;
        std::size_t worstIndex = 0;
        for (auto right = std::next(picked.begin()); right != picked.end(); ++right) {
            const Vector2 a = samples[*std::prev(right)];
            const Vector2 b = samples[*right];
            for (std::size_t k = *std::prev(right) + 1; k < *right; ++k) {
                const Vector2 s = samples[k];
                if (s.x - a.x < minSpacing - SPACING_TOLERANCE || b.x - s.x < minSpacing - SPACING_TOLERANCE)
                    continue;
                const double line = a.y + (b.y - a.y) * (s.x - a.x) / (b.x - a.x);
                if (const double error = std::abs(s.y - line); error > worst) {
                    worst = error;
                    worstIndex = k;
                }
            }
        }
        if (worstIndex == 0)
            break;
        picked.insert(worstIndex);
    }
    Array<Vector2> points;
    points.reserve(picked.size());
    for (const std::size_t index : picked)
        points.push_back(samples[index]);
    return points;
}

} // namespace Marlix::Detail
