#include "libusb/libusb_source.h"

#include <cstdio>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "error_numbers.h"
#include "libusb/error_map.h"
#include "libusb/libusb_context.h"
#include "libusb/libusb_device.h"

namespace tavra::usbd {
namespace {

// "usb:1-2.3", the form that the kernel's own names of devices have.
std::string placeName(const PortPath& where) {
    std::string name = "usb:" + std::to_string(where.bus) + "-";
    if (where.ports.empty()) return name + "0";
    for (std::size_t i = 0; i < where.ports.size(); ++i) {
        if (i != 0) name += '.';
        name += std::to_string(where.ports[i]);
    }
    return name;
}

// "/2e6b:0211"
std::string modelName(libusb_device* device) {
    libusb_device_descriptor descriptor{};
    libusb_get_device_descriptor(device, &descriptor);
    char text[16];
    std::snprintf(text, sizeof text, "/%04x:%04x", descriptor.idVendor, descriptor.idProduct);
    return text;
}

std::string pathOf(libusb_device* device) {
    return placeName(PortPath::of(device)) + modelName(device);
}

bool isAt(libusb_device* device, std::string_view path) {
    const std::string full = pathOf(device);
    return path == full || path == std::string_view(full).substr(0, full.find('/'));
}

class LibusbSource final : public DeviceSource {
  public:
    std::uint32_t enumerate() override {
        const std::lock_guard lock(mutex_);
        ErrorCode ignored = error::kNone;
        cameras_ = look(ignored);
        return static_cast<std::uint32_t>(cameras_.size());
    }

    std::string path(std::uint32_t index) override {
        const std::lock_guard lock(mutex_);
        return index < cameras_.size() ? pathOf(cameras_[index].get()) : std::string();
    }

    std::unique_ptr<Device> open(std::uint32_t index, ErrorCode& error) override {
        const std::lock_guard lock(mutex_);
        if (index < cameras_.size()) return openDevice(cameras_[index].get(), error);
        error = error::kFileNotFound;
        return nullptr;
    }

    std::unique_ptr<Device> open(const std::string& path, ErrorCode& error) override {
        const std::lock_guard lock(mutex_);
        for (const DeviceRef& camera : look(error)) {
            if (isAt(camera.get(), path)) return openDevice(camera.get(), error);
        }
        if (error == error::kNone) error = error::kFileNotFound;
        return nullptr;
    }

  private:
    std::vector<DeviceRef> look(ErrorCode& error) {
        error = error::kNone;
        if (context_ == nullptr) context_ = LibusbContext::create(error);
        return context_ != nullptr ? context_->cameras() : std::vector<DeviceRef>();
    }

    std::unique_ptr<Device> openDevice(libusb_device* camera, ErrorCode& error) {
        Opening opening = context_->open(camera, error);
        return opening != nullptr ? std::make_unique<LibusbDevice>(std::move(opening)) : nullptr;
    }

    std::mutex mutex_;
    // Before the list: references to devices go before the context does.
    std::shared_ptr<LibusbContext> context_;
    std::vector<DeviceRef> cameras_;
};

}  // namespace

std::unique_ptr<DeviceSource> makeLibusbSource() {
    return std::make_unique<LibusbSource>();
}

}  // namespace tavra::usbd
