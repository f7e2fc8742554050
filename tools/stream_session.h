// A stream that runs for as long as an object lives, and what ends it early.
#pragma once

#include <cstdint>
#include <optional>

#include "camera.h"
#include "tavra/tavra_host.h"

namespace tavra::tool {

// From now on Ctrl-C and a request to terminate are noted instead of ending the process.
void noteInterrupts();
// They end the process again.
void endOnInterrupts();
bool interrupted();

// For a stream that ended with a code though nobody had stopped it.
Failure streamEndedByItself(const Camera& camera, std::uint32_t code);

// The messages of a camera.
class Receiver {
  public:
    Receiver();
    ~Receiver() { TavraHost_DestroyReceiver(window_); }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    TavraWindow window() const { return window_; }

    // Waits at most so long for a message.
    std::optional<TavraMessage> next(std::uint32_t timeoutMs) const;
    // Waits for the message at most so long; others are dropped. Its second parameter.
    std::optional<std::uint32_t> wait(std::uint32_t message, std::uint32_t timeoutMs) const;

  private:
    TavraWindow window_;
};

// Starts the stream, stops it at the end. Callbacks are registered before it and removed after it.
class StreamSession {
  public:
    // Throws Failure when the stream cannot be started.
    explicit StreamSession(const Camera& camera);
    ~StreamSession();
    StreamSession(const StreamSession&) = delete;
    StreamSession& operator=(const StreamSession&) = delete;

    // Lets it run for so long. Throws Failure when the stream ended by itself or was interrupted meanwhile.
    void run(std::uint32_t milliseconds) const;
    // Like run(), and true if it was interrupted.
    bool runUntilInterrupted(std::uint32_t milliseconds) const;

  private:
    const Camera& camera_;
    Receiver receiver_;
};

}  // namespace tavra::tool
