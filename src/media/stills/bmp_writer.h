// Windows bitmaps: bottom-up, uncompressed, 8 bits with a grey palette, 24 or 32 bits.
#pragma once

#include "media/stills/still_writer.h"

namespace tavra::stills {

extern const StillWriter kBmpWriter;

}  // namespace tavra::stills
