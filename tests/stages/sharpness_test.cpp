// Sharpening beside a plain reference, one pixel at a time straight from the rule, and its edges by hand.
#include "stages/sharpness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "platform/last_error.h"
#include "stages/factory.h"
#include "stages/plain_sharpness.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

// A setting that may be anything; most are near what people use.
Setting randomSetting(std::mt19937& random) {
    Setting setting{};
    setting.gain = static_cast<std::uint16_t>(random() % (random() % 4 == 0 ? 65536 : 400));
    setting.coring = static_cast<std::uint16_t>(random() % (random() % 8 == 0 ? 5000 : 40));
    return setting;
}

template <class Sample>
void compareRandom(std::mt19937& random, std::uint32_t format, unsigned bits, int maximum) {
    Layout layout{};
    layout.width = 1 + random() % (random() % 8 == 0 ? 300 : 40);
    layout.height = 1 + random() % 9;
    layout.channels = channelsOf(format);
    layout.bits = bits;
    const std::size_t row = layout.width * layout.channels;
    const bool isWordFormat = format != 1 && format != 4 && format != 8;
    const std::size_t sampleBytes = isWordFormat ? 2 : sizeof(Sample);
    layout.stride = (row * sampleBytes + 3) / 4 * 4 / sizeof(Sample);
    Call call{format, 0};
    if (random() % 2 == 0) {
        layout.stride = row + random() % 9;
        call.stride = static_cast<std::uint32_t>(layout.stride * sizeof(Sample));
    }
    compare<Sample>(layout, call, randomSetting(random), maximum, random);
}

TEST(Sharpness, BytesEqualThePlainRule) {
    std::mt19937 random(3);
    for (int i = 0; i < 240; ++i) {
        for (std::uint32_t format : {1, 4, 8}) {
            compareRandom<std::uint8_t>(random, format, 8, 255);
            if (HasFatalFailure()) return;
        }
    }
}

// Their formats are those of words, in rows as long as those.
TEST(Sharpness, BytesOfADeeperDepthKeepTheLowByteOfEverySum) {
    std::mt19937 random(4);
    for (int i = 0; i < 100; ++i) {
        for (std::uint32_t format : {2, 16, 32, 64, 256, 512}) {
            compareRandom<std::uint8_t>(random, format, 9 + random() % 4, 255);
            if (HasFatalFailure()) return;
        }
    }
    // 200 among 100s and a gain of 100: 100 more are 44 more than 256.
    std::vector<std::uint8_t> image(25, 100);
    image[12] = 200;
    CSharpness stage;
    stage.SetMode(1, 100, 0);
    ASSERT_EQ(stage.Apply8(5, 5, 5, 2, image.data(), 12), 0u);
    EXPECT_EQ(image[12], 44);
}

