// How a recording stands, in a line for a person and in an object for a program. Pure functions.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "stream_monitor.h"

namespace tavra::tool {

struct RecordLine {
    double seconds = 0;
    std::string file;  // the one in work
    StreamMonitor::Totals seen;
    double fps = 0;
    std::optional<std::uint64_t> queue;  // frames that wait to be written, where that is known
    std::uint64_t fileBytes = 0;
    double diskBytes = 0;  // a second
    std::optional<std::uint64_t> freeBytes;

    std::string text() const;
    nlohmann::json json() const;
};

}  // namespace tavra::tool
