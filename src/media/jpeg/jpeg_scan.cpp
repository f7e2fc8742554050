// The scan: one row of MCUs after the other, from pixels to bytes.
#include <algorithm>
#include <cstring>

#include "media/jpeg/color_conversion.h"
#include "media/jpeg/jpeg_encoder.h"
#include "media/jpeg/markers.h"
#include "media/jpeg/subsampling.h"

namespace tavra {

using namespace jpeg;

namespace {

// No block may find less room in the stream's buffer.
constexpr std::size_t kRoomForABlock = 128;

constexpr std::uint8_t kNoChrominance = 128;

}  // namespace

JpegError CJPEGEncoder::WriteData() {
    if (state_ != State::Initialized) return JpegError::WrongParameters;
    state_ = State::HasParameters;
    resetDc();
    resetRestartCounters();
    huffman_.Reset();

    TAVRA_RETURN_IF_JPEG_ERROR(writeScanHeader());
    for (std::uint32_t row = 0; row < mcu_.down; ++row) {
        const std::uint32_t first = row * mcu_.height;
        const std::uint32_t lines = std::min(mcu_.height, source_.height - first);
        TAVRA_RETURN_IF_JPEG_ERROR(convertColors(first, lines));
        fillEdges(lines);
        for (CJPEGColorComponent& component : components()) subsample(component);
        transformRow();
        TAVRA_RETURN_IF_JPEG_ERROR(encodeRow());
    }
    TAVRA_RETURN_IF_JPEG_ERROR(output_.FlushBuffer(kRoomForABlock));
    TAVRA_RETURN_IF_JPEG_ERROR(huffman_.Flush(output_));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(kEndOfImage));
    return output_.FlushBuffer(0);
}

void CJPEGEncoder::resetDc() {
    for (CJPEGColorComponent& component : components_) component.lastDc = 0;
}

void CJPEGEncoder::resetRestartCounters() {
    mcusToRestart_ = parameters_.restartInterval;
    restartNumber_ = 0;
}

JpegError CJPEGEncoder::writeScanHeader() {
    const unsigned count = parameters_.componentCount;
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(kStartOfScan));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(6 + 2 * count));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write8(count));
    for (const CJPEGColorComponent& component : components()) {
        TAVRA_RETURN_IF_JPEG_ERROR(output_.Write8(component.id));
        TAVRA_RETURN_IF_JPEG_ERROR(output_.Write8(component.dcSelector << 4 | component.acSelector));
    }
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write8(scan_.ss));
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Write8(scan_.se));
    return output_.Write8(scan_.ah << 4 | scan_.al);
}

// How a line of the source becomes a line of each colour plane; null where nothing does that.
CJPEGEncoder::LineConverter CJPEGEncoder::lineConverter() const {
    using Rows = const PlaneRows&;
    const bool toGray = parameters_.color == JpegColor::Gray;
    const bool toRgb = parameters_.color == JpegColor::Rgb;
    const bool toYCbCr = parameters_.color == JpegColor::YCbCr;
    switch (source_.color) {
        case JpegColor::Gray:
            if (!toGray && !toYCbCr) return nullptr;
            return [](const Source& source, const std::uint8_t* line, Rows planes) {
                std::memcpy(planes[0], line, source.width);
                if (planes[1] == nullptr) return;
                std::memset(planes[1], kNoChrominance, source.width);
                std::memset(planes[2], kNoChrominance, source.width);
            };
        case JpegColor::Rgb:
            if (toGray) {
                return [](const Source& source, const std::uint8_t* line, Rows planes) {
                    convertToGray(line, source.width, source.layout(), planes[0]);
                };
            }
            [[fallthrough]];
        case JpegColor::Bgr:
            if (toRgb) {
                return [](const Source& source, const std::uint8_t* line, Rows planes) {
                    splitRgb(line, source.width, source.layout(), planes);
                };
            }
            if (!toYCbCr) return nullptr;
            return [](const Source& source, const std::uint8_t* line, Rows planes) {
                convertToYCbCr(line, source.width, source.layout(), planes);
            };
        case JpegColor::YCbCr:
            if (!toYCbCr || source_.sampling != JpegSampling::Sampling422 ||
                parameters_.sampling != JpegSampling::Sampling422) {
                return nullptr;
            }
            return [](const Source& source, const std::uint8_t* line, Rows planes) {
                splitYCbCr422(line, source.width, planes);
            };
        default: return nullptr;
    }
}

