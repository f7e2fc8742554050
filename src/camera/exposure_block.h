// The shutter and gain block: 64 bytes that a camera gives and takes with vendor request 33.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "base/status.h"

namespace tavra {

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

}  // namespace tavra
