// Three planes of samples woven into pixels in the memory order B, G, R. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavra::interpolation {

// Writes `count` pixels that lie `pitch` samples apart, at least 3. Nothing but B, G and R of these pixels
// changes; with pitch 4 the fourth sample is rewritten with the value it had. The planes and the pixels do
// not overlap.
template <class Sample>
void writeBgr(Sample* pixels, std::size_t pitch, const Sample* blue, const Sample* green, const Sample* red,
              std::size_t count);

extern template void writeBgr(std::uint8_t*, std::size_t, const std::uint8_t*, const std::uint8_t*,
                              const std::uint8_t*, std::size_t);
extern template void writeBgr(std::uint16_t*, std::size_t, const std::uint16_t*, const std::uint16_t*,
                              const std::uint16_t*, std::size_t);

}  // namespace tavra::interpolation
