// Sharpening straight from the rule, one pixel at a time, and its comparison with the stage.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <vector>

#include "stages/sharpness.h"

namespace tavra::test {

struct Setting {
    std::uint16_t gain, coring;
};

struct Layout {
    std::size_t width, height, stride;  // stride in samples
    std::size_t channels;
    unsigned bits;
};

// The table's entry for a difference.
inline int plainCorrection(Setting setting, int difference) {
    float product = 0;
    for (int k = setting.coring; k < difference; ++k) product += static_cast<float>(setting.gain) / 100.0F;
    return product >= 4095.0F ? 4095 : static_cast<int>(product + 0.5F);
}

inline int plainLuma(const std::vector<int>& image, const Layout& layout, std::size_t x, std::size_t y) {
    const int* const pixel = image.data() + y * layout.stride + x * layout.channels;
    if (layout.channels == 1) return pixel[0];
    const auto part = [](int weight, int value) { return (weight * value + 500) / 1000; };
    return part(114, pixel[0]) + part(587, pixel[1]) + part(299, pixel[2]);
}

inline int plainDifference(const std::vector<int>& image, const Layout& layout, std::size_t x,
                           std::size_t y) {
    int sum = 0;
    for (std::size_t ny = y - 1; ny <= y + 1; ++ny) {
        for (std::size_t nx = x - 1; nx <= x + 1; ++nx) {
            if (nx != x || ny != y) sum += plainLuma(image, layout, nx, ny);
        }
    }
    return plainLuma(image, layout, x, y) - (sum + 4) / 8;
}

inline std::vector<int> plainSharpen(const std::vector<int>& image, const Layout& layout, Setting setting,
                                     bool bytes) {
    const int maximum = (1 << layout.bits) - 1;
    std::vector<int> result = image;
    for (std::size_t y = 1; y + 1 < layout.height; ++y) {
        for (std::size_t x = 1; x + 1 < layout.width; ++x) {
            const int d = plainDifference(image, layout, x, y);
            if (std::abs(d) <= setting.coring) continue;
            int t = plainCorrection(setting, std::abs(d));
            if (bytes && (d > 0 || layout.channels == 1)) t %= 256;
            for (std::size_t c = 0; c < std::min<std::size_t>(layout.channels, 3); ++c) {
                int& sample = result[y * layout.stride + x * layout.channels + c];
                if (d > 0) {
                    sample = maximum - sample <= t ? maximum : sample + t;
                } else {
                    sample = sample <= t ? 0 : sample - t;
                }
                if (bytes) sample %= 256;
            }
        }
    }
    return result;
}

// What the stage is called with beside the layout: the format, and the stride argument in bytes.
struct Call {
    std::uint32_t format;
    std::uint32_t stride;
};

template <class Sample>
std::uint32_t apply(CSharpness& stage, const Layout& layout, Call call, Sample* pixels) {
    const auto width = static_cast<std::uint32_t>(layout.width);
    const auto height = static_cast<std::uint32_t>(layout.height);
    const auto bits = static_cast<std::uint16_t>(layout.bits);
    if constexpr (sizeof(Sample) == 1) {
        return stage.Apply8(width, height, call.stride, call.format, pixels, bits);
    } else {
        return stage.Apply16(width, height, call.stride, call.format, pixels, bits);
    }
}

// The image ends with its last pixel, so that the address sanitizer sees what goes beyond. `maximum`: of the
// samples in it, padding and fourth samples have any value.
template <class Sample>
void compare(const Layout& layout, Call call, Setting setting, int maximum, std::mt19937& random) {
    SCOPED_TRACE(::testing::Message() << layout.width << " x " << layout.height << ", format " << call.format
                                      << ", stride " << call.stride << ", " << layout.bits << " bits, gain "
                                      << setting.gain << ", coring " << setting.coring);
    const std::size_t row = layout.width * layout.channels;
    std::vector<int> image(layout.stride * (layout.height - 1) + row);
    for (std::size_t i = 0; i < image.size(); ++i) {
        const std::size_t column = i % layout.stride;
        const bool seen = column < row && (layout.channels != 4 || column % 4 != 3);
        const unsigned roll = random();
        const int sample = (roll & 15) == 0   ? 0
                           : (roll & 15) == 1 ? maximum
                                              : static_cast<int>((roll >> 4) % (maximum + 1u));
        image[i] = seen ? sample : static_cast<Sample>(roll >> 8);
    }
    const std::vector<int> wanted = plainSharpen(image, layout, setting, sizeof(Sample) == 1);
    std::vector<Sample> samples(image.begin(), image.end());
    CSharpness stage;
    stage.SetMode(1, setting.gain, setting.coring);
    ASSERT_EQ(apply(stage, layout, call, samples.data()), 0u);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_EQ(samples[i], wanted[i])
            << "row " << i / layout.stride << ", sample " << i % layout.stride << ", was " << image[i];
    }
}

inline std::size_t channelsOf(std::uint32_t format) {
    return format == 4 || format == 256 ? 3 : format == 8 || format == 512 ? 4 : 1;
}

}  // namespace tavra::test
