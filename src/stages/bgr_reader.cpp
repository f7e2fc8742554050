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

// How many pixels of three samples were read as whole vectors.
#if defined(__SSSE3__) || defined(__ARM_NEON)

// Machines that permute the bytes of a lane at once: three vectors hold as many pixels in each of their lanes
// as a lane has samples. Position j of the k-th holds plane (k * samples + j) mod 3: so for each plane one
// position out of three is taken from each vector, and then one permutation puts the plane's samples in
// order, the i-th from position (3 i + plane) mod samples.
template <std::size_t kPlane, class Sample>
constexpr lanes::Order planeOrder() {
    constexpr std::size_t kSamples = lanes::kLaneBytes / sizeof(Sample);
    lanes::Order order{};
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = (3 * (i / sizeof(Sample)) + kPlane) % kSamples * sizeof(Sample) + i % sizeof(Sample);
    return order;
}

template <std::size_t kPlane, class Sample>
void storePlane(lanes::Vector x, lanes::Vector y, lanes::Vector z, Sample* plane) {
    const lanes::Vector samples =
        lanes::permuted<planeOrder<kPlane, Sample>()>(lanes::everyThird<sizeof(Sample)>(x, y, z));
    std::memcpy(plane, &samples, sizeof samples);
}

template <class Sample>
std::size_t readVectors(const Sample* pixels, Sample* blue, Sample* green, Sample* red, std::size_t count) {
    constexpr std::size_t kPixels = lanes::kVectorBytes / sizeof(Sample);
    const auto* const bytes = static_cast<const std::uint8_t*>(static_cast<const void*>(pixels));
    std::size_t done = 0;
    for (; done + kPixels <= count; done += kPixels) {
        const auto load = [from = bytes + 3 * sizeof(Sample) * done](std::size_t lane) {
            return lanes::load(from + lane * lanes::kLaneBytes, 3 * lanes::kLaneBytes);
        };
        const lanes::Vector first = load(0), second = load(1), third = load(2);
        if constexpr (sizeof(Sample) == 1) {  // 16 mod 3 is 1
            storePlane<0>(first, third, second, blue + done);
            storePlane<1>(second, first, third, green + done);
            storePlane<2>(third, second, first, red + done);
        } else {  // 8 mod 3 is 2
            storePlane<0>(first, second, third, blue + done);
            storePlane<1>(third, first, second, green + done);
            storePlane<2>(second, third, first, red + done);
        }
    }
    return done;
}

#else

template <class Sample>
std::size_t readVectors(const Sample*, Sample*, Sample*, Sample*, std::size_t) {
    return 0;
}

#endif

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
