// Exported operations: the bulk stream.
#include "export_call.h"
#include "tavra/tavra_usbd.h"

using namespace tavra::usbd;

int32_t UsbBeginRead(TavraUsbDevice device) {
    return report(onDevice(device, [](Device& d) { return d.beginRead(); }));
}

int32_t UsbEndRead(TavraUsbDevice device) {
    return report(onDevice(device, [](Device& d) { return d.endRead(); }));
}

int32_t UsbCanResumeRead(TavraUsbDevice device) {
    bool can = false;
    const ErrorCode result = onDevice(device, [&](Device& d) {
        can = d.canResumeRead();
        return error::kNone;
    });
    return report(result) != 0 && can ? 1 : 0;
}

int32_t UsbStartRead(TavraUsbDevice device, void* buffer, uint32_t size, TavraUsbRead* read) {
    const ErrorCode result = onDevice(device, [&](Device& d) {
        if (buffer == nullptr || size == 0 || read == nullptr) return error::kInvalidArgument;
        return d.startRead(buffer, size, *read);
    });
    setLastError(result);
    return 0;
}

int32_t UsbGetReadResult(TavraUsbDevice device, TavraUsbRead* read, uint32_t* transferred, int32_t wait) {
    std::uint32_t count = 0;
    const ErrorCode result = onDevice(device, [&](Device& d) {
        if (read == nullptr) return error::kInvalidArgument;
        return d.readResult(*read, count, wait != 0);
    });
    store(transferred, count);
    return report(result);
}

void* UsbAllocReadMemory(TavraUsbDevice device, size_t size) {
    void* memory = nullptr;
    const ErrorCode result = onDevice(device, [&](Device& d) {
        memory = d.allocReadMemory(size);
        return memory != nullptr ? error::kNone : error::kNotSupported;
    });
    report(result);
    return memory;
}

void UsbFreeReadMemory(TavraUsbDevice device, void* memory, size_t size) {
    report(onDevice(device, [&](Device& d) {
        if (memory != nullptr) d.freeReadMemory(memory, size);
        return error::kNone;
    }));
}
