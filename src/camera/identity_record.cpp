#include "camera/identity_record.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "base/little_endian.h"
#include "camera/device_memory.h"
#include "platform/text.h"

namespace tavra {
namespace {

constexpr std::uint8_t kWideFlag = 0x80;
constexpr std::size_t kFlagOffset = 4;
constexpr std::size_t kLengthOffset = 5;
constexpr std::size_t kTextOffset = 6;
constexpr std::size_t kTextCapacity = IdentityRecord::kSize - kTextOffset;
constexpr std::size_t kLongestText = 250;
constexpr std::size_t kCutWide = 248;
constexpr std::size_t kCutNarrow = 249;

// Bytes up to and with the NUL.
std::size_t narrowLength(const char* text, std::size_t size) {
    const void* const end = std::memchr(text, 0, size);
    return end == nullptr ? size : static_cast<std::size_t>(static_cast<const char*>(end) - text) + 1;
}

// By design: the text ends behind the first pair whose first byte is zero, so also behind a character like
// U+0100.
std::size_t wideLength(const std::uint8_t* text, std::size_t size) {
    for (std::size_t i = 0; i < size; i += 2) {
        if (text[i] == 0) return std::min(i + 2, size);
    }
    return size;
}

// By design: only text longer than the buffer is cut to leave room for a terminator.
std::size_t fitting(std::size_t length, std::size_t size, std::size_t terminator) {
    if (length <= size) return length;
    return size > terminator ? size - terminator : 0;
}

}  // namespace

IdentityRecord IdentityRecord::withNarrow(std::uint32_t id, const char* text, std::uint32_t size) {
    IdentityRecord record;
    storeLe32(record.bytes_.data(), id);
    if (text == nullptr || size == 0) return record;
    const std::size_t length = narrowLength(text, size);
    record.setText(text, length > kLongestText ? kCutNarrow : length);
    return record;
}

IdentityRecord IdentityRecord::withWide(std::uint32_t id, const TavraWChar* text, std::uint32_t size) {
    IdentityRecord record;
    storeLe32(record.bytes_.data(), id);
    record.bytes_[kFlagOffset] = kWideFlag;
    if (text == nullptr || size == 0) return record;
    const std::size_t length = wideLength(reinterpret_cast<const std::uint8_t*>(text), size);
    record.setText(text, length > kLongestText ? kCutWide : length);
    return record;
}

void IdentityRecord::setText(const void* text, std::size_t length) {
    bytes_[kLengthOffset] = static_cast<std::uint8_t>(length);
    std::memcpy(&bytes_[kTextOffset], text, length);
}

std::uint32_t IdentityRecord::id() const {
    return loadLe32(bytes_.data());
}

bool IdentityRecord::isWide() const {
    return (bytes_[kFlagOffset] & kWideFlag) != 0;
}

std::size_t IdentityRecord::textLength() const {
    const std::size_t length = bytes_[kLengthOffset];
    return length <= kLongestText ? length : 0;
}

void IdentityRecord::copyText(std::span<char> buffer) const {
    const std::size_t length = textLength();
    if (length == 0 || buffer.empty()) return;
    if (!isWide()) {
        std::memcpy(buffer.data(), text(), fitting(length, buffer.size(), 1));
        return;
    }
    std::u16string wide;
    for (std::size_t i = 0; i + 1 < kTextCapacity; i += 2) {
        const char16_t unit = loadLe16(text() + i);
        if (unit == 0) break;
        wide += unit;
    }
    const std::string narrow = platform::toNarrow(wide);
    std::memcpy(buffer.data(), narrow.data(), std::min(narrow.size(), buffer.size() - 1));
}

void IdentityRecord::copyText(std::span<TavraWChar> buffer, std::uint32_t bufferBytes) const {
    const std::size_t length = textLength();
    if (length == 0 || bufferBytes == 0) return;
    if (isWide()) {
        std::memcpy(buffer.data(), text(), fitting(length, bufferBytes, 2));
        return;
    }
    const auto* const begin = reinterpret_cast<const char*>(text());
    const std::string_view narrow(begin,
                                  static_cast<std::size_t>(std::find(begin, begin + length, '\0') - begin));
    const std::u16string wide = platform::toWide(narrow);
    const std::size_t room = buffer.empty() ? 0 : buffer.size() - 1;
    std::copy_n(wide.begin(), std::min(wide.size(), room), buffer.begin());
}

Status readIdentity(const ControlChannel& control, IdentityRecord::Place place, IdentityRecord& record) {
    const Status status = readMemory(control, static_cast<std::uint32_t>(place), record.bytes());
    if (!status.ok()) record = IdentityRecord();
    return status;
}

Status writeIdentity(const ControlChannel& control, IdentityRecord::Place place,
                     const IdentityRecord& record) {
    return writeMemory(control, static_cast<std::uint32_t>(place), record.bytes());
}

}  // namespace tavra
