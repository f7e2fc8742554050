// libjpeg as the other side: what it reads from a stream, and what it makes of the same pixels.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "media/jpeg/jpeg_support.h"

namespace tavra::test {

struct Decoded {
    std::uint32_t width = 0, height = 0;
    unsigned components = 0;  // of the picture
    long warnings = -1;       // -1: it could not be decoded
    ByteVector samples;       // R G B or grey, dense
};
Decoded decode(const ByteVector& stream);

struct Coefficients {
    struct Component {
        std::size_t across = 0, down = 0;                  // blocks, with those of the padding
        std::vector<std::array<std::int16_t, 64>> blocks;  // row after row, each in rows of its own
        std::array<std::uint16_t, 64> steps = {};          // in rows
    };
    std::vector<Component> components;
    long warnings = -1;
};
Coefficients readCoefficients(const ByteVector& stream);

// The same job done by libjpeg, with its accurate transform.
ByteVector encodedByLibjpeg(const JpegJob& job);

}  // namespace tavra::test
