// PNG through libpng. Bit 0 of the option: 0 interlaces the file, 1 does not.
#pragma once

#include "media/stills/still_writer.h"

namespace tavra::stills {

extern const StillWriter kPngWriter;

}  // namespace tavra::stills
