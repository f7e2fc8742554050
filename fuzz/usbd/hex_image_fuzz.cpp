// Any text as Intel HEX. What is accepted has its length where its mask ends.
#include <cstdint>
#include <string_view>
#include <vector>

#include "hex_image.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> image(16384), mask(16384);
    std::uint32_t length = 0;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (tavra::usbd::parseHexImage(text, image, mask, length) != 0) return 0;
    if (length > image.size() || (length > 0 && mask[length - 1] != 1)) __builtin_trap();
    for (std::size_t i = length; i < mask.size(); ++i) {
        if (mask[i] != 0 || image[i] != 0) __builtin_trap();
    }
    return 0;
}
