#include "camera/frame_timing.h"

#include <algorithm>
#include <array>

#include "base/little_endian.h"
#include "camera/common_param.h"
#include "camera/geometry.h"

namespace tavra {
namespace {

constexpr std::uint8_t kClockRequest = 34;
constexpr std::size_t kShortClock = 6;  // length, request, clock
constexpr std::size_t kLongClock = 10;  // length, request, mode, clock
constexpr std::uint16_t kFirstFirmwareWithMode = 3;
constexpr std::uint32_t kFreeClockMode = 0x80000000;

constexpr std::uint32_t kReadClockOffset = 20;
constexpr std::uint32_t kClocksPerFrameOffset = 84;
constexpr std::uint16_t kReadClockAddress = 86;
constexpr std::uint32_t kClocksPerFrameUntold = 65536;

constexpr std::uint32_t kVBlankOffset = 16;
constexpr std::uint32_t kMaximumVBlankOffset = 88;
constexpr std::uint16_t kVBlankAddress = 23;
constexpr std::uint32_t kMaximumVBlank = 2035;

bool cameraTellsTiming(const TAVRA_COMMON_PARAM& camera) {
    return camera.can(1, 4);
}
bool hasVBlank(const TAVRA_COMMON_PARAM& camera) {
    return camera.can(1, 5);
}

bool offersClock(const CameraInfo& info, std::uint32_t mode, std::uint32_t clock) {
    if (mode == 0) return true;
    if ((info.enableClock & mode) != mode) return false;
    return mode != kFreeClockMode || (clock >= info.clockMinimum && clock <= info.clockMaximum);
}

Status sendClock(TAVRA_COMMON_PARAM& camera, std::uint32_t mode, std::uint32_t clock) {
    std::array<std::uint8_t, kLongClock> request{};
    const bool withMode = camera.info.firmwareRevision >= kFirstFirmwareWithMode;
    const std::size_t length = withMode ? kLongClock : kShortClock;
    request[0] = static_cast<std::uint8_t>(length);
    request[1] = kClockRequest;
    if (withMode) storeLe32(&request[2], mode);
    storeLe32(&request[length - 4], clock);
    return camera.control.out(kClockRequest, 0, 0, std::span(request).first(length));
}

}  // namespace

Status readClock(TAVRA_COMMON_PARAM& camera) {
    std::array<std::uint8_t, kLongClock> reply{};
    std::uint32_t received = 0;
    TAVRA_RETURN_IF_ERROR(camera.control.in(kClockRequest, 0, 0, reply, received));
    if (received != kShortClock && received != kLongClock) return Status(error::kControlTransfer);
    const std::uint32_t mode = received == kLongClock ? loadLe32(&reply[2]) : 0;
    camera.geometry->storeClock({mode, loadLe32(&reply[received - 4])});
    return Status();
}

Status setClock(TAVRA_COMMON_PARAM& camera, std::uint32_t mode, std::uint32_t clock) {
    if (camera.recording.exists()) return Status(error::kRecording);
    if (!offersClock(camera.info, mode, clock)) return Status(error::kInvalidArgument);
    TAVRA_RETURN_IF_ERROR(sendClock(camera, mode, clock));
    camera.geometry->storeClock({mode, clock});
    return readClock(camera);  // what the camera made of it
}

Status getReadClock(TAVRA_COMMON_PARAM& camera, std::uint32_t& clock) {
    if (!cameraTellsTiming(camera)) {
        clock = camera.geometry->clock().hz;
        return Status();
    }
    if (camera.registerPages) return camera.registerPages->read(page::kLimits, kReadClockOffset, clock);
    return camera.control.readStatusLong(kReadClockAddress, clock);
}

Status getClocksPerFrame(TAVRA_COMMON_PARAM& camera, std::uint32_t& clocks) {
    if (cameraTellsTiming(camera)) {
        if (camera.registerPages)
            return camera.registerPages->read(page::kLimits, kClocksPerFrameOffset, clocks);
        clocks = kClocksPerFrameUntold;
        return Status();
    }
    const ScanRecord scan = camera.geometry->scanRecord();
    std::uint32_t lines = scan.linesPerFrame();
    if (scan.exposesOverFrames()) {
        std::uint32_t exposed = 0;
        TAVRA_RETURN_IF_ERROR(camera.exposureLines(exposed));
        lines = std::max(lines, exposed);
    }
    clocks = scan.clocksPerLine() * lines;
    return Status();
}

Status getOutputFps(TAVRA_COMMON_PARAM& camera, float& fps) {
    fps = 0;
    std::uint32_t clock = 0;
    std::uint32_t clocksPerFrame = 0;
    TAVRA_RETURN_IF_ERROR(getReadClock(camera, clock));
    if (clock == 0) return Status();
    TAVRA_RETURN_IF_ERROR(getClocksPerFrame(camera, clocksPerFrame));
    if (clocksPerFrame != 0) fps = static_cast<float>(clock) / static_cast<float>(clocksPerFrame);
    return Status();
}

Status getVBlank(TAVRA_COMMON_PARAM& camera, std::uint32_t& lines) {
    lines = 0;
    if (!hasVBlank(camera)) return Status();
    if (camera.registerPages) return camera.registerPages->read(page::kAcquisition, kVBlankOffset, lines);
    std::uint16_t word = 0;
    TAVRA_RETURN_IF_ERROR(camera.control.readStatusWord(kVBlankAddress, word));
    lines = word;
    return Status();
}

Status setVBlank(TAVRA_COMMON_PARAM& camera, std::uint32_t lines) {
    if (!hasVBlank(camera)) return lines == 0 ? Status() : Status(error::kInvalidArgument);
    if (camera.registerPages) {
        TAVRA_RETURN_IF_ERROR(camera.registerPages->write(page::kAcquisition, kVBlankOffset, lines));
    } else {
        if (lines > 0xFFFF) return Status(error::kInvalidArgument);
        TAVRA_RETURN_IF_ERROR(
            camera.control.writeStatusWord(kVBlankAddress, static_cast<std::uint16_t>(lines)));
    }
    TAVRA_RETURN_IF_ERROR(camera.control.applyChange());
    return readScanInformation(camera);
}

Status getMaximumVBlank(TAVRA_COMMON_PARAM& camera, std::uint32_t& lines) {
    lines = 0;
    if (!hasVBlank(camera)) return Status();
    if (camera.can(8, 5) && camera.registerPages) {
        return camera.registerPages->read(page::kLimits, kMaximumVBlankOffset, lines);
    }
    lines = kMaximumVBlank;
    return Status();
}

}  // namespace tavra
