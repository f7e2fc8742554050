#include "base/pixel_format.h"

#include <gtest/gtest.h>

namespace tavra {
namespace {

TEST(PixelFormat, BytesPerPixelByCodeAndOneForTheRest) {
    const struct {
        std::uint32_t code, bytes;
    } rows[] = {{1, 1},  {4, 3},   {8, 4},   {2, 2}, {16, 2}, {32, 2},
                {64, 2}, {256, 6}, {512, 8}, {0, 1}, {3, 1},  {128, 1}};
    for (const auto& row : rows) EXPECT_EQ(bytesPerPixel(row.code), row.bytes) << row.code;
}

TEST(PixelFormat, StrideIsPaddedToFourBytes) {
    EXPECT_EQ(paddedStride(1, 3), 4u);
    EXPECT_EQ(paddedStride(4, 3), 12u);
    EXPECT_EQ(paddedStride(5, 1), 8u);
    EXPECT_EQ(paddedStride(0, 4), 0u);
    EXPECT_EQ(paddedStride(0xFFFFFFFF, 1), 0x100000000u) << "past 32 bits";
    EXPECT_EQ(paddedStride(0xFFFFFFFF, 4), 0x3FFFFFFFCu);
}

TEST(PixelFormat, ByteSamplesAreCodes1And4And8) {
    for (std::uint32_t code : {1u, 4u, 8u}) EXPECT_TRUE(hasByteSamples(code)) << code;
    for (std::uint32_t code : {0u, 2u, 3u, 5u, 16u, 32u, 64u, 128u, 256u, 512u})
        EXPECT_FALSE(hasByteSamples(code)) << code;
}

TEST(PixelFormat, TransferBitsStoredByCode) {
    const struct {
        std::uint32_t code, bits;
    } rows[] = {{1, 8},          {2, 16},         {4, 16},        {8, 16},        {16, 16},
                {32, 8},         {64, 16},        {128, 16},      {256, 16},      {512, 16},
                {1024, 24},      {2048, 32},      {4096, 12},     {8192, 16},     {16384, 24},
                {0x10000, 10},   {0x20000, 12},   {0x100000, 10}, {0x200000, 12}, {0x1000000, 12},
                {0x2000000, 16}, {0x4000000, 24}, {0, 0},         {3, 0}};
    for (const auto& row : rows) EXPECT_EQ(transferBitsStored(row.code), row.bits) << row.code;
}

}  // namespace
}  // namespace tavra
