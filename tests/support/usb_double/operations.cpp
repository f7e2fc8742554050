// The operations of tavra_usbd.h on the cameras of the double.
#include <algorithm>
#include <cstring>

#include "support/usb_double/double_platform.h"
#include "support/usb_double/usb_double.h"

namespace {

using namespace tavra::test;

constexpr std::uint32_t kInvalidHandle = 6;
constexpr std::uint32_t kFileNotFound = 2;
constexpr std::uint32_t kNotFunctioning = 31;
constexpr std::uint32_t kInsufficientBuffer = 122;
constexpr std::uint32_t kNotConnected = 1167;

int32_t give(std::uint32_t error) {
    if (error == 0) return 1;
    setDoubleError(error);
    return 0;
}

// Runs `operation(camera)`, which gives an error code, with the lock held.
template <typename Operation>
int32_t onCamera(TavraUsbDevice device, Operation operation) {
    const std::lock_guard lock(usbDouble().mutex());
    DoubleCamera* const camera = usbDouble().find(device);
    return give(camera == nullptr ? kInvalidHandle : operation(*camera));
}

TavraUsbDevice openAt(std::size_t index) {
    UsbDouble& usb = usbDouble();
    if (index >= usb.cameraCount()) {
        setDoubleError(usb.endOfEnumerationError);
        return 0;
    }
    if (usb.camera(index).gone) {
        setDoubleError(kNotConnected);
        return 0;
    }
    return usb.open(index);
}

TavraUsbDevice openPath(const std::u16string& path) {
    UsbDouble& usb = usbDouble();
    for (std::size_t i = 0; i < usb.cameraCount(); ++i) {
        if (usb.camera(i).path == path) return openAt(i);
    }
    setDoubleError(kFileNotFound);
    return 0;
}

// The next of the errors that were ordered, 0 behind the last.
std::uint32_t takeFront(std::deque<std::uint32_t>& errors) {
    if (errors.empty()) return 0;
    const std::uint32_t error = errors.front();
    errors.pop_front();
    return error;
}

// Bytes first to last of a memory, both inclusive.
std::uint32_t accessMemory(Bytes& memory, std::uint32_t error, std::uint32_t first, std::uint32_t last,
                           void* out, const void* in, std::uint32_t* transferred) {
    *transferred = 0;
    if (error != 0) return error;
    if (last < first || last >= memory.size()) return 87;
    const std::uint32_t size = last - first + 1;
    if (out != nullptr) std::memcpy(out, memory.data() + first, size);
    if (in != nullptr) std::memcpy(memory.data() + first, in, size);
    *transferred = size;
    return 0;
}

int32_t i2c(TavraUsbDevice device, const char* name, std::array<std::uint32_t, 4> place, void* out,
            const void* in, std::uint32_t* transferred) {
    return onCamera(device, [&](DoubleCamera& camera) {
        const auto [bus, address, reg, count] = place;
        usbDouble().record(name, {bus, address, reg, count});
        *transferred = 0;
        if (camera.i2cError != 0) return camera.i2cError;
        for (std::uint32_t i = 0; i < count; ++i) {
            std::uint8_t& cell = camera.i2c[{bus, address, reg + i}];
            if (out != nullptr) static_cast<std::uint8_t*>(out)[i] = cell;
            if (in != nullptr) cell = static_cast<const std::uint8_t*>(in)[i];
        }
        *transferred = count;
        return std::uint32_t{0};
    });
}

}  // namespace

