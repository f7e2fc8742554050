#include "stages/color_matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "platform/last_error.h"
#include "stages/random_image.h"

namespace tavra::test {
namespace {

using Matrix = std::array<std::int16_t, 12>;

constexpr Matrix kIdentity = {100, 0, 0, 0, 0, 100, 0, 0, 0, 0, 100, 0};
constexpr Matrix kNothing = {};

// The rule, written down plainly: nine sums that run along with the input level, in single precision.
class Reference {
  public:
    Reference(const Matrix& matrix, int hue, int saturation) {
        const float h = static_cast<float>(hue) / 10.0f * 3.14159265358979f / 180.0f;
        const float s = static_cast<float>(std::sin(double{h})), c = static_cast<float>(std::cos(double{h}));
        const float S = static_cast<float>(saturation) / 100.0f;
        const float h00 = (0.7011f * c + 0.2989f * s) * S + 0.2989f;
        const float h01 = ((s - c) * S + 1.0f) * 0.5866f;
        const float h02 = 0.1145f - (0.1145f * c + 0.8855f * s) * S;
        const float h20 = (0.7011f * s - 0.2989f * c) * S + 0.2989f;
        const float h21 = (1.0f - (c + s) * S) * 0.5866f;
        const float h22 = (0.8855f * c - 0.1145f * s) * S + 0.1145f;
        const float h10 = (1.0f - h00) * 0.2989f / 0.5866f - h20 * 0.1145f / 0.5866f;
        const float h11 = 1.0f - h01 * 0.2989f / 0.5866f - h21 * 0.1145f / 0.5866f;
        const float h12 = (1.0f - h22) * 0.1145f / 0.5866f - h02 * 0.2989f / 0.5866f;
        const float H[3][3] = {{h00, h01, h02}, {h10, h11, h12}, {h20, h21, h22}};
        for (int out = 0; out < 3; ++out) {
            for (int in = 0; in < 3; ++in) {
                float coefficient = 0;
                for (int k = 0; k < 3; ++k) {
                    const float product =
                        H[out][k] *
                        (static_cast<float>(matrix[static_cast<std::size_t>(4 * k + in)]) / 100.0f);
                    coefficient = k == 0 ? product : coefficient + product;
                }
                const float offset =
                    in == 0 ? static_cast<float>(matrix[static_cast<std::size_t>(4 * out + 3)]) / 100.0f : 0;
                float sum = coefficient;
                for (int level = 0; level < 4096; ++level) {
                    tables_[out][in][level] = toInteger(offset + sum);
                    sum += coefficient;
                }
            }
        }
    }

    template <class Sample>
    void change(Sample* pixel, std::uint32_t limit) const {
        const Sample channels[3] = {pixel[2], pixel[1], pixel[0]};  // R, G, B
        for (int out = 0; out < 3; ++out) {
            std::uint32_t sum = 0;
            for (int in = 0; in < 3; ++in)
                sum += static_cast<std::uint32_t>(tables_[out][in][std::min<int>(channels[in], 4095)]);
            if (sum > limit) sum = sum < 0x10000000 ? limit : 0;
            pixel[2 - out] = static_cast<Sample>(sum);
        }
    }

  private:
    static std::int32_t toInteger(float value) {
        return std::fabs(value) < 2147483648.0f ? static_cast<std::int32_t>(value) : INT32_MIN;
    }

    std::int32_t tables_[3][3][4096];
};

class ColorMatrixStage : public testing::Test {
  protected:
    using Pixel = std::array<std::uint8_t, 3>;

