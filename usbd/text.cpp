#include "text.h"

#include <cstddef>
#include <cstdint>

namespace tavra::usbd {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isContinuation(char c) {
    return (static_cast<std::uint8_t>(c) & 0xC0) == 0x80;
}

// The code point at `at`, which moves behind it. Overlong forms and surrogates are not valid.
char32_t nextCodePoint(std::string_view text, std::size_t& at) {
    const auto lead = static_cast<std::uint8_t>(text[at++]);
    if (lead < 0x80) return lead;
    const int more = lead >= 0xF0 && lead < 0xF5   ? 3
                     : lead >= 0xE0 && lead < 0xF0 ? 2
                     : lead >= 0xC2 && lead < 0xE0 ? 1
                                                   : 0;
    if (more == 0) return kReplacement;
    char32_t code = lead & (0x3F >> more);
    std::size_t next = at;
    for (int i = 0; i < more; ++i, ++next) {
        if (next >= text.size() || !isContinuation(text[next])) return kReplacement;
        code = code << 6 | (static_cast<std::uint8_t>(text[next]) & 0x3F);
    }
    const bool overlong = (more == 2 && code < 0x800) || (more == 3 && code < 0x10000);
    if (overlong || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return kReplacement;
    at = next;
    return code;
}

void appendUtf8(std::string& out, char32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
        return;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr std::uint8_t kLead[] = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(kLead[more] | code >> (6 * more));
    for (int i = more - 1; i >= 0; --i) out += static_cast<char>(0x80 | (code >> (6 * i) & 0x3F));
}

}  // namespace

std::u16string utf16FromUtf8(std::string_view text) {
    std::u16string out;
    for (std::size_t at = 0; at < text.size();) {
        const char32_t code = nextCodePoint(text, at);
        if (code < 0x10000) {
            out += static_cast<char16_t>(code);
        } else {
            out += static_cast<char16_t>(0xD7C0 + (code >> 10));
            out += static_cast<char16_t>(0xDC00 | (code & 0x3FF));
        }
    }
    return out;
}

std::string utf8FromUtf16(std::u16string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char32_t unit = text[at];
        const bool high = unit >= 0xD800 && unit < 0xDC00;
        if (high && at + 1 < text.size() && text[at + 1] >= 0xDC00 && text[at + 1] < 0xE000) {
            appendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (text[++at] - 0xDC00u));
        } else {
            appendUtf8(out, unit >= 0xD800 && unit < 0xE000 ? kReplacement : unit);
        }
    }
    return out;
}

}  // namespace tavra::usbd
