#include "view_title.h"

#include <cstdio>

#include "movie_text.h"
#include "quantities.h"
#include "values.h"

namespace tavra::tool {
namespace {

constexpr double kUnity = 128;

std::string controlText(const ControlState& control, bool color) {
    char text[96];
    std::snprintf(text, sizeof text, "  exposure %s  gain %.1fdB", timeText(control.exposureSeconds).c_str(),
                  control.decibels);
    std::string line = text;
    if (!color) return line;
    std::snprintf(text, sizeof text, "  wb R %.2f B %.2f", control.whiteBalance[0] / kUnity,
                  control.whiteBalance[3] / kUnity);
    return line + text;
}

std::string automaticText(const ViewState& state) {
    if (state.autoExposure && state.autoWhiteBalance) return "  auto exposure and wb";
    if (state.autoExposure) return "  auto exposure";
    return state.autoWhiteBalance ? "  auto wb" : "";
}

std::string sizeText(const ViewState& state) {
    std::string text = state.fit ? "  fit" : "  1:1";
    if (state.magnification > 1) text += " x" + realText(state.magnification, 1);
    if (state.rotation != 0) text += "  rotated " + nameOf(kRotations, state.rotation);
    return text;
}

}  // namespace

std::string viewTitle(const ViewState& state) {
    char rates[64];
    std::snprintf(rates, sizeof rates, "  %.1f fps  %llu lost", state.fps,
                  static_cast<unsigned long long>(state.lost));
    std::string title = state.camera + rates;
    if (state.control) title += controlText(*state.control, state.color);
    title += automaticText(state) + sizeText(state);
    if (!state.movie.empty()) title += "  REC " + state.movie + " " + durationText(state.movieSeconds);
    if (!state.notice.empty()) title += "  [" + state.notice + "]";
    return title;
}

}  // namespace tavra::tool
