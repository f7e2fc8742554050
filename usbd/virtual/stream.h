// The running bulk stream of a virtual camera: one thread (tavra-vcam) that waits for the time of the next
// frame or for a trigger, and sends frames into the reads.
//
// Belongs to a camera. begin and end are called by the openings of the camera, one at a time; the others by
// any thread. The camera is asked for each frame without a lock of the stream held.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "model.h"
#include "read_queue.h"
#include "renderer.h"

namespace tavra::usbd {

// What the stream asks of its camera. Called on the stream's thread.
class FrameMaker {
  public:
    // The next frame: its bytes (null: none can be made), and the time from it to the one that follows.
    // `time` is the sum of these times since power-up, of lost frames too.
    virtual std::shared_ptr<const FrameBytes> makeFrame(std::uint32_t index, std::chrono::nanoseconds time,
                                                        std::chrono::nanoseconds& period) = 0;
    // The camera drops off the bus. No further frame is asked for.
    virtual void vanish() = 0;

  protected:
    ~FrameMaker() = default;
};

class Stream {
  public:
    Stream(const Model& model, FrameMaker& maker);
    ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    ReadQueue& reads() { return reads_; }

    // `powerUp` is the camera's count of power-ups, as the opening knows it: an opening of an earlier one
    // ends nothing that a later one has begun.
    void begin(std::uint32_t powerUp);
    // Ends the thread, then every read in flight (995).
    void end(std::uint32_t powerUp);

    // Triggered: a frame only for each trigger.
    void setTriggered(bool triggered);
    void trigger();
    // Triggers that have not become frames are forgotten.
    void clear();
    void resetCounter();
    // While it sleeps no frame comes: a camera that has no firmware yet.
    void setAsleep(bool asleep);

    // The camera is gone: reads get `error`, also those that come. Does not wait for the thread.
    void breakOff(ErrorCode error);
    // The camera is back, powered up.
    void restore();

  private:
    using Clock = std::chrono::steady_clock;

    void run();
    bool waitForTurn(Clock::time_point due);
    bool sendFaulty(const FrameBytes& frame, std::uint32_t number, std::uint32_t place, bool& handled);
    bool sendWhole(std::span<const std::uint8_t> bytes, std::uint32_t number);

    const Model& model_;
    FrameMaker& maker_;
    ReadQueue reads_;

    std::mutex runMutex_;  // begin and end
    std::thread thread_;
    std::uint32_t begunBy_ = 0;  // the power-up

    std::mutex mutex_;
    std::condition_variable changed_;
    bool running_ = false;
    bool triggered_ = false;
    bool asleep_ = false;
    std::uint32_t triggers_ = 0;
    std::uint32_t frameNumber_ = 0;
    std::uint32_t framesSent_ = 0;  // since power-up, for the faults
    std::chrono::nanoseconds time_{};
};

}  // namespace tavra::usbd
