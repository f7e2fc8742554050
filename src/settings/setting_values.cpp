#include "settings/setting_values.h"

#include <algorithm>

#include "base/little_endian.h"

namespace tavra {
namespace {

constexpr std::uint32_t kNoMoreItems = 259;

using platform::TreeValue;
using platform::ValueType;

char16_t small(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

}  // namespace

std::uint32_t SettingValues::read(CwRegKey& key) {
    values_.clear();
    TreeValue value;
    std::uint32_t error = 0;
    for (std::uint32_t index = 0; (error = key.EnumValue(index, value)) == 0; ++index)
        values_.push_back(value);
    return error == kNoMoreItems ? 0 : error;
}

std::uint32_t SettingValues::write(CwRegKey& key) const {
    std::uint32_t first = 0;
    for (const TreeValue& value : values_) {
        const std::uint32_t error = key.Write(value);
        if (first == 0) first = error;
    }
    return first;
}

void SettingValues::addNumber(const std::u16string& name, std::uint32_t value) {
    TreeValue added{name, ValueType::Dword, std::vector<std::uint8_t>(4)};
    storeLe32(added.data.data(), value);
    values_.push_back(std::move(added));
}

void SettingValues::addBytes(const std::u16string& name, const void* data, std::uint32_t size) {
    const auto* const first = static_cast<const std::uint8_t*>(data);
    values_.push_back({name, ValueType::Binary, {first, first + size}});
}

bool SettingValues::getBytes(std::u16string_view name, void* buffer, std::uint32_t size) const {
    const TreeValue* const found = find(name);
    return found != nullptr && bytesIn(*found, buffer, size) == 0;
}

const TreeValue* SettingValues::find(std::u16string_view name) const {
    const auto found = std::ranges::find_if(values_, [name](const TreeValue& value) {
        return std::ranges::equal(value.name, name, {}, small, small);
    });
    return found != values_.end() ? &*found : nullptr;
}

}  // namespace tavra
