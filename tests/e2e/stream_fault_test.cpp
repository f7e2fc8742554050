// Cameras that fail while they stream.
#include "e2e/camera_fixture.h"

namespace tavra::e2e {
namespace {

constexpr std::uint32_t kWidth = 32, kHeight = 8, kRawSize = kWidth * kHeight;

std::string faulty(const std::string& fault) {
    return "mono:noise=off:pace=off" + kSmallSensor + ":" + fault;
}

// What the camera sends of a still scene without faults.
Bytes stillPicture() {
    useCameras(faulty("seed=1"));
    const Camera camera;
    return takeRaw(camera);
}

// The first frames of a stream, which goes on until it is stopped.
std::vector<Frame> firstFrames(const std::string& fault, std::size_t count) {
    useCameras(faulty(fault));
    Camera camera;
    EXPECT_TRUE(camera.isOpen());
    FrameLog log;
    log.takeRawOf(camera);
    camera.start();
    const std::vector<Frame> frames = log.waitFor(count);
    camera.stop();
    return frames;
}

void expectWhole(const std::vector<Frame>& frames, const Bytes& picture) {
    for (const Frame& frame : frames) EXPECT_EQ(frame.bytes, picture) << "frame " << frame.number;
}

bool has(const std::vector<Frame>& frames, std::uint32_t number) {
    for (const Frame& frame : frames) {
        if (frame.number == number) return true;
    }
    return false;
}

TEST(StreamFaults, ACameraThatLeavesEndsTheStreamWithCodeFive) {
    for (std::uint32_t frame = 1; frame <= 12; ++frame) {
        SCOPED_TRACE(frame);
        useCameras(faulty("fault.return_after=1:fault.vanish_at_frame=" + std::to_string(frame)));
        {
            Camera camera;
            ASSERT_TRUE(camera.isOpen());
            FrameLog log;
            log.takeRawOf(camera);
            camera.start();
            EXPECT_EQ(camera.expectEnd(), TAVRA_ERROR_DEVICE_GONE);
            EXPECT_LT(log.count(), frame);

            EXPECT_FALSE(Tavra_ClearBuffer(camera));
            EXPECT_EQ(Tavra_GetLastError(camera), TAVRA_ERROR_CONTROL_TRANSFER);
            ASSERT_TRUE(Tavra_StartTransfer(camera)) << "the thread exists";
            camera.expect(TAVRA_MESSAGE_TRANSFER_STARTED);
            EXPECT_EQ(camera.expectEnd(), TAVRA_ERROR_DEVICE_GONE);
            EXPECT_TRUE(Tavra_StopTransfer(camera));
        }
        TavraHandle again = nullptr;
        for (int i = 0; i < 3 && again == nullptr; ++i) again = Tavra_Open(0);
        ASSERT_NE(again, nullptr);
        EXPECT_EQ(takeRaw(again).size(), kRawSize);
        Tavra_Close(again);
    }
}

TEST(StreamFaults, OtherNumberOfALostCameraIsCodeFiveToo) {
    useCameras(faulty("fault.vanish_error=5:fault.vanish_at_frame=2"));
    Camera camera;
    camera.start();
    EXPECT_EQ(camera.expectEnd(), TAVRA_ERROR_DEVICE_GONE);
}

TEST(StreamFaults, ASnapshotOfACameraThatLeavesIsATimeOut) {
    useCameras(faulty("fault.vanish_at_frame=2"));
    Camera camera;
    Bytes buffer(5 * kRawSize);
    std::uint32_t written = 0;
    EXPECT_FALSE(Tavra_TakeRawSnapShot(camera, buffer.data(), 5 * kRawSize, &written, nullptr, kPatienceMs));
    EXPECT_EQ(Tavra_GetLastError(camera), TAVRA_ERROR_TIMEOUT);
    camera.expect(TAVRA_MESSAGE_TRANSFER_STARTED);
    EXPECT_EQ(camera.expectEnd(), TAVRA_ERROR_DEVICE_GONE);
}

TEST(StreamFaults, FramesGoOnAfterAReadThatFails) {
    const Bytes picture = stillPicture();
    for (const char* const more : {"", ":usb.resumes_reads=off"}) {
        for (const char* const error : {"23", "31"}) {
            for (int frame = 1; frame <= 9; ++frame) {
                const std::string fault =
                    std::string("fault.error=") + error + "@" + std::to_string(frame) + more;
                SCOPED_TRACE(fault);
                const std::vector<Frame> frames = firstFrames(fault, 20);
                expectWhole(frames, picture);
                EXPECT_FALSE(has(frames, static_cast<std::uint32_t>(frame - 1)));
            }
        }
    }
}

TEST(StreamFaults, ADamagedFrameVanishesAlone) {
    const Bytes picture = stillPicture();
    // One byte; the frame's image; up to the end of a packet and past it; packets. Not those that leave
    // exactly an image or a frame before or behind a packet's end, which look as a frame does.
    for (const char* const amount :
         {"1", "100", "256", "319", "704", "705", "1025", "1728", "2047", "5000"}) {
        for (const char* const kind : {"shorten", "lengthen"}) {
            const std::string fault = std::string("fault.") + kind + "=" + amount + "@4";
            SCOPED_TRACE(fault);
            const std::vector<Frame> frames = firstFrames(fault, 12);
            expectWhole(frames, picture);
            EXPECT_FALSE(has(frames, 3));
            for (const std::uint32_t number : {0u, 1u, 2u, 8u}) EXPECT_TRUE(has(frames, number)) << number;
        }
    }
}

TEST(StreamFaults, AHeaderOfItsOwnGivesTheNumber) {
    const Bytes picture = stillPicture();
    const std::vector<Frame> frames = firstFrames("header=apart", 12);
    expectWhole(frames, picture);
    for (std::uint32_t i = 0; i < 12; ++i) EXPECT_EQ(frames[i].number, i);
}

TEST(StreamFaults, ACameraThatSettlesIsAskedAgain) {
    const Bytes picture = stillPicture();
    for (const char* const times : {"1", "3", "50"}) {
        expectWhole(firstFrames(std::string("fault.settle=") + times, 5), picture);
    }
}

TEST(StreamFaults, StopWhileTheCameraDoesNotSettle) {
    useCameras(faulty("fault.settle=1000000000"));
    Camera camera;
    FrameLog log;
    log.takeRawOf(camera);
    camera.start();
    camera.stop();
    EXPECT_EQ(log.count(), 0u);
}

}  // namespace
}  // namespace tavra::e2e
