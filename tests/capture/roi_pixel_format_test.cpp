#include "capture/roi_pixel_format.h"

#include <gtest/gtest.h>

#include <map>
#include <utility>

#include "base/pixel_format.h"

namespace tavra::test {
namespace {

using Key = std::pair<std::uint32_t, std::uint16_t>;

// The whole table, an entry a code.
const std::map<Key, std::uint32_t>& bySensor() {
    static const std::map<Key, std::uint32_t> codes{
        {{1, 1}, 0x01080001},        {{1, 2}, 0x01080009},        {{1, 3}, 0x01080008},
        {{1, 4}, 0x0108000A},        {{1, 5}, 0x0108000B},        {{1, 12}, 0x81080002},
        {{1, 13}, 0x81080003},       {{1, 14}, 0x81080004},       {{1, 15}, 0x81080005},
        {{1, 16}, 0x8108000E},       {{1, 17}, 0x8108000F},       {{1, 18}, 0x81080010},
        {{1, 19}, 0x81080011},       {{2, 1}, 0x01100003},        {{2, 2}, 0x0110000D},
        {{2, 3}, 0x0110000C},        {{2, 4}, 0x0110000E},        {{2, 5}, 0x0110000F},
        {{2, 12}, 0x81100006},       {{2, 13}, 0x81100007},       {{2, 14}, 0x81100008},
        {{2, 15}, 0x81100009},       {{2, 16}, 0x81100012},       {{2, 17}, 0x81100013},
        {{2, 18}, 0x81100014},       {{2, 19}, 0x81100015},       {{4, 1}, 0x01100005},
        {{4, 2}, 0x01100011},        {{4, 3}, 0x01100010},        {{4, 4}, 0x01100012},
        {{4, 5}, 0x01100013},        {{4, 12}, 0x8110000A},       {{4, 13}, 0x8110000B},
        {{4, 14}, 0x8110000C},       {{4, 15}, 0x8110000D},       {{4, 16}, 0x81100016},
        {{4, 17}, 0x81100017},       {{4, 18}, 0x81100018},       {{4, 19}, 0x81100019},
        {{8, 1}, 0x01100025},        {{16, 1}, 0x01100007},       {{16, 2}, 0x0110002F},
        {{16, 3}, 0x0110002E},       {{16, 4}, 0x01100030},       {{16, 5}, 0x01100031},
        {{0x10000, 1}, 0x010A0046},  {{0x10000, 2}, 0x010A0058},  {{0x10000, 3}, 0x010A0056},
        {{0x10000, 4}, 0x010A0054},  {{0x10000, 5}, 0x010A0052},  {{0x10000, 12}, 0x810A001A},
        {{0x10000, 13}, 0x810A001B}, {{0x10000, 14}, 0x810A001C}, {{0x10000, 15}, 0x810A001D},
        {{0x10000, 16}, 0x810A0022}, {{0x10000, 17}, 0x810A0023}, {{0x10000, 18}, 0x810A0024},
        {{0x10000, 19}, 0x810A0025}, {{0x20000, 1}, 0x010C0047},  {{0x20000, 2}, 0x010C0059},
        {{0x20000, 3}, 0x010C0057},  {{0x20000, 4}, 0x010C0055},  {{0x20000, 5}, 0x010C0053},
        {{0x20000, 12}, 0x810C001E}, {{0x20000, 13}, 0x810C001F}, {{0x20000, 14}, 0x810C0020},
        {{0x20000, 15}, 0x810C0021}, {{0x20000, 16}, 0x810C0026}, {{0x20000, 17}, 0x810C0027},
        {{0x20000, 18}, 0x810C0028}, {{0x20000, 19}, 0x810C0029},
    };
    return codes;
}

const std::map<std::uint32_t, std::uint32_t>& byCode() {
    static const std::map<std::uint32_t, std::uint32_t> codes{
        {32, 0x01080001},   {64, 0x01100003},    {128, 0x01100005},      {256, 0x01100025},
        {512, 0x01100007},  {1024, 0x02180015},  {2048, 0x02300019},     {4096, 0x020C005A},
        {8192, 0x0210003B}, {16384, 0x0218005B}, {0x100000, 0x010A0046}, {0x200000, 0x010C0047},
    };
    return codes;
}

bool isSensorCode(std::uint32_t transferBits) {
    return (transferBits & 0x3001F) != 0;
}

constexpr std::uint16_t kArrays[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,   10,     11,
                                     12, 13, 14, 15, 16, 17, 18, 19, 20, 255, 0x7FFF, 0xFFFF};

TEST(RoiPixelFormat, OfSensorSamplesFollowsTheColorArray) {
    for (std::uint32_t code : {0x1u, 0x2u, 0x4u, 0x8u, 0x10u, 0x10000u, 0x20000u}) {
        for (std::uint16_t array : kArrays) {
            const auto known = bySensor().find({code, array});
            const std::uint32_t expected = known != bySensor().end() ? known->second : 0;
            EXPECT_EQ(roiPixelFormat(code, array), expected) << code << ", array " << array;
        }
    }
}

TEST(RoiPixelFormat, OfTheOtherFormatsDoesNot) {
    for (const auto& [code, expected] : byCode()) {
        for (std::uint16_t array : kArrays) EXPECT_EQ(roiPixelFormat(code, array), expected) << code;
    }
}

TEST(RoiPixelFormat, OfUnknownCodesIsZero) {
    EXPECT_EQ(roiPixelFormat(0, 1), 0u);
    EXPECT_EQ(roiPixelFormat(3, 1), 0u);
    EXPECT_EQ(roiPixelFormat(0xFFFFFFFF, 1), 0u);
    for (unsigned bit = 0; bit < 32; ++bit) {
        const std::uint32_t code = 1u << bit;
        if (isSensorCode(code) || byCode().contains(code)) continue;
        for (std::uint16_t array : kArrays) EXPECT_EQ(roiPixelFormat(code, array), 0u) << std::hex << code;
    }
}

// By the bits the regions are found in the frame: they are those of the wire, one format aside.
TEST(RoiPixelFormat, TellsTheBitsThatAPixelTakes) {
    for (unsigned bit = 0; bit < 32; ++bit) {
        const std::uint32_t code = 1u << bit;
        const std::uint32_t format = roiPixelFormat(code, 1);
        if (format == 0) continue;
        EXPECT_EQ(format >> 16 & 0xFF, code == 2048 ? 48 : transferBitsStored(code)) << std::hex << code;
    }
}

}  // namespace
}  // namespace tavra::test
