// Names of settings and files between the wide form and the narrow one. A name of which a part was lost on
// the way would be that of another setting, so it is none at all.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "base/error_codes.h"
#include "base/status.h"
#include "platform/text.h"

namespace tavra::api {

// A text with characters that the code page does not have.
inline constexpr std::uint32_t kNoTranslation = 1113;

// What has no counterpart became a question mark: the two have as many of them if all is there.
inline bool isWhole(std::string_view narrow, std::u16string_view wide) {
    return std::ranges::count(narrow, '?') == std::ranges::count(wide, u'?');
}

// Nothing: a part of the name has no counterpart.
inline std::optional<std::u16string> wideName(const char* narrow) {
    std::u16string wide = platform::toWide(narrow);
    if (!isWhole(narrow, wide)) return std::nullopt;
    return wide;
}

inline std::optional<std::string> narrowName(const std::u16string& wide) {
    std::string narrow = platform::toNarrow(wide);
    if (!isWhole(narrow, wide)) return std::nullopt;
    return narrow;
}

}  // namespace tavra::api
