#include "camera/open_camera.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>

#include "base/color_array.h"
#include "camera/common_param.h"
#include "camera/device_information.h"
#include "camera/geometry.h"
#include "camera/global_last_error.h"
#include "camera/identity_record.h"
#include "platform/last_error.h"

namespace tavra {
namespace {

using Record = std::unique_ptr<TAVRA_COMMON_PARAM>;

constexpr std::uint32_t kIndexLimit = 127;
constexpr std::uint16_t kCameraModeAddress = 101;
constexpr std::uint16_t kModeOpen = 0;
constexpr std::uint16_t kModeClosed = 1;

void writeCameraMode(TAVRA_COMMON_PARAM& camera, std::uint16_t mode) {
    camera.noteFailure(camera.control.writeStatusWord(kCameraModeAddress, mode));
}

void closeDevice(TAVRA_COMMON_PARAM& camera) {
    if (!camera.deviceOpen()) return;
    camera.control.access()->close(camera.control.device());
    camera.control.detach();
}

Status identify(TAVRA_COMMON_PARAM& camera) {
    if (!camera.deviceOpen()) return Status(camera.lastError);
    const ControlChannel& control = camera.control;
    std::uint32_t address = 0;
    control.access()->getFunctionAddress(control.device(), &address);
    camera.functionAddress = address & 0xFF;
    TAVRA_RETURN_IF_ERROR(readDeviceInformation(camera));
    writeCameraMode(camera, kModeOpen);
    camera.makeExposureControl();
    camera.makeWhiteBalance();
    TAVRA_RETURN_IF_ERROR(readTransferState(camera));
    TAVRA_RETURN_IF_ERROR(setPreviewPixelFormat(camera, isMonoLike(camera.colorArray) ? 1 : 4));
    const ImageSize size = camera.geometry->imageSize();
    camera.preview.mask.store({0, 0, size.width, size.height});
    camera.preview.destination.store({0, 0, size.width, size.height});
    return buildImageBuffers(camera);
}

bool hasRuntimeEvents(const TAVRA_COMMON_PARAM& camera) {
    return camera.stopEvent.valid() && camera.rawSnapshot.done.valid() &&
           camera.previewSnapshot.done.valid() && camera.captureThread.ended().valid();
}

// From a device that may be there to a handle, or to the failure's code.
TAVRA_COMMON_PARAM* finishOpen(Record camera) {
    Status status;
    try {
        status = hasRuntimeEvents(*camera) ? identify(*camera) : Status(error::kOutOfMemory);
    } catch (const std::bad_alloc&) {
        status = Status(error::kOutOfMemory);
    }
    if (status.ok()) return camera.release();
    camera->noteFailure(status);
    globalLastError = camera->lastError.load();
    closeDevice(*camera);
    return nullptr;
}

Record makeRecord() {
    try {
        return std::make_unique<TAVRA_COMMON_PARAM>();
    } catch (const std::bad_alloc&) {
        globalLastError = error::kOutOfMemory;
        platform::setLastSystemError(error::kOutOfMemory);
        return nullptr;
    }
}

bool loadUsb(const platform::UsbAccess*& usb) {
    const Status status = platform::loadUsbAccess(usb);
    if (!status.ok()) globalLastError = status.code();
    return status.ok();
}

// One walk over the enumeration for one record.
class CameraSearch {
  public:
    CameraSearch(const platform::UsbAccess& usb, TAVRA_COMMON_PARAM& camera) : usb_(usb), camera_(camera) {}

    void byUserId(std::uint32_t userId) {
        for (std::uint32_t index = 0; index < kIndexLimit && tryIndex(index) && !camera_.deviceOpen();
             ++index) {
            if (opening_.device == 0) continue;
            camera_.control.attach(usb_, opening_.device);
            if (readUserId() == userId) return;
            closeDevice(camera_);
            seen_ = true;
        }
    }

    // By design: a user ID that no camera has doubles as a place in the enumeration.
    void fallBack(std::uint32_t userId) {
        if (!seen_ || camera_.deviceOpen()) return;
        opening_ = {};
        if (userId != 0) tryIndex(userId);
        for (std::uint32_t index = 0; opening_.device == 0 && index < kIndexLimit && tryIndex(index);
             ++index) {
        }
        if (opening_.device != 0) camera_.control.attach(usb_, opening_.device);
    }

    bool inUse() const { return inUse_; }

  private:
    // False at the end of the enumeration.
    bool tryIndex(std::uint32_t index) {
        camera_.devicePath.fill(0);
        opening_ = openDevice(usb_, [&] {
            std::uint32_t bytes = sizeof camera_.devicePath;
            return usb_.openByIndexPath(index, camera_.devicePath.data(), &bytes);
        });
        camera_.devicePath.back() = 0;
        if (!opening_.answered) globalLastError = opening_.code;
        if (opening_.answered && opening_.device == 0) inUse_ = true;
        return opening_.answered;
    }

    // A record that cannot be read counts as ID 0.
    std::uint32_t readUserId() {
        IdentityRecord record;
        camera_.noteFailure(readIdentity(camera_.control, IdentityRecord::Place::User, record));
        return record.id();
    }

    const platform::UsbAccess& usb_;
    TAVRA_COMMON_PARAM& camera_;
    DeviceOpening opening_;
    bool seen_ = false;
    bool inUse_ = false;
};

void noteNothingOpened(TAVRA_COMMON_PARAM& camera, bool inUse) {
    if (!camera.deviceOpen()) camera.lastError = inUse ? error::kInUse : error::kNoCamera;
}

}  // namespace

TAVRA_COMMON_PARAM* openByUserId(std::uint32_t userId) {
    const platform::UsbAccess* usb = nullptr;
    Record camera = makeRecord();
    if (camera == nullptr || !loadUsb(usb)) return nullptr;
    camera->userId = userId;
    CameraSearch search(*usb, *camera);
    search.byUserId(userId);
    search.fallBack(userId);
    noteNothingOpened(*camera, search.inUse());
    return finishOpen(std::move(camera));
}

TAVRA_COMMON_PARAM* openByPath(const std::u16string& path,
                               const std::function<TavraUsbDevice(const platform::UsbAccess&)>& open) {
    const platform::UsbAccess* usb = nullptr;
    Record camera = makeRecord();
    if (camera == nullptr || !loadUsb(usb)) return nullptr;
    std::copy_n(path.begin(), std::min(path.size(), camera->devicePath.size() - 1),
                camera->devicePath.begin());
    const DeviceOpening opening = openDevice(*usb, [&] { return open(*usb); });
    if (opening.device != 0) camera->control.attach(*usb, opening.device);
    noteNothingOpened(*camera, opening.answered);
    return finishOpen(std::move(camera));
}

void closeCamera(TAVRA_COMMON_PARAM* camera) {
    const Record owner(camera);
    writeCameraMode(*owner, kModeClosed);
    closeDevice(*owner);
}

std::uint32_t countCameras() {
    const platform::UsbAccess* usb = nullptr;
    if (!platform::loadUsbAccess(usb).ok()) return 0;
    std::uint32_t count = 0;
    for (; count < kIndexLimit; ++count) {
        const TavraUsbDevice device = usb->openByIndex(count);
        if (device == 0) break;
        usb->close(device);
    }
    return count;
}

}  // namespace tavra
