// Sharpening of grey images by arithmetic alone, the quickest of the kernels. No lock; any thread, with an
// image and a line store of its own.
#pragma once

#include "stages/sharpness/kernel.h"
#include "stages/sharpness/rows.h"

namespace tavra::sharpness {

// An image of fewer columns is left to the others.
template <class Sample>
inline constexpr std::size_t kLeastGreyWidth = kChunkOf<Sample> + 2;

void sharpenGrey(const Image<std::uint8_t>& image, const CorrectionLine& line, std::int16_t coring,
                 LineStore<std::uint8_t> lines);
void sharpenGrey(const Image<std::uint16_t>& image, const lanes::PiecewiseLine& line, std::int16_t coring,
                 LineStore<std::uint16_t> lines);

}  // namespace tavra::sharpness
