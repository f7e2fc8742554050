// The walk over a configuration descriptor that may say anything.
#include <cstdlib>

#include "camera/usb_speed.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (tavra::speedFromDescriptor({data, size}) > tavra::kSuperSpeed) std::abort();
    return 0;
}
