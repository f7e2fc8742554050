#include "media/movie/avi_file_20_not_compressed.h"

#include "media/movie/riff.h"

namespace tavra::movie {

CAVIFile20NotCompressed::CAVIFile20NotCompressed(MovieFiles& files, AviLimits limits)
    : CAVIFile20(files, AviCodec::Uncompressed, kPlainFrame, limits) {}

Status CAVIFile20NotCompressed::WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                                           std::uint32_t) {
    TAVRA_RETURN_IF_ERROR(waitForWrite(record));
    return WriteChunk(record, image - FrameBuffer::kHeaderRoom, settings.imageBytes, index);
}

}  // namespace tavra::movie
