#include "camera/device_information.h"

#include <array>

#include "base/color_array.h"
#include "base/little_endian.h"
#include "camera/common_param.h"
#include "camera/frame_timing.h"
#include "camera/function_table.h"
#include "camera/geometry.h"

namespace tavra {
namespace {

constexpr std::uint8_t kIdentityRequest = 17;
constexpr std::uint8_t kFourWordsRequest = 35;
constexpr std::uint16_t kCapabilityAddress = 104;
constexpr std::uint16_t kMirrorAddress = 63;

// Offsets in the page of limits.
constexpr std::uint32_t kExposureBaseClock = 96;
constexpr std::uint32_t kMinimumExposureClock = 172;
constexpr std::uint32_t kMaximumDigitalGain = 132;
// By design: the two green words come from one register.
constexpr std::array<std::uint32_t, 4> kMaximumGains{144, 148, 148, 152};

constexpr std::uint16_t kGainLimit = 640;
constexpr std::uint16_t kNarrowGainLimit = 511;
constexpr std::uint16_t kDigitalGainLimit = 511;

constexpr std::uint32_t kColorFormats = 4 | 8;
constexpr std::uint32_t kMonoFormat = 1;

Status readIdentityBlock(TAVRA_COMMON_PARAM& camera) {
    std::array<std::uint8_t, CameraInfo::kReplySize> reply{};
    TAVRA_RETURN_IF_ERROR(camera.control.inExactly(kIdentityRequest, 0, 0, reply));
    camera.info = CameraInfo::parse(reply);
    camera.colorArray = camera.info.colorArray;
    camera.control.setLegacy(camera.legacy());
    return Status();
}

Status readCapabilities(TAVRA_COMMON_PARAM& camera) {
    camera.capabilities = CapabilityWords();
    if (!camera.legacy()) {
        TAVRA_RETURN_IF_ERROR(camera.control.readStatus(0, kCapabilityAddress, camera.capabilities.words));
    }
    camera.control.setHasRegisters(camera.hasFunction(function::kRegisters));
    return Status();
}

// Most older cameras have no register pages; that is their way of being, and the failure to read the table
// only stays behind as last error.
void loadRegisterPages(TAVRA_COMMON_PARAM& camera) {
    if (camera.registerPages != nullptr) return;
    auto pages = std::make_unique<CRegisterPageMap>(camera);
    const Status status = pages->load();
    camera.noteFailure(status);
    if (status.ok()) camera.registerPages = std::move(pages);
}

// A limit that the camera keeps in its register pages; what cannot be read stays as it was.
template <typename Number>
void readLimit(TAVRA_COMMON_PARAM& camera, std::uint32_t offset, Number& limit) {
    if (camera.registerPages == nullptr) return;
    std::uint32_t value = 0;
    const Status status = camera.registerPages->read(page::kLimits, offset, value);
    camera.noteFailure(status);
    if (status.ok()) limit = static_cast<Number>(value);
}

void readExposureLimits(TAVRA_COMMON_PARAM& camera) {
    if (camera.can(1, 14)) readLimit(camera, kExposureBaseClock, camera.exposureBaseClockMHz);
    if (camera.can(19, 8)) readLimit(camera, kMinimumExposureClock, camera.minimumExposureClock);
}

void makeGeometry(TAVRA_COMMON_PARAM& camera) {
    if (camera.geometry == nullptr) camera.geometry = std::make_unique<CFrameFeature>();
    camera.geometry->registerPages = camera.registerPages.get();
    camera.geometry->enablePreviewFormats = kColorFormats;
    if (isMonoLike(camera.colorArray)) {
        camera.geometry->enablePreviewFormats |= kMonoFormat;
        camera.interpolationMethod = 0;
        camera.secondInterpolationByte = 0;
    }
}

Status readFourWords(TAVRA_COMMON_PARAM& camera) {
    std::array<std::uint8_t, 64> reply{};
    TAVRA_RETURN_IF_ERROR(camera.control.inExactly(kFourWordsRequest, 0, 0, reply));
    for (std::size_t i = 0; i < camera.whiteBalanceWords.size(); ++i) {
        camera.whiteBalanceWords[i] = loadLe16(&reply[2 + 2 * i]);
    }
    return Status();
}

void readMaximumGains(TAVRA_COMMON_PARAM& camera) {
    const bool narrow = camera.can(1, 8);
    camera.maximumGains.fill(narrow ? kNarrowGainLimit : kGainLimit);
    if (!narrow || !camera.can(18, 10)) return;
    for (std::size_t i = 0; i < kMaximumGains.size(); ++i) {
        readLimit(camera, kMaximumGains[i], camera.maximumGains[i]);
    }
}

void readMaximumDigitalGain(TAVRA_COMMON_PARAM& camera) {
    camera.maximumDigitalGain = kDigitalGainLimit;
    if (camera.can(16, 6)) readLimit(camera, kMaximumDigitalGain, camera.maximumDigitalGain);
}

// The camera's own mirror is the high nibble of the mirror mode; the low one is the application's.
Status readCameraMirror(TAVRA_COMMON_PARAM& camera) {
    if (!camera.can(1, 6) && !camera.can(1, 7)) return Status();
    std::uint16_t word = 0;
    TAVRA_RETURN_IF_ERROR(camera.control.readStatusWord(kMirrorAddress, word));
    camera.mirrorMode = static_cast<std::uint8_t>((camera.mirrorMode & 0x0F) | (word & 0x0F) << 4);
    return Status();
}

}  // namespace

Status readDeviceInformation(TAVRA_COMMON_PARAM& camera) {
    TAVRA_RETURN_IF_ERROR(readIdentityBlock(camera));
    TAVRA_RETURN_IF_ERROR(readCapabilities(camera));
    loadRegisterPages(camera);
    readExposureLimits(camera);
    makeGeometry(camera);
    TAVRA_RETURN_IF_ERROR(readFourWords(camera));
    readMaximumGains(camera);
    TAVRA_RETURN_IF_ERROR(readScanInformation(camera));
    readMaximumDigitalGain(camera);
    return Status();
}

Status readTransferState(TAVRA_COMMON_PARAM& camera) {
    TAVRA_RETURN_IF_ERROR(readScanInformation(camera));
    TAVRA_RETURN_IF_ERROR(readTransferBits(camera));
    TAVRA_RETURN_IF_ERROR(readClock(camera));
    TAVRA_RETURN_IF_ERROR(camera.reloadExposure());
    return readCameraMirror(camera);
}

}  // namespace tavra
