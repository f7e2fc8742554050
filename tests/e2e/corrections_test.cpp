// What is wrong with a sensor and its lens is put right: vignetting, hot pixels, a mirrored read-out.
#include <algorithm>
#include <utility>
#include <vector>

#include "e2e/grey_card.h"

namespace tavra::e2e {
namespace {

constexpr std::uint32_t kWidth = 64, kHeight = 48;
const std::string kSmall = ":width=64:height=48:x=0:y=0:pace=off:noise=off";
const std::string kSensor = ":geometry.sensor_width=64:geometry.sensor_height=48";

std::pair<int, int> rangeOf(const Bytes& bytes) {
    if (bytes.empty()) return {0, 0};
    const auto [low, high] = std::minmax_element(bytes.begin(), bytes.end());
    return {*low, *high};
}

TEST(Corrections, ShadingIsCalibratedAndFlattensVignetting) {
    const GreyCard card;
    useCameras("bayer" + kSmall + kSensor + card.key() + ":vignetting=0.5:hotpixels=0");
    Camera camera;
    ASSERT_TRUE(camera.isOpen());
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(camera, TAVRA_WHITE_BALANCE_OFF));
    FrameLog images;
    images.takePreviewOf(camera);
    camera.start();
    const auto [darkest, brightest] = rangeOf(images.waitFor(1)[0].bytes);
    EXPECT_LT(darkest, 0.6 * brightest) << "there is nothing to flatten";

    ASSERT_TRUE(Tavra_SetShadingCorrectionMode(camera, 1));  // calibrates with the frames that come
    takeNextPreview(camera);
    ASSERT_TRUE(Tavra_SetShadingCorrectionMode(camera, 2));
    // Gains are 128ths and results whole levels, both cut: the middle's level, and two below it.
    const auto [low, high] = rangeOf(takeNextPreview(camera));
    EXPECT_GE(high, brightest - 2);
    EXPECT_LE(high, brightest);
    EXPECT_LE(high - low, 3);

