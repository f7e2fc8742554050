// In builds without FFmpeg's headers there is no codec.
#include "platform/codec_movie.h"
#include "platform/last_error.h"

namespace tavra::platform {

struct CodecMovie::Native {};

CodecMovie::CodecMovie() = default;
CodecMovie::~CodecMovie() = default;

Status CodecMovie::open(const std::u16string&, const CodecMovieSettings&) {
    return failWith(error::kCodecMissing);
}

Status CodecMovie::write(std::uint32_t, const std::uint8_t*, std::size_t, std::uint32_t& written) {
    written = 0;
    return failWith(error::kFileStream);
}

bool CodecMovie::isCompressed() const {
    return false;
}

Status CodecMovie::close() {
    return {};
}

}  // namespace tavra::platform
