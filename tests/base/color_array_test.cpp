#include "base/color_array.h"

#include <gtest/gtest.h>

namespace tavra {
namespace {

struct Swap {
    std::uint16_t from, horizontal, vertical, both;
};

// Worked from the cells: mirroring R G / G B in x gives G R / B G, in y gives G B / R G, in both B G / G R.
constexpr Swap kSwaps[] = {
    {2, 3, 4, 5},     {3, 2, 5, 4},     {4, 5, 2, 3},     {5, 4, 3, 2},
    {12, 13, 14, 15}, {13, 12, 15, 14}, {14, 15, 12, 13}, {15, 14, 13, 12},
    {16, 17, 18, 19}, {17, 16, 19, 18}, {18, 19, 16, 17}, {19, 18, 17, 16},
};

TEST(ColorArray, MirrorsMoveThePhaseWithinTheGroup) {
    for (const Swap& swap : kSwaps) {
        EXPECT_EQ(mirroredColorArray(swap.from, true, false), swap.horizontal) << swap.from;
        EXPECT_EQ(mirroredColorArray(swap.from, false, true), swap.vertical) << swap.from;
        EXPECT_EQ(mirroredColorArray(swap.from, true, true), swap.both) << swap.from;
        EXPECT_EQ(mirroredColorArray(swap.from, false, false), swap.from);
    }
}

TEST(ColorArray, OtherCodesStay) {
    for (std::uint16_t code : {0, 1, 6, 7, 8, 9, 10, 11, 20, 0xFFFF}) {
        EXPECT_EQ(mirroredColorArray(code, true, true), code);
    }
}

TEST(ColorArray, MonoLikeIsOneAndTwelveToFifteen) {
    for (std::uint16_t code = 0; code < 25; ++code) {
        EXPECT_EQ(isMonoLike(code), code == 1 || code == 12 || code == 13 || code == 14 || code == 15)
            << code;
    }
}

}  // namespace
}  // namespace tavra
