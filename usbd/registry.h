// All devices in one enumeration, and the table of the open ones.
//
// One lives as long as the process (registry()). Any operation, any thread. A handle that is not in the table
// gives error 6; handle numbers are not used twice, so a stale one never finds another device.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "device.h"

namespace tavra::usbd {

class Registry {
  public:
    // The order of the sources is the order of their devices in the enumeration.
    explicit Registry(std::vector<std::unique_ptr<DeviceSource>> sources);

    // Opens the device at an index of a fresh enumeration, and tells its path where `path` is not null. 0:
    // failed.
    TavraUsbDevice openByIndex(std::uint32_t index, std::string* path, ErrorCode& error);
    TavraUsbDevice openByPath(const std::string& path, ErrorCode& error);

    // Takes the handle out of the table, ends the reads in flight and closes the device. Calls that are
    // running on the handle keep the device until they return.
    ErrorCode close(TavraUsbDevice handle);

    // Null: no such handle.
    std::shared_ptr<Device> find(TavraUsbDevice handle) const;

  private:
    TavraUsbDevice enter(std::unique_ptr<Device> device);

    std::mutex sourcesMutex_;  // enumerations and openings, one after the other
    std::vector<std::unique_ptr<DeviceSource>> sources_;

    mutable std::shared_mutex tableMutex_;
    std::unordered_map<TavraUsbDevice, std::shared_ptr<Device>> table_;
    TavraUsbDevice lastHandle_ = 0;
};

// The process's registry, made by the first call: real devices first, then the virtual ones.
Registry& registry();

}  // namespace tavra::usbd
