// A row of a raw frame corrected by a row of the map. Pure functions; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavra::shading {

// A row in place: `count` samples, and as many int32_t entries at any address. `maximum` is the highest level
// of a sample, at most what its type holds.
template <class Sample>
using CorrectRow = void (*)(Sample* samples, const std::uint8_t* entries, std::size_t count,
                            std::uint32_t maximum);

// sample x entry / 128, at most the maximum. By design: an entry counts as unsigned, so that a negative one
// gives the maximum (and 0 for a sample of 0), not less light.
template <class Sample>
void multiplyRow(Sample* samples, const std::uint8_t* entries, std::size_t count, std::uint32_t maximum);

// sample + entry, from 0 to the maximum.
template <class Sample>
void addRow(Sample* samples, const std::uint8_t* entries, std::size_t count, std::uint32_t maximum);

// The entry itself, at most the maximum. By design: an entry counts as unsigned, so that a negative one gives
// the maximum, not 0.
template <class Sample>
void showRow(Sample* samples, const std::uint8_t* entries, std::size_t count, std::uint32_t maximum);

}  // namespace tavra::shading
