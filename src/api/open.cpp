// Opening and closing, last error, device path, receiver.
#include <cstring>
#include <string>

#include "api/call.h"
#include "camera/open_camera.h"
#include "camera/open_firmware.h"
#include "capture/transfer.h"
#include "platform/messages.h"
#include "platform/text.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

// An open ends without a record when memory runs out on the way.
template <typename Open>
TavraHandle openSafely(Open open) {
    try {
        return open();
    } catch (const std::bad_alloc&) {
        globalLastError = error::kOutOfMemory;
        return nullptr;
    }
}

std::u16string_view devicePath(const TAVRA_COMMON_PARAM& camera) {
    return camera.devicePath.data();
}

Status copyDevicePath(const TAVRA_COMMON_PARAM& camera, TavraWChar* path, std::uint32_t* size) {
    if (size == nullptr) return Status(error::kInvalidArgument);
    const auto needed = static_cast<std::uint32_t>((devicePath(camera).size() + 1) * sizeof(TavraWChar));
    const std::uint32_t given = *size;
    *size = needed;
    if (path == nullptr) return Status();
    if (given < needed) return Status(error::kInvalidArgument);
    std::memcpy(path, camera.devicePath.data(), needed);
    return Status();
}

Status copyDevicePath(const TAVRA_COMMON_PARAM& camera, char* path, std::uint32_t* size) {
    if (size == nullptr) return Status(error::kInvalidArgument);
    if (path == nullptr) {
        // By design: characters of the path, not bytes of the conversion.
        *size = static_cast<std::uint32_t>(devicePath(camera).size() + 1);
        return Status();
    }
    const std::string narrow = platform::toNarrow(devicePath(camera));
    if (narrow.size() + 1 > *size) return Status(error::kInsufficientBuffer);
    std::memcpy(path, narrow.c_str(), narrow.size() + 1);
    return Status();
}

}  // namespace

TavraHandle Tavra_Open(std::uint32_t userId) {
    return openSafely([&] { return openByUserId(userId); });
}

TavraHandle Tavra_OpenByDevicePathW(const TavraWChar* path) {
    if (path == nullptr) {
        globalLastError = error::kInvalidArgument;
        return nullptr;
    }
    return openSafely([&] {
        return openByPath(path, [&](const platform::UsbAccess& usb) { return usb.openByPathW(path); });
    });
}

TavraHandle Tavra_OpenByDevicePathA(const char* path) {
    if (path == nullptr) {
        globalLastError = error::kInvalidArgument;
        return nullptr;
    }
    return openSafely([&] {
        return openByPath(platform::toWide(path),
                          [&](const platform::UsbAccess& usb) { return usb.openByPathA(path); });
    });
}

TavraHandle Tavra_OpenFW(std::uint32_t userId, std::uint32_t* count) {
    if (count == nullptr) {
        globalLastError = error::kInvalidArgument;
        return nullptr;
    }
    *count = 0;
    return openSafely([&] { return openWithFirmware(userId, *count); });
}

void Tavra_Close(TavraHandle handle) {
    TAVRA_COMMON_PARAM* const camera = api::validated(handle);
    if (camera == nullptr) return;
    closeTransfer(*camera);
    camera->preview.close();
    camera->rawCallbacks.removeAll();
    camera->previewBitmapCallbacks.removeAll();
    camera->previewGdiCallbacks.removeAll();
    closeCamera(camera);
}

std::uint32_t Tavra_CameraCount(void) {
    return countCameras();
}

std::uint32_t Tavra_GetLastError(TavraHandle handle) {
    return handle == nullptr ? globalLastError.load()
                             : static_cast<TAVRA_COMMON_PARAM*>(handle)->lastError.load();
}

TavraBool Tavra_GetDevicePathW(TavraHandle handle, TavraWChar* path, std::uint32_t* size) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return copyDevicePath(camera, path, size); });
}

TavraBool Tavra_GetDevicePathA(TavraHandle handle, char* path, std::uint32_t* size) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return copyDevicePath(camera, path, size); });
}

TavraBool Tavra_SetReceiveMsgWindow(TavraHandle handle, TavraWindow window) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        platform::nameReceiver(window);
        camera.receiver = window;
        return Status();
    });
}
