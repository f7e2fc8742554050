#include "stages/interpolation/bgr_writer.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace tavra::interpolation {
namespace {

template <class Sample>
void weavesEveryCount() {
    std::mt19937 random(3);
    for (std::size_t pitch : {3, 4, 6}) {
        for (std::size_t count = 0; count < 80; ++count) {
            std::vector<Sample> planes[3];
            for (auto& plane : planes) {
                for (std::size_t i = 0; i < count; ++i) plane.push_back(static_cast<Sample>(random()));
            }
            std::vector<Sample> pixels(1 + count * pitch + 9);  // from an odd address, with a guard behind
            for (Sample& s : pixels) s = static_cast<Sample>(random());
            std::vector<Sample> wanted = pixels;
            for (std::size_t i = 0; i < count; ++i) {
                for (std::size_t c = 0; c < 3; ++c) wanted[1 + i * pitch + c] = planes[c][i];
            }
            writeBgr(pixels.data() + 1, pitch, planes[0].data(), planes[1].data(), planes[2].data(), count);
            ASSERT_EQ(pixels, wanted) << count << " pixels, " << pitch << " apart";
        }
    }
}

TEST(BgrWriter, WeavesEveryCountOfBytesAndTouchesNothingElse) {
    weavesEveryCount<std::uint8_t>();
}

TEST(BgrWriter, WeavesEveryCountOfWordsAndTouchesNothingElse) {
    weavesEveryCount<std::uint16_t>();
}

}  // namespace
}  // namespace tavra::interpolation
