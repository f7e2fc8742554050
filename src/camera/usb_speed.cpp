#include "camera/usb_speed.h"

#include <algorithm>
#include <array>

#include "base/little_endian.h"
#include "camera/common_param.h"

namespace tavra {
namespace {

constexpr std::size_t kBufferSize = 1024;
constexpr std::size_t kConfigurationHeader = 9;
constexpr std::uint8_t kEndpointType = 5;
constexpr std::size_t kEndpointFields = 6;  // up to and with the packet size
constexpr std::uint8_t kToHost = 0x80;
constexpr std::uint8_t kTransferTypeMask = 3;
constexpr std::uint8_t kBulk = 2;

constexpr std::uint16_t kFirstUsb3Firmware = 256;

std::uint8_t speedFromPacketSize(std::uint16_t packetSize) {
    if (packetSize < 65) return kFullSpeed;
    return packetSize >= 513 ? kSuperSpeed : kHighSpeed;
}

bool isBulkToHost(std::span<const std::uint8_t> entry) {
    return entry.size() >= kEndpointFields && entry[1] == kEndpointType && (entry[2] & kToHost) != 0 &&
           (entry[3] & kTransferTypeMask) == kBulk;
}

}  // namespace

std::uint8_t speedFromDescriptor(std::span<const std::uint8_t> descriptor) {
    if (descriptor.size() <= kConfigurationHeader) return kHighSpeed;
    while (!descriptor.empty()) {
        const std::size_t length = descriptor[0];
        if (length == 0 || length > descriptor.size()) break;
        if (isBulkToHost(descriptor.first(length))) return speedFromPacketSize(loadLe16(&descriptor[4]));
        descriptor = descriptor.subspan(length);
    }
    return kFullSpeed;
}

Status getUsbSpeed(TAVRA_COMMON_PARAM& camera, std::uint8_t& speed) {
    speed = kFullSpeed;
    const platform::UsbAccess& usb = *camera.control.access();
    std::array<std::uint8_t, kBufferSize> buffer{};
    std::uint32_t length = 0;
    if (usb.getConfigDescriptor(camera.control.device(), buffer.data(), buffer.size(), &length) == 0) {
        return Status(usb.getLastError());
    }
    speed = speedFromDescriptor(std::span(buffer).first(std::min<std::size_t>(length, buffer.size())));
    return Status();
}

std::uint8_t maximumUsbSpeed(std::uint16_t firmwareRevision) {
    return firmwareRevision >= kFirstUsb3Firmware ? kSuperSpeed : kHighSpeed;
}

}  // namespace tavra
