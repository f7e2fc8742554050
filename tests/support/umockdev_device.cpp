#include "support/umockdev_device.h"

#include <fcntl.h>
#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <umockdev.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "support/ioctl_order.h"

namespace tavra::test {
namespace {

constexpr std::chrono::seconds kPatience{10};
constexpr std::size_t kOrderKept = 1000;
constexpr std::uint8_t kGetStatus = 0;
constexpr std::uint8_t kEndpointToHost = 0x82;

std::string padded(unsigned value) {
    std::string text = std::to_string(value);
    return std::string(3 - text.size(), '0') + text;
}

}  // namespace

struct UmockdevBus::Native {
    UMockdevTestbed* testbed = umockdev_testbed_new();
    std::string root;
    std::string rootHub;
    std::string hub;

    std::string add(const std::string& name, const char* parent, unsigned bus, unsigned number,
                    const std::string& configuration, const Bytes& descriptors) {
        const std::string busText = std::to_string(bus);
        const std::string numberText = std::to_string(number);
        const std::string node = "bus/usb/" + padded(bus) + "/" + padded(number);
        char* const path = umockdev_testbed_add_device(
            testbed, "usb", name.c_str(), parent,
            // attributes
            "busnum", busText.c_str(), "devnum", numberText.c_str(), "speed", "5000", "bConfigurationValue",
            configuration.c_str(), nullptr,
            // properties
            "DEVTYPE", "usb_device", "DEVNAME", ("/dev/" + node).c_str(), "BUSNUM", padded(bus).c_str(),
            "DEVNUM", padded(number).c_str(), nullptr);
        if (path == nullptr) throw std::runtime_error("umockdev does not take the device");
        std::string result = path;
        g_free(path);
        Bytes copy = descriptors;
        umockdev_testbed_set_attribute_binary(testbed, result.c_str(), "descriptors", copy.data(),
                                              static_cast<int>(copy.size()));
        // The event of the addition came before the descriptors.
        umockdev_testbed_uevent(testbed, result.c_str(), "add");
        return result;
    }
};

UmockdevBus::UmockdevBus() {
    native_ = std::make_unique<Native>();
    if (!umockdev_in_mock_environment()) throw std::runtime_error("must run under umockdev-wrapper");
    char* const root = umockdev_testbed_get_root_dir(native_->testbed);
    native_->root = root;
    g_free(root);
    DescriptorOptions hub;
    hub.vendor = 0x1D6B;
    hub.product = 3;
    hub.bulkEndpoint = 0;
    native_->rootHub = native_->add("usb1", nullptr, 1, 1, "1", allDescriptors(hub));
    native_->hub = native_->add("1-2", native_->rootHub.c_str(), 1, 2, "1", allDescriptors(hub));
}

UmockdevBus::~UmockdevBus() {
    g_object_unref(native_->testbed);
}

// One read or control transfer of the client.
struct UmockdevDevice::Urb {
    usbdevfs_urb* native;  // the client's own: it lives in this process
};

// One ioctl of the client.
struct UmockdevDevice::Glue {
    UMockdevIoctlClient* client;
    unsigned long request;

    // The argument: a number, or a pointer into the client, which is this process.
    void* pointer() const {
        UMockdevIoctlData* const argument = umockdev_ioctl_client_get_arg(client);
        void* value = nullptr;
        std::memcpy(static_cast<void*>(&value), argument->data, sizeof value);
        return value;
    }

    static void connected(UMockdevIoctlBase*, UMockdevIoctlClient*, gpointer self) {
        auto& device = *static_cast<UmockdevDevice*>(self);
        const std::lock_guard lock(device.mutex_);
        ++device.clients_;
    }

    static void vanished(UMockdevIoctlBase*, UMockdevIoctlClient*, gpointer self) {
        auto& device = *static_cast<UmockdevDevice*>(self);
        const std::lock_guard lock(device.mutex_);
        --device.clients_;
        device.changed_.notify_all();
    }

