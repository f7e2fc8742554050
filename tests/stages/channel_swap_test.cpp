#include "stages/channel_swap.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace tavra {
namespace {

std::vector<std::uint8_t> noise(std::size_t count, std::mt19937& random) {
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t& b : bytes) b = static_cast<std::uint8_t>(random());
    return bytes;
}

TEST(SwapRedBlue, ExchangesTheOuterBytesOfDensePixels) {
    std::uint8_t image[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13};
    swapRedBlue24(2, 2, image);
    const std::uint8_t wanted[] = {3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10, 13};
    for (std::size_t i = 0; i < sizeof image; ++i) EXPECT_EQ(image[i], wanted[i]) << i;
}

TEST(SwapRedBlue, TwiceRestoresTheImage) {
    std::mt19937 random(23);
    for (std::uint32_t width : {1u, 5u, 16u, 33u, 100u}) {
        const std::vector<std::uint8_t> original = noise(std::size_t{width} * 3 * 3, random);
        std::vector<std::uint8_t> image = original;
        swapRedBlue24(width, 3, image.data());
        for (std::size_t i = 0; i < image.size(); i += 3) {
            ASSERT_EQ(image[i], original[i + 2]);
            ASSERT_EQ(image[i + 1], original[i + 1]);
        }
        swapRedBlue24(width, 3, image.data());
        EXPECT_EQ(image, original);
    }
}

TEST(SwapRedBlue, NoRowsIsNoWork) {
    swapRedBlue24(5, 0, nullptr);
    swapRedBlue24(0, 5, nullptr);
}

}  // namespace
}  // namespace tavra
