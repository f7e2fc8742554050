#include "values.h"

#include <charconv>

#include "exit_code.h"

namespace tavra::tool {
namespace {

constexpr NamedCode kTransferBitsTable[] = {
    {0x1, "mosaic8"},
    {0x2, "mosaic10"},
    {0x4, "mosaic12"},
    {0x8, "mosaic14"},
    {0x10, "mosaic16"},
    {0x20, "mono8"},
    {0x40, "mono10"},
    {0x80, "mono12"},
    {0x100, "mono14"},
    {0x200, "mono16"},
    {0x400, "bgr8"},
    {0x800, "bgr10"},
    {0x1000, "ycbcr411"},
    {0x2000, "ycbcr422"},
    {0x4000, "ycbcr444"},
    {0x10000, "mosaic10p"},
    {0x20000, "mosaic12p"},
    {0x100000, "mono10p"},
    {0x200000, "mono12p"},
    {0x1000000, "ycbcr411-limited"},
    {0x2000000, "ycbcr422-limited"},
    {0x4000000, "ycbcr444-limited"},
};
constexpr NamedCode kPixelFormatsTable[] = {{1, "mono8"}, {4, "bgr24"}, {8, "bgr32"}};
constexpr NamedCode kInterpolationsTable[] = {{0, "none"},     {1, "raw-color"}, {2, "nearest"},
                                              {3, "bilinear"}, {4, "four-tap"},  {5, "cell-bilinear"}};
constexpr NamedCode kLinkSpeedsTable[] = {
    {0, "full speed (12 Mbit/s)"}, {1, "high speed (480 Mbit/s)"}, {2, "super speed (5 Gbit/s)"}};
constexpr NamedCode kColorArraysTable[] = {
    {1, "mono"},          {2, "RGGB"},          {3, "GRBG"},          {4, "GBRG"},          {5, "BGGR"},
    {12, "pattern RGGB"}, {13, "pattern GRBG"}, {14, "pattern GBRG"}, {15, "pattern BGGR"}, {16, "quad RGGB"},
    {17, "quad GRBG"},    {18, "quad GBRG"},    {19, "quad BGGR"}};

constexpr NamedCode kExposureModesTable[] = {
    {0, "free"}, {1, "timed"}, {2, "trigger-width"}, {3, "sub-trigger"}};
constexpr NamedCode kMirrorsTable[] = {{1, "h"}, {2, "v"}, {16, "camera-h"}, {32, "camera-v"}};
constexpr NamedCode kRotationsTable[] = {{0, "off"}, {1, "cw"}, {2, "ccw"}};
constexpr NamedCode kDisplayModesTable[] = {
    {0, "plain"},     {1, "surface16"},   {2, "overlay16"},          {3, "surface32"},
    {4, "overlay32"}, {5, "textured"},    {6, "textured-blank"},     {7, "textured-wait"},
    {8, "smooth"},    {9, "textured-fp"}, {10, "textured-blank-fp"}, {11, "textured-wait-fp"}};

bool parse(std::string_view text, std::uint32_t& value) {
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) text.remove_prefix(2);
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, hexadecimal ? 16 : 10);
    return error == std::errc() && stop == end && !text.empty();
}

// Takes a number off the front of `text`.
bool take(std::string_view& text, std::uint32_t& value) {
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
    return true;
}

bool takeSign(std::string_view& text, char sign) {
    if (!text.starts_with(sign)) return false;
    text.remove_prefix(1);
    return true;
}

}  // namespace

const std::span<const NamedCode> kTransferBits = kTransferBitsTable;
const std::span<const NamedCode> kPixelFormats = kPixelFormatsTable;
const std::span<const NamedCode> kInterpolations = kInterpolationsTable;
const std::span<const NamedCode> kLinkSpeeds = kLinkSpeedsTable;
const std::span<const NamedCode> kColorArrays = kColorArraysTable;
const std::span<const NamedCode> kExposureModes = kExposureModesTable;
const std::span<const NamedCode> kMirrors = kMirrorsTable;
const std::span<const NamedCode> kRotations = kRotationsTable;
const std::span<const NamedCode> kDisplayModes = kDisplayModesTable;

std::string nameOf(std::span<const NamedCode> table, std::uint32_t code) {
    for (const NamedCode& entry : table) {
        if (entry.code == code) return entry.name;
    }
    return std::to_string(code);
}

std::uint32_t codeOf(std::span<const NamedCode> table, std::string_view text, const std::string& what) {
    std::uint32_t code = 0;
    return parse(text, code) ? code : onlyNamed(table, text, what);
}

std::uint32_t onlyNamed(std::span<const NamedCode> table, std::string_view text, const std::string& what) {
    std::string names;
    for (const NamedCode& entry : table) {
        if (text == entry.name) return entry.code;
        names += (names.empty() ? "" : ", ") + std::string(entry.name);
    }
    throw Failure(what + " cannot be '" + std::string(text) + "': one of " + names, ExitCode::Usage);
}

std::string namesIn(std::span<const NamedCode> table, std::uint32_t mask) {
    std::string names;
    for (const NamedCode& entry : table) {
        if ((mask & entry.code) != 0) names += (names.empty() ? "" : ", ") + std::string(entry.name);
    }
    return names.empty() ? "none" : names;
}

std::uint32_t parseNumber(std::string_view text, const std::string& what) {
    std::uint32_t value = 0;
    if (parse(text, value)) return value;
    throw Failure(what + " cannot be '" + std::string(text) + "': a whole number from 0 to 4294967295",
                  ExitCode::Usage);
}

Geometry parseGeometry(std::string_view text) {
    Geometry geometry;
    std::string_view rest = text;
    bool good = take(rest, geometry.width) && takeSign(rest, 'x') && take(rest, geometry.height);
    if (good && !rest.empty()) {
        good = takeSign(rest, '+') && take(rest, geometry.x) && takeSign(rest, '+') &&
               take(rest, geometry.y) && rest.empty();
    }
    if (good) return geometry;
    throw Failure("size cannot be '" + std::string(text) + "': WIDTHxHEIGHT or WIDTHxHEIGHT+X+Y in pixels",
                  ExitCode::Usage);
}

std::string geometryText(const Geometry& geometry) {
    return std::to_string(geometry.width) + "x" + std::to_string(geometry.height) + "+" +
           std::to_string(geometry.x) + "+" + std::to_string(geometry.y);
}

}  // namespace tavra::tool
