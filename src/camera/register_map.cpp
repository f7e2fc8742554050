#include "camera/register_map.h"

#include "base/little_endian.h"

namespace tavra {
namespace {

constexpr std::uint32_t kTableAddress = 4;
constexpr std::uint32_t kAddressMask = 0x00FFFFFF;

Status readLong(IHalvernRegMap& registers, std::uint32_t address, std::uint32_t& value) {
    std::array<std::uint8_t, 4> bytes{};
    TAVRA_RETURN_IF_ERROR(Status(registers.Read(address, bytes.data(), bytes.size())));
    value = loadLe32(bytes.data());
    return Status();
}

}  // namespace

Status CRegisterPageMap::load() {
    std::array<std::uint8_t, std::size_t{4} * kPages> table{};
    TAVRA_RETURN_IF_ERROR(Status(registers_.Read(kTableAddress, table.data(), table.size())));
    for (std::uint32_t page = 0; page < kPages; ++page) {
        descriptors_[page] = loadLe32(&table[std::size_t{4} * page]);
        TAVRA_RETURN_IF_ERROR(readLong(registers_, descriptors_[page] & kAddressMask, sizes_[page]));
    }
    return Status();
}

Status CRegisterPageMap::locate(std::uint32_t page, std::uint32_t offset, std::uint32_t& address) const {
    TAVRA_RETURN_IF_ERROR(pageBase(page, address));
    // By design: offset 0 holds the page's size and is there even in an empty page.
    if (offset != 0 && offset >= sizes_[page]) return Status(error::kInvalidArgument);
    address += offset;
    return Status();
}

Status CRegisterPageMap::read(std::uint32_t page, std::uint32_t offset, std::uint32_t& value) const {
    std::uint32_t address = 0;
    TAVRA_RETURN_IF_ERROR(locate(page, offset, address));
    return readLong(registers_, address, value);
}

Status CRegisterPageMap::write(std::uint32_t page, std::uint32_t offset, std::uint32_t value) const {
    std::uint32_t address = 0;
    TAVRA_RETURN_IF_ERROR(locate(page, offset, address));
    std::array<std::uint8_t, 4> bytes{};
    storeLe32(bytes.data(), value);
    return Status(registers_.Write(address, bytes.data(), bytes.size()));
}

Status CRegisterPageMap::pageBase(std::uint32_t page, std::uint32_t& base) const {
    if (page >= kPages) return Status(error::kInvalidArgument);
    base = descriptors_[page] & kAddressMask;
    return Status();
}

}  // namespace tavra
