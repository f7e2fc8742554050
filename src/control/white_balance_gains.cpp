#include "control/white_balance_gains.h"

#include <algorithm>
#include <cstring>

namespace tavra {
namespace {

// The curves of a row, laid out for a block of samples that are mapped side by side. A curve that is
// evaluated costs the processor a fraction of 256 bytes of table that are looked up one by one.
struct RowLanes {
    static constexpr std::size_t kBlock = 64;

    RowLanes(const GainCurve& even, const GainCurve& odd) {
        for (std::size_t k = 0; k < kBlock; ++k) {
            const GainCurve& curve = (k & 1) == 0 ? even : odd;
            gain[k] = curve.gain();
            cut[k] = curve.cut();
        }
    }

    std::array<std::uint16_t, kBlock> gain;
    std::array<std::uint16_t, kBlock> cut;
};

void applyToBlock(const RowLanes& lanes, const std::uint8_t* in, std::uint8_t* out) {
    std::array<std::uint8_t, RowLanes::kBlock> mapped;
    for (std::size_t k = 0; k < RowLanes::kBlock; ++k) {
        // Below the cut a product fits; what wraps is 255 anyway.
        const std::uint16_t sample = in[k];
        const auto product = static_cast<std::uint16_t>(sample * unsigned{lanes.gain[k]});
        const std::uint16_t value = sample < lanes.cut[k] ? product >> 7 : 255;
        mapped[k] = static_cast<std::uint8_t>(value);
    }
    std::memcpy(out, mapped.data(), mapped.size());
}

// Blocks begin at even columns, so that a lane keeps its curve.
void applyToRow(const RowLanes& lanes, std::size_t count, std::uint8_t* row) {
    std::size_t done = 0;
    for (; done + RowLanes::kBlock <= count; done += RowLanes::kBlock) {
        applyToBlock(lanes, row + done, row + done);
    }
    std::array<std::uint8_t, RowLanes::kBlock> rest{};
    std::memcpy(rest.data(), row + done, count - done);
    applyToBlock(lanes, rest.data(), rest.data());
    std::memcpy(row + done, rest.data(), count - done);
}

}  // namespace

void applyGains(std::uint32_t width, std::uint32_t height, const std::array<GainCurve, 4>& byPosition,
                std::uint8_t* image) {
    const std::size_t paired = width & ~1u;
    const RowLanes upper(byPosition[0], byPosition[1]);
    const RowLanes lower(byPosition[2], byPosition[3]);
    for (std::size_t y = 0; y < (height & ~1u); y += 2) {
        std::uint8_t* const row = image + y * width;
        applyToRow(upper, paired, row);
        applyToRow(lower, paired, row + width);
    }
}

}  // namespace tavra
