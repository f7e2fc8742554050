#include "media/movie/pointer_queue.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace tavra::test {
namespace {

using movie::PointerQueue;

struct PointerQueueTest : testing::Test {
    PointerQueue<int> queue;
    std::array<int, 4> items{};

    bool eventSet() const { return queue.notEmpty().wait(0); }
};

TEST_F(PointerQueueTest, GivesInTheOrderOfThePushes) {
    EXPECT_EQ(queue.pop(), nullptr);
    for (int& item : items) queue.push(&item);
    EXPECT_EQ(queue.size(), 4u);
    for (int& item : items) EXPECT_EQ(queue.pop(), &item);
    EXPECT_EQ(queue.pop(), nullptr);
    EXPECT_EQ(queue.size(), 0u);
}

TEST_F(PointerQueueTest, WhatIsPutInFrontIsNext) {
    queue.push(&items[0]);
    queue.push(&items[1]);
    queue.pushFront(&items[2]);
    EXPECT_EQ(queue.pop(), &items[2]);
    EXPECT_EQ(queue.pop(), &items[0]);
    EXPECT_EQ(queue.pop(), &items[1]);
    queue.pushFront(&items[3]);
    EXPECT_EQ(queue.pop(), &items[3]);
}

TEST_F(PointerQueueTest, TheEventIsSetWhileSomethingIsInIt) {
    EXPECT_FALSE(eventSet());
    queue.push(&items[0]);
    EXPECT_TRUE(eventSet());
    queue.push(&items[1]);
    queue.pop();
    EXPECT_TRUE(eventSet());
    queue.pop();
    EXPECT_FALSE(eventSet());
    queue.pushFront(&items[0]);
    EXPECT_TRUE(eventSet());
    queue.pop();
    EXPECT_FALSE(eventSet());
    queue.pop();
    EXPECT_FALSE(eventSet());
}

TEST_F(PointerQueueTest, TwoThreadsPassEachPointerOnce) {
    constexpr int kRounds = 2000;
    PointerQueue<int> back;
    queue.reserve(items.size());
    for (int& item : items) back.push(&item);
    std::thread worker([&] {
        for (int i = 0; i < kRounds; ++i) {
            queue.notEmpty().wait(platform::kWaitForever);
            int* const item = queue.pop();
            ++*item;
            back.push(item);
        }
    });
    for (int i = 0; i < kRounds; ++i) {
        back.notEmpty().wait(platform::kWaitForever);
        queue.push(back.pop());
    }
    worker.join();
    EXPECT_EQ(back.size(), items.size());
    for (const int count : items) EXPECT_EQ(count, kRounds / 4) << "in turn";
}

}  // namespace
}  // namespace tavra::test
