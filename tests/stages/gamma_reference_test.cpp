// Gamma beside the rules, sample by sample, on images of any size.
#include <algorithm>
#include <array>
#include <random>

#include "stages/gamma_fixture.h"
#include "stages/random_image.h"

namespace tavra::test {
namespace {

// The curve index of a sample in column x and row y.
std::uint8_t positionOf(std::uint16_t colorArray, std::size_t x, std::size_t y) {
    static constexpr std::uint8_t kPositions[4][2][2] = {
        {{1, 2}, {3, 4}},  // R Gr / Gb B
        {{2, 1}, {4, 3}},  // Gr R / B Gb
        {{3, 4}, {1, 2}},  // Gb B / R Gr
        {{4, 3}, {2, 1}},  // B Gb / Gr R
    };
    const std::size_t array = colorArray >= 2 && colorArray <= 5 ? colorArray - 2u : 0u;
    return kPositions[array][y & 1][x & 1];
}

using Tables = std::array<Table, 5>;

// A raw frame through the stage, beside one sample after another.
template <class Sample>
void compareRaw(CGamma& stage, const Tables& tables, std::uint16_t array, RandomImage<Sample> image) {
    RandomImage<Sample> wanted = image;
    for (std::size_t y = 0; y < image.height; ++y) {
        for (std::size_t x = 0; x < image.width; ++x) {
            Sample& sample = wanted.at(x, y, 0);
            sample = static_cast<Sample>(tables[positionOf(array, x, y)][std::min<unsigned>(sample, 4095)]);
        }
    }
    std::uint32_t result = 99;
    if constexpr (sizeof(Sample) == 1) {
        result = stage.ApplyRaw8(image.width, image.height, image.stride, array, image.samples.data());
    } else {
        result = stage.ApplyRaw16(image.width, image.height, image.stride, array, image.samples.data());
    }
    ASSERT_EQ(result, 0u);
    ASSERT_EQ(image.samples, wanted.samples)
        << "array " << array << ", " << image.width << " x " << image.height << ", stride " << image.stride;
}

class RawGamma : public GammaStage {
  protected:
    // Frames of each array, of bytes and of words, from `image8(random)` and `image16(random, maximum)`.
    template <class Image8, class Image16>
    void compareArrays(int rounds, Image8 image8, Image16 image16) {
        setFive(*stage, true);
        Tables tables;
        for (std::uint8_t index = 0; index < 5; ++index) tables[index] = table(index);
        std::mt19937 random(7);
        for (std::uint16_t array : {0, 2, 3, 4, 5, 6, 9, 11, 20, 65535}) {
            for (int round = 0; round < rounds; ++round) {
                compareRaw(*stage, tables, array, image8(random));
                compareRaw(*stage, tables, array, image16(random, round % 2 == 0 ? 4095 : 65535));
                if (HasFatalFailure()) return;
            }
        }
    }
};

TEST_F(RawGamma, SamplesGoThroughTheCurveOfTheirPosition) {
    compareArrays(
        110, [](auto& random) { return randomImage<std::uint8_t>(random, 1, 255); },
        [](auto& random, unsigned maximum) { return randomImage<std::uint16_t>(random, 1, maximum); });
}

TEST_F(RawGamma, RowsThatOverlapAreWorkedOnFromTheTop) {
    compareArrays(
        20, [](auto& random) { return overlappingImage<std::uint8_t>(random, 1, 255); },
        [](auto& random, unsigned maximum) { return overlappingImage<std::uint16_t>(random, 1, maximum); });
}

int roundedHalfUp(int thousandths) {
    return (thousandths + 500) / 1000;
}

template <class Sample>
void moveByLuminance(const Table& table, Sample* pixel) {
    const auto value = [&](int c) { return std::min<int>(pixel[c], 4095); };
    const int y =
        roundedHalfUp(299 * value(2)) + roundedHalfUp(587 * value(1)) + roundedHalfUp(114 * value(0));
    const int d = static_cast<std::int16_t>(table[static_cast<std::size_t>(y)] - y);
    for (int c = 0; c < 3; ++c) {
        const int sum = pixel[c] + d;
        pixel[c] =
            static_cast<Sample>(d >= 0 ? std::min(sum, sizeof(Sample) == 1 ? 255 : 4095) : std::max(sum, 0));
    }
}

// An image of three or four samples a pixel through the stage, beside the rule.
template <class Sample>
void compareImage(CGamma& stage, const Table& curve, RandomImage<Sample> image) {
    const auto wanted = changedPixels(image, [&](Sample* pixel) { moveByLuminance(curve, pixel); });
    const bool four = image.pitch == 4;
    std::uint32_t result = 99;
    if constexpr (sizeof(Sample) == 1) {
        result =
            stage.ApplyImage8(image.width, image.height, image.stride, four ? 8 : 4, image.samples.data());
    } else {
        result = stage.ApplyImage16(image.width, image.height, image.stride, four ? 512 : 256,
                                    image.samples.data());
    }
    ASSERT_EQ(result, 0u);
    ASSERT_EQ(image.samples, wanted) << image.width << " x " << image.height << ", stride " << image.stride;
}

// The same for one of a sample a pixel.
template <class Sample>
void compareGrey(CGamma& stage, const Table& curve, RandomImage<Sample> image, std::uint32_t format) {
    const auto wanted = changedPixels(image, [&](Sample* sample) {
        *sample = static_cast<Sample>(curve[std::min<unsigned>(*sample, 4095)]);
    });
    std::uint32_t result = 99;
    if constexpr (sizeof(Sample) == 1) {
        result = stage.ApplyImage8(image.width, image.height, image.stride, format, image.samples.data());
    } else {
        result = stage.ApplyImage16(image.width, image.height, image.stride, format, image.samples.data());
    }
    ASSERT_EQ(result, 0u);
    ASSERT_EQ(image.samples, wanted) << image.width << " x " << image.height << ", stride " << image.stride;
}

class LuminanceGamma : public GammaStage {
  protected:
    // `compareImages(curve, round)` under so many curves of every kind.
    template <class Compare>
    void underRandomCurves(int rounds, Compare compareImages) {
        for (int round = 0; round < rounds; ++round) {
            if (round % 3 == 0) {  // any word at all
                std::vector<std::uint16_t> entries(4096);
                for (auto& entry : entries) entry = static_cast<std::uint16_t>(random());
                ASSERT_EQ(setTable(0, entries, 12), 0u);
            } else {
                ASSERT_EQ(set(0, 1 + round % 2, static_cast<std::uint16_t>(30 + random() % 300),
                              static_cast<int>(random() % 101) - 50, 20, round % 2 == 0 ? 8 : 12),
                          0u);
            }
            compareImages(table(0), round);
            ASSERT_FALSE(HasFatalFailure()) << "round " << round;
        }
    }
    std::size_t pitch() { return 3 + random() % 2; }

