// Virtual cameras for tests, driven through the exported operations.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "base/little_endian.h"
#include "platform/event.h"
#include "support/process.h"
#include "tavra/tavra_usbd.h"

namespace tavra::usbd::test {

// Makes the cameras of the list the only ones, freshly powered up.
inline void useCameras(const std::string& list) {
    tavra::test::setEnvironment("TAVRA_VIRTUAL_CAMERAS", "");
    ASSERT_EQ(UsbOpenByIndex(0), 0u) << "a real camera is connected, or the list of before is still in force";
    tavra::test::setEnvironment("TAVRA_VIRTUAL_CAMERAS", list);
}

// An open camera.
class Camera {
  public:
    explicit Camera(std::uint32_t index = 0) : handle_(UsbOpenByIndex(index)) {}
    ~Camera() { close(); }
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    TavraUsbDevice handle() const { return handle_; }
    bool open() const { return handle_ != 0; }
    void close() {
        if (handle_ != 0) UsbClose(handle_);
        handle_ = 0;
    }

    // Bytes of a request to the host: empty when it failed.
    std::vector<std::uint8_t> get(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                                  std::uint16_t length) {
        std::vector<std::uint8_t> bytes(length);
        std::uint32_t count = 0;
        const bool good =
            UsbControlTransfer(handle_, 0xC0, request, value, index, length, bytes.data(), &count) != 0;
        bytes.resize(good ? count : 0);
        return bytes;
    }
    bool set(std::uint8_t request, std::uint16_t value, std::uint16_t index,
             std::vector<std::uint8_t> bytes) {
        std::uint32_t count = 0;
        const auto length = static_cast<std::uint16_t>(bytes.size());
        return UsbControlTransfer(handle_, 0x40, request, value, index, length, bytes.data(), &count) != 0 &&
               count == length;
    }

    std::uint16_t status(std::uint16_t address) {
        const auto bytes = get(128, address, 0, 2);
        return bytes.size() == 2 ? loadLe16(bytes.data()) : 0xDEAD;
    }
    bool setStatus(std::uint16_t address, std::uint16_t value) {
        return set(128, address, 0,
                   {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)});
    }

    // Register pages, by the descriptors as a host reads them.
    std::vector<std::uint8_t> registers(std::uint8_t selector, std::uint32_t address, std::uint16_t size) {
        const std::uint32_t word = address << 8 | selector;
        return get(130, static_cast<std::uint16_t>(word), static_cast<std::uint16_t>(word >> 16), size);
    }
    std::uint32_t page(std::uint32_t number, std::uint32_t offset) {
        const auto bytes = registers(1, pageBase(number) + offset, 4);
        return bytes.size() == 4 ? loadLe32(bytes.data()) : 0xDEADBEEF;
    }
    bool setPage(std::uint32_t number, std::uint32_t offset, std::uint32_t value) {
        const std::uint32_t word = (pageBase(number) + offset) << 8 | 1;
        std::vector<std::uint8_t> bytes(4);
        storeLe32(bytes.data(), value);
        return set(130, static_cast<std::uint16_t>(word), static_cast<std::uint16_t>(word >> 16), bytes);
    }
    std::uint32_t pageBase(std::uint32_t number) {
        const auto bytes = registers(1, 4 + 4 * number, 4);
        return bytes.size() == 4 ? loadLe32(bytes.data()) & 0xFFFFFF : 0;
    }

  private:
    TavraUsbDevice handle_;
};

// One read with its memory and event.
class Read {
  public:
    explicit Read(std::uint32_t size) : bytes(size, 0xEE) { record_.event = event.native(); }

    std::uint32_t start(const Camera& camera) {
        EXPECT_EQ(
            UsbStartRead(camera.handle(), bytes.data(), static_cast<std::uint32_t>(bytes.size()), &record_),
            0);
        return UsbGetLastError();
    }
    // Bytes read, or the error number with failed set.
    std::uint32_t finish(const Camera& camera) {
        std::uint32_t count = 0;
        failed = UsbGetReadResult(camera.handle(), &record_, &count, 1) == 0;
        return failed ? UsbGetLastError() : count;
    }
    std::uint32_t look(const Camera& camera) {
        std::uint32_t count = 0;
        failed = UsbGetReadResult(camera.handle(), &record_, &count, 0) == 0;
        return failed ? UsbGetLastError() : count;
    }

    platform::Event event{platform::Event::Reset::Manual};
    std::vector<std::uint8_t> bytes;
    bool failed = false;

  private:
    TavraUsbRead record_{};
};

// The next transfer of the stream, whole: reads of one size until one comes short. Empty after an error.
inline std::vector<std::uint8_t> readTransfer(const Camera& camera, std::uint32_t readSize = 65536) {
    std::vector<std::uint8_t> all;
    for (;;) {
        Read read(readSize);
        if (read.start(camera) != 997) return {};
        const std::uint32_t count = read.finish(camera);
        if (read.failed) return {};
        all.insert(all.end(), read.bytes.begin(), read.bytes.begin() + count);
        if (count < readSize) return all;
    }
}

// Pixels of a frame with a header of 64 bytes, and their mean as bytes.
inline std::vector<std::uint8_t> rawOf(const std::vector<std::uint8_t>& frame) {
    EXPECT_GT(frame.size(), 64u);
    return {frame.begin() + std::min<std::ptrdiff_t>(64, std::ssize(frame)), frame.end()};
}
inline double meanOf(const std::vector<std::uint8_t>& raw) {
    return std::accumulate(raw.begin(), raw.end(), 0.0) / static_cast<double>(raw.size());
}

inline std::uint32_t numberOf(const std::vector<std::uint8_t>& frame) {
    return loadLe32(&frame[12]);
}

}  // namespace tavra::usbd::test
