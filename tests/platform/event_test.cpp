#include "platform/event.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

TEST(Event, ManualStaysSetUntilReset) {
    Event event(Event::Reset::Manual);
    ASSERT_TRUE(event.valid());
    EXPECT_FALSE(event.wait(0));
    event.set();
    event.set();
    EXPECT_TRUE(event.wait(0));
    EXPECT_TRUE(event.wait(0));
    event.reset();
    EXPECT_FALSE(event.wait(0));
    event.reset();
    EXPECT_FALSE(event.wait(1));
}

TEST(Event, AutoLetsOneWaitThrough) {
    Event event(Event::Reset::Auto, true);
    EXPECT_TRUE(event.wait(0));
    EXPECT_FALSE(event.wait(0));
    event.set();
    event.set();
    EXPECT_TRUE(event.wait(0)) << "setting twice before a wait counts once";
    EXPECT_FALSE(event.wait(0));
}

TEST(WaitAny, GivesTheLowestSetEvent) {
    Event a(Event::Reset::Manual), b(Event::Reset::Manual, true), c(Event::Reset::Manual, true);
    const Event* const all[] = {&a, &b, &c};
    EXPECT_EQ(waitAny(all, 0), 1);
    b.reset();
    EXPECT_EQ(waitAny(all, 0), 2);
    c.reset();
    EXPECT_EQ(waitAny(all, 1), kWaitTimedOut);
}

TEST(WaitAny, LeavesOtherAutoEventsSet) {
    Event a(Event::Reset::Auto, true), b(Event::Reset::Auto, true);
    const Event* const all[] = {&a, &b};
    EXPECT_EQ(waitAny(all, 0), 0);
    EXPECT_EQ(waitAny(all, 0), 1);
    EXPECT_EQ(waitAny(all, 0), kWaitTimedOut);
}

TEST(WaitAny, RefusesNoneAndTooMany) {
    EXPECT_EQ(waitAny({}, 0), kWaitFailed);
    EXPECT_EQ(lastSystemError(), 87u);
    Event event(Event::Reset::Manual, true);
    const std::vector<const Event*> many(65, &event);
    EXPECT_EQ(waitAny(many, 0), kWaitFailed);
    EXPECT_EQ(waitAny(std::span(many).first(64), 0), 0);
}

TEST(WaitAny, AnotherThreadEndsAWaitWithoutLimit) {
    Event never(Event::Reset::Manual), event(Event::Reset::Auto);
    std::thread setter([&] { event.set(); });
    const Event* const all[] = {&never, &event};
    EXPECT_EQ(waitAny(all, kWaitForever), 1);
    setter.join();
}

TEST(Event, AutoWakesEachWaiterOnce) {
    Event go(Event::Reset::Auto), done(Event::Reset::Auto);
    std::atomic<int> woken{0};
    std::vector<std::thread> waiters;
    waiters.reserve(4);
    for (int i = 0; i < 4; ++i) {
        waiters.emplace_back([&] {
            ASSERT_TRUE(go.wait(kWaitForever));
            ++woken;
            done.set();
        });
    }
    for (int i = 1; i <= 4; ++i) {
        go.set();
        ASSERT_TRUE(done.wait(kWaitForever));
        EXPECT_EQ(woken, i);
    }
    for (auto& waiter : waiters) waiter.join();
}

}  // namespace
}  // namespace tavra::platform
