#include "media/movie/worker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace tavra::test {
namespace {

using platform::Event;
using platform::kWaitForever;

class WaitingWorker final : public TavraTrg::CWorker {
  public:
    ~WaitingWorker() override { Stop(); }
    void ThreadMain() override {
        thread = std::this_thread::get_id();
        foundStopSet = stopEvent().wait(0);
        running.set();
        if (endsByItself) return;
        stopEvent().wait(kWaitForever);
        ++stops;
    }
    bool hasThread() const { return runs(); }

    bool endsByItself = false;
    bool foundStopSet = false;
    std::atomic<int> stops{0};
    std::thread::id thread;
    Event running{Event::Reset::Auto};
};

TEST(Worker, RunsOnAThreadOfItsOwnUntilItIsStopped) {
    WaitingWorker worker;
    EXPECT_FALSE(worker.hasThread());
    ASSERT_TRUE(worker.Start().ok());
    EXPECT_TRUE(worker.hasThread());
    worker.running.wait(kWaitForever);
    EXPECT_EQ(worker.stops, 0);
    worker.Stop();
    EXPECT_FALSE(worker.hasThread());
    EXPECT_EQ(worker.stops, 1) << "the stop waits for the thread";
    EXPECT_NE(worker.thread, std::this_thread::get_id());
}

TEST(Worker, StartStopsTheThreadBeforeAndClearsTheStopEvent) {
    WaitingWorker worker;
    ASSERT_TRUE(worker.Start().ok());
    worker.running.wait(kWaitForever);
    ASSERT_TRUE(worker.Start().ok());
    EXPECT_EQ(worker.stops, 1);
    worker.running.wait(kWaitForever);
    EXPECT_FALSE(worker.foundStopSet);
    worker.Stop();
    EXPECT_EQ(worker.stops, 2);
}

TEST(Worker, StopWithoutAThreadDoesNothing) {
    WaitingWorker worker;
    worker.Stop();
    ASSERT_TRUE(worker.Start().ok());
    worker.Stop();
    worker.Stop();
    EXPECT_EQ(worker.stops, 1);
}

TEST(Worker, OneThatHasEndedByItselfIsStillToBeStopped) {
    WaitingWorker worker;
    worker.endsByItself = true;
    ASSERT_TRUE(worker.Start().ok());
    worker.running.wait(kWaitForever);
    EXPECT_TRUE(worker.hasThread());
    worker.Stop();
    EXPECT_FALSE(worker.hasThread());
    EXPECT_EQ(worker.stops, 0);
}

}  // namespace
}  // namespace tavra::test
