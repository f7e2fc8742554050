#include "capture/pixel_class.h"

#include <gtest/gtest.h>

namespace tavra {
namespace {

struct Row {
    std::uint32_t code;
    PixelClass expected;
    bool rawPath, reduced, finished, monoOnBayer, monoOnMonoArray;
};

class Classification : public testing::TestWithParam<Row> {};

TEST_P(Classification, FollowsTheTransferCode) {
    const Row& row = GetParam();
    const PixelClass c = pixelClass(row.code);
    EXPECT_EQ(c, row.expected);
    EXPECT_EQ(takesRawPath(c), row.rawPath);
    EXPECT_EQ(needsReduction(c), row.reduced);
    EXPECT_EQ(isFinished(c), row.finished);
    EXPECT_EQ(isMonoFrame(c, 2), row.monoOnBayer);
    EXPECT_EQ(isMonoFrame(c, 1), row.monoOnMonoArray);
    EXPECT_EQ(isMonoFrame(c, 12), row.monoOnMonoArray);
    EXPECT_EQ(isMonoFrame(c, 16), row.monoOnBayer);
}

INSTANTIATE_TEST_SUITE_P(
    Codes, Classification,
    testing::Values(Row{1, PixelClass::Raw8, true, false, false, false, true},
                    Row{2, PixelClass::RawWide, true, true, false, false, true},
                    Row{4, PixelClass::RawWide, true, true, false, false, true},
                    Row{8, PixelClass::RawWide, true, true, false, false, true},
                    Row{16, PixelClass::RawWide, true, true, false, false, true},
                    Row{0x10000, PixelClass::RawPacked, true, true, false, false, true},
                    Row{0x20000, PixelClass::RawPacked, true, true, false, false, true},
                    Row{32, PixelClass::Mono8, false, false, false, true, true},
                    Row{64, PixelClass::MonoWide, false, true, false, true, true},
                    Row{128, PixelClass::MonoWide, false, true, false, true, true},
                    Row{256, PixelClass::MonoWide, false, true, false, true, true},
                    Row{512, PixelClass::MonoWide, false, true, false, true, true},
                    Row{0x100000, PixelClass::MonoPacked, false, true, false, true, true},
                    Row{0x200000, PixelClass::MonoPacked, false, true, false, true, true},
                    Row{1024, PixelClass::Bgr, false, false, true, false, false},
                    Row{2048, PixelClass::Bgr, false, false, true, false, false},
                    Row{4096, PixelClass::Ycbcr, false, false, true, false, false},
                    Row{8192, PixelClass::Ycbcr, false, false, true, false, false},
                    Row{16384, PixelClass::Ycbcr, false, false, true, false, false},
                    Row{0x1000000, PixelClass::Ycbcr, false, false, true, false, false},
                    Row{0x2000000, PixelClass::Ycbcr, false, false, true, false, false},
                    Row{0x4000000, PixelClass::Ycbcr, false, false, true, false, false},
                    Row{3, PixelClass::Unknown, false, false, false, false, false},
                    Row{0, PixelClass::Unknown, false, false, false, false, false}));

TEST(PixelClass, ARawFrameIsMonoByTheColorArray) {
    for (std::uint16_t colorArray = 0; colorArray <= 20; ++colorArray) {
        const bool mono = colorArray == 1 || (colorArray >= 12 && colorArray <= 15);
        EXPECT_EQ(isMonoFrame(PixelClass::Raw8, colorArray), mono) << colorArray;
        EXPECT_EQ(isMonoFrame(PixelClass::RawPacked, colorArray), mono) << colorArray;
    }
}

TEST(PixelClass, YcbcrCodesHaveAColorArrayOfTheirOwn) {
    EXPECT_EQ(ycbcrColorArray(4096), 8);
    EXPECT_EQ(ycbcrColorArray(8192), 6);
    EXPECT_EQ(ycbcrColorArray(16384), 7);
    EXPECT_EQ(ycbcrColorArray(0x1000000), 11);
    EXPECT_EQ(ycbcrColorArray(0x2000000), 9);
    EXPECT_EQ(ycbcrColorArray(0x4000000), 10);
    EXPECT_EQ(ycbcrColorArray(1), 0);
}

}  // namespace
}  // namespace tavra
