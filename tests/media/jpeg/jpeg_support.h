// What the tests of the JPEG encoder have in common: images, streams that remember or fail, and the five
// calls.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "media/jpeg/base_stream.h"
#include "media/jpeg/jpeg_encoder.h"

namespace tavra::test {

using ByteVector = std::vector<std::uint8_t>;

// Keeps what it is given, up to a number of bytes, behind which it fails.
class LimitedStream final : public CBaseStreamOutput {
  public:
    explicit LimitedStream(std::size_t limit = SIZE_MAX) : limit_(limit) {}

    JpegError Open() override { return JpegError::None; }
    JpegError Close() override { return JpegError::None; }
    JpegError Write(const void* buffer, std::size_t size, std::size_t& written) override;

    ByteVector bytes;
    std::vector<std::size_t> writes;  // the size of each

  private:
    std::size_t limit_;
};

// An image and what is asked of the encoder for it.
struct JpegJob {
    std::uint32_t width = 1;
    std::uint32_t height = 1;
    unsigned channels = 3;
    JpegColor source = JpegColor::Bgr;
    JpegColor color = JpegColor::YCbCr;
    JpegSampling sampling = JpegSampling::Sampling444;
    unsigned quality = 50;
    unsigned restartInterval = 0;
    std::size_t rowStep = 0;  // 0: dense
    ByteVector pixels;

    std::size_t step() const;
    JpegSampling sourceSampling() const {
        return source == JpegColor::YCbCr ? JpegSampling::Sampling422 : JpegSampling::Sampling444;
    }
    const std::uint8_t* pixel(std::uint32_t x, std::uint32_t y) const {
        return &pixels[y * step() + x * channels];
    }

    // Exactly the bytes that the encoder may read, so that a sanitizer sees any other.
    void fill(std::mt19937& random);
    // Samples of one value.
    void fill(std::uint8_t value);
};

// The first result that is not None, or None.
JpegError encode(CJPEGEncoder& encoder, const JpegJob& job, CBaseStreamOutput& stream);

// The whole stream; a failure fails the test.
ByteVector encoded(const JpegJob& job);

// The bytes between the marker's length and the end of its segment, of the n-th segment with this marker;
// nothing if there is none.
ByteVector segment(const ByteVector& stream, std::uint8_t marker, int n = 0);

}  // namespace tavra::test
