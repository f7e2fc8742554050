// What the window shows of a stream that is recorded.
#include <chrono>

#include "display_x11/preview_on_screen.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

using platform::Event;

constexpr std::uint32_t kReadsInFlight = 4;
constexpr Size kSize{6, 4};

class RecordedPreview : public PreviewOnScreen {
  protected:
    Picture frame(std::uint32_t number) const {
        Picture picture;
        for (std::uint32_t i = 0; i < 24; ++i) picture.push_back(grey(number, i % 6, i / 6));
        return picture;
    }
    // Each is answered by the thread that paints, between two paintings: what was asked for before the first
    // is painted after the second.
    void letWindowPaint() {
        for (int i = 0; i < 2; ++i) {
            std::uint32_t place[4] = {};
            EXPECT_TRUE(Tavra_GetPreviewWindowSize(handle, &place[0], &place[1], &place[2], &place[3]));
        }
    }
    void startRecording() {
        ASSERT_TRUE(Tavra_SaveAVIW(handle, wideName(folder_ / "a.smf").c_str(), 0, 1000)) << lastError();
        for (int i = 0; i < 2; ++i) {  // of two threads
            ReceivedMessage got;
            ASSERT_TRUE(receiver.wait(got, kPatienceMs));
            EXPECT_TRUE(got.message == 45064 || got.message == 45057) << got.message;
        }
    }
    // Holds the stream at the second frame, and looks at the screen at the third, which also is the capture
    // thread's last look before it works on that.
    static void atEachFrame(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t number,
                            std::uint16_t, std::uint32_t, void* context, std::uint32_t*) {
        auto& self = *static_cast<RecordedPreview*>(context);
        if (number == 2) {
            self.held_.set();
            EXPECT_TRUE(self.goOn_.wait(kPatienceMs));
        }
        if (number == 3) {
            self.seen_ = self.lookForAWhile();
            self.looked_.set();
        }
    }
    // The picture, if it stays what it is for longer than the pace of redraws without a recording.
    Picture lookForAWhile() {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(100);
        letWindowPaint();
        const Picture first = server.pixels(window, kSize.width, kSize.height);
        while (std::chrono::steady_clock::now() < end) {
            if (server.pixels(window, kSize.width, kSize.height) != first) return {};
        }
        return first;
    }

    const TempFolder folder_;
    Event held_{Event::Reset::Manual}, goOn_{Event::Reset::Manual}, looked_{Event::Reset::Manual};
    Picture seen_;
};

TEST_F(RecordedPreview, ImagesThatTheNextFrameHasOvertakenAreNotDrawn) {
    openMono(kSize.width, kSize.height);
    createWindow(kSize);
    EXPECT_TRUE(server.looksLike(window, kSize, Picture(24, 0)));
    letWindowPaint();
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddRawCallback(handle, atEachFrame, this, &identifier));
    startRecording();

    show(1);
    EXPECT_TRUE(server.looksLike(window, kSize, frame(1))) << "nothing else waits";
    sendFrame(2, pattern(2));
    ASSERT_TRUE(held_.wait(kPatienceMs));
    sendFrame(3, pattern(3));
    sendFrame(4, pattern(4));
    EXPECT_TRUE(usb.waitForPendingReads(0, kReadsInFlight));  // the third is in its block
    goOn_.set();
    ASSERT_TRUE(looked_.wait(kPatienceMs));
    EXPECT_EQ(seen_, frame(1)) << "the second was not drawn";
    for (std::uint32_t number = 2; number <= 4; ++number) EXPECT_EQ(expectMessage(45067), number);
    EXPECT_TRUE(server.looksLike(window, kSize, frame(4))) << "and the last is";
    ASSERT_TRUE(Tavra_StopTransfer(handle));
    forgetAll();
}

}  // namespace
}  // namespace tavra::test
