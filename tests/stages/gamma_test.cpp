#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include "platform/last_error.h"
#include "stages/gamma_fixture.h"

namespace tavra::test {
namespace {

// A power curve, entry by entry as the rule has it.
std::uint16_t powerEntry(int input, const Settings& s) {
    const int maximum = (1 << s.bits) - 1;
    const int half = s.bits == 0 ? 0 : 1 << (s.bits - 1);
    const int c = s.contrast < half - 1 ? s.contrast : half - 1;
    const int x = input + s.brightness;
    if (x > maximum) return 255;
    if (x < 0 || x <= c) return 0;
    if (x >= maximum - c) return static_cast<std::uint16_t>(maximum);
    const double t = (x - c) * (255.0 / (255.0 - 2.0 * c));
    if (t >= maximum) return static_cast<std::uint16_t>(maximum);
    const double y = std::trunc(std::pow(t / maximum, 100.0 / s.gamma) * maximum + 0.5);
    return static_cast<std::uint16_t>(std::min<double>(maximum, y));
}

Table identity(int bits) {
    Table entries(4096);
    for (int i = 0; i < 4096; ++i)
        entries[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(std::min(i, (1 << bits) - 1));
    return entries;
}

TEST_F(GammaStage, ANewCurveIsTheIdentityOfEightBitsAndOff) {
    for (std::uint8_t index = 0; index < 5; ++index) {
        EXPECT_EQ(settings(index), (Settings{0, 100, 0, 0, 8}));
        EXPECT_EQ(table(index), identity(8));
    }
}

TEST_F(GammaStage, GammaOneIsTheIdentity) {
    ASSERT_EQ(set(0, 1, 100), 0u);
    EXPECT_EQ(table(0), identity(8));
    EXPECT_EQ(settings(0), (Settings{1, 100, 0, 0, 8}));
}

TEST_F(GammaStage, TheNegativeRunsFromTheEnd) {
    ASSERT_EQ(set(2, 2, 100), 0u);
    for (unsigned i = 0; i < 256; ++i) EXPECT_EQ(table(2)[i], 255 - i);
    EXPECT_EQ(table(2)[256], 255) << "above the depth as before";
    EXPECT_EQ(settings(2), (Settings{2, 100, 0, 0, 8}));
}

TEST_F(GammaStage, KnownEntries) {
    ASSERT_EQ(set(0, 1, 200), 0u);  // the root: 255 * sqrt(i / 255)
    EXPECT_EQ(table(0)[1], 16);     // 15.97
    EXPECT_EQ(table(0)[64], 128);   // 127.75
    EXPECT_EQ(table(0)[128], 181);  // 180.67
    ASSERT_EQ(set(0, 1, 50), 0u);   // the square: i * i / 255
    EXPECT_EQ(table(0)[64], 16);    // 16.06
    EXPECT_EQ(table(0)[128], 64);   // 64.25
    EXPECT_EQ(table(0)[254], 253);  // 253.004
}

TEST_F(GammaStage, ContrastAtItsLargestIsAStepInTheMiddle) {
    for (const std::uint16_t contrast : {127, 128, 255}) {
        ASSERT_EQ(set(0, 1, 100, 0, contrast), 0u);
        for (unsigned i = 0; i < 256; ++i) EXPECT_EQ(table(0)[i], i < 128 ? 0 : 255) << i;
        EXPECT_EQ(settings(0).contrast, contrast) << "as it was given";
    }
}

TEST_F(GammaStage, ContrastCutsOffBothEnds) {
    ASSERT_EQ(set(0, 1, 100, 0, 51), 0u);  // slope 255 / 153
    EXPECT_EQ(table(0)[51], 0);
    EXPECT_EQ(table(0)[52], 2);     // 1.667
    EXPECT_EQ(table(0)[102], 85);   // 51 * 5 / 3
    EXPECT_EQ(table(0)[203], 253);  // 253.33
    EXPECT_EQ(table(0)[204], 255);
}

TEST_F(GammaStage, BrightnessPastTheEndGives255) {
    ASSERT_EQ(set(0, 1, 100, 50), 0u);
    for (unsigned i = 0; i < 256; ++i) EXPECT_EQ(table(0)[i], i < 205 ? i + 50 : 255) << i;
    ASSERT_EQ(set(0, 1, 100, 100, 0, 12), 0u);
    EXPECT_EQ(table(0)[3995], 4095);
    for (unsigned i = 3996; i < 4096; ++i) EXPECT_EQ(table(0)[i], 255) << i;
    ASSERT_EQ(set(0, 1, 100, -50), 0u);
    EXPECT_EQ(table(0)[50], 0);
    EXPECT_EQ(table(0)[51], 1);
    EXPECT_EQ(table(0)[255], 205);
    EXPECT_EQ(settings(0).brightness, -50);
}

TEST_F(GammaStage, EqualsTheRuleAtEveryDepth) {
    std::mt19937 random(34);
    for (std::uint16_t bits = 0; bits <= 12; ++bits) {
        for (int round = 0; round < 6; ++round) {
            Settings s;
            s.mode = 1 + round % 2;
            s.gamma = static_cast<std::uint16_t>(1 + random() % 400);
            s.brightness = static_cast<std::int16_t>(static_cast<int>(random() % 601) - 300);
            s.contrast = static_cast<std::uint16_t>(random() % 128);  // the slope stays positive
            s.bits = bits;
            Table wanted = table(1);
            const int maximum = (1 << bits) - 1;
            for (int i = 0; i <= maximum; ++i)
                wanted[static_cast<std::size_t>(s.mode == 1 ? i : maximum - i)] = powerEntry(i, s);
            ASSERT_EQ(set(1, s.mode, s.gamma, s.brightness, s.contrast, bits), 0u);
            ASSERT_EQ(table(1), wanted) << bits << " bits, gamma " << s.gamma;
            EXPECT_EQ(settings(1), s);
        }
    }
}

// With contrast from 128 on the slope is negative: the curve has no sensible value, but a defined one.
TEST_F(GammaStage, AnyContrastIsTakenAtTenAndTwelveBits) {
    ASSERT_EQ(set(0, 1, 100, 0, 200, 10), 0u);  // slope 255 / -145
    EXPECT_EQ(table(0)[200], 0);
    EXPECT_EQ(table(0)[201], 65535);  // -1.26 without its fraction
    EXPECT_EQ(table(0)[823], 1023);
    ASSERT_EQ(set(0, 1, 150, 0, 200, 10), 0u);
    EXPECT_EQ(table(0)[201], 0) << "no number";
    for (const std::uint16_t gamma : {1, 2, 3, 50, 65535}) {
        EXPECT_EQ(set(0, 1, gamma, -32768, 65535, 12), 0u);
        EXPECT_EQ(set(0, 2, gamma, 32767, 300, 11), 0u);
        EXPECT_EQ(set(0, 2, gamma, 0, 140, 12), 0u);
    }
}

TEST_F(GammaStage, ASmallerDepthKeepsTheEntriesAboveIt) {
    ASSERT_EQ(set(3, 0, 1, 1, 1, 12), 0u);
    EXPECT_EQ(table(3), identity(12));
    EXPECT_EQ(settings(3), (Settings{0, 100, 0, 0, 12}));
    ASSERT_EQ(set(3, 2, 100, 0, 0, 8), 0u);
    const Table entries = table(3);
    EXPECT_EQ(entries[0], 255);
    EXPECT_EQ(entries[255], 0);
    for (unsigned i = 256; i < 4096; ++i) ASSERT_EQ(entries[i], i);
    ASSERT_EQ(set(3, 0, 100, 0, 0, 10), 0u);
    EXPECT_EQ(table(3), identity(10)) << "the identity fills the table";
}

TEST_F(GammaStage, RefusedCallsChangeNothing) {
    ASSERT_EQ(set(4, 2, 220, 5, 6, 10), 0u);
    const Table before = table(4);
    platform::setLastSystemError(0);
    EXPECT_EQ(set(5, 1, 100), 87u);
    EXPECT_EQ(set(255, 0, 100), 87u);
    EXPECT_EQ(set(4, 0, 100, 0, 0, 13), 87u);
    EXPECT_EQ(set(4, 0, 100, 0, 0, 65535), 87u);
    EXPECT_EQ(set(4, 1, 0), 87u);
    EXPECT_EQ(set(4, 2, 0), 87u);
    EXPECT_EQ(set(4, 3, 100), 87u);
    EXPECT_EQ(set(4, 254, 100), 87u);
    EXPECT_EQ(set(4, 255, 100), 87u) << "no table";
    EXPECT_EQ(table(4), before);
    EXPECT_EQ(settings(4), (Settings{2, 220, 5, 6, 10}));
    std::uint8_t mode = 77;
    EXPECT_EQ(stage->GetGamma(5, &mode, nullptr, nullptr, nullptr, nullptr, nullptr), 87u);
    EXPECT_EQ(mode, 77);
    EXPECT_EQ(platform::lastSystemError(), 0u) << "the code is the result, and nothing else";
}

TEST_F(GammaStage, AnOwnTableIsReadBackAsItWasGiven) {
    std::vector<std::uint8_t> bytes(256);
    for (unsigned i = 0; i < 256; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + 3);
    ASSERT_EQ(setTable(0, bytes, 8), 0u);
    EXPECT_EQ(settings(0), (Settings{255, 100, 0, 0, 8}));
    std::vector<std::uint8_t> read(256);
    ASSERT_EQ(stage->GetGamma(0, nullptr, nullptr, nullptr, nullptr, read.data(), nullptr), 0u);
    EXPECT_EQ(read, bytes);
    std::vector<std::uint16_t> words(1024);
    std::iota(words.begin(), words.end(), std::uint16_t{65000});
    ASSERT_EQ(setTable(0, words, 10), 0u);
    EXPECT_EQ(settings(0), (Settings{255, 100, 0, 0, 10}));
    std::vector<std::uint16_t> readWords(1024);
    std::uint16_t bits = 10;
    ASSERT_EQ(stage->GetGamma(0, nullptr, nullptr, nullptr, nullptr, readWords.data(), &bits), 0u);
    EXPECT_EQ(readWords, words);
    // A few bits: as many bytes.
    ASSERT_EQ(setTable(0, std::vector<std::uint8_t>{9, 8, 7, 6}, 2), 0u);
    const Table now = table(0);
    EXPECT_EQ((Table(now.begin(), now.begin() + 5)), (Table{9, 8, 7, 6, words[4]}));
}

TEST_F(GammaStage, TheReaderChoosesTheFormOfTheTable) {
    ASSERT_EQ(set(1, 1, 100, 0, 0x1FF, 12), 0u);
    const Table entries = table(1);
    for (std::uint16_t asked = 0; asked <= 14; ++asked) {
        const std::size_t words = std::size_t{1} << std::min<unsigned>(asked, 12);
        std::vector<std::uint16_t> read(4097, 0xABCD);
        std::uint16_t bits = asked, contrast = 0xABCD;
        ASSERT_EQ(stage->GetGamma(1, nullptr, nullptr, nullptr, &contrast, read.data(), &bits), 0u);
        EXPECT_EQ(bits, 12) << "the depth of the curve";
        if (asked <= 8) {
            const auto* const bytes = static_cast<const std::uint8_t*>(static_cast<const void*>(read.data()));
            for (std::size_t i = 0; i < 256; ++i)
                ASSERT_EQ(bytes[i], static_cast<std::uint8_t>(entries[i])) << i;
            EXPECT_EQ(read[128], 0xABCD);
            EXPECT_EQ(contrast, 0xABFF) << "one byte";
        } else {
            ASSERT_TRUE(
                std::equal(read.begin(), read.begin() + static_cast<std::ptrdiff_t>(words), entries.begin()));
            EXPECT_EQ(read[words], 0xABCD);
            EXPECT_EQ(contrast, 0x1FF);
        }
    }
}

TEST_F(GammaStage, MonoAndQuadFramesHaveNoPositions) {
    setFive(*stage, false);
    for (const std::uint16_t array : {1, 12, 13, 14, 15, 16, 17, 18, 19}) {
        std::uint8_t bytes[4] = {0, 1, 2, 3};
        std::uint16_t words[4] = {0, 1, 2, 3};
        EXPECT_EQ(stage->ApplyRaw8(2, 2, 2, array, bytes), 0u);
        EXPECT_EQ(stage->ApplyRaw16(2, 2, 4, array, words), 0u);
        for (unsigned i = 0; i < 4; ++i) {
            EXPECT_EQ(bytes[i], i);
            EXPECT_EQ(words[i], i);
        }
    }
}

TEST_F(GammaStage, RawFramesStayWhileAllPositionsAreOff) {
    ASSERT_EQ(set(0, 2, 100), 0u);  // luminance does not count
    std::uint16_t words[4] = {0, 1, 300, 4000};
    EXPECT_EQ(stage->ApplyRaw16(4, 1, 0, 2, words), 0u);
    EXPECT_EQ(words[3], 4000);
    // One position on: the others go through their tables, which are the identity of eight bits.
    ASSERT_EQ(set(4, 2, 100), 0u);
    EXPECT_EQ(stage->ApplyRaw16(4, 1, 0, 2, words), 0u);
    EXPECT_EQ(words[1], 1);
    EXPECT_EQ(words[2], 255);
    EXPECT_EQ(words[3], 255);
}

TEST_F(GammaStage, AnOffLuminanceLooksAtNoFormat) {
    setFive(*stage, false);
    ASSERT_EQ(set(0, 0, 100), 0u);
    std::uint8_t byte = 9;
    std::uint16_t word = 9;
    for (const std::uint32_t format : {0u, 1u, 2u, 7u, 256u}) {
        EXPECT_EQ(stage->ApplyImage8(1, 1, 0, format, &byte), 0u);
        EXPECT_EQ(stage->ApplyImage16(1, 1, 0, format, &word), 0u);
    }
    EXPECT_EQ(byte, 9);
    EXPECT_EQ(word, 9);
}

TEST_F(GammaStage, UnknownFormatsAreRefused) {
    ASSERT_EQ(set(0, 2, 100), 0u);
    std::uint8_t bytes[4] = {9, 9, 9, 9};
    std::uint16_t words[4] = {9, 9, 9, 9};
    platform::setLastSystemError(0);
    for (const std::uint32_t format : {0u, 2u, 3u, 16u, 32u, 64u, 256u, 512u})
        EXPECT_EQ(stage->ApplyImage8(1, 1, 0, format, bytes), 87u) << format;
    for (const std::uint32_t format : {0u, 1u, 2u, 4u, 8u, 64u, 128u})
        EXPECT_EQ(stage->ApplyImage16(1, 1, 0, format, words), 87u) << format;
    for (unsigned i = 0; i < 4; ++i) {
        EXPECT_EQ(bytes[i], 9);
        EXPECT_EQ(words[i], 9);
    }
    EXPECT_EQ(platform::lastSystemError(), 0u) << "the code is the result, and nothing else";
    EXPECT_EQ(set(0, 0, 100), 0u) << "the mutex is free";
}

TEST_F(GammaStage, LuminanceMovesTheThreeChannelsTogether) {
    std::vector<std::uint8_t> entries(256);
    std::iota(entries.begin(), entries.end(), std::uint8_t{0});
    entries[10] = 20;   // up by 10
    entries[200] = 10;  // down by 190
    entries[30] = 255;  // up by 225
    ASSERT_EQ(setTable(0, entries, 8), 0u);
    std::uint8_t pixels[12] = {10, 10, 10, 200, 200, 200, 30, 30, 30, 0, 47, 9};
    ASSERT_EQ(stage->ApplyImage8(4, 1, 0, 4, pixels), 0u);
    // The last pixel: 0 + 28 + 3 = 31, which stays.
    const std::uint8_t wanted[12] = {20, 20, 20, 10, 10, 10, 255, 255, 255, 0, 47, 9};
    for (int i = 0; i < 12; ++i) EXPECT_EQ(pixels[i], wanted[i]) << i;
    std::uint8_t colored[8] = {255, 0, 3, 77, 40, 220, 233, 88};
    ASSERT_EQ(stage->ApplyImage8(2, 1, 0, 8, colored), 0u);
    // 29 + 0 + 1 = 30: up by 225. 5 + 129 + 70 = 204, which stays.
    const std::uint8_t wantedColored[8] = {255, 225, 228, 77, 40, 220, 233, 88};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(colored[i], wantedColored[i]) << i;
}

TEST_F(GammaStage, FramesWithoutPixelsAreDone) {
    setFive(*stage, false);
    EXPECT_EQ(stage->ApplyRaw8(0, 3, 0, 2, nullptr), 0u);
    EXPECT_EQ(stage->ApplyRaw16(3, 0, 0, 2, nullptr), 0u);
    EXPECT_EQ(stage->ApplyImage8(0, 3, 0, 4, nullptr), 0u);
    EXPECT_EQ(stage->ApplyImage16(0, 0, 0, 16, nullptr), 0u);
}

}  // namespace
}  // namespace tavra::test
