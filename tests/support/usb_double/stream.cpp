// Bulk reads of the double: a queue of waiting reads and a queue of scripted transfers, each completing the
// other.
#include <algorithm>
#include <chrono>
#include <cstring>

#include "support/usb_double/double_platform.h"
#include "support/usb_double/usb_double.h"

namespace tavra::test {
namespace {

// What TavraUsbRead::status tells while the read belongs to the double, and after.
constexpr std::uint64_t kInFlight = 0x103;
constexpr std::uint64_t kCompleted = std::uint64_t{1} << 32;  // with the error in the low half

constexpr std::uint32_t kIoIncomplete = 996;
constexpr std::uint32_t kIoPending = 997;
constexpr std::uint32_t kNotConnected = 1167;

}  // namespace

void UsbDouble::complete(DoubleCamera& camera, std::uint32_t error, std::uint32_t transferred) {
    TavraUsbRead& read = *camera.pending.front().read;
    camera.pending.pop_front();
    read.status = kCompleted | error;
    read.transferred = transferred;
    signalEvent(read.event);
}

void UsbDouble::completeReads(DoubleCamera& camera) {
    while (!camera.pending.empty() && !camera.bulk.empty() && !camera.bulk.front().hold) {
        const BulkTransfer& transfer = camera.bulk.front();
        const DoubleCamera::PendingRead& read = camera.pending.front();
        const std::size_t left = transfer.bytes.size() - camera.bulkTaken;
        const std::size_t size = std::min<std::size_t>(left, read.size);
        if (size > 0) std::memcpy(read.buffer, transfer.bytes.data() + camera.bulkTaken, size);
        const std::uint32_t error = transfer.error;
        camera.bulkTaken += size;
        if (error != 0 || camera.bulkTaken == transfer.bytes.size()) {
            camera.bulk.pop_front();
            camera.bulkTaken = 0;
        }
        complete(camera, error, static_cast<std::uint32_t>(size));
    }
    readsChanged_.notify_all();
}

std::uint32_t UsbDouble::startRead(DoubleCamera& camera, const DoubleCamera::PendingRead& read) {
    if (camera.gone) return kNotConnected;
    if (!camera.startReadErrors.empty()) {
        const std::uint32_t error = camera.startReadErrors.front();
        camera.startReadErrors.pop_front();
        if (error != 0) return error;
    }
    clearEvent(read.read->event);
    read.read->status = kInFlight;
    read.read->transferred = 0;
    camera.pending.push_back(read);
    completeReads(camera);
    return kIoPending;
}

std::uint32_t UsbDouble::readResult(std::unique_lock<std::mutex>& lock, TavraUsbRead* read, bool wait,
                                    std::uint32_t& transferred) {
    transferred = 0;
    if (wait) readsChanged_.wait(lock, [&] { return read->status != kInFlight; });
    if (read->status == kInFlight) return kIoIncomplete;
    transferred = static_cast<std::uint32_t>(read->transferred);
    return static_cast<std::uint32_t>(read->status);
}

void UsbDouble::cancelReads(DoubleCamera& camera, std::uint32_t error) {
    while (!camera.pending.empty()) complete(camera, error, 0);
    readsChanged_.notify_all();
}

void UsbDouble::pushBulk(std::size_t camera, BulkTransfer transfer) {
    const std::lock_guard lock(mutex_);
    DoubleCamera& target = cameras_.at(camera);
    target.bulk.push_back(std::move(transfer));
    completeReads(target);
}

void UsbDouble::releaseReads(std::size_t camera) {
    const std::lock_guard lock(mutex_);
    DoubleCamera& target = cameras_.at(camera);
    const auto hold =
        std::find_if(target.bulk.begin(), target.bulk.end(), [](const BulkTransfer& t) { return t.hold; });
    if (hold != target.bulk.end()) target.bulk.erase(hold);
    completeReads(target);
}

std::size_t UsbDouble::pendingReads(std::size_t camera) const {
    const std::lock_guard lock(mutex_);
    return cameras_.at(camera).pending.size();
}

bool UsbDouble::waitForPendingReads(std::size_t camera, std::size_t count) {
    std::unique_lock lock(mutex_);
    return readsChanged_.wait_for(lock, std::chrono::seconds(10),
                                  [&] { return cameras_.at(camera).pending.size() == count; });
}

void UsbDouble::unplug(std::size_t camera) {
    const std::lock_guard lock(mutex_);
    DoubleCamera& target = cameras_.at(camera);
    target.gone = true;
    cancelReads(target, kNotConnected);
}

}  // namespace tavra::test
