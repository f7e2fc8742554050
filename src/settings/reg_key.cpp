#include "settings/reg_key.h"

#include <algorithm>
#include <array>

#include "base/little_endian.h"

namespace tavra {
namespace {

constexpr std::uint32_t kMoreData = 234;

using platform::TreeKey;
using platform::TreeValue;
using platform::ValueType;

}  // namespace

std::uint32_t numberIn(const TreeValue& stored, std::uint32_t& value) {
    std::array<std::uint8_t, 4> bytes{};
    if (stored.data.size() > bytes.size()) return kMoreData;
    storeLe32(bytes.data(), value);
    std::ranges::copy(stored.data, bytes.begin());
    value = loadLe32(bytes.data());
    return 0;
}

std::uint32_t bytesIn(const TreeValue& stored, void* buffer, std::uint32_t size) {
    if (stored.data.size() > size) return kMoreData;
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    std::fill(std::ranges::copy(stored.data, bytes).out, bytes + size, std::uint8_t{0});
    return 0;
}

CwRegKey::CwRegKey(const std::u16string& path, Access access, bool create)
    : openError_(key_.open(path, access == Access::Read ? TreeKey::Access::Read : TreeKey::Access::Write,
                           create ? TreeKey::Missing::Create : TreeKey::Missing::Fail)) {}

CwRegKey::~CwRegKey() = default;

std::uint32_t CwRegKey::EnumSubKey(std::uint32_t index, std::u16string& name) {
    return key_.subKeyName(index, name);
}

std::uint32_t CwRegKey::EnumValue(std::uint32_t index, TreeValue& value) {
    return key_.value(index, value);
}

template <typename Number>
std::uint32_t CwRegKey::readNumber(const std::u16string& name, Number& value) {
    TreeValue stored;
    if (const std::uint32_t error = key_.read(name, stored); error != 0) return error;
    auto wide = static_cast<std::uint32_t>(value);
    if (const std::uint32_t error = numberIn(stored, wide); error != 0) return error;
    value = static_cast<Number>(wide);
    return 0;
}

std::uint32_t CwRegKey::ReadByte(const std::u16string& name, std::uint8_t& value) {
    return readNumber(name, value);
}
std::uint32_t CwRegKey::ReadWord(const std::u16string& name, std::uint16_t& value) {
    return readNumber(name, value);
}
std::uint32_t CwRegKey::ReadDword(const std::u16string& name, std::uint32_t& value) {
    return readNumber(name, value);
}
std::uint32_t CwRegKey::ReadDwordSigned(const std::u16string& name, std::int32_t& value) {
    return readNumber(name, value);
}

std::uint32_t CwRegKey::ReadBinary(const std::u16string& name, void* buffer, std::uint32_t size) {
    TreeValue stored;
    if (const std::uint32_t error = key_.read(name, stored); error != 0) return error;
    return bytesIn(stored, buffer, size);
}

std::uint32_t CwRegKey::ReadString(const std::u16string& name, std::u16string& text) {
    TreeValue stored;
    if (const std::uint32_t error = key_.read(name, stored); error != 0) return error;
    text.clear();
    for (std::size_t i = 0; i + 1 < stored.data.size(); i += 2) {
        const char16_t unit = loadLe16(&stored.data[i]);
        if (unit == 0) break;
        text += unit;
    }
    return 0;
}

std::uint32_t CwRegKey::WriteDword(const std::u16string& name, std::uint32_t value) {
    std::array<std::uint8_t, 4> bytes{};
    storeLe32(bytes.data(), value);
    return key_.write(name, ValueType::Dword, bytes);
}

std::uint32_t CwRegKey::WriteBinary(const std::u16string& name, const void* data, std::uint32_t size) {
    return key_.write(name, ValueType::Binary, {static_cast<const std::uint8_t*>(data), size});
}

std::uint32_t CwRegKey::WriteString(const std::u16string& name, const std::u16string& text) {
    std::vector<std::uint8_t> bytes(2 * text.size());
    for (std::size_t i = 0; i < text.size(); ++i) storeLe16(&bytes[2 * i], text[i]);
    return key_.write(name, ValueType::String, bytes);
}

}  // namespace tavra
