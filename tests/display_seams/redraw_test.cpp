// Who has the window drawn again when a frame is finished, and when nobody does.
#include "capture/transfer.h"
#include "display_seams/window_fixture.h"

namespace tavra::test {
namespace {

class Redraw : public PreviewOnSeams {
  protected:
    // The thread of the callbacks, from the first raw frame on.
    void noteCaptureThread() {
        const TavraRawCallback note = [](void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                                         std::uint16_t, std::uint32_t, void* context, std::uint32_t*) {
            static_cast<Redraw*>(context)->captureThread = std::this_thread::get_id();
        };
        std::uint32_t identifier = 0;
        ASSERT_TRUE(Tavra_AddRawCallback(handle, note, this, &identifier));
    }

    // Holds the first frame up until the second has arrived: once three are sent, four reads are in flight
    // again with the one that the read thread starts for the third, behind the second. Until then nothing is
    // drawn.
    static void waitForNextFrame(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t number,
                                 std::uint32_t, void* context, std::uint32_t*) {
        auto& test = *static_cast<Redraw*>(context);
        if (number == 1) {
            EXPECT_TRUE(test.allSent.wait(kPatienceMs));
            EXPECT_TRUE(test.usb.waitForPendingReads(0, 4));
        }
        if (number == 2) {
            EXPECT_EQ(test.window().invalidationCount(), 0u);
        }
    }

    platform::Event allSent{platform::Event::Reset::Manual};
    std::thread::id captureThread;
};

TEST_F(Redraw, IsTheWorkersWithoutARecording) {
    openMono();
    noteCaptureThread();
    createWindow();
    start();
    show(1);
    ASSERT_TRUE(window().waitForInvalidations(1, kPatienceMs));
    stopAndExpectCode(0);
    for (const SharedWindow::Invalidation& redraw : window().takeInvalidations()) {
        EXPECT_NE(redraw.thread, captureThread);
        EXPECT_FALSE(redraw.erase);
    }
}

TEST_F(Redraw, IsTheCaptureThreadsOwnWhileARecordingExists) {
    openMono();
    noteCaptureThread();
    createWindow();
    startBoth();
    for (std::uint32_t frame = 1; frame <= 3; ++frame) {
        show(frame);
        EXPECT_TRUE(window().waitForInvalidations(frame, kPatienceMs)) << "each frame, at once";
    }
    ASSERT_TRUE(Tavra_SetAVIStatus(handle, 0));
    expectMessages({{kRecordingEnded, 0}});
    ASSERT_TRUE(Tavra_StopTransfer(handle));
    const auto redraws = window().takeInvalidations();
    EXPECT_EQ(redraws.size(), 3u);
    for (const SharedWindow::Invalidation& redraw : redraws) {
        EXPECT_EQ(redraw.thread, captureThread);
        EXPECT_FALSE(redraw.erase);
    }
}

TEST_F(Redraw, IsLeftOutWhileARecordingHasTheNextFrameWaiting) {
    openMono();
    createWindow();
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddPreviewBitmapCallback(handle, waitForNextFrame, this, &identifier));
    startBoth();
    for (std::uint32_t frame = 1; frame <= 3; ++frame) sendFrame(frame, framePattern(frame));
    allSent.set();
    for (std::uint32_t frame = 1; frame <= 3; ++frame) {
        EXPECT_EQ(expectMessage(TAVRA_MESSAGE_FRAME_FINISHED), frame) << "shown or not, it is published";
    }
    EXPECT_TRUE(window().waitForInvalidations(1, kPatienceMs)) << "the last one is drawn";
    ASSERT_TRUE(Tavra_StopTransfer(handle));
}

// A run for the preview alone ends with it.
TEST_F(Redraw, WindowThatClosesEndsARunThatNobodyElseWants) {
    openMono();
    createWindow();
    ASSERT_TRUE(startTransfer(record(), false).ok());
    expectMessage(TAVRA_MESSAGE_TRANSFER_STARTED);
    show(1);
    show(2);
    window().close();
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_WINDOW_CLOSED), 0u);
    sendFrame(3, framePattern(3));
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u);
    expectNoMessage();
}

TEST_F(Redraw, WindowThatClosesLeavesATransferThatIsWanted) {
    openMono();
    createWindow();
    start();
    show(1);
    window().close();
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_WINDOW_CLOSED), 0u);
    collectRaw();
    sendFrame(2, framePattern(2));
    sendFrame(3, framePattern(3));
    EXPECT_EQ(raws.waitFor(2).size(), 2u);
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
