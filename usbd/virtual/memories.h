// What a virtual camera keeps when it is switched off, its I2C devices, and its firmware loader: the answers
// to the requests of wire_protocol.h. Belongs to one camera, which locks around it.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <utility>
#include <vector>

#include "device.h"
#include "model.h"

namespace tavra::usbd {

class Memories {
  public:
    explicit Memories(const Model& model);

    // True: the request is one of this object's, and `result` is 0 or the error number of its stall.
    bool request(const ControlSetup& setup, std::span<std::uint8_t> data, ErrorCode& result);

    // True once after a download that ended with the processor let run.
    bool takeRestart();

  private:
    struct Bus {
        std::uint32_t registerBits;
        std::vector<std::uint8_t> bytes;
    };

    ErrorCode memory(const ControlSetup& setup, std::span<std::uint8_t> data);
    ErrorCode i2c(const ControlSetup& setup, std::span<std::uint8_t> data, std::uint32_t registerBits);
    ErrorCode control(const ControlSetup& setup);
    ErrorCode firmwareData(const ControlSetup& setup, std::span<const std::uint8_t> data);
    ErrorCode firmwareResult(const ControlSetup& setup, std::span<std::uint8_t> data) const;

    std::vector<std::uint8_t> spaces_[3];  // by wire::MemorySpace
    std::map<std::pair<std::uint8_t, std::uint8_t>, Bus> buses_;
    bool loadable_;
    bool held_ = false;
    std::uint32_t taken_ = 0;
    bool restart_ = false;
};

}  // namespace tavra::usbd
