// One component of a JPEG stream, and the memory in which a row of its MCUs is prepared.
#pragma once

#include <cstdint>

#include "media/jpeg/memory_buffer.h"

namespace tavra {

// Rows of samples, one after the other.
struct JpegPlane {
    std::uint32_t rows = 0;
    std::uint32_t step = 0;  // bytes from row to row
    CMemoryBuffer buffer;

    JpegError Allocate(std::uint32_t rowCount, std::uint32_t rowStep) {
        rows = rowCount;
        step = rowStep;
        return buffer.Allocate(std::size_t{rowCount} * rowStep);
    }
    std::uint8_t* row(std::uint32_t y) const { return buffer.data() + std::size_t{y} * step; }
};

class CJPEGColorComponent {
  public:
    // WrongParameters for a selector above 4.
    JpegError Select(unsigned quantTable, unsigned dcTable, unsigned acTable);

    unsigned id = 0;
    unsigned quantSelector = 0;
    unsigned dcSelector = 0;
    unsigned acSelector = 0;
    unsigned horizontalFactor = 1;
    unsigned verticalFactor = 1;
    unsigned horizontalScale = 1;  // columns of the image to one of the component
    unsigned verticalScale = 1;    // rows of the image to one of the component
    unsigned blockCount = 1;       // in an MCU
    JpegPlane colorPlane;          // the component of each pixel
    JpegPlane samplePlane;         // what is left of it after subsampling
    std::int16_t lastDc = 0;
};

}  // namespace tavra
