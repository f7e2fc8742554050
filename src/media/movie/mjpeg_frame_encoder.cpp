#include "media/movie/mjpeg_frame_encoder.h"

#include <algorithm>
#include <limits>
#include <new>

#include "media/movie/frame_buffer.h"

namespace tavra::movie {
namespace {

// Noise at the best quality takes more bytes than its pixels. The transform keeps the energy of a block, so
// that with steps of 1 no block takes more than 64 times 18 bits (or, with larger coefficients, fewer of
// them), and at most one byte of 18 bits is followed by a stuffed zero: 208 bytes.
std::uint64_t largestStream(const ImageDescription& image) {
    constexpr std::uint64_t kHeaders = 1024;
    constexpr std::uint64_t kBlockBytes = 256;
    constexpr std::uint64_t kBlocksPerMcu = 4;
    const std::uint64_t across = (static_cast<std::uint64_t>(image.width) + 15) / 16;
    const std::uint64_t down = (static_cast<std::uint64_t>(image.height) + 7) / 8;
    return kHeaders + across * down * kBlocksPerMcu * kBlockBytes;
}

// With header, pad byte and spare room it is at most 1 GiB, which is as much as a segment takes. A stream
// that would be longer ends the recording.
constexpr std::uint64_t kLargestStream = (1 << 30) - 2 * FrameBuffer::kSpareRoom;

// What JPEG has numbers for, and the header of the movie.
bool canTell(const MovieSettings& settings) {
    const auto isSide = [](std::int32_t pixels) {
        return pixels >= 1 && static_cast<std::uint32_t>(pixels) <= CJPEGEncoder::kLargestSide;
    };
    const ImageDescription& image = settings.image;
    if (!isSide(image.width) || !isSide(image.height)) return false;
    const std::uint64_t colorBytes =
        std::uint64_t{3} * static_cast<std::uint32_t>(image.width) * static_cast<std::uint32_t>(image.height);
    return colorBytes <= std::numeric_limits<std::uint32_t>::max() &&
           settings.quality <= CJPEGEncoder::kFinestQuality;
}

JpegColor colorOf(const MovieSettings& settings) {
    if (settings.image.isGray()) return JpegColor::Gray;
    return settings.swapRedBlue ? JpegColor::Rgb : JpegColor::Bgr;
}

JpegError encodeImage(CJPEGEncoder& encoder, const MovieSettings& settings, const std::uint8_t* image) {
    TAVRA_RETURN_IF_JPEG_ERROR(
        encoder.SetSource(image, settings.rowStride, static_cast<std::uint32_t>(settings.image.width),
                          static_cast<std::uint32_t>(settings.image.height), settings.image.bitCount / 8u,
                          colorOf(settings), JpegSampling::Sampling444));
    TAVRA_RETURN_IF_JPEG_ERROR(encoder.SetParams(JpegMode::Baseline, JpegColor::YCbCr,
                                                 JpegSampling::Sampling422, 0, false, settings.quality));
    TAVRA_RETURN_IF_JPEG_ERROR(encoder.WriteHeader());
    return encoder.WriteData();
}

Status statusOf(JpegError encoded) {
    switch (encoded) {
        case JpegError::None: return {};
        case JpegError::OutOfMemory: return Status(error::kOutOfMemory);
        case JpegError::FileIo: return Status(error::kFileTooLarge);  // the block is full
        default: return Status(error::kInvalidArgument);
    }
}

}  // namespace

Status MjpegFrameEncoder::prepare(const MovieSettings& settings) {
    free();
    if (!canTell(settings)) return Status(error::kInvalidArgument);
    const std::uint64_t capacity = std::min(largestStream(settings.image), kLargestStream);
    TAVRA_RETURN_IF_ERROR(block_.allocate(capacity + FrameBuffer::kSpareRoom));
    stream_.SetMemory(block_.data(), FrameBuffer::kHeaderRoom, capacity);
    encoder_.reset(new (std::nothrow) CJPEGEncoder);
    if (!encoder_ || encoder_->SetDestination(&stream_) != JpegError::None) {
        free();
        return Status(error::kOutOfMemory);
    }
    return {};
}

void MjpegFrameEncoder::free() {
    encoder_.reset();
    stream_.SetMemory(nullptr, 0, 0);
    block_.free();
}

Status MjpegFrameEncoder::encode(const MovieSettings& settings, const std::uint8_t* image,
                                 std::uint32_t& size) {
    stream_.Reset();
    const JpegError encoded = encodeImage(*encoder_, settings, image);
    size = static_cast<std::uint32_t>(stream_.length());
    return statusOf(encoded);
}

}  // namespace tavra::movie
