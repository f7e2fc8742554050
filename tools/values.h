// The code tables of the interface by the names that a person types and reads.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tavra::tool {

struct NamedCode {
    std::uint32_t code;
    const char* name;
};

extern const std::span<const NamedCode> kTransferBits;
extern const std::span<const NamedCode> kPixelFormats;  // of the preview
extern const std::span<const NamedCode> kInterpolations;
extern const std::span<const NamedCode> kLinkSpeeds;
extern const std::span<const NamedCode> kColorArrays;
extern const std::span<const NamedCode> kExposureModes;
extern const std::span<const NamedCode> kMirrors;  // bits
extern const std::span<const NamedCode> kRotations;
extern const std::span<const NamedCode> kDisplayModes;

// The name of a code, or its number where the table has none.
std::string nameOf(std::span<const NamedCode> table, std::uint32_t code);
// The code of a name or of a number (decimal, or hexadecimal after 0x). Throws Failure listing the names.
std::uint32_t codeOf(std::span<const NamedCode> table, std::string_view text, const std::string& what);
// The code of a name and of nothing else, for settings that a number would not check. Throws Failure listing
// the names.
std::uint32_t onlyNamed(std::span<const NamedCode> table, std::string_view text, const std::string& what);
// The names of the codes whose bits are in the mask, separated by commas.
std::string namesIn(std::span<const NamedCode> table, std::uint32_t mask);

// A whole number within 32 bits, decimal or hexadecimal after 0x. Throws Failure naming `what`.
std::uint32_t parseNumber(std::string_view text, const std::string& what);

// "WIDTHxHEIGHT" or "WIDTHxHEIGHT+X+Y", in pixels. Throws Failure.
struct Geometry {
    std::uint32_t width = 0, height = 0, x = 0, y = 0;
};
Geometry parseGeometry(std::string_view text);
std::string geometryText(const Geometry& geometry);

}  // namespace tavra::tool
