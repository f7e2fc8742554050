#include "quantities.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "exit_code.h"

namespace tavra::tool {
namespace {

constexpr double kLongestTime = 1e6;  // seconds; no camera exposes for days

// Plain decimal, without exponent, infinity and the like.
bool readReal(std::string_view text, double& value) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, std::chars_format::fixed);
    return error == std::errc() && stop == end && !text.empty() && std::isfinite(value);
}

std::string limitsText(const Limits& limits, std::string_view unit) {
    return realText(limits.lowest, 4) + " to " + realText(limits.highest, 4) + std::string(unit);
}

[[noreturn]] void refuse(std::string_view text, const std::string& what, const std::string& allowed) {
    throw Failure(what + " cannot be '" + std::string(text) + "': " + allowed, ExitCode::Usage);
}

// The number in front of the unit of a time, which may be a fraction.
bool readFraction(std::string_view text, double& value) {
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos) return readReal(text, value);
    double above = 0, below = 0;
    if (!readReal(text.substr(0, slash), above) || !readReal(text.substr(slash + 1), below) || below == 0) {
        return false;
    }
    value = above / below;
    return true;
}

}  // namespace

double parseReal(std::string_view text, const std::string& what, const Limits& limits,
                 std::string_view unit) {
    std::string_view number = text;
    if (!unit.empty() && number.ends_with(unit)) number.remove_suffix(unit.size());
    double value = 0;
    if (!readReal(number, value) || value < limits.lowest || value > limits.highest) {
        refuse(text, what, "a number from " + limitsText(limits, unit));
    }
    return value;
}

std::uint32_t parseWhole(std::string_view text, const std::string& what, const Limits& limits) {
    std::uint32_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || text.empty() || value < limits.lowest ||
        value > limits.highest) {
        refuse(text, what, "a whole number from " + limitsText(limits, {}));
    }
    return value;
}

double parseTime(std::string_view text, const std::string& what) {
    struct Unit {
        std::string_view name;
        double seconds;
    };
    constexpr Unit kUnits[] = {{"us", 1e-6}, {"ms", 1e-3}, {"s", 1}};  // "s" last, the others end in it
    double value = 0;
    for (const Unit& unit : kUnits) {
        if (!text.ends_with(unit.name)) continue;
        if (!readFraction(text.substr(0, text.size() - unit.name.size()), value)) break;
        value *= unit.seconds;
        if (value > 0 && value <= kLongestTime) return value;
        break;
    }
    refuse(text, what, "a time such as 8ms, 500us, 0.5s or 1/100s");
}

std::string timeText(double seconds) {
    char text[48];
    if (seconds < 1e-3) {
        std::snprintf(text, sizeof text, "%.1fus", seconds * 1e6);
    } else if (seconds < 1) {
        std::snprintf(text, sizeof text, "%.3fms", seconds * 1e3);
    } else {
        std::snprintf(text, sizeof text, "%.3fs", seconds);
    }
    return text;
}

std::string realText(double value, int digits) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", digits, value);
    std::string text = buffer;
    if (text.find('.') != std::string::npos) {
        while (text.back() == '0') text.pop_back();
        if (text.back() == '.') text.pop_back();
    }
    return text == "-0" ? "0" : text;
}

std::vector<std::string_view> splitText(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t at = text.find(separator); at != std::string_view::npos; at = text.find(separator)) {
        parts.push_back(text.substr(0, at));
        text.remove_prefix(at + 1);
    }
    parts.push_back(text);
    return parts;
}

std::vector<double> parseReals(std::string_view text, std::size_t count, const std::string& what,
                               const Limits& limits) {
    const auto parts = splitText(text, ',');
    if (parts.size() != count) {
        refuse(text, what,
               std::to_string(count) + " numbers with commas between, each from " + limitsText(limits, {}));
    }
    std::vector<double> values;
    values.reserve(count);
    for (const std::string_view part : parts) values.push_back(parseReal(part, what, limits));
    return values;
}

Weights parseWeights(std::string_view text, const std::string& what) {
    const auto parts = splitText(text, ',');
    Weights weights{};
    if (parts.size() != weights.size() && parts.size() != 1) {
        refuse(text, what, "16 whole numbers from 0 to 255 with commas between, or one for all cells");
    }
    for (std::size_t cell = 0; cell < weights.size(); ++cell) {
        const std::string_view part = parts.size() == 1 ? parts[0] : parts[cell];
        weights[cell] = static_cast<std::uint8_t>(parseWhole(part, what, {0, 255}));
    }
    return weights;
}

std::string weightsText(const Weights& weights) {
    std::string text;
    for (const std::uint8_t weight : weights) text += (text.empty() ? "" : ",") + std::to_string(weight);
    return text;
}

TextRange parseRange(std::string_view text, const std::string& what, const std::string& example) {
    const std::size_t dots = text.find("..");
    if (dots == std::string_view::npos || dots == 0 || dots + 2 == text.size()) {
        refuse(text, what, "LOWEST..HIGHEST, such as " + example);
    }
    return {std::string(text.substr(0, dots)), std::string(text.substr(dots + 2))};
}

}  // namespace tavra::tool
