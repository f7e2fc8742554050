#include "support/message_receiver.h"
#include "tavra/tavra_host.h"

namespace tavra::test {

MessageReceiver::MessageReceiver() : window_(TavraHost_CreateReceiver()) {}

bool MessageReceiver::wait(ReceivedMessage& message, std::uint32_t timeoutMs) {
    TavraMessage got{};
    if (!TavraHost_WaitMessage(window_, &got, timeoutMs)) return false;
    message = {got.message, got.parameter1, got.parameter2};
    return true;
}

void MessageReceiver::destroy() {
    TavraHost_DestroyReceiver(window_);
}

}  // namespace tavra::test
