// Skipping, binning and the binning sum: geometry that has status words of its own.
#include "camera/common_param.h"
#include "camera/function_table.h"
#include "camera/geometry.h"

namespace tavra {
namespace {

constexpr unsigned kHasStatusWord = 0x8000;  // bit of the enable mask of scan modes
constexpr std::uint16_t kBinningAddress = 33;
constexpr std::uint16_t kSumRead = 46;
constexpr std::uint16_t kSumWrite = 0x802E;

bool hasBinningWord(const TAVRA_COMMON_PARAM& camera) {
    return (camera.info.enableScanModes & kHasStatusWord) != 0;
}

bool isBinningScanMode(std::uint16_t mode) {
    return mode == 16 || mode == 32 || mode == 64 || mode == 128 || mode == 256;
}

std::uint8_t nibble(std::uint16_t word, unsigned shift) {
    return static_cast<std::uint8_t>(word >> shift & 15u);
}

unsigned inNibble(std::uint8_t factor, unsigned shift) {
    return (factor & 15u) << shift;
}

bool hasBinningSum(const TAVRA_COMMON_PARAM& camera) {
    return camera.can(3, 13) || camera.hasFunction(function::kBinningSum);
}

}  // namespace

Status getSkippingAndBinning(TAVRA_COMMON_PARAM& camera, SkippingAndBinning& factors) {
    if (!hasBinningWord(camera)) {
        const std::uint8_t binned = isBinningScanMode(camera.geometry->scanRecord().scanMode()) ? 1 : 0;
        factors = {0, binned, 0, binned};
        return Status();
    }
    std::uint16_t word = 0;
    TAVRA_RETURN_IF_ERROR(camera.control.readStatusWord(kBinningAddress, word));
    factors = {nibble(word, 12), nibble(word, 4), nibble(word, 8), nibble(word, 0)};
    return Status();
}

Status setSkippingAndBinning(TAVRA_COMMON_PARAM& camera, const SkippingAndBinning& f) {
    if (camera.transferRunning()) return Status(error::kTransferRunning);
    if (!hasBinningWord(camera)) return Status(error::kInvalidArgument);
    const unsigned word = inNibble(f.horizontalSkipping, 12) | inNibble(f.horizontalBinning, 8) |
                          inNibble(f.verticalSkipping, 4) | inNibble(f.verticalBinning, 0);
    TAVRA_RETURN_IF_ERROR(camera.control.writeStatusWord(kBinningAddress, static_cast<std::uint16_t>(word)));
    TAVRA_RETURN_IF_ERROR(camera.control.applyChange());
    return refreshGeometry(camera, PreviewUpdate::Yes);
}

Status getBinningSumMode(TAVRA_COMMON_PARAM& camera, std::uint16_t& mode) {
    mode = 0;
    return hasBinningSum(camera) ? camera.control.readStatusWord(kSumRead, mode) : Status();
}

Status setBinningSumMode(TAVRA_COMMON_PARAM& camera, std::uint16_t mode) {
    if (!hasBinningSum(camera)) return Status(error::kInvalidArgument);
    return camera.control.writeStatusWord(kSumWrite, mode);
}

}  // namespace tavra
