#include "media/jpeg/subsampling.h"

#include <gtest/gtest.h>

#include <random>

#include "media/jpeg/jpeg_support.h"

namespace tavra::test {
namespace {

TEST(JpegSubsampling, MeansOfPairsAreRoundedDownAndUpInTurn) {
    const ByteVector row = {10, 11, 10, 11, 10, 11, 255, 255, 0, 0, 0, 1};
    ByteVector half(6);
    jpeg::halveColumns(row.data(), half.size(), half.data());
    EXPECT_EQ(half, (ByteVector{10, 11, 10, 255, 0, 1}));
}

TEST(JpegSubsampling, MeansOfSquaresAreRoundedWithOneAndTwoInTurn) {
    const ByteVector upper = {1, 1, 1, 1, 0, 1, 0, 1, 255, 255};
    const ByteVector lower = {1, 0, 1, 0, 0, 1, 0, 1, 255, 255};
    ByteVector half(5);
    jpeg::halveBoth(upper.data(), lower.data(), half.size(), half.data());
    // (3 + 1) / 4, (3 + 2) / 4, (2 + 1) / 4, (2 + 2) / 4, (1020 + 1) / 4
    EXPECT_EQ(half, (ByteVector{1, 1, 0, 1, 255}));
}

TEST(JpegSubsampling, AllWidths) {
    std::mt19937 random(1);
    for (std::size_t width = 1; width < 100; ++width) {
        ByteVector rows[2] = {ByteVector(2 * width), ByteVector(2 * width)};
        for (ByteVector& row : rows) {
            for (std::uint8_t& sample : row) sample = static_cast<std::uint8_t>(random());
        }
        ByteVector columns(width), both(width);
        jpeg::halveColumns(rows[0].data(), width, columns.data());
        jpeg::halveBoth(rows[0].data(), rows[1].data(), width, both.data());
        for (std::size_t j = 0; j < width; ++j) {
            const int upper = rows[0][2 * j] + rows[0][2 * j + 1],
                      lower = rows[1][2 * j] + rows[1][2 * j + 1];
            ASSERT_EQ(columns[j], (upper + (j % 2 == 0 ? 0 : 1)) / 2) << width << ", " << j;
            ASSERT_EQ(both[j], (upper + lower + (j % 2 == 0 ? 1 : 2)) / 4) << width << ", " << j;
        }
    }
}

}  // namespace
}  // namespace tavra::test
