// Any text as Intel HEX. What is accepted has its length where its mask ends and zeros in its gaps, and
// written out again, one byte a record, is the same image.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "hex_image.h"

namespace {

struct Image {
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(16384);
    std::vector<std::uint8_t> mask = std::vector<std::uint8_t>(16384);
    std::uint32_t length = 0;

    bool parse(std::string_view text) { return tavra::usbd::parseHexImage(text, bytes, mask, length) == 0; }
    bool operator==(const Image&) const = default;
};

void expect(bool holds) {
    if (!holds) __builtin_trap();
}

void appendByte(std::string& text, unsigned value) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    text += kDigits[value >> 4 & 15];
    text += kDigits[value & 15];
}

std::string written(const Image& image) {
    std::string text;
    for (unsigned at = 0; at < image.length; ++at) {
        if (image.mask[at] == 0) continue;
        text += ":01";
        appendByte(text, at >> 8);
        appendByte(text, at);
        text += "00";
        appendByte(text, image.bytes[at]);
        appendByte(text, 0u - (1 + (at >> 8) + at + image.bytes[at]));
    }
    return text + ":00000001FF";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Image image;
    if (!image.parse(std::string_view(reinterpret_cast<const char*>(data), size))) return 0;
    expect(image.length <= image.bytes.size());
    expect(image.length == 0 || image.mask[image.length - 1] == 1);
    for (std::size_t i = 0; i < image.mask.size(); ++i) {
        expect(image.mask[i] <= (i < image.length ? 1 : 0));
        expect(image.mask[i] == 1 || image.bytes[i] == 0);
    }
    Image again;
    expect(again.parse(written(image)) && again == image);
    return 0;
}
