// Sharpening of grey bytes by arithmetic alone, the quickest of the byte kernels. No lock; any thread, with
// an image and a line store of its own.
#pragma once

#include "stages/sharpness/byte_chunk.h"
#include "stages/sharpness/kernel.h"

namespace tavra::sharpness {

// An image of fewer columns is left to the others.
inline constexpr std::size_t kLeastGreyWidth = kChunk + 2;

void sharpenGrey(const Image<std::uint8_t>& image, const CorrectionLine& line, std::int16_t coring,
                 LineStore<std::uint8_t> lines);

}  // namespace tavra::sharpness
