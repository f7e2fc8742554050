#include "packing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace tavra::usbd {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Samples = std::vector<std::uint16_t>;

Bytes pack(std::uint32_t code, std::uint32_t bits, const Samples& samples, std::uint32_t width) {
    Bytes out(packedRowBytes(code, width), 0xEE);
    packRow(code, bits, samples, out);
    return out;
}

TEST(Packing, EightBitsDropTheLowOnes) {
    for (const std::uint32_t code : {1u, 32u}) {
        EXPECT_EQ(pack(code, 12, {0x000, 0x00F, 0x010, 0xABC, 0xFFF}, 5), (Bytes{0, 0, 1, 0xAB, 0xFF}));
    }
}

TEST(Packing, WordsAreRightAlignedAndLittleEndian) {
    EXPECT_EQ(pack(2, 12, {0xABC}, 1), (Bytes{0xAF, 0x02})) << "10 bits";
    EXPECT_EQ(pack(64, 12, {0xABC}, 1), (Bytes{0xAF, 0x02}));
    EXPECT_EQ(pack(4, 12, {0xABC}, 1), (Bytes{0xBC, 0x0A})) << "12 bits";
    EXPECT_EQ(pack(128, 12, {0xABC}, 1), (Bytes{0xBC, 0x0A}));
    EXPECT_EQ(pack(8, 12, {0xABC}, 1), (Bytes{0xF0, 0x2A})) << "14 bits";
    EXPECT_EQ(pack(256, 16, {0xABCD}, 1), (Bytes{0xF3, 0x2A}));
    EXPECT_EQ(pack(16, 12, {0xABC}, 1), (Bytes{0xC0, 0xAB})) << "16 bits";
    EXPECT_EQ(pack(512, 16, {0xABCD}, 1), (Bytes{0xCD, 0xAB}));
}

TEST(Packing, TwelveBitsPackedByHand) {
    for (const std::uint32_t code : {0x20000u, 0x200000u}) {
        EXPECT_EQ(pack(code, 12, {0x321, 0x654}, 2), (Bytes{0x21, 0x43, 0x65}));
        EXPECT_EQ(pack(code, 12, {0x321}, 1), (Bytes{0x21, 0x03}));
    }
}

TEST(Packing, TenBitsPackedByHand) {
    // 1, 2, 3, 4 as ten bits each from the low bit: 1 | 2 << 10 | 3 << 20 | 4 << 30.
    for (const std::uint32_t code : {0x10000u, 0x100000u}) {
        EXPECT_EQ(pack(code, 10, {1, 2, 3, 4}, 4), (Bytes{0x01, 0x08, 0x30, 0x00, 0x01}));
    }
}

// The reader's own rule: a word at the cursor, shifted by the bit position; the cursor moves on by one byte
// or two.
TEST(Packing, PackedRowsAreReadBackByACursor) {
    std::mt19937 random(1);
    for (const std::uint32_t bits : {10u, 12u}) {
        const std::uint32_t code = bits == 10 ? 0x10000 : 0x20000;
        for (std::uint32_t width = 1; width < 40; ++width) {
            Samples samples(width);
            for (auto& sample : samples) sample = static_cast<std::uint16_t>(random() & ((1u << bits) - 1));
            Bytes row = pack(code, bits, samples, width);
            ASSERT_EQ(row.size(), (width * bits + 7) / 8);
            row.push_back(0);
            std::size_t cursor = 0;
            std::uint32_t position = 0;
            for (const std::uint16_t sample : samples) {
                const std::uint32_t word = row[cursor] | std::uint32_t{row[cursor + 1]} << 8;
                const std::uint32_t next = cursor + 2 < row.size() ? row[cursor + 2] : 0u;
                ASSERT_EQ(((word | next << 16) >> position) & ((1u << bits) - 1), sample);
                cursor += position + bits < 16 ? 1 : 2;
                position = (position + bits) % 8;
            }
        }
    }
}

TEST(Packing, BgrTurnsTheChannelsRound) {
    EXPECT_EQ(pack(1024, 8, {1, 2, 3, 4, 5, 6}, 2), (Bytes{3, 2, 1, 6, 5, 4}));
}

TEST(Packing, Bgr10HasItsChannelsFromTheLowEnd) {
    // R 0x201, G 0x102, B 0x003: 0x201 << 20 | 0x102 << 10 | 3 = 0x20140803.
    EXPECT_EQ(pack(2048, 10, {0x201, 0x102, 0x003}, 1), (Bytes{0x03, 0x08, 0x14, 0x20}));
}

TEST(Packing, FullRangeGreyHasNoColour) {
    EXPECT_EQ(pack(0x4000, 8, {0, 0, 0, 128, 128, 128, 255, 255, 255}, 3),
              (Bytes{0, 128, 128, 128, 128, 128, 255, 128, 128}));
}

TEST(Packing, LimitedRangeGoesFrom16To235) {
    EXPECT_EQ(pack(0x4000000, 8, {0, 0, 0, 255, 255, 255}, 2), (Bytes{16, 128, 128, 235, 128, 128}));
}

TEST(Packing, PrimariesByHand) {
    // BT.601 full range, pure red: Y = 76.245, Cb = 128 - 76.245 / 1.772 = 84.97, Cr = 128 + 178.755 / 1.402
    // = 255.5.
    EXPECT_EQ(pack(0x4000, 8, {255, 0, 0}, 1), (Bytes{76, 85, 255}));
    // BT.709 limited range, pure blue: Y = 16 + 219 * 0.0722 = 31.8, Cb = 240, Cr = 128 - 224 * 0.0722
    // / 1.5748 = 117.7.
    EXPECT_EQ(pack(0x4000000, 8, {0, 0, 255}, 1), (Bytes{32, 240, 118}));
}

TEST(Packing, ByteOrderOf422And411) {
    // Greys differ in luma only; the colour bytes stand where the layout says.
    const Samples greys{10, 10, 10, 20, 20, 20, 30, 30, 30, 40, 40, 40};
    EXPECT_EQ(pack(0x2000, 8, greys, 4), (Bytes{10, 128, 20, 128, 30, 128, 40, 128}));
    EXPECT_EQ(pack(0x1000, 8, greys, 4), (Bytes{10, 20, 128, 30, 40, 128}));
    // Red beside black: Cb (84.97 + 128) / 2 = 106.5, Cr (255.5 + 128) / 2 = 191.75.
    const Bytes pair = pack(0x2000, 8, {255, 0, 0, 0, 0, 0}, 2);
    EXPECT_EQ(pair[0], 76);
    EXPECT_NEAR(pair[1], 106, 1);
    EXPECT_EQ(pair[2], 0);
    EXPECT_EQ(pair[3], 192);
}

TEST(Packing, AGroupThatTheRowCutsOffGoesOnWithTheLastPixel) {
    EXPECT_EQ(pack(0x2000, 8, {50, 50, 50}, 1), (Bytes{50, 128}));
    EXPECT_EQ(pack(0x1000, 8, {50, 50, 50}, 1), (Bytes{50, 50}));
}

}  // namespace
}  // namespace tavra::usbd
