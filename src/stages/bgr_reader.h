// Pixels in the memory order B, G, R taken apart into three planes of samples: the reverse of
// interpolation/bgr_writer.h. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavra {

// Reads `count` pixels that lie `pitch` samples apart, 3 or 4; a fourth sample is left out, and nothing
// behind the last pixel is read. The planes and the pixels do not overlap.
template <class Sample>
void readBgr(const Sample* pixels, std::size_t pitch, Sample* blue, Sample* green, Sample* red,
             std::size_t count);

extern template void readBgr(const std::uint8_t*, std::size_t, std::uint8_t*, std::uint8_t*, std::uint8_t*,
                             std::size_t);
extern template void readBgr(const std::uint16_t*, std::size_t, std::uint16_t*, std::uint16_t*,
                             std::uint16_t*, std::size_t);

}  // namespace tavra
