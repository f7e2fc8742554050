// A USB device that exists only for the real libusb: sysfs, udev events and the ioctls of its device node, by
// umockdev.
//
// A test program runs under `umockdev-wrapper`. It makes one UmockdevBus, plugs UmockdevDevices into it, and
// looks at them through libusb as if they were there. The device answers on umockdev's thread; every
// operation here may be called from any thread. What a test waits for it waits for with the wait...
// operations, which give up after ten seconds.
//
// The kernel's part is modelled as far as the tests need it: transfers end with a short packet, reads
// complete in order, a budget of bytes in flight, a halted endpoint, cancelling, and a device that goes away
// with reads in flight.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "support/usb_descriptors.h"

namespace tavra::test {

// One control request as the device sees it.
struct ControlRequest {
    std::uint8_t requestType;
    std::uint8_t request;
    std::uint16_t value;
    std::uint16_t index;
    std::uint16_t length;
    Bytes data;  // for requests to the device
};

struct ControlAnswer {
    int status = 0;                      // the URB's: 0 or a negative errno, -EPIPE for a stall
    Bytes data;                          // for requests to the host; cut to the length asked for
    std::optional<std::size_t> taken{};  // for requests to the device: bytes accepted, all unless set
};

// The test bed: one at a time in a process. Has a root hub on bus 1 and a hub at its port 2.
class UmockdevBus {
  public:
    UmockdevBus();
    ~UmockdevBus();
    UmockdevBus(const UmockdevBus&) = delete;
    UmockdevBus& operator=(const UmockdevBus&) = delete;

    struct Native;
    Native& native() { return *native_; }

  private:
    std::unique_ptr<Native> native_;
};

struct DeviceOptions {
    std::string name = "1-1";  // the kernel's: bus, port, ports of hubs
    unsigned bus = 1;
    unsigned number = 5;                  // on the bus, must be free
    std::optional<int> configuration{1};  // none: not configured
    Bytes descriptors = allDescriptors({});
};

class UmockdevDevice {
  public:
    using ControlHandler = std::function<ControlAnswer(const ControlRequest&)>;

    // Plugs the device in. libusb knows it a moment later.
    UmockdevDevice(UmockdevBus& bus, DeviceOptions options);
    ~UmockdevDevice();  // as unplug
    UmockdevDevice(const UmockdevDevice&) = delete;
    UmockdevDevice& operator=(const UmockdevDevice&) = delete;

    // Pulls the cable: reads in flight end, every later request finds no device.
    void unplug();

    // Answers control requests other than those that the model answers itself (GET_STATUS of the endpoint).
    // Runs on umockdev's thread.
    void onControl(ControlHandler handler);
    // Control requests are not answered until the host gives up.
    void ignoreControl(bool ignore);

    // Queues one transfer of the bulk endpoint, ended by a short packet (an empty one where it is needed).
    void send(Bytes transfer);
    // From now on every read is filled to its size at once.
    void sendEndlessly();
    // The next read that is waiting, or that comes, ends with this URB status. -EPIPE halts the endpoint.
    void failNextRead(int status, std::size_t bytesBefore = 0);
    void haltEndpoint();

    // Most bytes of reads in flight; a read above it is refused with ENOMEM. Raising it alone makes nothing
    // happen.
    void setBudget(std::size_t bytes);
    // What the next submissions of reads answer (an errno) instead of being accepted.
    void refuseReads(int error, unsigned count);
    // The interface belongs to somebody else.
    void setClaimedElsewhere(bool claimed);
    // errno of USBDEVFS_RESET; 0: it works. `onReset` is called first.
    void onReset(int error, std::function<void()> onReset = {});
    void setConfiguration(std::optional<int> value);  // what sysfs shows
    // errno of USBDEVFS_SETCONFIGURATION; without one it takes effect.
    void refuseConfiguration(int error);

    struct Counts {
        unsigned reads = 0;          // accepted
        unsigned refused = 0;        // with ENOMEM
        unsigned readsInFlight = 0;  // not completed yet
        unsigned mostInFlight = 0;
        unsigned discarded = 0;
        unsigned controls = 0;
        unsigned haltsCleared = 0;
        unsigned resets = 0;
        unsigned claims = 0;
        unsigned alternate = 0;
        std::vector<std::uint64_t> order;  // buffer addresses of accepted reads, in order (the first 1,000)
    };
    Counts counts() const;

    // False: it did not come to that within ten seconds.
    bool waitUntil(const std::function<bool(const Counts&)>& reached);
    bool waitForReadsInFlight(unsigned count);

  private:
    struct Urb;
    struct Glue;

    // All with mutex_ held.
    long handle(Glue& glue, int& error);
    long submit(Glue& glue, int& error);
    long reap(Glue& glue, int& error);
    long discard(Glue& glue, int& error);
    void answerControl(Urb& urb);
    void feed();
    void complete(std::deque<Urb>::iterator urb, int status);
    void showReady();

    UmockdevBus::Native& bus_;
    const DeviceOptions options_;
    std::string node_;
    std::string sysPath_;
    int fifo_ = -1;
    void* ioctls_ = nullptr;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    ControlHandler control_;
    unsigned clients_ = 0;  // open files of the device node
    bool ignoreControl_ = false;
    bool gone_ = false;
    bool endless_ = false;
    bool halted_ = false;
    bool readyShown_ = false;
    bool claimedElsewhere_ = false;
    std::optional<int> configuration_;
    std::size_t budget_ = SIZE_MAX;
    std::size_t bytesInFlight_ = 0;
    int refusal_ = 0;
    unsigned refusals_ = 0;
    int resetError_ = 0;
    int configurationError_ = 0;
    std::function<void()> resetHook_;
    struct Failure {
        int status;
        std::size_t bytesBefore;
    };
    std::deque<Failure> failures_;
    struct Transfer {
        Bytes data;
        std::size_t sent = 0;
    };
    std::deque<Transfer> transfers_;
    std::deque<Urb> inFlight_;
    std::deque<Urb> done_;
    Counts counts_;
};

}  // namespace tavra::test
