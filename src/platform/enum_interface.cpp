#include "platform/enum_interface.h"

#include <cstddef>
#include <memory>
#include <new>
#include <string_view>

namespace tavra::platform {
namespace {

// Numbers of the device setup interface.
constexpr std::uint32_t kPresentDeviceInterfaces = 18;
constexpr std::uint32_t kHardwareIdProperty = 2;
constexpr std::uint32_t kClassInstallHeaderSize = 8;
constexpr std::uint32_t kPropertyChangeFunction = 18;
constexpr std::uint32_t kStateChangeOfProperties = 3;
constexpr std::uint32_t kScopeOfHardwareProfile = 2;
constexpr std::uint32_t kCurrentHardwareProfile = 0;
constexpr std::uint32_t kDeviceInstallParamsSize = 584;

// {F18A0E88-C30C-11D0-8815-00A0C906BED8}
constexpr InterfaceClass kUsbHubs = {0x88, 0x0E, 0x8A, 0xF1, 0x0C, 0xC3, 0xD0, 0x11,
                                     0x88, 0x15, 0x00, 0xA0, 0xC9, 0x06, 0xBE, 0xD8};

constexpr std::u16string_view kRootHub = u"ROOT_HUB";
constexpr std::u16string_view kFullSpeedRootHub = u"USB\\ROOT_HUB&";

// Root hubs of high speed and above carry their generation behind the name.
bool isHighSpeedRootHub(std::u16string_view hardwareId) {
    return hardwareId.find(kRootHub) != std::u16string_view::npos &&
           !hardwareId.starts_with(kFullSpeedRootHub);
}

}  // namespace

// The code of the call that failed; never that of success, which some of them leave.
Status CEnumInterface::failure() {
    const std::uint32_t code = setup_.lastError();
    return Status(code != error::kNone ? code : error::kDeviceNotFunctioning);
}

Status CEnumInterface::run() {
    const DeviceSet set = setup_.getClassDevices(interfaceClass_, kPresentDeviceInterfaces);
    if (set == nullptr) return failure();
    const Status result = walk(set);
    setup_.destroy(set);
    return result;
}

Status CEnumInterface::walk(DeviceSet set) {
    Status result;
    bool outOfMemory = false;
    DeviceRecord device;
    for (std::uint32_t index = 0; !outOfMemory && setup_.enumDevice(set, index, device); ++index) {
        result = visit(set, device, outOfMemory);
        device = {};
    }
    return result;
}

// By design: a device without the interface shows when its detail is asked for.
Status CEnumInterface::visit(DeviceSet set, const DeviceRecord& device, bool& outOfMemory) {
    InterfaceRecord record;
    setup_.enumInterface(set, device, interfaceClass_, 0, record);
    const std::uint32_t size = setup_.interfaceDetailSize(set, record);
    const std::unique_ptr<std::byte[]> detail(new (std::nothrow) std::byte[size]);
    outOfMemory = detail == nullptr;
    if (outOfMemory) return Status(error::kOutOfMemory);
    if (!setup_.getInterfaceDetail(set, record, {detail.get(), size})) return failure();
    return OnDevice(set, device) ? Status() : failure();
}

CEnumInterfaceResetHighSpeedHC::CEnumInterfaceResetHighSpeedHC(DeviceSetup& setup)
    : CEnumInterface(setup, kUsbHubs) {}

bool CEnumInterfaceResetHighSpeedHC::OnDevice(DeviceSet set, const DeviceRecord& device) {
    if (!isHighSpeedRootHub(setup().deviceProperty(device, kHardwareIdProperty))) return true;
    const PropertyChange change{kClassInstallHeaderSize, kPropertyChangeFunction, kStateChangeOfProperties,
                                kScopeOfHardwareProfile, kCurrentHardwareProfile};
    if (setup().setClassInstallParams(set, device, change) &&
        setup().callClassInstaller(kPropertyChangeFunction, set, device)) {
        setup().getDeviceInstallParams(set, device, kDeviceInstallParamsSize);
    }
    return true;
}

}  // namespace tavra::platform
