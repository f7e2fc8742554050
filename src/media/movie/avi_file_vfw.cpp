#include "media/movie/avi_file_vfw.h"

#include <algorithm>
#include <new>

namespace tavra::movie {
namespace {

// What a file's headers are taken to fill, and each frame's part of the indexes. The size is a projection:
// the platform lays the file out.
constexpr std::uint64_t kStart = 2048;
constexpr std::uint64_t kStartWithPalette = 4096;
constexpr std::uint64_t kIndexBytes = 24;
constexpr std::uint64_t kSector = 512;

struct CodecRecord final : FileRecord {
    platform::CodecMovie movie;
};

// Of a file with so many bytes of headers and frames, and so many frames.
constexpr std::uint64_t projectedSize(std::uint64_t position, std::uint64_t frames) {
    return (position + 8 + frames * kIndexBytes + kSector - 1) / kSector * kSector;
}

platform::CodecMovie& movieOf(FileRecord& record) {
    return static_cast<CodecRecord&>(record).movie;
}

}  // namespace

Status CAVIFileVFW::OpenFile(const std::u16string& name, std::unique_ptr<FileRecord>& record) {
    const platform::BitmapHeader image(reinterpret_cast<const std::uint8_t*>(&settings.image),
                                       settings.image.usedBytes());
    const bool chosen = compressor_ == kUserChooses;
    if (chosen && (isFirstFile() || !choice_.isHeld())) TAVRA_RETURN_IF_ERROR(choice_.ask(image));
    auto opened = std::make_unique<CodecRecord>();
    opened->name = name;
    TAVRA_RETURN_IF_ERROR(opened->movie.open(name, {.compressor = compressor_,
                                                    .quality = settings.quality,
                                                    .choice = chosen ? &choice_ : nullptr,
                                                    .rate = settings.rate,
                                                    .scale = settings.scale,
                                                    .frames = settings.framesPerFile,
                                                    .image = image}));
    record = std::move(opened);
    return {};
}

Status CAVIFileVFW::WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index, std::uint32_t) {
    platform::CodecMovie& movie = movieOf(record);
    if (position_ == 0) {
        const bool palette = settings.image.isGray() && !movie.isCompressed();
        position_ = palette ? kStartWithPalette : kStart;
        frames_ = 0;
    }
    const std::uint32_t place = std::max(index, frames_);  // one that does not advance is next
    // The platform would fill any gap, as long as the disk lasts.
    if (place > frames_ && projectedSize(position_, std::uint64_t{place} + 1) > GetMaxFileSize()) {
        return record.keep(Status(error::kFileTooLarge));
    }
    std::uint32_t written = 0;
    TAVRA_RETURN_IF_ERROR(movie.write(place, image, settings.imageBytes, written));
    frames_ = place + 1;
    position_ += std::uint64_t{written} + written % 2;
    projectedSize_ = projectedSize(position_, frames_);
    return {};
}

Status CAVIFileVFW::CloseFile(FileRecord& record) {
    (void)record.keep(movieOf(record).close());
    return record.firstFailure;
}

std::unique_ptr<CAVIFile> makeCodecWriter(MovieFiles& files) {
    return std::unique_ptr<CAVIFile>(new (std::nothrow) CAVIFileVFW(files));
}

}  // namespace tavra::movie
