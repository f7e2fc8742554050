// Faults on order.
#include <gtest/gtest.h>

#include <chrono>

#include "usbd/virtual_cameras.h"

namespace tavra::usbd {
namespace {

using test::Camera;
using test::numberOf;
using test::Read;
using test::readTransfer;
using test::useCameras;

const std::string kSmall = "mono:pace=off:identity.maximum_width=64:identity.maximum_height=48:";
constexpr std::uint32_t kFrame = 64 + 64 * 48;

std::uint32_t errorOfRead(Camera& camera) {
    Read read(8192);
    const std::uint32_t started = read.start(camera);
    if (started != 997) return started;
    const std::uint32_t result = read.finish(camera);
    return read.failed ? result : 0;
}

TEST(Faults, ControlTransfersFailAtTheirTime) {
    useCameras(kSmall + "fault.fail=17@2x2+35");
    Camera camera;
    EXPECT_EQ(camera.get(17, 0, 0, 64).size(), 64u);
    EXPECT_TRUE(camera.get(17, 0, 0, 64).empty());
    EXPECT_EQ(UsbGetLastError(), 31u);
    EXPECT_TRUE(camera.get(17, 0, 0, 64).empty());
    EXPECT_EQ(camera.get(17, 0, 0, 64).size(), 64u);
    EXPECT_TRUE(camera.get(35, 0, 0, 64).empty());
    EXPECT_TRUE(camera.get(35, 0, 0, 64).empty()) << "always";
}

TEST(Faults, ControlTransfersComeShort) {
    useCameras(kSmall + "fault.short=17@1x1+224");
    Camera camera;
    EXPECT_EQ(camera.get(17, 0, 0, 64).size(), 32u);
    EXPECT_EQ(camera.get(17, 0, 0, 64).size(), 64u);
    std::uint8_t bytes[8];
    std::uint32_t count = 0;
    EXPECT_EQ(UsbReadMemory(camera.handle(), 0, 7, bytes, &count), 0);
    EXPECT_EQ(UsbGetLastError(), 1117u);
    EXPECT_EQ(count, 4u);
}

TEST(Faults, AReadFailsAtItsFrame) {
    for (const std::uint32_t code : {23u, 31u, 1117u}) {
        useCameras(kSmall + "fault.error=" + std::to_string(code) + "@2");
        Camera camera;
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        EXPECT_EQ(errorOfRead(camera), 0u);
        EXPECT_EQ(errorOfRead(camera), code);
        EXPECT_EQ(errorOfRead(camera), 0u);
        EXPECT_EQ(UsbCanResumeRead(camera.handle()), 1);
        UsbEndRead(camera.handle());
    }
}

TEST(Faults, FramesAreCutAndLengthened) {
    useCameras(kSmall + "fault.shorten=100@2:fault.lengthen=3000@3");
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    for (const std::uint32_t size : {kFrame, kFrame - 100, kFrame + 3000, kFrame}) {
        EXPECT_EQ(readTransfer(camera).size(), size);
    }
    UsbEndRead(camera.handle());
    useCameras(kSmall + "fault.shorten=999999@1");
    Camera other;
    ASSERT_EQ(UsbBeginRead(other.handle()), 1);
    EXPECT_EQ(readTransfer(other).size(), 0u) << "nothing left but the empty packet";
    UsbEndRead(other.handle());
}

TEST(Faults, ACameraSettlesAfterSoManyTries) {
    useCameras(kSmall + "fault.settle=2:usb.resumes_reads=off");
    Camera camera;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(UsbBeginRead(camera.handle()), 0);
        EXPECT_EQ(UsbGetLastError(), 31u);
    }
    EXPECT_EQ(UsbBeginRead(camera.handle()), 1);
    EXPECT_EQ(UsbCanResumeRead(camera.handle()), 0);
    EXPECT_EQ(readTransfer(camera).size(), kFrame);
    UsbEndRead(camera.handle());
}

TEST(Faults, ACameraThatVanishesAtAFrame) {
    for (const std::uint32_t code : {1167u, 5u}) {
        useCameras(kSmall + "fault.vanish_at_frame=2:fault.vanish_error=" + std::to_string(code));
        Camera camera;
        Read first(8192), second(8192), third(8192);
        for (Read* read : {&first, &second, &third}) ASSERT_EQ(read->start(camera), 997u);
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        EXPECT_EQ(first.finish(camera), kFrame);
        EXPECT_EQ(second.finish(camera), code);
        EXPECT_EQ(third.finish(camera), code) << "every read in flight";
        EXPECT_EQ(errorOfRead(camera), code) << "and those that come";
        EXPECT_TRUE(camera.get(17, 0, 0, 64).empty());
        EXPECT_EQ(UsbGetLastError(), code);
        EXPECT_EQ(UsbBeginRead(camera.handle()), 0);
        EXPECT_EQ(UsbEndRead(camera.handle()), 1);
        EXPECT_FALSE(Camera().open()) << "it does not come back";
    }
}

TEST(Faults, ACameraThatVanishesAtAControlTransferAndComesBack) {
    useCameras(kSmall + "fault.vanish_at_control=3:fault.return_after=2,mono");
    Camera camera;
    EXPECT_EQ(camera.get(17, 0, 0, 64).size(), 64u);
    ASSERT_TRUE(camera.setStatus(0x8014, 99));
    EXPECT_TRUE(camera.get(17, 0, 0, 64).empty());
    EXPECT_EQ(UsbGetLastError(), 1167u);
    for (int look = 0; look < 2; ++look) {
        Camera remaining(0);
        EXPECT_EQ(loadLe32(&remaining.get(17, 0, 0, 64)[56]), 1280u) << "the other one has moved up";
    }
    Camera back(0);
    EXPECT_EQ(loadLe32(&back.get(17, 0, 0, 64)[56]), 64u);
    EXPECT_EQ(back.status(20), 64) << "powered up anew";
    EXPECT_TRUE(camera.get(17, 0, 0, 64).empty()) << "the old opening stays dead";
    ASSERT_EQ(UsbBeginRead(back.handle()), 1);
    EXPECT_EQ(readTransfer(back).size(), kFrame);
    UsbEndRead(back.handle());
}

TEST(Faults, AnOldOpeningDoesNotEndTheStreamOfANewOne) {
    useCameras(kSmall + "fault.vanish_at_frame=1:fault.return_after=1");
    Camera old;
    ASSERT_EQ(UsbBeginRead(old.handle()), 1);
    EXPECT_EQ(errorOfRead(old), 1167u);
    EXPECT_FALSE(Camera().open());
    Camera back;
    ASSERT_TRUE(back.open());
    ASSERT_EQ(UsbBeginRead(back.handle()), 1);
    EXPECT_EQ(readTransfer(back).size(), kFrame);
    old.close();
    EXPECT_EQ(readTransfer(back).size(), kFrame);
    UsbEndRead(back.handle());
}

TEST(Faults, AnUnconfiguredCameraNeedsDeviceControls) {
    useCameras(kSmall + "fault.unconfigured=2");
    for (int i = 0; i < 2; ++i) {
        Camera camera;
        std::uint32_t words[2];
        EXPECT_EQ(UsbCheckConfiguration(camera.handle(), &words[0], &words[1]), 0);
        EXPECT_EQ(UsbDeviceControl(camera.handle(), 0x222144), 0) << "not a code that helps";
        EXPECT_EQ(UsbGetLastError(), 87u);
        EXPECT_EQ(UsbDeviceControl(camera.handle(), i == 0 ? 0x222140 : 0x222180), 1);
    }
    Camera camera;
    EXPECT_EQ(UsbCheckConfiguration(camera.handle(), nullptr, nullptr), 1);
}

TEST(Faults, ASlowCameraTakesItsTime) {
    useCameras(kSmall + "fault.slow_ms=20");
    Camera camera;
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(camera.get(17, 0, 0, 64).size(), 64u);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(20));
}

}  // namespace
}  // namespace tavra::usbd
