// A frame of motion JPEG, encoded for itself into a stream that grows.
#pragma once

#include "media/jpeg/jpeg_encoder.h"
#include "media/movie/avi_builder.h"

namespace tavra::test {

class GrowingStream final : public CBaseStreamOutput {
  public:
    JpegError Open() override { return JpegError::None; }
    JpegError Close() override { return JpegError::None; }
    JpegError Write(const void* buffer, std::size_t size, std::size_t& written) override {
        const auto* const data = static_cast<const std::uint8_t*>(buffer);
        bytes.insert(bytes.end(), data, data + size);
        written = size;
        return JpegError::None;
    }

    FileBytes bytes;
};

// Rows padded to 4 bytes; of 24 bits, blue comes first unless told.
inline FileBytes encodeJpegFrame(const MovieForm& form, const FileBytes& image, bool redFirst = false) {
    const JpegColor color = form.bits == 8 ? JpegColor::Gray : redFirst ? JpegColor::Rgb : JpegColor::Bgr;
    GrowingStream stream;
    CJPEGEncoder encoder;
    const bool done =
        encoder.SetSource(image.data(), (form.width * form.bits / 8 + 3) / 4 * 4, form.width, form.height,
                          form.bits / 8, color, JpegSampling::Sampling444) == JpegError::None &&
        encoder.SetDestination(&stream) == JpegError::None &&
        encoder.SetParams(JpegMode::Baseline, JpegColor::YCbCr, JpegSampling::Sampling422, 0, false,
                          form.quality) == JpegError::None &&
        encoder.WriteHeader() == JpegError::None && encoder.WriteData() == JpegError::None;
    return done ? stream.bytes : FileBytes();
}

}  // namespace tavra::test
