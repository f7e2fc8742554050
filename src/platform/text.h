// Text between UTF-16, the wide form of the interface, and the system code page, its narrow form.
//
// Windows: the ANSI code page. Linux: the encoding of the user's locale (the plain C locale counts as UTF-8).
// Units that have no counterpart become a question mark. Any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavra::platform {

std::u16string toWide(std::string_view narrow);
std::string toNarrow(std::u16string_view wide);

#if defined(__linux__)
// For the names of files, two of which must not become one: nothing if a unit has no counterpart.
std::optional<std::string> toNarrowExactly(std::u16string_view wide);
#endif

}  // namespace tavra::platform
