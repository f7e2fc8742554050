// `tavra info`: everything that one camera tells of itself.
#include <array>
#include <iomanip>
#include <iostream>

#include "camera.h"
#include "commands.h"
#include "settings_table.h"
#include "values.h"

namespace tavra::tool {
namespace {

void line(const char* name, const std::string& value) {
    std::cout << std::left << std::setw(18) << name << value << '\n';
}

std::string version(std::uint32_t high, std::uint32_t low) {
    return std::to_string(high >> 16) + "." + std::to_string(high & 0xFFFF) + "." + std::to_string(low >> 16);
}

void showIdentity(TavraHandle handle) {
    std::uint16_t vendor = 0, type = 0, hardware = 0, firmware = 0;
    if (Tavra_GetCameraVersion(handle, &vendor, &type, &hardware, &firmware)) {
        char text[96];
        std::snprintf(text, sizeof text, "vendor 0x%04X, type %u, hardware %u, firmware %u", vendor, type,
                      hardware, firmware);
        line("identity", text);
    }
    std::uint32_t id = 0;
    std::array<char, 256> text{};
    if (Tavra_ReadCameraSerialIDA(handle, &id, text.data(), text.size())) {
        line("serial", std::to_string(id) + (text[0] != 0 ? std::string(" \"") + text.data() + "\"" : ""));
    }
    std::uint16_t array = 0;
    if (Tavra_GetColorArray(handle, &array)) line("colour array", nameOf(kColorArrays, array));
}

void showLink(TavraHandle handle) {
    std::uint8_t speed = 0, most = 0;
    if (!Tavra_GetUSBSpeed(handle, &speed) || !Tavra_GetUSBMaxSpeed(handle, &most)) return;
    std::string text = nameOf(kLinkSpeeds, speed);
    if (speed < most) text += ", slower than the camera can: " + nameOf(kLinkSpeeds, most);
    line("link", text);
    std::uint8_t address = 0;
    if (Tavra_GetUSBFunctionAddress(handle, &address)) line("usb address", std::to_string(address));
}

void showFormats(TavraHandle handle) {
    std::uint32_t mask = 0;
    if (Tavra_GetEnableTransferBitsPerPixel(handle, &mask)) line("can send", namesIn(kTransferBits, mask));
    if (Tavra_GetEnablePreviewPixelFormat(handle, &mask)) line("can show", namesIn(kPixelFormats, mask));
    std::uint32_t regions = 0;
    if (Tavra_GetMaxROICount(handle, &regions)) line("regions", std::to_string(regions));
    std::uint32_t bytes = 0;
    if (Tavra_GetRawDataSize(handle, &bytes)) line("raw frame", std::to_string(bytes) + " bytes");
}

}  // namespace

void addInfo(CLI::App& app) {
    auto* const command = app.add_subcommand("info", "Show one camera: identity, link, formats, settings");
    static CameraChoice choice;
    choice.addTo(*command);
    command->callback([] {
        const Camera camera(choice);
        line("model", camera.name());
        showIdentity(camera.handle());
        showLink(camera.handle());
        showFormats(camera.handle());
        for (const Setting& setting : settings()) {
            try {
                line(setting.name, setting.get(camera));
            } catch (const Failure&) {
                line(setting.name, "-");
            }
        }
    });
}

std::string versionText() {
    std::uint32_t file[2] = {}, product[2] = {};
    Tavra_GetCAMDllVersion(&file[0], &file[1], &product[0], &product[1]);
    return "tavra " + version(product[0], product[1]);
}

}  // namespace tavra::tool
