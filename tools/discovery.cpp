#include "discovery.h"

#include <array>
#include <cstdlib>

#include "error_text.h"
#include "platform/usb_access.h"

namespace tavra::tool {
namespace {

constexpr std::uint32_t kMaxCameras = 127;
constexpr std::u16string_view kVirtualPrefix = u"virtual:";

}  // namespace

void useVirtualCameras(const std::string& models) {
    setenv("TAVRA_VIRTUAL_CAMERAS", models.c_str(), 1);
}

std::vector<Found> discover() {
    const platform::UsbAccess* access = nullptr;
    if (const Status loaded = platform::loadUsbAccess(access); !loaded.ok()) {
        throw failure("cannot look for cameras", loaded.code());
    }
    std::vector<Found> cameras;
    for (std::uint32_t index = 0; index < kMaxCameras; ++index) {
        std::array<TavraWChar, 1024> path{};
        std::uint32_t pathBytes = sizeof path;
        const TavraUsbDevice device = access->openByIndexPath(index, path.data(), &pathBytes);
        if (device == 0) break;
        std::uint32_t openings = 0;
        const bool counted = access->getOpenCount(device, &openings) != 0;
        access->close(device);
        const std::u16string text(path.data());
        cameras.push_back({index, text, counted && openings > 1, text.starts_with(kVirtualPrefix)});
    }
    return cameras;
}

std::string shown(const std::u16string& path) {
    std::string text;
    for (const char16_t unit : path) text += unit >= 0x20 && unit < 0x7F ? static_cast<char>(unit) : '?';
    return text;
}

}  // namespace tavra::tool
