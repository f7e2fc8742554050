// Walks over the devices of an interface class, and the walk that restarts the high-speed USB root hubs.
//
// A walk belongs to the operation that makes it, and uses a DeviceSetup that outlives it. One thread.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "platform/device_setup.h"

namespace tavra::platform {

class CEnumInterface {
  public:
    CEnumInterface(DeviceSetup& setup, const InterfaceClass& interfaceClass)
        : setup_(setup), interfaceClass_(interfaceClass) {}
    virtual ~CEnumInterface() = default;
    CEnumInterface(const CEnumInterface&) = delete;
    CEnumInterface& operator=(const CEnumInterface&) = delete;

    // Calls OnDevice for each device that is present and tells its interface. By design: what came of the
    // last device is what came of the walk, and no device at all is a success.
    Status run();

  protected:
    virtual bool OnDevice(DeviceSet set, const DeviceRecord& device) = 0;

    DeviceSetup& setup() { return setup_; }

  private:
    Status walk(DeviceSet set);
    Status visit(DeviceSet set, const DeviceRecord& device, bool& outOfMemory);
    Status failure();

    DeviceSetup& setup_;
    const InterfaceClass interfaceClass_;
};

class CEnumInterfaceResetHighSpeedHC final : public CEnumInterface {
  public:
    explicit CEnumInterfaceResetHighSpeedHC(DeviceSetup& setup);

  protected:
    // Always true: a hub that could not be restarted is no failure of the walk.
    bool OnDevice(DeviceSet set, const DeviceRecord& device) override;
};

}  // namespace tavra::platform
