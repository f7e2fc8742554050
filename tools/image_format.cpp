#include "image_format.h"

#include <algorithm>
#include <cctype>

#include "tavra/tavra_types.h"

namespace tavra::tool {

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
    if (fileName.size() < 4) return false;
    std::string ending = fileName.substr(fileName.size() - 4);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending == ".raw";
}

}  // namespace tavra::tool
