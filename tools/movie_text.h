// What a movie file holds, for people and for programs; and the names that a person gives to codecs.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "movie_probe/movie_report.h"

namespace tavra::tool {

std::string movieText(const std::string& name, const MovieReport& report);
nlohmann::json movieJson(const std::string& name, const MovieReport& report);

// "none", "mjpg", or four letters as the codec has them. Throws Failure.
std::uint32_t codecOf(const std::string& text);
std::string codecName(std::uint32_t code);

// "12.3 MB", in powers of ten as disks are sold.
std::string bytesText(double bytes);
// "3:05", minutes and seconds; hours where there are any.
std::string durationText(double seconds);

}  // namespace tavra::tool
