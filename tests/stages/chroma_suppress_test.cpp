#include "stages/chroma_suppress.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "stages/random_image.h"

namespace tavra::test {
namespace {

struct Bands {
    std::uint16_t lowThreshold, lowStrength, highThreshold, highStrength;
};

void set(CChromaSuppress& stage, const Bands& bands) {
    ASSERT_EQ(stage.SetLowThreshold(bands.lowThreshold), 0u);
    ASSERT_EQ(stage.SetLowStrength(bands.lowStrength), 0u);
    ASSERT_EQ(stage.SetHighThreshold(bands.highThreshold), 0u);
    ASSERT_EQ(stage.SetHighStrength(bands.highStrength), 0u);
}

using Pixel = std::array<std::uint8_t, 3>;

Pixel applied(CChromaSuppress& stage, Pixel pixel) {
    EXPECT_EQ(stage.Apply8(1, 1, 0, 4, pixel.data()), 0u);
    return pixel;
}

TEST(ChromaSuppress, ANewOneIsOff) {
    CChromaSuppress stage;
    std::uint16_t value = 99;
    EXPECT_EQ(stage.GetLowThreshold(&value), 0u);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(stage.GetHighThreshold(&value), 0u);
    EXPECT_EQ(value, 255);
    EXPECT_EQ(stage.GetLowStrength(&value), 0u);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(stage.GetHighStrength(&value), 0u);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(applied(stage, {0, 255, 0}), (Pixel{0, 255, 0}));
    EXPECT_EQ(applied(stage, {255, 0, 255}), (Pixel{255, 0, 255}));
}

TEST(ChromaSuppress, FieldsAreKept) {
    CChromaSuppress stage;
    set(stage, {1, 2, 3, 4});
    std::uint16_t value = 0;
    ASSERT_EQ(stage.GetLowThreshold(&value), 0u);
    EXPECT_EQ(value, 1);
    ASSERT_EQ(stage.GetLowStrength(&value), 0u);
    EXPECT_EQ(value, 2);
    ASSERT_EQ(stage.GetThreshold(&value), 0u);
    EXPECT_EQ(value, 3);
    ASSERT_EQ(stage.GetStrength(&value), 0u);
    EXPECT_EQ(value, 4);
    ASSERT_EQ(stage.SetThreshold(65535), 0u);
    ASSERT_EQ(stage.SetStrength(40000), 0u);
    ASSERT_EQ(stage.GetHighThreshold(&value), 0u);
    EXPECT_EQ(value, 65535);
    ASSERT_EQ(stage.GetHighStrength(&value), 0u);
    EXPECT_EQ(value, 40000);
    EXPECT_EQ(stage.GetLowStrength(nullptr), 87u);
    EXPECT_EQ(stage.GetThreshold(nullptr), 87u);
}

TEST(ChromaSuppress, MovesInProportionToTheLevelsPastTheThreshold) {
    CChromaSuppress stage;
    set(stage, {0, 0, 200, 255});
    // 12 + 117 + 72 = 201: k = 2 * 255 = 510. Blue rises by 96 * 510 / 16384 = 2.98, red falls by 41 * 510 /
    // 16384 = 1.28.
    EXPECT_EQ(applied(stage, {104, 200, 241}), (Pixel{106, 200, 240}));
    // 11 + 117 + 72 = 200: at the threshold nothing moves.
    EXPECT_EQ(applied(stage, {100, 200, 241}), (Pixel{100, 200, 241}));
}

TEST(ChromaSuppress, SuppressesWhollyOnceTheStrengthHasAddedUp) {
    CChromaSuppress stage;
    set(stage, {0, 0, 100, 255});
    // 164: 65 * 255 = 16575. 163: 64 * 255 = 16320, which leaves a little: 100 * 16320 / 16384 = 99.6.
    EXPECT_EQ(applied(stage, {164, 164, 164}), (Pixel{164, 164, 164}));
    EXPECT_EQ(applied(stage, {64, 164, 203}), (Pixel{164, 164, 164}));  // 7 + 96 + 61
    EXPECT_EQ(applied(stage, {64, 164, 200}), (Pixel{163, 164, 165}));  // 7 + 96 + 60: falls by 35.86
}

TEST(ChromaSuppress, ShadowsLoseColourBelowTheLowThreshold) {
    CChromaSuppress stage;
    set(stage, {100, 8192, 255, 0});
    EXPECT_EQ(applied(stage, {50, 100, 250}), (Pixel{50, 100, 250}));  // 6 + 59 + 75
    EXPECT_EQ(applied(stage, {0, 150, 40}), (Pixel{0, 150, 40}));      // 0 + 88 + 12 = 100
    EXPECT_EQ(applied(stage, {10, 148, 36}), (Pixel{148, 148, 148}));  // 1 + 87 + 11 = 99: 2 * 8192
    set(stage, {100, 4096, 255, 0});
    EXPECT_EQ(applied(stage, {10, 148, 36}), (Pixel{79, 148, 92}));  // half way
}

TEST(ChromaSuppress, AChannelThatEqualsGreenStays) {
    CChromaSuppress stage;
    set(stage, {0, 0, 0, 8192});
    EXPECT_EQ(applied(stage, {0, 0, 3}), (Pixel{0, 0, 0}));  // Y = 1: 2 * 8192
    EXPECT_EQ(applied(stage, {90, 90, 200}), (Pixel{90, 90, 90}));
    EXPECT_EQ(applied(stage, {200, 90, 90}), (Pixel{90, 90, 90}));
    set(stage, {0, 0, 90, 1});
    EXPECT_EQ(applied(stage, {255, 255, 0}), (Pixel{255, 255, 1}));  // Y = 179: 255 * 90 / 16384 = 1.4
}

TEST(ChromaSuppress, TheLargerOfBothSidesCounts) {
    CChromaSuppress stage;
    set(stage, {200, 10, 50, 4096});
    // Y = 53: low 148 * 10 = 1480, high 4 * 4096 = 16384.
    EXPECT_EQ(applied(stage, {0, 90, 0}), (Pixel{90, 90, 90}));
    set(stage, {200, 100, 50, 1});
    // Low 148 * 100 = 14800, high 4: 90 * 14800 / 16384 = 81.3.
    EXPECT_EQ(applied(stage, {0, 90, 0}), (Pixel{81, 90, 81}));
}

TEST(ChromaSuppress, ASideIsOffWithoutStrengthOrAtTheEnd) {
    CChromaSuppress stage;
    for (const Bands& bands : {Bands{0, 65535, 255, 65535}, Bands{255, 0, 0, 0}, Bands{0, 1, 256, 1},
                               Bands{0, 65535, 65535, 65535}}) {
        set(stage, bands);
        EXPECT_EQ(applied(stage, {255, 0, 255}), (Pixel{255, 0, 255}));
        std::uint8_t byte = 5;
        EXPECT_EQ(stage.Apply8(1, 1, 0, 77, &byte), 0u) << "no format is looked at";
    }
    // In words 255 is a threshold as any other, and 65535 is the end.
    set(stage, {0, 0, 255, 16384});
    std::uint16_t pixel[3] = {0, 4000, 100};
    EXPECT_EQ(stage.Apply16(1, 1, 0, 256, pixel), 0u);
    EXPECT_EQ(pixel[0], 4000);
    EXPECT_EQ(pixel[2], 4000);
    set(stage, {0, 0, 65535, 16384});
    EXPECT_EQ(stage.Apply16(1, 1, 0, 77, pixel), 0u);
}

TEST(ChromaSuppress, MonoSucceedsAndOtherFormatsAreRefused) {
    CChromaSuppress stage;
    set(stage, {255, 255, 0, 255});
    std::uint8_t bytes[4] = {1, 200, 3, 4};
    std::uint16_t words[4] = {1, 200, 3, 4};
    EXPECT_EQ(stage.Apply8(1, 1, 0, 1, bytes), 0u);
    for (const std::uint32_t format : {0u, 2u, 16u, 32u, 64u, 256u, 512u})
        EXPECT_EQ(stage.Apply8(1, 1, 0, format, bytes), 87u) << format;
    for (const std::uint32_t format : {2u, 16u, 32u, 64u})
        EXPECT_EQ(stage.Apply16(1, 1, 0, format, words), 0u) << format;
    for (const std::uint32_t format : {0u, 1u, 4u, 8u, 128u})
        EXPECT_EQ(stage.Apply16(1, 1, 0, format, words), 87u) << format;
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(words[0], 1);
    EXPECT_EQ(stage.Apply8(0, 4, 0, 4, nullptr), 0u);
    EXPECT_EQ(stage.Apply16(4, 0, 0, 256, nullptr), 0u);
}

// The rule for one pixel, in 64 bits.
template <class Sample>
void suppress(const Bands& bands, Sample* pixel) {
    const auto share = [](long long thousandths, int value) {
        return (thousandths * std::min(value, 4095) + 500) / 1000;
    };
    const long long y = share(299, pixel[2]) + share(587, pixel[1]) + share(114, pixel[0]);
    long long k = 0;
    if (y < bands.lowThreshold) k = (bands.lowThreshold - y + 1) * bands.lowStrength;
    if (y > bands.highThreshold) k = std::max(k, (y - bands.highThreshold + 1) * bands.highStrength);
    k = std::min<long long>(k, 16384);
    for (const int c : {0, 2}) {
        const long long d = (pixel[1] - pixel[c]) * k;
        if (d >= 1) {
            pixel[c] = static_cast<Sample>(
                std::min<long long>(pixel[c] + (d >> 14), sizeof(Sample) == 1 ? 255 : 65535));
        } else {
            pixel[c] = static_cast<Sample>(std::max<long long>(pixel[c] - (-d >> 14), 0));
        }
    }
}

// An image through the stage, beside the rule.
template <class Sample>
void compare(CChromaSuppress& stage, const Bands& bands, RandomImage<Sample> image) {
    const auto wanted = changedPixels(image, [&](Sample* pixel) { suppress(bands, pixel); });
    const bool four = image.pitch == 4;
    std::uint32_t result = 99;
    if constexpr (sizeof(Sample) == 1) {
        result = stage.Apply8(image.width, image.height, image.stride, four ? 8 : 4, image.samples.data());
    } else {
        result =
            stage.Apply16(image.width, image.height, image.stride, four ? 512 : 256, image.samples.data());
    }
    ASSERT_EQ(result, 0u);
    ASSERT_EQ(image.samples, wanted) << image.width << " x " << image.height << ", stride " << image.stride;
}

class RandomChroma : public testing::Test {
  protected:
    // `compareImages(stage, bands)` under so many settings of all kinds.
    template <class Compare>
    void underRandomBands(int rounds, Compare compareImages) {
        // Thresholds in the range of bytes, of 12 bits and beyond, strengths small, medium and enormous.
        constexpr unsigned kThresholds[] = {256, 300, 4200, 65536};
        constexpr unsigned kStrengths[] = {20, 256, 20000, 65536};
        const auto below = [this](unsigned end) { return static_cast<std::uint16_t>(random() % end); };
        CChromaSuppress stage;
        for (int round = 0; round < rounds; ++round) {
            const Bands bands = {below(kThresholds[random() % 4]), below(kStrengths[random() % 4]),
                                 below(kThresholds[random() % 4]), below(kStrengths[random() % 4])};
            set(stage, bands);
            compareImages(stage, bands);
            ASSERT_FALSE(HasFatalFailure()) << "round " << round;
        }
    }
    std::size_t pitch() { return 3 + random() % 2; }
    unsigned wordMaximum() { return random() % 2 == 0 ? 4095 : 65535; }

