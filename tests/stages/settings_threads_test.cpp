// Each stage that has settings, with settings that change while images pass.
#include <array>
#include <cstdint>
#include <vector>

#include "stages/chroma_suppress.h"
#include "stages/color_matrix.h"
#include "stages/gamma.h"
#include "stages/noise_reduction.h"
#include "stages/shading_correction.h"
#include "stages/sharpness.h"
#include "stages/wb.h"
#include "support/never_torn.h"

namespace tavra::test {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;

constexpr std::uint32_t kWidth = 256, kHeight = 128;

// All levels, neighbours far apart. `samples` of them make a pixel.
template <class Sample>
std::vector<Sample> picture(std::size_t samples, unsigned levels) {
    std::vector<Sample> image(kWidth * kHeight * samples);
    for (std::size_t i = 0; i < image.size(); ++i) image[i] = static_cast<Sample>(i * 1237 % levels);
    return image;
}
Bytes bytePicture(std::size_t samples = 1) {
    return picture<std::uint8_t>(samples, 256);
}
Words wordPicture(std::size_t samples = 1) {
    return picture<std::uint16_t>(samples, 4096);
}

// Of stages whose tables take long to make.
constexpr int kFewRounds = 100;

constexpr std::uint32_t kBgr = 4, kBgrWords = 256, kGreyWords = 16;

TEST(SettingsThreads, ColorMatrix) {
    CColorMatrix stage;
    const std::array<std::int16_t, 12> swapped{0, 0, 100, 0, 0, 100, 0, 0, 100, 0, 0, 0};
    // Too wide for the short ways of the stage.
    const std::array<std::int16_t, 12> wide{3000, -2900, 0, 500, -2900, 3000, 0, 500, 0, -2900, 3000, 500};
    const std::vector<std::function<void()>> settings{[&] { stage.SetColorMatrix(0xFF, swapped.data()); },
                                                      [&] { stage.SetColorMatrix(0xFF, wide.data()); },
                                                      [&] { stage.SetColorMatrix(0, nullptr); }};
    neverTorn(
        settings,
        [&] {
            Bytes image = bytePicture(3);
            EXPECT_EQ(stage.Apply8(kWidth, kHeight, 0, kBgr, image.data(), 8), 0u);
            return image;
        },
        kFewRounds);
    neverTorn(
        settings,
        [&] {
            Words image = wordPicture(3);
            EXPECT_EQ(stage.Apply16(kWidth, kHeight, 0, kBgrWords, image.data(), 12), 0u);
            return image;
        },
        kFewRounds);
}

TEST(SettingsThreads, HueAndSaturation) {
    CColorMatrix stage;
    neverTorn(
        {[&] { stage.SetHueSaturation(1, 900, 150); }, [&] { stage.SetHueSaturation(1, -300, 20); }},
        [&] {
            Bytes image = bytePicture(3);
            EXPECT_EQ(stage.Apply8(kWidth, kHeight, 0, kBgr, image.data(), 8), 0u);
            return image;
        },
        kFewRounds);
}

// Tables of the full depth, since one of a smaller depth leaves the entries behind it.
TEST(SettingsThreads, GammaOfLuminance) {
    CGamma stage;
    std::array<Words, 3> tables{Words(4096, 0), Words(4096), Words(4096, 4095)};
    for (std::size_t i = 0; i < 4096; ++i)
        tables[1][i] = static_cast<std::uint16_t>((i < 256 ? 255 : 4095) - i);
    std::vector<std::function<void()>> settings;
    for (const Words& table : tables) {
        settings.emplace_back([&] { stage.SetGamma(0, 255, 0, 0, 0, table.data(), 12); });
    }
    neverTorn(settings, [&] {
        Bytes image = bytePicture(3);
        EXPECT_EQ(stage.ApplyImage8(kWidth, kHeight, 0, kBgr, image.data()), 0u);
        return image;
    });
    neverTorn(settings, [&] {
        Words image = wordPicture();
        EXPECT_EQ(stage.ApplyImage16(kWidth, kHeight, 0, kGreyWords, image.data()), 0u);
        return image;
    });
}

TEST(SettingsThreads, GammaOfAPosition) {
    CGamma stage;
    const std::vector<std::function<void()>> settings{
        [&] { stage.SetGamma(1, 1, 220, 0, 0, nullptr, 8); },
        [&] { stage.SetGamma(1, 2, 45, 5, 0, nullptr, 8); },
        [&] { stage.SetGamma(1, 0, 100, 0, 0, nullptr, 8); },
    };
    neverTorn(settings, [&] {
        Bytes mosaic = bytePicture();
        EXPECT_EQ(stage.ApplyRaw8(kWidth, kHeight, 0, 2, mosaic.data()), 0u);
        return mosaic;
    });
}

// What is read belongs together too.
TEST(SettingsThreads, AGammaThatIsReadIsWhole) {
    CGamma stage;
    neverTorn({[&] { stage.SetGamma(3, 1, 220, 7, 3, nullptr, 12); },
               [&] { stage.SetGamma(3, 2, 45, -7, 90, nullptr, 12); }},
              [&] {
                  std::uint8_t mode = 0;
                  std::int16_t brightness = 0;
                  std::uint16_t gamma = 0, contrast = 0, bits = 12;
                  Words values(4096);
                  stage.GetGamma(3, &mode, &gamma, &brightness, &contrast, values.data(), &bits);
                  values.insert(values.end(),
                                {mode, gamma, static_cast<std::uint16_t>(brightness), contrast, bits});
                  return values;
              });
}

TEST(SettingsThreads, GainsOfAMosaic) {
    CWB stage;
    ASSERT_EQ(stage.SetMode(1), 0u);
    const std::array<std::uint16_t, 4> warm{300, 140, 150, 90}, cold{70, 100, 110, 400};
    const std::vector<std::function<void()>> settings{[&] { stage.SetGains(warm.data()); },
                                                      [&] { stage.SetGains(cold.data()); }};
    neverTorn(settings, [&] {
        Bytes mosaic = bytePicture();
        EXPECT_EQ(stage.Apply8(kWidth, kHeight, 0, 2, mosaic.data(), 8), 0u);
        return mosaic;
    });
    neverTorn(settings, [&] {
        Words mosaic = wordPicture();
        EXPECT_EQ(stage.Apply16(kWidth, kHeight, 0, 2, mosaic.data(), 12), 0u);
        return mosaic;
    });
    neverTorn(settings, [&] {
        std::array<std::uint16_t, 4> gains{};
        stage.GetGains(gains.data());
        return gains;
    });
}

TEST(SettingsThreads, Sharpness) {
    CSharpness stage;
    const std::vector<std::function<void()>> settings{[&] { stage.SetMode(1, 100, 0); },
                                                      [&] { stage.SetMode(1, 700, 20); },
                                                      [&] { stage.SetMode(0, 300, 5); }};
    neverTorn(settings, [&] {
        Bytes image = bytePicture(3);
        EXPECT_EQ(stage.Apply8(kWidth, kHeight, 0, kBgr, image.data(), 8), 0u);
        return image;
    });
    neverTorn(settings, [&] {
        Words image = wordPicture();
        EXPECT_EQ(stage.Apply16(kWidth, kHeight, 0, kGreyWords, image.data(), 12), 0u);
        return image;
    });
    neverTorn(settings, [&] {
        std::uint8_t mode = 0;
        std::uint16_t gain = 0, coring = 0;
        stage.GetMode(&mode, &gain, &coring);
        return std::array<unsigned, 3>{mode, gain, coring};
    });
}

// Threshold and strength are set one by one, and any pair of them is a setting; an image has one of these
// from start to end.
std::vector<std::function<void()>> pairsOf(CChromaSuppress& stage, std::array<std::uint16_t, 2> thresholds,
                                           std::array<std::uint16_t, 2> strengths) {
    std::vector<std::function<void()>> settings;
    for (const std::uint16_t threshold : thresholds) {
        for (const std::uint16_t strength : strengths) {
            settings.emplace_back([&stage, threshold, strength] {
                stage.SetHighStrength(strength);
                stage.SetHighThreshold(threshold);
            });
        }
    }
    return settings;
}

TEST(SettingsThreads, ChromaSuppression) {
    CChromaSuppress stage;
    neverTorn(pairsOf(stage, {50, 150}, {100, 255}), [&] {
        Bytes image = bytePicture(3);
        EXPECT_EQ(stage.Apply8(kWidth, kHeight, 0, kBgr, image.data()), 0u);
        return image;
    });
    neverTorn(pairsOf(stage, {1000, 2500}, {3, 9}), [&] {
        Words image = wordPicture(3);
        EXPECT_EQ(stage.Apply16(kWidth, kHeight, 0, kBgrWords, image.data()), 0u);
        return image;
    });
}

TEST(SettingsThreads, MapOfTheShadingCorrection) {
    CShadingCorrection stage;
    ASSERT_EQ(stage.SetMode(2), 0u);
    const std::vector<std::int32_t> half(kWidth * kHeight, 64), twice(kWidth * kHeight, 256);
    const std::vector<std::function<void()>> settings{
        [&] { stage.SetMap(kWidth, kHeight, 4 * kWidth, half.data()); },
        [&] { stage.SetMap(kWidth, kHeight, 4 * kWidth, twice.data()); },
        // Of another size: frames stay as they are.
        [&] { stage.SetMap(kWidth / 2, kHeight, 4 * kWidth, half.data()); },
    };
    neverTorn(settings, [&] {
        Bytes frame = bytePicture();
        EXPECT_EQ(stage.Apply8(kWidth, kHeight, 0, frame.data(), 8), 0u);
        return frame;
    });
    neverTorn(settings, [&] {
        Words frame = wordPicture();
        EXPECT_EQ(stage.Apply16(kWidth, kHeight, 0, frame.data(), 12), 0u);
        return frame;
    });
}

TEST(SettingsThreads, ModeOfTheShadingCorrection) {
    CShadingCorrection stage;
    const std::vector<std::int32_t> map(kWidth * kHeight, 90);
    ASSERT_EQ(stage.SetMap(kWidth, kHeight, 4 * kWidth, map.data()), 0u);
    neverTorn({[&] { stage.SetMode(0); }, [&] { stage.SetMode(2); }, [&] { stage.SetMode(4); },
               [&] { stage.SetMode(255); }},
              [&] {
                  Bytes frame = bytePicture();
                  EXPECT_EQ(stage.Apply8(kWidth, kHeight, 0, frame.data(), 8), 0u);
                  return frame;
              });
}

TEST(SettingsThreads, NoiseReduction) {
    CNoiseReduction stage;
    stage.setMode(TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME);
    Bytes dark = bytePicture();
    ASSERT_TRUE(stage.Process(kWidth, kHeight, 2, dark.data()));
    neverTorn({[&] { stage.setMode(TAVRA_NOISE_REDUCTION_OFF); },
               [&] { stage.setMode(TAVRA_NOISE_REDUCTION_MEDIAN); },
               [&] { stage.setMode(TAVRA_NOISE_REDUCTION_DARK_FRAME); }},
              [&] {
                  Bytes frame = bytePicture();
                  EXPECT_TRUE(stage.Process(kWidth, kHeight, 2, frame.data()));
                  return frame;
              });
}

}  // namespace
}  // namespace tavra::test
