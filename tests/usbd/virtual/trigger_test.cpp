// Frames only when asked for.
#include <gtest/gtest.h>

#include "usbd/virtual_cameras.h"

namespace tavra::usbd {
namespace {

using test::Camera;
using test::meanOf;
using test::numberOf;
using test::rawOf;
using test::Read;
using test::readTransfer;
using test::useCameras;

const std::string kWords = "statusword:pace=off:identity.maximum_width=64:identity.maximum_height=48";
const std::string kPages = "mono:pace=off:identity.maximum_width=64:identity.maximum_height=48";

constexpr std::uint32_t kFrame = 64 + 64 * 48;

// Triggers one frame and finds that it is one.
void expectOneFrame(Camera& camera, bool triggered) {
    ASSERT_TRUE(triggered);
    Read frame(8192), none(8192);
    ASSERT_EQ(frame.start(camera), 997u);
    ASSERT_EQ(none.start(camera), 997u);
    EXPECT_EQ(frame.finish(camera), kFrame);
    EXPECT_EQ(none.look(camera), 996u);
    UsbEndRead(camera.handle());
    EXPECT_EQ(none.look(camera), 995u) << "one trigger, one frame";
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
}

TEST(Trigger, TheWordOfOlderCameras) {
    useCameras(kWords);
    Camera camera;
    ASSERT_TRUE(camera.set(128, 0x8030, 0, {1, 0, 0, 0}));
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    expectOneFrame(camera, camera.set(48, 0, 0, {}));
    expectOneFrame(camera, camera.setStatus(80, 4));
    expectOneFrame(camera, camera.setStatus(80, 16384));
    ASSERT_TRUE(camera.set(128, 0x8030, 0, {0, 0, 0, 0}));
    EXPECT_EQ(readTransfer(camera).size(), kFrame) << "free running again";
    UsbEndRead(camera.handle());
}

TEST(Trigger, ThePagesOfNewerCameras) {
    for (const std::uint32_t offset : {44u, 64u, 88u, 108u}) {
        useCameras(kPages);
        Camera camera;
        ASSERT_TRUE(camera.setPage(2, offset, 1));
        EXPECT_EQ(camera.status(48) & 3, 1) << "the word tells the same";
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        expectOneFrame(camera, camera.setPage(2, 40, 1));
        expectOneFrame(camera, camera.set(48, 0, 0, {}));
        ASSERT_TRUE(camera.setPage(2, offset, 0));
        EXPECT_EQ(readTransfer(camera).size(), kFrame);
        UsbEndRead(camera.handle());
    }
}

TEST(Trigger, TheExposureModeShowsInTheWord) {
    useCameras(kPages);
    Camera camera;
    ASSERT_TRUE(camera.setPage(2, 24, 2));
    EXPECT_EQ(camera.status(48), 1 << 12);
    ASSERT_TRUE(camera.setPage(2, 24, 3));
    EXPECT_EQ(camera.status(48), 1 << 13);
}

TEST(Trigger, EachTriggerIsAFrameAndClearingForgetsThem) {
    useCameras(kPages);
    Camera camera;
    ASSERT_TRUE(camera.setPage(2, 44, 1));
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(camera.set(48, 0, 0, {}));
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    for (std::uint32_t i = 0; i < 2; ++i) EXPECT_EQ(numberOf(readTransfer(camera)), i);
    ASSERT_TRUE(camera.set(32, 0, 0, {}));
    expectOneFrame(camera, camera.set(48, 0, 0, {}));
    UsbEndRead(camera.handle());
}

TEST(Trigger, NothingIsKeptOfTriggersInFreeRun) {
    useCameras(kPages);
    Camera camera;
    ASSERT_TRUE(camera.set(48, 0, 0, {}));
    ASSERT_TRUE(camera.setPage(2, 44, 1));
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    expectOneFrame(camera, camera.set(48, 0, 0, {}));
    UsbEndRead(camera.handle());
}

// Exposure 10 ms of 40 ms full scale, triggers 20 ms long: twice as bright when the trigger times the
// exposure.
TEST(Trigger, MayTimeTheExposure) {
    const std::string sensor =
        ":noise=off:hotpixels=0:sensor.full_scale_ms=40:timing.trigger_width_ms=20:timing.exposure_unit="
        "microsecond";
    for (const bool pages : {true, false}) {
        useCameras((pages ? kPages + ":capability.word3=0x2885" : kWords) + sensor);
        Camera camera;
        std::vector<std::uint8_t> block(64);
        storeLe16(&block[2], 10000);
        ASSERT_TRUE(camera.set(33, 0, 0, block));
        const auto setMode = [&](std::uint32_t mode, bool triggered) {
            if (pages) return camera.setPage(2, 24, mode) && camera.setPage(2, 44, triggered ? 1 : 0);
            const auto bits = static_cast<std::uint8_t>(mode == 2 ? 0x10 : mode == 3 ? 0x20 : 0);
            return camera.set(128, 0x8030, 0, {static_cast<std::uint8_t>(triggered ? 1 : 0), bits, 0, 0});
        };
        const auto mean = [&](bool triggered) {
            EXPECT_EQ(UsbBeginRead(camera.handle()), 1);
            if (triggered) {
                EXPECT_TRUE(camera.set(48, 0, 0, {}));
            }
            const double bright = meanOf(rawOf(readTransfer(camera)));
            UsbEndRead(camera.handle());
            return bright;
        };
        ASSERT_TRUE(setMode(1, true));
        const double timed = mean(true);
        EXPECT_GT(timed, 10);
        for (const std::uint32_t mode : {2u, 3u}) {
            ASSERT_TRUE(setMode(mode, true));
            EXPECT_NEAR(mean(true), 2 * timed, 1) << mode;
            ASSERT_TRUE(setMode(mode, false));
            EXPECT_NEAR(mean(false), timed, 0.01) << "free running, mode " << mode;
        }
    }
}

TEST(Counter, TheCommandSetsItBack) {
    useCameras(kPages);
    Camera camera;
    ASSERT_TRUE(camera.setPage(2, 44, 1));
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    ASSERT_TRUE(camera.set(48, 0, 0, {}));
    EXPECT_EQ(numberOf(readTransfer(camera)), 0u);
    ASSERT_TRUE(camera.set(48, 0, 0, {}));
    EXPECT_EQ(numberOf(readTransfer(camera)), 1u);
    UsbEndRead(camera.handle());
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    ASSERT_TRUE(camera.set(48, 0, 0, {}));
    EXPECT_EQ(numberOf(readTransfer(camera)), 2u) << "a new run goes on counting";
    UsbEndRead(camera.handle());
    ASSERT_TRUE(camera.setStatus(80, 2));
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    ASSERT_TRUE(camera.set(48, 0, 0, {}));
    EXPECT_EQ(numberOf(readTransfer(camera)), 0u);
    UsbEndRead(camera.handle());
}

}  // namespace
}  // namespace tavra::usbd
