#include "media/stills/jpeg_writer.h"

#include "platform/last_error.h"

namespace tavra::stills {
namespace {

// By design: this lets 2, 256 and 512 through, which the writer then refuses, leaving an empty file behind.
bool admits(std::uint32_t format) {
    return format == 1 || format == 2 || format == 4 || format == 8 || format == 256 || format == 512;
}

// There is no encoder in the library yet: what would need it fails, and makes no file.
Status check(const ImageView& image) {
    if (hasByteSamples(image.format)) return platform::failWith(error::kNotSupported);
    return {};
}

Status write(const ImageView&, std::uint32_t, platform::OutputFile&) {
    return platform::failWith(error::kInvalidArgument);
}

}  // namespace

const StillWriter kJpegWriter = {admits, check, platform::OutputFile::Buffering::None, write};

}  // namespace tavra::stills
