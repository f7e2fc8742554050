#include "media/jpeg/jpeg_support.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tavra::test {

JpegError LimitedStream::Write(const void* buffer, std::size_t size, std::size_t& written) {
    written = std::min(size, limit_ - bytes.size());
    const auto* const first = static_cast<const std::uint8_t*>(buffer);
    bytes.insert(bytes.end(), first, first + written);
    writes.push_back(written);
    return written == size ? JpegError::None : JpegError::FileIo;
}

std::size_t JpegJob::step() const {
    if (rowStep != 0) return rowStep;
    return std::size_t{channels} * (source == JpegColor::YCbCr ? (width + 1) / 2 * 2 : width);
}

void JpegJob::fill(std::mt19937& random) {
    std::uniform_int_distribution<int> sample(0, 255);
    fill(0);
    for (std::uint8_t& byte : pixels) byte = static_cast<std::uint8_t>(sample(random));
}

void JpegJob::fill(std::uint8_t value) {
    const std::size_t lastRow =
        std::size_t{channels} * (source == JpegColor::YCbCr ? (width + 1) / 2 * 2 : width);
    pixels.assign(step() * (height - 1) + lastRow, value);
}

JpegError encode(CJPEGEncoder& encoder, const JpegJob& job, CBaseStreamOutput& stream) {
    TAVRA_RETURN_IF_JPEG_ERROR(encoder.SetSource(job.pixels.data(), job.step(), job.width, job.height,
                                                 job.channels, job.source, job.sourceSampling()));
    TAVRA_RETURN_IF_JPEG_ERROR(encoder.SetDestination(&stream));
    TAVRA_RETURN_IF_JPEG_ERROR(encoder.SetParams(JpegMode::Baseline, job.color, job.sampling,
                                                 job.restartInterval, false, job.quality));
    TAVRA_RETURN_IF_JPEG_ERROR(encoder.WriteHeader());
    return encoder.WriteData();
}

ByteVector encoded(const JpegJob& job) {
    CJPEGEncoder encoder;
    LimitedStream stream;
    EXPECT_EQ(encode(encoder, job, stream), JpegError::None);
    return stream.bytes;
}

ByteVector segment(const ByteVector& stream, std::uint8_t marker, int n) {
    for (std::size_t i = 2; i + 4 <= stream.size() && stream[i] == 0xFF && stream[i + 1] != 0xD9;) {
        const std::size_t length = stream[i + 2] * 256U + stream[i + 3];
        if (i + 2 + length > stream.size()) break;
        if (stream[i + 1] == marker && n-- == 0) {
            const auto first = stream.begin() + static_cast<std::ptrdiff_t>(i);
            return {first + 4, first + 2 + static_cast<std::ptrdiff_t>(length)};
        }
        if (stream[i + 1] == 0xDA) break;  // behind it comes the scan
        i += 2 + length;
    }
    return {};
}

}  // namespace tavra::test
