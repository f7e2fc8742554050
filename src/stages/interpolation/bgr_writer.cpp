#include "stages/interpolation/bgr_writer.h"

#include <bit>
#include <cstring>
#include <type_traits>

#include "stages/byte_lanes.h"

namespace tavra::interpolation {
namespace {

static_assert(std::endian::native == std::endian::little,
              "a pixel's first sample is the low end of its machine word");

template <class Sample>
void writeSpaced(Sample* __restrict pixels, std::size_t pitch, const Sample* blue, const Sample* green,
                 const Sample* red, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, pixels += pitch) {
        pixels[0] = blue[i];
        pixels[1] = green[i];
        pixels[2] = red[i];
    }
}

// A pixel of four samples is one machine word; its fourth sample is read and put back.
template <class Sample>
void writeFour(Sample* pixels, const Sample* blue, const Sample* green, const Sample* red,
               std::size_t count) {
    using Pixel = std::conditional_t<sizeof(Sample) == 1, std::uint32_t, std::uint64_t>;
    constexpr unsigned kBits = 8 * sizeof(Sample);
    constexpr Pixel kFourth = ~Pixel{0} << (3 * kBits);
    auto* const bytes = static_cast<std::uint8_t*>(static_cast<void*>(pixels));
    for (std::size_t i = 0; i < count; ++i) {
        Pixel pixel;
        std::memcpy(&pixel, bytes + i * sizeof(Pixel), sizeof pixel);
        pixel = (pixel & kFourth) | Pixel{blue[i]} | Pixel{green[i]} << kBits | Pixel{red[i]} << (2 * kBits);
        std::memcpy(bytes + i * sizeof(Pixel), &pixel, sizeof pixel);
    }
}

using Words = std::uint16_t __attribute__((vector_size(16)));

template <class Vector>
Vector load(const void* samples) {
    Vector vector;
    std::memcpy(&vector, samples, sizeof vector);
    return vector;
}

#if defined(__SSSE3__) || defined(__ARM_NEON)

// Machines that permute the bytes of a vector at once: a vector of each plane makes three of pixels.
//
// Sample j of output vector k belongs to plane (k * samples + j) mod 3. As 3 does not divide the samples,
// position j takes each plane in just one of the three outputs, so one permutation of each plane serves all
// three, which then are picked together position by position.

using Bytes = lanes::Vector;

inline void weave(std::uint8_t* pixels, Bytes b, Bytes g, Bytes r) {
    b = lanes::permuted<lanes::Order{0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10, 5}>(b);
    g = lanes::permuted<lanes::Order{5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10}>(g);
    r = lanes::permuted<lanes::Order{10, 5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15}>(r);
    constexpr std::size_t kApart = 3 * lanes::kLaneBytes;
    lanes::store(lanes::everyThird<1>(b, g, r), pixels, kApart);
    lanes::store(lanes::everyThird<1>(g, r, b), pixels + lanes::kLaneBytes, kApart);
    lanes::store(lanes::everyThird<1>(r, b, g), pixels + 2 * lanes::kLaneBytes, kApart);
}

inline void weave(std::uint8_t* pixels, Words b, Words g, Words r) {
    b = __builtin_shufflevector(b, b, 0, 3, 6, 1, 4, 7, 2, 5);
    g = __builtin_shufflevector(g, g, 5, 0, 3, 6, 1, 4, 7, 2);
    r = __builtin_shufflevector(r, r, 2, 5, 0, 3, 6, 1, 4, 7);
    const auto store = [](std::uint8_t* to, Words x, Words y, Words z) {
        const Words xy = __builtin_shufflevector(x, y, 0, 9, 2, 3, 12, 5, 6, 15);
        const Words xyz = __builtin_shufflevector(xy, z, 0, 1, 10, 3, 4, 13, 6, 7);
        std::memcpy(to, &xyz, sizeof xyz);
    };
    store(pixels, b, g, r);
    store(pixels + 16, r, b, g);
    store(pixels + 32, g, r, b);
}

constexpr std::size_t kBytesTooMany = 0;

#else

// Other machines weave by interleaving, into 64-bit lanes with six valid bytes each (two pixels of bytes, one
// of words). Lanes are stored six bytes apart: the two bytes too many are overwritten by the next lane.

using Bytes = std::uint8_t __attribute__((vector_size(16)));
using Lanes = std::uint64_t __attribute__((vector_size(16)));

inline void storeSixes(std::uint8_t* pixels, Lanes sixes) {
    const std::uint64_t first = sixes[0];
    const std::uint64_t second = sixes[1];
    std::memcpy(pixels, &first, sizeof first);
    std::memcpy(pixels + 6, &second, sizeof second);
}

// Two pixels B G R 0 in each lane moved together.
inline Lanes closeUp(Words pixels) {
    const auto lanes = reinterpret_cast<Lanes>(pixels);
    return (lanes & 0xFFFFFF) | ((lanes >> 8) & 0xFFFFFF000000);
}

inline Words lowHalves(Words x, Words y) {
    return __builtin_shufflevector(x, y, 0, 8, 1, 9, 2, 10, 3, 11);
}
inline Words highHalves(Words x, Words y) {
    return __builtin_shufflevector(x, y, 4, 12, 5, 13, 6, 14, 7, 15);
}

inline void weave(std::uint8_t* pixels, Bytes b, Bytes g, Bytes r) {
    constexpr Bytes kZero = {};
    const auto low = [](Bytes x, Bytes y) {
        return reinterpret_cast<Words>(
            __builtin_shufflevector(x, y, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
    };
    const auto high = [](Bytes x, Bytes y) {
        return reinterpret_cast<Words>(
            __builtin_shufflevector(x, y, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
    };
    storeSixes(pixels, closeUp(lowHalves(low(b, g), low(r, kZero))));
    storeSixes(pixels + 12, closeUp(highHalves(low(b, g), low(r, kZero))));
    storeSixes(pixels + 24, closeUp(lowHalves(high(b, g), high(r, kZero))));
    storeSixes(pixels + 36, closeUp(highHalves(high(b, g), high(r, kZero))));
}

inline void weave(std::uint8_t* pixels, Words b, Words g, Words r) {
    using Pairs = std::uint32_t __attribute__((vector_size(16)));
    constexpr Words kZero = {};
    const auto low = [](Words x, Words y) {
        return reinterpret_cast<Lanes>(
            __builtin_shufflevector(reinterpret_cast<Pairs>(x), reinterpret_cast<Pairs>(y), 0, 4, 1, 5));
    };
    const auto high = [](Words x, Words y) {
        return reinterpret_cast<Lanes>(
            __builtin_shufflevector(reinterpret_cast<Pairs>(x), reinterpret_cast<Pairs>(y), 2, 6, 3, 7));
    };
    storeSixes(pixels, low(lowHalves(b, g), lowHalves(r, kZero)));
    storeSixes(pixels + 12, high(lowHalves(b, g), lowHalves(r, kZero)));
    storeSixes(pixels + 24, low(highHalves(b, g), highHalves(r, kZero)));
    storeSixes(pixels + 36, high(highHalves(b, g), highHalves(r, kZero)));
}

constexpr std::size_t kBytesTooMany = 2;

#endif

// Whole vectors as long as nothing is written behind the last pixel, then pixel by pixel.
template <class Sample>
void writeThree(Sample* pixels, const Sample* blue, const Sample* green, const Sample* red,
                std::size_t count) {
    using Vector = std::conditional_t<sizeof(Sample) == 1, Bytes, Words>;
    constexpr std::size_t kLanes = sizeof(Vector) / sizeof(Sample);
    constexpr std::size_t kPixelsTooMany = (kBytesTooMany + 2) / 3;
    auto* const bytes = static_cast<std::uint8_t*>(static_cast<void*>(pixels));
    std::size_t done = 0;
    for (; done + kLanes + kPixelsTooMany <= count; done += kLanes) {
        weave(bytes + 3 * done * sizeof(Sample), load<Vector>(blue + done), load<Vector>(green + done),
              load<Vector>(red + done));
    }
    writeSpaced(pixels + 3 * done, 3, blue + done, green + done, red + done, count - done);
}

}  // namespace

template <class Sample>
void writeBgr(Sample* pixels, std::size_t pitch, const Sample* blue, const Sample* green, const Sample* red,
              std::size_t count) {
    if (pitch == 3) {
        writeThree(pixels, blue, green, red, count);
    } else if (pitch == 4) {
        writeFour(pixels, blue, green, red, count);
    } else {
        writeSpaced(pixels, pitch, blue, green, red, count);
    }
}

template void writeBgr(std::uint8_t*, std::size_t, const std::uint8_t*, const std::uint8_t*,
                       const std::uint8_t*, std::size_t);
template void writeBgr(std::uint16_t*, std::size_t, const std::uint16_t*, const std::uint16_t*,
                       const std::uint16_t*, std::size_t);

}  // namespace tavra::interpolation
