// Baseline TIFF: little-endian, one uncompressed strip, 8 or 16 bits a sample.
#pragma once

#include "media/stills/still_writer.h"

namespace tavra::stills {

extern const StillWriter kTiffWriter;

}  // namespace tavra::stills
