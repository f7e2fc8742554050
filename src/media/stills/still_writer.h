// What a type of still file has to offer: the operations that a save goes through, in this order. One
// constant of this type stands in each writer's file. Any thread, on files and images of its own.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "media/stills/image_view.h"
#include "platform/file.h"

namespace tavra::stills {

struct StillWriter {
    // The test of the pixel format code that comes before everything else.
    bool (*admits)(std::uint32_t format);

    // Whether the file can be made at all; asked before it is opened, so that a refusal leaves no file.
    Status (*check)(const ImageView& image);

    platform::OutputFile::Buffering buffering;

    // Writes the file's content. `option` is the last argument of the save call.
    Status (*write)(const ImageView& image, std::uint32_t option, platform::OutputFile& file);
};

}  // namespace tavra::stills