    Pixel applied(Pixel pixel, std::uint8_t bits = 8) {
        EXPECT_EQ(stage->Apply8(1, 1, 0, 4, pixel.data(), bits), 0u);
        return pixel;
    }
    void set(const Matrix& matrix) { ASSERT_EQ(stage->SetColorMatrix(0xFF, matrix.data()), 0u); }
    void expectSettings(std::uint8_t mode, const Matrix& matrix) {
        std::uint8_t readMode = 99;
        Matrix readMatrix{};
        EXPECT_EQ(stage->GetColorMatrix(&readMode, readMatrix.data()), 0u);
        EXPECT_EQ(readMode, mode);
        EXPECT_EQ(readMatrix, matrix);
    }
    void expectHueSaturation(std::uint8_t mode, std::int16_t hue, std::uint16_t saturation) {
        std::uint8_t readMode = 99;
        std::int16_t readHue = 99;
        std::uint16_t readSaturation = 99;
        EXPECT_EQ(stage->GetHueSaturation(&readMode, &readHue, &readSaturation), 0u);
        EXPECT_EQ(readMode, mode);
        EXPECT_EQ(readHue, hue);
        EXPECT_EQ(readSaturation, saturation);
    }

    std::unique_ptr<CColorMatrix> stage = std::make_unique<CColorMatrix>();
};

TEST_F(ColorMatrixStage, ANewOneIsOffAndLeavesPixelsAsTheyAre) {
    expectSettings(0, kIdentity);
    expectHueSaturation(0, 0, 100);
    for (int value = 0; value < 256; ++value) {
        const auto level = static_cast<std::uint8_t>(value);
        const Pixel pixel = {level, static_cast<std::uint8_t>(255 - level), 7};
        EXPECT_EQ(applied(pixel), pixel);
    }
}

TEST_F(ColorMatrixStage, TheIdentityOnceOnAddsOneLevel) {
    set(kIdentity);
    EXPECT_EQ(applied({0, 0, 0}), (Pixel{1, 1, 1}));
    EXPECT_EQ(applied({10, 100, 200}), (Pixel{11, 101, 201}));
    EXPECT_EQ(applied({254, 255, 255}), (Pixel{255, 255, 255}));
    ASSERT_EQ(stage->SetColorMatrix(0, nullptr), 0u);
    ASSERT_EQ(stage->SetHueSaturation(1, 0, 100), 0u);
    EXPECT_EQ(applied({0, 7, 255}), (Pixel{1, 8, 255}));
}

TEST_F(ColorMatrixStage, RowsMakeRGBAndColumnsTakeRGB) {
    // R from B, G from R halved, B from G; a level i counts as i + 1.
    set({0, 0, 100, 0, 50, 0, 0, 0, 0, 100, 0, 0});
    EXPECT_EQ(applied({10, 20, 30}), (Pixel{21, 15, 11}));
    EXPECT_EQ(applied({10, 20, 31}), (Pixel{21, 16, 11}));
}

TEST_F(ColorMatrixStage, EachContributionIsTruncatedForItself) {
    // 0.5 * 2 + 0.5 * 4 + 0.25 * 4 = 4; 0.5 * 1, 0.5 * 3 and 0.25 * 3 lose their fractions: 0 + 1 + 0.
    set({50, 50, 25, 0, 50, 50, 25, 0, 50, 50, 25, 0});
    EXPECT_EQ(applied({3, 3, 1}), (Pixel{4, 4, 4}));
    EXPECT_EQ(applied({2, 2, 0}), (Pixel{1, 1, 1}));
}

TEST_F(ColorMatrixStage, NegativeSumsAreZero) {
    Matrix matrix = kNothing;
    matrix[0] = matrix[5] = matrix[10] = -100;
    set(matrix);
    for (int value = 0; value < 256; ++value) {
        const auto level = static_cast<std::uint8_t>(value);
        EXPECT_EQ(applied({level, level, level}), (Pixel{0, 0, 0}));
    }
}

TEST_F(ColorMatrixStage, OffsetsAreHundredthsOfALevelOnTheirOwnChannel) {
    for (std::size_t channel : {0u, 1u, 2u}) {  // R, G, B
        Matrix matrix = kIdentity;
        matrix[4 * channel + 3] = 1000;
        set(matrix);
        Pixel wanted = {51, 61, 71};
        wanted[2 - channel] = static_cast<std::uint8_t>(wanted[2 - channel] + 10);
        EXPECT_EQ(applied({50, 60, 70}), wanted);
        matrix[4 * channel + 3] = -32768;  // 327.68 levels
        set(matrix);
        wanted[2 - channel] = 0;
        EXPECT_EQ(applied({50, 60, 70}), wanted);
    }
}

TEST_F(ColorMatrixStage, SaturationZeroMakesGreyNearTheLuminance) {
    ASSERT_EQ(stage->SetHueSaturation(1, 0, 0), 0u);
    std::mt19937 random(1);
    for (int i = 0; i < 200; ++i) {
        const Pixel pixel = {static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()),
                             static_cast<std::uint8_t>(random())};
        const Pixel grey = applied(pixel);
        const double luminance = 0.2989 * pixel[2] + 0.5866 * pixel[1] + 0.1145 * pixel[0];
        for (const std::uint8_t channel : grey) {
            EXPECT_NEAR(channel, grey[0], 1);
            EXPECT_NEAR(channel, luminance, 2.5);
        }
    }
}

TEST_F(ColorMatrixStage, GreyStaysGreyAtEveryHue) {
    for (std::int16_t hue = -3600; hue <= 3600; hue = static_cast<std::int16_t>(hue + 77)) {
        ASSERT_EQ(stage->SetHueSaturation(1, hue, 150), 0u);
        for (const std::uint8_t channel : applied({120, 120, 120})) EXPECT_NEAR(channel, 120, 3) << hue;
    }
}

TEST_F(ColorMatrixStage, SettingsAreKeptAndModeZeroRestoresThem) {
    const Matrix matrix = {1, -2, 3, -4, 5, -6, 7, -8, 9, -10, 32767, -32768};
    set(matrix);
    expectSettings(0xFF, matrix);
    ASSERT_EQ(stage->SetHueSaturation(1, -1800, 65535), 0u);
    expectHueSaturation(1, -1800, 65535);
    expectSettings(0xFF, matrix);
    ASSERT_EQ(stage->SetColorMatrix(0, matrix.data()), 0u);
    expectSettings(0, kIdentity);
    ASSERT_EQ(stage->SetHueSaturation(0, 5, 5), 0u);
    expectHueSaturation(0, 0, 100);
    EXPECT_EQ(applied({1, 2, 3}), (Pixel{1, 2, 3}));
}

TEST_F(ColorMatrixStage, GettersTakeNullPointers) {
    EXPECT_EQ(stage->GetColorMatrix(nullptr, nullptr), 0u);
    EXPECT_EQ(stage->GetHueSaturation(nullptr, nullptr, nullptr), 0u);
}

TEST_F(ColorMatrixStage, AnUnknownModeChangesNothing) {
    const Matrix matrix = {50, 0, 0, 0, 0, 50, 0, 0, 0, 0, 50, 0};
    set(matrix);
    ASSERT_EQ(stage->SetHueSaturation(1, 30, 40), 0u);
    const Pixel before = applied({100, 150, 200});
    for (const std::uint8_t mode : {1, 2, 0x7F, 0xFE}) {
        platform::setLastSystemError(0);
        EXPECT_EQ(stage->SetColorMatrix(mode, kIdentity.data()), 87u);
        EXPECT_EQ(platform::lastSystemError(), 87u);
    }
    EXPECT_EQ(stage->SetColorMatrix(0xFF, nullptr), 87u);
    for (const std::uint8_t mode : {2, 3, 0xFF}) {
        platform::setLastSystemError(0);
        EXPECT_EQ(stage->SetHueSaturation(mode, 0, 100), 87u);
        EXPECT_EQ(platform::lastSystemError(), 87u);
    }
    expectSettings(0xFF, matrix);
    expectHueSaturation(1, 30, 40);
    EXPECT_EQ(applied({100, 150, 200}), before);
}

TEST_F(ColorMatrixStage, MonoIsLeftAsItIs) {
    set(kNothing);
    std::uint8_t bytes[4] = {1, 2, 3, 4};
    std::uint16_t words[4] = {1, 2, 3, 4};
    for (const std::uint32_t format : {1u, 2u, 16u, 32u, 64u}) {
        EXPECT_EQ(stage->Apply8(4, 1, 0, format, bytes, 8), 0u);
        EXPECT_EQ(stage->Apply16(4, 1, 0, format, words, 8), 0u);
    }
    for (unsigned i = 0; i < 4; ++i) {
        EXPECT_EQ(bytes[i], i + 1);
        EXPECT_EQ(words[i], i + 1);
    }
}

TEST_F(ColorMatrixStage, AnUnknownFormatIsRefusedEvenWhileOff) {
    std::uint8_t byte = 5;
    std::uint16_t word = 5;
    for (const bool on : {false, true}) {
        if (on) set(kIdentity);
        for (const std::uint32_t format : {0u, 3u, 5u, 128u, 1024u, 0xFFFFFFFFu}) {
            platform::setLastSystemError(0);
            EXPECT_EQ(stage->Apply8(1, 1, 0, format, &byte, 8), 87u);
            EXPECT_EQ(platform::lastSystemError(), 87u);
            platform::setLastSystemError(0);
            EXPECT_EQ(stage->Apply16(1, 1, 0, format, &word, 8), 87u);
            EXPECT_EQ(platform::lastSystemError(), 87u);
        }
    }
    EXPECT_EQ(byte, 5);
    EXPECT_EQ(word, 5);
}

TEST_F(ColorMatrixStage, TheLimitFollowsTheDepthWithinTheSample) {
    set(kIdentity);
    EXPECT_EQ(applied({10, 15, 200}, 4), (Pixel{11, 15, 15}));
    EXPECT_EQ(applied({10, 15, 200}, 0), (Pixel{0, 0, 0}));
    for (const std::uint8_t bits : {8, 9, 12, 32, 255}) {
        EXPECT_EQ(applied({10, 200, 255}, bits), (Pixel{11, 201, 255})) << int{bits};
    }
    std::uint16_t pixel[3] = {4000, 4095, 0};
    ASSERT_EQ(stage->Apply16(1, 1, 0, 256, pixel, 16), 0u);
    EXPECT_EQ(pixel[0], 4001);
    EXPECT_EQ(pixel[1], 4096);
    EXPECT_EQ(pixel[2], 1);
    ASSERT_EQ(stage->Apply16(1, 1, 0, 256, pixel, 10), 0u);
    EXPECT_EQ(pixel[0], 1023);
    Matrix steep = kIdentity;
    steep[0] = steep[5] = 2000;
    set(steep);
    for (const std::uint8_t bits : {16, 17, 32, 255}) {
        std::uint16_t words[3] = {4095, 3275, 4000};
        ASSERT_EQ(stage->Apply16(1, 1, 0, 256, words, bits), 0u);
        EXPECT_EQ(words[0], 4096) << int{bits};
        EXPECT_EQ(words[1], 65520) << int{bits};
        EXPECT_EQ(words[2], 65535) << "80020, more than a word at " << int{bits} << " bits";
    }
}

TEST_F(ColorMatrixStage, WordsAbove4095CountAs4095) {
    set(kIdentity);
    std::uint16_t pixel[3] = {4096, 65535, 4095};
    ASSERT_EQ(stage->Apply16(1, 1, 0, 256, pixel, 16), 0u);
    for (const std::uint16_t word : pixel) EXPECT_EQ(word, 4096);
}

// 0.7011 * 655.35 * 327.67 * 4096 is 617 million, and 0x10000000 is 268 million.
TEST_F(ColorMatrixStage, VeryLargeSumsBecomeZero) {
    Matrix matrix = kNothing;
    matrix[0] = matrix[5] = matrix[10] = 32767;
    set(matrix);
    ASSERT_EQ(stage->SetHueSaturation(1, 0, 65535), 0u);
    std::uint16_t pixel[3] = {0, 0, 4095};
    ASSERT_EQ(stage->Apply16(1, 1, 0, 256, pixel, 12), 0u);
    EXPECT_EQ(pixel[2], 0);
    pixel[0] = pixel[1] = 0;
    pixel[2] = 400;  // 60 million
    ASSERT_EQ(stage->Apply16(1, 1, 0, 256, pixel, 12), 0u);
    EXPECT_EQ(pixel[2], 4095);
}

TEST_F(ColorMatrixStage, ImagesWithoutPixelsAreDone) {
    set(kIdentity);
    EXPECT_EQ(stage->Apply8(0, 5, 0, 4, nullptr, 8), 0u);
    EXPECT_EQ(stage->Apply8(5, 0, 0, 8, nullptr, 8), 0u);
    EXPECT_EQ(stage->Apply16(0, 5, 0, 256, nullptr, 12), 0u);
}

Matrix randomMatrix(std::mt19937& random, int kind) {
    Matrix matrix = kIdentity;
    for (std::int16_t& value : matrix) {
        switch (kind) {
            case 0: value = static_cast<std::int16_t>(value + static_cast<int>(random() % 101) - 50); break;
            case 1: value = static_cast<std::int16_t>(static_cast<int>(random() % 2001) - 1000); break;
            default: value = static_cast<std::int16_t>(random()); break;
        }
    }
    return matrix;
}

// An image through the stage, beside the rule.
template <class Sample>
void compare(std::mt19937& random, CColorMatrix& stage, const Reference& reference,
             RandomImage<Sample> image) {
    constexpr unsigned kHeld = 8 * sizeof(Sample);
    constexpr unsigned kDeepest = kHeld == 8 ? 12 : 20;  // past what a sample holds
    const auto bits = static_cast<std::uint8_t>(random() % 3 == 0   ? random() % (kDeepest + 1)
                                                : random() % 8 == 0 ? random() % 256
                                                                    : kHeld);
    const std::uint32_t limit = (1u << std::min<unsigned>(bits, kHeld)) - 1;
    const auto wanted = changedPixels(image, [&](Sample* pixel) { reference.change(pixel, limit); });
    const bool byteName = random() % 2 == 0;  // both names of a format are taken
    const std::uint32_t format = image.pitch == 4 ? (byteName ? 8 : 512) : (byteName ? 4 : 256);
    std::uint32_t result = 0;
    if constexpr (kHeld == 8) {
        result = stage.Apply8(image.width, image.height, image.stride, format, image.samples.data(), bits);
    } else {
        result = stage.Apply16(image.width, image.height, image.stride, format, image.samples.data(), bits);
    }
    ASSERT_EQ(result, 0u);
    ASSERT_EQ(image.samples, wanted) << image.width << " x " << image.height << ", stride " << image.stride
                                     << ", format " << format << ", bits " << +bits;
}

class RandomColorMatrix : public ColorMatrixStage {
  protected:
    // `compareImages()` under so many settings of all kinds.
    template <class Compare>
    void underRandomSettings(int rounds, Compare compareImages) {
        for (int round = 0; round < rounds; ++round) {
            const Matrix matrix = randomMatrix(random, round % 3);
            set(matrix);
            const auto hue = static_cast<std::int16_t>(round % 4 == 0 ? 0 : random());
            const auto saturation = static_cast<std::uint16_t>(round % 5 == 4 ? random() : random() % 301);
            ASSERT_EQ(stage->SetHueSaturation(1, hue, saturation), 0u);
            reference = std::make_unique<Reference>(matrix, hue, saturation);
            compareImages();
            ASSERT_FALSE(HasFatalFailure()) << "round " << round;
        }
    }
    std::size_t pitch() { return 3 + random() % 2; }
    unsigned wordMaximum() { return random() % 2 == 0 ? 4095 : 65535; }

