#include "stages/gamma/curve.h"

#include <algorithm>
#include <cmath>

namespace tavra {
namespace {

constexpr int maximumOf(std::uint16_t bits) {
    return (1 << bits) - 1;
}

// The value as an entry. Beside what a curve should give, strong contrast at 10 and 12 bits can turn the
// slope negative (the 255 in it is fixed): a negative result keeps its low 16 bits, and what is no number is
// 0.
std::uint16_t entryOf(double value, int maximum) {
    if (std::isnan(value)) return 0;
    if (value >= maximum) return static_cast<std::uint16_t>(maximum);
    constexpr double kLowest = -2147483648.0;
    return value <= kLowest ? std::uint16_t{0} : static_cast<std::uint16_t>(static_cast<std::int32_t>(value));
}

}  // namespace

void fillIdentity(GammaTable& table, std::uint16_t bits) {
    const int maximum = maximumOf(bits);
    for (int i = 0; i < static_cast<int>(table.size()); ++i)
        table[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(std::min(i, maximum));
}

void fillPowerCurve(GammaTable& table, const GammaShape& shape) {
    const int maximum = maximumOf(shape.bits);
    const int half = (maximum + 1) / 2;
    const int cut = std::min<int>(half - 1, shape.contrast);
    const double exponent = 100.0 / shape.gamma;
    // By design: 255 at every depth. Stored curves of 10 and 12 bits rely on it.
    const double slope = 255.0 / (255.0 - 2.0 * cut);
    for (int i = 0; i <= maximum; ++i) {
        const int x = shape.brightness + i;
        std::uint16_t& entry = table[static_cast<std::size_t>(i)];
        if (x > maximum) {
            entry = 255;  // By design: at 10 and 12 bits too, and not the maximum.
        } else if (x < 0 || x <= cut) {
            entry = 0;
        } else if (x >= maximum - cut) {
            entry = static_cast<std::uint16_t>(maximum);
        } else {
            const double t = (x - cut) * slope;
            entry = t >= maximum ? static_cast<std::uint16_t>(maximum)
                                 : entryOf(std::pow(t / maximum, exponent) * maximum + 0.5, maximum);
        }
    }
}

void reverseCurve(GammaTable& table, std::uint16_t bits) {
    std::reverse(table.begin(), table.begin() + (std::ptrdiff_t{1} << bits));
}

}  // namespace tavra
