#include "stages/bgr_conversion.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "base/little_endian.h"
#include "base/pixel_format.h"
#include "stages/interpolation/bgr_writer.h"

namespace tavra {
namespace {

constexpr std::uint32_t kBgr24Transfer = 1024;
constexpr std::uint32_t kBgr10Transfer = 2048;
constexpr std::uint32_t kGrey = 1;
constexpr std::uint32_t kBgr24 = 4;

constexpr std::size_t kBlock = 256;

// A row of a frame to a row of the image.
using RowConversion = void (*)(const std::uint8_t* row, std::size_t width, std::uint8_t* out);

void bgr24ToGrey(const std::uint8_t* row, std::size_t width, std::uint8_t* __restrict out) {
    for (std::size_t x = 0; x < width; ++x) out[x] = row[3 * x + 1];
}

void bgr24ToBgr24(const std::uint8_t* row, std::size_t width, std::uint8_t* out) {
    std::memcpy(out, row, 3 * width);
}

void bgr24ToBgr32(const std::uint8_t* row, std::size_t width, std::uint8_t* __restrict out) {
    constexpr std::uint64_t kFourthBytes = 0xFF000000FF000000;
    std::size_t x = 0;
    // Two pixels at a time: eight bytes are read for six, as long as they lie inside the row, and the
    // fourth bytes are put back as they were.
    for (; x + 3 <= width; x += 2) {
        const std::uint64_t pixels = loadLe64(row + 3 * x);
        const std::uint64_t spread = (pixels & 0xFFFFFF) | (pixels << 8 & 0x00FFFFFF00000000);
        storeLe64(out + 4 * x, (loadLe64(out + 4 * x) & kFourthBytes) | spread);
    }
    for (; x < width; ++x) std::memcpy(out + 4 * x, row + 3 * x, 3);
}

void bgr10ToGrey(const std::uint8_t* row, std::size_t width, std::uint8_t* __restrict out) {
    for (std::size_t x = 0; x < width; ++x) out[x] = static_cast<std::uint8_t>(loadLe32(row + 4 * x) >> 12);
}

template <std::size_t kPitch>
void bgr10ToBgr(const std::uint8_t* row, std::size_t width, std::uint8_t* out) {
    std::uint8_t blue[kBlock], green[kBlock], red[kBlock];
    for (std::size_t x = 0; x < width; x += kBlock) {
        const std::size_t count = std::min(kBlock, width - x);
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint32_t word = loadLe32(row + 4 * (x + i));
            blue[i] = static_cast<std::uint8_t>(word >> 2);
            green[i] = static_cast<std::uint8_t>(word >> 12);
            red[i] = static_cast<std::uint8_t>(word >> 22);
        }
        interpolation::writeBgr(out + x * kPitch, kPitch, blue, green, red, count);
    }
}

RowConversion conversionOf(bool tenBits, std::uint32_t format) {
    switch (format) {
        case kGrey: return tenBits ? bgr10ToGrey : bgr24ToGrey;
        case kBgr24: return tenBits ? bgr10ToBgr<3> : bgr24ToBgr24;
        default: return tenBits ? bgr10ToBgr<4> : bgr24ToBgr32;
    }
}

}  // namespace

Status convertBgrFrame(std::uint32_t transferCode, std::uint32_t width, std::uint32_t height,
                       const std::uint8_t* source, std::uint32_t previewFormat, std::uint8_t* destination) {
    const bool tenBits = transferCode == kBgr10Transfer;
    if (!tenBits && transferCode != kBgr24Transfer) return Status(error::kInvalidArgument);
    if (!hasByteSamples(previewFormat)) return Status(error::kInvalidArgument);
    if (width == 0) return {};
    const std::size_t sourceStride = std::size_t{width} * (tenBits ? 4 : 3);
    const std::size_t stride = paddedStride(width, bytesPerPixel(previewFormat));
    const RowConversion convert = conversionOf(tenBits, previewFormat);
    for (std::size_t y = 0; y < height; ++y)
        convert(source + y * sourceStride, width, destination + y * stride);
    return {};
}

void narrowBgr10Frame(std::uint32_t width, std::uint32_t height, std::uint8_t* frame) {
    const std::size_t pixels = std::size_t{width} * height;
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t word = loadLe32(frame + 4 * i);
        frame[3 * i] = static_cast<std::uint8_t>(word >> 2);
        frame[3 * i + 1] = static_cast<std::uint8_t>(word >> 12);
        frame[3 * i + 2] = static_cast<std::uint8_t>(word >> 22);
    }
}

}  // namespace tavra
