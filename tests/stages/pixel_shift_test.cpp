#include "stages/pixel_shift.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace tavra::test {
namespace {

// Every length around the vectors; the arrays end with the last pixel.
void expectShifted(std::size_t pitch) {
    std::mt19937 random(6);
    for (std::size_t count = 0; count <= 70; ++count) {
        std::vector<std::uint8_t> pixels(count * pitch), rise(count), fall(count);
        for (auto& sample : pixels) sample = static_cast<std::uint8_t>(random());
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned amount = random() % 4 == 0 ? 255 : random() % 256;
            (random() % 2 == 0 ? rise : fall)[i] = static_cast<std::uint8_t>(amount);
        }
        std::vector<std::uint8_t> wanted = pixels;
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t c = 0; c < 3; ++c) {
                std::uint8_t& sample = wanted[i * pitch + c];
                sample = static_cast<std::uint8_t>(std::clamp(sample + rise[i] - fall[i], 0, 255));
            }
        }
        shiftPixels(pixels.data(), pitch, rise.data(), fall.data(), count);
        ASSERT_EQ(pixels, wanted) << count;
    }
}

TEST(PixelShift, MovesTheColoursOfEveryCountOfPixels) {
    expectShifted(3);
}

TEST(PixelShift, LeavesAFourthByte) {
    expectShifted(4);
}

}  // namespace
}  // namespace tavra::test
