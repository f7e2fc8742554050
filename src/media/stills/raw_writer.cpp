#include "media/stills/raw_writer.h"

#include "platform/last_error.h"

namespace tavra::stills {
namespace {

bool admits(std::uint32_t format) {
    switch (format) {
        case 1:
        case 2:
        case 4:
        case 8:
        case 16:
        case 32:
        case 64:
        case 256:
        case 512: return true;
        default: return false;
    }
}

Status check(const ImageView& image) {
    if (saturatingProduct(image.rowBytes(), image.height) > kLargestObject) {
        return platform::failWith(error::kInvalidArgument);
    }
    return {};
}

// By design: the stride has no say. A padded image gives the padding of its first rows and loses its end.
Status write(const ImageView& image, std::uint32_t, platform::OutputFile& file) {
    if (!file.write(image.data, image.rowBytes() * image.height))
        return platform::failWith(error::kWriteFault);
    return {};
}

}  // namespace

const StillWriter kRawWriter = {admits, check, platform::OutputFile::Buffering::None, write};

}  // namespace tavra::stills
