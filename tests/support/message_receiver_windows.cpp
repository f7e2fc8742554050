#include <windows.h>

#include "support/message_receiver.h"

namespace tavra::test {
namespace {

HWND windowOf(TavraWindow window) {
    return static_cast<HWND>(window);
}

// A posted message only: what the system sends to the window is served on the way.
bool take(HWND window, ReceivedMessage& message) {
    MSG got{};
    if (!PeekMessageW(&got, window, 0, 0, PM_REMOVE)) return false;
    message = {got.message, got.wParam, static_cast<std::uint64_t>(got.lParam)};
    return true;
}

}  // namespace

MessageReceiver::MessageReceiver()
    : window_(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {}

bool MessageReceiver::wait(ReceivedMessage& message, std::uint32_t timeoutMs) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    while (!take(windowOf(window_), message)) {
        const ULONGLONG now = GetTickCount64();
        if (now >= end) return false;
        // Also ends for messages that were there before the wait, so that none is overlooked.
        MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(end - now), QS_ALLINPUT,
                                    MWMO_INPUTAVAILABLE);
    }
    return true;
}

void MessageReceiver::destroy() {
    if (window_ != nullptr) DestroyWindow(windowOf(window_));
}

}  // namespace tavra::test
