#include "settings/setting_text.h"

#include "platform/profile_file.h"

namespace tavra {
namespace {

constexpr std::uint32_t kPositionLimit = 1u << 30;
constexpr std::uint32_t kSigned16Limit = 32768;
constexpr std::uint32_t kWordMask = 0xFFFF;

std::u16string decimal(std::uint32_t number, bool negative) {
    std::u16string text;
    do {
        text.insert(text.begin(), static_cast<char16_t>(u'0' + number % 10));
        number /= 10;
    } while (number != 0);
    return negative ? u"-" + text : text;
}

std::u16string signedText(std::int32_t value) {
    const bool negative = value < 0;
    const auto magnitude = static_cast<std::uint32_t>(value);
    return decimal(negative ? 0 - magnitude : magnitude, negative);
}

bool isDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

std::uint32_t digits(std::u16string_view text, std::uint32_t present) {
    std::uint32_t value = 0;
    for (const char16_t unit : text) {
        if (!isDigit(unit)) return present;
        value = value * 10 + (unit - u'0');
        if (static_cast<std::int32_t>(value) < 0) return present;
    }
    return value;
}

std::uint32_t wordDigits(std::u16string_view text, std::uint32_t present) {
    const std::uint32_t value = digits(text, kNoValue);
    return value != kNoValue ? value & kWordMask : present;
}

std::uint32_t byteDigits(std::u16string_view text, std::uint32_t present) {
    std::uint8_t value = 0;
    for (const char16_t unit : text) {
        if (!isDigit(unit)) return present;
        value = static_cast<std::uint8_t>(value * 10 + (unit - u'0'));
    }
    return value;
}

// Digits with minus signs anywhere among them, as a magnitude that is watched not to pass `most`. False: it
// did, or there is something else.
bool magnitude(std::u16string_view text, std::uint32_t most, std::uint32_t& value, bool& negative) {
    value = 0;
    negative = false;
    for (const char16_t unit : text) {
        if (unit == u'-') {
            negative = true;
            continue;
        }
        if (!isDigit(unit)) return false;
        const std::uint64_t next = std::uint64_t{value} * 10 + (unit - u'0');
        if (next > most) return false;
        value = static_cast<std::uint32_t>(next);
    }
    return true;
}

std::uint32_t position(std::u16string_view text, std::uint32_t present) {
    std::uint32_t value = 0;
    bool negative = false;
    if (!magnitude(text, kPositionLimit - 1, value, negative)) return present;
    return negative ? 0 - value : value;
}

std::uint32_t signed16(std::u16string_view text, std::uint32_t present) {
    std::uint32_t value = 0;
    bool negative = false;
    if (!magnitude(text, kSigned16Limit, value, negative)) return present;
    if (value == kSigned16Limit && !negative) return present;
    return (negative ? 0 - value : value) & kWordMask;
}

}  // namespace

std::u16string textOf(Form form, std::uint32_t value) {
    switch (form) {
        case Form::Unsigned:
        case Form::UnsignedByte:
        case Form::UnsignedWord:
        case Form::ProfileNumber:
        case Form::ProfileWord: return decimal(value, false);
        case Form::Signed16: return signedText(static_cast<std::int16_t>(value));
        default: return signedText(static_cast<std::int32_t>(value));
    }
}

std::uint32_t valueOf(Form form, std::u16string_view text, std::uint32_t present) {
    switch (form) {
        case Form::Byte:
        case Form::UnsignedByte: return byteDigits(text, present);
        case Form::Position: return position(text, present);
        case Form::Signed16: return signed16(text, present);
        case Form::Word:
        case Form::UnsignedWord: return wordDigits(text, present);
        case Form::ProfileNumber: return platform::profileNumber(text);
        case Form::ProfileWord: return platform::profileNumber(text) & kWordMask;
        default: return digits(text, present);
    }
}

}  // namespace tavra
