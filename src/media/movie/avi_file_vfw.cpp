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
    std::uint32_t written = 0;
    TAVRA_RETURN_IF_ERROR(movie.write(place, image, settings.imageBytes, written));
    frames_ = place + 1;
    position_ += std::uint64_t{written} + written % 2;
    const std::uint64_t bytes = position_ + 8 + std::uint64_t{frames_} * kIndexBytes;
    projectedSize_ = (bytes + kSector - 1) / kSector * kSector;
    return {};
}

Status CAVIFileVFW::CloseFile(FileRecord& record) {
    return movieOf(record).close();
}

std::unique_ptr<CAVIFile> makeCodecWriter(MovieFiles& files) {
    return std::unique_ptr<CAVIFile>(new (std::nothrow) CAVIFileVFW(files));
}

}  // namespace tavra::movie
