#include "platform/text.h"

#include <windows.h>

#include <algorithm>

namespace tavra::platform {
namespace {

constexpr int kLongestCharacter = 4;  // bytes, in any of the system's code pages

bool isHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool isLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

const wchar_t* systemUnits(const char16_t* text) {
    return reinterpret_cast<const wchar_t*>(text);
}
wchar_t* systemUnits(char16_t* text) {
    return reinterpret_cast<wchar_t*>(text);
}

// Units written to `wide`; 0 when `narrow` holds something that the code page does not know.
int decode(const char* narrow, int bytes, char16_t* wide, int capacity) {
    return MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, narrow, bytes, systemUnits(wide), capacity);
}

// The slow way, for text with bytes that have no counterpart: character by character.
std::u16string decodeEach(std::string_view narrow) {
    std::u16string wide;
    for (std::size_t at = 0; at < narrow.size();) {
        char16_t units[2] = {u'?'};
        int written = 0;
        int bytes = 0;
        const int most = static_cast<int>(std::min<std::size_t>(kLongestCharacter, narrow.size() - at));
        while (written == 0 && bytes < most) written = decode(narrow.data() + at, ++bytes, units, 2);
        wide.append(units, static_cast<std::size_t>(std::max(written, 1)));
        at += static_cast<std::size_t>(written == 0 ? 1 : bytes);
    }
    return wide;
}

// The system puts another character than the question mark for a lone surrogate in some code pages.
std::u16string withoutLoneSurrogates(std::u16string_view text) {
    std::u16string whole(text);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        const bool pair = isHighSurrogate(whole[i]) && i + 1 < whole.size() && isLowSurrogate(whole[i + 1]);
        if (pair) {
            ++i;
        } else if (isHighSurrogate(whole[i]) || isLowSurrogate(whole[i])) {
            whole[i] = u'?';
        }
    }
    return whole;
}

}  // namespace

std::u16string toWide(std::string_view narrow) {
    if (narrow.empty()) return {};
    std::u16string wide(narrow.size(), u'\0');  // no code page has more units than bytes
    const int units =
        decode(narrow.data(), static_cast<int>(narrow.size()), wide.data(), static_cast<int>(wide.size()));
    if (units == 0) return decodeEach(narrow);
    wide.resize(static_cast<std::size_t>(units));
    return wide;
}

std::string toNarrow(std::u16string_view wide) {
    if (wide.empty()) return {};
    const std::u16string whole = withoutLoneSurrogates(wide);
    // UTF-8 as the system code page has a counterpart for everything, and refuses the substitute and the
    // flag.
    const bool utf8 = GetACP() == CP_UTF8;
    const char* const substitute = utf8 ? nullptr : "?";
    const DWORD flags = utf8 ? 0 : WC_NO_BEST_FIT_CHARS;
    std::string narrow(whole.size() * kLongestCharacter, '\0');
    const int bytes =
        WideCharToMultiByte(CP_ACP, flags, systemUnits(whole.data()), static_cast<int>(whole.size()),
                            narrow.data(), static_cast<int>(narrow.size()), substitute, nullptr);
    narrow.resize(static_cast<std::size_t>(std::max(bytes, 0)));
    return narrow;
}

}  // namespace tavra::platform
