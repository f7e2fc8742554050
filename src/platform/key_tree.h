// The user's own tree of keys and values.
//
// Windows: the registry under HKEY_CURRENT_USER. Linux: a database in $XDG_CONFIG_HOME/tavra (.config/tavra
// in the home folder), shared by all processes of the user. One of another form or of a newer version is
// refused (1009, 1306) and never written; one that another process keeps busy for more than five seconds
// gives 170.
//
// A path names a key, its parts parted by backslashes; a backslash at the end is nothing. A part has 1 to 255
// units. Capitals and small letters are the same key, on Linux those of ASCII. A value has a name, a type and
// bytes.
//
// Every operation gives an error number of the system, 0 for success, 87 on an object without a key. An
// object belongs to one thread.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavra::platform {

// Types of values, by the registry's numbers.
enum class ValueType : std::uint32_t { String = 1, Binary = 3, Dword = 4 };

struct TreeValue {
    std::u16string name;
    ValueType type = ValueType::Binary;
    std::vector<std::uint8_t> data;
};

// Whether no part of a path is too long.
constexpr bool keyPartsFit(std::u16string_view path) {
    constexpr std::size_t kLongestPart = 255;
    std::size_t length = 0;
    for (const char16_t unit : path) {
        length = unit == u'\\' ? 0 : length + 1;
        if (length > kLongestPart) return false;
    }
    return true;
}

// One open key. On Linux everything that is done through the object is one transaction, which ends with it:
// others see all of it or nothing. Only a key that had to be made to be read has been made in a transaction
// of its own, so that who reads never holds others up; it is as empty as it was then.
class TreeKey {
  public:
    enum class Access { Read, Write };
    enum class Missing { Fail, Create };

    TreeKey();
    ~TreeKey();  // abandons: an operation that ends early keeps nothing by accident
    TreeKey(TreeKey&& other) noexcept;
    TreeKey& operator=(TreeKey&& other) noexcept;

    // 2: there is no such key. Whatever was open before is closed.
    std::uint32_t open(const std::u16string& path, Access access, Missing missing);
    bool isOpen() const { return state_ != nullptr; }
    // Keeps what was written. The error is that of the store, which then has none of it.
    std::uint32_t close();
    // Closes. Linux: none of what was written stays; Windows: all of it does.
    void abandon();

    // In the order of their names. 259: there are no more.
    std::uint32_t subKeyName(std::uint32_t index, std::u16string& name);
    // 2: there is no such key. One with a name of several parts is looked for further down.
    std::uint32_t findSubKey(const std::u16string& name);
    // 2: there is no such key; 5: it has keys below it.
    std::uint32_t removeSubKey(const std::u16string& name);

    // In an order of the store's own, which stays while nothing is written. 259: there are no more.
    std::uint32_t value(std::uint32_t index, TreeValue& value);
    // 2: there is no such value.
    std::uint32_t read(const std::u16string& name, TreeValue& value);
    std::uint32_t write(const std::u16string& name, ValueType type, std::span<const std::uint8_t> data);
    std::uint32_t removeValue(const std::u16string& name);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace tavra::platform
