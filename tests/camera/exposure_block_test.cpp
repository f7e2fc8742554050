#include "camera/exposure_block.h"

#include <gtest/gtest.h>

namespace tavra {
namespace {

TEST(ExposureBlock, LinesAreSplitOverTheBlock) {
    const ExposureBlock block{0x12345678, 0x9ABC, 0xDEF0};
    const auto bytes = block.compose();
    const std::uint8_t head[] = {0x40, 0x21, 0x78, 0x56, 0xBC, 0x9A, 0xF0, 0xDE, 0, 0, 0x34, 0x12};
    for (std::size_t i = 0; i < bytes.size(); ++i) EXPECT_EQ(bytes[i], i < sizeof head ? head[i] : 0) << i;
}

TEST(ExposureBlock, ReadsItsFieldsFromTheSamePlaces) {
    std::array<std::uint8_t, 64> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i);
    const ExposureBlock block = ExposureBlock::parse(bytes);
    EXPECT_EQ(block.lines, 0x0B0A0302u);
    EXPECT_EQ(block.clocks, 0x0504);
    EXPECT_EQ(block.gain, 0x0706);
}

}  // namespace
}  // namespace tavra
