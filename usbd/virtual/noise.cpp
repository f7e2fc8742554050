#include "noise.h"

namespace tavra::usbd {
namespace {

std::array<float, kNoiseValues> makeValues() {
    std::array<float, kNoiseValues> values{};
    RandomBits random(0x4E6F697365, 0);
    for (float& value : values) {
        std::uint32_t sum = 0;
        for (int i = 0; i < 3; ++i) {
            const std::uint64_t bits = random.next();
            for (int shift = 0; shift < 64; shift += 16) sum += static_cast<std::uint16_t>(bits >> shift);
        }
        value = (static_cast<float>(sum) - 6 * 65535.0f) / 65536.0f;
    }
    return values;
}

}  // namespace

const std::array<float, kNoiseValues>& noiseValues() {
    static const std::array<float, kNoiseValues> values = makeValues();
    return values;
}

}  // namespace tavra::usbd
