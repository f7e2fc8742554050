// What stands in the stream ahead of the scan: ITU T.81 annex B, and the application segments.
#include <array>
#include <string_view>

#include "media/jpeg/jpeg_encoder.h"
#include "media/jpeg/markers.h"

namespace tavra {

using namespace jpeg;

JpegError CJPEGEncoder::WriteHeader() {
    if (state_ < State::HasParameters) return JpegError::WrongParameters;
    state_ = State::HasParameters;
    TAVRA_RETURN_IF_JPEG_ERROR(initialize());
    state_ = State::Initialized;

    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(kStartOfImage));
    TAVRA_RETURN_IF_JPEG_ERROR(writeApplicationSegment());
    for (const CJPEGEncoderQuantTable& table : quantTables_) {
        if (table.initialized()) TAVRA_RETURN_IF_JPEG_ERROR(writeQuantTable(table));
    }
    TAVRA_RETURN_IF_JPEG_ERROR(writeFrameHeader());
    for (std::size_t i = 0; i < kTables; ++i) {
        if (dcTables_[i].initialized()) TAVRA_RETURN_IF_JPEG_ERROR(writeHuffmanTable(dcTables_[i]));
        if (acTables_[i].initialized()) TAVRA_RETURN_IF_JPEG_ERROR(writeHuffmanTable(acTables_[i]));
    }
    if (parameters_.restartInterval != 0) TAVRA_RETURN_IF_JPEG_ERROR(writeRestartInterval());
    return output_.FlushBuffer(0);
}

JpegError CJPEGEncoder::writeApplicationSegment() {
    switch (parameters_.color) {
        case JpegColor::Gray:
        case JpegColor::YCbCr: return writeApp0();
        case JpegColor::Rgb:
        case JpegColor::Cmyk:
        case JpegColor::Ycck: return writeApp14();
        case JpegColor::Unknown:
        case JpegColor::Bgr: break;
    }
    return JpegError::None;
}

JpegError CJPEGEncoder::writeApp0() {
    static constexpr std::array<std::uint8_t, 14> kContent = {
        'J', 'F', 'I', 'F', 0,  // identifier
        1,   2,                 // version 1.02
        0,                      // the densities give the shape of a pixel alone
        0,   1,                 // horizontal density
        0,   1,                 // vertical density
        0,   0};                // no thumbnail
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(kApp0));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(2 + kContent.size()));
    return output_.WriteBytes(kContent);
}

JpegError CJPEGEncoder::writeApp14() {
    constexpr unsigned kYCbCrTransform = 1, kYcckTransform = 2;
    std::array<std::uint8_t, 12> content = {'A', 'd', 'o', 'b', 'e',  // identifier
                                            0,   100,                 // version
                                            0,   0,   0,   0,         // flags
                                            0};                       // transform
    if (parameters_.color == JpegColor::YCbCr) content.back() = kYCbCrTransform;
    if (parameters_.color == JpegColor::Ycck) content.back() = kYcckTransform;
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(kApp14));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(2 + content.size()));
    return output_.WriteBytes(content);
}

JpegError CJPEGEncoder::writeQuantTable(const CJPEGEncoderQuantTable& table) {
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(kDefineQuantTable));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(2 + 1 + 64));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write8(table.precision() << 4 | table.id()));
    return output_.WriteBytes(table.steps());
}

// By design the components' ids count from 0, where most encoders begin with 1.
JpegError CJPEGEncoder::writeFrameHeader() {
    const unsigned count = parameters_.componentCount;
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(kStartOfBaselineFrame));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(8 + 3 * count));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write8(parameters_.precision));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(source_.height));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(source_.width));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write8(count));
    for (const CJPEGColorComponent& component : components()) {
        TAVRA_RETURN_IF_JPEG_ERROR(output_.Write8(component.id));
        TAVRA_RETURN_IF_JPEG_ERROR(
            output_.Write8(component.horizontalFactor << 4 | component.verticalFactor));
        TAVRA_RETURN_IF_JPEG_ERROR(output_.Write8(component.quantSelector));
    }
    return JpegError::None;
}

JpegError CJPEGEncoder::writeHuffmanTable(const CJPEGEncoderHuffmanTable& table) {
    const auto symbolCount = static_cast<unsigned>(table.symbols().size());
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(kDefineHuffmanTable));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(2 + 1 + 16 + symbolCount));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write8(static_cast<unsigned>(table.tableClass()) << 4 | table.id()));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.WriteBytes(table.counts()));
    return output_.WriteBytes(table.symbols());
}

JpegError CJPEGEncoder::writeRestartInterval() {
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(kDefineRestartInterval));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(4));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(parameters_.restartInterval));
    resetRestartCounters();
    return JpegError::None;
}

}  // namespace tavra