    static gboolean arrived(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer self) {
        auto& device = *static_cast<UmockdevDevice*>(self);
        beginDeviceSide();
        Glue glue{client, umockdev_ioctl_client_get_request(client)};
        int error = 0;
        long result = 0;
        std::function<void()> hook;
        {
            const std::lock_guard lock(device.mutex_);
            if (glue.request == USBDEVFS_RESET) hook = device.resetHook_;
        }
        if (hook) hook();
        {
            const std::lock_guard lock(device.mutex_);
            result = device.handle(glue, error);
            device.changed_.notify_all();
        }
        endDeviceSide();
        umockdev_ioctl_client_complete(client, result, error);
        return TRUE;
    }
};

UmockdevDevice::UmockdevDevice(UmockdevBus& bus, DeviceOptions options)
    : bus_(bus.native()),
      options_(std::move(options)),
      node_("/dev/bus/usb/" + padded(options_.bus) + "/" + padded(options_.number)),
      configuration_(options_.configuration) {
    const std::string node = bus_.root + node_;
    std::filesystem::create_directories(std::filesystem::path(node).parent_path());
    // A pipe that holds one page: full with one byte. Full is what poll shows while there is nothing to
    // collect. A plain file would always be ready.
    std::filesystem::remove(node);
    if (mkfifo(node.c_str(), 0600) != 0) throw std::runtime_error("no pipe for the device node");
    fifo_ = open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    fcntl(fifo_, F_SETPIPE_SZ, 4096);
    readyShown_ = true;
    showReady();

    UMockdevIoctlBase* const ioctls = umockdev_ioctl_base_new();
    ioctls_ = ioctls;
    g_signal_connect(ioctls, "handle-ioctl", G_CALLBACK(&Glue::arrived), this);
    g_signal_connect(ioctls, "client-connected", G_CALLBACK(&Glue::connected), this);
    g_signal_connect(ioctls, "client-vanished", G_CALLBACK(&Glue::vanished), this);
    GError* problem = nullptr;
    umockdev_testbed_attach_ioctl(bus_.testbed, node_.c_str(), ioctls, &problem);
    if (problem != nullptr) throw std::runtime_error(problem->message);

    const bool behindHub = options_.name.starts_with("1-2.");
    sysPath_ =
        bus_.add(options_.name, (behindHub ? bus_.hub : bus_.rootHub).c_str(), options_.bus, options_.number,
                 configuration_ ? std::to_string(*configuration_) : std::string(), options_.descriptors);
}

UmockdevDevice::~UmockdevDevice() {
    unplug();
    {
        // The kernel lets its clients collect what has ended before it forgets a device.
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, kPatience, [this] { return done_.empty() || clients_ == 0; });
    }
    umockdev_testbed_detach_ioctl(bus_.testbed, node_.c_str(), nullptr);
    g_signal_handlers_disconnect_by_data(ioctls_, this);
    g_object_unref(ioctls_);
    close(fifo_);
    std::filesystem::remove(bus_.root + node_);
}

void UmockdevDevice::unplug() {
    {
        const std::lock_guard lock(mutex_);
        if (gone_) return;
        gone_ = true;
        while (!inFlight_.empty()) complete(inFlight_.begin(), -ESHUTDOWN);
        changed_.notify_all();
    }
    umockdev_testbed_uevent(bus_.testbed, sysPath_.c_str(), "remove");
    umockdev_testbed_remove_device(bus_.testbed, sysPath_.c_str());
}

void UmockdevDevice::onControl(ControlHandler handler) {
    const std::lock_guard lock(mutex_);
    control_ = std::move(handler);
}

void UmockdevDevice::ignoreControl(bool ignore) {
    const std::lock_guard lock(mutex_);
    ignoreControl_ = ignore;
}

void UmockdevDevice::send(Bytes transfer) {
    const std::lock_guard lock(mutex_);
    transfers_.push_back({std::move(transfer)});
    feed();
    changed_.notify_all();
}

void UmockdevDevice::sendEndlessly() {
    const std::lock_guard lock(mutex_);
    endless_ = true;
    feed();
    changed_.notify_all();
}

void UmockdevDevice::failNextRead(int status, std::size_t bytesBefore) {
    const std::lock_guard lock(mutex_);
    failures_.push_back({status, bytesBefore});
    feed();
    changed_.notify_all();
}

void UmockdevDevice::haltEndpoint() {
    const std::lock_guard lock(mutex_);
    halted_ = true;
}

void UmockdevDevice::setBudget(std::size_t bytes) {
    const std::lock_guard lock(mutex_);
    budget_ = bytes;
}

void UmockdevDevice::refuseReads(int error, unsigned count) {
    const std::lock_guard lock(mutex_);
    refusal_ = error;
    refusals_ = count;
}

