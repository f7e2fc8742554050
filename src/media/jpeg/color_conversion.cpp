#include "media/jpeg/color_conversion.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tavra::jpeg {
namespace {

// As many pixels as are converted at a time.
constexpr std::size_t kTile = 128;

// Of a tile, in the order in which they stand in memory.
struct alignas(64) Channels {
    std::uint8_t at[3][kTile];
};

using Bytes = std::uint8_t __attribute__((vector_size(16)));

Bytes interleaveLow(Bytes a, Bytes b) {
    return __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}

Bytes highHalf(Bytes a) {
    return __builtin_shufflevector(a, a, 8, 9, 10, 11, 12, 13, 14, 15, 8, 9, 10, 11, 12, 13, 14, 15);
}

// Sixteen pixels of three bytes. Each step interleaves the first with the second half of the 48 bytes, which
// brings a byte from place p to place 2p modulo 47; after four steps, 16p, the bytes of a channel are
// together.
void splitSixteen(const std::uint8_t* pixels, Channels& channels, std::size_t x) {
    Bytes a, b, c;
    std::memcpy(&a, pixels, sizeof a);
    std::memcpy(&b, pixels + 16, sizeof b);
    std::memcpy(&c, pixels + 32, sizeof c);
    for (int i = 0; i < 4; ++i) {
        const Bytes first = interleaveLow(a, highHalf(b));
        const Bytes second = interleaveLow(highHalf(a), c);
        const Bytes third = interleaveLow(b, highHalf(c));
        a = first;
        b = second;
        c = third;
    }
    std::memcpy(&channels.at[0][x], &a, sizeof a);
    std::memcpy(&channels.at[1][x], &b, sizeof b);
    std::memcpy(&channels.at[2][x], &c, sizeof c);
}

void splitThree(const std::uint8_t* pixels, std::size_t count, Channels& channels) {
    std::size_t x = 0;
    for (; x + 16 <= count; x += 16) splitSixteen(pixels + 3 * x, channels, x);
    for (; x < count; ++x) {
        for (std::size_t c = 0; c < 3; ++c) channels.at[c][x] = pixels[3 * x + c];
    }
}

void splitFour(const std::uint8_t* pixels, std::size_t count, Channels& channels) {
    for (std::size_t x = 0; x < count; ++x) {
        for (std::size_t c = 0; c < 3; ++c) channels.at[c][x] = pixels[4 * x + c];
    }
}

// Calls work(channels, x, count) for each tile of a row. What a short last tile does not fill is zero.
template <class Work>
void forEachTile(const std::uint8_t* pixels, std::size_t width, PixelLayout layout, Work&& work) {
    Channels channels = {};
    for (std::size_t x = 0; x < width; x += kTile) {
        const std::size_t count = std::min(kTile, width - x);
        if (layout.bytes == 3) {
            splitThree(pixels + 3 * x, count, channels);
        } else {
            splitFour(pixels + 4 * x, count, channels);
        }
        work(channels, x, count);
    }
}

struct Components {
    const std::uint8_t *red, *green, *blue;

    Components(const Channels& channels, bool blueFirst)
        : red(channels.at[blueFirst ? 2 : 0]), green(channels.at[1]), blue(channels.at[blueFirst ? 0 : 2]) {}
};

using Floats = float[kTile];
using Values = std::int32_t[kTile];

void widen(const std::uint8_t* bytes, Floats& values) {
    for (std::size_t i = 0; i < kTile; ++i) values[i] = static_cast<float>(bytes[i]);
}

// Added to a small number, this rounds it to nearest, and leaves it in the lower bits of the sum.
constexpr float kRounding = 12582912.0F;  // 1.5 * 2^23

std::int32_t rounded(float sum) {
    return std::bit_cast<std::int32_t>(sum);
}

void narrow(const Values& values, std::uint8_t* __restrict bytes) {
    for (std::size_t i = 0; i < kTile; ++i) bytes[i] = static_cast<std::uint8_t>(values[i]);
}

float luminance(float red, float green, float blue) {
    return 0.299F * red + 0.587F * green + 0.114F * blue;
}

// Single precision is exact enough: a sum that is no tie is a thousandth from the next one. The factors of
// the differences are small by a millionth, so that full blue and full red, whose sum is 255.5, are 255.
constexpr float kShrink = 1 - 1e-6F;
constexpr float kBlueDifference = kShrink / 1.772F;
constexpr float kRedDifference = kShrink / 1.402F;

}  // namespace

void splitRgb(const std::uint8_t* pixels, std::size_t width, PixelLayout layout, const PlaneRows& planes) {
    forEachTile(pixels, width, layout, [&](const Channels& channels, std::size_t x, std::size_t count) {
        const Components components(channels, layout.blueFirst);
        std::memcpy(planes[0] + x, components.red, count);
        std::memcpy(planes[1] + x, components.green, count);
        std::memcpy(planes[2] + x, components.blue, count);
    });
}

void convertToYCbCr(const std::uint8_t* pixels, std::size_t width, PixelLayout layout,
                    const PlaneRows& planes) {
    forEachTile(pixels, width, layout, [&](const Channels& channels, std::size_t x, std::size_t count) {
        const Components components(channels, layout.blueFirst);
        alignas(64) Floats red, green, blue;
        widen(components.red, red);
        widen(components.green, green);
        widen(components.blue, blue);

        alignas(64) Values sums[3];
        for (std::size_t i = 0; i < kTile; ++i) {
            const float y = luminance(red[i], green[i], blue[i]);
            sums[0][i] = rounded(y + kRounding);
            sums[1][i] = rounded((blue[i] - y) * kBlueDifference + (kRounding + 128));
            sums[2][i] = rounded((red[i] - y) * kRedDifference + (kRounding + 128));
        }
        for (std::size_t c = 0; c < 3; ++c) {
            std::uint8_t bytes[kTile];
            narrow(sums[c], bytes);
            std::memcpy(planes[c] + x, bytes, count);
        }
    });
}

void convertToGray(const std::uint8_t* pixels, std::size_t width, PixelLayout layout, std::uint8_t* plane) {
    forEachTile(pixels, width, layout, [&](const Channels& channels, std::size_t x, std::size_t count) {
        const Components components(channels, layout.blueFirst);
        alignas(64) Floats red, green, blue;
        widen(components.red, red);
        widen(components.green, green);
        widen(components.blue, blue);

        alignas(64) Values sums;
        for (std::size_t i = 0; i < kTile; ++i) {
            sums[i] = rounded(luminance(red[i], green[i], blue[i]) + kRounding);
        }
        std::uint8_t bytes[kTile];
        narrow(sums, bytes);
        std::memcpy(plane + x, bytes, count);
    });
}

void splitYCbCr422(const std::uint8_t* pairs, std::size_t width, const PlaneRows& planes) {
    for (std::size_t x = 0; x < width; ++x) planes[0][x] = pairs[2 * x];
    for (std::size_t x = 0; x < (width + 1) / 2; ++x) {
        planes[1][x] = pairs[4 * x + 1];
        planes[2][x] = pairs[4 * x + 3];
    }
}

}  // namespace tavra::jpeg
