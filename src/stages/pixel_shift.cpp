#include "stages/pixel_shift.h"

#include <algorithm>
#include <cstring>

#include "stages/bgr_reader.h"
#include "stages/byte_lanes.h"
#include "stages/interpolation/bgr_writer.h"

namespace tavra {
namespace {

std::uint8_t shifted(std::uint8_t sample, std::uint8_t rise, std::uint8_t fall) {
    const auto room = static_cast<std::uint8_t>(255 - sample);
    const auto risen = static_cast<std::uint8_t>(sample + std::min(rise, room));
    return static_cast<std::uint8_t>(std::max(risen, fall) - fall);
}

#if defined(__SSSE3__) || defined(__ARM_NEON)

// Machines that permute the bytes of a lane at once spread the shifts over the samples, and the pixels stay
// as they are.
using lanes::Vector;

Vector shifted(Vector samples, Vector rise, Vector fall) {
    const Vector room = ~samples;
    const Vector risen = samples + (rise < room ? rise : room);
    return (risen > fall ? risen : fall) - fall;
}

// Of each byte of the k-th lane of pixels the number of its pixel.
template <std::size_t kPitch>
constexpr lanes::Order pixelNumbers(std::size_t k) {
    lanes::Order order{};
    for (std::size_t j = 0; j < order.size(); ++j) order[j] = (k * lanes::kLaneBytes + j) / kPitch;
    return order;
}

template <std::size_t kPitch>
Vector colorsOnly(Vector samples) {
    if constexpr (kPitch == 4) {
        using Pixels [[gnu::vector_size(lanes::kVectorBytes)]] = std::uint32_t;
        const Pixels pixels =
            reinterpret_cast<Pixels>(samples) & 0x00FFFFFF;  // the fourth byte is the highest
        return reinterpret_cast<Vector>(pixels);
    }
    return samples;
}

template <std::size_t kPitch, std::size_t... kLane>
void shiftVectors(std::uint8_t* pixels, Vector rise, Vector fall, std::index_sequence<kLane...>) {
    constexpr std::size_t kApart = kPitch * lanes::kLaneBytes;
    (lanes::store(shifted(lanes::load(pixels + kLane * lanes::kLaneBytes, kApart),
                          colorsOnly<kPitch>(lanes::permuted<pixelNumbers<kPitch>(kLane)>(rise)),
                          colorsOnly<kPitch>(lanes::permuted<pixelNumbers<kPitch>(kLane)>(fall))),
                  pixels + kLane * lanes::kLaneBytes, kApart),
     ...);
}

template <std::size_t kPitch>
void shift(std::uint8_t* pixels, const std::uint8_t* rise, const std::uint8_t* fall, std::size_t count) {
    std::size_t i = 0;
    for (; i + lanes::kVectorBytes <= count; i += lanes::kVectorBytes) {
        Vector rises, falls;
        std::memcpy(&rises, rise + i, sizeof rises);
        std::memcpy(&falls, fall + i, sizeof falls);
        shiftVectors<kPitch>(pixels + kPitch * i, rises, falls, std::make_index_sequence<kPitch>());
    }
    for (; i < count; ++i) {
        for (std::size_t c = 0; c < 3; ++c) {
            std::uint8_t& sample = pixels[kPitch * i + c];
            sample = shifted(sample, rise[i], fall[i]);
        }
    }
}

#else

// Others take the pixels apart.
template <std::size_t kPitch>
void shift(std::uint8_t* pixels, const std::uint8_t* rise, const std::uint8_t* fall, std::size_t count) {
    constexpr std::size_t kTile = 256;
    alignas(32) std::uint8_t planes[3][kTile];
    for (std::size_t x = 0; x < count; x += kTile) {
        const std::size_t width = std::min(kTile, count - x);
        readBgr(pixels + kPitch * x, kPitch, planes[0], planes[1], planes[2], width);
        for (auto& plane : planes) {
            for (std::size_t i = 0; i < width; ++i) plane[i] = shifted(plane[i], rise[x + i], fall[x + i]);
        }
        interpolation::writeBgr(pixels + kPitch * x, kPitch, planes[0], planes[1], planes[2], width);
    }
}

#endif

}  // namespace

void shiftPixels(std::uint8_t* pixels, std::size_t pitch, const std::uint8_t* rise, const std::uint8_t* fall,
                 std::size_t count) {
    if (pitch == 3) {
        shift<3>(pixels, rise, fall, count);
    } else {
        shift<4>(pixels, rise, fall, count);
    }
}

}  // namespace tavra
