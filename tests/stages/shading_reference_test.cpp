// Shading correction beside the rules, pixel by pixel, at any size.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <random>

#include "stages/shading_fixture.h"

namespace tavra::test {
namespace {

// The rules once more, pixel by pixel.
struct Plain {
    u32 width, height;
    std::vector<double> mean;
    u32 frames = 0;

    template <class Sample>
    void add(const std::vector<Sample>& frame, std::size_t rowSamples) {
        mean.resize(std::size_t{width} * height);
        for (std::size_t y = 0; y < height; ++y) {
            for (std::size_t x = 0; x < width; ++x) {
                double& m = mean[y * width + x];
                m = (double(frames) * m + frame[y * rowSamples + x]) / double(frames + 1);
            }
        }
        ++frames;
    }

    std::int32_t gain(std::size_t x, std::size_t y, const u16 (&targets)[4]) const {
        const u32 t = targets[(x & 1) + 2 * (y & 1)];
        const double m = mean[y * width + x];
        return m > 0 && m > t / 16 ? static_cast<std::int32_t>(std::trunc((t << 7) / m)) : 2048;
    }
    std::int32_t offset(std::size_t x, std::size_t y, const u16 (&targets)[4]) const {
        return targets[(x & 1) + 2 * (y & 1)] - static_cast<std::int32_t>(std::trunc(mean[y * width + x]));
    }
};

std::int64_t plainLevel(u32 mode, std::int64_t sample, std::int32_t entry, std::int64_t maximum) {
    const auto unsignedEntry = static_cast<std::int64_t>(static_cast<u32>(entry));
    switch (mode) {
        case 2: return std::min(sample * unsignedEntry >> 7, maximum);
        case 4: {
            const std::int64_t sum = sample + entry;
            return sum <= 0 ? 0 : sum >= maximum ? maximum : sum;
        }
        default: return unsignedEntry >= maximum ? maximum : unsignedEntry;
    }
}

template <class Sample>
class ShadingOf : public testing::Test {};
using Samples = testing::Types<u8, u16>;
TYPED_TEST_SUITE(ShadingOf, Samples);

TYPED_TEST(ShadingOf, CorrectsByAnyMapAtAnySizeAndStride) {
    std::mt19937 random(2);
    for (int round = 0; round < 60; ++round) {
        const u32 width = 1 + random() % 70, height = 1 + random() % 9;
        const u32 padding = random() % 3;
        const u32 mapStride = 4 * width + random() % 7;
        const auto bits = static_cast<u16>(random() % (sizeof(TypeParam) == 1 ? 10 : 18));
        const u32 mode = std::array<u32, 3>{2, 4, 255}[random() % 3];
        std::vector<u8> map(std::size_t{mapStride} * height);
        for (u8& b : map) b = static_cast<u8>(random());
        const bool usual = random() % 2 == 0;  // else entries far outside what a calibration makes
        const auto entryAt = [&](std::size_t x, std::size_t y) {
            std::int32_t entry = 0;
            std::memcpy(&entry, &map[y * mapStride + 4 * x], 4);
            return entry;
        };
        for (std::size_t y = 0; usual && y < height; ++y) {
            for (std::size_t x = 0; x < width; ++x) {
                const std::int32_t entry = static_cast<std::int32_t>(random() % 2400) - 300;
                std::memcpy(&map[y * mapStride + 4 * x], &entry, 4);
            }
        }
        const u32 rowSamples = width + padding;
        std::vector<TypeParam> frame(std::size_t{rowSamples} * height);
        for (TypeParam& s : frame) s = static_cast<TypeParam>(random());
        const std::int64_t maximum = (1 << std::min<int>(bits, 8 * sizeof(TypeParam))) - 1;
        auto wanted = frame;
        for (std::size_t y = 0; y < height; ++y) {
            for (std::size_t x = 0; x < width; ++x) {
                TypeParam& sample = wanted[y * rowSamples + x];
                sample = static_cast<TypeParam>(plainLevel(mode, sample, entryAt(x, y), maximum));
            }
        }
        CShadingCorrection stage;
        ASSERT_EQ(stage.SetMap(width, height, mapStride, map.data()), 0u);
        stage.SetMode(mode);
        const u32 stride = padding != 0 ? rowSamples * static_cast<u32>(sizeof(TypeParam)) : 0;
        ASSERT_EQ(apply(stage, width, height, stride, frame.data(), bits), 0u);
        ASSERT_EQ(frame, wanted) << "mode " << mode << ", " << width << " x " << height << ", bits " << bits;
    }
}

TYPED_TEST(ShadingOf, MakesTheMapOfTheMeanAtAnySize) {
    std::mt19937 random(3);
    for (int round = 0; round < 40; ++round) {
        const u32 width = 1 + random() % 40, height = 1 + random() % 20;
        const u32 rowSamples = 4 * width / static_cast<u32>(sizeof(TypeParam));
        const u16 bits = sizeof(TypeParam) == 1 ? 8 : 12;
        Plain plain{width, height, {}};
        CShadingCorrection stage;
        stage.SetColorArray(static_cast<u16>(1 + random() % 5));
        u16 targets[4];
        for (u16& t : targets) t = static_cast<u16>(1 + random() % (1u << bits));
        stage.SetTargets(pack(targets[0], targets[1], targets[2], targets[3]));
        stage.SetMode(1);
        for (u32 frames = 1 + random() % 4; frames > 0; --frames) {
            std::vector<TypeParam> frame(std::size_t{rowSamples} * height);
            for (TypeParam& s : frame) s = static_cast<TypeParam>(random() % (1u << (random() % (bits + 1))));
            plain.add(frame, rowSamples);
            ASSERT_EQ(apply(stage, width, height, 4 * width, frame.data(), bits), 0u);
        }
        const bool gains = random() % 2 == 0;
        std::vector<std::int32_t> wanted;
        for (std::size_t y = 0; y < height; ++y) {
            for (std::size_t x = 0; x < width; ++x) {
                wanted.push_back(gains ? plain.gain(x, y, targets) : plain.offset(x, y, targets));
            }
        }
        stage.SetMode(gains ? 2 : 4);
        std::vector<TypeParam> frame(std::size_t{width} * height);
        ASSERT_EQ(apply(stage, width, height, 0, frame.data(), bits), 0u);
        ASSERT_EQ(mapOf(stage), wanted) << width << " x " << height;
    }
}

}  // namespace
}  // namespace tavra::test
