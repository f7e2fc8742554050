#include "sensor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "light.h"
#include "renderer.h"

namespace tavra::usbd {
namespace {

// A sensor without any fault, of 16 x 8 pixels and 12 bits, equal response.
Model cleanModel(std::uint16_t colorArray) {
    Model model;
    model.identity.colorArray = colorArray;
    model.identity.headerSize = 64;
    model.geometry.sensorWidth = 16;
    model.geometry.sensorHeight = 8;
    model.sensor.response = {1, 1, 1};
    model.sensor.noise = false;
    model.sensor.vignetting = 0;
    model.sensor.hotPixels = 0;
    return model;
}

// Each pixel has channels of its own: red counts columns, green rows, blue is constant; in 1/100 of full
// scale.
Scene countingScene() {
    Scene scene;
    scene.width = 16;
    scene.height = 8;
    for (std::uint32_t y = 0; y < 8; ++y) {
        for (std::uint32_t x = 0; x < 16; ++x) {
            scene.pixels.push_back(
                {static_cast<std::uint16_t>(655 * x), static_cast<std::uint16_t>(655 * (20 + y)), 65500});
        }
    }
    return scene;
}

Scene greyScene(double value) {
    Scene scene;
    scene.width = 16;
    scene.height = 8;
    const auto sample = static_cast<std::uint16_t>(value * 65535);
    scene.pixels.assign(16 * 8, {sample, sample, sample});
    return scene;
}

FrameSettings settingsOf(const Model& model) {
    FrameSettings settings;
    settings.view.regions = {{0, 0, model.geometry.sensorWidth, model.geometry.sensorHeight, true}};
    settings.view.colorArray = model.identity.colorArray;
    settings.exposure = 1;
    return settings;
}

std::vector<std::uint16_t> exposeAll(const Model& model, const FrameSettings& settings, const Scene& scene,
                                     std::uint32_t variant = 0) {
    const SignalMap map = mapSignal(model, settings.view, scene);
    std::vector<std::uint16_t> all;
    for (const SignalMap::Panel& panel : map.panels) {
        std::vector<std::uint16_t> row(panel.width * map.channels());
        for (std::uint32_t y = 0; y < panel.height; ++y) {
            exposeRow(model, settings, map, panel, y, variant, row);
            all.insert(all.end(), row.begin(), row.end());
        }
    }
    return all;
}

// Sample of a signal, by the plain rule.
std::uint16_t sampleOf(double signal) {
    return static_cast<std::uint16_t>(std::min(signal, 1.0) * 4095 + 0.5);
}

// Channel of a mosaic pixel, written out.
int channelOf(int code, std::uint32_t x, std::uint32_t y) {
    static const char* const kCells[] = {"RGGB", "GRBG", "GBRG", "BGGR"};
    const char color = kCells[code - 2][(y % 2) * 2 + x % 2];
    return color == 'R' ? 0 : color == 'G' ? 1 : 2;
}

TEST(Sensor, MosaicSitesOfEveryCode) {
    const Scene scene = countingScene();
    for (std::uint16_t code = 2; code <= 5; ++code) {
        for (const std::uint16_t group : {std::uint16_t{0}, std::uint16_t{10}, std::uint16_t{14}}) {
            const Model model = cleanModel(static_cast<std::uint16_t>(code + group));
            const auto samples = exposeAll(model, settingsOf(model), scene);
            const std::uint32_t block = group == 14 ? 2 : 1;
            for (std::uint32_t y = 0; y < 8; ++y) {
                for (std::uint32_t x = 0; x < 16; ++x) {
                    const auto channel = static_cast<std::size_t>(channelOf(code, x / block, y / block));
                    const double signal = scene.at(x, y)[channel] / 65535.0;
                    ASSERT_NEAR(samples[y * 16 + x], sampleOf(signal), 1)
                        << code + group << " at " << x << ", " << y;
                }
            }
        }
    }
}

TEST(Sensor, AMonoSensorSeesLuminance) {
    Model model = cleanModel(1);
    Scene scene = greyScene(0);
    scene.pixels.assign(scene.pixels.size(), {65535, 0, 0});
    EXPECT_EQ(exposeAll(model, settingsOf(model), scene)[0], sampleOf(0.299));
    scene.pixels.assign(scene.pixels.size(), {0, 65535, 0});
    EXPECT_EQ(exposeAll(model, settingsOf(model), scene)[0], sampleOf(0.587));
}

TEST(Sensor, ColourFormatsGetAllThreeChannels) {
    const Model model = cleanModel(2);
    FrameSettings settings = settingsOf(model);
    settings.view.transferBits = 1024;
    const auto samples = exposeAll(model, settings, countingScene());
    ASSERT_EQ(samples.size(), 16u * 8 * 3);
    EXPECT_NEAR(samples[3 * 5], sampleOf(0.05), 2) << "red of column 5";
    EXPECT_NEAR(samples[3 * (16 * 3) + 1], sampleOf(0.23), 2) << "green of row 3";
}

TEST(Sensor, ExposureLightGainAndBlackLevel) {
    const Model model = cleanModel(1);
    const Scene scene = greyScene(0.5);
    FrameSettings settings = settingsOf(model);
    const auto value = [&] { return exposeAll(model, settings, scene)[0]; };
    EXPECT_NEAR(value(), 2048, 1);
    settings.exposure = 0.5;
    EXPECT_NEAR(value(), 1024, 1);
    settings.light = 0.5;
    EXPECT_NEAR(value(), 512, 1);
    settings.gain = 4;
    EXPECT_NEAR(value(), 2048, 1);
    settings.black = 100.0 / 4095;
    EXPECT_NEAR(value(), 2148, 1);
    settings.gain = 100;
    EXPECT_EQ(value(), 4095);
    settings.gain = 0;
    settings.black = -1;
    EXPECT_EQ(value(), 0);
}

TEST(Sensor, SaturationComesBeforeGain) {
    const Model model = cleanModel(1);
    FrameSettings settings = settingsOf(model);
    settings.exposure = 100;
    settings.gain = 0.25;
    EXPECT_NEAR(exposeAll(model, settings, greyScene(0.5))[0], 1024, 1) << "a quarter of a full well";
}

TEST(Sensor, ResponseAndLightColourWeighTheSites) {
    Model model = cleanModel(2);
    model.sensor.response = {0.5, 1.0, 0.25};
    FrameSettings settings = settingsOf(model);
    const Scene scene = greyScene(0.8);
    auto samples = exposeAll(model, settings, scene);
    EXPECT_NEAR(samples[0], sampleOf(0.4), 1) << "red";
    EXPECT_NEAR(samples[1], sampleOf(0.8), 1) << "green";
    EXPECT_NEAR(samples[17], sampleOf(0.2), 1) << "blue";
    settings.lightColor = lightColor(3000);
    samples = exposeAll(model, settings, scene);
    EXPECT_NEAR(samples[0], sampleOf(0.4 * lightColor(3000)[0]), 1);
    settings.whiteBalance = {2, 1, 1, 4};
    settings.lightColor = lightColor(5500);
    samples = exposeAll(model, settings, scene);
    EXPECT_NEAR(samples[0], sampleOf(0.8), 2);
    EXPECT_NEAR(samples[17], sampleOf(0.8), 3);
}

TEST(Light, LowTemperaturesAreRedAndHighOnesBlue) {
    EXPECT_NEAR(lightColor(5500)[0], 1, 1e-12);
    EXPECT_NEAR(lightColor(5500)[2], 1, 1e-12);
    EXPECT_GT(lightColor(2800)[0], 1.2);
    EXPECT_LT(lightColor(2800)[2], 0.6);
    EXPECT_GT(lightColor(9000)[2], 1.1);
}

TEST(Sensor, MirrorsTurnTheRegion) {
    Model model = cleanModel(1);
    FrameSettings settings = settingsOf(model);
    settings.view.regions = {{4, 2, 8, 4, true}};
    const Scene scene = countingScene();
    const auto plain = exposeAll(model, settings, scene);
    settings.view.mirrorX = true;
    settings.view.mirrorY = true;
    const auto turned = exposeAll(model, settings, scene);
    for (std::size_t y = 0; y < 4; ++y) {
        for (std::size_t x = 0; x < 8; ++x) ASSERT_EQ(turned[y * 8 + x], plain[(3 - y) * 8 + 7 - x]);
    }
}

// A mirror of an even number of columns moves the phase: code 2 arrives as code 3, top to bottom as 4, both
// as 5.
TEST(Sensor, MirrorsMoveThePhaseOfTheMosaic) {
    const Model model = cleanModel(2);
    Scene scene = greyScene(0);
    scene.pixels.assign(scene.pixels.size(), {65535, 32768, 0});
    for (int mirror = 0; mirror < 4; ++mirror) {
        FrameSettings settings = settingsOf(model);
        settings.view.mirrorX = (mirror & 1) != 0;
        settings.view.mirrorY = (mirror & 2) != 0;
        const auto samples = exposeAll(model, settings, scene);
        for (std::uint32_t y = 0; y < 2; ++y) {
            for (std::uint32_t x = 0; x < 2; ++x) {
                const double expected[] = {1.0, 0.5, 0.0};
                ASSERT_NEAR(samples[y * 16 + x], sampleOf(expected[channelOf(2 + mirror, x, y)]), 1)
                    << mirror;
            }
        }
    }
}

TEST(Sensor, AMirrorMayKeepThePhase) {
    Model model = cleanModel(2);
    model.sensor.mirrorKeepsPhaseX = true;
    Scene scene = greyScene(0);
    scene.pixels.assign(scene.pixels.size(), {65535, 32768, 0});
    FrameSettings settings = settingsOf(model);
    settings.view.mirrorX = true;
    const auto samples = exposeAll(model, settings, scene);
    EXPECT_EQ(samples[0], 4095) << "still red";
}

TEST(Sensor, SkippingTakesWholeCells) {
    const Model model = cleanModel(2);
    FrameSettings settings = settingsOf(model);
    settings.view.factors = {2, 1, 1, 1, false};
    settings.view.regions = {{0, 0, 8, 8, true}};
    const Scene scene = countingScene();
    const auto samples = exposeAll(model, settings, scene);
    EXPECT_NEAR(samples[0], sampleOf(0.0), 1) << "red of column 0";
    EXPECT_NEAR(samples[2], sampleOf(0.04), 1) << "red of column 4: columns 2 and 3 are skipped";
    EXPECT_NEAR(samples[6], sampleOf(0.12), 1) << "red of column 12";
}

TEST(Sensor, BinningMeansOrAddsLikeSites) {
    const Model model = cleanModel(2);
    FrameSettings settings = settingsOf(model);
    settings.view.factors = {1, 1, 2, 1, false};
    settings.view.regions = {{0, 0, 8, 8, true}};
    const Scene scene = countingScene();
    EXPECT_NEAR(exposeAll(model, settings, scene)[2], sampleOf((0.04 + 0.06) / 2), 1)
        << "red of columns 4 and 6";
    settings.view.factors.sum = true;
    EXPECT_NEAR(exposeAll(model, settings, scene)[2], sampleOf(0.04 + 0.06), 1);
}

TEST(Sensor, VignettingTakesItsShareInTheCorners) {
    Model model = cleanModel(1);
    model.sensor.vignetting = 0.5;
    const auto samples = exposeAll(model, settingsOf(model), greyScene(0.8));
    EXPECT_NEAR(samples.front(), sampleOf(0.4), 1);
    EXPECT_NEAR(samples.back(), sampleOf(0.4), 1);
    // Pixel (7, 3): (0.5^2 + 0.5^2) of (7.5^2 + 3.5^2).
    EXPECT_NEAR(samples[3 * 16 + 7], sampleOf(0.8 * (1 - 0.5 * 0.5 / 68.5)), 1);
}

TEST(Sensor, HotPixelsGrowWithExposureAndNotWithLight) {
    Model model = cleanModel(1);
    model.sensor.hotPixels = 3;
    FrameSettings settings = settingsOf(model);
    settings.light = 0;
    const auto lit = [&] {
        const auto samples = exposeAll(model, settings, greyScene(0.5));
        return std::count_if(samples.begin(), samples.end(), [](auto v) { return v > 0; });
    };
    EXPECT_GE(lit(), 1);
    EXPECT_LE(lit(), 3);
    settings.exposure = 0;
    EXPECT_EQ(lit(), 0);
}

TEST(Sensor, HotPixelsThatMeetAddUpAndHideNoOther) {
    const Model model = cleanModel(1);
    FrameSettings settings = settingsOf(model);
    SignalMap map = mapSignal(model, settings.view, greyScene(0));
    map.hot = {{3, 0.25f}, {3, 0.25f}, {9, 0.5f}};
    std::vector<std::uint16_t> row(16);
    exposeRow(model, settings, map, map.panels[0], 0, 0, row);
    EXPECT_EQ(row[3], sampleOf(0.5));
    EXPECT_EQ(row[9], sampleOf(0.5));
    EXPECT_EQ(std::accumulate(row.begin(), row.end(), 0u), 2u * sampleOf(0.5));
}

TEST(Sensor, CorrectedPixelsAreNotHot) {
    Model model = cleanModel(1);
    model.sensor.hotPixels = 5;
    FrameSettings settings = settingsOf(model);
    const auto hot = exposeAll(model, settings, greyScene(0));
    for (std::uint16_t y = 0; y < 8; ++y) {
        for (std::uint16_t x = 0; x < 16; ++x) {
            if (hot[y * 16u + x] > 0) settings.view.correctedPixels.emplace_back(x, y);
        }
    }
    ASSERT_FALSE(settings.view.correctedPixels.empty());
    const auto clean = exposeAll(model, settings, greyScene(0));
    EXPECT_EQ(std::accumulate(clean.begin(), clean.end(), 0u), 0u);
}

TEST(Sensor, NoiseHasTheDeviationOfItsModel) {
    Model model = cleanModel(1);
    model.geometry.sensorWidth = 256;
    model.geometry.sensorHeight = 256;
    model.sensor.noise = true;
    model.sensor.fullWell = 10000;
    model.sensor.readNoise = 30;
    Scene scene;
    scene.width = scene.height = 256;
    scene.pixels.assign(256 * 256, {32768, 32768, 32768});
    const auto samples = exposeAll(model, settingsOf(model), scene);
    double sum = 0, squares = 0;
    for (const double v : samples) sum += v, squares += v * v;
    const double mean = sum / static_cast<double>(samples.size());
    const double deviation = std::sqrt(squares / static_cast<double>(samples.size()) - mean * mean);
    EXPECT_NEAR(mean, 2047.5, 1);
    // sqrt(5000 + 900) of 10000 electrons, in samples.
    EXPECT_NEAR(deviation, std::sqrt(5900.0) / 10000 * 4095, 0.5);
}

TEST(Sensor, TheSameSeedGivesTheSameNoise) {
    Model model = cleanModel(1);
    model.sensor.noise = true;
    const auto expose = [&](std::uint32_t seed, std::uint32_t variant) {
        model.sensor.seed = seed;
        return exposeAll(model, settingsOf(model), greyScene(0.5), variant);
    };
    EXPECT_EQ(expose(1, 0), expose(1, 0));
    EXPECT_NE(expose(1, 0), expose(1, 1)) << "variants differ";
    EXPECT_NE(expose(1, 0), expose(2, 0)) << "seeds differ";
}

TEST(Sensor, RegionsFollowEachOtherAndTheGridIsOnePiece) {
    const Model model = cleanModel(1);
    const Scene scene = countingScene();
    FrameSettings settings = settingsOf(model);
    const auto whole = exposeAll(model, settings, scene);
    settings.view.regions = {{0, 0, 4, 2, true}, {8, 4, 4, 2, true}};
    const auto apart = exposeAll(model, settings, scene);
    ASSERT_EQ(apart.size(), 16u);
    EXPECT_EQ(apart[8], whole[4 * 16 + 8]);
    EXPECT_EQ(apart[15], whole[5 * 16 + 11]);
    settings.view.grid = true;
    settings.view.columns = {0, 1, 2, 3, 8, 9, 10, 11};
    settings.view.rows = {0, 1, 4, 5};
    const auto grid = exposeAll(model, settings, scene);
    ASSERT_EQ(grid.size(), 32u);
    EXPECT_EQ(grid[4], whole[8]);
    EXPECT_EQ(grid[2 * 8 + 4], whole[4 * 16 + 8]);
}

TEST(Renderer, AStillSceneIsDrawnOnce) {
    const Model model = cleanModel(1);
    Renderer renderer(model);
    EXPECT_EQ(renderer.frame(0), nullptr) << "no settings yet";
    FrameSettings settings = settingsOf(model);
    renderer.use(settings);
    const auto first = renderer.frame(0);
    ASSERT_NE(first, nullptr);
    renderer.use(settings);
    EXPECT_EQ(renderer.frame(1), first);
    settings.gain = 2;
    renderer.use(settings);
    EXPECT_NE(renderer.frame(2), first);
    EXPECT_EQ(first->size(), 64u + 16 * 8);
}

TEST(Renderer, NoiseVariantsTakeTurns) {
    Model model = cleanModel(1);
    model.sensor.noise = true;
    model.sensor.noiseVariants = 3;
    Renderer renderer(model);
    renderer.use(settingsOf(model));
    const auto first = renderer.frame(0);
    EXPECT_NE(*renderer.frame(1), *first);
    EXPECT_EQ(renderer.frame(3), first);
}

}  // namespace
}  // namespace tavra::usbd
