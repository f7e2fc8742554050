#include "image_format.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "tavra/tavra_types.h"

namespace tavra::tool {
namespace {

std::string inLowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

std::optional<std::uint32_t> stillFormatOf(std::uint32_t transferBits) {
    switch (transferBits) {
        case TAVRA_TRANSFER_MOSAIC_8:
        case TAVRA_TRANSFER_MONO_8: return TAVRA_PIXEL_MONO_8;
        case TAVRA_TRANSFER_MOSAIC_10:
        case TAVRA_TRANSFER_MONO_10: return TAVRA_PIXEL_MONO_10;
        case TAVRA_TRANSFER_MOSAIC_12:
        case TAVRA_TRANSFER_MONO_12: return TAVRA_PIXEL_MONO_12;
        case TAVRA_TRANSFER_MOSAIC_14:
        case TAVRA_TRANSFER_MONO_14: return TAVRA_PIXEL_MONO_14;
        case TAVRA_TRANSFER_MOSAIC_16:
        case TAVRA_TRANSFER_MONO_16: return TAVRA_PIXEL_MONO_16;
        case TAVRA_TRANSFER_BGR_8: return TAVRA_PIXEL_BGR_24;
        default: return std::nullopt;
    }
}

bool isRawName(const std::string& fileName) {
    return fileName.size() >= 4 && inLowerCase(fileName.substr(fileName.size() - 4)) == ".raw";
}

bool isJpegName(const std::string& fileName) {
    const std::size_t dot = fileName.rfind('.');
    if (dot == std::string::npos || dot + 1 == fileName.size()) return false;
    const std::string ending = inLowerCase(fileName.substr(dot + 1));
    return std::string_view("jpg").starts_with(ending) || std::string_view("jpeg").starts_with(ending);
}

}  // namespace tavra::tool
