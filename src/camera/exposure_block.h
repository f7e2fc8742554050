// The shutter and gain block: 64 bytes that a camera gives and takes with vendor request 33.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "base/status.h"

namespace tavra {

class TAVRA_COMMON_PARAM;
class ControlChannel;

struct ExposureBlock {
    static constexpr std::size_t kSize = 64;

    std::uint32_t lines = 0;
    std::uint16_t clocks = 0;
    std::uint16_t gain = 0;

    static ExposureBlock parse(std::span<const std::uint8_t, kSize> bytes);
    std::array<std::uint8_t, kSize> compose() const;
};

// 0xE0000005: the transfer failed or was not 64 bytes long. Any thread.
Status readExposureBlock(ControlChannel& control, ExposureBlock& block);
Status writeExposureBlock(ControlChannel& control, const ExposureBlock& block);

// The exposure in clocks, as the camera has it: an exposure at or above the longest is the longest one; 0
// means that the shutter stays out of the way.
Status exposureClocks(TAVRA_COMMON_PARAM& camera, std::uint32_t& clocks);
// Sets it, split into lines and clocks, and sends the frame timing; the gain stays as the camera has it. 87:
// more lines than the longest exposure has.
Status setExposureClocks(TAVRA_COMMON_PARAM& camera, std::uint32_t clocks);

}  // namespace tavra
