// Which kinds of device the library knows.
#include <memory>
#include <utility>
#include <vector>

#include "libusb/libusb_source.h"
#include "registry.h"
#include "virtual/virtual_source.h"

namespace tavra::usbd {
namespace {

std::vector<std::unique_ptr<DeviceSource>> makeSources() {
    std::vector<std::unique_ptr<DeviceSource>> sources;
    if (auto source = makeLibusbSource()) sources.push_back(std::move(source));
    sources.push_back(makeVirtualSource());
    return sources;
}

}  // namespace

Registry& registry() {
    // Never destroyed: devices that an application left open may still be in use by its threads at exit.
    static Registry& instance = *new Registry(makeSources());
    return instance;
}

}  // namespace tavra::usbd
