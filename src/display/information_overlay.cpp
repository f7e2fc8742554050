#include "display/information_overlay.h"

#include <cstdio>

namespace tavra {
namespace {

constexpr std::size_t kTextCapacity = 256;
constexpr std::uint32_t kBoundaryUnit = 10000;

// The lines of one text, one under the other. A line that fails ends the text.
Status print(platform::IPaint& paint, std::int32_t x, std::int32_t y, std::string_view text) {
    for (;;) {
        const std::size_t end = text.find('\n');
        TAVRA_RETURN_IF_ERROR(paint.text(x, y, text.substr(0, end)));
        if (end == std::string_view::npos) return Status();
        text.remove_prefix(end + 1);
        y += paint.textHeight();
    }
}

std::int32_t placeOf(std::uint16_t boundary, std::uint32_t size) {
    return static_cast<std::int32_t>(boundary * size / kBoundaryUnit);
}

}  // namespace

Status DrawStatisticsText(platform::IPaint& paint, const ControlState& state) {
    const auto& means = state.means;
    const auto& gains = state.whiteBalanceGains;
    char text[kTextCapacity];
    std::snprintf(text, sizeof text,
                  "Average:R=%u, Gr=%u, Gb=%u, B=%u, Y=%u\n"
                  "WB Gain:R=%3d, Gr=%3d, Gb=%3d, B=%3d\n"
                  "Shutter:Line=%d, Clock=%d\n"
                  "CDSGain=%d, DigitalGain=%d",
                  unsigned{means[0]}, unsigned{means[1]}, unsigned{means[2]}, unsigned{means[3]},
                  unsigned{state.luminance}, int{gains[0]}, int{gains[1]}, int{gains[2]}, int{gains[3]},
                  static_cast<int>(state.shutterLine), static_cast<int>(state.shutterClock), int{state.gain},
                  int{state.digitalGain});
    return print(paint, 0, 0, text);
}

Status DrawControlGrid(platform::IPaint& paint, platform::Size image, const ControlState& state) {
    Status drawn;
    const auto note = [&drawn](Status part) {
        if (!part.ok()) drawn = part;
    };
    for (std::size_t cell = 0; cell < state.exposureWeights.size(); ++cell) {
        const std::size_t row = cell / 4, column = cell % 4;
        char text[32];
        std::snprintf(text, sizeof text, "EE:%3d  WB:%3d", int{state.exposureWeights[cell]},
                      int{state.whiteBalanceWeights[cell]});
        const std::int32_t x = column == 0 ? 0 : placeOf(state.xBoundary[column - 1], image.width);
        const std::int32_t y = row == 0 ? 0 : placeOf(state.yBoundary[row - 1], image.height);
        note(print(paint, x, y, text));
    }
    const auto lastX = static_cast<std::int32_t>(image.width - 1);
    const auto lastY = static_cast<std::int32_t>(image.height - 1);
    for (std::size_t i = 0; i < state.xBoundary.size(); ++i) {
        const std::int32_t x = placeOf(state.xBoundary[i], image.width);
        const std::int32_t y = placeOf(state.yBoundary[i], image.height);
        note(paint.line(x, 0, x, lastY));
        note(paint.line(0, y, lastX, y));
    }
    return drawn;
}

}  // namespace tavra
