#include "media/jpeg/quant_table.h"

#include <algorithm>

#include "media/jpeg/zig_zag.h"

namespace tavra {
namespace {

// From the order in which a table is read, row after row.
constexpr JpegSteps inZigZag(const JpegSteps& rows) {
    JpegSteps steps = {};
    for (std::size_t k = 0; k < steps.size(); ++k) {
        const auto [v, u] = jpeg::kZigZag[k];
        steps[k] = rows[v * 8U + u];
    }
    return steps;
}

}  // namespace

// clang-format off
constexpr JpegSteps CJPEGEncoderQuantTable::kLuminance = inZigZag({
    16, 11, 10, 16,  24,  40,  51,  61,
    12, 12, 14, 19,  26,  58,  60,  55,
    14, 13, 16, 24,  40,  57,  69,  56,
    14, 17, 22, 29,  51,  87,  80,  62,
    18, 22, 37, 56,  68, 109, 103,  77,
    24, 35, 55, 64,  81, 104, 113,  92,
    49, 64, 78, 87, 103, 121, 120, 101,
    72, 92, 95, 98, 112, 100, 103,  99});

constexpr JpegSteps CJPEGEncoderQuantTable::kChrominance = inZigZag({
    17, 18, 24, 47, 99, 99, 99, 99,
    18, 21, 26, 66, 99, 99, 99, 99,
    24, 26, 56, 99, 99, 99, 99, 99,
    47, 66, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99});
// clang-format on

void CJPEGEncoderQuantTable::Load(unsigned id, const JpegSteps& steps) {
    id_ = id;
    steps_ = steps;
    initialized_ = true;
}

void CJPEGEncoderQuantTable::Scale(unsigned quality) {
    if (quality == 0) return;
    const unsigned percent = quality < 50 ? 5000 / quality : 200 - 2 * quality;
    for (std::uint8_t& step : steps_) {
        step = static_cast<std::uint8_t>(std::clamp((step * percent + 50) / 100, 1U, 255U));
    }
}

void CJPEGEncoderQuantTable::BuildForward() {
    forward_ = jpeg::makeForwardTable(steps_);
}

}  // namespace tavra
