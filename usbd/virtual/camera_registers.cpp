// CameraState: status words, registers, and what writing them brings about.
#include <algorithm>
#include <array>

#include "base/little_endian.h"
#include "camera_state.h"

namespace tavra::usbd {
namespace {

// Bits of the command word.
constexpr std::uint16_t kApply = 1, kResetCounter = 2, kReadOut = 4, kSubTrigger = 16384;

// Bits of the trigger word.
constexpr std::uint32_t kTriggerOn = 3, kTimedByFirst = 1u << 12, kTimedByBoth = 1u << 13;

constexpr std::uint8_t kPagesSelector = 1, kFrameSelector = 17;
constexpr std::uint32_t kRawSizeAddress = 8;
constexpr std::size_t kMostRegisterBytes = 64;

struct RegisterPlace {
    std::uint8_t selector;
    std::uint32_t address;

    explicit RegisterPlace(const ControlSetup& setup)
        : selector(static_cast<std::uint8_t>(setup.value)),
          address((setup.value | std::uint32_t{setup.index} << 16) >> 8) {}
};

}  // namespace

bool CameraState::readStatus(const ControlSetup& setup, std::span<std::uint8_t> data) {
    if (model_.isLegacy()) return false;
    status_.setPair(status::kReadClock, exposure_.clockHz);
    const ScanTiming scan = timing().scan();
    const std::uint32_t lineClocks = scan.lastExposureClock + 1;
    status_.setPair(status::kExposureLimits, lineClocks * scan.shortLines + scan.shortClock);
    status_.setPair(status::kExposureLimits + 2, lineClocks * scan.longLines + scan.longClock);
    status_.setPair(status::kExposureLimits + 4, 1);
    return status_.read(setup.index, setup.value, data);
}

bool CameraState::writeStatus(const ControlSetup& setup, std::span<const std::uint8_t> data) {
    if (model_.isLegacy()) return false;
    const auto address = static_cast<std::uint16_t>(setup.value & ~status::kEffectBit);
    const bool own = setup.index == 0;
    if (own && address >= status::kReadClock && address < status::kCapability + model_.capability.size() &&
        address != 101) {
        return false;  // what the camera tells of itself
    }
    if (own && address == status::kCommand) {
        if (data.size() != 2) return false;
        runCommand(loadLe16(data.data()));
        return true;
    }
    if (!status_.write(setup.index, setup.value, data)) return false;
    const bool takesEffect = (setup.value & status::kEffectBit) != 0;
    if (takesEffect &&
        (setup.index == status::kDefectIndex || (own && address == status::kDefectCorrection))) {
        takeDefects();
    }
    if (own && hasPages() && address == status::kTrigger) {
        const std::uint32_t word = status_.pair(status::kTrigger);
        pages_.set(page::kTrigger, page::kTriggerModes[0], (word & kTriggerOn) != 0 ? 1 : 0);
    }
    if (own) {
        updateTrigger();
        updateWhiteBalance();
    }
    return true;
}

bool CameraState::readRegisters(const ControlSetup& setup, std::span<std::uint8_t> data) {
    if (!model_.hasRegisters() || data.size() > kMostRegisterBytes || data.size() % 4 != 0) return false;
    const RegisterPlace place(setup);
    if (place.selector == kFrameSelector) {
        std::array<std::uint8_t, 8> frame{};
        storeLe32(frame.data(), geometry_.rawSize());
        storeLe32(&frame[4], static_cast<std::uint32_t>(geometry_.sentRegions().size()));
        if (place.address < kRawSizeAddress || place.address - kRawSizeAddress + data.size() > frame.size())
            return false;
        std::copy_n(frame.begin() + (place.address - kRawSizeAddress), data.size(), data.begin());
        return true;
    }
    if (place.selector != kPagesSelector || !hasPages()) return false;
    pages_.set(page::kSensor, page::kReadClock, exposure_.clockHz);
    pages_.set(page::kSensor, page::kClocksPerFrame, timing().clocksPerFrame());
    return pages_.read(place.address, data);
}

bool CameraState::writeRegisters(const ControlSetup& setup, std::span<const std::uint8_t> data) {
    const RegisterPlace place(setup);
    std::uint32_t page = 0, offset = 0;
    if (!model_.hasRegisters() || !hasPages() || place.selector != kPagesSelector) return false;
    if (data.size() > kMostRegisterBytes || !RegisterPages::locate(place.address, page, offset)) return false;
    if (page == page::kSensor || page == page::kRegions) return false;  // what the camera tells of itself
    if (page == page::kTrigger && offset == page::kSoftwareTrigger && data.size() == 4) {
        if (loadLe32(data.data()) != 0) events_.trigger();
        return true;
    }
    if (!pages_.write(place.address, data)) return false;
    updateTrigger();
    return true;
}

void CameraState::runCommand(std::uint16_t command) {
    if ((command & kApply) != 0) {
        applyGeometry();
        takeDefects();
    }
    if ((command & kResetCounter) != 0) events_.resetCounter();
    if ((command & (kReadOut | kSubTrigger)) != 0) events_.trigger();
}

// Skipping and binning take effect here and not when they are written.
void CameraState::applyGeometry() {
    constexpr std::uint16_t kFactorsByWord = 0x8000;
    if ((model_.identity.enableScanModes & kFactorsByWord) == 0) return;
    ReadoutFactors factors = ReadoutFactors::fromWord(status_.word(status::kReadoutFactors));
    factors.sum = status_.word(status::kBinningSum) != 0;
    geometry_.setFactors(factors);
}

std::uint32_t CameraState::verticalBlank() const {
    if (!model_.has(1, 5)) return 0;
    return hasPages() ? pages_.value(page::kTrigger, page::kVerticalBlank)
                      : status_.word(status::kVerticalBlank);
}

// How long the trigger holds the shutter open; 0 where the exposure is timed.
double CameraState::triggerSeconds() const {
    const std::uint32_t word = status_.pair(status::kTrigger);
    if ((word & kTriggerOn) == 0 || (word & (kTimedByFirst | kTimedByBoth)) == 0) return 0;
    return model_.timing.triggerWidthMs / 1000;
}

// The trigger word of a camera with register pages follows the pages.
void CameraState::updateTrigger() {
    if (hasPages()) {
        bool on = false;
        for (const std::uint32_t offset : page::kTriggerModes)
            on |= (pages_.value(page::kTrigger, offset) & 1) != 0;
        const std::uint32_t mode = pages_.value(page::kTrigger, page::kExposureMode);
        std::uint32_t word = status_.pair(status::kTrigger) & ~(kTriggerOn | kTimedByFirst | kTimedByBoth);
        if (on) word |= 1;
        if (mode == 2) word |= kTimedByFirst;
        if (mode == 3) word |= kTimedByBoth;
        status_.setPair(status::kTrigger, word);
    }
    events_.triggeredChanged((status_.pair(status::kTrigger) & kTriggerOn) != 0);
}

}  // namespace tavra::usbd
