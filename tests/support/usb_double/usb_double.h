// A scripted camera as a USB access library of its own.
//
// The double is a shared library that exports every operation of tavra_usbd.h. A test program links it and
// makes it the library that libtavra loads (UsbDoubleTest of usb_double_fixture.h does that), describes
// cameras, and looks afterwards at the exact traffic. Nothing happens by itself: cameras answer from plain
// tables.
//
// Descriptions (DoubleCamera) are changed only while nothing runs beside the test's thread, or inside
// UsbDouble::locked. Every other function may be called from any thread.
#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tavra/tavra_usbd.h"

#if defined(_WIN32)
#if defined(TAVRA_BUILDING_USB_DOUBLE)
#define USB_DOUBLE_API __declspec(dllexport)
#else
#define USB_DOUBLE_API __declspec(dllimport)
#endif
#else
#define USB_DOUBLE_API __attribute__((visibility("default")))
#endif

namespace tavra::test {

using Bytes = std::vector<std::uint8_t>;

// One control transfer as it was asked for. `data` is what was sent, or what the camera answered.
struct ControlTransfer {
    std::uint8_t requestType = 0;
    std::uint8_t request = 0;
    std::uint16_t value = 0;
    std::uint16_t index = 0;
    std::uint16_t length = 0;
    Bytes data;

    bool operator==(const ControlTransfer&) const = default;
};

// A transfer to the device with its data, and one to the host with the answer left out of the comparison
// (compare with UsbDouble::requests).
USB_DOUBLE_API ControlTransfer toDevice(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                                        Bytes data = {});
USB_DOUBLE_API ControlTransfer toHost(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                                      std::uint16_t length);
USB_DOUBLE_API void PrintTo(const ControlTransfer& transfer, std::ostream* out);

// Any other operation, in the order of the calls: its name and the numbers it was given (never the device).
struct OperationCall {
    std::string name;
    std::vector<std::uint64_t> arguments;

    bool operator==(const OperationCall&) const = default;
};
USB_DOUBLE_API void PrintTo(const OperationCall& call, std::ostream* out);

// What one bulk transfer of the camera brings. A transfer longer than a read goes on in the next read; one
// that is shorter ends the read short.
struct BulkTransfer {
    Bytes bytes;
    std::uint32_t error = 0;  // non-zero: the read fails with this code
    bool hold = false;        // nothing behind it is delivered until releaseReads()
};

// One camera. Everything that it answers is here.
struct DoubleCamera {
    USB_DOUBLE_API DoubleCamera();  // a BGGR camera of 640 x 480 without register pages; see the definition

    // Identity block by byte offset (little endian), capability bits, and status words by (index, address).
    USB_DOUBLE_API void setIdentity16(std::size_t offset, std::uint16_t value);
    USB_DOUBLE_API void setIdentity32(std::size_t offset, std::uint32_t value);
    USB_DOUBLE_API void setCapability(unsigned word, unsigned bit, bool set = true);
    USB_DOUBLE_API void setCapabilityWord(unsigned word, std::uint16_t value);
    std::uint16_t& status(std::uint16_t address, std::uint16_t index = 0) {
        return statusWords[{index, address}];
    }

    // Scan record by byte offset, little endian; grows to what is asked for.
    USB_DOUBLE_API void setScan16(std::size_t offset, std::uint16_t value);
    USB_DOUBLE_API void setScan32(std::size_t offset, std::uint32_t value);
    // Appends regions 1 to count - 1 to the record, all zero, and declares count and length.
    USB_DOUBLE_API void offerRegions(std::uint32_t count);

    // Function 64 and a table of 28 pages of `size` bytes each; page n starts at 0x1000 x (n + 1).
    USB_DOUBLE_API void addRegisterPages(std::uint32_t size = 0x400);
    std::uint32_t& pageRegister(std::uint32_t page, std::uint32_t offset) {
        return registers[{1, 0x1000 * (page + 1) + offset}];
    }

    std::u16string path;
    std::uint32_t functionAddress = 5;
    std::uint32_t openedByOthers = 0;
    std::uint32_t configurationFailures = 0;  // so many checks fail, then they succeed
    std::array<std::uint32_t, 4> driverVersion{0x30000, 5, 0, 0};
    std::uint32_t driverVersionError = 0;
    std::uint32_t deviceControlError = 0;
    std::uint32_t configDescriptorError = 0;
    Bytes configDescriptor;

    Bytes identity;  // any length; 64 is right
    std::map<std::pair<std::uint16_t, std::uint16_t>, std::uint16_t> statusWords;
    std::map<std::pair<std::uint8_t, std::uint32_t>, std::uint32_t> registers;  // by (selector, byte address)
    Bytes scanRecord;
    std::uint32_t transferBits = 1;
    std::uint32_t clockMode = 0;
    std::uint32_t clock = 24545455;
    bool longClockReply = true;
    Bytes exposureBlock;
    Bytes words35;       // whole reply to request 35
    Bytes settingReply;  // reply to request 129

    Bytes memory;       // 1536 bytes
    Bytes setupMemory;  // 16 bytes
    std::uint32_t memoryError = 0;
    std::uint32_t setupMemoryError = 0;
    std::map<std::array<std::uint32_t, 3>, std::uint8_t> i2c;  // by (bus, device, register)
    std::uint32_t i2cError = 0;
    std::uint32_t firmwareResult = 0;

    // Firmware loads. One that succeeds keeps what came and gives the camera its new revision, or takes it
    // off the bus.
    std::deque<std::uint32_t>
        firmwareErrors;  // one for each UsbDownloadFirmware, 0: succeeds; empty: likewise
    Bytes firmware, firmwareMask;
    std::uint16_t loadedRevision = 16;
    bool goneWhenLoaded = false;

