#include "display/clip_to_area.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavra {
namespace {

std::int32_t saturated(double value) {
    constexpr double kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr double kMost = std::numeric_limits<std::int32_t>::max();
    if (std::isnan(value)) return 0;
    return static_cast<std::int32_t>(std::clamp(value, kLeast, kMost));
}

// One axis, cut to 0 up to `limit`.
void clipAxis(std::int32_t& sourceBegin, std::int32_t& sourceEnd, std::int32_t& begin, std::int32_t& end,
              std::int32_t limit) {
    const double scale = (double{1} * end - begin) / (double{1} * sourceEnd - sourceBegin);
    if (begin < 0) {
        sourceBegin = saturated(sourceBegin - std::trunc(begin / scale - 0.5));
        begin = 0;
    }
    if (end > limit) {
        sourceEnd = saturated(sourceEnd - std::trunc((double{1} * end - limit) / scale + 0.5));
        end = limit;
    }
}

}  // namespace

void clipToArea(platform::Rectangle& source, platform::Rectangle& destination, std::int32_t width,
                std::int32_t height) {
    clipAxis(source.left, source.right, destination.left, destination.right, width);
    clipAxis(source.top, source.bottom, destination.top, destination.bottom, height);
}

}  // namespace tavra
