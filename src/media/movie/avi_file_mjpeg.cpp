#include "media/movie/avi_file_mjpeg.h"

#include "media/movie/riff.h"

namespace tavra::movie {

CAVIFileMJPEG::CAVIFileMJPEG(MovieFiles& files)
    : AviFile10(files, AviCodec::MotionJpeg, kCompressedFrame, 2048) {
    encoderOrdersColors_ = true;
}

Status CAVIFileMJPEG::PrepareHeader() {
    TAVRA_RETURN_IF_ERROR(encoder_.prepare(settings));
    return AviFile10::PrepareHeader();
}

Status CAVIFileMJPEG::WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                                 std::uint32_t) {
    std::uint32_t size = 0;
    TAVRA_RETURN_IF_ERROR(record.keep(encoder_.encode(settings, image, size)));
    const std::uint32_t padding = size & 1;
    if (padding != 0) encoder_.chunk()[FrameBuffer::kHeaderRoom + size] = kPadByte;
    return appendFrame(record, encoder_.chunk(), size, padding, index);
}

Status CAVIFileMJPEG::Finish() {
    encoder_.free();
    return {};
}

}  // namespace tavra::movie
