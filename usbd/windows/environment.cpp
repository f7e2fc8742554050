#include "environment.h"

#include <cstdlib>

namespace tavra::usbd {

const char* environmentVariable(const char* name) {
    return std::getenv(name);
}

}  // namespace tavra::usbd
