#include "stages/bit_reduction.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace tavra {
namespace {

// A bit stream filled from the lowest bit of the first byte on.
class BitRow {
  public:
    void append(unsigned value, unsigned bits) {
        for (unsigned b = 0; b < bits; ++b, ++used_) {
            if (used_ % 8 == 0) bytes_.push_back(0);
            if ((value >> b & 1) != 0)
                bytes_.back() = static_cast<std::uint8_t>(bytes_.back() | 1u << (used_ % 8));
        }
    }
    const std::vector<std::uint8_t>& bytes() const { return bytes_; }

  private:
    std::vector<std::uint8_t> bytes_;
    unsigned used_ = 0;
};

struct Code {
    std::uint32_t transfer;
    unsigned bits;
    bool packed;
};

constexpr Code kCodes[] = {
    {2, 10, false},      {64, 10, false},      {4, 12, false},      {128, 12, false},
    {8, 14, false},      {256, 14, false},     {16, 16, false},     {512, 16, false},
    {0x10000, 10, true}, {0x100000, 10, true}, {0x20000, 12, true}, {0x200000, 12, true},
};

std::vector<std::uint8_t> frameOf(const std::vector<unsigned>& samples, std::uint32_t width,
                                  const Code& code) {
    std::vector<std::uint8_t> frame;
    for (std::size_t i = 0; i < samples.size(); i += width) {
        BitRow row;
        for (std::uint32_t x = 0; x < width; ++x) row.append(samples[i + x], code.packed ? code.bits : 16);
        frame.insert(frame.end(), row.bytes().begin(), row.bytes().end());
    }
    return frame;
}

TEST(BitReduction, KeepsTheUpperEightBitsOfEachSample) {
    std::mt19937 random(5);
    for (const Code& code : kCodes) {
        for (std::uint32_t height = 1; height <= 3; ++height) {
            for (std::uint32_t width = 1; width <= 45; ++width) {
                std::vector<unsigned> samples(width * height);
                std::vector<std::uint8_t> wanted;
                for (unsigned& s : samples) {
                    s = random() & ((1u << code.bits) - 1);
                    wanted.push_back(static_cast<std::uint8_t>(s >> (code.bits - 8)));
                }
                const std::vector<std::uint8_t> frame = frameOf(samples, width, code);
                std::vector<std::uint8_t> reduced(samples.size());
                ASSERT_TRUE(reduceTo8Bits(width, height, code.transfer, frame.data(), reduced.data()));
                ASSERT_EQ(reduced, wanted) << code.transfer << ", " << width << " x " << height;

                std::vector<std::uint8_t> inPlace = frame;
                ASSERT_TRUE(reduceTo8Bits(width, height, code.transfer, inPlace.data(), inPlace.data()));
                inPlace.resize(wanted.size());
                ASSERT_EQ(inPlace, wanted)
                    << "in place, " << code.transfer << ", " << width << " x " << height;
            }
        }
    }
}

TEST(BitReduction, InPlaceOverManyBlocks) {
    std::mt19937 random(6);
    for (const Code& code : kCodes) {
        constexpr std::uint32_t kWidth = 641, kHeight = 5;
        std::vector<unsigned> samples(kWidth * kHeight);
        for (unsigned& s : samples) s = random() & ((1u << code.bits) - 1);
        std::vector<std::uint8_t> frame = frameOf(samples, kWidth, code);
        ASSERT_TRUE(reduceTo8Bits(kWidth, kHeight, code.transfer, frame.data(), frame.data()));
        for (std::size_t i = 0; i < samples.size(); ++i) {
            ASSERT_EQ(frame[i], static_cast<std::uint8_t>(samples[i] >> (code.bits - 8)))
                << code.transfer << ", " << i;
        }
    }
}

TEST(BitReduction, WordsWithBitsAboveTheirDepthGiveTheLowByteOfTheShift) {
    const std::uint8_t word[] = {0xFC, 0xFF};  // 0xFFFC >> 2 is 0x3FFF
    std::uint8_t out = 0;
    EXPECT_TRUE(reduceTo8Bits(1, 1, 2, word, &out));
    EXPECT_EQ(out, 0xFF);
    const std::uint8_t other[] = {0x04, 0xF4};  // 0xF404 >> 2 is 0x3D01
    EXPECT_TRUE(reduceTo8Bits(1, 1, 64, other, &out));
    EXPECT_EQ(out, 0x01);
}

TEST(BitReduction, TruncatesWithoutRounding) {
    const std::uint8_t word[] = {0xFF, 0x01};  // 511 of 1023: 127.75
    std::uint8_t out = 0;
    EXPECT_TRUE(reduceTo8Bits(1, 1, 2, word, &out));
    EXPECT_EQ(out, 127);
}

TEST(BitReduction, UnknownCodesFailAndWriteNothing) {
    const std::uint8_t frame[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    for (std::uint32_t code :
         {0u, 1u, 3u, 32u, 1024u, 2048u, 4096u, 0x30000u, 0x110000u, 0x1000000u, 0x80000000u}) {
        std::uint8_t out[2] = {0xAA, 0xAA};
        EXPECT_FALSE(reduceTo8Bits(2, 1, code, frame, out)) << code;
        EXPECT_EQ(out[0], 0xAA);
        EXPECT_EQ(out[1], 0xAA);
    }
}

TEST(BitReduction, NoPixelsIsSuccess) {
    for (const Code& code : kCodes) {
        EXPECT_TRUE(reduceTo8Bits(0, 5, code.transfer, nullptr, nullptr)) << code.transfer;
        EXPECT_TRUE(reduceTo8Bits(5, 0, code.transfer, nullptr, nullptr)) << code.transfer;
    }
}

}  // namespace
}  // namespace tavra
