#include "movie_probe/fourcc.h"

#include <cstdio>

namespace tavra::tool {

bool isFourcc(std::uint32_t code) {
    for (int i = 0; i < 4; ++i) {
        const std::uint32_t letter = code >> 8 * i & 0xFF;
        if (letter < 0x20 || letter > 0x7E) return false;
    }
    return true;
}

std::string fourccText(std::uint32_t code) {
    if (code == 0) return {};
    if (!isFourcc(code)) {
        char text[16];
        std::snprintf(text, sizeof text, "0x%08X", code);
        return text;
    }
    std::string text;
    for (int i = 0; i < 4; ++i) text += static_cast<char>(code >> 8 * i & 0xFF);
    return text;
}

}  // namespace tavra::tool
