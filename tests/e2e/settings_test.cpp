// Settings from other threads while the stream runs.
#include <array>
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

}  // namespace
}  // namespace tavra::e2e
