#include "settings/reg_text.h"

#include <algorithm>
#include <optional>

#include "base/little_endian.h"
#include "platform/last_error.h"
#include "platform/whole_file.h"
#include "settings/reg_key.h"

namespace tavra {
namespace {

using platform::TreeValue;
using platform::ValueType;

constexpr std::u16string_view kEditorLine = u"Windows Registry Editor Version 5.00";
constexpr std::u16string_view kFirstLine =
    u"Windows Registry Editor Version 5.00 Compatible by Halvern camera driver";
constexpr std::u16string_view kUserRoot = u"HKEY_CURRENT_USER\\";
constexpr std::u16string_view kMachineRoot = u"HKEY_LOCAL_MACHINE\\";
constexpr std::size_t kLongestValue = 4096;  // bytes of a value that are written
constexpr std::size_t kLongestLine = 76;     // units of a line of bytes; the token that passes it ends it
constexpr std::size_t kLongestName = 256;    // units of a value's name that are read
constexpr std::uint32_t kInvalidData = 13;
constexpr std::uint32_t kNoMoreItems = 259;
constexpr std::uint32_t kAnswerNo = 7;
constexpr char16_t kMark = 0xFEFF;

// --- writing ---

constexpr std::u16string_view kHexDigits = u"0123456789abcdef";

std::u16string hexadecimal(std::uint32_t value, int digits) {
    std::u16string text;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) text += kHexDigits[value >> shift & 15];
    return text;
}

std::u16string bytesLine(const TreeValue& value) {
    std::u16string line = u"\"" + value.name + u"\"=hex:";
    std::size_t column = line.size();
    const std::size_t size = std::min(value.data.size(), kLongestValue);
    for (std::size_t i = 0; i < size; ++i) {
        line += hexadecimal(value.data[i], 2) + u",";
        column += 3;
        if (column > kLongestLine) {
            line += u"\\\n  ";
            column = 2;
        }
    }
    // By design: one unit is cut off, whatever it is: the last comma, a blank of a line that has just begun,
    // or the colon where there are no bytes.
    line.pop_back();
    return line + u"\n";
}

std::u16string lineOf(const TreeValue& value) {
    switch (value.type) {
        case ValueType::Dword: {
            std::vector<std::uint8_t> bytes = value.data;
            bytes.resize(4);
            return u"\"" + value.name + u"\"=dword:" + hexadecimal(loadLe32(bytes.data()), 8) + u"\n";
        }
        // By design: text leaves as the bytes of its units.
        case ValueType::String:
        case ValueType::Binary: return bytesLine(value);
    }
    return {};
}

// --- reading ---

bool isLineEnd(char16_t unit) {
    // Also of the other byte order, and two of them held as one unit.
    constexpr std::u16string_view kEnds = u"\n\r\u0A00\u0D00\u0D0A\u0A0D";
    return kEnds.find(unit) != kEnds.npos;
}

char16_t small(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

bool beginsWith(std::u16string_view text, std::u16string_view start) {
    return text.size() >= start.size() &&
           std::ranges::equal(text.substr(0, start.size()), start, {}, small, small);
}

// The text behind the mark, up to its first zero; nothing without the mark.
std::optional<std::u16string> decode(std::vector<std::uint8_t> bytes) {
    if (bytes.size() < 2 || loadLe16(bytes.data()) != kMark) return std::nullopt;
    bytes.resize(bytes.size() + 2);  // an odd byte at the end is a unit too
    std::u16string text;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const char16_t unit = loadLe16(&bytes[i]);
        if (unit == 0) break;
        text += unit;
    }
    return text;
}

class Lines {
  public:
    explicit Lines(std::u16string_view text) : text_(text) {}

    // The next line that is not empty. False: there is none.
    bool next(std::u16string& line, bool joined) {
        line.clear();
        while (at_ < text_.size()) {
            const char16_t unit = text_[at_++];
            if (!isLineEnd(unit)) {
                line += unit;
                continue;
            }
            if (unit == u'\r' && at_ < text_.size() && text_[at_] == u'\n') ++at_;
            if (joined && !line.empty() && line.back() == u'\\') {
                line.pop_back();
                continue;
            }
            if (!line.empty()) return true;
        }
        return !line.empty();
    }

