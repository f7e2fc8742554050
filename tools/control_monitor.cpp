#include "control_monitor.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "settings_table.h"

namespace tavra::tool {
namespace {

// White balance looks at 10 frames and leaves 10 out.
constexpr std::uint64_t kWhiteBalancePeriod = 20;

std::uint64_t exposurePeriod(const Camera& camera) {
    std::uint8_t shutter = 0, gain = 0, leftOut = 0, averaged = 0;
    camera.check(Tavra_GetALCControlSpeed(camera.handle(), &shutter, &gain, &leftOut, &averaged),
                 "cannot read the speed of the exposure control");
    return std::uint64_t{leftOut} + std::max<std::uint64_t>(averaged, 1);
}

}  // namespace

ControlMonitor::ControlMonitor(const Camera& camera, bool color, std::uint64_t every)
    : camera_(camera),
      color_(color),
      appliesGains_(color && !hasFunction(camera, kFunctionCameraWhiteBalance)),
      every_(every),
      state_(readControlState(camera, color)),
      exposure_(exposurePeriod(camera)),
      whiteBalance_(kWhiteBalancePeriod) {
    camera_.check(Tavra_AddRawCallback(camera_.handle(), onFrame, this, &identifier_),
                  "cannot receive frames");
}

ControlMonitor::~ControlMonitor() {
    Tavra_RemoveRawCallback(camera_.handle(), identifier_);
}

void ControlMonitor::ask() {
    const std::lock_guard lock(mutex_);
    asked_ = true;
}

std::vector<ControlReading> ControlMonitor::takeReadings() {
    const std::lock_guard lock(mutex_);
    return std::exchange(readings_, {});
}

std::uint64_t ControlMonitor::frames() const {
    const std::lock_guard lock(mutex_);
    return frames_;
}

// A frame that cannot be read is left out: nothing may be thrown through the library.
void ControlMonitor::onFrame(void* data, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                             std::uint32_t number, std::uint16_t colorArray, std::uint32_t transferBits,
                             void* context, std::uint32_t*) {
    auto* const self = static_cast<ControlMonitor*>(context);
    try {
        self->read({static_cast<const std::uint8_t*>(data), size, width, height, transferBits}, number,
                   colorArray);
    } catch (const std::exception&) {
        const std::lock_guard lock(self->mutex_);
        ++self->frames_;
    }
}

void ControlMonitor::read(const RawView& frame, std::uint32_t number, std::uint16_t colorArray) {
    ControlState now = state_;
    if (readControlNumbers(camera_, color_, now)) {
        exposure_.nextFrame(!now.sameExposure(state_));
        whiteBalance_.nextFrame(!now.sameWhiteBalance(state_));
        state_ = now;
    }
    if (!isDue()) {
        const std::lock_guard lock(mutex_);
        ++frames_;
        return;
    }
    ControlReading reading;
    reading.frame = number;
    reading.state = state_;
    reading.means = measure(frame, colorArray);
    reading.exposureMoves = exposure_.moves();
    reading.whiteBalanceMoves = whiteBalance_.moves();
    const std::lock_guard lock(mutex_);
    readings_.push_back(reading);
    ++frames_;  // counted when its reading is there
}

bool ControlMonitor::isDue() {
    const std::lock_guard lock(mutex_);
    return std::exchange(asked_, false) || (every_ != 0 && (frames_ + 1) % every_ == 0);
}

FrameMeans ControlMonitor::measure(const RawView& frame, std::uint16_t colorArray) const {
    std::vector<std::uint8_t> samples = reducedTo8Bits(frame);
    if (samples.empty()) return {};
    if (appliesGains_) {
        camera_.check(
            Tavra_RawWhiteBalance(camera_.handle(), frame.width, frame.height, colorArray, samples.data()),
            "cannot balance a frame");
    }
    return meansOf(samples, frame.width, frame.height, colorArray);
}

}  // namespace tavra::tool
