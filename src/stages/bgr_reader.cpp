#include "stages/bgr_reader.h"

#include <cstring>

#include "stages/byte_lanes.h"

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

// Machines that permute the bytes of a lane at once: three vectors hold 16 pixels in each of their lanes.
// Position j of the k-th holds plane (16 k + j) mod 3: so for each plane one position out of three is taken
// from each vector, and then one permutation puts the plane's samples in order, the i-th from position
// (3 i + plane) mod 16.
std::size_t readVectors(const std::uint8_t* pixels, std::uint8_t* blue, std::uint8_t* green,
                        std::uint8_t* red, std::size_t count) {
    constexpr std::size_t kPixels = lanes::kVectorBytes;
    const auto load = [](const std::uint8_t* from) { return lanes::load(from, 3 * lanes::kLaneBytes); };
    std::size_t done = 0;
    for (; done + kPixels <= count; done += kPixels) {
        const lanes::Vector first = load(pixels + 3 * done);
        const lanes::Vector second = load(pixels + 3 * done + lanes::kLaneBytes);
        const lanes::Vector third = load(pixels + 3 * done + 2 * lanes::kLaneBytes);
        const lanes::Vector b =
            lanes::permuted<lanes::Order{0, 3, 6, 9, 12, 15, 2, 5, 8, 11, 14, 1, 4, 7, 10, 13}>(
                lanes::everyThird(first, third, second));
        const lanes::Vector g =
            lanes::permuted<lanes::Order{1, 4, 7, 10, 13, 0, 3, 6, 9, 12, 15, 2, 5, 8, 11, 14}>(
                lanes::everyThird(second, first, third));
        const lanes::Vector r =
            lanes::permuted<lanes::Order{2, 5, 8, 11, 14, 1, 4, 7, 10, 13, 0, 3, 6, 9, 12, 15}>(
                lanes::everyThird(third, second, first));
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
