// Exported operations: control transfers and what is made of them.
#include <string_view>

#include "export_call.h"
#include "hex_image.h"
#include "operations.h"
#include "tavra/tavra_usbd.h"

using namespace tavra::usbd;
using wire::MemorySpace;

namespace {

// Runs an operation that counts bytes; the count is stored after a failure too.
template <typename Work>
int32_t counted(TavraUsbDevice device, uint32_t* transferred, Work work) noexcept {
    std::uint32_t count = 0;
    const ErrorCode result = onDevice(device, [&](Device& d) { return work(d, count); });
    store(transferred, count);
    return report(result);
}

int32_t readSpace(TavraUsbDevice device, MemorySpace space, uint32_t first, uint32_t last, void* buffer,
                  uint32_t* transferred) {
    return counted(device, transferred, [&](Device& d, std::uint32_t& count) {
        return readMemory(d, space, first, last, buffer, count);
    });
}

int32_t writeSpace(TavraUsbDevice device, MemorySpace space, uint32_t first, uint32_t last,
                   const void* buffer, uint32_t* transferred) {
    return counted(device, transferred, [&](Device& d, std::uint32_t& count) {
        return writeMemory(d, space, first, last, buffer, count);
    });
}

int32_t readBus(TavraUsbDevice device, const I2cTarget& target, uint16_t count, void* buffer,
                uint32_t* transferred) {
    return counted(device, transferred,
                   [&](Device& d, std::uint32_t& done) { return readI2c(d, target, count, buffer, done); });
}

int32_t writeBus(TavraUsbDevice device, const I2cTarget& target, uint16_t count, const void* buffer,
                 uint32_t* transferred) {
    return counted(device, transferred,
                   [&](Device& d, std::uint32_t& done) { return writeI2c(d, target, count, buffer, done); });
}

}  // namespace

int32_t UsbControlTransfer(TavraUsbDevice device, uint8_t requestType, uint8_t request, uint16_t value,
                           uint16_t index, uint16_t length, void* data, uint32_t* transferred) {
    return counted(device, transferred, [&](Device& d, std::uint32_t& count) {
        if (data == nullptr && length > 0) return error::kInvalidArgument;
        const ControlSetup setup{requestType, request, value, index};
        return d.controlTransfer(setup, {static_cast<std::uint8_t*>(data), length}, count);
    });
}

int32_t UsbReadI2CWord(TavraUsbDevice device, uint8_t bus, uint8_t address, uint16_t reg, uint16_t count,
                       void* buffer, uint32_t* transferred) {
    return readBus(device, {wire::kI2c16BitRegister, bus, address, reg}, count, buffer, transferred);
}

int32_t UsbWriteI2CWord(TavraUsbDevice device, uint8_t bus, uint8_t address, uint16_t reg, uint16_t count,
                        const void* buffer, uint32_t* transferred) {
    return writeBus(device, {wire::kI2c16BitRegister, bus, address, reg}, count, buffer, transferred);
}

int32_t UsbReadI2CByte(TavraUsbDevice device, uint8_t bus, uint8_t address, uint8_t reg, uint8_t count,
                       void* buffer, uint32_t* transferred) {
    return readBus(device, {wire::kI2c8BitRegister, bus, address, reg}, count, buffer, transferred);
}

int32_t UsbWriteI2CByte(TavraUsbDevice device, uint8_t bus, uint8_t address, uint8_t reg, uint8_t count,
                        const void* buffer, uint32_t* transferred) {
    return writeBus(device, {wire::kI2c8BitRegister, bus, address, reg}, count, buffer, transferred);
}

int32_t UsbReadControllerMemory(TavraUsbDevice device, uint32_t first, uint32_t last, void* buffer,
                                uint32_t* transferred) {
    return readSpace(device, MemorySpace::Controller, first, last, buffer, transferred);
}

int32_t UsbWriteControllerMemory(TavraUsbDevice device, uint32_t first, uint32_t last, const void* buffer,
                                 uint32_t* transferred) {
    return writeSpace(device, MemorySpace::Controller, first, last, buffer, transferred);
}

int32_t UsbReadMemory(TavraUsbDevice device, uint32_t first, uint32_t last, void* buffer,
                      uint32_t* transferred) {
    return readSpace(device, MemorySpace::NonVolatile, first, last, buffer, transferred);
}

int32_t UsbWriteMemory(TavraUsbDevice device, uint32_t first, uint32_t last, const void* buffer,
                       uint32_t* transferred) {
    return writeSpace(device, MemorySpace::NonVolatile, first, last, buffer, transferred);
}

int32_t UsbReadSetupMemory(TavraUsbDevice device, uint32_t first, uint32_t last, void* buffer,
                           uint32_t* transferred) {
    return readSpace(device, MemorySpace::Setup, first, last, buffer, transferred);
}

int32_t UsbWriteSetupMemory(TavraUsbDevice device, uint32_t first, uint32_t last, const void* buffer,
                            uint32_t* transferred) {
    return writeSpace(device, MemorySpace::Setup, first, last, buffer, transferred);
}

int32_t UsbDownloadFirmware(TavraUsbDevice device, const uint8_t* image, const uint8_t* mask, uint32_t length,
                            uint32_t* result) {
    return counted(device, result, [&](Device& d, std::uint32_t& taken) {
        if (image == nullptr || length == 0) return error::kInvalidArgument;
        return downloadFirmware(d, {image, length}, mask, taken);
    });
}

int32_t UsbParseHexImage(const char* text, uint32_t textLength, uint8_t* image, uint8_t* mask,
                         uint32_t capacity, uint32_t* length) {
    std::uint32_t used = 0;
    const ErrorCode result = guarded([&] {
        if (text == nullptr || image == nullptr || mask == nullptr) return error::kInvalidArgument;
        return parseHexImage(std::string_view(text, textLength), {image, capacity}, {mask, capacity}, used);
    });
    store(length, used);
    return report(result);
}
