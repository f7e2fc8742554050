// A receiver that does not take its messages.
#include <gtest/gtest.h>

#include "capture_api/stream_fixture.h"
#include "platform/messages.h"

namespace tavra::test {
namespace {

class FullQueue : public StreamTest {
  protected:
    void fill() {
        while (platform::postMessage(receiver, 1, 0, 0).ok()) {
        }
    }
    // Takes all messages; how many there were of the kind.
    std::size_t drain(std::uint32_t message) {
        std::size_t found = 0;
        for (TavraMessage got{}; TavraHost_WaitMessage(receiver, &got, 0);) found += got.message == message;
        return found;
    }
    bool waitForTheEnd() {
        return static_cast<TAVRA_COMMON_PARAM*>(handle)->captureThread.ended().wait(kPatienceMs);
    }

    static void draw(TavraDC, std::uint32_t, std::uint32_t, std::uint32_t, void*, std::uint32_t) {}
};

TEST_F(FullQueue, AtTheStartEndsTheRun) {
    openCamera();
    fill();
    ASSERT_TRUE(Tavra_StartTransfer(handle)) << "the result only tells that the thread was made";
    EXPECT_TRUE(waitForTheEnd());
    EXPECT_EQ(drain(TAVRA_MESSAGE_TRANSFER_STARTED), 0u);
}

TEST_F(FullQueue, LaterOnlyLosesTheMessages) {
    openCamera();
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddPreviewGDICallback(handle, draw, nullptr, &identifier));
    collectRaw();
    start();
    fill();
    for (std::uint32_t i = 0; i < 3; ++i) sendFrame(i, pattern(0));
    EXPECT_EQ(raws.waitFor(3).size(), 3u);
    EXPECT_TRUE(Tavra_StopTransfer(handle));
    EXPECT_EQ(drain(TAVRA_MESSAGE_FRAME_FINISHED), 0u);
}

}  // namespace
}  // namespace tavra::test
