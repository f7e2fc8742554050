// A virtual camera that thinks for a USB device of umockdev: the device asks it what to answer.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "device.h"
#include "support/umockdev_device.h"
#include "virtual/virtual_source.h"

namespace tavra::usbd {

inline constexpr std::uint16_t kGetConfiguration = 0x0200;

inline std::unique_ptr<Device> makeBrain(const char* model) {
    // Named only for this look: the camera library must not find it beside the USB device.
    setenv("TAVRA_VIRTUAL_CAMERAS", model, 1);
    const std::unique_ptr<DeviceSource> source = makeVirtualSource();
    ErrorCode error = 0;
    std::unique_ptr<Device> brain = source->enumerate() == 1 ? source->open(0u, error) : nullptr;
    unsetenv("TAVRA_VIRTUAL_CAMERAS");
    return brain;
}

inline test::ControlAnswer askBrain(Device& brain, const test::ControlRequest& request) {
    test::Bytes data = request.data;
    data.resize(request.length);
    std::uint32_t transferred = 0;
    ErrorCode code = 0;
    if (request.requestType == 0x80 && request.request == 6 && request.value == kGetConfiguration) {
        code = brain.configDescriptor(data, transferred);
    } else {
        code = brain.controlTransfer({request.requestType, request.request, request.value, request.index},
                                     data, transferred);
    }
    if (code != 0) return {-EPIPE, {}};
    test::ControlAnswer answer;
    if ((request.requestType & 0x80) != 0) {
        answer.data.assign(data.begin(), data.begin() + transferred);
    } else {
        answer.taken = transferred;
    }
    return answer;
}

}  // namespace tavra::usbd
