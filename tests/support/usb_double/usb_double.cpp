// The double's script and record, seen from the test.
#include "support/usb_double/usb_double.h"

#include <ostream>

#include "support/usb_double/double_platform.h"

namespace tavra::test {

UsbDouble& usbDouble() {
    static UsbDouble instance;
    return instance;
}

void PrintTo(const OperationCall& call, std::ostream* out) {
    *out << call.name;
    for (const std::uint64_t argument : call.arguments) *out << ' ' << argument;
}

void UsbDouble::reset() {
    const std::lock_guard lock(mutex_);
    for (DoubleCamera& camera : cameras_) cancelReads(camera, 995);
    openings_.clear();
    cameras_.clear();
    transfers_.clear();
    calls_.clear();
    faults_.clear();
    endOfEnumerationError = 2;
    hexImageErrors.clear();
    hexText.clear();
}

DoubleCamera& UsbDouble::addCamera(DoubleCamera camera) {
    const std::lock_guard lock(mutex_);
    if (camera.path.empty()) {
        camera.path = u"usb:double-";
        camera.path += static_cast<char16_t>(u'A' + cameras_.size());
    }
    cameras_.push_back(std::move(camera));
    return cameras_.back();
}

std::vector<ControlTransfer> UsbDouble::transfers() const {
    const std::lock_guard lock(mutex_);
    return transfers_;
}

std::vector<ControlTransfer> UsbDouble::requests() const {
    std::vector<ControlTransfer> list = transfers();
    for (ControlTransfer& transfer : list) {
        if ((transfer.requestType & 0x80) != 0) transfer.data.clear();
    }
    return list;
}

std::vector<OperationCall> UsbDouble::calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
}

std::size_t UsbDouble::openHandles() const {
    const std::lock_guard lock(mutex_);
    return openings_.size();
}

void UsbDouble::forgetTraffic() {
    const std::lock_guard lock(mutex_);
    transfers_.clear();
    calls_.clear();
}

void UsbDouble::addFault(const Fault& fault) {
    const std::lock_guard lock(mutex_);
    faults_.push_back(fault);
}

void UsbDouble::failTransfer(std::uint32_t nth) {
    Fault fault;
    fault.skip = nth;
    addFault(fault);
}

void UsbDouble::failRequest(std::uint8_t request, std::uint32_t times) {
    Fault fault;
    fault.request = request;
    fault.times = times;
    addFault(fault);
}

void UsbDouble::shortenRequest(std::uint8_t request, std::uint32_t transferred, std::uint32_t times) {
    Fault fault;
    fault.request = request;
    fault.times = times;
    fault.transferred = transferred;
    addFault(fault);
}

void UsbDouble::clearFaults() {
    const std::lock_guard lock(mutex_);
    faults_.clear();
}

DoubleCamera* UsbDouble::find(TavraUsbDevice device) {
    const auto opening = openings_.find(device);
    return opening == openings_.end() ? nullptr : &cameras_.at(opening->second.camera);
}

TavraUsbDevice UsbDouble::open(std::size_t camera) {
    const TavraUsbDevice device = nextDevice_++;
    openings_[device] = {camera};
    return device;
}

bool UsbDouble::close(TavraUsbDevice device) {
    DoubleCamera* const camera = find(device);
    if (camera == nullptr) return false;
    cancelReads(*camera, 995);
    openings_.erase(device);
    return true;
}

std::uint32_t UsbDouble::openCount(const DoubleCamera& camera) const {
    std::uint32_t count = camera.openedByOthers;
    for (const auto& [device, opening] : openings_) {
        if (&cameras_.at(opening.camera) == &camera) ++count;
    }
    return count;
}

void UsbDouble::record(const char* name, std::initializer_list<std::uint64_t> arguments) {
    calls_.push_back({name, arguments});
}

}  // namespace tavra::test
