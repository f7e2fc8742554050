// The codec that the application's chooser function named (tavra_host.h).
#pragma once

#include "platform/codec_movie.h"
#include "tavra/tavra_host.h"

namespace tavra::platform {

struct CodecChoice::Native {
    TavraCodecChoice codec{};
};

}  // namespace tavra::platform
