#include "stream.h"

#include "error_numbers.h"
#include "thread_name.h"

namespace tavra::usbd {
namespace {

constexpr std::size_t kNumberOffset = 12;  // of the frame number in the header

}  // namespace

Stream::Stream(const Model& model, FrameMaker& maker)
    : model_(model), maker_(maker), reads_(model.usb.packetSize()) {}

Stream::~Stream() {
    end(begunBy_);
}

void Stream::begin(std::uint32_t powerUp) {
    const std::lock_guard lock(runMutex_);
    if (powerUp < begunBy_) return;
    {
        const std::lock_guard state(mutex_);
        if (running_ && thread_.joinable()) return;
        running_ = true;
    }
    if (thread_.joinable()) thread_.join();  // of a power-up that is over
    begunBy_ = powerUp;
    reads_.open();
    thread_ = std::thread([this] { run(); });
}

void Stream::end(std::uint32_t powerUp) {
    const std::lock_guard lock(runMutex_);
    if (powerUp < begunBy_) return;  // its own reads ended when the camera left the bus
    {
        const std::lock_guard state(mutex_);
        running_ = false;
        changed_.notify_all();
    }
    reads_.stopSending();
    if (thread_.joinable()) thread_.join();
    reads_.cancelAll(error::kOperationAborted);
}

void Stream::setTriggered(bool triggered) {
    const std::lock_guard lock(mutex_);
    if (triggered_ == triggered) return;
    triggered_ = triggered;
    triggers_ = 0;
    changed_.notify_all();
}

void Stream::trigger() {
    const std::lock_guard lock(mutex_);
    if (!triggered_) return;
    ++triggers_;
    changed_.notify_all();
}

void Stream::clear() {
    const std::lock_guard lock(mutex_);
    triggers_ = 0;
}

void Stream::resetCounter() {
    const std::lock_guard lock(mutex_);
    frameNumber_ = 0;
}

void Stream::setAsleep(bool asleep) {
    const std::lock_guard lock(mutex_);
    asleep_ = asleep;
    changed_.notify_all();
}

void Stream::breakOff(ErrorCode error) {
    {
        const std::lock_guard lock(mutex_);
        running_ = false;
        changed_.notify_all();
    }
    reads_.breakOff(error);
    reads_.stopSending();
    reads_.cancelAll(error);
}

void Stream::restore() {
    {
        const std::lock_guard lock(mutex_);
        triggered_ = false;
        triggers_ = 0;
        frameNumber_ = 0;
        time_ = {};
    }
    reads_.breakOff(error::kNone);
}

// False: the stream ends. A read is waited for before the frame is made, so that a frame has the settings of
// its time.
bool Stream::waitForTurn(Clock::time_point due) {
    std::unique_lock lock(mutex_);
    for (;;) {
        if (!running_) return false;
        if (asleep_) {
            changed_.wait(lock);
        } else if (triggered_) {
            if (triggers_ > 0) {
                --triggers_;
                return true;
            }
            changed_.wait(lock);
        } else {
            if (!model_.stream.paced || Clock::now() >= due) return true;
            changed_.wait_until(lock, due);
        }
    }
}

void Stream::run() {
    nameThisThread("tavra-vcam");
    Clock::time_point due = Clock::now();
    while (reads_.waitForRead() && waitForTurn(due)) {
        std::uint32_t number = 0, place = 0;
        std::chrono::nanoseconds time{};
        {
            const std::lock_guard lock(mutex_);
            number = frameNumber_;
            time = time_;
            place = ++framesSent_;
        }
        if (place == model_.fault.vanishAtFrame) return maker_.vanish();
        std::chrono::nanoseconds period{};
        const Clock::time_point begun = Clock::now();
        const std::shared_ptr<const FrameBytes> frame = maker_.makeFrame(number, time, period);
        // A sensor has no picture to draw: the time that the drawing took is nobody's lateness.
        due += Clock::now() - begun;
        bool handled = false;
        const bool sent =
            frame && sendFaulty(*frame, number, place, handled) && (handled || sendWhole(*frame, number));
        if (!sent) return;

        // Frames whose time has passed while nobody read are lost, and their numbers with them.
        std::uint32_t passed = 1;
        due += period;
        if (model_.stream.paced && period.count() > 0) {
            const auto late = Clock::now() - due;
            if (late > period) {
                const auto lost = late / period;
                due += lost * period;
                passed += static_cast<std::uint32_t>(lost);
            }
        }
        const std::lock_guard lock(mutex_);
        if (triggered_) passed = 1;
        // A counter that was reset meanwhile begins with the next frame.
        frameNumber_ = frameNumber_ == number ? number + passed : frameNumber_;
        time_ += passed * period;
    }
}

bool Stream::sendWhole(std::span<const std::uint8_t> bytes, std::uint32_t number) {
    const std::size_t header = model_.identity.headerSize;
    const FrameNumber stamp{kNumberOffset, number};
    const FrameNumber* const stamped = header >= kNumberOffset + 4 ? &stamp : nullptr;
    if (!model_.stream.headerApart || header == 0 || bytes.size() <= header)
        return reads_.send(bytes, stamped);
    return reads_.send(bytes.first(header), stamped) && reads_.send(bytes.subspan(header), nullptr);
}

bool Stream::sendFaulty(const FrameBytes& frame, std::uint32_t number, std::uint32_t place, bool& handled) {
    const FaultModel& fault = model_.fault;
    handled = true;
    if (place == fault.error.frame) return reads_.fail(fault.error.amount);
    if (place == fault.shorten.frame) {
        const std::size_t cut = std::min<std::size_t>(fault.shorten.amount, frame.size());
        return sendWhole(std::span(frame).first(frame.size() - cut), number);
    }
    if (place == fault.lengthen.frame) {
        FrameBytes longer = frame;
        longer.resize(frame.size() + fault.lengthen.amount);
        return sendWhole(longer, number);
    }
    handled = false;
    return true;
}

}  // namespace tavra::usbd
