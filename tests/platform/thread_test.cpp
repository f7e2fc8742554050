#include "platform/thread.h"

#include <gtest/gtest.h>

#if defined(__linux__)
#include <pthread.h>
#endif

#include <string>

namespace tavra::platform {
namespace {

TEST(Thread, RunsTheBodyAndTellsItsEnd) {
    Thread thread;
    Event go(Event::Reset::Manual);
    EXPECT_FALSE(thread.exists());
    ASSERT_TRUE(thread.start("tavra-test", ThreadPriority::Normal, [&] { go.wait(kWaitForever); }).ok());
    EXPECT_TRUE(thread.exists());
    EXPECT_FALSE(thread.ended().wait(0));
    go.set();
    EXPECT_TRUE(thread.ended().wait(kWaitForever));
    EXPECT_TRUE(thread.exists()) << "an ended thread exists until it is joined";
    thread.join();
    EXPECT_FALSE(thread.exists());
    thread.join();
}

TEST(Thread, CanBeStartedAgain) {
    Thread thread;
    int runs = 0;
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(thread.start("tavra-test", ThreadPriority::Normal, [&] { ++runs; }).ok());
        thread.join();
    }
    EXPECT_EQ(runs, 100);
}

TEST(Thread, TimeCriticalStartsWhateverTheRights) {
    Thread thread;
    bool ran = false;
    ASSERT_TRUE(thread.start("tavra-test", ThreadPriority::TimeCritical, [&] { ran = true; }).ok());
    thread.join();
    EXPECT_TRUE(ran);
}

#if defined(__linux__)
TEST(Thread, HasTheNameItWasGiven) {
    Thread thread;
    Event named(Event::Reset::Manual);
    std::string name;
    ASSERT_TRUE(thread
                    .start("tavra-test", ThreadPriority::Normal,
                           [&] {
                               named.wait(kWaitForever);
                               char buffer[16] = {};
                               pthread_getname_np(pthread_self(), buffer, sizeof buffer);
                               name = buffer;
                           })
                    .ok());
    named.set();
    thread.join();
    EXPECT_EQ(name, "tavra-test");
}
#endif

}  // namespace
}  // namespace tavra::platform
