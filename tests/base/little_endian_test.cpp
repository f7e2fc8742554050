#include "base/little_endian.h"

#include <gtest/gtest.h>

namespace tavra {
namespace {

TEST(LittleEndian, LoadsTheLowByteFirst) {
    const std::uint8_t bytes[] = {0x01, 0x82, 0x03, 0xF4, 0x05, 0x06, 0x07, 0x88};
    EXPECT_EQ(loadLe16(bytes), 0x8201u);
    EXPECT_EQ(loadLe32(bytes), 0xF4038201u);
    EXPECT_EQ(loadLe64(bytes), 0x88070605F4038201u);
}

TEST(LittleEndian, StoresWhatItLoads) {
    std::uint8_t bytes[9] = {};
    storeLe16(bytes + 1, 0xABCD);
    EXPECT_EQ(bytes[1], 0xCD);
    EXPECT_EQ(bytes[2], 0xAB);
    storeLe32(bytes + 1, 0x89ABCDEF);
    EXPECT_EQ(loadLe32(bytes + 1), 0x89ABCDEFu);
    storeLe64(bytes + 1, 0x0123456789ABCDEF);
    EXPECT_EQ(loadLe64(bytes + 1), 0x0123456789ABCDEFu);
    EXPECT_EQ(bytes[0], 0);
}

}  // namespace
}  // namespace tavra
