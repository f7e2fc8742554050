#include "media/movie/avi_header.h"

#include <cstring>

#include "media/movie/avi_index.h"
#include "media/movie/riff.h"

namespace tavra::movie {
namespace {

// Where the fields stand that the end of a file fills in.
constexpr std::uint32_t kRiffSizeAt = 4;
constexpr std::uint32_t kTotalFramesAt = 48;
constexpr std::uint32_t kFileBufferAt = 60;
constexpr std::uint32_t kLengthAt = 140;
constexpr std::uint32_t kStreamBufferAt = 144;
constexpr std::uint32_t kImageSizeAt = 192;

// Where lists begin whose sizes the header tells: behind their size fields.
constexpr std::uint32_t kHeaderListAt = 20;
constexpr std::uint32_t kStreamListAt = 96;

constexpr std::uint32_t kMainHeaderBytes = 56;
constexpr std::uint32_t kStreamHeaderBytes = 56;

// Flags of the main header.
constexpr std::uint32_t kHasIndex = 0x10;
constexpr std::uint32_t kTrustKeyFrames = 0x800;

constexpr std::uint32_t kDefaultQuality = 0xFFFFFFFF;

std::uint32_t microsecondsPerFrame(const MovieSettings& settings) {
    if (settings.rate == 0) return 0;
    return static_cast<std::uint32_t>(std::uint64_t{settings.scale} * 1'000'000 / settings.rate);
}

// A frame's bytes a second, the rate rounded up to whole frames.
std::uint32_t bytesPerSecond(const MovieSettings& settings, std::uint32_t frameBytes) {
    const std::uint32_t wholeFrames = settings.scale == 0 ? 0 : settings.rate / settings.scale;
    return (wholeFrames + 1) * frameBytes;
}

std::uint32_t colorBytes(const ImageDescription& image) {
    return static_cast<std::uint32_t>(image.width) * static_cast<std::uint32_t>(image.height) * 3;
}

}  // namespace

void AviHeader::build(const MovieSettings& settings, AviCodec codec, AviVersion version) {
    block_.fill(0);
    size_ = 0;
    put(fourcc("RIFF"));
    putZeros(4);
    put(fourcc("AVI "));
    put(kList);
    putZeros(4);
    put(fourcc("hdrl"));
    putMainHeader(settings, codec, version);
    put(kList);
    putZeros(4);
    put(fourcc("strl"));
    putStreamHeader(settings, codec, version);
    if (codec == AviCodec::MotionJpeg) {
        putJpegFormat(settings.image);
    } else {
        putPlainFormat(settings.image);
    }

    std::uint32_t streamMore = 0;
    std::uint32_t headerMore = 0;
    if (version == AviVersion::Two) {
        streamMore = AviSuperIndex::kBytes;
        headerMore = AviSuperIndex::kBytes + kExtendedListBytes;
    }
    storeLe32(&block_[kHeaderListAt - 4], size_ - kHeaderListAt + headerMore);
    storeLe32(&block_[kStreamListAt - 4], size_ - kStreamListAt + streamMore);
}

void AviHeader::putMainHeader(const MovieSettings& settings, AviCodec codec, AviVersion version) {
    const ImageDescription& image = settings.image;
    const bool jpeg = codec == AviCodec::MotionJpeg;
    put(fourcc("avih"));
    put(kMainHeaderBytes);
    put(microsecondsPerFrame(settings));
    put(bytesPerSecond(
        settings, jpeg ? colorBytes(image) : static_cast<std::uint32_t>(image.height) * settings.rowStride));
    put(version == AviVersion::Two ? kAviSector : 0);  // padding granularity
    put(jpeg ? kHasIndex : kHasIndex | kTrustKeyFrames);
    put(settings.framesPerFile);
    put(0);  // initial frames
    put(1);  // streams
    put(0);  // suggested buffer size
    put(static_cast<std::uint32_t>(image.width));
    put(static_cast<std::uint32_t>(image.height));
    putZeros(16);
}

void AviHeader::putStreamHeader(const MovieSettings& settings, AviCodec codec, AviVersion version) {
    const ImageDescription& image = settings.image;
    const bool jpeg = codec == AviCodec::MotionJpeg;
    put(fourcc("strh"));
    put(kStreamHeaderBytes);
    put(fourcc("vids"));
    put(jpeg ? fourcc("MJPG") : fourcc("DIB "));
    putZeros(12);  // flags, priority and language, initial frames
    put(settings.scale);
    put(settings.rate);
    put(0);  // start
    put(settings.framesPerFile);
    put(0);  // suggested buffer size
    if (jpeg) {
        put(settings.quality * 100);
    } else {
        put(version == AviVersion::One ? kDefaultQuality : 0);
    }
    put(0);  // sample size: it varies
    put(0);  // left and top
    put(static_cast<std::uint32_t>(image.height) << 16 | (static_cast<std::uint32_t>(image.width) & 0xFFFF));
}

void AviHeader::putPlainFormat(const ImageDescription& image) {
    put(fourcc("strf"));
    put(image.usedBytes());
    put(image.headerSize);
    put(static_cast<std::uint32_t>(image.width));
    put(static_cast<std::uint32_t>(image.height));
    put(image.planes | static_cast<std::uint32_t>(image.bitCount) << 16);
    put(image.compression);
    put(image.imageSize);
    put(static_cast<std::uint32_t>(image.xPixelsPerMeter));
    put(static_cast<std::uint32_t>(image.yPixelsPerMeter));
    put(image.colorsUsed);
    put(image.colorsImportant);
    for (std::uint32_t i = 0; i < image.colorsUsed; ++i) put(image.palette[i]);
}

void AviHeader::putJpegFormat(const ImageDescription& image) {
    constexpr std::uint32_t kFormatBytes = 40;
    constexpr std::uint32_t kNameBytes = 64;
    constexpr char kName[] = "MJPG Out";
    put(fourcc("strf"));
    put(kFormatBytes);
    put(kFormatBytes);
    put(static_cast<std::uint32_t>(image.width));
    put(static_cast<std::uint32_t>(image.height));
    put(1 | 24 << 16);  // planes and bits, of gray movies too
    put(fourcc("MJPG"));
    put(colorBytes(image));
    putZeros(16);
    put(fourcc("strn"));
    put(kNameBytes);
    std::memcpy(&block_[size_], kName, sizeof kName);
    putZeros(kNameBytes);
}

void AviHeader::put(std::uint32_t value) {
    storeLe32(&block_[size_], value);
    size_ += 4;
}

void AviHeader::setRiffSize(std::uint32_t bytes) {
    storeLe32(&block_[kRiffSizeAt], bytes);
}
void AviHeader::setTotalFrames(std::uint32_t frames) {
    storeLe32(&block_[kTotalFramesAt], frames);
}
void AviHeader::setLength(std::uint32_t frames) {
    storeLe32(&block_[kLengthAt], frames);
}
void AviHeader::setSuggestedBuffer(std::uint32_t bytes) {
    storeLe32(&block_[kFileBufferAt], bytes);
    storeLe32(&block_[kStreamBufferAt], bytes);
}
void AviHeader::setImageSize(std::uint32_t bytes) {
    storeLe32(&block_[kImageSizeAt], bytes);
}

}  // namespace tavra::movie
