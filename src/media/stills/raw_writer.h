// The bytes of the image as they lie in memory, back to back from its start, with no header.
#pragma once

#include "media/stills/still_writer.h"

namespace tavra::stills {

extern const StillWriter kRawWriter;

}  // namespace tavra::stills