extern "C" {

USB_DOUBLE_API TavraUsbDevice UsbOpenByIndex(uint32_t index) {
    const std::lock_guard lock(usbDouble().mutex());
    usbDouble().record("UsbOpenByIndex", {index});
    return openAt(index);
}

USB_DOUBLE_API TavraUsbDevice UsbOpenByIndexPath(uint32_t index, TavraWChar* path, uint32_t* pathBytes) {
    const std::lock_guard lock(usbDouble().mutex());
    usbDouble().record("UsbOpenByIndexPath", {index, *pathBytes});
    const TavraUsbDevice device = openAt(index);
    if (device == 0) return 0;
    const std::u16string& text = usbDouble().camera(index).path;
    const std::size_t needed = (text.size() + 1) * 2;
    if (needed > *pathBytes) {
        usbDouble().close(device);
        setDoubleError(kInsufficientBuffer);
        return 0;
    }
    std::memcpy(path, text.c_str(), needed);
    *pathBytes = static_cast<std::uint32_t>(needed);
    return device;
}

USB_DOUBLE_API TavraUsbDevice UsbOpenByPathW(const TavraWChar* path) {
    const std::lock_guard lock(usbDouble().mutex());
    usbDouble().record("UsbOpenByPathW", {});
    return openPath(path);
}

USB_DOUBLE_API TavraUsbDevice UsbOpenByPathA(const char* path) {
    const std::lock_guard lock(usbDouble().mutex());
    usbDouble().record("UsbOpenByPathA", {});
    return openPath(std::u16string(path, path + std::strlen(path)));
}

USB_DOUBLE_API int32_t UsbClose(TavraUsbDevice device) {
    const std::lock_guard lock(usbDouble().mutex());
    usbDouble().record("UsbClose", {});
    return give(usbDouble().close(device) ? 0 : kInvalidHandle);
}

USB_DOUBLE_API int32_t UsbGetDriverVersion(TavraUsbDevice device, uint32_t* majorMinor, uint32_t* build,
                                           uint32_t* word2, uint32_t* word3) {
    return onCamera(device, [&](DoubleCamera& camera) {
        usbDouble().record("UsbGetDriverVersion", {});
        if (camera.driverVersionError != 0) return camera.driverVersionError;
        *majorMinor = camera.driverVersion[0];
        *build = camera.driverVersion[1];
        *word2 = camera.driverVersion[2];
        *word3 = camera.driverVersion[3];
        return std::uint32_t{0};
    });
}

USB_DOUBLE_API int32_t UsbGetLibraryVersion(uint32_t* fileHigh, uint32_t* fileLow, uint32_t* productHigh,
                                            uint32_t* productLow) {
    *fileHigh = 0x10002;
    *fileLow = 0x30004;
    *productHigh = 0x50006;
    *productLow = 0x70008;
    return 1;
}

USB_DOUBLE_API int32_t UsbGetConfigDescriptor(TavraUsbDevice device, void* buffer, uint32_t size,
                                              uint32_t* length) {
    return onCamera(device, [&](DoubleCamera& camera) {
        usbDouble().record("UsbGetConfigDescriptor", {size});
        if (camera.configDescriptorError != 0) return camera.configDescriptorError;
        *length = std::min(size, static_cast<std::uint32_t>(camera.configDescriptor.size()));
        if (*length > 0) std::memcpy(buffer, camera.configDescriptor.data(), *length);
        return std::uint32_t{0};
    });
}

USB_DOUBLE_API int32_t UsbGetFunctionAddress(TavraUsbDevice device, uint32_t* address) {
    return onCamera(device, [&](DoubleCamera& camera) {
        *address = camera.functionAddress;
        return std::uint32_t{0};
    });
}

USB_DOUBLE_API int32_t UsbGetOpenCount(TavraUsbDevice device, uint32_t* count) {
    return onCamera(device, [&](DoubleCamera& camera) {
        *count = usbDouble().openCount(camera);
        return std::uint32_t{0};
    });
}

USB_DOUBLE_API int32_t UsbControlTransfer(TavraUsbDevice device, uint8_t requestType, uint8_t request,
                                          uint16_t value, uint16_t index, uint16_t length, void* data,
                                          uint32_t* transferred) {
    return onCamera(device, [&](DoubleCamera& camera) {
        ControlTransfer transfer{requestType, request, value, index, length, {}};
        return usbDouble().control(camera, transfer, static_cast<std::uint8_t*>(data), *transferred);
    });
}

USB_DOUBLE_API int32_t UsbReadI2CWord(TavraUsbDevice device, uint8_t bus, uint8_t address, uint16_t reg,
                                      uint16_t count, void* buffer, uint32_t* transferred) {
    return i2c(device, "UsbReadI2CWord", {bus, address, reg, count}, buffer, nullptr, transferred);
}

USB_DOUBLE_API int32_t UsbWriteI2CWord(TavraUsbDevice device, uint8_t bus, uint8_t address, uint16_t reg,
                                       uint16_t count, const void* buffer, uint32_t* transferred) {
    return i2c(device, "UsbWriteI2CWord", {bus, address, reg, count}, nullptr, buffer, transferred);
}

USB_DOUBLE_API int32_t UsbReadI2CByte(TavraUsbDevice device, uint8_t bus, uint8_t address, uint8_t reg,
                                      uint8_t count, void* buffer, uint32_t* transferred) {
    return i2c(device, "UsbReadI2CByte", {bus, address, reg, count}, buffer, nullptr, transferred);
}

USB_DOUBLE_API int32_t UsbWriteI2CByte(TavraUsbDevice device, uint8_t bus, uint8_t address, uint8_t reg,
                                       uint8_t count, const void* buffer, uint32_t* transferred) {
    return i2c(device, "UsbWriteI2CByte", {bus, address, reg, count}, nullptr, buffer, transferred);
}

USB_DOUBLE_API int32_t UsbReadControllerMemory(TavraUsbDevice, uint32_t, uint32_t, void*, uint32_t*) {
    return give(kNotFunctioning);
}

USB_DOUBLE_API int32_t UsbWriteControllerMemory(TavraUsbDevice, uint32_t, uint32_t, const void*, uint32_t*) {
    return give(kNotFunctioning);
}

USB_DOUBLE_API int32_t UsbDownloadFirmware(TavraUsbDevice device, const uint8_t* image, const uint8_t* mask,
                                           uint32_t length, uint32_t* result) {
    return onCamera(device, [&](DoubleCamera& camera) {
        usbDouble().record("UsbDownloadFirmware", {length});
        *result = camera.firmwareResult;
        if (camera.gone) return kNotConnected;
        if (const std::uint32_t error = takeFront(camera.firmwareErrors); error != 0) return error;
        camera.firmware.assign(image, image + length);
        camera.firmwareMask.assign(mask, mask + length);
        camera.setIdentity16(8, camera.loadedRevision);
        camera.gone = camera.goneWhenLoaded;
        return std::uint32_t{0};
    });
}

USB_DOUBLE_API int32_t UsbParseHexImage(const char* text, uint32_t textLength, uint8_t* image, uint8_t* mask,
                                        uint32_t capacity, uint32_t* length) {
    const std::lock_guard lock(usbDouble().mutex());
    usbDouble().record("UsbParseHexImage", {textLength, capacity});
    usbDouble().hexText.assign(text, textLength);
    if (const std::uint32_t error = takeFront(usbDouble().hexImageErrors); error != 0) return give(error);
    for (std::uint32_t i = 0; i < 4; ++i) {
        image[i] = static_cast<std::uint8_t>(i + 1);
        mask[i] = i == 2 ? 0 : 1;
    }
    *length = 4;
    return 1;
}

USB_DOUBLE_API int32_t UsbParseSecondImage(const uint8_t*, const uint8_t*, uint32_t, uint8_t*, uint32_t,
                                           uint32_t*) {
    return give(kNotFunctioning);
}

USB_DOUBLE_API int32_t UsbEndRead(TavraUsbDevice device) {
    return onCamera(device, [&](DoubleCamera& camera) {
        usbDouble().record("UsbEndRead", {});
        usbDouble().cancelReads(camera, 995);
        return std::uint32_t{0};
    });
}

USB_DOUBLE_API int32_t UsbBeginRead(TavraUsbDevice device) {
    return onCamera(device, [&](DoubleCamera& camera) {
        usbDouble().record("UsbBeginRead", {});
        if (camera.gone) return kNotConnected;
        return takeFront(camera.beginReadErrors);
    });
}

USB_DOUBLE_API int32_t UsbCanResumeRead(TavraUsbDevice device) {
    const std::lock_guard lock(usbDouble().mutex());
    const DoubleCamera* const camera = usbDouble().find(device);
    return camera != nullptr && camera->canResumeRead ? 1 : 0;
}

USB_DOUBLE_API int32_t UsbCheckConfiguration(TavraUsbDevice device, uint32_t* word0, uint32_t* word1) {
    return onCamera(device, [&](DoubleCamera& camera) {
        usbDouble().record("UsbCheckConfiguration", {});
        *word0 = 0;
        *word1 = 0;
        if (camera.configurationFailures == 0) return std::uint32_t{0};
        --camera.configurationFailures;
        return kNotFunctioning;
    });
}

USB_DOUBLE_API int32_t UsbReadMemory(TavraUsbDevice device, uint32_t first, uint32_t last, void* buffer,
                                     uint32_t* transferred) {
    return onCamera(device, [&](DoubleCamera& camera) {
        usbDouble().record("UsbReadMemory", {first, last});
        return accessMemory(camera.memory, camera.memoryError, first, last, buffer, nullptr, transferred);
    });
}

USB_DOUBLE_API int32_t UsbWriteMemory(TavraUsbDevice device, uint32_t first, uint32_t last,
                                      const void* buffer, uint32_t* transferred) {
    return onCamera(device, [&](DoubleCamera& camera) {
        usbDouble().record("UsbWriteMemory", {first, last});
        return accessMemory(camera.memory, camera.memoryError, first, last, nullptr, buffer, transferred);
    });
}

USB_DOUBLE_API int32_t UsbReadSetupMemory(TavraUsbDevice device, uint32_t first, uint32_t last, void* buffer,
                                          uint32_t* transferred) {
    return onCamera(device, [&](DoubleCamera& camera) {
        usbDouble().record("UsbReadSetupMemory", {first, last});
        return accessMemory(camera.setupMemory, camera.setupMemoryError, first, last, buffer, nullptr,
                            transferred);
    });
}

USB_DOUBLE_API int32_t UsbWriteSetupMemory(TavraUsbDevice device, uint32_t first, uint32_t last,
                                           const void* buffer, uint32_t* transferred) {
    return onCamera(device, [&](DoubleCamera& camera) {
        usbDouble().record("UsbWriteSetupMemory", {first, last});
        return accessMemory(camera.setupMemory, camera.setupMemoryError, first, last, nullptr, buffer,
                            transferred);
    });
}

USB_DOUBLE_API int32_t UsbStartRead(TavraUsbDevice device, void* buffer, uint32_t size, TavraUsbRead* read) {
    const std::lock_guard lock(usbDouble().mutex());
    DoubleCamera* const camera = usbDouble().find(device);
    setDoubleError(camera == nullptr
                       ? kInvalidHandle
                       : usbDouble().startRead(*camera, {read, static_cast<std::uint8_t*>(buffer), size}));
    return 0;
}

USB_DOUBLE_API int32_t UsbGetReadResult(TavraUsbDevice, TavraUsbRead* read, uint32_t* transferred,
                                        int32_t wait) {
    std::unique_lock lock(usbDouble().mutex());
    return give(usbDouble().readResult(lock, read, wait != 0, *transferred));
}

USB_DOUBLE_API int32_t UsbDeviceControl(TavraUsbDevice device, uint32_t code) {
    return onCamera(device, [&](DoubleCamera& camera) {
        usbDouble().record("UsbDeviceControl", {code});
        return camera.deviceControlError;
    });
}

USB_DOUBLE_API void* UsbAllocReadMemory(TavraUsbDevice, size_t) {
    return nullptr;
}

USB_DOUBLE_API void UsbFreeReadMemory(TavraUsbDevice, void*, size_t) {}

}  // extern "C"
