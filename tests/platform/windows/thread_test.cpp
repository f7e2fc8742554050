#include "platform/thread.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace tavra::platform {
namespace {

int priorityInside(ThreadPriority priority) {
    Thread thread;
    int seen = -100;
    EXPECT_TRUE(
        thread.start("tavra-test", priority, [&] { seen = GetThreadPriority(GetCurrentThread()); }).ok());
    thread.join();
    return seen;
}

TEST(Thread, TimeCriticalIsPriority15FromTheFirstInstruction) {
    EXPECT_EQ(priorityInside(ThreadPriority::TimeCritical), 15);
    EXPECT_EQ(priorityInside(ThreadPriority::Normal), 0);
}

TEST(Thread, HasTheNameItWasGiven) {
    using GetDescription = HRESULT(WINAPI*)(HANDLE, PWSTR*);
    const auto getDescription = reinterpret_cast<GetDescription>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetThreadDescription")));
    ASSERT_NE(getDescription, nullptr);
    std::wstring seen;
    Thread thread;
    ASSERT_TRUE(thread
                    .start("tavra-test", ThreadPriority::Normal,
                           [&] {
                               PWSTR name = nullptr;
                               if (FAILED(getDescription(GetCurrentThread(), &name))) return;
                               seen = name;
                               LocalFree(name);
                           })
                    .ok());
    thread.join();
    EXPECT_EQ(seen, L"tavra-test");
}

}  // namespace
}  // namespace tavra::platform
