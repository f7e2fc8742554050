#include "libusb/control_transfer.h"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <new>

#include "error_numbers.h"
#include "libusb/error_map.h"

namespace tavra::usbd {
namespace {

constexpr std::size_t kMostData = 4096;

struct Completion {
    std::mutex mutex;
    std::condition_variable condition;
    bool done = false;

    void wait() {
        std::unique_lock lock(mutex);
        condition.wait(lock, [this] { return done; });
    }

    static void LIBUSB_CALL signal(libusb_transfer* transfer) {
        auto& self = *static_cast<Completion*>(transfer->user_data);
        // Under the lock: the waiting thread destroys this object as soon as it can see `done`.
        const std::lock_guard lock(self.mutex);
        self.done = true;
        self.condition.notify_one();
    }
};

struct FreeTransfer {
    void operator()(libusb_transfer* transfer) const { libusb_free_transfer(transfer); }
};

}  // namespace

ErrorCode transferControl(libusb_device_handle* handle, const ControlSetup& setup,
                          std::span<std::uint8_t> data, std::uint32_t& transferred, unsigned timeoutMs) {
    transferred = 0;
    if (data.size() > kMostData) return error::kInvalidArgument;
    const std::size_t size = LIBUSB_CONTROL_SETUP_SIZE + data.size();
    const std::unique_ptr<unsigned char[]> packet(new (std::nothrow) unsigned char[size]);
    const std::unique_ptr<libusb_transfer, FreeTransfer> transfer(libusb_alloc_transfer(0));
    if (packet == nullptr || transfer == nullptr) return error::kOutOfMemory;

    Completion completion;
    libusb_fill_control_setup(packet.get(), setup.requestType, setup.request, setup.value, setup.index,
                              static_cast<std::uint16_t>(data.size()));
    if (!setup.toHost()) std::ranges::copy(data, packet.get() + LIBUSB_CONTROL_SETUP_SIZE);
    libusb_fill_control_transfer(transfer.get(), handle, packet.get(), &Completion::signal, &completion,
                                 timeoutMs);
    if (const int result = libusb_submit_transfer(transfer.get()); result != LIBUSB_SUCCESS) {
        return errorFromResult(result);
    }
    completion.wait();

    // A device may not send more than it was asked for, but libusb only reports what the kernel says.
    const std::size_t length =
        std::min<std::size_t>(static_cast<std::size_t>(transfer->actual_length), data.size());
    if (setup.toHost()) std::copy_n(packet.get() + LIBUSB_CONTROL_SETUP_SIZE, length, data.begin());
    transferred = static_cast<std::uint32_t>(length);
    return errorFromControlStatus(transfer->status);
}

}  // namespace tavra::usbd