    // The stream.
    std::deque<std::uint32_t> beginReadErrors;  // one for each UsbBeginRead, 0: succeeds; empty: succeeds
    std::deque<std::uint32_t> startReadErrors;  // likewise for UsbStartRead
    bool canResumeRead = false;
    bool gone = false;  // everything fails with 1167; see UsbDouble::unplug

    // Owned by the double.
    struct PendingRead {
        TavraUsbRead* read;
        std::uint8_t* buffer;
        std::uint32_t size;
    };
    std::deque<BulkTransfer> bulk;
    std::size_t bulkTaken = 0;  // bytes of bulk.front() that earlier reads took
    std::deque<PendingRead> pending;
};

class UsbDouble {
  public:
    // No camera, no opening, no fault, no record.
    USB_DOUBLE_API void reset();

    // Appends a camera to the enumeration; the reference stays valid until reset.
    USB_DOUBLE_API DoubleCamera& addCamera(DoubleCamera camera = DoubleCamera());
    DoubleCamera& camera(std::size_t index = 0) { return cameras_.at(index); }
    // Error of an open behind the last camera.
    std::uint32_t endOfEnumerationError = 2;

    // UsbParseHexImage: keeps the text, and makes an image of four bytes 1, 2, 3, 4 of which the third is a
    // gap.
    std::deque<std::uint32_t> hexImageErrors;  // one for each call, 0: succeeds; empty: succeeds
    std::string hexText;

    // Runs with the double's lock held.
    template <typename Function>
    auto locked(Function function) {
        const std::lock_guard lock(mutex_);
        return function();
    }

    // The traffic since reset or forgetTraffic. transfers() has the answers, requests() has none, so that a
    // list of toDevice and toHost compares with it.
    USB_DOUBLE_API std::vector<ControlTransfer> transfers() const;
    USB_DOUBLE_API std::vector<ControlTransfer> requests() const;
    USB_DOUBLE_API std::vector<OperationCall> calls() const;
    USB_DOUBLE_API std::size_t openHandles() const;
    USB_DOUBLE_API void forgetTraffic();

    // Control transfers that go wrong. They count from the call on; `skip` matches pass before the first that
    // fails.
    static constexpr std::uint32_t kForever = 0xFFFFFFFF;
    struct Fault {
        std::optional<std::uint8_t> request;      // none: any
        std::optional<std::uint8_t> requestType;  // none: both directions
        std::optional<std::uint16_t> value;
        std::uint32_t skip = 0;
        std::uint32_t times = 1;
        std::uint32_t error = 31;                  // the transfer fails with this code, unless
        std::optional<std::uint32_t> transferred;  // it succeeds with so many bytes
    };
    USB_DOUBLE_API void addFault(const Fault& fault);
    USB_DOUBLE_API void failTransfer(std::uint32_t nth);  // from 0, whatever it asks
    USB_DOUBLE_API void failRequest(std::uint8_t request, std::uint32_t times = kForever);
    USB_DOUBLE_API void shortenRequest(std::uint8_t request, std::uint32_t transferred,
                                       std::uint32_t times = kForever);
    USB_DOUBLE_API void clearFaults();

    // The bulk stream of a camera. Reads that wait are completed at once.
    USB_DOUBLE_API void pushBulk(std::size_t camera, BulkTransfer transfer);
    USB_DOUBLE_API void releaseReads(std::size_t camera);
    USB_DOUBLE_API std::size_t pendingReads(std::size_t camera) const;
    // Waits until so many reads are in flight; false after ten seconds.
    USB_DOUBLE_API bool waitForPendingReads(std::size_t camera, std::size_t count);
    // The camera vanishes: reads in flight and everything after end with 1167.
    USB_DOUBLE_API void unplug(std::size_t camera);

    // Called by the exported operations; they hold the lock.
    struct Opening {
        std::size_t camera;
    };
    std::mutex& mutex() const { return mutex_; }
    DoubleCamera* find(TavraUsbDevice device);
    TavraUsbDevice open(std::size_t camera);
    bool close(TavraUsbDevice device);
    std::uint32_t openCount(const DoubleCamera& camera) const;
    std::size_t cameraCount() const { return cameras_.size(); }
    void record(const char* name, std::initializer_list<std::uint64_t> arguments);
    std::uint32_t control(DoubleCamera& camera, ControlTransfer& transfer, std::uint8_t* data,
                          std::uint32_t& transferred);
    std::uint32_t startRead(DoubleCamera& camera, const DoubleCamera::PendingRead& read);
    std::uint32_t readResult(std::unique_lock<std::mutex>& lock, TavraUsbRead* read, bool wait,
                             std::uint32_t& transferred);
    void cancelReads(DoubleCamera& camera, std::uint32_t error);
    // Gives each waiting read what the script has for it.
    void completeReads(DoubleCamera& camera);

  private:
    const Fault* matchFault(const ControlTransfer& transfer);
    void complete(DoubleCamera& camera, std::uint32_t error, std::uint32_t transferred);

    mutable std::mutex mutex_;
    std::condition_variable readsChanged_;
    std::deque<DoubleCamera> cameras_;
    std::map<TavraUsbDevice, Opening> openings_;
    TavraUsbDevice nextDevice_ = 0x100;
    std::vector<ControlTransfer> transfers_;
    std::vector<OperationCall> calls_;
    std::vector<Fault> faults_;
};

// The one of the process.
USB_DOUBLE_API UsbDouble& usbDouble();

// Makes libtavra load this library. Before the first use of libtavra in the process.
USB_DOUBLE_API void makeDoubleTheUsbAccessLibrary();

}  // namespace tavra::test
