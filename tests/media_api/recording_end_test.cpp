// What ends a recording, what becomes of its stream, and what may follow.
#include <thread>

#include "media_api/recording_fixture.h"

namespace tavra::test {
namespace {

class RecordingEnd : public RecordingTest {};

TEST_F(RecordingEnd, LeavesAStreamThatRanBeforeAsItWas) {
    openCamera();
    start();
    ASSERT_EQ(save("a.smf", 1), 1);
    expectMessages({{kRecordingStarted, 0}});
    sendFrame(0, framePattern(0));
    sendFrame(1, framePattern(1));
    expectMessages({{kRecordingEnded, 0}});
    sendFrame(2, framePattern(2));  // here the capture thread hears of it
    collectRaw();
    for (std::uint32_t number = 3; raws.count() == 0; ++number) {
        sendFrame(number, framePattern(number));
        std::this_thread::yield();
    }
    EXPECT_EQ(status(), 0);
    EXPECT_EQ(movie().frames.size(), 1u);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
}

TEST_F(RecordingEnd, EndsOnRequestAndItsStreamWithTheNextFrame) {
    openCamera();
    startBoth();
    EXPECT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    expectMessages({{kRecordingEnded, 0}});
    EXPECT_EQ(movie().frames.size(), 0u);
    sendFrame(0, framePattern(0));
    expectMessages({{TAVRA_MESSAGE_TRANSFER_ENDED, 0}});
}

TEST_F(RecordingEnd, EndsWithTheStream) {
    openCamera();
    collectRaw();
    startBoth();
    sendAndAwait(0, 2);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    ReceivedMessage got;
    ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    EXPECT_EQ(got.message, kRecordingEnded) << "first the recording";
    expectMessages({{TAVRA_MESSAGE_TRANSFER_ENDED, 0}});
    EXPECT_EQ(status(), 0);
    EXPECT_EQ(movie().frames.size(), 3u);
    expectFailure(Tavra_SetAVIStatus(handle, 0), 87);
}

TEST_F(RecordingEnd, EndsWhenTheStreamIsStartedAnew) {
    openCamera();
    startBoth();
    ASSERT_EQ(Tavra_StartTransfer(handle), 1);
    expectMessages(
        {{kRecordingEnded, 0}, {TAVRA_MESSAGE_TRANSFER_ENDED, 0}, {TAVRA_MESSAGE_TRANSFER_STARTED, 0}});
    EXPECT_EQ(status(), 0);
}

TEST_F(RecordingEnd, IsWholeWhenTheCameraIsClosed) {
    openCamera();
    collectRaw();
    startBoth();
    sendAndAwait(0, 2);
    Tavra_Close(handle);
    handle = nullptr;
    EXPECT_EQ(movie().frames.size(), 3u);
}

TEST_F(RecordingEnd, IsWholeWhenTheCameraIsUnplugged) {
    openCamera();
    collectRaw();
    startBoth();
    sendAndAwait(0, 2);
    usb.unplug(0);
    expectMessages({{kRecordingEnded, 0}, {TAVRA_MESSAGE_TRANSFER_ENDED, 5}});
    EXPECT_EQ(status(), 0);
    const RawMovie recorded = movie();
    ASSERT_EQ(recorded.frames.size(), 3u);
    EXPECT_EQ(recorded.frames[2].image, framePattern(2));
    ASSERT_EQ(save("b.smf"), 1) << "a recording begins and ends with the stream";
    ReceivedMessage got;
    do {
        ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    } while (got.message != TAVRA_MESSAGE_TRANSFER_ENDED);
    EXPECT_EQ(status(), 0);
}

TEST_F(RecordingEnd, CanFollowAnotherAtOnce) {
    openCamera();
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(save("a.smf"), 1);
        sendFrame(0, framePattern(0));
        ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    }
    ASSERT_EQ(save("b.smf", 1), 1) << "on the stream that is there, or on a new one";
    ReceivedMessage got;
    for (std::uint32_t number = 0; std::filesystem::file_size(folder / "b.smf") < 424; ++number) {
        sendFrame(number, framePattern(number));
        while (receiver.wait(got, 1)) {
        }
    }
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(movie("b.smf").frames.at(0).number, 0u);
}

// Keeps the capture thread in the frame that ended a recording, until the next one is being started.
struct LastFrame {
    TAVRA_COMMON_PARAM& camera;
    platform::Event reached{platform::Event::Reset::Manual};

    static void hold(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                     void* context, std::uint32_t*) {
        auto& self = *static_cast<LastFrame*>(context);
        if (self.camera.recording.exists()) return;
        self.reached.set();
        while (!self.camera.recording.exists() && self.camera.transferMutex.try_lock()) {
            self.camera.transferMutex.unlock();
            std::this_thread::yield();
        }
    }
};

// The stream of the first ends with it: the second gets one of its own.
TEST_F(RecordingEnd, CanFollowOneThatEndedByItsFrames) {
    openCamera(1, 5);
    LastFrame last{record()};
    std::uint32_t identifier = 0;
    ASSERT_EQ(Tavra_AddPreviewBitmapCallback(handle, LastFrame::hold, &last, &identifier), 1);
    startBoth(1);
    std::uint32_t number = 0;
    for (; !last.reached.wait(0); ++number) sendFrame(number, framePattern(number));
    ASSERT_EQ(save("b.smf", 1), 1);
    ASSERT_EQ(Tavra_RemovePreviewBitmapCallback(handle, identifier), 1);
    expectMessages({{kRecordingEnded, 0},
                    {TAVRA_MESSAGE_TRANSFER_ENDED, 0},
                    {TAVRA_MESSAGE_TRANSFER_STARTED, 0},
                    {kRecordingStarted, 0}});
    for (int i = 0; i < 2; ++i, ++number) sendFrame(number, framePattern(number));
    expectMessages({{kRecordingEnded, 0}});
    EXPECT_EQ(movie("b.smf").frames.size(), 1u);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
}

}  // namespace
}  // namespace tavra::test
