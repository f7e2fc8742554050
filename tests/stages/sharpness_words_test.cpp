// Sharpening of words: the arithmetic that stands for its table, and the kernels around the seams of their
// vectors, beside plain references.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "stages/plain_sharpness.h"
#include "stages/sharpness.h"
#include "stages/sharpness/corrections.h"

namespace tavra::test {
namespace {

constexpr std::uint16_t kGains[] = {0,   1,   3,   7,   30,  33,  50,  70,  99,   100,  101,
                                    150, 200, 255, 256, 300, 333, 400, 806, 1000, 4095, 65535};
constexpr std::uint16_t kCorings[] = {0, 1, 2, 7, 40, 255, 1000, 4095, 65535};

// For each excess over the coring.
std::vector<int> plainCorrections(std::uint16_t gain) {
    std::vector<int> corrections = {0};
    const float step = static_cast<float>(gain) / 100.0F;
    float product = 0;
    while (corrections.size() < 4096) {
        product += step;
        corrections.push_back(product >= 4095.0F ? 4095 : static_cast<int>(product + 0.5F));
    }
    return corrections;
}

// What a case is made with changes from one to the next, in steps that do not share a factor.
class Cases {
  public:
    void compareGrey(std::size_t width, std::uint16_t gain) {
        static constexpr std::uint32_t kFormats[] = {2, 16, 32, 64};
        compareNext({kFormats[count_ % 4], 0}, width, 1, gain);
    }

    void compareColor(std::size_t width, std::uint16_t gain) {
        compareNext({count_ % 2 == 0 ? 256u : 512u, 0}, width, count_ % 2 == 0 ? 3 : 4, gain);
    }

  private:
    void compareNext(Call call, std::size_t width, std::size_t channels, std::uint16_t gain) {
        const unsigned bits = 9 + random_() % 4;
        const std::size_t stride = (width * channels + 1) / 2 * 2 + random_() % 3 * 5;
        call.stride = static_cast<std::uint32_t>(2 * stride);
        // Samples above the maximum, up to it, and near to one another.
        const int most[] = {4095, (1 << bits) - 1, 60};
        const std::uint16_t coring =
            kCorings[count_ % 2 == 0 ? random_() % 4 : random_() % std::size(kCorings)];
        compare<std::uint16_t>({width, 3 + count_ % 3, stride, channels, bits}, call, {gain, coring},
                               most[random_() % 3], random_);
        ++count_;
    }

