#include "stages/bgr_reader.h"

#include <cstring>

namespace tavra {
namespace {

template <std::size_t kPitch, class Sample>
void readSpaced(const Sample* pixels, Sample* __restrict blue, Sample* __restrict green,
                Sample* __restrict red, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        blue[i] = pixels[kPitch * i];
        green[i] = pixels[kPitch * i + 1];
        red[i] = pixels[kPitch * i + 2];
    }
}

// How many pixels of three bytes were read as whole vectors.
#if defined(__SSSE3__) || defined(__ARM_NEON)

using Bytes = std::uint8_t __attribute__((vector_size(16)));

// Machines that permute the bytes of a vector at once. Position j of the k-th vector holds plane
// (16 k + j) mod 3: so for each plane one position out of three is taken from each vector, and then one
// permutation puts the plane's samples in order, the i-th from position (3 i + plane) mod 16.
std::size_t readVectors(const std::uint8_t* pixels, std::uint8_t* blue, std::uint8_t* green,
                        std::uint8_t* red, std::size_t count) {
    constexpr std::size_t kLanes = sizeof(Bytes);
    const auto load = [](const std::uint8_t* from) {
        Bytes vector;
        std::memcpy(&vector, from, sizeof vector);
        return vector;
    };
    // Positions 0, 3, 6 ... of x, 1, 4, 7 ... of y, 2, 5, 8 ... of z.
    const auto pick = [](Bytes x, Bytes y, Bytes z) {
        const Bytes xy =
            __builtin_shufflevector(x, y, 0, 17, 2, 3, 20, 5, 6, 23, 8, 9, 26, 11, 12, 29, 14, 15);
        return __builtin_shufflevector(xy, z, 0, 1, 18, 3, 4, 21, 6, 7, 24, 9, 10, 27, 12, 13, 30, 15);
    };
    std::size_t done = 0;
    for (; done + kLanes <= count; done += kLanes) {
        const Bytes first = load(pixels + 3 * done);
        const Bytes second = load(pixels + 3 * done + kLanes);
        const Bytes third = load(pixels + 3 * done + 2 * kLanes);
        Bytes b = pick(first, third, second);
        Bytes g = pick(second, first, third);
        Bytes r = pick(third, second, first);
        b = __builtin_shufflevector(b, b, 0, 3, 6, 9, 12, 15, 2, 5, 8, 11, 14, 1, 4, 7, 10, 13);
        g = __builtin_shufflevector(g, g, 1, 4, 7, 10, 13, 0, 3, 6, 9, 12, 15, 2, 5, 8, 11, 14);
        r = __builtin_shufflevector(r, r, 2, 5, 8, 11, 14, 1, 4, 7, 10, 13, 0, 3, 6, 9, 12, 15);
        std::memcpy(blue + done, &b, sizeof b);
        std::memcpy(green + done, &g, sizeof g);
        std::memcpy(red + done, &r, sizeof r);
    }
    return done;
}

#else

std::size_t readVectors(const std::uint8_t*, std::uint8_t*, std::uint8_t*, std::uint8_t*, std::size_t) {
    return 0;
}

#endif

std::size_t readVectors(const std::uint16_t*, std::uint16_t*, std::uint16_t*, std::uint16_t*, std::size_t) {
    return 0;
}

}  // namespace

template <class Sample>
void readBgr(const Sample* pixels, std::size_t pitch, Sample* blue, Sample* green, Sample* red,
             std::size_t count) {
    if (pitch == 4) {
        readSpaced<4>(pixels, blue, green, red, count);
        return;
    }
    const std::size_t done = readVectors(pixels, blue, green, red, count);
    readSpaced<3>(pixels + 3 * done, blue + done, green + done, red + done, count - done);
}

template void readBgr(const std::uint8_t*, std::size_t, std::uint8_t*, std::uint8_t*, std::uint8_t*,
                      std::size_t);
template void readBgr(const std::uint16_t*, std::size_t, std::uint16_t*, std::uint16_t*, std::uint16_t*,
                      std::size_t);

}  // namespace tavra
