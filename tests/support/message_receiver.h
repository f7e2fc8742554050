// A receiver of the library's messages, the same to a test on every system: a message-only window that is its
// own message pump on Windows, a receiver of tavra_host.h elsewhere.
//
// The test owns it. One thread makes it, waits on it and ends it, because a window's messages come to the
// thread that made it; the library posts from any thread. A program that uses this links
// tavra_message_receiver.
#pragma once

#include <cstdint>

#include "tavra/tavra_types.h"

namespace tavra::test {

struct ReceivedMessage {
    std::uint32_t message = 0;
    std::uint64_t parameter1 = 0;
    std::uint64_t parameter2 = 0;
};

class MessageReceiver {
  public:
    MessageReceiver();
    ~MessageReceiver() { destroy(); }
    MessageReceiver(const MessageReceiver&) = delete;
    MessageReceiver& operator=(const MessageReceiver&) = delete;

    // For Tavra_SetReceiveMsgWindow. Null: none could be made.
    TavraWindow window() const { return window_; }

    // Takes the oldest message, waiting for one; 0 only looks. False: none came in time.
    bool wait(ReceivedMessage& message, std::uint32_t timeoutMs);

    // Ends it before its time, as an application does that closes its window: messages in it are lost, and
    // the system refuses every further one with 1400.
    void destroy();

  private:
    TavraWindow window_;
};

}  // namespace tavra::test
