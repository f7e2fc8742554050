// The order in which pixel formats are tried.
#include "display/next_pixel_format.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Bits and the mask of blue, which tells any two apart; UYVY by name.
std::vector<std::string> tried(std::uint32_t order, bool overlay) {
    std::vector<std::string> formats;
    platform::SurfaceFormat format;
    for (std::uint32_t attempt = 0; NextPixelFormat(order, overlay, attempt, format); ++attempt) {
        formats.push_back(format.fourCc != 0
                              ? "uyvy"
                              : std::to_string(format.bits) + ":" + std::to_string(format.red) + "/" +
                                    std::to_string(format.green) + "/" + std::to_string(format.blue));
    }
    return formats;
}

const std::string k32 = "32:16711680/65280/255", k32Exchanged = "32:255/65280/16711680";
const std::string k24 = "24:16711680/65280/255", k24Exchanged = "24:255/65280/16711680";
const std::string k565 = "16:63488/2016/31", k565Exchanged = "16:31/2016/63488";
const std::string k555 = "16:60416/992/31", k555Exchanged = "16:31/992/60416";  // 60416 is 0xEC00

TEST(NextPixelFormat, SixteenBitsFirstOffscreen) {
    EXPECT_THAT(tried(0, false),
                ElementsAre(k565, k555, k565Exchanged, k555Exchanged, k32, k32Exchanged, k24, k24Exchanged));
}

TEST(NextPixelFormat, SixteenBitsFirstOverlay) {
    EXPECT_THAT(tried(0, true), ElementsAre("uyvy", k565, k555, k565Exchanged, k555Exchanged, k32,
                                            k32Exchanged, k24, k24Exchanged));
}

TEST(NextPixelFormat, ThirtyTwoBitsFirstOffscreen) {
    EXPECT_THAT(tried(1, false),
                ElementsAre(k32, k32Exchanged, k24, k24Exchanged, k565, k555, k565Exchanged, k555Exchanged));
}

TEST(NextPixelFormat, ThirtyTwoBitsFirstOverlay) {
    EXPECT_THAT(tried(1, true), ElementsAre(k32, k32Exchanged, k24, k24Exchanged, "uyvy", k565, k555,
                                            k565Exchanged, k555Exchanged));
}

TEST(NextPixelFormat, UyvyIsNamedByItsFourCharacters) {
    platform::SurfaceFormat format;
    ASSERT_TRUE(NextPixelFormat(0, true, 0, format));
    EXPECT_EQ(format.bits, 16u);
    EXPECT_EQ(format.fourCc, 'U' | 'Y' << 8 | 'V' << 16 | std::uint32_t{'Y'} << 24);
}

TEST(NextPixelFormat, NothingIsWrittenPastTheEnd) {
    platform::SurfaceFormat format{7, 7, 7, 7, 7};
    EXPECT_FALSE(NextPixelFormat(0, true, 9, format));
    EXPECT_FALSE(NextPixelFormat(1, false, 8, format));
    EXPECT_FALSE(NextPixelFormat(0, false, 0xFFFFFFFF, format));
    EXPECT_EQ(format.bits, 7u);
}

}  // namespace
}  // namespace tavra::test
