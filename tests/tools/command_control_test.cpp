// Automatic control and calibration, as a person sees them.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "command_fixture.h"

namespace tavra::test {
namespace {

struct Color {
    double r = 0, g = 0, b = 0;
    double y() const { return 0.299 * r + 0.587 * g + 0.114 * b; }
};

Color meanOf(const Picture& picture, std::uint32_t x, std::uint32_t y, std::uint32_t width,
             std::uint32_t height) {
    Color sum;
    for (std::uint32_t row = y; row < y + height; ++row) {
        for (std::uint32_t column = x; column < x + width; ++column) {
            const std::uint8_t* const pixel = &picture.rgb[(std::size_t{row} * picture.width + column) * 3];
            sum.r += pixel[0];
            sum.g += pixel[1];
            sum.b += pixel[2];
        }
    }
    const double count = static_cast<double>(width) * height;
    return {sum.r / count, sum.g / count, sum.b / count};
}

Color meanOf(const Picture& picture) {
    return meanOf(picture, 0, 0, picture.width, picture.height);
}

// Exposure rests within tolerance and threshold, 5 each, of its target 128; white balance when R and B are no
// further than 0.5 levels from G together, and starts again at 1.
constexpr double kExposureBand = 10.5;
constexpr double kBalanceBand = 1.5;

TEST_F(CommandTest, SnapAutoEndsAsAPictureToKeepWhereItBeganDarkAndGreen) {
    const std::string scene = "--virtual bayer:light=dim:pace=off:vignetting=0:width=640 ";
    EXPECT_EQ(run("snap " + scene + "before.png").exitCode, 0);
    const Outcome outcome = run("snap --auto " + scene + "after.png");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.output.find("settled in"), std::string::npos) << outcome.output;
    const Picture before = picture("before.png"), after = picture("after.png");
    ASSERT_FALSE(before.rgb.empty());
    ASSERT_FALSE(after.rgb.empty());
    EXPECT_LT(meanOf(before).y(), 40);
    EXPECT_GT(meanOf(before).g, 1.2 * meanOf(before).r);
    const Color kept = meanOf(after);
    EXPECT_NEAR(kept.y(), 128, kExposureBand);
    EXPECT_NEAR(kept.r, kept.g, kBalanceBand + 1);  // interpolation cuts off
    EXPECT_NEAR(kept.b, kept.g, kBalanceBand + 1);
}

TEST_F(CommandTest, SnapAutoKeepsToWhatSetSays) {
    // The shutter alone, and a white balance by hand: gain and gains stay.
    const Outcome outcome =
        run("snap --auto --virtual bayer:light=3:pace=off:width=640 --set alc=shutter --set alc.target=60 "
            "--set wb=manual "
            "--set wb.gains=1.5,1 shutter.png");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_NE(outcome.output.find("gain  0.0dB  wb R 1.50 B 1.00\n"), std::string::npos) << outcome.output;
    EXPECT_NEAR(meanOf(picture("shutter.png")).y(), 60, kExposureBand);
}

TEST_F(CommandTest, SnapAutoTellsWhatHadNotSettledInTime) {
    const Outcome outcome = run("snap --auto --settle 0.1 --virtual bayer:light=dim late.png");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_NE(outcome.output.find("exposure and white balance had not settled after "), std::string::npos)
        << outcome.output;
    EXPECT_TRUE(std::filesystem::exists(folder / "late.png"));
}

TEST_F(CommandTest, SnapAutoLeavesTheGainsOfAQuadMosaicAlone) {
    const Outcome outcome = run("snap --auto --virtual quad:kelvin=3500:pace=off:width=640 quad.png");
    EXPECT_NE(outcome.output.find("settled in"), std::string::npos) << outcome.output;
    EXPECT_EQ(outcome.output.find("wb R 0.0"), std::string::npos) << outcome.output;
    EXPECT_EQ(run("watch --frames 100 --every 100 --virtual quad:kelvin=3500:pace=off:width=640")
                  .output.find("balance move"),
              std::string::npos);
}

// The light is redder than white, so less red and more blue than in white light make grey.
TEST_F(CommandTest, SnapAutoLetsACameraBalanceItself) {
    const auto gains = [this](const std::string& scene) {
        const std::string output =
            run("snap --auto --virtual wb:pace=off:width=640:" + scene + " wb.png").output;
        const std::size_t at = output.rfind("wb R ");
        double r = 0, b = 0;
        EXPECT_EQ(std::sscanf(output.c_str() + std::min(at, output.size()), "wb R %lf B %lf", &r, &b), 2)
            << output;
        return std::pair(r, b);
    };
    const auto white = gains("kelvin=5500"), red = gains("kelvin=3000");
    EXPECT_LT(red.first, white.first);
    EXPECT_GT(red.second, white.second);
}

TEST_F(CommandTest, SnapAutoSettlesAMonoCameraAndRefusesFinishedFrames) {
    const Outcome mono = run("snap --auto --virtual mono:light=0.5:pace=off:width=640 mono.png");
    EXPECT_NE(mono.output.find("settled in"), std::string::npos) << mono.output;
    EXPECT_NEAR(meanOf(picture("mono.png")).y(), 128, kExposureBand);
    const Outcome finished = run("snap --auto --virtual bgr bgr.png");
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_NE(finished.output.find("sends bgr8"), std::string::npos) << finished.output;
    EXPECT_FALSE(std::filesystem::exists(folder / "bgr.png"));
}

// Six seconds of 30 frames each have a light of their own.
constexpr std::uint32_t kStepFrames = 180, kSteps = 6;

// What is not as it should be where each of the lights ends.
std::vector<std::string> faultsOf(const std::vector<nlohmann::json>& readings) {
    std::vector<std::string> faults;
    std::array<bool, kSteps> seen{}, moved{};
    for (const auto& reading : readings) {
        const std::uint32_t frame = reading["frame"];
        const std::uint32_t step = frame / kStepFrames;
        if (step >= kSteps) continue;
        moved[step] |= reading["exposureMoves"] || reading["whiteBalanceMoves"];
        if (frame % kStepFrames < kStepFrames - 10) continue;  // not the last of its step
        seen[step] = true;
        const double y = reading["y"], red = reading["mean"]["r"], blue = reading["mean"]["b"];
        const double green = (reading["mean"]["gr"].get<double>() + reading["mean"]["gb"].get<double>()) / 2;
        const bool atRest = !reading["exposureMoves"] && std::abs(y - 128) <= kExposureBand;
        // White balance may still be at its last tenths, where frames are slow to come.
        const bool grey =
            std::abs(red - green) <= 2 * kBalanceBand && std::abs(blue - green) <= 2 * kBalanceBand;
        if (!atRest || !grey) faults.push_back(reading.dump());
    }
    for (std::uint32_t step = 0; step < kSteps; ++step) {
        if (!seen[step] || !moved[step])
            faults.push_back("no end or no movement in step " + std::to_string(step));
    }
    return faults;
}

// A narrow image, of as many lines and so of the same frame time as the whole: the sanitizers take long
// enough. The frames come as fast as they are read, so on a machine under load the controls may miss so many
// of them that a light is over before they are done. That is not so three times running.
TEST_F(CommandTest, WatchShowsBothControlsSettleAfterEachStepOfTheScript) {
    std::vector<std::string> faults;
    for (int attempt = 0; attempt < 3; ++attempt) {
        // As many as the frames of the script and a few more, for those on their way as it ends.
        const auto readings =
            lines(run("watch --json --every 10 --frames 1100 --virtual bayer:light=script:pace=off:width=640")
                      .output);
        ASSERT_GE(readings.size(), 108u);
        faults = faultsOf(readings);
        if (faults.empty()) break;
    }
    EXPECT_THAT(faults, testing::IsEmpty());
}

TEST_F(CommandTest, WatchTellsALineForEveryReadingInAPipe) {
    const Outcome outcome = run("watch --every 5 --frames 20 --virtual bayer:pace=off --set alc=off");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_GE(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 4);
    EXPECT_NE(outcome.output.find("mean R"), std::string::npos) << outcome.output;
    EXPECT_EQ(outcome.output.find("exposure moves"), std::string::npos) << outcome.output;
    EXPECT_EQ(run("watch --frames 20 --virtual bgr").exitCode, 1);
    EXPECT_EQ(run("watch --frames 10 --virtual mono:pace=off:fault.vanish_at_frame=3").exitCode, 4);
}

TEST_F(CommandTest, CalibratedShadingEvensOutAFlatField) {
    std::vector<std::uint8_t> grey(16 * 16, 120);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = image.height = 16;
    image.format = PNG_FORMAT_GRAY;
    ASSERT_TRUE(png_image_write_to_file(&image, (folder / "flat.png").c_str(), 0, grey.data(), 0, nullptr));
    const std::string scene =
        "--virtual bayer:width=320:height=240:vignetting=0.9:pace=off:hotpixels=0:scene=flat.png ";
    EXPECT_EQ(run("snap " + scene + "before.png").exitCode, 0);
    const Picture before = picture("before.png");
    ASSERT_FALSE(before.rgb.empty());
    const double slope = meanOf(before, 300, 220, 20, 20).g - meanOf(before, 0, 0, 20, 20).g;
    EXPECT_GT(std::abs(slope), 8) << "the image is off the lens's middle";
    for (const char* kind : {"", "--offset "}) {
        const Outcome made = run("calibrate shading " + scene + kind + "--frames 8 flat.shading");
        EXPECT_EQ(made.exitCode, 0) << made.output;
        EXPECT_NE(made.output.find("flat field: frame 8 of 8"), std::string::npos) << made.output;
        EXPECT_NE(made.output.find("flat.shading: 320x240"), std::string::npos) << made.output;
        EXPECT_EQ(run("snap " + scene + "--set shading.map=flat.shading after.png").exitCode, 0);
        const Picture after = picture("after.png");
        ASSERT_FALSE(after.rgb.empty());
        EXPECT_NEAR(meanOf(after, 300, 220, 20, 20).g, meanOf(after, 0, 0, 20, 20).g, 1.5) << kind;
    }
    const Outcome other = run("snap --virtual bayer --set shading.map=flat.shading other.png");
    EXPECT_EQ(other.exitCode, 1);
    EXPECT_NE(other.output.find("320x240"), std::string::npos) << other.output;
    EXPECT_EQ(run("snap --virtual bayer --set shading.map=absent other.png").exitCode, 1);
}

TEST_F(CommandTest, ADarkFrameTakesTheHotPixelsOutOfAPicture) {
    const std::string scene = "--virtual bayer:light=0:noise=off:hotpixels=12:timing.trigger_width_ms=30 ";
    EXPECT_EQ(run("snap " + scene + "--set exposure=30ms hot.png").exitCode, 0);
    const auto brightest = [this](const std::string& name) {
        const Picture read = picture(name);
        return read.rgb.empty() ? -1 : static_cast<int>(*std::max_element(read.rgb.begin(), read.rgb.end()));
    };
    EXPECT_GT(brightest("hot.png"), 50);
    const Outcome dark = run("calibrate dark " + scene + "less.png </dev/null");
    EXPECT_EQ(dark.exitCode, 0) << dark.output;
    EXPECT_EQ(brightest("less.png"), 0);
}

TEST_F(CommandTest, ADarkFrameIsTakenHoweverSoonItComesBehindItsTrigger) {
    environment =
        "LD_PRELOAD='" TAVRA_LATE_TRIGGER "' ASAN_OPTIONS=\"$ASAN_OPTIONS:verify_asan_link_order=0\"";
    const Outcome dark = run("calibrate dark --virtual bayer:light=0:noise=off less.png </dev/null");
    EXPECT_EQ(dark.exitCode, 0) << dark.output;
    EXPECT_FALSE(picture("less.png").rgb.empty());
}

TEST_F(CommandTest, DefectsAreCountedAndWrittenOnRequest) {
    const std::string scene =
        "--virtual bayer:light=0:noise=off:hotpixels=12:pace=off --set size=2048x1152 --threshold 20 ";
    const Outcome counted = run("calibrate defects " + scene);
    EXPECT_EQ(counted.exitCode, 0) << counted.output;
    EXPECT_NE(counted.output.find("12 pixels at or above 20; the camera can list 64."), std::string::npos)
        << counted.output;
    EXPECT_NE(counted.output.find("Nothing was written"), std::string::npos) << counted.output;
    const Outcome applied = run("calibrate defects " + scene + "--apply");
    EXPECT_EQ(applied.exitCode, 0) << applied.output;
    EXPECT_NE(applied.output.find("12 are in the camera's list"), std::string::npos) << applied.output;
}

TEST_F(CommandTest, DefectsAreNotTakenFromLightOrFromAPartOfTheSensor) {
    const Outcome light = run("calibrate defects --virtual bayer --set size=2048x1152 --apply");
    EXPECT_EQ(light.exitCode, 1);
    EXPECT_NE(light.output.find("cap the lens"), std::string::npos) << light.output;
    const Outcome part = run("calibrate defects --virtual bayer:light=0");
    EXPECT_EQ(part.exitCode, 1);
    EXPECT_NE(part.output.find("--set size=2048x1152"), std::string::npos) << part.output;
    EXPECT_NE(run("calibrate defects --virtual legacy773").output.find("has no defect pixel correction"),
              std::string::npos);
    EXPECT_EQ(run("calibrate").exitCode, 2);
}

}  // namespace
}  // namespace tavra::test
