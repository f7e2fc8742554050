// Receivers that take no message: one that is gone, and one whose queue is full.
#include <gtest/gtest.h>

#include <functional>

#include "capture_api/stream_fixture.h"
#include "platform/messages.h"

namespace tavra::test {
namespace {

class UnreachableReceiver : public StreamTest {
  protected:
    ~UnreachableReceiver() override {
        Tavra_Close(handle);
        handle = nullptr;
    }

    // Runs the function on the read thread as it ends, between the failure of a start and the end message.
    void holdTheEnd(std::function<void()> function) {
        whenReadingEnds = std::move(function);
        operations().endRead = [](TavraUsbDevice device) {
            whenReadingEnds();
            return doublesOperations->endRead(device);
        };
    }

    void drawNothing() {
        std::uint32_t identifier = 0;
        ASSERT_TRUE(Tavra_AddPreviewGDICallback(
            handle, [](TavraDC, std::uint32_t, std::uint32_t, std::uint32_t, void*, std::uint32_t) {},
            nullptr, &identifier));
    }

    // Every frame with its message 45067, which is lost.
    void expectThreeFramesAndAStop() {
        const std::uint32_t before = lastError();
        for (std::uint32_t i = 0; i < 3; ++i) sendFrame(i, pattern(0));
        EXPECT_EQ(raws.waitFor(3).size(), 3u);
        EXPECT_TRUE(Tavra_StopTransfer(handle));
        EXPECT_EQ(lastError(), before);
    }

    MessageReceiver next;
    platform::Event refused{platform::Event::Reset::Manual};
    platform::Event drained{platform::Event::Reset::Manual};

  private:
    static inline std::function<void()> whenReadingEnds;
};

TEST_F(UnreachableReceiver, ThatIsGoneAtTheStartEndsTheRunWithTheSystemsCode) {
    openCamera();
    receiver.destroy();
    holdTheEnd([this] { Tavra_SetReceiveMsgWindow(handle, next.window()); });
    ASSERT_TRUE(Tavra_StartTransfer(handle)) << "the result only tells that the thread was made";
    ReceivedMessage got;
    ASSERT_TRUE(next.wait(got, kPatienceMs));
    EXPECT_EQ(got.message, TAVRA_MESSAGE_TRANSFER_ENDED);
    EXPECT_EQ(got.parameter2, 1400u);
    EXPECT_TRUE(record().captureThread.ended().wait(kPatienceMs));
    EXPECT_FALSE(record().transferRunning());
    EXPECT_FALSE(next.wait(got, 0));
    Tavra_Close(handle);
    handle = nullptr;
}

TEST_F(UnreachableReceiver, ThatGoesLaterOnlyLosesTheMessages) {
    openCamera();
    drawNothing();
    collectRaw();
    start();
    receiver.destroy();
    expectThreeFramesAndAStop();
}

class FullQueue : public UnreachableReceiver {
  protected:
    static constexpr std::uint32_t kOfTheApplication = 1024;

    // False: queues of this system take any number of messages.
    bool fill() {
        for (int i = 0; i < 20001; ++i) {
            const Status posted = platform::postMessage(receiver.window(), kOfTheApplication, 0, 0);
            if (!posted.ok()) return true;
        }
        return false;
    }
    // Takes all that is in the queue and checks that the application has put it there.
    void drain() {
        for (ReceivedMessage got; receiver.wait(got, 0);) ASSERT_EQ(got.message, kOfTheApplication);
    }
};

TEST_F(FullQueue, AtTheStartEndsTheRunWithTheSystemsCode) {
    openCamera();
    holdTheEnd([this] {
        refused.set();
        drained.wait(kPatienceMs);
    });
    if (!fill()) GTEST_SKIP() << "no queue of this system is ever full";
    ASSERT_TRUE(Tavra_StartTransfer(handle));
    ASSERT_TRUE(refused.wait(kPatienceMs));
    drain();
    drained.set();
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 1816u);
}

TEST_F(FullQueue, LaterOnlyLosesTheMessages) {
    openCamera();
    drawNothing();
    collectRaw();
    start();
    if (!fill()) GTEST_SKIP() << "no queue of this system is ever full";
    expectThreeFramesAndAStop();
    drain();
}

}  // namespace
}  // namespace tavra::test
