// Dark frames: taking one, subtracting it, and mending what was saturated. Pure; any thread.
#pragma once

#include "stages/noise_reduction/neighbours.h"

namespace tavra::noise {

// Takes from each sample the least value of its position (x & 1, y & 1). By design, whole pairs of rows and
// columns only: an odd last row or column counts for nothing and stays.
void subtractBlackLevels(std::size_t width, std::size_t height, std::uint8_t* samples);

// samples - dark, not below 0.
void subtract(const std::uint8_t* dark, std::size_t count, std::uint8_t* samples);

// Raises samples that were saturated (253 and above) in `before` and are no longer: to the third of the
// sample and four neighbours in descending order, if that is more. In place, so that a sample that was raised
// counts as such for those to its right and below. Mono: the four diagonal neighbours, on all but the
// outermost samples. Mosaic with R first: the neighbours of the median limit, on all but the outermost two.
void restoreSaturated(const Frame& before, bool mosaic, std::uint8_t* samples);

}  // namespace tavra::noise
