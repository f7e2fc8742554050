#include "stream_monitor.h"

#include <gtest/gtest.h>

namespace tavra::tool {
namespace {

using namespace std::chrono_literals;
using Clock = StreamMonitor::Clock;

TEST(StreamMonitor, AWholeStreamHasNoGaps) {
    StreamMonitor monitor;
    for (std::uint32_t i = 10; i < 110; ++i) monitor.frame(i, 1000, Clock::time_point() + i * 10ms);
    EXPECT_EQ(monitor.totals().frames, 100u);
    EXPECT_EQ(monitor.totals().bytes, 100'000u);
    EXPECT_EQ(monitor.totals().lost, 0u);
    EXPECT_TRUE(monitor.takeGaps().empty());
}

TEST(StreamMonitor, AHoleWithoutAPauseIsNotThisComputersFault) {
    StreamMonitor monitor;
    for (std::uint32_t number : {0u, 1u, 2u, 4u})
        monitor.frame(number, 1, Clock::time_point() + number * 10ms);
    const auto gaps = monitor.takeGaps();
    ASSERT_EQ(gaps.size(), 1u);
    EXPECT_EQ(gaps[0].text(), "frame 3 lost: damaged on the way, or never sent by the camera");
    EXPECT_EQ(monitor.totals().lost, 1u);
    EXPECT_TRUE(monitor.takeGaps().empty()) << "each gap is told once";
}

TEST(StreamMonitor, AHoleBehindALongPauseIs) {
    StreamMonitor monitor;
    monitor.frame(0, 1, Clock::time_point());
    monitor.frame(1, 1, Clock::time_point() + 10ms);
    monitor.frame(12, 1, Clock::time_point() + 120ms);
    const auto gaps = monitor.takeGaps();
    ASSERT_EQ(gaps.size(), 1u);
    EXPECT_EQ(gaps[0].text(),
              "frames 2 to 11 lost (10): this computer was late: 110.0 ms without taking a frame");
}

TEST(StreamMonitor, NumbersWrapAt32Bits) {
    StreamMonitor monitor;
    monitor.frame(0xFFFFFFFE, 1, Clock::time_point());
    monitor.frame(0xFFFFFFFF, 1, Clock::time_point() + 1ms);
    monitor.frame(0, 1, Clock::time_point() + 2ms);
    EXPECT_TRUE(monitor.takeGaps().empty());
    monitor.frame(2, 1, Clock::time_point() + 3ms);
    EXPECT_EQ(monitor.totals().lost, 1u);
}

TEST(StreamMonitor, AnEarlierNumberIsOutOfOrderAndLosesNothing) {
    StreamMonitor monitor;
    for (std::uint32_t number : {5u, 6u, 4u}) monitor.frame(number, 1, Clock::time_point());
    const auto gaps = monitor.takeGaps();
    ASSERT_EQ(gaps.size(), 1u);
    EXPECT_TRUE(gaps[0].outOfOrder);
    EXPECT_EQ(gaps[0].text(), "frame 4 came late: the stream was restarted after a failed read");
    EXPECT_EQ(monitor.totals().lost, 0u);
}

}  // namespace
}  // namespace tavra::tool
