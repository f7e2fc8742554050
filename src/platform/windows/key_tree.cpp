#include "platform/key_tree.h"

#include <windows.h>

namespace tavra::platform {
namespace {

constexpr DWORD kMostNameUnits = 16384;  // of a value, with its zero

const wchar_t* systemText(const std::u16string& text) {
    static_assert(sizeof(wchar_t) == sizeof(char16_t));
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

std::uint32_t code(LSTATUS status) {
    return static_cast<std::uint32_t>(status);
}

}  // namespace

struct TreeKey::State {
    explicit State(HKEY opened) : key(opened) {}
    ~State() { RegCloseKey(key); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    HKEY key;
};

TreeKey::TreeKey() = default;
TreeKey::~TreeKey() = default;
TreeKey::TreeKey(TreeKey&& other) noexcept = default;
TreeKey& TreeKey::operator=(TreeKey&& other) noexcept = default;

std::uint32_t TreeKey::open(const std::u16string& path, Access access, Missing missing) {
    close();
    if (!keyPartsFit(path)) return ERROR_INVALID_PARAMETER;
    HKEY key = nullptr;
    const REGSAM rights = access == Access::Read ? KEY_READ : KEY_ALL_ACCESS;
    const LSTATUS status = missing == Missing::Create
                               ? RegCreateKeyExW(HKEY_CURRENT_USER, systemText(path), 0, nullptr, 0, rights,
                                                 nullptr, &key, nullptr)
                               : RegOpenKeyExW(HKEY_CURRENT_USER, systemText(path), 0, rights, &key);
    if (status != ERROR_SUCCESS) return code(status);
    state_ = std::make_unique<State>(key);
    return 0;
}

std::uint32_t TreeKey::close() {
    if (!isOpen()) return ERROR_INVALID_PARAMETER;
    state_.reset();
    return 0;
}

void TreeKey::abandon() {
    state_.reset();
}

std::uint32_t TreeKey::subKeyName(std::uint32_t index, std::u16string& name) {
    if (!isOpen()) return ERROR_INVALID_PARAMETER;
    wchar_t buffer[256];
    DWORD units = 256;
    const LSTATUS status =
        RegEnumKeyExW(state_->key, index, buffer, &units, nullptr, nullptr, nullptr, nullptr);
    if (status == ERROR_SUCCESS) name.assign(reinterpret_cast<const char16_t*>(buffer), units);
    return code(status);
}

std::uint32_t TreeKey::findSubKey(const std::u16string& name) {
    if (!isOpen() || name.empty() || !keyPartsFit(name)) return ERROR_INVALID_PARAMETER;
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExW(state_->key, systemText(name), 0, KEY_READ, &key);
    if (status == ERROR_SUCCESS) RegCloseKey(key);
    return code(status);
}

std::uint32_t TreeKey::removeSubKey(const std::u16string& name) {
    if (!isOpen() || name.empty() || !keyPartsFit(name)) return ERROR_INVALID_PARAMETER;
    return code(RegDeleteKeyW(state_->key, systemText(name)));
}

std::uint32_t TreeKey::value(std::uint32_t index, TreeValue& value) {
    if (!isOpen()) return ERROR_INVALID_PARAMETER;
    std::vector<wchar_t> name(kMostNameUnits);
    DWORD units = kMostNameUnits;
    const LSTATUS status =
        RegEnumValueW(state_->key, index, name.data(), &units, nullptr, nullptr, nullptr, nullptr);
    if (status != ERROR_SUCCESS) return code(status);
    return read(std::u16string(reinterpret_cast<const char16_t*>(name.data()), units), value);
}

std::uint32_t TreeKey::read(const std::u16string& name, TreeValue& value) {
    if (!isOpen()) return ERROR_INVALID_PARAMETER;
    DWORD type = 0, size = 0;
    LSTATUS status = RegQueryValueExW(state_->key, systemText(name), nullptr, &type, nullptr, &size);
    if (status != ERROR_SUCCESS) return code(status);
    value.data.resize(size);
    status = RegQueryValueExW(state_->key, systemText(name), nullptr, &type, value.data.data(), &size);
    if (status != ERROR_SUCCESS) return code(status);
    value.data.resize(size);
    value.name = name;
    value.type = static_cast<ValueType>(type);
    return 0;
}

std::uint32_t TreeKey::write(const std::u16string& name, ValueType type, std::span<const std::uint8_t> data) {
    if (!isOpen()) return ERROR_INVALID_PARAMETER;
    return code(RegSetValueExW(state_->key, systemText(name), 0, static_cast<DWORD>(type), data.data(),
                               static_cast<DWORD>(data.size())));
}

std::uint32_t TreeKey::removeValue(const std::u16string& name) {
    if (!isOpen()) return ERROR_INVALID_PARAMETER;
    return code(RegDeleteValueW(state_->key, systemText(name)));
}

}  // namespace tavra::platform