    std::mt19937 random{39};
};

TEST_F(RandomChroma, EqualsThePlainRuleOnRandomImages) {
    underRandomBands(1500, [this](CChromaSuppress& stage, const Bands& bands) {
        compare(stage, bands, randomImage<std::uint8_t>(random, pitch(), 255));
        compare(stage, bands, randomImage<std::uint16_t>(random, pitch(), wordMaximum()));
    });
}

TEST_F(RandomChroma, RowsThatOverlapAreWorkedOnFromTheTop) {
    underRandomBands(200, [this](CChromaSuppress& stage, const Bands& bands) {
        compare(stage, bands, overlappingImage<std::uint8_t>(random, pitch(), 255));
        compare(stage, bands, overlappingImage<std::uint16_t>(random, pitch(), wordMaximum()));
    });
}

TEST(ChromaSuppress, EveryLuminanceAndStrengthOfBytes) {
    CChromaSuppress stage;
    for (unsigned strength = 1; strength < 65536; strength = strength * 3 / 2 + 1) {
        const Bands bands = {120, static_cast<std::uint16_t>(strength), 121,
                             static_cast<std::uint16_t>(strength / 2)};
        set(stage, bands);
        std::vector<std::uint8_t> pixels(256 * 3), wanted;
        for (unsigned i = 0; i < 256; ++i) {
            pixels[3 * i] = static_cast<std::uint8_t>(255 - i);
            pixels[3 * i + 1] = static_cast<std::uint8_t>(i);
            pixels[3 * i + 2] = static_cast<std::uint8_t>(i ^ 85);
        }
        wanted = pixels;
        for (unsigned i = 0; i < 256; ++i) suppress(bands, &wanted[3 * i]);
        ASSERT_EQ(stage.Apply8(256, 1, 0, 4, pixels.data()), 0u);
        ASSERT_EQ(pixels, wanted) << strength;
    }
}

}  // namespace
}  // namespace tavra::test
