#include "camera_state.h"

#include <algorithm>

#include "base/little_endian.h"
#include "error_numbers.h"

namespace tavra::usbd {
namespace {

constexpr std::uint8_t kIdentity = 17, kScan = 18, kTransferBits = 19, kClearBuffer = 32, kExposure = 33,
                       kClock = 34, kCameraWords = 35, kSoftwareTrigger = 48, kStatus = 128, kSetting = 129,
                       kRegisters = 130;

constexpr std::uint8_t kVendorToHost = 0xC0, kVendorToDevice = 0x40;
constexpr std::size_t kBlockBytes = 64;
constexpr std::size_t kSettingBytes = 65536;
constexpr std::uint16_t kRevisionWithoutFirmware = 8;
constexpr std::uint16_t kRevisionOfLongClock = 3;
constexpr std::uint32_t kFreeClock = 0x80000000;
constexpr std::uint16_t kUnityGain = 128;
constexpr std::uint16_t kDefaultTarget = 128;

// Capability words and bits.
constexpr std::size_t kCameraWord = 1, kImageWord = 3;
constexpr int kMirrorX = 6, kMirrorY = 7, kDefectCorrection = 11;

}  // namespace

CameraState::CameraState(const Model& model, bool hasFirmware, Memories& memories, CameraEvents& events)
    : model_(model),
      hasFirmware_(hasFirmware),
      memories_(memories),
      events_(events),
      geometry_(model.geometry),
      status_(model),
      pages_(model),
      light_(illuminationOf(model.scene, 0)),
      settings_(kSettingBytes),
      fullScale_(fullScaleSeconds(model)) {
    exposure_.gain = model.geometry.defaultGain;
    exposure_.clockHz = model.identity.clockValue;
    const auto preset = [&](std::uint16_t address, std::uint16_t value) {
        if (!model.status.contains(address)) status_.setWord(address, value);
    };
    preset(status::kDigitalGain, model.geometry.defaultDigitalGain);
    preset(status::kBlackLevel, model.sensor.blackLevel);
    for (std::uint16_t i = 0; i < 4; ++i)
        preset(static_cast<std::uint16_t>(status::kWhiteBalanceGains + i), kUnityGain);
    preset(status::kTargetBrightness, kDefaultTarget);
    preset(status::kHighestGain, model.geometry.maximumGain);
    preset(status::kLowestGain, model.geometry.defaultGain);
    if (!model.pages.values.contains({page::kAnalog, page::kBlackLevel})) {
        pages_.set(page::kAnalog, page::kBlackLevel, model.sensor.blackLevel);
    }
    pages_.set(page::kSensor, page::kBaseClock, model.timing.baseClockMHz);
    pages_.set(page::kSensor, page::kMinimumExposure, model.timing.minimumExposureClocks);
    pages_.set(page::kRegions, page::kRegionMode, model.geometry.regionMode);
    applyGeometry();
    updateTrigger();
    updateWhiteBalance();
    takeDefects();
}

ErrorCode CameraState::request(const ControlSetup& setup, std::span<std::uint8_t> data,
                               std::uint32_t& transferred) {
    transferred = 0;
    if (setup.requestType != kVendorToHost && setup.requestType != kVendorToDevice) {
        return error::kDeviceNotFunctioning;
    }
    ErrorCode result = error::kNone;
    if (memories_.request(setup, data, result)) {
        if (result == error::kNone) transferred = static_cast<std::uint32_t>(data.size());
        return result;
    }
    if (setup.toHost()) return in(setup, data, transferred) ? error::kNone : error::kDeviceNotFunctioning;
    if (!out(setup, data)) return error::kDeviceNotFunctioning;
    transferred = static_cast<std::uint32_t>(data.size());
    return error::kNone;
}

bool CameraState::in(const ControlSetup& setup, std::span<std::uint8_t> data, std::uint32_t& transferred) {
    const auto give = [&](const std::vector<std::uint8_t>& reply) {
        transferred = static_cast<std::uint32_t>(std::min(reply.size(), data.size()));
        std::copy_n(reply.begin(), transferred, data.begin());
        return true;
    };
    const auto whole = [&](bool good) {
        transferred = good ? static_cast<std::uint32_t>(data.size()) : 0;
        return good;
    };
    switch (setup.request) {
        case kIdentity: return give(identity());
        case kScan: return give(geometry_.record(timing().scan()));
        case kTransferBits: {
            std::vector<std::uint8_t> reply{6, kTransferBits, 0, 0, 0, 0};
            storeLe32(&reply[2], geometry_.transferBits());
            return give(reply);
        }
        case kExposure: return give(exposureBlock());
        case kClock: return give(clockBlock());
        case kCameraWords: {
            std::vector<std::uint8_t> reply(kBlockBytes);
            reply[0] = kBlockBytes;
            reply[1] = kCameraWords;
            for (std::size_t i = 0; i < 4; ++i) storeLe16(&reply[2 + 2 * i], model_.memory.cameraWords[i]);
            return give(reply);
        }
        case kStatus: return whole(readStatus(setup, data));
        case kRegisters: return whole(readRegisters(setup, data));
        case kSetting: {
            const std::size_t address = setup.value | std::size_t{setup.index} << 16;
            const bool good = address + data.size() <= settings_.size();
            if (good)
                std::copy_n(settings_.begin() + static_cast<std::ptrdiff_t>(address), data.size(),
                            data.begin());
            return whole(good);
        }
        default: return false;
    }
}

bool CameraState::out(const ControlSetup& setup, std::span<const std::uint8_t> data) {
    switch (setup.request) {
        case kScan: return geometry_.write(data);
        case kTransferBits: return setTransferBits(data);
        case kClearBuffer: events_.clearBuffer(); return true;
        case kExposure: return setExposure(data);
        case kClock: return setClock(data);
        case kSoftwareTrigger: events_.trigger(); return true;
        case kStatus: return writeStatus(setup, data);
        case kRegisters: return writeRegisters(setup, data);
        case kSetting: {
            const std::size_t address = setup.value | std::size_t{setup.index} << 16;
            if (address + data.size() > settings_.size()) return false;
            std::copy(data.begin(), data.end(), settings_.begin() + static_cast<std::ptrdiff_t>(address));
            return true;
        }
        default: return false;
    }
}

std::vector<std::uint8_t> CameraState::identity() const {
    const IdentityModel& id = model_.identity;
    std::vector<std::uint8_t> block(kBlockBytes);
    block[0] = kBlockBytes;
    block[1] = kIdentity;
    std::uint8_t* at = &block[2];
    const auto word = [&at](std::uint16_t value) {
        storeLe16(at, value);
        at += 2;
    };
    const auto pair = [&at](std::uint32_t value) {
        storeLe32(at, value);
        at += 4;
    };
    const bool isNew = id.layout == IdentityLayout::New;
    if (isNew) word(id.vendor);
    word(id.productType);
    word(id.hardwareRevision);
    word(hasFirmware_ ? id.firmwareRevision : kRevisionWithoutFirmware);
    word(id.colorArray);
    word(id.headerSize);
    pair(id.enableImageSize);
    pair(id.enableTransferBits);
    pair(id.furtherMask);
    word(id.enableScanModes);
    if (!isNew) return block;
    pair(id.clockMaximum);
    pair(id.clockMinimum);
    pair(id.clockValue);
    pair(id.enableClock);
    word(id.enableShutterSpeed);
    word(id.furtherWord);
    pair(id.furtherWord32);
    pair(id.enableTriggerVersion);
    pair(id.maximumWidth);
    pair(id.maximumHeight);
    return block;
}

std::vector<std::uint8_t> CameraState::exposureBlock() const {
    std::vector<std::uint8_t> block(kBlockBytes);
    block[0] = kBlockBytes;
    block[1] = kExposure;
    storeLe16(&block[2], static_cast<std::uint16_t>(exposure_.lines));
    storeLe16(&block[4], static_cast<std::uint16_t>(exposure_.clocks));
    storeLe16(&block[6], exposure_.gain);
    storeLe16(&block[10], static_cast<std::uint16_t>(exposure_.lines >> 16));
    return block;
}

bool CameraState::setExposure(std::span<const std::uint8_t> block) {
    if (block.size() != kBlockBytes) return false;
    exposure_.lines = loadLe16(&block[2]) | std::uint32_t{loadLe16(&block[10])} << 16;
    exposure_.clocks = loadLe16(&block[4]);
    exposure_.gain = std::min(loadLe16(&block[6]), model_.geometry.maximumGain);
    return true;
}

std::vector<std::uint8_t> CameraState::clockBlock() const {
    const bool isLong = model_.identity.firmwareRevision >= kRevisionOfLongClock;
    std::vector<std::uint8_t> block(isLong ? 10 : 6);
    block[0] = static_cast<std::uint8_t>(block.size());
    block[1] = kClock;
    if (isLong) storeLe32(&block[2], clockMode_);
    storeLe32(&block[block.size() - 4], exposure_.clockHz);
    return block;
}

bool CameraState::setClock(std::span<const std::uint8_t> block) {
    if (block.size() != 6 && block.size() != 10) return false;
    const IdentityModel& id = model_.identity;
    const std::uint32_t mode = block.size() == 10 ? loadLe32(&block[2]) : 0;
    const std::uint32_t asked = loadLe32(&block[block.size() - 4]);
    if (mode != 0 && (mode & id.enableClock) == 0) return false;
    clockMode_ = mode;
    exposure_.clockHz = id.clockValue;
    for (std::size_t bit = 0; bit < model_.timing.clocks.size(); ++bit) {
        if (mode == 1u << bit) exposure_.clockHz = model_.timing.clocks[bit];
    }
    if (mode == kFreeClock)
        exposure_.clockHz = std::clamp(asked, std::min(id.clockMinimum, id.clockMaximum), id.clockMaximum);
    return true;
}

bool CameraState::setTransferBits(std::span<const std::uint8_t> block) {
    if (block.size() != 6) return false;
    const std::uint32_t code = loadLe32(&block[2]);
    if (code == 0 || (code & (code - 1)) != 0 || (code & model_.identity.enableTransferBits) == 0)
        return false;
    geometry_.setTransferBits(code);
    return true;
}

ExposureTiming CameraState::timing() const {
    ExposureRegisters registers = exposure_;
    registers.digitalGain = status_.word(status::kDigitalGain);
    registers.verticalBlank = verticalBlank();
    registers.triggerSeconds = triggerSeconds();
    return ExposureTiming(model_, registers, geometry_.imageHeight(), geometry_.scanMode());
}

ViewSettings CameraState::view() const {
    ViewSettings view;
    view.regions = geometry_.sentRegions();
    view.grid = geometry_.packsGrid();
    if (view.grid) {
        view.columns = geometry_.coveredColumns();
        view.rows = geometry_.coveredRows();
    }
    view.factors = geometry_.factors();
    view.mirrorX = model_.has(kCameraWord, kMirrorX) && (status_.word(status::kMirror) & 1) != 0;
    view.mirrorY = model_.has(kCameraWord, kMirrorY) && (status_.word(status::kMirror) & 2) != 0;
    view.colorArray = model_.identity.colorArray;
    view.transferBits = geometry_.transferBits();
    if (status_.word(status::kDefectCorrection) != 0 && model_.has(kImageWord, kDefectCorrection)) {
        view.correctedPixels = defects_;
    }
    return view;
}

FrameSettings CameraState::frameSettings() const {
    FrameSettings settings;
    settings.view = view();
    settings.exposure = timing().exposureSeconds() / fullScale_;
    settings.light = light_.light;
    settings.lightColor = light_.color;
    settings.gain =
        gainFactor(model_, exposure_.gain) * digitalGainFactor(model_, status_.word(status::kDigitalGain));
    const std::uint32_t black =
        hasPages() ? pages_.value(page::kAnalog, page::kBlackLevel) : status_.word(status::kBlackLevel);
    settings.black = (black - double{1} * status_.word(status::kDigitalClamp)) / 4095;
    if (balances() && status_.word(status::kWhiteBalanceMode) != 0) {
        for (std::uint16_t i = 0; i < 4; ++i) {
            const std::uint16_t gain =
                status_.word(static_cast<std::uint16_t>(status::kWhiteBalanceGains + i));
            settings.whiteBalance[i] = double{1} * gain / kUnityGain;
        }
    }
    return settings;
}

// The list of defect pixels comes into force as a whole: entries are written one by one.
void CameraState::takeDefects() {
    constexpr std::uint16_t kFree = 0xFFFF;
    defects_.clear();
    for (std::size_t i = 0; i + 1 < status_.defectWords(); i += 2) {
        std::uint32_t place = status_.defect(i) | std::uint32_t{status_.defect(i + 1)} << 16;
        if (hasPages())
            place = pages_.value(page::kDefects, page::kFirstDefect + static_cast<std::uint32_t>(2 * i));
        const auto x = static_cast<std::uint16_t>(place), y = static_cast<std::uint16_t>(place >> 16);
        if (x != kFree || y != kFree) defects_.emplace_back(x, y);
    }
}

}  // namespace tavra::usbd
