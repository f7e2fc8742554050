#include "platform/user_settings.h"

#include <windows.h>

namespace tavra::platform {

bool readUserDword(const char* path, const char* name, std::uint32_t& value) {
    DWORD read = 0;
    DWORD size = sizeof read;
    if (RegGetValueA(HKEY_CURRENT_USER, path, name, RRF_RT_REG_DWORD, nullptr, &read, &size) !=
        ERROR_SUCCESS) {
        return false;
    }
    value = read;
    return true;
}

}  // namespace tavra::platform
