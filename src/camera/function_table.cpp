#include "camera/function_table.h"

#include <algorithm>
#include <initializer_list>

namespace tavra {
namespace {

constexpr std::uint32_t kNoDigitalGain = 0xA0008;

bool isOneOf(std::uint16_t type, std::initializer_list<std::uint16_t> types) {
    return std::ranges::find(types, type) != types.end();
}

// Below 0x10000: words counted by 16 bits. From there on: N x 0x10000 + b is bit b of the 32-bit pair N - 1.
bool capabilityBit(const CapabilityWords& capabilities, std::uint32_t number) {
    std::uint32_t word = number / 16;
    std::uint32_t bit = number % 16;
    if (number >= 0x10000) {
        const std::uint32_t pair = (number >> 16) - 1;
        const std::uint32_t pairBit = number & 0xFFFF;
        word = 2 * pair + (pairBit < 16 ? 0 : 1);
        bit = pairBit < 16 ? pairBit : pairBit - 16;
    }
    return word < CapabilityWords::kCount && bit < 16 && capabilities.bit(word, bit);
}

}  // namespace

bool isFirstBoardOfEarlyType(const CameraInfo& info) {
    return isOneOf(info.productType, {2310, 4102, 4358, 4614, 5382, 5638}) && info.hardwareRevision == 15;
}

bool hasFunction(const CameraInfo& info, const CapabilityWords& capabilities, std::uint16_t colorArray,
                 std::uint32_t number) {
    if (isLegacyType(info.productType)) return false;
    switch (number) {
        case 256:
        case 258:
        case 260:
        case 261: return true;
        case 257: return !capabilityBit(capabilities, kNoDigitalGain);
        case 259: return colorArray == 1 || info.productType == 529;
        case 0:
            if (!isOneOf(info.productType, {272, 528, 2310, 4102})) return false;
            break;
        case 1:
            if (isFirstBoardOfEarlyType(info)) return true;
            break;
        case 2:
        case 6:
            if (info.productType == 2310 && info.hardwareRevision == 16) return true;
            break;
        default: break;
    }
    return capabilityBit(capabilities, number);
}

}  // namespace tavra
