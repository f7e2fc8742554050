#include "camera.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "error_numbers.h"
#include "light.h"

namespace tavra::usbd {
namespace {

constexpr std::uint32_t kReconfigure = 0x222140, kReconfigureAgain = 0x222180;

}  // namespace

VirtualCamera::VirtualCamera(Model model, std::string path)
    : model_(std::move(model)),
      path_(std::move(path)),
      memories_(model_),
      hasFirmware_(model_.firmware == Firmware::BuiltIn),
      settleLeft_(model_.fault.settle),
      unconfiguredLeft_(model_.fault.unconfigured),
      renderer_(model_),
      stream_(model_, *this) {
    start();
}

// Power comes.
void VirtualCamera::start() {
    state_.emplace(model_, hasFirmware_, memories_, static_cast<CameraEvents&>(*this));
    stream_.setAsleep(!hasFirmware_);
    settingsChanged_ = true;
    lightStep_ = 0;
}

bool VirtualCamera::look() {
    const std::lock_guard lock(mutex_);
    if (present_ || !returns_) return present_;
    if (looksAway_ > 0) {
        --looksAway_;
        return false;
    }
    present_ = true;
    stream_.restore();
    start();
    return true;
}

bool VirtualCamera::present() const {
    const std::lock_guard lock(mutex_);
    return present_;
}

std::uint32_t VirtualCamera::attach() {
    const std::lock_guard lock(mutex_);
    ++openings_;
    return powerUp_;
}

void VirtualCamera::detach() {
    const std::lock_guard lock(mutex_);
    --openings_;
}

std::uint32_t VirtualCamera::openCount() const {
    const std::lock_guard lock(mutex_);
    return openings_;
}

ErrorCode VirtualCamera::gone(std::uint32_t powerUp) const {
    return present_ && powerUp == powerUp_ ? error::kNone : model_.fault.vanishError;
}

bool VirtualCamera::isDue(const std::vector<ControlFault>& faults, const ControlSetup& setup) const {
    const std::uint32_t time = timesAsked_[setup.request];
    return std::any_of(faults.begin(), faults.end(), [&](const ControlFault& fault) {
        return fault.request == setup.request && time >= fault.first && time - fault.first < fault.times;
    });
}

void VirtualCamera::leaveBus(std::uint32_t looksAway) {
    present_ = false;
    looksAway_ = looksAway;
    ++powerUp_;
    stream_.breakOff(model_.fault.vanishError);
}

ErrorCode VirtualCamera::controlTransfer(std::uint32_t powerUp, const ControlSetup& setup,
                                         std::span<std::uint8_t> data, std::uint32_t& transferred) {
    transferred = 0;
    if (model_.fault.slowMs > 0) std::this_thread::sleep_for(std::chrono::milliseconds(model_.fault.slowMs));
    const std::lock_guard lock(mutex_);
    if (const ErrorCode result = gone(powerUp); result != error::kNone) return result;
    if (++controlTransfers_ == model_.fault.vanishAtControl) {
        returns_ = model_.fault.returnAfter > 0;
        leaveBus(model_.fault.returnAfter);
        return model_.fault.vanishError;
    }
    ++timesAsked_[setup.request];
    if (isDue(model_.fault.fail, setup)) return error::kDeviceNotFunctioning;
    const ErrorCode result = state_->request(setup, data, transferred);
    if (!setup.toHost()) settingsChanged_ = true;
    if (isDue(model_.fault.cut, setup)) transferred /= 2;
    if (memories_.takeRestart()) {
        // A camera that starts its new firmware is back before anybody looks.
        hasFirmware_ = true;
        returns_ = true;
        leaveBus(0);
    }
    return result;
}

ErrorCode VirtualCamera::checkConfiguration(std::uint32_t powerUp) {
    const std::lock_guard lock(mutex_);
    if (const ErrorCode result = gone(powerUp); result != error::kNone) return result;
    return unconfiguredLeft_ == 0 ? error::kNone : error::kNotReady;
}

ErrorCode VirtualCamera::deviceControl(std::uint32_t powerUp, std::uint32_t code) {
    const std::lock_guard lock(mutex_);
    if (const ErrorCode result = gone(powerUp); result != error::kNone) return result;
    if (code != kReconfigure && code != kReconfigureAgain) return error::kInvalidArgument;
    if (unconfiguredLeft_ > 0) --unconfiguredLeft_;
    return error::kNone;
}

ErrorCode VirtualCamera::beginRead(std::uint32_t powerUp) {
    {
        const std::lock_guard lock(mutex_);
        if (const ErrorCode result = gone(powerUp); result != error::kNone) return result;
        if (settleLeft_ > 0) {
            --settleLeft_;
            return error::kDeviceNotFunctioning;
        }
    }
    stream_.begin(powerUp);
    return error::kNone;
}

void VirtualCamera::endRead(std::uint32_t powerUp) {
    stream_.end(powerUp);
}

ErrorCode VirtualCamera::startRead(std::uint32_t powerUp, void* buffer, std::uint32_t size,
                                   TavraUsbRead& read) {
    {
        const std::lock_guard lock(mutex_);
        if (const ErrorCode result = gone(powerUp); result != error::kNone) return result;
    }
    return stream_.reads().start(buffer, size, read);
}

ErrorCode VirtualCamera::readResult(TavraUsbRead& read, std::uint32_t& transferred, bool wait) {
    return stream_.reads().result(read, transferred, wait);
}

std::shared_ptr<const FrameBytes> VirtualCamera::makeFrame(std::uint32_t index, std::chrono::nanoseconds time,
                                                           std::chrono::nanoseconds& period) {
    FrameSettings settings;
    bool changed = false;
    {
        const std::lock_guard lock(mutex_);
        if (!present_) return nullptr;
        // The camera's own controls have seen the frame before, and answer the light that it was taken in.
        const bool isFirst = time.count() == 0;
        if (!isFirst && state_->control(renderer_.brightness())) settingsChanged_ = true;
        if (const std::size_t step = lightStepAt(model_.scene, time); step != lightStep_) {
            lightStep_ = step;
            state_->illuminate(illuminationOf(model_.scene, step));
            settingsChanged_ = true;
        }
        changed = std::exchange(settingsChanged_, false);
        if (changed) {
            settings = state_->frameSettings();
            period_ = std::chrono::nanoseconds(static_cast<std::int64_t>(state_->frameSeconds() * 1e9));
        }
    }
    period = period_;
    if (changed) renderer_.use(settings);
    return renderer_.frame(index);
}

void VirtualCamera::vanish() {
    const std::lock_guard lock(mutex_);
    if (!present_) return;
    returns_ = model_.fault.returnAfter > 0;
    leaveBus(model_.fault.returnAfter);
}

}  // namespace tavra::usbd