  private:
    std::u16string_view text_;
    std::size_t at_ = 0;
};

// The path in a line [root\path] whose path begins with the prefix.
std::optional<std::u16string> pathIn(std::u16string_view line, std::u16string_view prefix) {
    if (line.size() < 2 || line.front() != u'[' || line.back() != u']') return std::nullopt;
    const std::u16string_view inside = line.substr(1, line.size() - 2);
    if (!beginsWith(inside, kMachineRoot) && !beginsWith(inside, kUserRoot)) return std::nullopt;
    // By design: the place of the path is that behind the user's root, for either root; a path of the machine
    // keeps the backslash ahead of it, and so begins with no prefix.
    const std::u16string_view path = inside.substr(std::min(inside.size(), kUserRoot.size()));
    if (!beginsWith(path, prefix)) return std::nullopt;
    return std::u16string(path);
}

// Without what only shapes the text; ahead of the first "=" blanks are part of a name.
std::u16string withoutShape(std::u16string_view line) {
    std::u16string text;
    bool named = false;
    for (const char16_t unit : line) {
        if (unit == u'=') named = true;
        const bool dropped =
            unit == u'\t' || unit == u'\\' || unit == u'\r' || unit == u'\n' || (unit == u' ' && named);
        if (!dropped) text += unit;
    }
    return text;
}

// The hexadecimal number that a text begins with, at most 0xFFFFFFFF; 0 for none.
std::uint32_t hexNumber(std::u16string_view text) {
    if (beginsWith(text, u"0x")) text.remove_prefix(2);
    std::uint64_t number = 0;
    for (const char16_t unit : text) {
        const std::size_t digit = kHexDigits.find(small(unit));
        if (digit == kHexDigits.npos) break;
        number = std::min<std::uint64_t>(number * 16 + digit, 0xFFFFFFFF);
    }
    return static_cast<std::uint32_t>(number);
}

std::vector<std::uint8_t> bytesOf(std::u16string_view items) {
    std::vector<std::uint8_t> bytes;
    while (!items.empty()) {
        const std::size_t length = std::min(items.find(u','), items.size());
        bytes.push_back(static_cast<std::uint8_t>(hexNumber(items.substr(0, length))));
        items.remove_prefix(std::min(length + 1, items.size()));  // what a last comma leaves is no item
    }
    return bytes;
}

std::optional<TreeValue> valueIn(std::u16string_view line) {
    const std::u16string text = withoutShape(line);
    if (text.size() < 3 || text.front() != u'"') return std::nullopt;
    const std::size_t quote = text.find(u'"', 1);
    if (quote == text.npos || quote - 1 > kLongestName || quote + 1 >= text.size() ||
        text[quote + 1] != u'=') {
        return std::nullopt;
    }
    constexpr std::u16string_view kNumber = u"dword:", kBytes = u"hex:";
    const std::u16string_view content = std::u16string_view(text).substr(quote + 2);
    TreeValue value;
    value.name = text.substr(1, quote - 1);
    if (content.starts_with(kNumber)) {
        value.type = ValueType::Dword;
        value.data.resize(4);
        storeLe32(value.data.data(), hexNumber(content.substr(kNumber.size())));
    } else if (content.starts_with(kBytes)) {
        value.type = ValueType::Binary;
        value.data = bytesOf(content.substr(kBytes.size()));
    } else {
        return std::nullopt;
    }
    return value;
}

// Ends at the first value that the store does not take, with its error.
std::uint32_t writeValues(CwRegKey& key, const std::vector<TreeValue>& values) {
    std::uint32_t error = 0;
    for (const TreeValue& value : values) {
        if (error = key.Write(value); error != 0) break;
    }
    return error;
}

bool failWith(std::uint32_t code) {
    platform::setLastSystemError(code);
    return false;
}

}  // namespace

std::u16string regText(const std::u16string& path, const std::vector<TreeValue>& values) {
    std::u16string text(kFirstLine);
    text += u"\n\n[";
    text += kUserRoot;
    text += path + u"]\n";
    for (const TreeValue& value : values) text += lineOf(value);
    return text;
}

RegText parseRegText(std::vector<std::uint8_t> bytes, std::u16string_view prefix) {
    RegText result;
    const std::optional<std::u16string> text = decode(std::move(bytes));
    result.hasForm = text && beginsWith(*text, kEditorLine);
    if (!result.hasForm) return result;
    Lines lines(*text);
    std::u16string line;
    lines.next(line, false);  // the first one
    while (lines.next(line, result.hasKey)) {
        if (result.hasKey) {
            if (auto value = valueIn(line)) result.values.push_back(std::move(*value));
        } else if (auto path = pathIn(line, prefix)) {
            result.hasKey = true;
            result.path = std::move(*path);
        }
    }
    return result;
}

bool ExportKey(const std::u16string& fileName, const std::u16string& path) {
    CwRegKey key(path, CwRegKey::Access::All, false);
    if (!key.isOpen()) return failWith(key.openError());
    std::vector<TreeValue> values;
    TreeValue value;
    std::uint32_t error = 0;
    for (std::uint32_t index = 0; (error = key.EnumValue(index, value)) == 0; ++index)
        values.push_back(value);
    if (error != kNoMoreItems) return failWith(error);
    key.Abandon();  // others need not wait for the disk
    const std::u16string text = regText(path, values);
    std::vector<std::uint8_t> bytes(2 * text.size() + 2);
    storeLe16(bytes.data(), kMark);
    for (std::size_t i = 0; i < text.size(); ++i) storeLe16(&bytes[2 * i + 2], text[i]);
    const Status written = platform::replaceWholeFile(fileName, bytes);
    return written.ok() || failWith(written.code());
}

bool ImportKey(const std::u16string& fileName, const std::u16string& prefix,
               const std::function<std::uint32_t()>& confirm) {
    std::vector<std::uint8_t> bytes;
    if (const Status read = platform::readWholeFile(fileName, bytes); !read.ok())
        return failWith(read.code());
    const RegText text = parseRegText(std::move(bytes), prefix);
    if (!text.hasForm || !text.hasKey) return failWith(kInvalidData);
    if (confirm && CwRegKey(text.path, CwRegKey::Access::Read, false).isOpen() && confirm() == kAnswerNo) {
        return true;
    }
    CwRegKey key(text.path, CwRegKey::Access::All, true);
    if (!key.isOpen()) return failWith(key.openError());
    if (const std::uint32_t error = writeValues(key, text.values); error != 0) {
        key.Abandon();
        return failWith(error);
    }
    if (const std::uint32_t error = key.Close(); error != 0) return failWith(error);
    // By design: numbers alone are taken over and still are no setting.
    const bool hasBytes =
        std::ranges::find(text.values, ValueType::Binary, &TreeValue::type) != text.values.end();
    return hasBytes || failWith(kInvalidData);
}

}  // namespace tavra
