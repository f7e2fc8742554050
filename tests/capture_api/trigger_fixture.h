// An open camera for the tests of trigger, exposure mode and I/O pins, and the requests that they expect.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "support/usb_double/usb_double_fixture.h"
#include "tavra/tavra_api.h"

namespace tavra::test {

// Bits of the capability words that decide about triggers.
inline constexpr unsigned kSeparateSetsWord = 18, kSeparateSetsBit = 12;

class TriggerTest : public UsbDoubleTest {
  protected:
    ~TriggerTest() override {
        if (handle != nullptr) Tavra_Close(handle);
    }

    // Selector 1 exists with word 16 bit 14, selectors 2 and 3 with word 0 bit 1.
    DoubleCamera& describe() {
        DoubleCamera& camera = usb.addCamera();
        camera.setCapability(16, 14);
        camera.setCapability(0, 1);
        return camera;
    }

    void open() {
        handle = Tavra_Open(0);
        ASSERT_NE(handle, nullptr);
        usb.forgetTraffic();
    }

    void openWordCamera(std::uint32_t word) {
        describe();
        setWord(word);
        open();
    }

    void openRegisterCamera(bool separateSets) {
        DoubleCamera& camera = describe();
        camera.addRegisterPages();
        camera.setCapability(kSeparateSetsWord, kSeparateSetsBit, separateSets);
        open();
    }

    void setWord(std::uint32_t word) {
        usb.camera().status(48) = static_cast<std::uint16_t>(word);
        usb.camera().status(49) = static_cast<std::uint16_t>(word >> 16);
    }
    std::uint32_t word() { return usb.camera().status(48) | std::uint32_t{usb.camera().status(49)} << 16; }
    std::uint32_t& acquisition(std::uint32_t offset) { return usb.camera().pageRegister(2, offset); }

    std::uint32_t lastError() const { return Tavra_GetLastError(handle); }

    // Requests as the wire has them.
    static Bytes word16(std::uint16_t value) {
        return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)};
    }
    static Bytes word32(std::uint32_t value) {
        return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
                static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
    }
    static ControlTransfer readStatus(std::uint16_t address, std::uint16_t words) {
        return toHost(128, address, 0, static_cast<std::uint16_t>(2 * words));
    }
    static ControlTransfer writeStatus(std::uint16_t address, Bytes data) {
        return toDevice(128, address, 0, std::move(data));
    }
    static ControlTransfer command(std::uint16_t value) { return writeStatus(80, word16(value)); }
    static ControlTransfer readScan() { return toHost(18, 0, 0, 64); }
    static ControlTransfer clearBuffer() { return toDevice(32, 0, 0); }
    // Register `offset` of the double's page n, which starts at 0x1000 x (n + 1); selector 1.
    static std::uint32_t registerWord(std::uint32_t page, std::uint32_t offset) {
        return (0x1000 * (page + 1) + offset) << 8 | 1;
    }
    static ControlTransfer readRegister(std::uint32_t page, std::uint32_t offset) {
        const std::uint32_t place = registerWord(page, offset);
        return toHost(130, static_cast<std::uint16_t>(place), static_cast<std::uint16_t>(place >> 16), 4);
    }
    static ControlTransfer writeRegister(std::uint32_t page, std::uint32_t offset, std::uint32_t value) {
        const std::uint32_t place = registerWord(page, offset);
        return toDevice(130, static_cast<std::uint16_t>(place), static_cast<std::uint16_t>(place >> 16),
                        word32(value));
    }

    // The next write of the command word fails, or is over after so many bytes.
    void failCommand(std::optional<std::uint32_t> transferred = std::nullopt) {
        UsbDouble::Fault fault;
        fault.request = 128;
        fault.value = 80;
        fault.transferred = transferred;
        usb.addFault(fault);
    }

    using Traffic = std::vector<ControlTransfer>;
    // What went over the wire since the last look.
    Traffic traffic() {
        Traffic requests = usb.requests();
        usb.forgetTraffic();
        return requests;
    }

    TavraHandle handle = nullptr;
};

}  // namespace tavra::test
