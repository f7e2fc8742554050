#include "camera/open_firmware.h"

#include <array>
#include <memory>
#include <new>

#include "camera/common_param.h"
#include "camera/global_last_error.h"
#include "camera/open_camera.h"
#include "platform/firmware_image.h"

namespace tavra {
namespace {

constexpr std::uint16_t kRevisionWithoutFirmware = 8;
constexpr std::size_t kTextLimit = 0x15000;  // bytes; an image must stay below
constexpr std::uint32_t kImageBytes = 16384;

struct LoadBuffers {
    std::array<char, kTextLimit> text{};
    std::array<std::uint8_t, kImageBytes> image{};
    std::array<std::uint8_t, kImageBytes> mask{};
};

// Of an operation that has failed, so it never counts as success, whatever the library tells.
Status failureOf(const platform::UsbAccess& usb) {
    const std::uint32_t code = usb.getLastError();
    return Status(code != error::kNone ? code : error::kDeviceNotFunctioning);
}

Status loadWith(LoadBuffers& buffers, const TAVRA_COMMON_PARAM& camera) {
    const platform::UsbAccess& usb = *camera.control.access();
    std::uint32_t size = 0;
    TAVRA_RETURN_IF_ERROR(platform::readFirmwareText(camera.info.productType, buffers.text, size));
    std::uint32_t length = 0;
    if (usb.parseHexImage(buffers.text.data(), size, buffers.image.data(), buffers.mask.data(), kImageBytes,
                          &length) == 0) {
        return failureOf(usb);
    }
    std::uint32_t taken = 0;
    if (usb.downloadFirmware(camera.control.device(), buffers.image.data(), buffers.mask.data(), length,
                             &taken) == 0) {
        return failureOf(usb);
    }
    return Status();
}

}  // namespace

bool lacksFirmware(const TAVRA_COMMON_PARAM& camera) {
    return camera.info.firmwareRevision == kRevisionWithoutFirmware && camera.legacy();
}

Status loadFirmware(const TAVRA_COMMON_PARAM& camera) {
    try {
        return loadWith(*std::make_unique<LoadBuffers>(), camera);
    } catch (const std::bad_alloc&) {
        return Status(error::kOutOfMemory);
    }
}

TAVRA_COMMON_PARAM* loadAndOpenAgain(TAVRA_COMMON_PARAM* camera, std::uint32_t userId, std::uint32_t& loads) {
    const Status loaded = loadFirmware(*camera);
    if (loaded.ok()) {
        ++loads;
    } else {
        globalLastError = loaded.code();
    }
    closeCamera(camera);
    return openByUserId(userId);
}

TAVRA_COMMON_PARAM* openWithFirmware(std::uint32_t userId, std::uint32_t& loads) {
    TAVRA_COMMON_PARAM* camera = openByUserId(userId);
    // By design: no limit on rounds. A camera that was loaded reports another revision, and one that cannot
    // be loaded is tried until it can, or is gone.
    while (camera != nullptr && lacksFirmware(*camera)) camera = loadAndOpenAgain(camera, userId, loads);
    return camera;
}

}  // namespace tavra
