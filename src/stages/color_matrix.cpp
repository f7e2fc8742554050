#include "stages/color_matrix.h"

#include <algorithm>
#include <limits>

#include "platform/last_error.h"
#include "stages/color_matrix/kernel.h"
#include "stages/image_rows.h"

namespace tavra {
namespace {

constexpr std::uint8_t kMatrixOff = 0;
constexpr std::uint8_t kMatrixOn = 0xFF;
constexpr std::uint8_t kHueSaturationOn = 1;

constexpr bool isMono(std::uint32_t format) {
    return format == 1 || format == 2 || format == 16 || format == 32 || format == 64;
}

// Samples of a pixel; 0 for a format that is not taken.
constexpr std::size_t pitchOf(std::uint32_t format) {
    if (format == 4 || format == 256) return 3;
    return format == 8 || format == 512 ? 4 : 0;
}

template <class Sample>
constexpr Sample limitOf(std::uint8_t bits) {
    if (bits >= std::numeric_limits<Sample>::digits) return std::numeric_limits<Sample>::max();
    return static_cast<Sample>((1u << bits) - 1);
}

}  // namespace

CColorMatrix::CColorMatrix() {
    rebuild();
}

void CColorMatrix::rebuild() {
    buildColorTables(tables_, settings_);
    packColorTables(packed_, tables_);
    const ColorMatrix& m = settings_.matrix;
    const auto levels = [](std::int16_t hundredths) { return static_cast<std::int16_t>(hundredths / 100); };
    fitColorLines(lines_, tables_, {levels(m[11]), levels(m[7]), levels(m[3])});
}

std::uint32_t CColorMatrix::SetColorMatrix(std::uint8_t mode, const std::int16_t* matrix) {
    if (mode != kMatrixOff && (mode != kMatrixOn || matrix == nullptr))
        return platform::failWith(error::kInvalidArgument).code();
    const std::lock_guard lock(mutex_);
    matrixMode_ = mode;
    if (mode == kMatrixOff) {
        settings_.matrix = kIdentityMatrix;
    } else {
        std::copy_n(matrix, settings_.matrix.size(), settings_.matrix.begin());
    }
    rebuild();
    return error::kNone;
}

std::uint32_t CColorMatrix::GetColorMatrix(std::uint8_t* mode, std::int16_t* matrix) {
    const std::lock_guard lock(mutex_);
    if (mode != nullptr) *mode = matrixMode_;
    if (matrix != nullptr) std::copy(settings_.matrix.begin(), settings_.matrix.end(), matrix);
    return error::kNone;
}

std::uint32_t CColorMatrix::SetHueSaturation(std::uint8_t mode, std::int16_t hue, std::uint16_t saturation) {
    if (mode > kHueSaturationOn) return platform::failWith(error::kInvalidArgument).code();
    const ColorMatrixSettings neutral;
    const std::lock_guard lock(mutex_);
    hueSaturationMode_ = mode;
    settings_.hue = mode == kHueSaturationOn ? hue : neutral.hue;
    settings_.saturation = mode == kHueSaturationOn ? saturation : neutral.saturation;
    rebuild();
    return error::kNone;
}

std::uint32_t CColorMatrix::GetHueSaturation(std::uint8_t* mode, std::int16_t* hue,
                                             std::uint16_t* saturation) {
    const std::lock_guard lock(mutex_);
    if (mode != nullptr) *mode = hueSaturationMode_;
    if (hue != nullptr) *hue = settings_.hue;
    if (saturation != nullptr) *saturation = settings_.saturation;
    return error::kNone;
}

std::uint32_t CColorMatrix::Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                   std::uint32_t format, std::uint8_t* pixels, std::uint8_t bits) {
    if (isMono(format)) return error::kNone;
    const std::size_t pitch = pitchOf(format);
    if (pitch == 0) return platform::failWith(error::kInvalidArgument).code();
    const std::lock_guard lock(mutex_);
    if (off()) return error::kNone;
    const auto limit = limitOf<std::uint8_t>(bits);
    eachRow(width, height, stride, pitch, pixels, [&](std::uint8_t* row, std::size_t) {
        if (lines_.fit) {
            transformRow(lines_, row, pitch, width, limit);
        } else if (packed_.fits) {
            transformRow(packed_, row, pitch, width, limit);
        } else {
            transformRow(tables_, row, pitch, width, limit);
        }
    });
    return error::kNone;
}

std::uint32_t CColorMatrix::Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                    std::uint32_t format, std::uint16_t* pixels, std::uint8_t bits) {
    if (isMono(format)) return error::kNone;
    const std::size_t pitch = pitchOf(format);
    if (pitch == 0) return platform::failWith(error::kInvalidArgument).code();
    const std::lock_guard lock(mutex_);
    if (off()) return error::kNone;
    const auto limit = limitOf<std::uint16_t>(bits);
    eachRow(width, height, stride, pitch, pixels,
            [&](std::uint16_t* row, std::size_t) { transformRow(tables_, row, pitch, width, limit); });
    return error::kNone;
}

}  // namespace tavra
