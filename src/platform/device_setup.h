// The system's device setup interface, as far as restarting hubs needs it: one operation a call of SetupAPI
// or the configuration manager, with nothing decided on the way.
//
// Windows only; the walk over it (enum_interface.h) runs wherever there is an implementation, as in tests.
// Records have the system's layout on 64 bits. One thread at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace tavra::platform {

// Identifier of a device interface class, as in memory.
using InterfaceClass = std::array<std::uint8_t, 16>;

using DeviceSet = void*;  // device information set

struct DeviceRecord {
    std::uint32_t size = 32;
    InterfaceClass setupClass{};
    std::uint32_t instance = 0;
    std::uint64_t reserved = 0;
};

struct InterfaceRecord {
    std::uint32_t size = 32;
    InterfaceClass interfaceClass{};
    std::uint32_t flags = 0;
    std::uint64_t reserved = 0;
};

// Parameters of a class installer that is to change a device's state.
struct PropertyChange {
    std::uint32_t headerSize = 0;
    std::uint32_t installFunction = 0;
    std::uint32_t stateChange = 0;
    std::uint32_t scope = 0;
    std::uint32_t hardwareProfile = 0;
};

class DeviceSetup {
  public:
    virtual ~DeviceSetup() = default;

    // Null on failure.
    virtual DeviceSet getClassDevices(const InterfaceClass& interfaceClass, std::uint32_t flags) = 0;
    // False behind the last device.
    virtual bool enumDevice(DeviceSet set, std::uint32_t index, DeviceRecord& device) = 0;
    virtual bool enumInterface(DeviceSet set, const DeviceRecord& device,
                               const InterfaceClass& interfaceClass, std::uint32_t number,
                               InterfaceRecord& record) = 0;
    // Bytes; 0 on failure.
    virtual std::uint32_t interfaceDetailSize(DeviceSet set, const InterfaceRecord& record) = 0;
    virtual bool getInterfaceDetail(DeviceSet set, const InterfaceRecord& record,
                                    std::span<std::byte> detail) = 0;
    // The first text of a property of texts; empty on failure.
    virtual std::u16string deviceProperty(const DeviceRecord& device, std::uint32_t property) = 0;
    virtual bool setClassInstallParams(DeviceSet set, const DeviceRecord& device,
                                       const PropertyChange& change) = 0;
    virtual bool callClassInstaller(std::uint32_t function, DeviceSet set, const DeviceRecord& device) = 0;
    // Asks for the parameters in a structure of so many bytes. What they say is used by nobody.
    virtual bool getDeviceInstallParams(DeviceSet set, const DeviceRecord& device,
                                        std::uint32_t structureSize) = 0;
    virtual void destroy(DeviceSet set) = 0;

    // Code of the call that failed last.
    virtual std::uint32_t lastError() = 0;
};

#if defined(_WIN32)
// The system's own. Any thread.
DeviceSetup& systemDeviceSetup();
#endif

}  // namespace tavra::platform
