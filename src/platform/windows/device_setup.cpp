#include "platform/device_setup.h"

#include <windows.h>
// Behind it, which both need.
#include <cfgmgr32.h>
#include <setupapi.h>

#include <algorithm>
#include <bit>

namespace tavra::platform {
namespace {

static_assert(sizeof(InterfaceClass) == sizeof(GUID));
static_assert(sizeof(DeviceRecord) == sizeof(SP_DEVINFO_DATA));
static_assert(sizeof(InterfaceRecord) == sizeof(SP_DEVICE_INTERFACE_DATA));
static_assert(sizeof(PropertyChange) == sizeof(SP_PROPCHANGE_PARAMS));
static_assert(sizeof(SP_CLASSINSTALL_HEADER) == 8 && sizeof(SP_DEVINSTALL_PARAMS_W) == 584);
static_assert((DIGCF_PRESENT | DIGCF_DEVICEINTERFACE) == 18 && CM_DRP_HARDWAREID == 2);
static_assert(DIF_PROPERTYCHANGE == 18 && DICS_PROPCHANGE == 3 && DICS_FLAG_CONFIGSPECIFIC == 2);

// Longest text of a property that is read, in bytes. Hardware identifiers have 200 characters at most, and
// the first of them is all that is wanted.
constexpr ULONG kPropertyBytes = 65536;

class SystemDeviceSetup final : public DeviceSetup {
  public:
    DeviceSet getClassDevices(const InterfaceClass& interfaceClass, std::uint32_t flags) override {
        const GUID identifier = std::bit_cast<GUID>(interfaceClass);
        const HDEVINFO set = SetupDiGetClassDevsW(&identifier, nullptr, nullptr, flags);
        return set == INVALID_HANDLE_VALUE ? nullptr : set;
    }

    bool enumDevice(DeviceSet set, std::uint32_t index, DeviceRecord& device) override {
        auto native = std::bit_cast<SP_DEVINFO_DATA>(device);
        if (!SetupDiEnumDeviceInfo(set, index, &native)) return false;
        device = std::bit_cast<DeviceRecord>(native);
        return true;
    }

    bool enumInterface(DeviceSet set, const DeviceRecord& device, const InterfaceClass& interfaceClass,
                       std::uint32_t number, InterfaceRecord& record) override {
        auto nativeDevice = std::bit_cast<SP_DEVINFO_DATA>(device);
        const GUID identifier = std::bit_cast<GUID>(interfaceClass);
        auto native = std::bit_cast<SP_DEVICE_INTERFACE_DATA>(record);
        if (!SetupDiEnumDeviceInterfaces(set, &nativeDevice, &identifier, number, &native)) return false;
        record = std::bit_cast<InterfaceRecord>(native);
        return true;
    }

    std::uint32_t interfaceDetailSize(DeviceSet set, const InterfaceRecord& record) override {
        auto native = std::bit_cast<SP_DEVICE_INTERFACE_DATA>(record);
        DWORD size = 0;
        SetupDiGetDeviceInterfaceDetailW(set, &native, nullptr, 0, &size, nullptr);
        return size;
    }

    bool getInterfaceDetail(DeviceSet set, const InterfaceRecord& record,
                            std::span<std::byte> detail) override {
        if (detail.size() < sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W)) return false;
        auto native = std::bit_cast<SP_DEVICE_INTERFACE_DATA>(record);
        auto* const data = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(detail.data());
        data->cbSize = sizeof *data;
        return SetupDiGetDeviceInterfaceDetailW(set, &native, data, static_cast<DWORD>(detail.size()),
                                                nullptr, nullptr) != 0;
    }

    std::u16string deviceProperty(const DeviceRecord& device, std::uint32_t property) override {
        std::u16string text(kPropertyBytes / sizeof(char16_t), u'\0');
        ULONG bytes = kPropertyBytes;
        if (CM_Get_DevNode_Registry_PropertyW(device.instance, property, nullptr, text.data(), &bytes, 0) !=
            CR_SUCCESS) {
            return {};
        }
        text.resize(std::min(text.find(u'\0'), std::size_t{bytes} / sizeof(char16_t)));
        return text;
    }

    bool setClassInstallParams(DeviceSet set, const DeviceRecord& device,
                               const PropertyChange& change) override {
        auto native = std::bit_cast<SP_DEVINFO_DATA>(device);
        auto params = std::bit_cast<SP_PROPCHANGE_PARAMS>(change);
        return SetupDiSetClassInstallParamsW(set, &native, &params.ClassInstallHeader, sizeof params) != 0;
    }

    bool callClassInstaller(std::uint32_t function, DeviceSet set, const DeviceRecord& device) override {
        auto native = std::bit_cast<SP_DEVINFO_DATA>(device);
        return SetupDiCallClassInstaller(function, set, &native) != 0;
    }

    bool getDeviceInstallParams(DeviceSet set, const DeviceRecord& device,
                                std::uint32_t structureSize) override {
        auto native = std::bit_cast<SP_DEVINFO_DATA>(device);
        SP_DEVINSTALL_PARAMS_W params{};
        params.cbSize = structureSize;
        return SetupDiGetDeviceInstallParamsW(set, &native, &params) != 0;
    }

    void destroy(DeviceSet set) override { SetupDiDestroyDeviceInfoList(set); }

    std::uint32_t lastError() override { return GetLastError(); }
};

}  // namespace

DeviceSetup& systemDeviceSetup() {
    static SystemDeviceSetup setup;
    return setup;
}

}  // namespace tavra::platform
