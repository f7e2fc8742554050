// JPEG files.
#pragma once

#include "media/stills/still_writer.h"

namespace tavra::stills {

extern const StillWriter kJpegWriter;

}  // namespace tavra::stills
