#include <MarlixLib/curves/ColorCurves.h>

#include <cmath>

namespace Marlix {

std::array<std::array<std::uint8_t, 256>, 3> makeColorCurveTables(const Curves& curves)
{
    const auto curveOf = [&curves](ColorCurveChannel channel) -> const Curve* {
        const auto index = std::size_t(channel);
        return index < curves.getChannelCount() ? &curves.getChannel(index) : nullptr;
    };
    const Curve* master = curveOf(ColorCurveChannel::Master);
    std::array<std::array<std::uint8_t, 256>, 3> tables {};
    for (std::size_t c = 0; c < tables.size(); ++c) {
        const Curve* own = curveOf(static_cast<ColorCurveChannel>(std::size_t(ColorCurveChannel::Red) + c));
        for (std::size_t v = 0; v < 256; ++v) {
            double tone = double(v) / 255.0;
            if (master)
                tone = master->evaluate(tone);
            if (own)
                tone = own->evaluate(tone);
            tables[c][v] = static_cast<std::uint8_t>(std::lround(tone * 255.0));
        }
    }
    return tables;
}

void applyColorCurves(const Curves& curves, ArrayView<RgbaBytes> pixels)
{
    const auto tables = makeColorCurveTables(curves);
    for (RgbaBytes& p : pixels) {
        p.r = tables[0][p.r];
        p.g = tables[1][p.g];
        p.b = tables[2][p.b];
    }
}

} // namespace Marlix
