#include "camera/common_param.h"

#include <algorithm>
#include <limits>
#include <new>
#include <optional>

#include "base/color_array.h"
#include "camera/function_table.h"
#include "camera/geometry.h"
#include "camera/mirror.h"
#include "control/luminance_ctrl_usb.h"
#include "control/white_balance_ctrl_usb.h"
#include "media/movie/save_avi_file.h"
#include "platform/messages.h"
#include "platform/system_version.h"
#include "platform/user_settings.h"
#include "stages/chroma_suppress.h"
#include "stages/color_interpolation.h"
#include "stages/color_matrix.h"
#include "stages/factory.h"
#include "stages/flip.h"
#include "stages/gamma.h"
#include "stages/multi_roi_image.h"
#include "stages/shading_correction.h"
#include "stages/sharpness.h"

namespace tavra {
namespace {

constexpr std::uint8_t kPageSelector = 1;
constexpr std::uint32_t kPageAddressMask = 0x00FFFFFF;

constexpr std::uint32_t kMaximumTransfer = 0x80000;
constexpr std::uint32_t kOldSystemMaximumTransfer = 0x300000;
constexpr const char* kSettingPath = R"(SOFTWARE\Halvern\USBCamera\Setting)";
constexpr const char* kMaximumTransferName = "MaxTransferSize";

// Camera-side mirror, in the high nibble of the mirror mode.
constexpr unsigned kHorizontalMirror = 0x10;
constexpr unsigned kVerticalMirror = 0x20;

std::uint32_t configuredTransferSize() {
    std::uint32_t size = platform::isSystemBeforeVersion6() ? kOldSystemMaximumTransfer : kMaximumTransfer;
    platform::readUserDword(kSettingPath, kMaximumTransferName, size);
    return size;
}

// A stage of the record's own. Throws std::bad_alloc, as every part of the construction.
template <typename Interface>
Interface* makeStage(std::int32_t code) {
    ISUnknown* const object = CreateStageObject(code);
    if (object == nullptr) throw std::bad_alloc();
    return static_cast<Interface*>(object);
}

// A size that has more than 32 bits, of which no image can be made, keeps being too large.
std::optional<ImageSize> composedSize(IMultiROIImage& regions) {
    if (regions.GetRegionCount() < 2) return {};
    const auto along = [&](std::int32_t axis) {
        constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
        return static_cast<std::uint32_t>(std::min(regions.GetComposedSize(axis), kMost));
    };
    return ImageSize{along(0), along(1)};
}

template <typename Interface>
void releaseStage(Interface*& stage) {
    if (stage != nullptr) stage->Release();
    stage = nullptr;
}

}  // namespace

TAVRA_COMMON_PARAM::TAVRA_COMMON_PARAM(std::uint32_t transferSize) : maximumTransferSize(transferSize) {}

// The stages are made and released in fixed orders.
TAVRA_COMMON_PARAM::TAVRA_COMMON_PARAM() : TAVRA_COMMON_PARAM(configuredTransferSize()) {
    colorMatrix = makeStage<IColorMatrix>(stage_code::kColorMatrix);
    sharpness = makeStage<ISharpness>(stage_code::kSharpness);
    gamma = makeStage<IGamma>(stage_code::kGamma);
    colorInterpolation = makeStage<IColorInterpolation>(stage_code::kColorInterpolation);
    flip = makeStage<IFlip>(stage_code::kFlip);
    shadingCorrection = makeStage<IShadingCorrection>(stage_code::kShadingCorrection);
    chromaSuppress = makeStage<IChromaSuppress>(stage_code::kChromaSuppress);
}

// What uses the camera goes before what it uses.
TAVRA_COMMON_PARAM::~TAVRA_COMMON_PARAM() {
    exposure.reset();
    whiteBalance.reset();
    registerPages.reset();
    if (geometry != nullptr) releaseStage(geometry->multiRoi);
    geometry.reset();
    releaseStage(colorMatrix);
    releaseStage(sharpness);
    releaseStage(gamma);
    releaseStage(colorInterpolation);
    releaseStage(flip);
    releaseStage(shadingCorrection);
    releaseStage(chromaSuppress);
    releaseStage(recording.recorder);
    imagesB.destroy();
    imagesA.destroy();
}

std::uint32_t TAVRA_COMMON_PARAM::Read(std::uint32_t address, void* buffer, std::uint16_t size) {
    const Status status = control.readRegisters(kPageSelector, address & kPageAddressMask,
                                                {static_cast<std::uint8_t*>(buffer), size});
    noteFailure(status);
    return status.code();
}

std::uint32_t TAVRA_COMMON_PARAM::Write(std::uint32_t address, const void* buffer, std::uint16_t size) {
    const Status status = control.writeRegisters(kPageSelector, address & kPageAddressMask,
                                                 {static_cast<const std::uint8_t*>(buffer), size});
    noteFailure(status);
    return status.code();
}

bool TAVRA_COMMON_PARAM::previewIsRotated() const {
    return isQuarterTurn(displayRotation);
}

// An application that has named no receiver wants no messages.
Status TAVRA_COMMON_PARAM::postToReceiver(std::uint32_t message, std::uint64_t parameter) {
    const TavraWindow target = receiver;
    if (target == nullptr) return Status();
    return platform::postMessage(target, message, reinterpret_cast<std::uintptr_t>(this), parameter);
}

Status TAVRA_COMMON_PARAM::sendFrameTiming() {
    return sendScanRecord(*this);
}

void TAVRA_COMMON_PARAM::makeExposureControl() {
    exposure = std::make_unique<CLuminanceCtrlUSB>(*this);
    noteFailure(reloadExposure());
}

Status TAVRA_COMMON_PARAM::reloadExposure() {
    return exposure ? exposure->LoadFromCamera() : Status();
}

Status TAVRA_COMMON_PARAM::exposureLines(std::uint32_t& lines) {
    Shutter shutter;
    TAVRA_RETURN_IF_ERROR(exposure->shutter(shutter));
    lines = shutter.line;
    return Status();
}

void TAVRA_COMMON_PARAM::makeWhiteBalance() {
    whiteBalance = std::make_unique<CWhiteBalanceCtrlUSB>(control, whiteBalanceWords, colorArray,
                                                          hasHardwareWhiteBalance());
}

bool TAVRA_COMMON_PARAM::hasFunction(std::uint32_t number) const {
    return tavra::hasFunction(info, capabilities, colorArray, number);
}

std::uint16_t TAVRA_COMMON_PARAM::colorArrayInForce() const {
    const std::uint16_t stored = colorArray;
    const unsigned mirror = mirrorMode;
    const bool horizontal = (mirror & kHorizontalMirror) != 0;
    const bool vertical = (mirror & kVerticalMirror) != 0 && !isWideGainFamily(info.productType);
    if ((!horizontal && !vertical) || hasFunction(function::kMirrorKeepsColorArray)) return stored;
    return mirroredColorArray(stored, horizontal, vertical);
}

void TAVRA_COMMON_PARAM::setUpRegions() {
    constexpr std::uint32_t kDenseRows = 1;
    const std::lock_guard lock(geometry->layoutMutex());
    IMultiROIImage*& regions = geometry->multiRoi;
    if (regions == nullptr) {
        if (geometry->GetMaxROICount() < 2) return;
        regions = makeStage<IMultiROIImage>(stage_code::kMultiRoiImage);
    }
    regions->Setup(geometry.get(), kDenseRows);
    geometry->storeComposedSize(composedSize(*regions));
}

bool TAVRA_COMMON_PARAM::transferRunning() {
    const std::lock_guard lock(captureThreadMutex);
    if (!captureThread.exists()) return false;
    if (!captureThread.ended().wait(0)) return true;
    captureThread.join();
    return false;
}

}  // namespace tavra
