// Pixels on their way into textures, each against the rule worked out for one pixel.
#include "display/sprite_pixels.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace tavra::test {
namespace {

constexpr std::uint32_t kUntouched = 0xDDDDDDDD;

struct Copied {
    std::size_t pitch;  // pixels
    std::vector<std::uint32_t> texture;
};

Copied copied(const std::vector<std::uint8_t>& bits, std::size_t stride, std::uint32_t width,
              std::uint32_t height, std::uint32_t code) {
    Copied result{width + 3u, std::vector<std::uint32_t>((width + 3u) * (height + 1u), kUntouched)};
    copyImage({bits.data(), stride, width, height, code},
              {reinterpret_cast<std::uint8_t*>(result.texture.data()), result.pitch * 4});
    return result;
}

TEST(SpritePixels, ImagesOfEveryFormatAndSize) {
    std::mt19937 random(7);
    for (const std::uint32_t code : {1u, 8u, 32u}) {
        const std::uint32_t bytes = code == 1 ? 1 : code == 8 ? 3 : 4;
        for (std::uint32_t width : {0u, 1u, 2u, 7u, 16u, 33u}) {
            for (std::uint32_t height : {0u, 1u, 2u, 5u}) {
                const std::size_t stride = width * bytes + 5;
                std::vector<std::uint8_t> bits(stride * (height + 1));
                for (std::uint8_t& byte : bits) byte = static_cast<std::uint8_t>(random());
                const Copied result = copied(bits, stride, width, height, code);
                for (std::size_t i = 0; i < result.texture.size(); ++i) {
                    const std::size_t x = i % result.pitch, y = i / result.pitch;
                    std::uint32_t expected = kUntouched;
                    if (x < width && y < height) {
                        const std::uint8_t* const p = bits.data() + y * stride + x * bytes;
                        const std::uint32_t blue = p[0], green = p[bytes == 1 ? 0 : 1],
                                            red = p[bytes == 1 ? 0 : 2], top = bytes == 4 ? p[3] : 0;
                        expected = blue + green * 256 + red * 65536 + top * 16777216;
                    }
                    ASSERT_EQ(result.texture[i], expected) << code << ": " << x << "," << y;
                }
            }
        }
    }
}

TEST(SpritePixels, ColoursOfWindowsHaveRedLowest) {
    EXPECT_EQ(pixelOfColor(0x0000FF), 0xFF0000u);
    EXPECT_EQ(pixelOfColor(0x123456), 0x563412u);
    EXPECT_EQ(pixelOfColor(0xFF00FF), 0xFF00FFu);
    EXPECT_EQ(pixelOfColor(0xAB000000), 0u);
}

TEST(SpritePixels, KeyStaysAndTheRestGetsAlpha) {
    constexpr std::uint32_t kKey = 0x0000FF, kAlpha = 0x80000000;
    for (std::size_t count = 0; count < 35; ++count) {
        std::vector<std::uint32_t> from(count), to(count + 1, kUntouched);
        for (std::size_t i = 0; i < count; ++i) {
            from[i] = i % 3 == 0 ? kKey : static_cast<std::uint32_t>(i * 0x010203u);
        }
        copyKeyed(from.data(), to.data(), count, kKey, kAlpha);
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint32_t expected =
                i % 3 == 0 ? kKey : static_cast<std::uint32_t>(i * 0x010203u) | 0x80000000u;
            ASSERT_EQ(to[i], expected) << count << ": " << i;
        }
        EXPECT_EQ(to[count], kUntouched);
    }
}

TEST(SpritePixels, KeyWithATopByteIsNoKey) {
    const std::uint32_t from[] = {0x010000FF, 0x0000FF, 0xFF0000};
    std::uint32_t to[3] = {};
    copyKeyed(from, to, 3, 0x0000FF, 0xFF000000);
    EXPECT_EQ(to[0], 0xFF0000FFu);
    EXPECT_EQ(to[1], 0x0000FFu);
    EXPECT_EQ(to[2], 0xFFFF0000u);
}

TEST(SpritePixels, TexturesAreSizedToPowersOfTwo) {
    EXPECT_EQ(nextPowerOfTwo(0), 1u);
    EXPECT_EQ(nextPowerOfTwo(1), 1u);
    EXPECT_EQ(nextPowerOfTwo(2), 2u);
    EXPECT_EQ(nextPowerOfTwo(3), 4u);
    EXPECT_EQ(nextPowerOfTwo(1024), 1024u);
    EXPECT_EQ(nextPowerOfTwo(1025), 2048u);
    EXPECT_EQ(nextPowerOfTwo(0x80000000), 0x80000000u);
    EXPECT_EQ(nextPowerOfTwo(0xFFFFFFFF), 0x80000000u);
}

}  // namespace
}  // namespace tavra::test
