#include "platform/system_version.h"

#include <windows.h>

namespace tavra::platform {

bool isSystemBeforeVersion6() {
    OSVERSIONINFOEXW wanted{};
    wanted.dwOSVersionInfoSize = sizeof wanted;
    wanted.dwMajorVersion = 6;
    const DWORDLONG condition = VerSetConditionMask(0, VER_MAJORVERSION, VER_GREATER_EQUAL);
    return VerifyVersionInfoW(&wanted, VER_MAJORVERSION, condition) == FALSE;
}

}  // namespace tavra::platform
