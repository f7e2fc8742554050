// Status words and registers as they are, and the device handle.
#include "api/output.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

// Bytes of the application's buffer; a buffer that is needed must be there.
template <typename Byte, typename Buffer>
Status bufferBytes(Buffer* buffer, std::size_t size, std::span<Byte>& bytes) {
    if (buffer == nullptr && size > 0) return Status(error::kInvalidArgument);
    bytes = {static_cast<Byte*>(buffer), size};
    return Status();
}

}  // namespace

std::uint64_t Tavra_GetTavraUSBHandle(TavraHandle handle) {
    const TAVRA_COMMON_PARAM* const camera = api::validated(handle);
    return camera == nullptr ? 0 : camera->control.device();
}

TavraBool Tavra_GetUSBFunctionAddress(TavraHandle handle, std::uint8_t* address) {
    return api::getNumber(handle, address, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.functionAddress;
        return Status();
    });
}

TavraBool Tavra_GetFPGAStatusEx(TavraHandle handle, std::uint16_t index, std::uint16_t address,
                                std::uint16_t wordCount, void* buffer) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        std::span<std::uint8_t> bytes;
        TAVRA_RETURN_IF_ERROR(bufferBytes(buffer, 2 * std::size_t{wordCount}, bytes));
        return camera.control.readStatusBytes(index, address, bytes);
    });
}

TavraBool Tavra_SetFPGAStatusEx(TavraHandle handle, std::uint16_t index, std::uint16_t address,
                                std::uint16_t wordCount, const void* buffer) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        std::span<const std::uint8_t> bytes;
        TAVRA_RETURN_IF_ERROR(bufferBytes(buffer, 2 * std::size_t{wordCount}, bytes));
        return camera.control.writeStatusBytes(index, address, bytes);
    });
}

TavraBool Tavra_GetFPGAStatus(TavraHandle handle, std::uint16_t address, std::uint16_t wordCount,
                              void* buffer) {
    return Tavra_GetFPGAStatusEx(handle, 0, address, wordCount, buffer);
}

TavraBool Tavra_SetFPGAStatus(TavraHandle handle, std::uint16_t address, std::uint16_t wordCount,
                              const void* buffer) {
    return Tavra_SetFPGAStatusEx(handle, 0, address, wordCount, buffer);
}

TavraBool Tavra_GetFPGAData2(TavraHandle handle, std::uint8_t selector, std::uint32_t address, void* buffer,
                             std::uint16_t size) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        std::span<std::uint8_t> bytes;
        TAVRA_RETURN_IF_ERROR(bufferBytes(buffer, size, bytes));
        return camera.control.readRegisters(selector, address, bytes);
    });
}

TavraBool Tavra_SetFPGAData2(TavraHandle handle, std::uint8_t selector, std::uint32_t address,
                             const void* buffer, std::uint16_t size) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        std::span<const std::uint8_t> bytes;
        TAVRA_RETURN_IF_ERROR(bufferBytes(buffer, size, bytes));
        return camera.control.writeRegisters(selector, address, bytes);
    });
}
