// Single values that the user may have set for the library outside the application.
//
// Windows: the registry under HKEY_CURRENT_USER. Linux: no such values exist; every read finds nothing.
#pragma once

#include <cstdint>

namespace tavra::platform {

// Reads the 32-bit value `name` of the key `path` (ASCII, parted by backslashes). False, with `value` left
// alone, when it is absent or of another type.
bool readUserDword(const char* path, const char* name, std::uint32_t& value);

}  // namespace tavra::platform
