#include "virtual_device.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "descriptors.h"
#include "error_numbers.h"

namespace tavra::usbd {

VirtualDevice::VirtualDevice(std::shared_ptr<VirtualCamera> camera)
    : camera_(std::move(camera)), powerUp_(camera_->attach()) {}

VirtualDevice::~VirtualDevice() {
    endRead();
    camera_->detach();
}

ErrorCode VirtualDevice::configDescriptor(std::span<std::uint8_t> buffer, std::uint32_t& length) {
    const std::vector<std::uint8_t> bytes = configurationDescriptor(camera_->model());
    length = static_cast<std::uint32_t>(std::min(bytes.size(), buffer.size()));
    std::copy_n(bytes.begin(), length, buffer.begin());
    return error::kNone;
}

std::uint32_t VirtualDevice::functionAddress() const {
    return camera_->model().usb.functionAddress;
}

std::uint32_t VirtualDevice::openCount() const {
    return camera_->openCount();
}

ErrorCode VirtualDevice::checkConfiguration(std::uint32_t& word0, std::uint32_t& word1) {
    word0 = 1;  // the number of the configuration
    word1 = 0;
    return camera_->checkConfiguration(powerUp_);
}

void VirtualDevice::driverVersion(std::span<std::uint32_t, 4> words) const {
    std::copy(camera_->model().usb.driverVersion.begin(), camera_->model().usb.driverVersion.end(),
              words.begin());
}

ErrorCode VirtualDevice::controlTransfer(const ControlSetup& setup, std::span<std::uint8_t> data,
                                         std::uint32_t& transferred) {
    return camera_->controlTransfer(powerUp_, setup, data, transferred);
}

ErrorCode VirtualDevice::beginRead() {
    reads_ = true;
    return camera_->beginRead(powerUp_);
}

ErrorCode VirtualDevice::endRead() {
    if (reads_.exchange(false)) camera_->endRead(powerUp_);
    return error::kNone;
}

bool VirtualDevice::canResumeRead() const {
    return camera_->model().usb.resumesReads;
}

ErrorCode VirtualDevice::startRead(void* buffer, std::uint32_t size, TavraUsbRead& read) {
    reads_ = true;
    return camera_->startRead(powerUp_, buffer, size, read);
}

ErrorCode VirtualDevice::readResult(TavraUsbRead& read, std::uint32_t& transferred, bool wait) {
    return camera_->readResult(read, transferred, wait);
}

// Ordinary pages serve as well: nothing is mapped from a kernel here.
void* VirtualDevice::allocReadMemory(std::size_t) {
    return nullptr;
}

void VirtualDevice::freeReadMemory(void*, std::size_t) {}

ErrorCode VirtualDevice::deviceControl(std::uint32_t code) {
    return camera_->deviceControl(powerUp_, code);
}

}  // namespace tavra::usbd
