#include "libusb/libusb_device.h"

#include <sys/utsname.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <string_view>
#include <utility>

#include "base/little_endian.h"
#include "error_numbers.h"
#include "libusb/control_transfer.h"
#include "libusb/error_map.h"

namespace tavra::usbd {
namespace {

constexpr std::uint32_t kReset = 0x222140;
constexpr std::uint32_t kConfigureAndReset = 0x222180;

// How long a camera may take from the reset of its port until it is there again, firmware start included.
constexpr std::chrono::seconds kComeBackTime{5};

constexpr std::uint8_t kStandardToHost = 0x80;
constexpr std::uint8_t kStandardEndpointToHost = 0x82;
constexpr std::uint16_t kEndpointHaltBit = 1;
constexpr std::size_t kMostDescriptor = 4096;
constexpr std::size_t kConfigValueByte = 5;

// The three numbers at the start of "6.1.0-13-amd64"; 0 for those that are not there.
std::array<std::uint32_t, 3> leadingNumbers(std::string_view text) {
    std::array<std::uint32_t, 3> numbers{};
    for (std::uint32_t& number : numbers) {
        const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (problem != std::errc() || end == text.data() + text.size() || *end != '.') break;
        text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
    }
    return numbers;
}

}  // namespace

LibusbDevice::LibusbDevice(Opening opening)
    : opening_(std::move(opening)),
      context_(*opening_.get_deleter().context),
      device_(*opening_),
      reads_(device_.handle(), device_.stream().address, device_.events()) {}

ErrorCode LibusbDevice::configDescriptor(std::span<std::uint8_t> buffer, std::uint32_t& length) {
    length = 0;
    int active = 0;
    if (const int result = libusb_get_configuration(device_.handle(), &active); result != LIBUSB_SUCCESS) {
        return errorFromResult(result);
    }
    libusb_device_descriptor device{};
    libusb_get_device_descriptor(device_.device(), &device);
    const auto room = buffer.first(std::min(buffer.size(), kMostDescriptor));
    for (std::uint8_t i = 0; i < device.bNumConfigurations; ++i) {
        const auto which = static_cast<std::uint16_t>(LIBUSB_DT_CONFIG << 8 | i);
        const ControlSetup setup{kStandardToHost, LIBUSB_REQUEST_GET_DESCRIPTOR, which, 0};
        if (const ErrorCode code = controlTransfer(setup, room, length); code != error::kNone) return code;
        // The only configuration is the active one, whatever it says.
        const bool only = device.bNumConfigurations == 1;
        if (only || (length > kConfigValueByte && room[kConfigValueByte] == active)) return error::kNone;
    }
    length = 0;
    return error::kDeviceNotFunctioning;
}

std::uint32_t LibusbDevice::functionAddress() const {
    return libusb_get_device_address(device_.device());
}

std::uint32_t LibusbDevice::openCount() const {
    const bool elsewhere = device_.claim() == error::kBusy;
    return device_.openings() + (elsewhere ? 1 : 0);
}

ErrorCode LibusbDevice::checkConfiguration(std::uint32_t& word0, std::uint32_t& word1) {
    word0 = 0;
    word1 = 0;
    int active = 0;
    if (const int result = libusb_get_configuration(device_.handle(), &active); result != LIBUSB_SUCCESS) {
        return errorFromResult(result);
    }
    if (active == 0) return error::kDeviceNotFunctioning;
    StreamEndpoint stream;
    if (const ErrorCode code = findStreamEndpoint(device_.device(), stream); code != error::kNone)
        return code;
    word0 = static_cast<std::uint32_t>(active);
    word1 = stream.address | static_cast<std::uint32_t>(stream.maxPacket) << 16;
    return error::kNone;
}

void LibusbDevice::driverVersion(std::span<std::uint32_t, 4> words) const {
    utsname system{};
    uname(&system);
    const std::array<std::uint32_t, 3> kernel = leadingNumbers(system.release);
    words[0] = kernel[0] << 16 | kernel[1];
    words[1] = kernel[2];
    const libusb_version* const library = libusb_get_version();
    words[2] = static_cast<std::uint32_t>(library->major) << 16 | library->minor;
    words[3] = static_cast<std::uint32_t>(library->micro) << 16 | library->nano;
}

ErrorCode LibusbDevice::controlTransfer(const ControlSetup& setup, std::span<std::uint8_t> data,
                                        std::uint32_t& transferred) {
    return transferControl(device_.handle(), setup, data, transferred);
}

ErrorCode LibusbDevice::beginRead() {
    if (device_.stream().address == 0) return error::kFileNotFound;
    if (const ErrorCode code = device_.claim(); code != error::kNone) return code;
    bool halted = reads_.takeHaltSuspicion();
    if (!halted) {
        if (const ErrorCode code = endpointHalted(halted); code != error::kNone) return code;
    }
    if (!halted) return error::kNone;
    const int result = libusb_clear_halt(device_.handle(), device_.stream().address);
    if (result == LIBUSB_SUCCESS) return error::kNone;
    return result == LIBUSB_ERROR_NO_DEVICE ? error::kDeviceNotConnected : error::kDeviceNotFunctioning;
}

ErrorCode LibusbDevice::endpointHalted(bool& halted) {
    std::array<std::uint8_t, 2> status{};
    std::uint32_t got = 0;
    const ControlSetup setup{kStandardEndpointToHost, LIBUSB_REQUEST_GET_STATUS, 0, device_.stream().address};
    const ErrorCode code = controlTransfer(setup, status, got);
    halted =
        code == error::kNone && got == status.size() && (loadLe16(status.data()) & kEndpointHaltBit) != 0;
    // A camera that refuses the question is awake and has nothing to clear.
    if (code == error::kNone || code == error::kBadCommand) return error::kNone;
    return code == error::kDeviceNotConnected ? code : error::kDeviceNotFunctioning;
}

ErrorCode LibusbDevice::endRead() {
    reads_.cancelAll();
    return error::kNone;
}

ErrorCode LibusbDevice::startRead(void* buffer, std::uint32_t size, TavraUsbRead& read) {
    // 5, access denied, is the number after which nobody tries again. Without the check the kernel would
    // claim the interface by itself.
    if (device_.stream().address == 0 || !device_.claimed()) return error::kDeviceGone;
    return reads_.start(buffer, size, read);
}

ErrorCode LibusbDevice::readResult(TavraUsbRead& read, std::uint32_t& transferred, bool wait) {
    return reads_.result(read, transferred, wait);
}

void* LibusbDevice::allocReadMemory(std::size_t size) {
#if defined(__x86_64__) || defined(__i386__)
    return libusb_dev_mem_alloc(device_.handle(), size);
#else
    // Elsewhere such memory may be uncached, and a frame is read by the processor many times.
    static_cast<void>(size);
    return nullptr;
#endif
}

void LibusbDevice::freeReadMemory(void* memory, std::size_t size) {
    libusb_dev_mem_free(device_.handle(), static_cast<unsigned char*>(memory), size);
}

ErrorCode LibusbDevice::deviceControl(std::uint32_t code) {
    if (code != kReset && code != kConfigureAndReset) return error::kNotSupported;
    reads_.cancelAll();
    if (code == kConfigureAndReset) {
        libusb_config_descriptor* first = nullptr;
        if (libusb_get_config_descriptor(device_.device(), 0, &first) == LIBUSB_SUCCESS) {
            libusb_set_configuration(device_.handle(), first->bConfigurationValue);
            libusb_free_config_descriptor(first);
        }
    }
    DeviceRef device;
    if (const ErrorCode error = resetAndFindAgain(device); error != error::kNone) return error;
    if (code == kReset) return error::kNone;
    StreamEndpoint stream;
    return findStreamEndpoint(device.get(), stream);
}

ErrorCode LibusbDevice::resetAndFindAgain(DeviceRef& device) {
    libusb_device* const old = device_.device();
    const PortPath where = PortPath::of(old);
    const int result = libusb_reset_device(device_.handle());
    if (result == LIBUSB_SUCCESS) {
        device.reset(libusb_ref_device(old));
        return error::kNone;
    }
    device_.forgetClaim();
    if (result != LIBUSB_ERROR_NOT_FOUND && result != LIBUSB_ERROR_NO_DEVICE) return errorFromResult(result);
    // It comes back as a new device at the same place.
    device = context_.waitForCamera(where, old, std::chrono::steady_clock::now() + kComeBackTime);
    return device != nullptr ? error::kNone : error::kDeviceNotConnected;
}

}  // namespace tavra::usbd
