// Settings from other threads while the stream runs.
#include <array>
#include <atomic>
#include <cstdlib>
#include <thread>

#include "e2e/camera_fixture.h"

namespace tavra::e2e {
namespace {

TEST(Settings, AreChangedByOtherThreadsWhileTheStreamRuns) {
    useCameras("bayer:width=64:height=48:noise=off:pace=off");
    Camera camera;
    FrameLog raws, images;
    raws.takeRawOf(camera);
    images.takePreviewOf(camera);
    camera.start();
    images.waitFor(1);

    std::thread interpolation([&] {
        for (std::uint8_t i = 0; i < 60; ++i) {
            const std::uint8_t method = i % 6;
            std::uint8_t now = 0xEE;
            EXPECT_TRUE(Tavra_SetColorInterpolationMethod(camera, method));
            EXPECT_TRUE(Tavra_GetColorInterpolationMethod(camera, &now));
            EXPECT_EQ(now, method);
        }
    });
    std::thread trigger([&] {
        for (std::uint32_t i = 0; i < 60; ++i) {
            std::uint32_t on = 0;
            EXPECT_TRUE(Tavra_SetTriggerMode2(camera, TAVRA_TRIGGER_SELECTOR_2, i % 2));
            EXPECT_TRUE(Tavra_GetTriggerMode2(camera, TAVRA_TRIGGER_SELECTOR_2, &on));
            EXPECT_EQ(on, i % 2);
            EXPECT_TRUE(Tavra_TriggerSoftware(camera, TAVRA_TRIGGER_SELECTOR_2));
        }
        EXPECT_TRUE(Tavra_SetTriggerMode2(camera, TAVRA_TRIGGER_SELECTOR_2, 0));
    });
    std::thread memory([&] {
        for (std::uint32_t i = 0; i < 60; ++i) {
            std::array<std::uint8_t, 32> written{}, read{};
            written.fill(static_cast<std::uint8_t>(i));
            EXPECT_TRUE(Tavra_WriteUserMemory(camera, written.data(), 16, 32));
            EXPECT_TRUE(Tavra_ReadUserMemory(camera, read.data(), 16, 32));
            EXPECT_EQ(read, written);
        }
    });
    interpolation.join();
    trigger.join();
    memory.join();

    images.waitFor(images.count() + 3);
    camera.stop();
    expectRisingNumbers(raws.waitFor(1));
    expectRisingNumbers(images.waitFor(1));
}

TEST(Settings, OfInterpolationAreTakenOverWithTheNextImage) {
    useCameras("bayer:width=64:height=48:noise=off:pace=off");
    Camera camera;
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(camera, TAVRA_WHITE_BALANCE_OFF));
    FrameLog log;
    log.takeRawOf(camera);
    camera.start();
    const Bytes raw = takeRaw(camera);
    for (std::uint8_t method = 0; method < 6; ++method) {
        ASSERT_TRUE(Tavra_SetColorInterpolationMethod(camera, method));
        Bytes expected(64 * 48 * 3);
        ASSERT_TRUE(
            Tavra_ConvertRawToBGR(camera, 64, 48, raw.data(), expected.data(), method, TAVRA_PIXEL_BGR_24));
        // The image under way may have the method of before.
        takePreview(camera);
        EXPECT_EQ(takePreview(camera), expected) << +method;
    }
    camera.stop();
}

// For how long the settings of all stages are changed: TAVRA_SETTINGS_SECONDS, else shortly.
std::chrono::milliseconds timeForSettings() {
    const char* const text = std::getenv("TAVRA_SETTINGS_SECONDS");
    const long seconds = text != nullptr ? std::strtol(text, nullptr, 10) : 0;
    return seconds > 0 ? std::chrono::seconds(seconds) : std::chrono::milliseconds(1000);
}

// Round after round of one group of settings, until the time is over.
class Setters {
  public:
    template <typename Round>
    void add(Round round) {
        ++running_;
        threads_.emplace_back([this, round] {
            for (std::uint32_t i = 0; std::chrono::steady_clock::now() < end_; ++i) round(i);
            --running_;
        });
    }
    // Each rotation tells a mask and a destination; a queue that nobody empties would fill up.
    void join(Camera& camera) {
        while (running_ != 0) camera.takePlaces(1);
        for (std::thread& thread : threads_) thread.join();
        camera.takePlaces(0);
    }

