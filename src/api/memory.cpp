// Identity records, user memory, I2C.
#include <cstring>

#include "api/output.h"
#include "camera/device_memory.h"
#include "camera/identity_record.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

using Place = IdentityRecord::Place;

// A record that cannot be read is told as an empty one; the failure stays as last error.
template <typename CopyText>
TavraBool readRecord(TavraHandle handle, Place place, std::uint32_t* id, void* text, std::uint32_t size,
                     CopyText copyText) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(id));
        if (text == nullptr && size > 0) return Status(error::kInvalidArgument);
        if (size > 0) std::memset(text, 0, size);
        IdentityRecord record;
        camera.noteFailure(readIdentity(camera.control, place, record));
        *id = record.id();
        copyText(record);
        return Status();
    });
}

TavraBool readNarrow(TavraHandle handle, Place place, std::uint32_t* id, char* text, std::uint32_t size) {
    return readRecord(handle, place, id, text, size, [&](const IdentityRecord& record) {
        record.copyText({text, size});
    });
}

TavraBool readWide(TavraHandle handle, Place place, std::uint32_t* id, TavraWChar* text, std::uint32_t size) {
    return readRecord(handle, place, id, text, size, [&](const IdentityRecord& record) {
        record.copyText({text, size / sizeof(TavraWChar)}, size);
    });
}

TavraBool writeRecord(TavraHandle handle, Place place, const IdentityRecord& record) {
    return api::call(
        handle, [&](TAVRA_COMMON_PARAM& camera) { return writeIdentity(camera.control, place, record); });
}

// An operation on the bytes of the application's buffer.
template <typename Byte, typename Buffer, typename Operation>
TavraBool onBuffer(TavraHandle handle, Buffer* buffer, std::size_t size, Operation operation) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        if (buffer == nullptr && size > 0) return Status(error::kInvalidArgument);
        return operation(camera.control, std::span<Byte>(static_cast<Byte*>(buffer), size));
    });
}

using Out = std::uint8_t;
using In = const std::uint8_t;

}  // namespace

TavraBool Tavra_ReadCameraSerialIDA(TavraHandle handle, std::uint32_t* id, char* text, std::uint32_t size) {
    return readNarrow(handle, Place::Serial, id, text, size);
}

TavraBool Tavra_ReadCameraSerialIDW(TavraHandle handle, std::uint32_t* id, TavraWChar* text,
                                    std::uint32_t size) {
    return readWide(handle, Place::Serial, id, text, size);
}

TavraBool Tavra_ReadCameraUserIDA(TavraHandle handle, std::uint32_t* id, char* text, std::uint32_t size) {
    return readNarrow(handle, Place::User, id, text, size);
}

TavraBool Tavra_ReadCameraUserIDW(TavraHandle handle, std::uint32_t* id, TavraWChar* text,
                                  std::uint32_t size) {
    return readWide(handle, Place::User, id, text, size);
}

TavraBool Tavra_WriteCameraSerialIDA(TavraHandle handle, std::uint32_t id, const char* text,
                                     std::uint32_t size) {
    return writeRecord(handle, Place::Serial, IdentityRecord::withNarrow(id, text, size));
}

TavraBool Tavra_WriteCameraSerialIDW(TavraHandle handle, std::uint32_t id, const TavraWChar* text,
                                     std::uint32_t size) {
    return writeRecord(handle, Place::Serial, IdentityRecord::withWide(id, text, size));
}

TavraBool Tavra_WriteCameraUserIDA(TavraHandle handle, std::uint32_t id, const char* text,
                                   std::uint32_t size) {
    return writeRecord(handle, Place::User, IdentityRecord::withNarrow(id, text, size));
}

TavraBool Tavra_WriteCameraUserIDW(TavraHandle handle, std::uint32_t id, const TavraWChar* text,
                                   std::uint32_t size) {
    return writeRecord(handle, Place::User, IdentityRecord::withWide(id, text, size));
}

TavraBool Tavra_ReadUserMemory(TavraHandle handle, void* buffer, std::uint16_t offset, std::uint16_t size) {
    return onBuffer<Out>(handle, buffer, size, [&](const ControlChannel& control, std::span<Out> data) {
        return readUserMemory(control, offset, data);
    });
}

TavraBool Tavra_WriteUserMemory(TavraHandle handle, const void* buffer, std::uint16_t offset,
                                std::uint16_t size) {
    return onBuffer<In>(handle, buffer, size, [&](const ControlChannel& control, std::span<In> data) {
        return writeUserMemory(control, offset, data);
    });
}

TavraBool Tavra_ReadI2CB(TavraHandle handle, std::uint8_t bus, std::uint8_t device, std::uint8_t reg,
                         std::uint8_t count, void* buffer) {
    return onBuffer<Out>(handle, buffer, count, [&](const ControlChannel& control, std::span<Out> data) {
        return readI2cByte(control, {bus, device, reg}, data);
    });
}

TavraBool Tavra_WriteI2CB(TavraHandle handle, std::uint8_t bus, std::uint8_t device, std::uint8_t reg,
                          std::uint8_t count, const void* buffer) {
    return onBuffer<In>(handle, buffer, count, [&](const ControlChannel& control, std::span<In> data) {
        return writeI2cByte(control, {bus, device, reg}, data);
    });
}

TavraBool Tavra_ReadI2CW(TavraHandle handle, std::uint8_t bus, std::uint8_t device, std::uint16_t reg,
                         std::uint16_t count, void* buffer) {
    return onBuffer<Out>(handle, buffer, count, [&](const ControlChannel& control, std::span<Out> data) {
        return readI2cWord(control, {bus, device, reg}, data);
    });
}

TavraBool Tavra_WriteI2CW(TavraHandle handle, std::uint8_t bus, std::uint8_t device, std::uint16_t reg,
                          std::uint16_t count, const void* buffer) {
    return onBuffer<In>(handle, buffer, count, [&](const ControlChannel& control, std::span<In> data) {
        return writeI2cWord(control, {bus, device, reg}, data);
    });
}
