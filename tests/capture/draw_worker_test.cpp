#include "capture/draw_worker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <vector>

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

TEST(DrawWorker, ASecondStartEndsTheFirst) {
    Redraws redraws;
    CWorkerDrawTimming worker(redraws.function(), 20);
    ASSERT_TRUE(worker.start("tavra-draw").ok());
    ASSERT_TRUE(worker.start("tavra-draw").ok());
    worker.request(windowNumber(7));
    ASSERT_TRUE(redraws.drawn.wait(10000));
    worker.stop();
    EXPECT_EQ(redraws.count, 1);
    worker.stop();
}

// From requests to their redraws, with a request right behind every redraw, so that a worker that waits for
// the end of the interval needs the whole of it.
std::vector<double> millisecondsOf(Redraws& redraws, CWorkerDrawTimming& worker) {
    using Clock = std::chrono::steady_clock;
    EXPECT_TRUE(worker.start("tavra-draw").ok());
    std::vector<double> waits;
    for (int i = 0; i < 20; ++i) {
        const Clock::time_point asked = Clock::now();
        worker.request(windowNumber(7));
        EXPECT_TRUE(redraws.drawn.wait(10000));
        waits.push_back(std::chrono::duration<double, std::milli>(Clock::now() - asked).count());
    }
    worker.stop();
    return waits;
}

std::vector<double> millisecondsOfRedraws(std::uint32_t intervalMs) {
    Redraws redraws;
    CWorkerDrawTimming worker(redraws.function(), intervalMs);
    return millisecondsOf(redraws, worker);
}

// The longest such interval. A busy system may hold up some of the redraws, but not all.
TEST(DrawWorker, WithAnIntervalBelow16WakesAtOnce) {
    const std::vector<double> waits = millisecondsOfRedraws(15);
    EXPECT_LT(*std::min_element(waits.begin(), waits.end()), 8.0);
}

// Here it may hold up the request, which then finds a part of the interval gone.
TEST(DrawWorker, WithAnIntervalOf16WaitsForItsEnd) {
    const std::vector<double> waits = millisecondsOfRedraws(16);
    EXPECT_GT(*std::max_element(waits.begin(), waits.end()), 8.0);
}

// The interval that the capture thread leaves as it is. Again a busy system may hold up some redraws and some
// requests.
TEST(DrawWorker, PacesRedrawsBy33MillisecondsByDefault) {
    EXPECT_EQ(CWorkerDrawTimming::kDefaultIntervalMs, 33u);
    Redraws redraws;
    CWorkerDrawTimming worker(redraws.function());
    const std::vector<double> waits = millisecondsOf(redraws, worker);
    EXPECT_GT(*std::max_element(waits.begin(), waits.end()), 25.0);
    EXPECT_LT(*std::min_element(waits.begin(), waits.end()), 50.0);
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
