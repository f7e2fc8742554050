// What the tests of real devices share: a bus, the source under test, and reads with their events.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "device.h"
#include "libusb/libusb_source.h"
#include "platform/event.h"
#include "support/umockdev_device.h"

namespace tavra::usbd {

// Looks again until it is so; the news of a device reach libusb on a thread of its own, which tells nobody.
template <typename Condition>
bool comesTrue(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        // Not what the test waits for: it only leaves the processor to those who bring the news.
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}

// One read as an application holds it. One that is in flight at its end takes all reads of its device with
// it: no test leaves the kernel with memory that is gone.
struct Read {
    explicit Read(std::size_t size = 4096) : buffer(size, 0xEE) { record.event = event.native(); }
    ~Read() {
        if (startedOn != nullptr && !signalled()) startedOn->endRead();
    }
    Read(const Read&) = delete;
    Read& operator=(const Read&) = delete;

    ErrorCode start(Device& device) {
        startedOn = &device;
        return device.startRead(buffer.data(), static_cast<std::uint32_t>(buffer.size()), record);
    }
    // Waits for the event, then asks without waiting, as the read thread of the camera library does.
    ErrorCode finish(Device& device) {
        EXPECT_TRUE(event.wait(10'000)) << "the event of the read was not set";
        return device.readResult(record, transferred, false);
    }
    bool signalled() const { return event.wait(0); }
    test::Bytes data() const { return {buffer.begin(), buffer.begin() + transferred}; }

    platform::Event event{platform::Event::Reset::Manual};
    TavraUsbRead record{};
    test::Bytes buffer;
    std::uint32_t transferred = 0xFFFF'FFFF;
    Device* startedOn = nullptr;
};

inline std::vector<std::unique_ptr<Read>> makeReads(std::size_t count, std::size_t size = 4096) {
    std::vector<std::unique_ptr<Read>> reads;
    for (std::size_t i = 0; i < count; ++i) reads.push_back(std::make_unique<Read>(size));
    return reads;
}

// Bytes that tell where they stand and which transfer they belong to.
inline test::Bytes pattern(std::size_t size, unsigned seed = 1) {
    test::Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(seed * 31 + i + i / 251);
    return bytes;
}

class LibusbTest : public testing::Test {
  protected:
    bool seesCameras(std::uint32_t count) {
        return comesTrue([&] { return source->enumerate() == count; });
    }

    // The first camera of the enumeration, open.
    std::unique_ptr<Device> openFirst() {
        EXPECT_TRUE(comesTrue([&] { return source->enumerate() > 0; }));
        ErrorCode error = 0xFFFF'FFFF;
        std::unique_ptr<Device> device = source->open(0u, error);
        EXPECT_EQ(error, 0u);
        return device;
    }

    test::UmockdevBus bus;
    std::unique_ptr<DeviceSource> source = makeLibusbSource();
};

// With one camera plugged and open.
class OpenCameraTest : public LibusbTest {
  protected:
    test::UmockdevDevice camera{bus, {}};
    std::unique_ptr<Device> device = openFirst();

    void SetUp() override { ASSERT_NE(device, nullptr); }
};

}  // namespace tavra::usbd
