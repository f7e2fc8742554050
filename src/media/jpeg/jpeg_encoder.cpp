// What is asked for: the source, the parameters, and the tables and buffers that follow from them.
#include "media/jpeg/jpeg_encoder.h"

#include <algorithm>
#include <cstring>

namespace tavra {
namespace {

constexpr unsigned kBlockSize = 8;

constexpr std::uint32_t ceilDivide(std::uint32_t a, std::uint32_t b) {
    return a / b + (a % b != 0 ? 1 : 0);
}

// Of colours that nothing can be made of, only the number of channels matters, which may become components.
bool channelsFit(unsigned channels, JpegColor color, JpegSampling sampling) {
    const bool whole = sampling == JpegSampling::Sampling444;
    switch (color) {
        case JpegColor::Gray: return channels == 1 && whole;
        case JpegColor::Rgb:
        case JpegColor::Bgr: return (channels == 3 || channels == 4) && whole;
        case JpegColor::YCbCr:
            if (sampling == JpegSampling::Sampling422) return channels == 2;
            [[fallthrough]];
        case JpegColor::Unknown:
        case JpegColor::Cmyk:
        case JpegColor::Ycck: return channels >= 1 && channels <= 4;
    }
    return false;
}

bool isKnown(JpegMode mode) {
    return mode >= JpegMode::Baseline && mode <= JpegMode::Lossless;
}
bool isKnown(JpegColor color) {
    return color >= JpegColor::Unknown && color <= JpegColor::Ycck;
}

unsigned componentsOf(JpegColor color, unsigned sourceChannels) {
    switch (color) {
        case JpegColor::Gray: return 1;
        case JpegColor::Rgb:
        case JpegColor::YCbCr: return 3;
        case JpegColor::Cmyk:
        case JpegColor::Ycck: return 4;
        case JpegColor::Unknown:
        case JpegColor::Bgr: break;
    }
    return std::min(sourceChannels, 4U);
}

}  // namespace

JpegError CJPEGEncoder::SetSource(const std::uint8_t* pixels, std::size_t rowStep, std::uint32_t width,
                                  std::uint32_t height, unsigned channels, JpegColor color,
                                  JpegSampling sampling, unsigned precision) {
    state_ = State::Empty;
    if (pixels == nullptr || width == 0 || width > kLargestSide || height == 0 || height > kLargestSide ||
        precision != 8 || !channelsFit(channels, color, sampling)) {
        return JpegError::WrongParameters;
    }
    const std::size_t columns = color == JpegColor::YCbCr ? (width + 1) / 2 * 2 : width;
    if (rowStep < columns * channels || rowStep > PTRDIFF_MAX / height) return JpegError::WrongParameters;
    source_ = {pixels, rowStep, width, height, precision, channels, color, sampling};
    state_ = State::HasSource;
    return JpegError::None;
}

JpegError CJPEGEncoder::SetDestination(CBaseStreamOutput* stream) {
    if (stream == nullptr) return JpegError::WrongParameters;
    output_.Attach(stream);
    return JpegError::None;
}

JpegError CJPEGEncoder::SetParams(JpegMode mode, JpegColor color, JpegSampling sampling,
                                  unsigned restartInterval, bool optimizeHuffman, unsigned quality) {
    if (state_ == State::Empty) return JpegError::WrongParameters;
    state_ = State::HasSource;
    const bool sampled = sampling == JpegSampling::Sampling444 || sampling == JpegSampling::Sampling422 ||
                         sampling == JpegSampling::Sampling411;
    if (!isKnown(mode) || !isKnown(color) || !sampled || restartInterval > 0xFFFF ||
        quality > kFinestQuality) {
        return JpegError::WrongParameters;
    }
    if (mode != JpegMode::Baseline || optimizeHuffman) return JpegError::NotImplemented;

    parameters_.mode = mode;
    parameters_.color = color;
    parameters_.restartInterval = restartInterval;
    parameters_.quality = quality;
    parameters_.componentCount = componentsOf(color, source_.channels);
    // The blocks of a single component stand in the stream one by one, whatever its factors: MCUs of several
    // would be misread.
    parameters_.sampling = parameters_.componentCount > 1 ? sampling : JpegSampling::Sampling444;

    setMcuSize();
    loadQuantTables();
    TAVRA_RETURN_IF_JPEG_ERROR(loadHuffmanTables());
    TAVRA_RETURN_IF_JPEG_ERROR(selectTables());
    state_ = State::HasParameters;
    return JpegError::None;
}

void CJPEGEncoder::setMcuSize() {
    const bool wide = parameters_.sampling != JpegSampling::Sampling444;
    const bool high = parameters_.sampling == JpegSampling::Sampling411;
    mcu_.width = wide ? 2 * kBlockSize : kBlockSize;
    mcu_.height = high ? 2 * kBlockSize : kBlockSize;
    mcu_.across = ceilDivide(source_.width, mcu_.width);
    mcu_.down = ceilDivide(source_.height, mcu_.height);
}

// Whether the stream tells brightness from colour, which then has tables of its own.
bool CJPEGEncoder::hasChrominanceTables() const {
    return parameters_.componentCount > 1 &&
           (parameters_.color == JpegColor::YCbCr || parameters_.color == JpegColor::Ycck);
}

void CJPEGEncoder::loadQuantTables() {
    const auto load = [this](unsigned id, const JpegSteps& steps) {
        quantTables_[id].Load(id, steps);
        quantTables_[id].Scale(parameters_.quality);
        quantTables_[id].BuildForward();
    };
    for (CJPEGEncoderQuantTable& table : quantTables_) table.Clear();
    load(0, CJPEGEncoderQuantTable::kLuminance);
    if (hasChrominanceTables()) load(1, CJPEGEncoderQuantTable::kChrominance);
}

JpegError CJPEGEncoder::loadHuffmanTables() {
    using Table = CJPEGEncoderHuffmanTable;
    for (Table& table : dcTables_) table.Clear();
    for (Table& table : acTables_) table.Clear();
    TAVRA_RETURN_IF_JPEG_ERROR(dcTables_[0].Load(0, Table::Class::Dc, Table::kDcLuminance));
    TAVRA_RETURN_IF_JPEG_ERROR(acTables_[0].Load(0, Table::Class::Ac, Table::kAcLuminance));
    if (!hasChrominanceTables()) return JpegError::None;
    TAVRA_RETURN_IF_JPEG_ERROR(dcTables_[1].Load(1, Table::Class::Dc, Table::kDcChrominance));
    return acTables_[1].Load(1, Table::Class::Ac, Table::kAcChrominance);
}

JpegError CJPEGEncoder::selectTables() {
    for (unsigned i = 0; i < components_.size(); ++i) {
        const unsigned table = hasChrominanceTables() && (i == 1 || i == 2) ? 1 : 0;
        TAVRA_RETURN_IF_JPEG_ERROR(components_[i].Select(table, table, table));
    }
    return JpegError::None;
}

void CJPEGEncoder::setFactors(CJPEGColorComponent& component, unsigned index) const {
    const bool whole = index == 0 || index == 3;  // a component that keeps all its samples
    const unsigned columns = mcu_.width / kBlockSize;
    const unsigned rows = mcu_.height / kBlockSize;
    component.id = index;
    component.horizontalFactor = whole ? columns : 1;
    component.verticalFactor = whole ? rows : 1;
    component.horizontalScale = columns / component.horizontalFactor;
    component.verticalScale = rows / component.verticalFactor;
    component.blockCount = component.horizontalFactor * component.verticalFactor;
}

JpegError CJPEGEncoder::initialize() {
    mcu_.padRight = mcu_.width * mcu_.across - source_.width;
    mcu_.padBottom = mcu_.height * mcu_.down - source_.height;
    mcu_.blocks = 0;
    for (unsigned i = 0; i < parameters_.componentCount; ++i) {
        CJPEGColorComponent& component = components_[i];
        setFactors(component, i);
        mcu_.blocks += component.blockCount;
        const std::uint32_t width = mcu_.across * mcu_.width;
        TAVRA_RETURN_IF_JPEG_ERROR(component.colorPlane.Allocate(mcu_.height, width));
        TAVRA_RETURN_IF_JPEG_ERROR(component.samplePlane.Allocate(mcu_.height / component.verticalScale,
                                                                  width / component.horizontalScale));
    }
    const std::size_t size = std::size_t{mcu_.across} * mcu_.blocks * sizeof(jpeg::Block);
    if (coefficients_.size() != size) TAVRA_RETURN_IF_JPEG_ERROR(coefficients_.Allocate(size));
    std::memset(coefficients_.data(), 0, size);
    TAVRA_RETURN_IF_JPEG_ERROR(output_.Init());
    return huffman_.Allocate();
}

}  // namespace tavra
