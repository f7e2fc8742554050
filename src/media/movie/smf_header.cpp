#include "media/movie/smf_header.h"

#include <algorithm>

#include "base/little_endian.h"

namespace tavra::movie {
namespace {

constexpr std::size_t kRawBits = 20;
constexpr std::size_t kDevelopedBits = 22;
constexpr std::size_t kGammaMode = 68;
constexpr std::size_t kGammaContrast = 69;
constexpr std::size_t kGammaValue = 70;
constexpr std::size_t kGammaBrightness = 72;
constexpr std::size_t kGammaTable = 80;
constexpr std::size_t kSharpnessMode = 336;
constexpr std::size_t kSharpnessCoring = 337;
constexpr std::size_t kSharpnessGain = 338;
constexpr std::size_t kMatrixMode = 340;
constexpr std::size_t kMatrix = 344;
constexpr std::size_t kHueMode = 368;
constexpr std::size_t kHue = 372;
constexpr std::size_t kSaturation = 374;

std::int16_t loadSigned(const std::uint8_t* p) {
    return static_cast<std::int16_t>(loadLe16(p));
}

void storeSigned(std::uint8_t* p, std::int16_t value) {
    storeLe16(p, static_cast<std::uint16_t>(value));
}

}  // namespace

std::uint32_t SmfHeader::get(Field field) const {
    return loadLe32(&bytes_[static_cast<std::size_t>(field)]);
}

void SmfHeader::set(Field field, std::uint32_t value) {
    storeLe32(&bytes_[static_cast<std::size_t>(field)], value);
}

std::uint16_t SmfHeader::developedBits() const {
    return loadLe16(&bytes_[kDevelopedBits]);
}

void SmfHeader::setBits(std::uint16_t rawSample, std::uint16_t developed) {
    storeLe16(&bytes_[kRawBits], rawSample);
    storeLe16(&bytes_[kDevelopedBits], developed);
}

SmfHeader::Gamma SmfHeader::gamma() const {
    Gamma gamma;
    gamma.mode = bytes_[kGammaMode];
    gamma.contrast = bytes_[kGammaContrast];
    gamma.gamma = loadLe16(&bytes_[kGammaValue]);
    gamma.brightness = loadSigned(&bytes_[kGammaBrightness]);
    std::copy_n(&bytes_[kGammaTable], kGammaTableBytes, gamma.table.begin());
    return gamma;
}

void SmfHeader::setGamma(const Gamma& gamma) {
    bytes_[kGammaMode] = gamma.mode;
    bytes_[kGammaContrast] = gamma.contrast;
    storeLe16(&bytes_[kGammaValue], gamma.gamma);
    storeSigned(&bytes_[kGammaBrightness], gamma.brightness);
    std::copy_n(gamma.table.begin(), kGammaTableBytes, &bytes_[kGammaTable]);
}

SmfHeader::Sharpness SmfHeader::sharpness() const {
    return {bytes_[kSharpnessMode], bytes_[kSharpnessCoring], loadLe16(&bytes_[kSharpnessGain])};
}

void SmfHeader::setSharpness(const Sharpness& sharpness) {
    bytes_[kSharpnessMode] = sharpness.mode;
    bytes_[kSharpnessCoring] = sharpness.coring;
    storeLe16(&bytes_[kSharpnessGain], sharpness.gain);
}

SmfHeader::Colors SmfHeader::colors() const {
    Colors colors;
    colors.matrixMode = bytes_[kMatrixMode];
    for (std::size_t i = 0; i < kMatrixValues; ++i) colors.matrix[i] = loadSigned(&bytes_[kMatrix + 2 * i]);
    colors.hueMode = bytes_[kHueMode];
    colors.hue = loadSigned(&bytes_[kHue]);
    colors.saturation = loadLe16(&bytes_[kSaturation]);
    return colors;
}

void SmfHeader::setColors(const Colors& colors) {
    bytes_[kMatrixMode] = colors.matrixMode;
    for (std::size_t i = 0; i < kMatrixValues; ++i) storeSigned(&bytes_[kMatrix + 2 * i], colors.matrix[i]);
    bytes_[kHueMode] = colors.hueMode;
    storeSigned(&bytes_[kHue], colors.hue);
    storeLe16(&bytes_[kSaturation], colors.saturation);
}

}  // namespace tavra::movie
