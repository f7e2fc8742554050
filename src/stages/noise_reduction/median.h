// The limit of each sample at the median of itself and its neighbours. Pure; any thread.
#pragma once

#include "stages/noise_reduction/neighbours.h"

namespace tavra::noise {

// Reads `frame` and writes the frame at `output`, another buffer of the same size. Neighbours are left,
// right, above and below; in a mosaic (R or B first) two samples away for R and B, and the four diagonal ones
// for G. Those outside the frame are left out.
//
// A sample becomes min(m, sample), where m is of the sample and its neighbours in descending order the third
// of five, the mean of the second and third of four, cut off, the second of three, the mean of two, cut off.
void limitToMedian(const Frame& frame, bool mosaic, std::uint8_t* output);

}  // namespace tavra::noise
