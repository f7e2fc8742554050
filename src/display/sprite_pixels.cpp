#include "display/sprite_pixels.h"

#include <bit>
#include <cstring>

namespace tavra {
namespace {

void storeWord(std::uint8_t* to, std::uint32_t word) {
    std::memcpy(to, &word, sizeof word);
}

void spreadGrey(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; ++x) storeWord(to + 4 * x, from[x] * 0x010101u);
}

void spreadBgr(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; ++x) {
        const std::uint8_t* const bgr = from + 3 * x;
        storeWord(to + 4 * x, bgr[0] | bgr[1] * 0x100u | bgr[2] * 0x10000u);
    }
}

std::uint32_t keyed(std::uint32_t pixel, std::uint32_t key, std::uint32_t alphaMask) {
    return pixel == key ? pixel : pixel | alphaMask;
}

}  // namespace

void copyImage(const SpriteImage& image, const platform::LockedPixels& texture) {
    for (std::uint32_t y = 0; y < image.height; ++y) {
        const std::uint8_t* const from = image.bits + y * image.stride;
        std::uint8_t* const to = texture.bits + y * texture.pitch;
        switch (image.code) {
            case 1: spreadGrey(from, to, image.width); break;
            case 8: spreadBgr(from, to, image.width); break;
            default: std::memcpy(to, from, std::size_t{image.width} * 4); break;
        }
    }
}

void copyKeyed(const std::uint32_t* from, std::uint32_t* to, std::size_t count, std::uint32_t key,
               std::uint32_t alphaMask) {
    constexpr std::size_t kAtOnce = 8;
    std::size_t done = 0;
    for (; done + kAtOnce <= count; done += kAtOnce) {
        for (std::size_t i = done; i < done + kAtOnce; ++i) to[i] = keyed(from[i], key, alphaMask);
    }
    for (; done < count; ++done) to[done] = keyed(from[done], key, alphaMask);
}

// No texture is as large as the last power of two, and none is made of a size beyond it.
std::uint32_t nextPowerOfTwo(std::uint32_t value) {
    constexpr std::uint32_t kLast = 0x80000000;
    return value > kLast ? kLast : std::bit_ceil(value);
}

}  // namespace tavra
