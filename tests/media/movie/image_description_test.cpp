#include "media/movie/image_description.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace tavra::test {
namespace {

using movie::ImageDescription;

std::vector<std::uint8_t> bytesOf(const ImageDescription& description, std::size_t from, std::size_t size) {
    std::vector<std::uint8_t> bytes(sizeof description);
    std::memcpy(bytes.data(), &description, sizeof description);
    return {bytes.begin() + static_cast<std::ptrdiff_t>(from),
            bytes.begin() + static_cast<std::ptrdiff_t>(from + size)};
}

TEST(ImageDescription, OfAColourImageIsABitmapHeader) {
    const ImageDescription image = ImageDescription::of(0x282, 0x1E1, 0x788, 24);
    EXPECT_EQ(image.usedBytes(), 40u);
    EXPECT_FALSE(image.isGray());
    EXPECT_EQ(bytesOf(image, 0, 4), (std::vector<std::uint8_t>{40, 0, 0, 0}));
    EXPECT_EQ(bytesOf(image, 4, 8), (std::vector<std::uint8_t>{0x82, 2, 0, 0, 0xE1, 1, 0, 0}));
    EXPECT_EQ(bytesOf(image, 12, 8), (std::vector<std::uint8_t>{1, 0, 24, 0, 0, 0, 0, 0})) << "one plane";
    // 1928 x 481 = 927368 = 0xE2688.
    EXPECT_EQ(bytesOf(image, 20, 4), (std::vector<std::uint8_t>{0x88, 0x26, 0x0E, 0}));
    EXPECT_EQ(bytesOf(image, 24, 1040), std::vector<std::uint8_t>(1040, 0)) << "no resolution, no palette";
}

TEST(ImageDescription, OfAGrayImageHasAPalette) {
    const ImageDescription image = ImageDescription::of(5, 3, 8, 8);
    EXPECT_EQ(image.usedBytes(), 1064u);
    EXPECT_TRUE(image.isGray());
    EXPECT_EQ(bytesOf(image, 14, 10), (std::vector<std::uint8_t>{8, 0, 0, 0, 0, 0, 24, 0, 0, 0}));
    EXPECT_EQ(bytesOf(image, 32, 8), (std::vector<std::uint8_t>{0, 1, 0, 0, 0, 1, 0, 0}));
    for (std::size_t level = 0; level < 256; ++level) {
        const auto shade = static_cast<std::uint8_t>(level);
        EXPECT_EQ(bytesOf(image, 40 + 4 * level, 4), (std::vector<std::uint8_t>{shade, shade, shade, 0}));
    }
}

}  // namespace
}  // namespace tavra::test
