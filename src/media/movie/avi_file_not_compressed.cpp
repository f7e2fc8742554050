#include "media/movie/avi_file_not_compressed.h"

#include "media/movie/riff.h"

namespace tavra::movie {
namespace {

constexpr std::uint32_t kDataOffset = 4096;

}  // namespace

CAVIFileNotCompressed::CAVIFileNotCompressed(MovieFiles& files)
    : AviFile10(files, AviCodec::Uncompressed, kPlainFrame, kDataOffset) {}

Status CAVIFileNotCompressed::PrepareHeader() {
    const std::uint64_t oneFrame = std::uint64_t{2} * kChunkHeaderBytes + settings.imageBytes;
    if (closedSize(kDataOffset + oneFrame, 2) > GetMaxFileSize()) return Status(error::kFileTooLarge);
    return AviFile10::PrepareHeader();
}

Status CAVIFileNotCompressed::WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                                         std::uint32_t) {
    // Rows come in multiples of 4 bytes, so that no frame is odd.
    return appendFrame(record, image - FrameBuffer::kHeaderRoom, settings.imageBytes, 0, index);
}

// By design: the list opens with an empty chunk of the compressed kind. The index counts it as the other
// kind.
Status CAVIFileNotCompressed::writeFirstChunk(FileRecord& record) {
    return appendEmpty(record, kCompressedFrame, 1);
}

// By design: unlike the stream's length and unlike motion JPEG, this is left open. Players take the length.
std::uint32_t CAVIFileNotCompressed::totalFrames() const {
    return 0xFFFFFFFF;
}

}  // namespace tavra::movie
