// One key of the user's tree, with values by what settings store: numbers, bytes and text.
//
// An object whose key could not be opened has none: it can still be used, and every operation gives 87. The
// numbers are error numbers of the system, 0 for success. One thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/key_tree.h"

namespace tavra {

// Up to four bytes of a value of whatever type, over those of the caller's; a longer one leaves it (234).
std::uint32_t numberIn(const platform::TreeValue& stored, std::uint32_t& value);
// `size` bytes; what the value is short of them is zero. A longer value leaves the buffer (234).
std::uint32_t bytesIn(const platform::TreeValue& stored, void* buffer, std::uint32_t size);

class CwRegKey {
  public:
    enum class Access { Read, All };

    // With `create` the key is made if it is not there.
    CwRegKey(const std::u16string& path, Access access, bool create);
    virtual ~CwRegKey();  // abandons
    CwRegKey(const CwRegKey&) = delete;
    CwRegKey& operator=(const CwRegKey&) = delete;

    // Keeps what was written.
    std::uint32_t Close() { return key_.close(); }
    // Closes without keeping what was written, where the store can do that: Windows keeps it.
    void Abandon() { key_.abandon(); }
    bool isOpen() const { return key_.isOpen(); }
    std::uint32_t openError() const { return openError_; }

    std::uint32_t FindSubKey(const std::u16string& name) { return key_.findSubKey(name); }
    std::uint32_t EnumSubKey(std::uint32_t index, std::u16string& name);
    std::uint32_t EnumValue(std::uint32_t index, platform::TreeValue& value);

    // As numberIn() says; the caller's value is then narrowed again. A missing value leaves it (2).
    std::uint32_t ReadByte(const std::u16string& name, std::uint8_t& value);
    std::uint32_t ReadWord(const std::u16string& name, std::uint16_t& value);
    std::uint32_t ReadDword(const std::u16string& name, std::uint32_t& value);
    std::uint32_t ReadDwordSigned(const std::u16string& name, std::int32_t& value);
    // As bytesIn() says.
    std::uint32_t ReadBinary(const std::u16string& name, void* buffer, std::uint32_t size);
    // The whole text, whatever the type.
    std::uint32_t ReadString(const std::u16string& name, std::u16string& text);

    std::uint32_t WriteByte(const std::u16string& name, std::uint8_t value) {
        return WriteDword(name, value);
    }
    std::uint32_t WriteWord(const std::u16string& name, std::uint16_t value) {
        return WriteDword(name, value);
    }
    std::uint32_t WriteDword(const std::u16string& name, std::uint32_t value);
    std::uint32_t WriteBinary(const std::u16string& name, const void* data, std::uint32_t size);
    std::uint32_t Write(const platform::TreeValue& value) {
        return key_.write(value.name, value.type, value.data);
    }
    // Its units, without a zero behind them.
    std::uint32_t WriteString(const std::u16string& name, const std::u16string& text);

    std::uint32_t DeleteSubKey(const std::u16string& name) { return key_.removeSubKey(name); }
    std::uint32_t DeleteValue(const std::u16string& name) { return key_.removeValue(name); }

  private:
    template <typename Number>
    std::uint32_t readNumber(const std::u16string& name, Number& value);

    platform::TreeKey key_;
    std::uint32_t openError_;
};

}  // namespace tavra