void UmockdevDevice::setClaimedElsewhere(bool claimed) {
    const std::lock_guard lock(mutex_);
    claimedElsewhere_ = claimed;
}

void UmockdevDevice::onReset(int error, std::function<void()> hook) {
    const std::lock_guard lock(mutex_);
    resetError_ = error;
    resetHook_ = std::move(hook);
}

void UmockdevDevice::setConfiguration(std::optional<int> value) {
    const std::lock_guard lock(mutex_);
    configuration_ = value;
    umockdev_testbed_set_attribute(bus_.testbed, sysPath_.c_str(), "bConfigurationValue",
                                   value ? std::to_string(*value).c_str() : "");
}

void UmockdevDevice::refuseConfiguration(int error) {
    const std::lock_guard lock(mutex_);
    configurationError_ = error;
}

UmockdevDevice::Counts UmockdevDevice::counts() const {
    const std::lock_guard lock(mutex_);
    return counts_;
}

bool UmockdevDevice::waitUntil(const std::function<bool(const Counts&)>& reached) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kPatience, [&] { return reached(counts_); });
}

bool UmockdevDevice::waitForReadsInFlight(unsigned count) {
    return waitUntil([count](const Counts& counts) { return counts.readsInFlight == count; });
}

long UmockdevDevice::handle(Glue& glue, int& error) {
    const auto fail = [&error](int code) {
        error = code;
        return -1L;
    };
    if (glue.request == USBDEVFS_REAPURBNDELAY) return reap(glue, error);
    if (gone_) return fail(ENODEV);
    switch (glue.request) {
        case USBDEVFS_GET_CAPABILITIES:
            *static_cast<std::uint32_t*>(glue.pointer()) =
                USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_BULK_SCATTER_GATHER |
                USBDEVFS_CAP_NO_PACKET_SIZE_LIM | USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
            return 0;
        case USBDEVFS_CLAIMINTERFACE:
        case USBDEVFS_DISCONNECT_CLAIM:  // libusb's way after a reset
            if (claimedElsewhere_) return fail(EBUSY);
            ++counts_.claims;
            return 0;
        case USBDEVFS_RELEASEINTERFACE: return 0;
        case USBDEVFS_SETINTERFACE:
            counts_.alternate = static_cast<usbdevfs_setinterface*>(glue.pointer())->altsetting;
            return 0;
        case USBDEVFS_CLEAR_HALT:
            ++counts_.haltsCleared;
            halted_ = false;
            return 0;
        case USBDEVFS_RESET: ++counts_.resets; return resetError_ == 0 ? 0 : fail(resetError_);
        case USBDEVFS_SETCONFIGURATION: {
            if (configurationError_ != 0) return fail(configurationError_);
            configuration_ = *static_cast<int*>(glue.pointer());
            umockdev_testbed_set_attribute_int(bus_.testbed, sysPath_.c_str(), "bConfigurationValue",
                                               *configuration_);
            return 0;
        }
        case USBDEVFS_SUBMITURB: return submit(glue, error);
        case USBDEVFS_DISCARDURB: return discard(glue, error);
        default: return fail(ENOTTY);
    }
}

long UmockdevDevice::submit(Glue& glue, int& error) {
    Urb urb{static_cast<usbdevfs_urb*>(glue.pointer())};
    urb.native->actual_length = 0;
    if (urb.native->type == USBDEVFS_URB_TYPE_CONTROL) {
        ++counts_.controls;
        inFlight_.push_back(urb);
        if (!ignoreControl_) answerControl(inFlight_.back());
        return 0;
    }
    const auto size = static_cast<std::size_t>(urb.native->buffer_length);
    if (refusals_ != 0) {
        --refusals_;
        error = refusal_;
        return -1;
    }
    if (bytesInFlight_ + size > budget_) {
        ++counts_.refused;
        error = ENOMEM;
        return -1;
    }
    bytesInFlight_ += size;
    ++counts_.reads;
    ++counts_.readsInFlight;
    counts_.mostInFlight = std::max(counts_.mostInFlight, counts_.readsInFlight);
    if (counts_.order.size() < kOrderKept) {
        counts_.order.push_back(reinterpret_cast<std::uintptr_t>(urb.native->buffer));
    }
    inFlight_.push_back(urb);
    feed();
    return 0;
}

