// Device paths between UTF-8, which the devices use, and the UTF-16 of the wide operations. Pure functions;
// any thread.
#pragma once

#include <string>
#include <string_view>

namespace tavra::usbd {

// What is not valid becomes U+FFFD, one for each offending unit.
std::u16string utf16FromUtf8(std::string_view text);
std::string utf8FromUtf16(std::u16string_view text);

}  // namespace tavra::usbd
