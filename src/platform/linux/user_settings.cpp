#include "platform/user_settings.h"

namespace tavra::platform {

bool readUserDword(const char*, const char*, std::uint32_t&) {
    return false;
}

}  // namespace tavra::platform
