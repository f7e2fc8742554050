#include "platform/system_version.h"

namespace tavra::platform {

bool isSystemBeforeVersion6() {
    return false;
}

}  // namespace tavra::platform
