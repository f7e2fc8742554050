#include "capture/draw_worker.h"

#include <gtest/gtest.h>

#include <atomic>

namespace tavra {
namespace {

// Long enough that no redraw can come of the interval's end within a test.
constexpr std::uint32_t kNeverMs = 100000;

struct Redraws {
    std::atomic<int> count{0};
    std::atomic<TavraWindow> window{nullptr};
    platform::Event drawn{platform::Event::Reset::Auto};

    CWorkerDrawTimming::Invalidate function() {
        return [this](TavraWindow target) {
            ++count;
            window = target;
            drawn.set();
        };
    }
};

TavraWindow windowNumber(std::uintptr_t number) {
    return reinterpret_cast<TavraWindow>(number);
}

TEST(DrawWorker, RedrawsTheWindowAtTheEndOfTheInterval) {
    Redraws redraws;
    CWorkerDrawTimming worker(redraws.function(), 20);
    ASSERT_TRUE(worker.start("tavra-draw").ok());
    worker.request(windowNumber(7));
    ASSERT_TRUE(redraws.drawn.wait(10000));
    EXPECT_EQ(redraws.window, windowNumber(7));
    worker.stop();
    EXPECT_EQ(redraws.count, 1) << "one request is one redraw";
}

TEST(DrawWorker, WithAShortIntervalDoesNotWaitForItsEnd) {
    Redraws redraws;
    CWorkerDrawTimming worker(redraws.function(), 15);
    ASSERT_TRUE(worker.start("tavra-draw").ok());
    for (int i = 0; i < 20; ++i) {
        worker.request(windowNumber(7));
        ASSERT_TRUE(redraws.drawn.wait(10000));
    }
}

TEST(DrawWorker, LeavesARequestAloneUntilTheIntervalEnds) {
    Redraws redraws;
    CWorkerDrawTimming worker(redraws.function(), kNeverMs);
    ASSERT_TRUE(worker.start("tavra-draw").ok());
    worker.request(windowNumber(7));
    worker.request(windowNumber(8));
    worker.stop();
    EXPECT_EQ(redraws.count, 0);
}

TEST(DrawWorker, ManyRequestsBeforeTheWorkerLooksAreOneRedraw) {
    Redraws redraws;
    CWorkerDrawTimming worker(redraws.function(), 20);
    for (std::uintptr_t i = 1; i <= 5; ++i) worker.request(windowNumber(i));
    ASSERT_TRUE(worker.start("tavra-draw").ok());
    ASSERT_TRUE(redraws.drawn.wait(10000));
    worker.stop();
    EXPECT_EQ(redraws.count, 1);
    EXPECT_EQ(redraws.window, windowNumber(5));
}

TEST(DrawWorker, WaitTellsWhetherItIsToEnd) {
    Redraws redraws;
    CWorkerDrawTimming worker(redraws.function(), kNeverMs);
    EXPECT_FALSE(worker.Wait(0));
    worker.GetStopEvent().set();
    EXPECT_TRUE(worker.Wait(0));
}

}  // namespace
}  // namespace tavra
