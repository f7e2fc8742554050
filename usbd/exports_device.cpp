// Exported operations: versions, opening and closing, and what a device says of itself.
#include <algorithm>
#include <array>
#include <span>
#include <string>

#include "export_call.h"
#include "tavra/tavra_usbd.h"
#include "text.h"

using namespace tavra::usbd;

namespace {

// Opens and reports; `open` gives the handle or 0 with the error.
template <typename Open>
TavraUsbDevice opened(Open open) noexcept {
    TavraUsbDevice handle = 0;
    const ErrorCode result = guarded([&] {
        ErrorCode failure = error::kNone;
        handle = open(failure);
        return handle != 0 ? error::kNone : failure;
    });
    return report(result) != 0 ? handle : 0;
}

// Copies a path with its NUL into a caller's buffer of `*bytes` bytes; `*bytes` becomes what it takes.
ErrorCode copyPath(const std::string& path, TavraWChar* buffer, std::uint32_t* bytes) {
    const std::u16string wide = utf16FromUtf8(path);
    const auto need = static_cast<std::uint32_t>((wide.size() + 1) * sizeof(TavraWChar));
    const bool fits = need <= *bytes;
    *bytes = need;
    if (!fits) return error::kBufferTooSmall;
    std::copy_n(wide.c_str(), wide.size() + 1, buffer);
    return error::kNone;
}

}  // namespace

uint32_t UsbGetLastError(void) {
    return lastError();
}

TavraUsbDevice UsbOpenByIndex(uint32_t index) {
    return opened([&](ErrorCode& failure) { return registry().openByIndex(index, nullptr, failure); });
}

TavraUsbDevice UsbOpenByIndexPath(uint32_t index, TavraWChar* path, uint32_t* pathBytes) {
    return opened([&](ErrorCode& failure) -> TavraUsbDevice {
        if (path == nullptr || pathBytes == nullptr) {
            failure = error::kInvalidArgument;
            return 0;
        }
        std::string name;
        const TavraUsbDevice handle = registry().openByIndex(index, &name, failure);
        if (handle == 0) return 0;
        failure = guarded([&] { return copyPath(name, path, pathBytes); });
        if (failure == error::kNone) return handle;
        registry().close(handle);
        return 0;
    });
}

TavraUsbDevice UsbOpenByPathW(const TavraWChar* path) {
    return opened([&](ErrorCode& failure) -> TavraUsbDevice {
        failure = error::kInvalidArgument;
        return path != nullptr ? registry().openByPath(utf8FromUtf16(path), failure) : 0;
    });
}

TavraUsbDevice UsbOpenByPathA(const char* path) {
    return opened([&](ErrorCode& failure) -> TavraUsbDevice {
        failure = error::kInvalidArgument;
        return path != nullptr ? registry().openByPath(path, failure) : 0;
    });
}

int32_t UsbClose(TavraUsbDevice device) {
    return report(guarded([&] { return registry().close(device); }));
}

int32_t UsbGetDriverVersion(TavraUsbDevice device, uint32_t* majorMinor, uint32_t* build, uint32_t* word2,
                            uint32_t* word3) {
    return report(onDevice(device, [&](Device& d) {
        std::array<std::uint32_t, 4> words{};
        d.driverVersion(words);
        store(majorMinor, words[0]);
        store(build, words[1]);
        store(word2, words[2]);
        store(word3, words[3]);
        return error::kNone;
    }));
}

int32_t UsbGetLibraryVersion(uint32_t* fileHigh, uint32_t* fileLow, uint32_t* productHigh,
                             uint32_t* productLow) {
    constexpr std::uint32_t kHigh = TAVRA_VERSION_MAJOR << 16 | TAVRA_VERSION_MINOR;
    constexpr std::uint32_t kLow = TAVRA_VERSION_PATCH << 16;
    store(fileHigh, kHigh);
    store(fileLow, kLow);
    store(productHigh, kHigh);
    store(productLow, kLow);
    return 1;
}

int32_t UsbGetConfigDescriptor(TavraUsbDevice device, void* buffer, uint32_t size, uint32_t* length) {
    std::uint32_t count = 0;
    const ErrorCode result = onDevice(device, [&](Device& d) {
        if (buffer == nullptr && size > 0) return error::kInvalidArgument;
        return d.configDescriptor({static_cast<std::uint8_t*>(buffer), size}, count);
    });
    store(length, count);
    return report(result);
}

int32_t UsbGetFunctionAddress(TavraUsbDevice device, uint32_t* address) {
    return report(onDevice(device, [&](Device& d) {
        store(address, d.functionAddress());
        return error::kNone;
    }));
}

int32_t UsbGetOpenCount(TavraUsbDevice device, uint32_t* count) {
    return report(onDevice(device, [&](Device& d) {
        store(count, d.openCount());
        return error::kNone;
    }));
}

int32_t UsbCheckConfiguration(TavraUsbDevice device, uint32_t* word0, uint32_t* word1) {
    std::uint32_t words[2] = {};
    const ErrorCode result =
        onDevice(device, [&](Device& d) { return d.checkConfiguration(words[0], words[1]); });
    store(word0, words[0]);
    store(word1, words[1]);
    return report(result);
}

int32_t UsbDeviceControl(TavraUsbDevice device, uint32_t code) {
    return report(onDevice(device, [&](Device& d) { return d.deviceControl(code); }));
}
