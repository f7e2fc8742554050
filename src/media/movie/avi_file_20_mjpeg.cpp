#include "media/movie/avi_file_20_mjpeg.h"

#include "media/movie/riff.h"

namespace tavra::movie {

CAVIFile20MJPEG::CAVIFile20MJPEG(MovieFiles& files, AviLimits limits)
    : CAVIFile20(files, AviCodec::MotionJpeg, kCompressedFrame, limits) {
    encoderOrdersColors_ = true;
}

Status CAVIFile20MJPEG::PrepareHeader() {
    TAVRA_RETURN_IF_ERROR(encoder_.prepare(settings));
    return CAVIFile20::PrepareHeader();
}

Status CAVIFile20MJPEG::WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                                   std::uint32_t) {
    TAVRA_RETURN_IF_ERROR(waitForWrite(record));
    std::uint32_t size = 0;
    TAVRA_RETURN_IF_ERROR(record.keep(encoder_.encode(settings, image, size)));
    return WriteChunk(record, encoder_.chunk(), size, index);
}

Status CAVIFile20MJPEG::Finish() {
    encoder_.free();
    return {};
}

}  // namespace tavra::movie
