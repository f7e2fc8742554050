#include "run_report.h"

#include <iostream>
#include <utility>

namespace tavra::tool {

double RunClock::nextLine() {
    return std::chrono::duration<double>(Clock::now() - std::exchange(lastLine_, Clock::now())).count();
}

void RunReport::object(const nlohmann::json& object) {
    std::cout << object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << std::endl;
}

void RunReport::gaps(const std::vector<Gap>& gaps) {
    for (const Gap& gap : gaps) {
        if (json_) {
            object({{"event", "gap"},
                    {"first", gap.first},
                    {"last", gap.last},
                    {"frames", gap.frames()},
                    {"reason", gap.reason()}});
        } else {
            live_.note(gap.text());
        }
    }
}

}  // namespace tavra::tool
