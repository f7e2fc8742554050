#include "stages/bgr_reader.h"

#include <gtest/gtest.h>

#include <vector>

namespace tavra::test {
namespace {

// Every length around the vectors, every offset from their alignment; planes end where the pixels end.
template <class Sample>
void expectPlanes(std::size_t pitch) {
    for (std::size_t count = 0; count <= 70; ++count) {
        for (std::size_t offset = 0; offset < 4; ++offset) {
            std::vector<Sample> pixels(offset + count * pitch);
            for (std::size_t i = 0; i < count; ++i) {
                for (std::size_t c = 0; c < pitch; ++c)
                    pixels[offset + i * pitch + c] = static_cast<Sample>(1000 * c + 7 * i + 3);
            }
            std::vector<Sample> blue(count), green(count), red(count);
            readBgr(pixels.data() + offset, pitch, blue.data(), green.data(), red.data(), count);
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(blue[i], static_cast<Sample>(7 * i + 3)) << i << " of " << count;
                ASSERT_EQ(green[i], static_cast<Sample>(1000 + 7 * i + 3)) << i << " of " << count;
                ASSERT_EQ(red[i], static_cast<Sample>(2000 + 7 * i + 3)) << i << " of " << count;
            }
        }
    }
}

TEST(BgrReader, TakesPixelsOfThreeAndFourSamplesApart) {
    expectPlanes<std::uint8_t>(3);
    expectPlanes<std::uint8_t>(4);
    expectPlanes<std::uint16_t>(3);
    expectPlanes<std::uint16_t>(4);
}

}  // namespace
}  // namespace tavra::test
