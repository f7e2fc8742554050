#include "libusb/libusb_context.h"

#include <algorithm>
#include <array>
#include <new>

#include "error_numbers.h"
#include "libusb/error_map.h"
#include "libusb/open_device.h"

namespace tavra::usbd {
namespace {

constexpr std::uint16_t kVendor = 0x2E6B;
constexpr int kDeepestPort = 7;  // hubs in a row that USB allows

bool isCamera(libusb_device* device) {
    libusb_device_descriptor descriptor{};
    return libusb_get_device_descriptor(device, &descriptor) == LIBUSB_SUCCESS &&
           descriptor.idVendor == kVendor;
}

}  // namespace

PortPath PortPath::of(libusb_device* device) {
    std::array<std::uint8_t, kDeepestPort> ports{};
    const int count = libusb_get_port_numbers(device, ports.data(), ports.size());
    return {libusb_get_bus_number(device), {ports.begin(), ports.begin() + std::max(count, 0)}};
}

std::shared_ptr<LibusbContext> LibusbContext::create(ErrorCode& error) {
    libusb_context* context = nullptr;
    error = errorFromResult(libusb_init(&context));
    if (error != error::kNone) return nullptr;
    return std::shared_ptr<LibusbContext>(new LibusbContext(context));
}

LibusbContext::LibusbContext(libusb_context* context) : context_(context), events_(context) {
    // Where the platform cannot tell of arrivals, waitForCamera only looks at the deadline.
    libusb_hotplug_register_callback(context_, LIBUSB_HOTPLUG_EVENT_DEVICE_ARRIVED, LIBUSB_HOTPLUG_NO_FLAGS,
                                     kVendor, LIBUSB_HOTPLUG_MATCH_ANY, LIBUSB_HOTPLUG_MATCH_ANY,
                                     &LibusbContext::arrived, this, nullptr);
}

LibusbContext::~LibusbContext() {
    libusb_exit(context_);
}

int LibusbContext::arrived(libusb_context*, libusb_device*, libusb_hotplug_event, void* self) {
    auto& context = *static_cast<LibusbContext*>(self);
    const std::lock_guard lock(context.arrivalMutex_);
    ++context.arrivals_;
    context.arrival_.notify_all();
    return 0;  // stay registered
}

std::vector<DeviceRef> LibusbContext::cameras() const {
    libusb_device** list = nullptr;
    const ssize_t count = libusb_get_device_list(context_, &list);
    std::vector<DeviceRef> cameras;
    for (ssize_t i = 0; i < count; ++i) {
        if (isCamera(list[i])) cameras.emplace_back(libusb_ref_device(list[i]));
    }
    if (count >= 0) libusb_free_device_list(list, 1);
    std::ranges::stable_sort(cameras, {}, [](const DeviceRef& camera) { return PortPath::of(camera.get()); });
    return cameras;
}

DeviceRef LibusbContext::waitForCamera(const PortPath& where, const libusb_device* old,
                                       std::chrono::steady_clock::time_point deadline) {
    std::unique_lock lock(arrivalMutex_);
    for (;;) {
        const std::uint64_t seen = arrivals_;
        lock.unlock();
        for (DeviceRef& camera : cameras()) {
            if (camera.get() != old && PortPath::of(camera.get()) == where) return std::move(camera);
        }
        lock.lock();
        if (!arrival_.wait_until(lock, deadline, [&] { return arrivals_ != seen; })) return nullptr;
    }
}

Opening LibusbContext::open(libusb_device* device, ErrorCode& error) {
    const std::lock_guard lock(openMutex_);
    const auto known = std::ranges::find(open_, device, &OpenDevice::device);
    if (known != open_.end()) {
        known->addOpening();
        error = error::kNone;
        return Opening(&*known, {shared_from_this()});
    }
    error = events_.acquire();
    if (error != error::kNone) return {};
    libusb_device_handle* handle = nullptr;
    error = errorFromResult(libusb_open(device, &handle));
    if (error != error::kNone) {
        events_.release();
        return {};
    }
    return Opening(&open_.emplace_back(handle, events_), {shared_from_this()});
}

void CloseDevice::operator()(OpenDevice* device) const {
    context->close(device);
}

void LibusbContext::close(OpenDevice* device) {
    const std::lock_guard lock(openMutex_);
    if (!device->removeOpening()) return;
    open_.remove_if([device](const OpenDevice& candidate) { return &candidate == device; });
    events_.release();
}

}  // namespace tavra::usbd
