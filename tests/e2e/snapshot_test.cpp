#include <thread>

#include "e2e/camera_fixture.h"

namespace tavra::e2e {
namespace {

constexpr std::uint32_t kRawSize = 64 * 48;

TEST(Snapshots, OfAStoppedStreamStartOneForThemselves) {
    useCameras("bayer:width=64:height=48:noise=off");
    Camera camera;
    const Bytes raw = takeRaw(camera);
    ASSERT_EQ(raw.size(), kRawSize);
    camera.expect(TAVRA_MESSAGE_TRANSFER_STARTED);
    EXPECT_EQ(camera.expectEnd(), 0u);
    camera.expectNoMessage();
    EXPECT_EQ(takeRaw(camera), raw) << "a still scene";
}

TEST(Snapshots, OfARunningStreamDisturbNothing) {
    useCameras("bayer:width=64:height=48:noise=off:pace=off");
    Camera camera;
    FrameLog log;
    log.takeRawOf(camera);
    camera.start();
    for (int i = 0; i < 5; ++i) EXPECT_EQ(takeRaw(camera), log.waitFor(1)[0].bytes);
    EXPECT_EQ(takePreview(camera).size(), kRawSize * 3);
    log.waitFor(log.count() + 1);
    camera.expectNoMessage();
    camera.stop();
    // No frame was lost by all this.
    const std::vector<Frame> frames = log.waitFor(1);
    for (std::uint32_t i = 0; i < frames.size(); ++i) EXPECT_EQ(frames[i].number, i);
}

TEST(Snapshots, TakeTheWholeFramesThatFit) {
    useCameras("mono:width=64:height=48:noise=off:pace=off");
    const Camera camera;
    const Bytes still = takeRaw(camera);
    Bytes buffer(kRawSize * 5 / 2, 0xCD);
    std::uint32_t written = 0, numbers[3] = {0xDEAD, 0xDEAD, 0xDEAD};
    ASSERT_TRUE(
        Tavra_TakeRawSnapShot(camera, buffer.data(), kRawSize * 5 / 2, &written, numbers, kPatienceMs));
    EXPECT_EQ(written, 2 * kRawSize);
    EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + kRawSize), still);
    EXPECT_EQ(Bytes(buffer.begin() + kRawSize, buffer.begin() + 2 * kRawSize), still);
    EXPECT_EQ(Bytes(buffer.begin() + 2 * kRawSize, buffer.end()), Bytes(kRawSize / 2, 0xCD));
    EXPECT_EQ(numbers[1], numbers[0] + 1);
    EXPECT_EQ(numbers[2], 0xDEADu);

    EXPECT_FALSE(Tavra_TakeRawSnapShot(camera, buffer.data(), kRawSize - 1, &written, nullptr, kPatienceMs));
    EXPECT_EQ(Tavra_GetLastError(camera), TAVRA_ERROR_INVALID_ARGUMENT);
}

TEST(Snapshots, OfImagesTakeTheWholeOnesThatFit) {
    useCameras("bayer:width=64:height=48:noise=off:pace=off");
    const Camera camera;
    const std::uint32_t size = 3 * kRawSize;
    const Bytes still = takePreview(camera);
    Bytes buffer(size * 5 / 2, 0xCD);
    std::uint32_t written = 0, numbers[3] = {0xDEAD, 0xDEAD, 0xDEAD};
    ASSERT_TRUE(
        Tavra_TakePreviewSnapShot(camera, buffer.data(), size * 5 / 2, &written, numbers, kPatienceMs));
    EXPECT_EQ(written, 2 * size);
    EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + size), still);
    EXPECT_EQ(Bytes(buffer.begin() + size, buffer.begin() + 2 * size), still);
    EXPECT_EQ(numbers[1], numbers[0] + 1);
    EXPECT_EQ(numbers[2], 0xDEADu);
}

// Waits in vain, and then gets one frame for one trigger.
void expectAFrameForATrigger(const Camera& camera, TavraBool (*trigger)(TavraHandle)) {
    EXPECT_TRUE(takeRaw(camera, 20).empty());
    EXPECT_EQ(Tavra_GetLastError(camera), TAVRA_ERROR_TIMEOUT);
    ASSERT_TRUE(trigger(camera));
    EXPECT_EQ(takeRaw(camera).size(), kRawSize);
    EXPECT_TRUE(takeRaw(camera, 20).empty()) << "one frame for one trigger";
    ASSERT_TRUE(trigger(camera));
    EXPECT_EQ(takePreview(camera).size(), previewSizeOf(camera));
}

TEST(Snapshots, OfACameraThatWaitsForItsTriggerWord) {
    useCameras("statusword:width=64:height=48");
    const Camera camera;
    ASSERT_TRUE(Tavra_SetTriggerMode(camera, 1));
    expectAFrameForATrigger(camera, &Tavra_SoftTrigger);
    expectAFrameForATrigger(camera, &Tavra_TriggerReadOut);
    ASSERT_TRUE(Tavra_SetTriggerMode(camera, 0));
    EXPECT_EQ(takeRaw(camera).size(), kRawSize) << "free again";
}

TEST(Snapshots, OfACameraThatWaitsForItsTriggerRegister) {
    useCameras("bayer:width=64:height=48");
    const Camera camera;
    ASSERT_TRUE(Tavra_IsTriggerSelectorSupported(camera, TAVRA_TRIGGER_SELECTOR_2));
    ASSERT_TRUE(Tavra_SetTriggerMode2(camera, TAVRA_TRIGGER_SELECTOR_2, 1));
    expectAFrameForATrigger(
        camera, [](TavraHandle handle) { return Tavra_TriggerSoftware(handle, TAVRA_TRIGGER_SELECTOR_2); });
    ASSERT_TRUE(Tavra_SetTriggerMode2(camera, TAVRA_TRIGGER_SELECTOR_2, 0));
    EXPECT_EQ(takeRaw(camera).size(), kRawSize) << "free again";
}

TEST(Snapshots, EndWhenTheStreamIsStopped) {
    useCameras("statusword:width=64:height=48");
    Camera camera;
    ASSERT_TRUE(Tavra_SetTriggerMode(camera, 1));
    std::thread taker([&] {
        EXPECT_TRUE(takeRaw(camera).empty());
        EXPECT_EQ(Tavra_GetLastError(camera), TAVRA_ERROR_TIMEOUT);
    });
    camera.expect(TAVRA_MESSAGE_TRANSFER_STARTED);
    EXPECT_TRUE(Tavra_StopTransfer(camera));
    taker.join();
    EXPECT_EQ(camera.expectEnd(), 0u);
}

}  // namespace
}  // namespace tavra::e2e