    ASSERT_TRUE(Tavra_SetShadingCorrectionMode(camera, 0));
    EXPECT_EQ(rangeOf(takeNextPreview(camera)), std::make_pair(darkest, brightest));
    camera.stop();
}

TEST(Corrections, AShadingMapIsTakenToTheNextOpening) {
    const GreyCard card;
    useCameras("mono" + kSmall + kSensor + card.key() + ":vignetting=0.5:hotpixels=0");
    std::vector<std::int32_t> map(kWidth * kHeight);
    Bytes corrected;
    {
        Camera camera;
        ASSERT_TRUE(camera.isOpen());
        FrameLog images;
        images.takePreviewOf(camera);
        ASSERT_TRUE(Tavra_SetShadingCorrectionMode(camera, 1));
        camera.start();
        takeNextPreview(camera);
        ASSERT_TRUE(Tavra_SetShadingCorrectionMode(camera, 2));
        corrected = takeNextPreview(camera);
        camera.stop();
        std::uint32_t width = 0, height = 0, stride = 0;
        ASSERT_TRUE(Tavra_GetShadingCorrectionMap(camera, &width, &height, &stride, nullptr));
        ASSERT_EQ(width, kWidth);
        ASSERT_EQ(height, kHeight);
        ASSERT_EQ(stride, 4 * kWidth);
        ASSERT_TRUE(Tavra_GetShadingCorrectionMap(camera, nullptr, nullptr, nullptr, map.data()));
    }
    Camera camera;
    ASSERT_TRUE(camera.isOpen());
    ASSERT_TRUE(Tavra_SetShadingCorrectionMap(camera, kWidth, kHeight, 4 * kWidth, map.data()));
    ASSERT_TRUE(Tavra_SetShadingCorrectionMode(camera, 2));
    EXPECT_EQ(takePreview(camera), corrected);
}

// With the lens capped only hot pixels are bright.
TEST(Corrections, DefectDetectionFindsTheHotPixels) {
    for (const std::string model : {"bayer", "mono", "statusword"}) {
        SCOPED_TRACE(model);
        const std::string size =
            model == "statusword" ? ":identity.maximum_width=64:identity.maximum_height=48" : kSensor;
        useCameras(model + kSmall + size + ":light=0:hotpixels=5");
        Camera camera;
        ASSERT_TRUE(camera.isOpen());
        constexpr std::uint16_t kThreshold = 30;
        const Bytes capped = takeRaw(camera);
        ASSERT_EQ(capped.size(), kWidth * kHeight);
        std::vector<std::pair<std::uint32_t, std::uint32_t>> bright;
        for (std::uint32_t i = 0; i < capped.size(); ++i) {
            if (capped[i] >= kThreshold) bright.emplace_back(i % kWidth, i / kWidth);
        }
        ASSERT_FALSE(bright.empty());

        ASSERT_TRUE(Tavra_DetectDefectPixel(camera, kWidth, kHeight, capped.data(), kThreshold));
        std::uint16_t entries = 0;
        ASSERT_TRUE(Tavra_GetEnableDefectPixelCorrectionCount(camera, &entries));
        ASSERT_GE(entries, bright.size());
        for (std::uint16_t i = 0; i < entries; ++i) {
            std::uint32_t x = 0, y = 0;
            ASSERT_TRUE(Tavra_GetDefectPixelCorrectionPosition(camera, i, &x, &y));
            const auto expected = i < bright.size() ? bright[i] : std::make_pair(65535u, 65535u);
            EXPECT_EQ(std::make_pair(x, y), expected) << i;
        }
        EXPECT_EQ(takeRaw(camera), capped) << "it is not switched on yet";
        ASSERT_TRUE(Tavra_SetDefectPixelCorrectionMode(camera, 1));
        EXPECT_EQ(rangeOf(takeRaw(camera)), std::make_pair(0, 0));
    }
}

// Noise reduction acts where a trigger makes the exposure. A dark frame holds what a pixel has above the
// lowest of its position; of an even scene those are the hot ones.
TEST(Corrections, ADarkFrameTakesTheHotPixelsAway) {
    const GreyCard card;
    useCameras("statusword" + kSmall + ":identity.maximum_width=64:identity.maximum_height=48" + card.key() +
               ":vignetting=0:hotpixels=6:light=0.5");
    Camera camera;
    ASSERT_TRUE(camera.isOpen());
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(camera, TAVRA_WHITE_BALANCE_OFF));
    ASSERT_TRUE(Tavra_SetColorInterpolationMethod(camera, 1));  // each sample in its own channel
    ASSERT_TRUE(Tavra_SetTriggerMode(camera, 1));
    ASSERT_TRUE(Tavra_SetExposureMode(camera, TAVRA_EXPOSURE_MODE_TRIGGER_WIDTH));
    FrameLog images;
    images.takePreviewOf(camera);
    camera.start();
    const auto triggered = [&] {
        const std::size_t before = images.count();
        EXPECT_TRUE(Tavra_TriggerSoftware(camera, TAVRA_TRIGGER_SELECTOR_0));
        return images.waitFor(before + 1).back().bytes;
    };
    // Levels of a channel: 0 where it has no sample, and one for its samples if they are even.
    const auto levels = [](const Bytes& image) {
        std::array<std::vector<int>, 3> all;
        for (std::size_t i = 0; i < image.size(); ++i) all[i % 3].push_back(image[i]);
        std::size_t different = 0;
        for (auto& channel : all) {
            std::sort(channel.begin(), channel.end());
            different +=
                static_cast<std::size_t>(std::unique(channel.begin(), channel.end()) - channel.begin());
        }
        return different;
    };
    EXPECT_GT(levels(triggered()), 6u) << "there is nothing to take away";
    ASSERT_TRUE(Tavra_SetNoiseReductionMode(camera, TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME));
    triggered();
    ASSERT_TRUE(Tavra_SetNoiseReductionMode(camera, TAVRA_NOISE_REDUCTION_DARK_FRAME));
    EXPECT_EQ(levels(triggered()), 6u);
    ASSERT_TRUE(Tavra_SetNoiseReductionMode(camera, TAVRA_NOISE_REDUCTION_OFF));
    EXPECT_GT(levels(triggered()), 6u);
    camera.stop();
}

// Whoever mirrors, camera or library: the picture is the same, bit by bit, colours and all.
TEST(Corrections, AMirroredCameraKeepsItsColors) {
    useCameras("mirror" + kSmall + kSensor + ":vignetting=0:hotpixels=0:kelvin=4000");
    Camera camera;
    ASSERT_TRUE(camera.isOpen());
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(camera, TAVRA_WHITE_BALANCE_MANUAL));
    const Bytes straight = takePreview(camera);
    ASSERT_EQ(straight.size(), kWidth * kHeight * 3);
    for (const std::uint8_t mirror : {1, 2, 3}) {
        SCOPED_TRACE(+mirror);
        ASSERT_TRUE(Tavra_SetMirrorMode(camera, mirror));
        const Bytes here = takePreview(camera);
        ASSERT_TRUE(Tavra_SetMirrorMode(camera, static_cast<std::uint8_t>(mirror << 4)));
        EXPECT_EQ(takePreview(camera), here);
        EXPECT_NE(here, straight);
        // Mirrored twice: as it was.
        ASSERT_TRUE(Tavra_SetMirrorMode(camera, static_cast<std::uint8_t>(mirror << 4 | mirror)));
        EXPECT_EQ(takePreview(camera), straight);
    }
}

}  // namespace
}  // namespace tavra::e2e
