// Numbers with units, and lists of them, as a person types and reads them. What cannot be read throws
// Failure, which names `what` and shows a value that can.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavra::tool {

// A range for numbers that are read, both ends allowed.
struct Limits {
    double lowest, highest;
};

// A decimal number within the limits, optionally with the unit behind it ("12.5", "6dB" with unit "dB").
double parseReal(std::string_view text, const std::string& what, const Limits& limits,
                 std::string_view unit = {});
// A whole number within the limits.
std::uint32_t parseWhole(std::string_view text, const std::string& what, const Limits& limits);

// "8ms", "500us", "0.5s" or "1/100s", in seconds; more than 0.
double parseTime(std::string_view text, const std::string& what);
// "8.000ms"; the unit follows the size.
std::string timeText(double seconds);

// "1.25": as few digits behind the point as the value needs, at most `digits`.
std::string realText(double value, int digits);

// The parts between separators, none left out: "1,,2" has three.
std::vector<std::string_view> splitText(std::string_view text, char separator);

// Exactly `count` numbers between commas, each within the limits.
std::vector<double> parseReals(std::string_view text, std::size_t count, const std::string& what,
                               const Limits& limits);

// Weights of the 4 x 4 cells of the control grid: 16 whole numbers from 0 to 255 between commas, or one for
// all.
using Weights = std::array<std::uint8_t, 16>;
Weights parseWeights(std::string_view text, const std::string& what);
std::string weightsText(const Weights& weights);

// "LOWEST..HIGHEST".
struct TextRange {
    std::string lowest, highest;
};
TextRange parseRange(std::string_view text, const std::string& what, const std::string& example);

}  // namespace tavra::tool
