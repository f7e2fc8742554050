#include "platform/messages.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <thread>

#include "platform/last_error.h"
#include "tavra/tavra_host.h"

namespace tavra::platform {
namespace {

struct ReceiverTest : testing::Test {
    TavraWindow receiver = TavraHost_CreateReceiver();
    ~ReceiverTest() override { TavraHost_DestroyReceiver(receiver); }
    bool readable() const {
        pollfd descriptor{TavraHost_ReceiverFd(receiver), POLLIN, 0};
        return poll(&descriptor, 1, 0) == 1;
    }
};

TEST_F(ReceiverTest, MessagesComeInOrderAndTheDescriptorFollows) {
    EXPECT_FALSE(readable());
    ASSERT_TRUE(postMessage(receiver, 45057, 0x1'0000'0001, 0).ok());
    ASSERT_TRUE(postMessage(receiver, 45058, 2, 0x9'0000'0005).ok());
    EXPECT_TRUE(readable());
    TavraMessage message{};
    ASSERT_EQ(TavraHost_WaitMessage(receiver, &message, 0), 1);
    EXPECT_EQ(message.message, 45057u);
    EXPECT_EQ(message.parameter1, 0x1'0000'0001u);
    ASSERT_EQ(TavraHost_WaitMessage(receiver, &message, 0xFFFFFFFF), 1);
    EXPECT_EQ(message.message, 45058u);
    EXPECT_EQ(message.parameter2, 0x9'0000'0005u);
    EXPECT_FALSE(readable());
    EXPECT_EQ(TavraHost_WaitMessage(receiver, &message, 1), 0);
}

TEST_F(ReceiverTest, AFullQueueLosesTheMessage) {
    for (std::uint64_t i = 0; i < 10'000; ++i) ASSERT_TRUE(postMessage(receiver, 45067, 0, i).ok());
    EXPECT_EQ(postMessage(receiver, 45067, 0, 10'000).code(), 1816u);
    TavraMessage message{};
    ASSERT_EQ(TavraHost_WaitMessage(receiver, &message, 0), 1);
    EXPECT_EQ(message.parameter2, 0u);
    EXPECT_TRUE(postMessage(receiver, 45067, 0, 10'001).ok());
}

TEST_F(ReceiverTest, AnythingElseIsNoReceiver) {
    int other = 0;
    EXPECT_EQ(postMessage(&other, 45057, 0, 0).code(), 1400u);
    EXPECT_EQ(lastSystemError(), 1400u);
    EXPECT_EQ(postMessage(nullptr, 45057, 0, 0).code(), 1400u);
    EXPECT_EQ(TavraHost_ReceiverFd(&other), -1);
    TavraMessage message{};
    EXPECT_EQ(TavraHost_WaitMessage(&other, &message, 0), 0);
    EXPECT_EQ(TavraHost_WaitMessage(receiver, nullptr, 0), 0);
}

TEST_F(ReceiverTest, PostingToADestroyedReceiverFails) {
    const TavraWindow gone = TavraHost_CreateReceiver();
    TavraHost_DestroyReceiver(gone);
    TavraHost_DestroyReceiver(gone);
    TavraHost_DestroyReceiver(nullptr);
    EXPECT_EQ(postMessage(gone, 45057, 0, 0).code(), 1400u);
}

TEST_F(ReceiverTest, TwoWaitersShareTheMessages) {
    constexpr std::uint64_t kMessages = 2000;
    std::uint64_t sums[2] = {};
    std::thread waiters[2];
    for (int i = 0; i < 2; ++i) {
        waiters[i] = std::thread([&, i] {
            TavraMessage message{};
            while (TavraHost_WaitMessage(receiver, &message, 0xFFFFFFFF) && message.message != 45058) {
                sums[i] += message.parameter2;
            }
        });
    }
    for (std::uint64_t i = 1; i <= kMessages; ++i) ASSERT_TRUE(postMessage(receiver, 45067, 0, i).ok());
    for (int i = 0; i < 2; ++i) ASSERT_TRUE(postMessage(receiver, 45058, 0, 0).ok());
    for (auto& waiter : waiters) waiter.join();
    EXPECT_EQ(sums[0] + sums[1], kMessages * (kMessages + 1) / 2);
}

}  // namespace
}  // namespace tavra::platform