    std::mt19937 random_{21};
    std::size_t count_ = 0;
};

TEST(SharpnessOfWords, EqualsThePlainRuleForEveryKindOfGainAroundTheSeamsOfItsVectors) {
    Cases cases;
    for (const std::size_t width : {3, 4, 5, 15, 16, 17, 18, 19, 31, 32, 33, 34, 35, 50}) {
        for (const std::uint16_t gain : kGains) {
            cases.compareGrey(width, gain);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(SharpnessOfWords, EqualsThePlainRuleAtEveryWidth) {
    Cases cases;
    std::size_t gain = 0;
    for (std::size_t width = 3; width <= 100; ++width) {
        for (int i = 0; i < 3; ++i) cases.compareGrey(width, kGains[gain++ % std::size(kGains)]);
        cases.compareColor(width, kGains[gain++ % std::size(kGains)]);
        if (HasFatalFailure()) return;
    }
    for (const std::size_t width : {257, 258, 259, 273, 274, 275, 514, 515}) {  // around those of tiles
        cases.compareGrey(width, 70);
        cases.compareColor(width, 70);
        cases.compareColor(width, 40);
        if (HasFatalFailure()) return;
    }
}

// A row of single pixels on black, of all levels: their neighbours' mean is 4 >> 3 = 0. Or of levels below
// white, whose mean is white.
struct Spots {
    static constexpr std::size_t kWidth = 2 * 4096 + 1;

    std::vector<std::uint16_t> image;

    explicit Spots(bool onWhite) : image(3 * kWidth, onWhite ? 4095 : 0) {
        for (int d = 0; d < 4096; ++d) at(d) = static_cast<std::uint16_t>(onWhite ? 4095 - d : d);
    }

    std::uint16_t& at(int difference) { return image[kWidth + 1 + 2 * static_cast<std::size_t>(difference)]; }
};

TEST(SharpnessOfWords, EveryGainUpTo1000EqualsARunningSumAtEveryDifference) {
    const Spots black(false), white(true);
    CSharpness stage;
    for (std::uint16_t gain = 0; gain <= 1000; ++gain) {
        const std::vector<int> corrections = plainCorrections(gain);
        const int coring = gain % 3;
        stage.SetMode(1, gain, static_cast<std::uint16_t>(coring));
        Spots bright = black, dark = white;
        for (Spots* spots : {&bright, &dark}) {
            ASSERT_EQ(stage.Apply16(Spots::kWidth, 3, 2 * Spots::kWidth, 16, spots->image.data(), 12), 0u);
        }
        Spots brightWanted = black, darkWanted = white;
        for (int d = 0; d < 4096; ++d) {
            const int correction = corrections[static_cast<std::size_t>(std::max(d - coring, 0))];
            brightWanted.at(d) = static_cast<std::uint16_t>(std::min(d + correction, 4095));
            darkWanted.at(d) = static_cast<std::uint16_t>(std::max(4095 - d - correction, 0));
        }
        ASSERT_TRUE(bright.image == brightWanted.image) << gain;
        ASSERT_TRUE(dark.image == darkWanted.image) << gain;
    }
}

// By the table for differences of one sign.
std::vector<int> readTable(const std::int16_t* table, int sign) {
    std::vector<int> corrections;
    for (int d = 0; d < 4096; ++d) corrections.push_back(sign * table[sign * d]);
    return corrections;
}

std::vector<int> readLine(const lanes::PiecewiseLine& line) {
    const lanes::PiecewiseVectors vectors(line);
    std::vector<int> corrections;
    for (lanes::Words excess{}; corrections.size() < 4096;) {
        for (std::size_t i = 0; i < lanes::kVectorBytes / 2; ++i) {
            excess[i] = static_cast<std::uint16_t>(corrections.size() + i);
        }
        const lanes::Words correction = vectors.at(excess);
        for (std::size_t i = 0; i < lanes::kVectorBytes / 2; ++i) corrections.push_back(correction[i]);
    }
    return corrections;
}

// At the ends of an image a correction is cut off: so the corrections themselves, too.
void compareWhole(const sharpness::WordCorrections& words, std::uint16_t gain) {
    const std::vector<int> wanted = plainCorrections(gain);
    ASSERT_EQ(readTable(words.table(), 1), wanted) << gain;
    ASSERT_EQ(readTable(words.table(), -1), wanted) << gain;
    if (words.line() == nullptr) return;
    ASSERT_EQ(readLine(*words.line()), wanted) << gain;
}

TEST(SharpnessOfWords, TheCorrectionsOfEveryGainUpTo1000AreARunningSum) {
    sharpness::Corrections corrections;
    for (std::uint16_t gain = 0; gain <= 1000; ++gain) {
        corrections.build(gain, 0);
        compareWhole(corrections.words(), gain);
        if (HasFatalFailure()) return;
    }
}

TEST(SharpnessOfWords, TheCorrectionsOfGainsThatNobodyUsesAreARunningSum) {
    sharpness::Corrections corrections;
    for (unsigned gain = 1001; gain <= 65535; gain += gain < 65535 - 331 ? 331 : 1) {
        corrections.build(static_cast<std::uint16_t>(gain), 0);
        compareWhole(corrections.words(), static_cast<std::uint16_t>(gain));
        if (HasFatalFailure()) return;
    }
}

// In 70 * 5 = 350, 70 * 15 = 1050 and 70 * 35 = 2450 the running sum has the half, has lost it and has it
// again, below 32, where there is one piece for all.
TEST(SharpnessOfWords, EveryUsualGainButOneGoesByArithmetic) {
    for (std::uint16_t gain = 0; gain <= 400; ++gain) {
        const std::vector<int> corrections = plainCorrections(gain);
        sharpness::WordCorrectionTable table;
        std::copy(corrections.begin(), corrections.end(), table.begin());
        sharpness::CorrectionSums sums{};
        for (std::size_t i = 1; i < sums.size(); ++i)
            sums[i] = sums[i - 1] + static_cast<float>(gain) / 100.0F;
        lanes::PiecewiseLine line;
        ASSERT_EQ(sharpness::fitPieces(line, table, sums, gain), gain != 70) << gain;
        if (gain == 70) continue;
        for (std::uint16_t excess = 0; excess < 4096; ++excess) {
            ASSERT_EQ(line.at(excess), table[excess]) << gain << ", " << excess;
        }
    }
}

// Steps of the running sum: 0.7 five times is 3.5 in single precision, which rounds to 4; the same 10.5 of
// fifteen is a little less, which rounds to 10.
TEST(SharpnessOfWords, WhatARunningSumLosesIsPartOfTheResult) {
    CSharpness stage;
    stage.SetMode(1, 70, 0);
    std::uint16_t image[3 * 6] = {};
    image[6 + 1] = 5;
    image[6 + 4] = 15;
    ASSERT_EQ(stage.Apply16(6, 3, 0, 16, image, 12), 0u);
    EXPECT_EQ(image[6 + 1], 9) << "5 + 4";
    EXPECT_EQ(image[6 + 4], 25) << "15 + 10";
}

// The mean of the neighbours is (8 * 4000 + 4) >> 3 = 4000: 10 bits end at 1023, but only what becomes
// brighter is held to that.
TEST(SharpnessOfWords, SamplesAboveTheMaximumAreHeldToItWhereTheyBecomeBrighter) {
    CSharpness stage;
    stage.SetMode(1, 100, 5);
    const auto middle = [&stage](std::uint16_t value) {
        std::vector<std::uint16_t> image(20 * 3, 4000);
        image[20 + 10] = value;
        EXPECT_EQ(stage.Apply16(20, 3, 0, 16, image.data(), 10), 0u);
        return image[20 + 10];
    };
    EXPECT_EQ(middle(4006), 1023);
    EXPECT_EQ(middle(4005), 4005) << "within the coring";
    EXPECT_EQ(middle(3995), 3995) << "within the coring";
    EXPECT_EQ(middle(3994), 3993) << "3994 - 1";
    EXPECT_EQ(middle(3000), 2005) << "3000 - 995";
}

}  // namespace
}  // namespace tavra::test
