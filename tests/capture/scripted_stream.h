// A bulk pipe in the test's hands: a table of the streaming operations whose reads complete when the test
// says so, and as it says.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "platform/usb_access.h"

namespace tavra::test {

// One at a time exists; the operations of its table find it. Any thread.
class ScriptedStream {
  public:
    static constexpr TavraUsbDevice kDevice = 77;

    ScriptedStream();
    ~ScriptedStream();
    ScriptedStream(const ScriptedStream&) = delete;
    ScriptedStream& operator=(const ScriptedStream&) = delete;

    // The streaming operations, the last error, and memory if `withMemory`; the others are null.
    platform::UsbAccess table(bool withMemory = false) const;

    // What the next calls answer; used up one by one, then they succeed.
    std::deque<std::uint32_t> beginErrors;
    std::deque<std::uint32_t> startErrors;  // 0 stands for a start that went well
    bool canResume = false;
    bool memoryRefused = false;

    struct Read {
        std::uint8_t* buffer;
        std::uint32_t size;
        TavraUsbRead* record;
    };

    // Completes the oldest read in flight: with data, or failed with what came until then.
    void complete(const std::vector<std::uint8_t>& bytes);
    void fail(std::uint32_t code, const std::vector<std::uint8_t>& bytes = {});

    // Waits until so many reads are in flight, or have been started in all; false after ten seconds.
    bool waitInFlight(std::size_t count);
    bool waitStarted(std::size_t count);
    bool waitBegun(std::size_t count);

    std::vector<Read> started() const;
    std::size_t inFlight() const;
    // Every call but reads: "begin", "end", "alloc", "free", in order.
    std::vector<std::string> calls() const;
    bool memoryFreedWithReadsInFlight() const { return freedEarly_; }

    // The operations.
    std::uint32_t begin();
    void end();
    std::uint32_t start(const Read& read);
    std::uint32_t result(TavraUsbRead* record, std::uint32_t& transferred, bool wait);
    void* allocate(std::size_t size);
    void release(void* memory);

  private:
    void completeLocked(std::uint32_t code, const std::vector<std::uint8_t>& bytes);
    template <typename Predicate>
    bool waitFor(Predicate predicate);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Read> inFlight_;
    std::vector<Read> started_;
    std::vector<std::string> calls_;
    std::size_t begun_ = 0;
    bool freedEarly_ = false;
};

}  // namespace tavra::test
