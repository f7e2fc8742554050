#include "platform/messages.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

struct MessageWindow : testing::Test {
    HWND window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ~MessageWindow() override {
        if (window != nullptr) DestroyWindow(window);
    }
    bool take(MSG& message) const { return PeekMessageW(&message, window, 45057, 45067, PM_REMOVE) != 0; }
};

TEST_F(MessageWindow, MessagesComeInOrderWithWholeParameters) {
    ASSERT_NE(window, nullptr);
    ASSERT_TRUE(postMessage(window, 45057, 0x1'0000'0001, 0).ok());
    ASSERT_TRUE(postMessage(window, 45058, 2, 0xF000'0009'0000'0005).ok());
    MSG message{};
    ASSERT_TRUE(take(message));
    EXPECT_EQ(message.message, 45057u);
    EXPECT_EQ(message.wParam, 0x1'0000'0001u);
    EXPECT_EQ(message.lParam, 0);
    ASSERT_TRUE(take(message));
    EXPECT_EQ(message.message, 45058u);
    EXPECT_EQ(message.wParam, 2u);
    EXPECT_EQ(static_cast<std::uint64_t>(message.lParam), 0xF000'0009'0000'0005u);
    EXPECT_FALSE(take(message));
}

TEST_F(MessageWindow, PostingToADestroyedWindowFails) {
    DestroyWindow(window);
    setLastSystemError(0);
    EXPECT_EQ(postMessage(window, 45057, 0, 0).code(), 1400u);
    EXPECT_EQ(lastSystemError(), 1400u);
    window = nullptr;
}

TEST_F(MessageWindow, AFullQueueLosesTheMessage) {
    constexpr int kNoQueueIsLonger = 20000;
    int posted = 0;
    Status status;
    while (posted <= kNoQueueIsLonger && (status = postMessage(window, 45067, 0, 0)).ok()) ++posted;
    if (status.ok()) GTEST_SKIP() << "no queue of this system is ever full";
    EXPECT_EQ(status.code(), 1816u);
    EXPECT_EQ(lastSystemError(), 1816u);
    MSG message{};
    for (int i = 0; i < posted; ++i) ASSERT_TRUE(take(message)) << i;
    EXPECT_FALSE(take(message)) << "the one too many is not in the queue";
    EXPECT_TRUE(postMessage(window, 45067, 0, 0).ok());
}

TEST(Messages, NoWindowIsNoReceiverAndNotTheCallersOwnQueue) {
    EXPECT_EQ(postMessage(nullptr, 45057, 0, 0).code(), 1400u);
    EXPECT_EQ(lastSystemError(), 1400u);
    MSG message{};
    EXPECT_EQ(PeekMessageW(&message, nullptr, 45057, 45067, PM_REMOVE), 0);
}

}  // namespace
}  // namespace tavra::platform
