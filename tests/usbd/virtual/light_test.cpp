// Light that changes while a camera runs.
#include "light.h"

#include <gtest/gtest.h>

#include "model_toml.h"
#include "usbd/virtual_cameras.h"

namespace tavra::usbd {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using test::Camera;
using test::meanOf;
using test::rawOf;
using test::readTransfer;
using test::useCameras;

SceneModel threeSteps() {
    SceneModel scene;
    scene.script = {{2, 1, 5500}, {0.5, 0.25, 5500}, {1.5, 0.25, 3000}};
    return scene;
}

TEST(LightScript, StepsFollowEachOtherAndBeginAnew) {
    const SceneModel scene = threeSteps();
    EXPECT_EQ(lightStepAt(scene, seconds(0)), 0u);
    EXPECT_EQ(lightStepAt(scene, seconds(2) - nanoseconds(1)), 0u);
    EXPECT_EQ(lightStepAt(scene, seconds(2)), 1u);
    EXPECT_EQ(lightStepAt(scene, milliseconds(2499)), 1u);
    EXPECT_EQ(lightStepAt(scene, milliseconds(2500)), 2u);
    EXPECT_EQ(lightStepAt(scene, milliseconds(3999)), 2u);
    EXPECT_EQ(lightStepAt(scene, seconds(4)), 0u);
    EXPECT_EQ(lightStepAt(scene, seconds(4 * 1000000) + milliseconds(2200)), 1u);
}

TEST(LightScript, AStepHasItsLightAndColour) {
    const SceneModel scene = threeSteps();
    EXPECT_EQ(illuminationOf(scene, 1).light, 0.25);
    EXPECT_EQ(illuminationOf(scene, 1).color, lightColor(5500));
    EXPECT_EQ(illuminationOf(scene, 2).color, lightColor(3000));
}

TEST(Light, WithoutAScriptItStays) {
    SceneModel scene;
    scene.light = 0.5;
    scene.kelvin = 4000;
    EXPECT_EQ(lightStepAt(scene, seconds(1000)), 0u);
    EXPECT_EQ(illuminationOf(scene, 0).light, 0.5);
    EXPECT_EQ(illuminationOf(scene, 0).color, lightColor(4000));
}

TEST(Light, TheTintTakesRedAndBlueAway) {
    SceneModel scene;
    scene.tint = 1.25;
    const auto color = illuminationOf(scene, 0).color;
    EXPECT_NEAR(color[0], 0.8, 1e-12);
    EXPECT_NEAR(color[1], 1.0, 1e-12);
    EXPECT_NEAR(color[2], 0.8, 1e-12);
}

TEST(LightScript, TheBuiltInOneHasStepsForBothLoops) {
    bool brightens = false, darkens = false, reddens = false, turnsBlue = false;
    const std::vector<LightStep>& script = builtInLightScript();
    ASSERT_GT(script.size(), 1u);
    EXPECT_EQ(script[0].light, 1.0) << "it begins as a camera without a script";
    EXPECT_EQ(script[0].kelvin, 5500.0);
    for (std::size_t i = 0; i < script.size(); ++i) {
        const LightStep &now = script[i], &next = script[(i + 1) % script.size()];
        EXPECT_GE(now.seconds, 2.0);
        EXPECT_LE(now.seconds, 10.0);
        EXPECT_NE(now.light != next.light, now.kelvin != next.kelvin) << "one thing at a time, step " << i;
        brightens |= next.light > now.light;
        darkens |= next.light < now.light;
        reddens |= next.kelvin < now.kelvin;
        turnsBlue |= next.kelvin > now.kelvin;
    }
    EXPECT_TRUE(brightens && darkens && reddens && turnsBlue);
}

const std::string kFile = "[identity]\nproduct_type = 300\nmaximum_width = 64\nmaximum_height = 48\n";

SceneModel sceneOfKeys(const std::vector<Override>& keys, const std::string& more = "") {
    Model model;
    std::string complaint;
    EXPECT_TRUE(parseModel(kFile + more, keys, model, complaint)) << complaint;
    return model.scene;
}

TEST(LightKey, IsANumberOrAName) {
    EXPECT_EQ(sceneOfKeys({{"light", "0.25"}}).light, 0.25);
    EXPECT_TRUE(sceneOfKeys({{"light", "0.25"}}).script.empty());
    EXPECT_EQ(sceneOfKeys({{"light", "3"}}).light, 3.0);
    EXPECT_EQ(sceneOfKeys({{"light", "script"}}).script.size(), builtInLightScript().size());
    const SceneModel dim = sceneOfKeys({{"light", "dim"}});
    EXPECT_LT(dim.light, 0.5);
    EXPECT_GT(dim.tint, 1.2) << "greenish";
    EXPECT_EQ(sceneOfKeys({{"light", "dim"}, {"tint", "1"}}).tint, 1.0);
    Model model;
    std::string complaint;
    EXPECT_FALSE(parseModel(kFile, {{"light", "bright"}}, model, complaint));
    EXPECT_NE(complaint.find("scene.light must be a number from 0"), std::string::npos) << complaint;
    EXPECT_NE(complaint.find("script, dim"), std::string::npos) << complaint;
    EXPECT_FALSE(parseModel(kFile, {{"light", "-1"}}, model, complaint));
    EXPECT_FALSE(parseModel(kFile, {{"tint", "0"}}, model, complaint));
}

TEST(LightKey, StepsOfAFileTakeThePlaceOfTheBuiltInOnes) {
    const std::string steps =
        "[[scene.step]]\nseconds = 1\nlight = 0.5\n[[scene.step]]\nseconds = 2\nkelvin = 9000\n";
    const SceneModel scene = sceneOfKeys({{"light", "script"}}, steps);
    ASSERT_EQ(scene.script.size(), 2u);
    EXPECT_EQ(scene.script[0].light, 0.5);
    EXPECT_EQ(scene.script[0].kelvin, 5500.0);
    EXPECT_EQ(scene.script[1].seconds, 2.0);
    EXPECT_EQ(scene.script[1].light, 1.0);
    EXPECT_EQ(scene.script[1].kelvin, 9000.0);
    EXPECT_TRUE(sceneOfKeys({}, steps).script.empty()) << "played only when it is asked for";
    Model model;
    std::string complaint;
    EXPECT_FALSE(parseModel(kFile + "[[scene.step]]\nseconds = 0\n", {}, model, complaint));
    EXPECT_FALSE(parseModel(kFile + "[[scene.step]]\nlong = 1\n", {}, model, complaint));
    EXPECT_FALSE(parseModel(kFile + "[scene]\nstep = 3\n", {}, model, complaint));
}

// A perfect sensor of 64 x 48 pixels with a frame of one second: 50 lines of 1000 clocks at 50 kHz.
const std::string kSlow =
    ":pace=off:noise=off:vignetting=0:hotpixels=0:geometry.sensor_width=64:geometry.sensor_height=48:width="
    "64:"
    "height=48:x=0:y=0:timing.clocks_per_line=1000:timing.blank_lines=2:identity.clock_value=50000:"
    "timing.exposure_unit=line";

TEST(LightScript, RunsByTheFrameTimeOfTheCamera) {
    useCameras("mono:light=script" + kSlow);
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    std::vector<double> means;
    for (int frame = 0; frame < 42; ++frame) means.push_back(meanOf(rawOf(readTransfer(camera))));
    UsbEndRead(camera.handle());
    for (std::size_t frame = 0; frame < means.size(); ++frame) {
        const LightStep& step = builtInLightScript()[frame / 6 % 6];
        if (step.light > 1) {
            EXPECT_GT(means[frame], means[0] * 1.3) << frame;  // its highlights saturate
        } else {
            EXPECT_NEAR(means[frame], means[0] * step.light, 0.6) << frame;
        }
    }
}

TEST(LightScript, TheSameSeedGivesTheSameBytes) {
    std::vector<std::vector<std::uint8_t>> first;
    for (int run = 0; run < 2; ++run) {
        useCameras("wb:light=script" + kSlow + ":noise=on:hotpixels=9");
        Camera camera;
        ASSERT_TRUE(camera.setStatus(0x8044, 2));
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        for (std::size_t i = 0; i < 40; ++i) {
            auto frame = readTransfer(camera);
            if (run == 0) {
                first.push_back(std::move(frame));
            } else {
                EXPECT_EQ(frame, first[i]) << i;
            }
        }
        UsbEndRead(camera.handle());
    }
}

// Mean of the sites of one column and row parity of a mosaic.
double siteMean(const std::vector<std::uint8_t>& frame, std::size_t column, std::size_t row) {
    double sum = 0;
    for (std::size_t y = row; y < 48; y += 2) {
        for (std::size_t x = column; x < 64; x += 2) sum += frame[64 + y * 64 + x];
    }
    return sum / (32 * 24);
}

TEST(Light, ItsColourReachesTheSites) {
    const auto sites = [](const std::string& light) {
        useCameras("bayer" + kSlow + light);
        Camera camera;
        EXPECT_EQ(UsbBeginRead(camera.handle()), 1);
        const auto frame = readTransfer(camera);
        UsbEndRead(camera.handle());
        return std::array<double, 3>{siteMean(frame, 0, 0), siteMean(frame, 1, 0), siteMean(frame, 1, 1)};
    };
    const auto white = sites(":light=0.5");
    for (const int kelvin : {2500, 4000, 10000}) {
        const auto color = lightColor(kelvin);
        const auto seen = sites(":light=0.25:kelvin=" + std::to_string(kelvin));
        for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(seen[c], white[c] * color[c] / 2, 1) << kelvin;
    }
    const auto dim = sites(":light=dim"), whiteDim = sites(":light=dim:tint=1");
    EXPECT_NEAR(dim[1], whiteDim[1], 0.01);
    EXPECT_LT(dim[0], whiteDim[0] * 0.8);
    EXPECT_LT(dim[2], whiteDim[2] * 0.8);
}

}  // namespace
}  // namespace tavra::usbd
