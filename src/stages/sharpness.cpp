#include "stages/sharpness.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include "base/error_codes.h"
#include "base/pixel_format.h"
#include "platform/last_error.h"
#include "stages/sharpness/kernel.h"

namespace tavra {
namespace {

constexpr std::uint16_t kLeastBits = 8;
constexpr std::uint16_t kMostBits = 12;

// Samples of a pixel in the formats that go with a depth, 0 for any other.
unsigned channelsOf(std::uint32_t format, std::uint16_t bits) {
    switch (format) {
        case 1: return bits == kLeastBits ? 1 : 0;
        case 4: return bits == kLeastBits ? 3 : 0;
        case 8: return bits == kLeastBits ? 4 : 0;
        case 2:
        case 16:
        case 32:
        case 64: return bits > kLeastBits ? 1 : 0;
        case 256: return bits > kLeastBits ? 3 : 0;
        case 512: return bits > kLeastBits ? 4 : 0;
        default: return 0;
    }
}

// The stride that 0 stands for. Word formats count their bytes themselves; byte formats held in words take
// twice theirs.
template <class Sample>
std::size_t defaultStride(std::uint32_t width, std::uint32_t format, unsigned channels) {
    return paddedStride(width, std::max<std::size_t>(bytesPerPixel(format), channels * sizeof(Sample)));
}

template <class Sample>
void sharpen(const sharpness::Image<Sample>& image, unsigned channels,
             const sharpness::Corrections& corrections, sharpness::LineStore<Sample> lines) {
    switch (channels) {
        case 1: return sharpness::sharpen<1>(image, corrections, lines);
        case 3: return sharpness::sharpen<3>(image, corrections, lines);
        default: return sharpness::sharpen<4>(image, corrections, lines);
    }
}

}  // namespace

std::uint32_t CSharpness::SetMode(std::uint8_t mode, std::uint16_t gain, std::uint16_t coring) {
    const std::lock_guard lock(mutex_);
    mode_ = mode;
    gain_ = gain;
    coring_ = coring;
    if (mode != 0) corrections_.build(gain, coring);
    return error::kNone;
}

std::uint32_t CSharpness::GetMode(std::uint8_t* mode, std::uint16_t* gain, std::uint16_t* coring) {
    const std::lock_guard lock(mutex_);
    *mode = mode_;
    *gain = gain_;
    *coring = coring_;
    return error::kNone;
}

template <class Sample>
std::uint32_t CSharpness::apply(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                std::uint32_t format, Sample* pixels, std::uint16_t bits) {
    const std::lock_guard lock(mutex_);
    if (mode_ == 0) return error::kNone;
    if (bits < kLeastBits || bits > kMostBits) return platform::failWith(error::kInvalidArgument).code();
    const std::unique_ptr<std::uint16_t[]> store(new (std::nothrow)
                                                     std::uint16_t[sharpness::lineStoreWords<Sample>(width)]);
    if (store == nullptr) return platform::failWith(error::kOutOfMemory).code();
    const unsigned channels = channelsOf(format, bits);
    if (channels == 0) return platform::failWith(error::kInvalidArgument).code();
    const sharpness::Image<Sample> image = {
        pixels, stride != 0 ? stride : defaultStride<Sample>(width, format, channels), width, height,
        static_cast<std::int16_t>((1 << bits) - 1)};
    sharpen(image, channels, corrections_, sharpness::LineStore<Sample>(store.get(), width));
    return error::kNone;
}

std::uint32_t CSharpness::Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                  std::uint32_t format, std::uint16_t* pixels, std::uint16_t bits) {
    return apply(width, height, stride, format, pixels, bits);
}

std::uint32_t CSharpness::Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                 std::uint32_t format, std::uint8_t* pixels, std::uint16_t bits) {
    return apply(width, height, stride, format, pixels, bits);
}

}  // namespace tavra
