#include "frame_means.h"

#include <gtest/gtest.h>

#include "tavra/tavra_types.h"

namespace tavra::tool {
namespace {

std::vector<std::uint8_t> reduced(const std::vector<std::uint8_t>& data, std::uint32_t width,
                                  std::uint32_t height, std::uint32_t transferBits) {
    return reducedTo8Bits({data.data(), data.size(), width, height, transferBits});
}

using Bytes = std::vector<std::uint8_t>;

TEST(FrameMeans, EightBitsStayAsTheyAre) {
    EXPECT_EQ(reduced({1, 2, 3, 255}, 2, 2, TAVRA_TRANSFER_MOSAIC_8), (Bytes{1, 2, 3, 255}));
}

TEST(FrameMeans, WordsGiveTheirUpperEightBits) {
    // 0x3FF and 0x004 of 10 bits: 255 and 1. 0x123 of 12 bits: 0x12. 0xABCD of 16: 0xAB. 0x1FFF of 14: 0x7F.
    EXPECT_EQ(reduced({0xFF, 0x03, 0x04, 0x00}, 2, 1, TAVRA_TRANSFER_MOSAIC_10), (Bytes{255, 1}));
    EXPECT_EQ(reduced({0x23, 0x01}, 1, 1, TAVRA_TRANSFER_MOSAIC_12), (Bytes{0x12}));
    EXPECT_EQ(reduced({0xFF, 0x1F}, 1, 1, TAVRA_TRANSFER_MOSAIC_14), (Bytes{0x7F}));
    EXPECT_EQ(reduced({0xCD, 0xAB}, 1, 1, TAVRA_TRANSFER_MOSAIC_16), (Bytes{0xAB}));
}

TEST(FrameMeans, PackedRowsBeginAtABytesAndAreReadFromTheLowestBit) {
    // 12 bits: 0xABC and 0x123 are the bytes BC, 3A, 12; three samples take five bytes a row.
    EXPECT_EQ(reduced({0xBC, 0x3A, 0x12}, 2, 1, TAVRA_TRANSFER_MOSAIC_12_PACKED), (Bytes{0xAB, 0x12}));
    EXPECT_EQ(reduced({0xBC, 0x3A, 0x12, 0xEF, 0x0D, 0xBC, 0x3A, 0x12, 0x21, 0x03}, 3, 2,
                      TAVRA_TRANSFER_MOSAIC_12_PACKED),
              (Bytes{0xAB, 0x12, 0xDE, 0xAB, 0x12, 0x32}));
    // 10 bits: 0x3FF, 0, 0x3FF, 0 are FF 03 F0 3F 00.
    EXPECT_EQ(reduced({0xFF, 0x03, 0xF0, 0x3F, 0x00}, 4, 1, TAVRA_TRANSFER_MOSAIC_10_PACKED),
              (Bytes{255, 0, 255, 0}));
}

TEST(FrameMeans, ShortFramesAndOtherFormatsGiveNothing) {
    EXPECT_TRUE(reduced({1, 2, 3}, 2, 2, TAVRA_TRANSFER_MOSAIC_8).empty());
    EXPECT_TRUE(reduced({1, 2, 3, 4}, 3, 1, TAVRA_TRANSFER_MOSAIC_12_PACKED).empty());
    EXPECT_TRUE(reduced(Bytes(12), 2, 2, TAVRA_TRANSFER_BGR_8).empty());
    EXPECT_TRUE(reduced({}, 0, 0, TAVRA_TRANSFER_MOSAIC_8).empty());
}

void expectMeans(const FrameMeans& means, double r, double gr, double gb, double b) {
    EXPECT_TRUE(means.color);
    EXPECT_DOUBLE_EQ(means.r, r);
    EXPECT_DOUBLE_EQ(means.gr, gr);
    EXPECT_DOUBLE_EQ(means.gb, gb);
    EXPECT_DOUBLE_EQ(means.b, b);
    EXPECT_DOUBLE_EQ(means.y, 0.299 * r + 0.587 * (gr + gb) / 2 + 0.114 * b);
}

TEST(FrameMeans, ColoursFollowTheirArray) {
    const Bytes cell{10, 20, 30, 40};
    expectMeans(meansOf(cell, 2, 2, TAVRA_COLOR_ARRAY_RGGB), 10, 20, 30, 40);
    expectMeans(meansOf(cell, 2, 2, TAVRA_COLOR_ARRAY_GRBG), 20, 10, 40, 30);
    expectMeans(meansOf(cell, 2, 2, TAVRA_COLOR_ARRAY_GBRG), 30, 40, 10, 20);
    expectMeans(meansOf(cell, 2, 2, TAVRA_COLOR_ARRAY_BGGR), 40, 30, 20, 10);
}

TEST(FrameMeans, QuadSitesAreTwoSamplesWide) {
    const Bytes cell{10, 12, 20, 22, 10, 12, 20, 22, 30, 32, 40, 42, 30, 32, 40, 42};
    expectMeans(meansOf(cell, 4, 4, TAVRA_COLOR_ARRAY_QUAD_RGGB), 11, 21, 31, 41);
    expectMeans(meansOf(cell, 4, 4, TAVRA_COLOR_ARRAY_QUAD_BGGR), 41, 31, 21, 11);
}

TEST(FrameMeans, OddSizesCountTheirEdges) {
    // 3 x 1: R G R; there is no blue.
    expectMeans(meansOf({10, 5, 20}, 3, 1, TAVRA_COLOR_ARRAY_RGGB), 15, 5, 0, 0);
}

TEST(FrameMeans, AMonoFrameHasLuminanceOnly) {
    const FrameMeans means = meansOf({10, 20, 30, 41}, 2, 2, TAVRA_COLOR_ARRAY_MONO);
    EXPECT_FALSE(means.color);
    EXPECT_DOUBLE_EQ(means.y, 25.25);
    EXPECT_DOUBLE_EQ(meansOf({}, 0, 0, TAVRA_COLOR_ARRAY_MONO).y, 0);
}

}  // namespace
}  // namespace tavra::tool