    std::mt19937 random{33};
    std::unique_ptr<Reference> reference;
};

TEST_F(RandomColorMatrix, EqualsThePlainRuleOnRandomImages) {
    underRandomSettings(60, [this] {
        for (int i = 0; i < 20; ++i) {
            compare(random, *stage, *reference, randomImage<std::uint8_t>(random, pitch(), 255));
            compare(random, *stage, *reference, randomImage<std::uint16_t>(random, pitch(), wordMaximum()));
        }
    });
}

TEST_F(RandomColorMatrix, RowsThatOverlapAreWorkedOnFromTheTop) {
    underRandomSettings(12, [this] {
        for (int i = 0; i < 10; ++i) {
            compare(random, *stage, *reference, overlappingImage<std::uint8_t>(random, pitch(), 255));
            compare(random, *stage, *reference,
                    overlappingImage<std::uint16_t>(random, pitch(), wordMaximum()));
        }
    });
}

// Round hundredths are where the exact product is a whole number at many levels, and the sums just miss it or
// not; every level of each channel, with offsets of whole levels and of parts.
TEST_F(ColorMatrixStage, RoundMatricesEqualThePlainRuleAtEveryLevel) {
    for (int k = -400; k <= 400; k += 3) {
        const auto value = [k](int step) { return static_cast<std::int16_t>(k + step); };
        const auto offset = static_cast<std::int16_t>(k % 2 == 0 ? 100 * (k / 40) : 150);
        const Matrix matrix = {value(0), value(7),   value(-30), offset,    value(-100), value(60),
                               value(1), value(-12), value(20),  value(-5), value(0),    value(13)};
        set(matrix);
        const auto reference = std::make_unique<Reference>(matrix, 0, 100);
        std::vector<std::uint8_t> pixels, wanted;
        for (int i = 0; i < 256; ++i) {
            for (const int level : {i, 255 - i, i ^ 0x55}) pixels.push_back(static_cast<std::uint8_t>(level));
        }
        wanted = pixels;
        for (std::size_t i = 0; i < wanted.size(); i += 3) reference->change(&wanted[i], 255);
        ASSERT_EQ(stage->Apply8(256, 1, 0, 4, pixels.data(), 8), 0u);
        ASSERT_EQ(pixels, wanted) << k;
    }
}

// Quarters are exact in every sum, of either sign, with and without a whole: every level of each channel, in
// rows that are longer than what is worked on at a time.
TEST_F(ColorMatrixStage, MatricesOfQuartersEqualThePlainRuleAtEveryLevel) {
    constexpr std::int16_t kOwn[] = {0, 25, 75, 100, 150, 325, -25, -100, -250};
    constexpr std::int16_t kOther[] = {0, 25, -25, 50, -75, 100, -150};
    for (std::size_t k = 0; k < 63; ++k) {
        const auto own = [&](std::size_t step) { return kOwn[(k + step) % 9]; };
        const auto other = [&](std::size_t step) { return kOther[(k + step) % 7]; };
        const Matrix matrix = {own(0),   other(0), other(1), 500,      other(2), own(1),
                               other(3), -700,     other(4), other(5), own(2),   0};
        set(matrix);
        const auto reference = std::make_unique<Reference>(matrix, 0, 100);
        constexpr std::uint32_t kCount = 3 * 256 + 5;
        std::vector<std::uint8_t> pixels, wanted;
        for (std::uint32_t i = 0; i < kCount; ++i) {
            for (const std::uint32_t level : {i, 255 - i, i * 7 + i / 256})
                pixels.push_back(static_cast<std::uint8_t>(level));
        }
        wanted = pixels;
        for (std::size_t i = 0; i < wanted.size(); i += 3) reference->change(&wanted[i], 255);
        ASSERT_EQ(stage->Apply8(kCount, 1, 0, 4, pixels.data(), 8), 0u);
        ASSERT_EQ(pixels, wanted) << k;
    }
}

}  // namespace
}  // namespace tavra::test
