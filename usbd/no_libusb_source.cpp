// Stands in for libusb/ in a build without it.
#include "libusb/libusb_source.h"

namespace tavra::usbd {

std::unique_ptr<DeviceSource> makeLibusbSource() {
    return nullptr;
}

}  // namespace tavra::usbd