TEST(Sharpness, WordsEqualThePlainRuleAtEveryDepth) {
    std::mt19937 random(5);
    for (int i = 0; i < 60; ++i) {
        for (std::uint32_t format : {2, 16, 32, 64, 256, 512}) {
            const unsigned bits = 9 + random() % 4;
            // Now and then with samples above the depth's maximum.
            compareRandom<std::uint16_t>(random, format, bits, i % 5 == 0 ? 4095 : (1 << bits) - 1);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(Sharpness, EightBitsHeldInWordsHaveTheFormatsOfBytesAndRowsOfWords) {
    std::mt19937 random(7);
    for (int i = 0; i < 60; ++i) {
        for (std::uint32_t format : {1, 4, 8}) {
            compareRandom<std::uint16_t>(random, format, 8, 255);
            if (HasFatalFailure()) return;
        }
    }
}

// The work goes in vectors of 16 or 32 columns and tiles of 256: widths around their seams. A gain of 300
// goes by table.
TEST(Sharpness, EqualsThePlainRuleAroundTheSeamsOfItsVectorsAndTiles) {
    std::mt19937 random(9);
    for (std::size_t width = 3; width <= 260; width += width == 100 ? 154 : 1) {
        for (std::uint32_t format : {1, 4, 8}) {
            const std::size_t channels = channelsOf(format);
            compare<std::uint8_t>({width, 4, (width * channels + 3) / 4 * 4, channels, 8}, {format, 0},
                                  {90, 4}, 255, random);
            compare<std::uint8_t>({width, 4, (width * channels + 3) / 4 * 4, channels, 8}, {format, 0},
                                  {300, 4}, 255, random);
            if (HasFatalFailure()) return;
        }
    }
}

// Every gain that people use, at every difference there is: each level alone on black, or on white.
TEST(Sharpness, EveryUsualGainEqualsThePlainRuleAtEveryDifferenceOfBytes) {
    constexpr std::size_t kApart = 3, kWidth = 256 * kApart + 2;
    for (std::uint16_t gain = 1; gain <= 400; ++gain) {
        const std::uint32_t format = gain % 4 < 2 ? 1 : 4;
        const std::size_t channels = channelsOf(format);
        const Layout layout = {kWidth, 3, kWidth * channels, channels, 8};
        std::vector<int> image(layout.stride * 3, gain % 2 == 0 ? 0 : 255);
        for (std::size_t level = 0; level < 256; ++level) {
            int* const pixel = image.data() + layout.stride + (1 + kApart * level) * channels;
            std::fill_n(pixel, channels, static_cast<int>(level));
        }
        const Setting setting = {gain, static_cast<std::uint16_t>(gain % 3)};
        std::vector<std::uint8_t> samples(image.begin(), image.end());
        CSharpness stage;
        stage.SetMode(1, setting.gain, setting.coring);
        ASSERT_EQ(apply(stage, layout, {format, static_cast<std::uint32_t>(layout.stride)}, samples.data()),
                  0u);
        const std::vector<int> wanted = plainSharpen(image, layout, setting, true);
        ASSERT_TRUE(std::equal(samples.begin(), samples.end(), wanted.begin())) << gain;
    }
}

// Samples beyond 12 bits are the caller's mistake; what comes out is not told, but nothing else is touched.
TEST(Sharpness, WordsBeyondTwelveBitsAreReadWithoutHarm) {
    std::mt19937 random(11);
    CSharpness stage;
    stage.SetMode(1, 500, 0);
    for (std::uint32_t format : {2, 256, 512}) {
        std::vector<std::uint16_t> image(std::size_t{20} * 10 * channelsOf(format));
        for (std::uint16_t& sample : image) sample = static_cast<std::uint16_t>(random());
        const std::vector<std::uint16_t> before = image;
        EXPECT_EQ(stage.Apply16(20, 10, 0, format, image.data(), 12), 0u);
        const std::size_t row = 20 * channelsOf(format);
        EXPECT_TRUE(
            std::equal(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(row), before.begin()));
        EXPECT_TRUE(std::equal(image.end() - static_cast<std::ptrdiff_t>(row), image.end(),
                               before.end() - static_cast<std::ptrdiff_t>(row)));
    }
}

// 5 x 5 bytes with one value in the middle of another.
std::vector<std::uint8_t> spot(std::uint8_t around, std::uint8_t middle) {
    std::vector<std::uint8_t> image(8 * 5, around);  // default stride
    image[2 * 8 + 2] = middle;
    return image;
}

std::uint8_t sharpenedMiddle(std::uint8_t around, std::uint8_t middle, std::uint16_t gain,
                             std::uint16_t coring) {
    CSharpness stage;
    stage.SetMode(1, gain, coring);
    std::vector<std::uint8_t> image = spot(around, middle);
    EXPECT_EQ(stage.Apply8(5, 5, 0, 1, image.data(), 8), 0u);
    return image[2 * 8 + 2];
}

TEST(Sharpness, AFlatImageStaysWhateverTheGain) {
    for (std::uint16_t gain : {0, 1, 100, 65535}) {
        CSharpness stage;
        stage.SetMode(1, gain, 0);
        std::vector<std::uint8_t> bytes(40 * 9, 77);
        std::vector<std::uint16_t> words(40 * 9, 1000);
        for (std::uint32_t format : {1, 4, 8}) EXPECT_EQ(stage.Apply8(10, 9, 0, format, bytes.data(), 8), 0u);
        for (std::uint32_t format : {2, 256, 512})
            EXPECT_EQ(stage.Apply16(10, 9, 0, format, words.data(), 12), 0u);
        EXPECT_EQ(bytes, std::vector<std::uint8_t>(40 * 9, 77));
        EXPECT_EQ(words, std::vector<std::uint16_t>(40 * 9, 1000));
    }
}

// Neighbours sum to 0: the mean is 4 >> 3 = 0, d = 100. A neighbour of the spot has a mean of
// (100 + 4) >> 3 = 13 and falls by 13 from 0.
TEST(Sharpness, ABrightSpotIsDoubledAndItsNeighboursStayDark) {
    CSharpness stage;
    stage.SetMode(1, 100, 0);
    std::vector<std::uint8_t> image = spot(0, 100);
    ASSERT_EQ(stage.Apply8(5, 5, 0, 1, image.data(), 8), 0u);
    EXPECT_EQ(image, spot(0, 200));
}

TEST(Sharpness, ADifferenceOfTheCoringStaysAndOneMoreCounts) {
    EXPECT_EQ(sharpenedMiddle(100, 110, 300, 10), 110);
    EXPECT_EQ(sharpenedMiddle(100, 111, 300, 10), 114);
    EXPECT_EQ(sharpenedMiddle(100, 111, 149, 10), 112) << "1.49 rounds to 1";
    EXPECT_EQ(sharpenedMiddle(100, 111, 150, 10), 113) << "1.5 rounds to 2";
    EXPECT_EQ(sharpenedMiddle(100, 90, 300, 10), 90);
    EXPECT_EQ(sharpenedMiddle(100, 89, 300, 10), 86);
}

TEST(Sharpness, AGainOf200DoublesTheCorrectionAndHalfOfItHalves) {
    EXPECT_EQ(sharpenedMiddle(100, 120, 100, 0), 140) << "120 + 20";
    EXPECT_EQ(sharpenedMiddle(100, 120, 200, 0), 160) << "120 + 40";
    EXPECT_EQ(sharpenedMiddle(100, 120, 50, 0), 130) << "120 + 10";
    EXPECT_EQ(sharpenedMiddle(100, 90, 200, 0), 70) << "90 - 20";
}

TEST(Sharpness, SaturatesAtBothEnds) {
    EXPECT_EQ(sharpenedMiddle(50, 150, 200, 0), 255) << "150 + 200";
    EXPECT_EQ(sharpenedMiddle(150, 100, 200, 0), 0) << "100 - 100";
    EXPECT_EQ(sharpenedMiddle(150, 99, 200, 0), 0) << "99 - 102";
}

// A gain of 300 on a difference of 100 gives 300, whose low byte is 44.
TEST(Sharpness, InBytesTheLowByteOfACorrectionActs) {
    EXPECT_EQ(sharpenedMiddle(0, 100, 300, 0), 144);
    EXPECT_EQ(sharpenedMiddle(200, 100, 300, 0), 56);
}

// A grey pixel of B = G = R: the luminance is the value itself.
TEST(Sharpness, InColourBytesOnlyBrighteningTakesTheLowByte) {
    CSharpness stage;
    stage.SetMode(1, 300, 0);
    for (std::uint32_t format : {4, 8}) {
        const std::size_t pixel = format == 4 ? 3 : 4, stride = format == 4 ? 12 : 12;
        std::vector<std::uint8_t> image(stride * 3, 0);
        std::uint8_t* const middle = image.data() + stride + pixel;
        std::fill_n(middle, 3, 100);
        ASSERT_EQ(stage.Apply8(3, 3, 0, format, image.data(), 8), 0u);
        EXPECT_EQ(middle[0], 144);
        EXPECT_EQ(middle[1], 144);
        EXPECT_EQ(middle[2], 144);
        std::fill(image.begin(), image.end(), 200);
        std::fill_n(middle, 3, 100);
        ASSERT_EQ(stage.Apply8(3, 3, 0, format, image.data(), 8), 0u);
        EXPECT_EQ(middle[0], 0) << "100 - 300";
        EXPECT_EQ(middle[1], 0);
        EXPECT_EQ(middle[2], 0);
    }
}

TEST(Sharpness, InWordsTheWholeCorrectionActs) {
    CSharpness stage;
    stage.SetMode(1, 300, 0);
    std::uint16_t image[3 * 4] = {};
    image[4 + 1] = 100;
    ASSERT_EQ(stage.Apply16(3, 3, 0, 2, image, 12), 0u);
    EXPECT_EQ(image[4 + 1], 400);
    image[4 + 1] = 1000;
    ASSERT_EQ(stage.Apply16(3, 3, 0, 2, image, 12), 0u);
    EXPECT_EQ(image[4 + 1], 4000);
    image[4 + 1] = 2000;
    ASSERT_EQ(stage.Apply16(3, 3, 0, 2, image, 12), 0u);
    EXPECT_EQ(image[4 + 1], 4095) << "the correction ends at 4095, the sample too";
    image[4 + 1] = 500;
    ASSERT_EQ(stage.Apply16(3, 3, 0, 2, image, 10), 0u);
    EXPECT_EQ(image[4 + 1], 1023);
}

TEST(Sharpness, ACoringAboveEveryDifferenceChangesNothing) {
    EXPECT_EQ(sharpenedMiddle(0, 255, 65535, 255), 255);
    EXPECT_EQ(sharpenedMiddle(0, 200, 65535, 4095), 200);
    EXPECT_EQ(sharpenedMiddle(0, 200, 65535, 65535), 200);
}

TEST(Sharpness, ModeZeroLooksAtNothing) {
    CSharpness stage;
    EXPECT_EQ(stage.Apply8(100, 100, 0, 12345, nullptr, 99), 0u) << "as it is made";
    stage.SetMode(1, 100, 0);
    stage.SetMode(0, 100, 0);
    EXPECT_EQ(stage.Apply8(100, 100, 0, 12345, nullptr, 99), 0u);
    EXPECT_EQ(stage.Apply16(100, 100, 0, 12345, nullptr, 99), 0u);
}

TEST(Sharpness, AnyOtherModeIsOn) {
    for (std::uint8_t mode : {1, 2, 255}) {
        CSharpness stage;
        stage.SetMode(mode, 100, 0);
        std::vector<std::uint8_t> image = spot(0, 50);
        stage.Apply8(5, 5, 0, 1, image.data(), 8);
        EXPECT_EQ(image, spot(0, 100));
    }
}

TEST(Sharpness, NothingChangesBelowThreeRowsOrColumns) {
    CSharpness stage;
    stage.SetMode(1, 100, 0);
    for (const auto& [width, height] : {std::pair{0u, 0u},
                                        {0u, 5u},
                                        {5u, 0u},
                                        {1u, 1u},
                                        {2u, 2u},
                                        {1u, 7u},
                                        {7u, 1u},
                                        {2u, 7u},
                                        {7u, 2u}}) {
        for (std::uint32_t format : {1, 4, 8}) {
            std::vector<std::uint8_t> image(256);
            for (std::size_t i = 0; i < image.size(); ++i) image[i] = static_cast<std::uint8_t>(i * 91);
            const std::vector<std::uint8_t> before = image;
            EXPECT_EQ(stage.Apply8(width, height, 0, format, image.data(), 8), 0u);
            EXPECT_EQ(image, before) << width << " x " << height;
        }
    }
}

TEST(Sharpness, AnotherDepthOrFormatIsABadArgument) {
    CSharpness stage;
    stage.SetMode(1, 100, 0);
    std::vector<std::uint8_t> bytes = spot(0, 100);
    std::vector<std::uint16_t> words(64, 3);
    const auto refused = [](std::uint32_t result) {
        const bool told = platform::lastSystemError() == 87;
        platform::setLastSystemError(0);
        return result == 87 && told;
    };
    platform::setLastSystemError(0);
    for (std::uint16_t bits : {0, 1, 7, 13, 16, 65535}) {
        EXPECT_TRUE(refused(stage.Apply8(5, 5, 0, 1, bytes.data(), bits))) << bits;
        EXPECT_TRUE(refused(stage.Apply16(5, 5, 0, 2, words.data(), bits))) << bits;
    }
    for (std::uint32_t format : {0, 2, 3, 5, 16, 32, 64, 128, 256, 512, 1024}) {
        EXPECT_TRUE(refused(stage.Apply8(5, 5, 0, format, bytes.data(), 8))) << format;
        EXPECT_TRUE(refused(stage.Apply16(5, 5, 0, format, words.data(), 8))) << format;
    }
    for (std::uint32_t format : {0, 1, 3, 4, 8, 128, 1024}) {
        EXPECT_TRUE(refused(stage.Apply16(5, 5, 0, format, words.data(), 12))) << format;
        EXPECT_TRUE(refused(stage.Apply8(5, 5, 0, format, bytes.data(), 9))) << format;
    }
    EXPECT_EQ(bytes, spot(0, 100));
    EXPECT_EQ(words, std::vector<std::uint16_t>(64, 3));
}

TEST(Sharpness, WithoutMemoryForItsLinesNothingIsWritten) {
    CSharpness stage;
    stage.SetMode(1, 100, 0);
    std::vector<std::uint8_t> bytes = spot(0, 100);
    std::vector<std::uint16_t> words(5 * 6, 0);
    words[2 * 6 + 2] = 100;
    const std::vector<std::uint16_t> wordsBefore = words;
    platform::setLastSystemError(0);
    std::uint32_t results[2];
    {
        const FailAllocationsFrom fromEightBytesAPixel(8 * 5);
        results[0] = stage.Apply8(5, 5, 0, 1, bytes.data(), 8);
    }
    EXPECT_EQ(platform::lastSystemError(), 8u);
    platform::setLastSystemError(0);
    {
        const FailAllocationsFrom fromTenBytesAPixel(10 * 5);
        results[1] = stage.Apply16(5, 5, 0, 2, words.data(), 12);
    }
    EXPECT_EQ(platform::lastSystemError(), 8u);
    EXPECT_EQ(results[0], 8u);
    EXPECT_EQ(results[1], 8u);
    EXPECT_EQ(bytes, spot(0, 100));
    EXPECT_EQ(words, wordsBefore);
    EXPECT_EQ(stage.Apply8(5, 5, 0, 1, bytes.data(), 8), 0u) << "the failure leaves the stage as it was";
    EXPECT_EQ(bytes, spot(0, 200));
}

// Eight bytes a pixel of width, and two vectors more, since lines end with whole ones.
TEST(Sharpness, TheLineStoreIsAllThatIsAllocated) {
    CSharpness stage;
    stage.SetMode(1, 100, 0);
    std::vector<std::uint8_t> image(4 * 100 * 10, 1);
    const FailAllocationsFrom more(8 * (100 + 2 * 32) + 1);
    for (std::uint32_t format : {1, 4, 8}) EXPECT_EQ(stage.Apply8(100, 10, 0, format, image.data(), 8), 0u);
    EXPECT_EQ(FailAllocationsFrom::failures(), 0u);
}

TEST(Sharpness, TheFactoryMakesIt) {
    auto* const stage = static_cast<ISharpness*>(CreateStageObject(16));
    ASSERT_NE(stage, nullptr);
    EXPECT_EQ(stage->SetMode(1, 100, 0), 0u);
    std::vector<std::uint8_t> image = spot(0, 100);
    EXPECT_EQ(stage->Apply8(5, 5, 0, 1, image.data(), 8), 0u);
    EXPECT_EQ(image, spot(0, 200));
    EXPECT_EQ(stage->AddRef(), 2u);
    EXPECT_EQ(stage->Release(), 1u);
    EXPECT_EQ(stage->Release(), 0u);
}

TEST(Sharpness, SettingsAreGivenBackWithTheModeOffToo) {
    CSharpness stage;
    std::uint8_t mode = 9;
    std::uint16_t gain = 9, coring = 9;
    EXPECT_EQ(stage.GetMode(&mode, &gain, &coring), 0u);
    EXPECT_EQ(mode, 0);
    EXPECT_EQ(gain, 0);
    EXPECT_EQ(coring, 0);
    EXPECT_EQ(stage.SetMode(0, 65535, 4711), 0u);
    stage.GetMode(&mode, &gain, &coring);
    EXPECT_EQ(mode, 0);
    EXPECT_EQ(gain, 65535);
    EXPECT_EQ(coring, 4711);
}

TEST(Sharpness, ANewSettingReplacesTheCorrections) {
    CSharpness stage;
    stage.SetMode(1, 1000, 0);
    stage.SetMode(1, 100, 60);
    std::vector<std::uint8_t> image = spot(0, 100);
    stage.Apply8(5, 5, 0, 1, image.data(), 8);
    EXPECT_EQ(image, spot(0, 140)) << "100 + (100 - 60)";
}

}  // namespace
}  // namespace tavra::test
