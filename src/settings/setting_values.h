// The values of a named setting in memory: read from a camera before the store is opened, or from the store
// before a camera is set, so that nobody waits for the store while a camera takes its time.
//
// Owned by the operation. One thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "settings/reg_key.h"

namespace tavra {

class SettingValues {
  public:
    // Everything that the key has. An error number of the system, 0 for success.
    std::uint32_t read(CwRegKey& key);
    // In the order in which they were added, whatever becomes of single ones. The first error.
    std::uint32_t write(CwRegKey& key) const;

    void addNumber(const std::u16string& name, std::uint32_t value);
    void addBytes(const std::u16string& name, const void* data, std::uint32_t size);

    // As CwRegKey reads them: what is not there, or too long, leaves the caller's own. False then.
    template <typename Number>
    bool getNumber(std::u16string_view name, Number& value) const {
        auto wide = static_cast<std::uint32_t>(value);
        const platform::TreeValue* const found = find(name);
        if (found == nullptr || numberIn(*found, wide) != 0) return false;
        value = static_cast<Number>(wide);
        return true;
    }
    bool getBytes(std::u16string_view name, void* buffer, std::uint32_t size) const;

  private:
    const platform::TreeValue* find(std::u16string_view name) const;

    std::vector<platform::TreeValue> values_;
};

}  // namespace tavra