void UmockdevDevice::answerControl(Urb& urb) {
    const auto* const packet = static_cast<const std::uint8_t*>(urb.native->buffer);
    ControlRequest request{packet[0],
                           packet[1],
                           static_cast<std::uint16_t>(packet[2] | packet[3] << 8),
                           static_cast<std::uint16_t>(packet[4] | packet[5] << 8),
                           static_cast<std::uint16_t>(packet[6] | packet[7] << 8),
                           {}};
    const bool toHost = (request.requestType & 0x80) != 0;
    if (!toHost) request.data.assign(packet + 8, packet + 8 + request.length);
    ControlAnswer answer;
    if (request.requestType == kEndpointToHost && request.request == kGetStatus) {
        answer.data = {static_cast<std::uint8_t>(halted_ ? 1 : 0), 0};
    } else if (control_) {
        answer = control_(request);
    } else {
        answer.status = -EPIPE;
    }
    if (toHost) {
        const std::size_t length = std::min<std::size_t>(answer.data.size(), request.length);
        std::copy_n(answer.data.begin(), length, static_cast<std::uint8_t*>(urb.native->buffer) + 8);
        urb.native->actual_length = static_cast<int>(length);
    } else {
        urb.native->actual_length = static_cast<int>(answer.taken.value_or(request.length));
    }
    complete(inFlight_.end() - 1, answer.status);
}

// Gives what the device has to send to the reads that wait, in order.
void UmockdevDevice::feed() {
    for (;;) {
        const auto urb = std::ranges::find_if(
            inFlight_, [](const Urb& candidate) { return candidate.native->type == USBDEVFS_URB_TYPE_BULK; });
        if (urb == inFlight_.end() || halted_) return;
        auto& native = *urb->native;
        const auto size = static_cast<std::size_t>(native.buffer_length);
        if (!failures_.empty()) {
            const Failure failure = failures_.front();
            failures_.pop_front();
            native.actual_length = static_cast<int>(failure.bytesBefore);
            complete(urb, failure.status);
            if (failure.status == -EPIPE) halted_ = true;
        } else if (endless_) {
            native.actual_length = native.buffer_length;
            complete(urb, 0);
        } else if (!transfers_.empty()) {
            Transfer& transfer = transfers_.front();
            const std::size_t length = std::min(size, transfer.data.size() - transfer.sent);
            std::copy_n(transfer.data.begin() + static_cast<std::ptrdiff_t>(transfer.sent), length,
                        static_cast<std::uint8_t*>(native.buffer));
            transfer.sent += length;
            native.actual_length = static_cast<int>(length);
            // A read that is filled to its size ends without having seen the short packet.
            if (length < size) transfers_.pop_front();
            complete(urb, 0);
        } else {
            return;
        }
    }
}

void UmockdevDevice::complete(std::deque<Urb>::iterator urb, int status) {
    urb->native->status = status;
    if (urb->native->type == USBDEVFS_URB_TYPE_BULK) {
        --counts_.readsInFlight;
        bytesInFlight_ -= static_cast<std::size_t>(urb->native->buffer_length);
    }
    done_.push_back(*urb);
    inFlight_.erase(urb);
    showReady();
}

void UmockdevDevice::showReady() {
    const bool ready = !done_.empty();
    if (ready == readyShown_) return;
    readyShown_ = ready;
    char byte = 0;
    [[maybe_unused]] const ssize_t moved = ready ? read(fifo_, &byte, 1) : write(fifo_, &byte, 1);
}

long UmockdevDevice::reap(Glue& glue, int& error) {
    if (done_.empty()) {
        error = gone_ ? ENODEV : EAGAIN;
        return -1;
    }
    *static_cast<void**>(glue.pointer()) = done_.front().native;
    done_.pop_front();
    showReady();
    return 0;
}

long UmockdevDevice::discard(Glue& glue, int& error) {
    const auto* const wanted = static_cast<usbdevfs_urb*>(glue.pointer());
    const auto urb = std::ranges::find_if(
        inFlight_, [wanted](const Urb& candidate) { return candidate.native == wanted; });
    if (urb == inFlight_.end()) {
        error = EINVAL;
        return -1;
    }
    ++counts_.discarded;
    complete(urb, -ENOENT);
    return 0;
}

}  // namespace tavra::test