    std::mt19937 random{11};
};

TEST_F(LuminanceGamma, ImagesEqualThePlainRule) {
    underRandomCurves(60, [this](const Table& curve, int round) {
        for (int i = 0; i < 18; ++i) {
            compareImage(*stage, curve, randomImage<std::uint8_t>(random, pitch(), 255));
            const unsigned maximum = (round + i) % 4 == 0 ? 65535 : 4095;
            compareImage(*stage, curve, randomImage<std::uint16_t>(random, pitch(), maximum));
        }
    });
}

TEST_F(LuminanceGamma, GreyImagesGoThroughTheCurve) {
    underRandomCurves(24, [this](const Table& curve, int) {
        for (int i = 0; i < 45; ++i) {
            compareGrey(*stage, curve, randomImage<std::uint8_t>(random, 1, 255), 1);
            compareGrey(*stage, curve, randomImage<std::uint16_t>(random, 1, 65535), i % 2 == 0 ? 16 : 32);
        }
    });
}

TEST_F(LuminanceGamma, RowsThatOverlapAreWorkedOnFromTheTop) {
    underRandomCurves(12, [this](const Table& curve, int) {
        for (int i = 0; i < 10; ++i) {
            compareImage(*stage, curve, overlappingImage<std::uint8_t>(random, pitch(), 255));
            compareImage(*stage, curve, overlappingImage<std::uint16_t>(random, pitch(), 65535));
            compareGrey(*stage, curve, overlappingImage<std::uint8_t>(random, 1, 255), 1);
            compareGrey(*stage, curve, overlappingImage<std::uint16_t>(random, 1, 65535), 16);
        }
    });
}

}  // namespace
}  // namespace tavra::test
