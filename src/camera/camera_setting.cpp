#include "camera/camera_setting.h"

#include <array>

#include "base/little_endian.h"
#include "camera/common_param.h"
#include "camera/device_information.h"
#include "camera/geometry.h"

namespace tavra {
namespace {

constexpr std::uint8_t kRequest = 129;
constexpr unsigned kChangesState = 0x9000;
constexpr unsigned kToSetupMemory = 0x2000;
constexpr std::uint32_t kSetupFirst = 14;
constexpr std::uint32_t kSetupLast = 15;
constexpr unsigned kSetupMark = 0x1000;
constexpr unsigned kSetupCommandBits = 0x0C00;

bool keepsSetup(std::uint16_t productType) {
    return productType == 273 || productType == 529;
}

// Two of the older types want the command in the setup memory as well.
Status storeInSetupMemory(const ControlChannel& control, std::uint16_t command) {
    const platform::UsbAccess& usb = *control.access();
    std::array<std::uint8_t, 2> word{};
    std::uint32_t moved = 0;
    if (usb.readSetupMemory(control.device(), kSetupFirst, kSetupLast, word.data(), &moved) == 0 ||
        moved != word.size()) {
        return Status(error::kControlTransfer);
    }
    const unsigned changed = loadLe16(word.data()) | kSetupMark | (command & kSetupCommandBits);
    storeLe16(word.data(), static_cast<std::uint16_t>(changed));
    if (usb.writeSetupMemory(control.device(), kSetupFirst, kSetupLast, word.data(), &moved) == 0 ||
        moved != word.size()) {
        return Status(error::kControlTransfer);
    }
    return Status();
}

}  // namespace

Status sendCameraSetting(TAVRA_COMMON_PARAM& camera, std::uint16_t command) {
    const bool changesState = (command & kChangesState) != 0;
    // The images are made anew below, and a running stream works in them.
    if (changesState && camera.transferRunning()) return Status(error::kTransferRunning);
    std::array<std::uint8_t, 2> bytes{};
    storeLe16(bytes.data(), command);
    TAVRA_RETURN_IF_ERROR(camera.control.out(kRequest, 0, 0, bytes));
    if ((command & kToSetupMemory) != 0 && keepsSetup(camera.info.productType)) {
        TAVRA_RETURN_IF_ERROR(storeInSetupMemory(camera.control, command));
    }
    if (!changesState) return Status();
    TAVRA_RETURN_IF_ERROR(readTransferState(camera));
    return refreshGeometry(camera, PreviewUpdate::Yes);
}

}  // namespace tavra
