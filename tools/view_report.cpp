#include "view_report.h"

#include <iostream>

namespace tavra::tool {

void ViewReport::tell(const std::string& text, const nlohmann::json& object) const {
    if (json_) {
        progress(object);
    } else {
        std::cout << text << std::endl;
    }
}

void ViewReport::progress(const nlohmann::json& object) const {
    if (!json_) return;
    std::cout << object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << std::endl;
}

void ViewReport::gaps(const std::vector<Gap>& gaps) {
    for (const Gap& gap : gaps) {
        if (!json_) live_.note(gap.text());
        progress({{"event", "gap"},
                  {"first", gap.first},
                  {"last", gap.last},
                  {"frames", gap.frames()},
                  {"reason", gap.reason()}});
    }
}

void ViewReport::note(const std::string& text) {
    setNotice(text);
    live_.note("tavra: " + text);
}

void ViewReport::setNotice(const std::string& text) {
    notice_ = text;
    noticeEnds_ = Clock::now() + std::chrono::seconds(3);
}

std::string ViewReport::notice() const {
    return Clock::now() < noticeEnds_ ? notice_ : std::string();
}

}  // namespace tavra::tool
