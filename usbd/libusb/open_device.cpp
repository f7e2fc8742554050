#include "libusb/open_device.h"

#include <memory>
#include <span>

#include "error_numbers.h"
#include "libusb/error_map.h"

namespace tavra::usbd {
namespace {

struct FreeConfig {
    void operator()(libusb_config_descriptor* config) const { libusb_free_config_descriptor(config); }
};

bool isBulkToHost(const libusb_endpoint_descriptor& endpoint) {
    return (endpoint.bEndpointAddress & LIBUSB_ENDPOINT_IN) != 0 &&
           (endpoint.bmAttributes & LIBUSB_TRANSFER_TYPE_MASK) == LIBUSB_TRANSFER_TYPE_BULK;
}

bool lookInto(const libusb_interface_descriptor& setting, StreamEndpoint& found) {
    // Of a descriptor that was cut short libusb keeps the count of endpoints without the endpoints.
    if (setting.endpoint == nullptr) return false;
    for (const auto& endpoint : std::span(setting.endpoint, setting.bNumEndpoints)) {
        if (!isBulkToHost(endpoint)) continue;
        found = {setting.bInterfaceNumber, setting.bAlternateSetting, endpoint.bEndpointAddress,
                 endpoint.wMaxPacketSize};
        return true;
    }
    return false;
}

}  // namespace

ErrorCode findStreamEndpoint(libusb_device* device, StreamEndpoint& found) {
    found = {};
    libusb_config_descriptor* raw = nullptr;
    const int result = libusb_get_active_config_descriptor(device, &raw);
    if (result == LIBUSB_ERROR_NO_DEVICE) return error::kDeviceNotConnected;
    if (result != LIBUSB_SUCCESS) return error::kDeviceNotFunctioning;
    const std::unique_ptr<libusb_config_descriptor, FreeConfig> config(raw);
    for (const auto& interface : std::span(config->interface, config->bNumInterfaces)) {
        for (const auto& setting :
             std::span(interface.altsetting, static_cast<std::size_t>(interface.num_altsetting))) {
            if (lookInto(setting, found)) return error::kNone;
        }
    }
    return error::kNone;
}

OpenDevice::OpenDevice(libusb_device_handle* handle, EventThread& events) : handle_(handle), events_(events) {
    // A device without a readable configuration can be opened all the same: bringing it back needs a handle.
    if (findStreamEndpoint(device(), stream_) == error::kNone) claim();
}

OpenDevice::~OpenDevice() {
    if (claimed_) libusb_release_interface(handle_, stream_.interface);
    libusb_close(handle_);
}

ErrorCode OpenDevice::claim() {
    const std::lock_guard lock(claimMutex_);
    if (claimed_) return error::kNone;
    int result = libusb_claim_interface(handle_, stream_.interface);
    if (result == LIBUSB_SUCCESS && stream_.alternate != 0) {
        result = libusb_set_interface_alt_setting(handle_, stream_.interface, stream_.alternate);
        if (result != LIBUSB_SUCCESS) libusb_release_interface(handle_, stream_.interface);
    }
    claimed_ = result == LIBUSB_SUCCESS;
    return errorFromResult(result);
}

}  // namespace tavra::usbd
