#include <memory>
#include <thread>

#include "e2e/camera_fixture.h"

namespace tavra::e2e {
namespace {

TEST(SeveralCameras, OfThreeModelsStreamAndGivePreviewsAtOnce) {
    useCameras(
        "bayer:width=64:height=48:userid=1,mono16:width=96:height=32:userid=2,"
        "statusword:width=128:height=40:userid=3");
    constexpr std::uint32_t kRawSizes[] = {64 * 48, 96 * 32 * 2, 128 * 40};
    constexpr std::uint32_t kPreviewSizes[] = {64 * 48 * 3, 96 * 32, 128 * 40 * 3};
    Camera cameras[] = {Camera(1), Camera(2), Camera(3)};
    FrameLog logs[3];
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(cameras[i].isOpen());
        logs[i].takeRawOf(cameras[i]);
        cameras[i].start();
    }
    {
        std::vector<std::thread> takers;
        for (int i = 0; i < 3; ++i) {
            takers.emplace_back([&, i] {
                for (int n = 0; n < 3; ++n) EXPECT_EQ(takePreview(cameras[i]).size(), kPreviewSizes[i]);
            });
        }
        for (std::thread& taker : takers) taker.join();
    }
    for (int i = 0; i < 3; ++i) {
        const std::vector<Frame> frames = logs[i].waitFor(10);
        for (const Frame& frame : frames) EXPECT_EQ(frame.bytes.size(), kRawSizes[i]);
        expectRisingNumbers(frames);
    }
    for (Camera& camera : cameras) camera.stop();
}

TEST(SeveralCameras, TenStreamAtOnce) {
    std::string list;
    for (int i = 0; i < 10; ++i) {
        list += (i > 0 ? ",mono:width=64:userid=" : "mono:width=64:userid=") + std::to_string(i + 20) +
                ":height=" + std::to_string(8 + 4 * i);
    }
    useCameras(list);
    EXPECT_EQ(Tavra_CameraCount(), 10u);
    std::vector<std::unique_ptr<Camera>> cameras;
    std::vector<FrameLog> logs(10);
    for (std::uint32_t i = 0; i < 10; ++i) {
        cameras.push_back(std::make_unique<Camera>(i + 20));
        ASSERT_TRUE(cameras[i]->isOpen()) << i;
        logs[i].takeRawOf(*cameras[i]);
    }
    EXPECT_EQ(Tavra_Open(0), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), TAVRA_ERROR_IN_USE);
    for (const auto& camera : cameras) camera->start();
    for (std::uint32_t i = 0; i < 10; ++i) {
        const std::vector<Frame> frames = logs[i].waitFor(10);
        for (const Frame& frame : frames) EXPECT_EQ(frame.bytes.size(), 64u * (8 + 4 * i));
        expectRisingNumbers(frames);
    }
    for (const auto& camera : cameras) camera->stop();
}

TEST(SeveralCameras, OneThatLeavesDoesNotDisturbTheOther) {
    useCameras("mono:width=64:height=8:userid=1:fault.vanish_at_frame=3,mono:width=64:height=8:userid=2");
    Camera leaving(1), staying(2);
    FrameLog log;
    log.takeRawOf(staying);
    staying.start();
    leaving.start();
    EXPECT_EQ(leaving.expectEnd(), TAVRA_ERROR_DEVICE_GONE);
    log.waitFor(log.count() + 5);
    staying.stop();
}

}  // namespace
}  // namespace tavra::e2e
