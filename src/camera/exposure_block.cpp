#include "camera/exposure_block.h"

#include "base/little_endian.h"
#include "camera/control_channel.h"

namespace tavra {
namespace {

constexpr std::uint8_t kRequest = 33;

}  // namespace

ExposureBlock ExposureBlock::parse(std::span<const std::uint8_t, kSize> bytes) {
    ExposureBlock block;
    block.lines = loadLe16(&bytes[2]) | std::uint32_t{loadLe16(&bytes[10])} << 16;
    block.clocks = loadLe16(&bytes[4]);
    block.gain = loadLe16(&bytes[6]);
    return block;
}

std::array<std::uint8_t, ExposureBlock::kSize> ExposureBlock::compose() const {
    std::array<std::uint8_t, kSize> bytes{};
    bytes[0] = kSize;
    bytes[1] = kRequest;
    storeLe16(&bytes[2], static_cast<std::uint16_t>(lines));
    storeLe16(&bytes[4], clocks);
    storeLe16(&bytes[6], gain);
    storeLe16(&bytes[10], static_cast<std::uint16_t>(lines >> 16));
    return bytes;
}

Status readExposureBlock(ControlChannel& control, ExposureBlock& block) {
    std::array<std::uint8_t, ExposureBlock::kSize> bytes{};
    TAVRA_RETURN_IF_ERROR(control.inExactly(kRequest, 0, 0, bytes));
    block = ExposureBlock::parse(bytes);
    return Status();
}

Status writeExposureBlock(ControlChannel& control, const ExposureBlock& block) {
    return control.out(kRequest, 0, 0, block.compose());
}

}  // namespace tavra
