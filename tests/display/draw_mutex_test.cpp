// The lock that stays with a thread from one call to another.
#include "display/draw_mutex.h"

#include <gtest/gtest.h>

#include <future>

namespace tavra::test {
namespace {

// Runs on another thread, to the end.
template <typename Work>
auto elsewhere(Work work) {
    return std::async(std::launch::async, work).get();
}

TEST(DrawMutex, IsLockedAgainByItsThread) {
    DrawMutex mutex;
    const DrawMutexLock first(mutex), second(mutex);
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
}

TEST(DrawMutex, OthersWaitForAMoment) {
    DrawMutex mutex;
    std::future<bool> other;
    int order = 0;
    {
        const DrawMutexLock lock(mutex);
        other = std::async(std::launch::async, [&] {
            const DrawMutexLock waited(mutex, DrawMutexLock::How::UnlessLent);
            return waited && order == 1;
        });
        order = 1;
    }
    EXPECT_TRUE(other.get());
}

TEST(DrawMutex, LentIsRefusedToItsThreadAndToWhoMayNotWait) {
    DrawMutex mutex;
    DrawMutexLock lock(mutex);
    lock.lend();
    EXPECT_TRUE(mutex.isLentHere());
    EXPECT_FALSE(elsewhere([&] { return mutex.isLentHere(); }));
    EXPECT_FALSE(elsewhere([&] { return mutex.lockUnlessLent(); }));
    EXPECT_FALSE(mutex.lockUnlessLent());
    EXPECT_FALSE(mutex.lock());
}

TEST(DrawMutex, OnlyItsThreadTakesItBack) {
    DrawMutex mutex;
    EXPECT_FALSE(mutex.takeBack());
    {
        DrawMutexLock lock(mutex);
        EXPECT_FALSE(mutex.takeBack());  // it has it anyway
        lock.lend();
    }
    EXPECT_FALSE(elsewhere([&] { return mutex.takeBack(); }));
    {
        DrawMutexLock lock(mutex, DrawMutexLock::How::TakeBack);
        EXPECT_TRUE(lock);
        const DrawMutexLock again(mutex);
        EXPECT_TRUE(again);
    }
    EXPECT_TRUE(elsewhere([&] {
        const DrawMutexLock lock(mutex);
        return static_cast<bool>(lock);
    }));
}

TEST(DrawMutex, WhoeverWaitsWhenItIsLentGoesOn) {
    DrawMutex mutex;
    DrawMutexLock lock(mutex);
    auto other = std::async(std::launch::async, [&] { return mutex.lockUnlessLent(); });
    lock.lend();
    EXPECT_FALSE(other.get());
}

TEST(DrawMutex, WhoeverWaitsGetsItWhenItIsTakenBackAndUnlocked) {
    DrawMutex mutex;
    DrawMutexLock lock(mutex);
    lock.lend();
    auto other = std::async(std::launch::async, [&] {
        const DrawMutexLock waited(mutex);
        return static_cast<bool>(waited);
    });
    EXPECT_TRUE(mutex.takeBack());
    EXPECT_FALSE(mutex.isLentHere());
    mutex.unlock();
    EXPECT_TRUE(other.get());
}

TEST(DrawMutex, EndSendsAwayWhoWaitsButNotWhoHasIt) {
    DrawMutex mutex;
    DrawMutexLock lock(mutex);
    lock.lend();
    auto other = std::async(std::launch::async, [&] { return mutex.lock(); });
    mutex.end();
    EXPECT_FALSE(other.get());
    EXPECT_FALSE(elsewhere([&] { return mutex.lockUnlessLent(); }));
    EXPECT_TRUE(mutex.takeBack());
    {
        const DrawMutexLock again(mutex);
        EXPECT_TRUE(again);
    }
    mutex.unlock();
    EXPECT_FALSE(mutex.lock());
}

}  // namespace
}  // namespace tavra::test