JpegError CJPEGEncoder::convertColors(std::uint32_t first, std::uint32_t lines) {
    const LineConverter convert = lineConverter();
    if (convert == nullptr) return JpegError::NotImplemented;
    for (std::uint32_t y = 0; y < lines; ++y) {
        PlaneRows rows = {};
        for (std::size_t i = 0; i < components().size(); ++i) rows[i] = components()[i].colorPlane.row(y);
        convert(source_, source_.pixels + (std::size_t{first} + y) * source_.rowStep, rows);
    }
    return JpegError::None;
}

// Whether the source has no more samples of this component than the stream.
bool CJPEGEncoder::isSubsampledAlready(const CJPEGColorComponent& component) const {
    return source_.sampling != JpegSampling::Sampling444 && component.horizontalScale != 1;
}

void CJPEGEncoder::fillEdges(std::uint32_t lines) {
    for (const CJPEGColorComponent& component : components()) {
        const JpegPlane& plane = component.colorPlane;
        const bool half = isSubsampledAlready(component);
        const std::size_t width = half ? (source_.width + 1) / 2 : source_.width;
        const std::size_t whole = half ? plane.step / 2 : plane.step;
        for (std::uint32_t y = 0; y < lines; ++y) {
            std::uint8_t* const row = plane.row(y);
            std::memset(row + width, row[width - 1], whole - width);
        }
        for (std::uint32_t y = lines; y < plane.rows; ++y) {
            std::memcpy(plane.row(y), plane.row(lines - 1), whole);
        }
    }
}

void CJPEGEncoder::subsample(CJPEGColorComponent& component) const {
    const JpegPlane& from = component.colorPlane;
    const JpegPlane& to = component.samplePlane;
    for (std::uint32_t y = 0; y < to.rows; ++y) {
        if (component.horizontalScale == 1 || isSubsampledAlready(component)) {
            std::memcpy(to.row(y), from.row(y), to.step);
        } else if (component.verticalScale == 1) {
            halveColumns(from.row(y), to.step, to.row(y));
        } else {
            halveBoth(from.row(2 * y), from.row(2 * y + 1), to.step, to.row(y));
        }
    }
}

void CJPEGEncoder::transformRow() {
    auto* first = reinterpret_cast<Block*>(coefficients_.data());
    for (const CJPEGColorComponent& component : components()) {
        for (unsigned row = 0; row < component.verticalFactor; ++row) {
            transformBlockRow(component, row, first);
            first += component.horizontalFactor;
        }
    }
}

// `first` is where the row's block of the first MCU goes.
void CJPEGEncoder::transformBlockRow(const CJPEGColorComponent& component, unsigned row, Block* first) {
    const std::size_t across = component.horizontalFactor;
    const std::size_t blocksInRow = mcu_.across * across;
    const std::uint8_t* const samples = component.samplePlane.row(row * 8);
    const ForwardTable& table = quantTables_[component.quantSelector].forward();
    std::array<Block*, kTileBlocks> blocks;
    for (std::size_t x = 0; x < blocksInRow; x += kTileBlocks) {
        const std::size_t count = std::min(kTileBlocks, blocksInRow - x);
        for (std::size_t i = 0; i < count; ++i) {
            blocks[i] = first + (x + i) / across * mcu_.blocks + (x + i) % across;
        }
        transformBlocks(samples + 8 * x, component.samplePlane.step, table, {blocks.data(), count});
    }
}

JpegError CJPEGEncoder::encodeRow() {
    const auto* block = reinterpret_cast<const Block*>(coefficients_.data());
    for (std::uint32_t mcu = 0; mcu < mcu_.across; ++mcu) {
        if (parameters_.restartInterval != 0) TAVRA_RETURN_IF_JPEG_ERROR(countMcu());
        for (CJPEGColorComponent& component : components()) {
            const CJPEGEncoderHuffmanTable& dc = dcTables_[component.dcSelector];
            const CJPEGEncoderHuffmanTable& ac = acTables_[component.acSelector];
            for (unsigned i = 0; i < component.blockCount; ++i, ++block) {
                TAVRA_RETURN_IF_JPEG_ERROR(output_.FlushBuffer(kRoomForABlock));
                TAVRA_RETURN_IF_JPEG_ERROR(huffman_.Encode(*block, component.lastDc, dc, ac, output_));
            }
        }
    }
    return JpegError::None;
}

// Ahead of each MCU, where there are restart markers.
JpegError CJPEGEncoder::countMcu() {
    if (mcusToRestart_ == 0) {
        TAVRA_RETURN_IF_JPEG_ERROR(huffman_.Flush(output_));
        TAVRA_RETURN_IF_JPEG_ERROR(output_.Write16(kRestart0 + restartNumber_ % 8));
        ++restartNumber_;
        mcusToRestart_ = parameters_.restartInterval;
        resetDc();
    }
    --mcusToRestart_;
    return JpegError::None;
}

}  // namespace tavra
