// An open camera of the double, and the requests that tests expect of it, as they are on the wire.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "camera/common_param.h"
#include "support/usb_double/usb_double_fixture.h"
#include "tavra/tavra_api.h"

namespace tavra::test {

inline Bytes le16(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)};
}
inline Bytes le32(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}

// Requests by what they are for.
namespace request {
inline ControlTransfer identity() {
    return toHost(17, 0, 0, 64);
}
inline ControlTransfer readScan(std::uint16_t length = 64) {
    return toHost(18, 0, 0, length);
}
inline ControlTransfer readBits() {
    return toHost(19, 0, 0, 6);
}
inline ControlTransfer readExposure() {
    return toHost(33, 0, 0, 64);
}
inline ControlTransfer readClock() {
    return toHost(34, 0, 0, 10);
}
inline ControlTransfer fourWords() {
    return toHost(35, 0, 0, 64);
}
inline ControlTransfer readStatus(std::uint16_t address, unsigned words = 1, std::uint16_t index = 0) {
    return toHost(128, address, index, static_cast<std::uint16_t>(2 * words));
}
inline ControlTransfer writeStatus(std::uint16_t address, Bytes data, std::uint16_t index = 0) {
    return toDevice(128, address, index, std::move(data));
}
inline ControlTransfer readDigitalGain() {
    return readStatus(20);
}
inline ControlTransfer apply() {
    return writeStatus(80, {1, 0});
}
inline ControlTransfer readRegister(std::uint8_t selector, std::uint32_t address, std::uint16_t size = 4) {
    const std::uint32_t word = address << 8 | selector;
    return toHost(130, static_cast<std::uint16_t>(word), static_cast<std::uint16_t>(word >> 16), size);
}
inline ControlTransfer writeRegister(std::uint8_t selector, std::uint32_t address, Bytes data) {
    const std::uint32_t word = address << 8 | selector;
    return toDevice(130, static_cast<std::uint16_t>(word), static_cast<std::uint16_t>(word >> 16),
                    std::move(data));
}
// Pages of DoubleCamera::addRegisterPages.
inline std::uint32_t pageAddress(std::uint32_t page, std::uint32_t offset) {
    return 0x1000 * (page + 1) + offset;
}
inline ControlTransfer readPage(std::uint32_t page, std::uint32_t offset) {
    return readRegister(1, pageAddress(page, offset));
}
inline ControlTransfer writePage(std::uint32_t page, std::uint32_t offset, std::uint32_t value) {
    return writeRegister(1, pageAddress(page, offset), le32(value));
}
}  // namespace request

class CameraTest : public UsbDoubleTest {
  protected:
    using Traffic = std::vector<ControlTransfer>;

    ~CameraTest() override { close(); }

    // Opens the camera that was added first, one of the default kind if there is none.
    void open() {
        if (usb.cameraCount() == 0) usb.addCamera();
        handle = Tavra_Open(0);
        ASSERT_NE(handle, nullptr) << std::hex << Tavra_GetLastError(nullptr);
        usb.forgetTraffic();
        record().lastError = 0;
    }
    void open(const DoubleCamera& camera) {
        usb.addCamera(camera);
        open();
    }
    void close() {
        if (handle != nullptr) Tavra_Close(handle);
        handle = nullptr;
    }

    TAVRA_COMMON_PARAM& record() { return *static_cast<TAVRA_COMMON_PARAM*>(handle); }
    std::uint32_t lastError() const { return Tavra_GetLastError(handle); }

    // Requests since the last look.
    Traffic traffic() {
        Traffic requests = usb.requests();
        usb.forgetTraffic();
        return requests;
    }

    // Something that counts as a stream, until close or the end of its body.
    void runStream() {
        record().stopEvent.reset();
        ASSERT_TRUE(record()
                        .captureThread
                        .start("test-stream", platform::ThreadPriority::Normal,
                               [this] { record().stopEvent.wait(platform::kWaitForever); })
                        .ok());
    }
    void endStream() {
        record().stopEvent.set();
        record().captureThread.ended().wait(platform::kWaitForever);
    }

    // A call that fails with this code.
    void expectFailure(TavraBool result, std::uint32_t code) {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(lastError(), code);
        record().lastError = 0;
    }
    void expectSuccess(TavraBool result) {
        EXPECT_EQ(result, 1);
        EXPECT_EQ(lastError(), 0u);
        record().lastError = 0;
    }

    TavraHandle handle = nullptr;
};

// A camera of one of the four oldest types.
inline DoubleCamera legacyCamera(std::uint16_t type = 1541) {
    DoubleCamera camera;
    camera.setIdentity16(4, type);
    return camera;
}

inline DoubleCamera pageCamera() {
    DoubleCamera camera;
    camera.addRegisterPages();
    return camera;
}

using testing::ElementsAre;
using testing::IsEmpty;

}  // namespace tavra::test
