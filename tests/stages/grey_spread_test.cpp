#include "stages/grey_spread.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace tavra {
namespace {

std::size_t pitchOf(std::uint32_t format) {
    return format == 1 ? 1 : format == 4 ? 3 : 4;
}

std::size_t strideOf(std::uint32_t width, std::uint32_t format) {
    return (width * pitchOf(format) + 3) / 4 * 4;
}

std::vector<std::uint8_t> noise(std::size_t count, std::mt19937& random) {
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t& b : bytes) b = static_cast<std::uint8_t>(random());
    return bytes;
}

TEST(GreySpread, EachValueGoesIntoThreeChannelsInPlace) {
    std::mt19937 random(22);
    for (std::uint32_t format : {4u, 8u}) {
        for (std::uint32_t width : {1u, 2u, 3u, 4u, 5u, 9u, 17u, 64u, 255u, 256u, 257u, 700u}) {
            const std::uint32_t height = 1 + width % 5;
            const std::size_t greyStride = strideOf(width, 1), stride = strideOf(width, format);
            std::vector<std::uint8_t> image = noise(stride * height, random);
            std::vector<std::uint8_t> wanted = image;
            for (std::size_t y = 0; y < height; ++y) {
                for (std::size_t x = 0; x < width; ++x) {
                    const std::uint8_t grey = image[y * greyStride + x];
                    for (std::size_t c = 0; c < 3; ++c) wanted[y * stride + x * pitchOf(format) + c] = grey;
                }
            }
            ASSERT_TRUE(spreadGreyInPlace(width, height, format, image.data()).ok());
            ASSERT_EQ(image, wanted) << format << ", " << width << " x " << height;
        }
    }
}

TEST(GreySpread, FormatOneStaysAndOthersAreRefused) {
    std::uint8_t image[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_TRUE(spreadGreyInPlace(4, 2, 1, image).ok());
    EXPECT_EQ(spreadGreyInPlace(1, 1, 2, image).code(), 87u);
    EXPECT_EQ(spreadGreyInPlace(1, 1, 512, image).code(), 87u);
    EXPECT_TRUE(spreadGreyInPlace(0, 3, 4, nullptr).ok());
    for (std::uint8_t i = 0; i < 8; ++i) EXPECT_EQ(image[i], i + 1);
}

}  // namespace
}  // namespace tavra