  private:
    const std::chrono::steady_clock::time_point end_ = std::chrono::steady_clock::now() + timeForSettings();
    std::atomic<int> running_{0};
    std::vector<std::thread> threads_;
};

void setTone(TavraHandle camera, std::uint32_t i) {
    Bytes table(256, static_cast<std::uint8_t>(i)), read(256);
    const std::uint8_t modes[] = {0, 1, 2, 255};
    const std::uint8_t curve = i % 5, mode = modes[i % 4];
    EXPECT_TRUE(Tavra_SetGammaModeEx(camera, curve, mode, 150, 3, 120, table.data()));
    EXPECT_TRUE(Tavra_GetGammaModeEx(camera, curve, nullptr, nullptr, nullptr, nullptr, read.data()));
    if (mode == 255) {
        EXPECT_EQ(read, table);
    }
    std::uint8_t on = 9, coring = 9;
    std::uint16_t gain = 9;
    EXPECT_TRUE(Tavra_SetSharpnessMode(camera, i & 1, static_cast<std::uint16_t>(i), 4));
    EXPECT_TRUE(Tavra_GetSharpnessMode(camera, &on, &gain, &coring));
    EXPECT_EQ(on, i & 1);
    EXPECT_TRUE(Tavra_SetNoiseReductionMode(camera, i % 3));
}

void setColor(TavraHandle camera, std::uint32_t i) {
    const auto part = static_cast<std::int16_t>(i % 100);
    const std::int16_t matrix[12] = {100, part, 0, 0, 0, 100, part, 0, part, 0, 100, 0};
    std::int16_t read[12] = {};
    EXPECT_TRUE(Tavra_SetColorMatrix(camera, 0xFF, matrix));
    EXPECT_TRUE(Tavra_GetColorMatrix(camera, nullptr, read));
    EXPECT_EQ(read[1], part);
    EXPECT_TRUE(Tavra_SetHueSaturationMode(camera, i & 1, part, 120));
    EXPECT_TRUE(Tavra_SetHighChromaSuppression(camera, 200, static_cast<std::uint16_t>(i % 256)));
    EXPECT_TRUE(Tavra_SetLowChromaSuppression(camera, 40, static_cast<std::uint16_t>(i % 256)));
    EXPECT_TRUE(Tavra_SetColorInterpolationMethod(camera, i % 6));
}

void setShape(TavraHandle camera, std::uint32_t i, std::uint32_t width, std::uint32_t height) {
    EXPECT_TRUE(Tavra_SetMirrorMode(camera, i % 4));
    EXPECT_TRUE(Tavra_SetRotationMode(camera, i % 4));
    const std::uint32_t modes[] = {0, 1, 2, 3, 4, 255};
    const std::vector<std::int32_t> map(std::size_t{width} * height, static_cast<std::int32_t>(i % 300));
    EXPECT_TRUE(Tavra_SetShadingCorrectionMap(camera, width, height, 4 * width, map.data()));
    EXPECT_TRUE(Tavra_SetShadingCorrectionTarget(camera, static_cast<std::uint16_t>(i % 256)));
    EXPECT_TRUE(Tavra_SetShadingCorrectionMode(camera, modes[i % 6]));
}

void setControls(TavraHandle camera, std::uint32_t i) {
    std::array<std::uint16_t, 3> edges{static_cast<std::uint16_t>(i % 3000), 5000, 7500}, x{}, y{};
    EXPECT_TRUE(Tavra_SetControlArea(camera, edges.data(), edges.data()));
    EXPECT_TRUE(Tavra_GetControlArea(camera, x.data(), y.data()));
    EXPECT_EQ(x, edges);
    EXPECT_EQ(y, edges);
    EXPECT_TRUE(Tavra_SetALCMode(camera, i % 7));
    EXPECT_TRUE(Tavra_SetALCControlSpeed(camera, i % 3, i % 2, 1, 2));
    EXPECT_TRUE(Tavra_SetTargetBrightness(camera, static_cast<std::uint8_t>(i), 5, 5));
    std::uint16_t gain = 0;
    std::uint32_t clocks = 0;
    EXPECT_TRUE(Tavra_GetGain(camera, &gain));
    EXPECT_TRUE(Tavra_GetExposureClock(camera, &clocks));
    EXPECT_TRUE(Tavra_SetWhiteBalanceMode(camera, i % 4));
    EXPECT_TRUE(Tavra_SetWhiteBalanceGain(camera, 128 + i % 64, 128, 128 + i % 2, 200));
    std::array<std::uint8_t, 16> weights;
    weights.fill(static_cast<std::uint8_t>(i));
    EXPECT_TRUE(Tavra_SetAWBWeight(camera, weights.data()));
    EXPECT_TRUE(Tavra_SetALCWeight(camera, weights.data()));
}

TEST(Settings, OfEveryStageAreChangedByFourThreadsWhileTheStreamRuns) {
    for (const std::string model : {"bayer", "mono"}) {
        SCOPED_TRACE(model);
        useCameras(model + kSmallSensor + ":noise=off:pace=off");
        Camera camera;
        ASSERT_TRUE(camera.isOpen());
        FrameLog raws, images;
        raws.takeRawOf(camera);
        images.takePreviewOf(camera);
        camera.start();
        images.waitFor(1);
        Setters setters;
        setters.add([&](std::uint32_t i) { setTone(camera, i); });
        setters.add([&](std::uint32_t i) { setColor(camera, i); });
        setters.add([&](std::uint32_t i) { setShape(camera, i, 32, 8); });
        setters.add([&](std::uint32_t i) { setControls(camera, i); });
        setters.join(camera);
        images.waitFor(images.count() + 3);
        camera.stop();
        expectRisingNumbers(raws.waitFor(1));
        for (const Frame& image : images.waitFor(1)) {
            EXPECT_TRUE((image.width == 32 && image.height == 8) || (image.width == 8 && image.height == 32));
        }
    }
}

}  // namespace
}  // namespace tavra::e2e
