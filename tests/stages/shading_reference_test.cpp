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
    using Targets = std::array<u16, 4>;

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

    // What targets of 0 become: the level of a square in the middle, of its own position or of all.
    Targets measured(Targets targets, bool ofAll, double maximum) const {
        if (targets[0] != 0 && targets[1] != 0 && targets[2] != 0 && targets[3] != 0) return targets;
        u32 side = width < height ? width : height;
        if (side >= 4) side = side / 4;
        const u32 left = (width - side) / 2, top = (height - side) / 2;
        std::array<double, 5> sums{}, counts{};  // of the positions, and of all
        for (u32 y = top; y < top + side; ++y) {
            for (u32 x = left; x < left + side; ++x) {
                const std::size_t k = x % 2 + 2 * (y % 2);
                sums[k] += mean[std::size_t{y} * width + x];
                counts[k] += 1;
            }
        }
        for (std::size_t k = 0; k < 4; ++k) {
            sums[4] += sums[k];
            counts[4] += counts[k];
        }
        for (std::size_t k = 0; k < 4; ++k) {
            if (!ofAll && targets[k] != 0) continue;
            const std::size_t of = ofAll ? 4 : k;
            const double level = counts[of] == 0 ? 128 : sums[of] / counts[of];
            targets[k] = static_cast<u16>(level < maximum ? level : maximum);
        }
        return targets;
    }

    std::int32_t gain(std::size_t x, std::size_t y, const Targets& targets) const {
        const u32 t = targets[(x & 1) + 2 * (y & 1)];
        const double m = mean[y * width + x];
        return m > 0 && m > t / 16 ? static_cast<std::int32_t>(std::trunc((t << 7) / m)) : 2048;
    }
    std::int32_t offset(std::size_t x, std::size_t y, const Targets& targets) const {
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

// A random map of a frame's size, and frames through it beside the rule. Row by row, as rows may overlap.
template <class Sample>
class RandomCorrection {
  public:
    explicit RandomCorrection(std::mt19937& random) : random_(random) {
        const bool wide = random() % 4 == 0;
        width_ = 1 + random() % (wide ? 200 : 20);
        height_ = 1 + random() % (wide ? 4 : 12);
        mapStride_ = 4 * width_ + random() % 7;
        map_.resize(std::size_t{mapStride_} * height_);
        for (u8& b : map_) b = static_cast<u8>(random());
        const bool usual = random() % 2 == 0;  // else entries far outside what a calibration makes
        for (std::size_t y = 0; usual && y < height_; ++y) {
            for (std::size_t x = 0; x < width_; ++x) {
                const std::int32_t entry = static_cast<std::int32_t>(random() % 2400) - 300;
                std::memcpy(&map_[y * mapStride_ + 4 * x], &entry, 4);
            }
        }
    }

    u32 width() const { return width_; }

    // rowSamples: from row to row; told to the stage as 0 where it is the width, by the toss of a coin.
    void compare(u32 rowSamples) {
        const u32 mode = std::array<u32, 3>{2, 4, 255}[random_() % 3];
        const auto bits = static_cast<u16>(random_() % (sizeof(Sample) == 1 ? 10 : 18));
        const std::size_t behind = rowSamples < width_ ? 32 : 0;  // samples after the last row
        std::vector<Sample> frame(std::size_t{rowSamples} * (height_ - 1) + width_ + behind);
        for (Sample& s : frame) s = static_cast<Sample>(random_());
        const std::int64_t maximum = (1 << std::min<int>(bits, 8 * sizeof(Sample))) - 1;
        auto wanted = frame;
        for (std::size_t y = 0; y < height_; ++y) {
            for (std::size_t x = 0; x < width_; ++x) {
                Sample& sample = wanted[y * rowSamples + x];
                sample = static_cast<Sample>(plainLevel(mode, sample, entryAt(x, y), maximum));
            }
        }
        CShadingCorrection stage;
        ASSERT_EQ(stage.SetMap(width_, height_, mapStride_, map_.data()), 0u);
        stage.SetMode(mode);
        const bool dense = rowSamples == width_ && random_() % 2 == 0;
        const u32 stride = dense ? 0 : rowSamples * static_cast<u32>(sizeof(Sample));
        ASSERT_EQ(apply(stage, width_, height_, stride, frame.data(), bits), 0u);
        ASSERT_EQ(frame, wanted) << "mode " << mode << ", " << width_ << " x " << height_ << ", stride "
                                 << stride << ", bits " << bits;
    }

  private:
    std::int32_t entryAt(std::size_t x, std::size_t y) const {
        std::int32_t entry = 0;
        std::memcpy(&entry, &map_[y * mapStride_ + 4 * x], 4);
        return entry;
    }

    std::mt19937& random_;
    u32 width_, height_, mapStride_;
    std::vector<u8> map_;
};

TYPED_TEST(ShadingOf, CorrectsByAnyMapAtAnySizeAndStride) {
    std::mt19937 random(2);
    for (int round = 0; round < 1200; ++round) {
        RandomCorrection<TypeParam> correction(random);
        correction.compare(correction.width() + random() % 3);
        if (this->HasFatalFailure()) return;
    }
}

TYPED_TEST(ShadingOf, RowsThatOverlapAreWorkedOnFromTheTop) {
    std::mt19937 random(4);
    for (int round = 0; round < 200; ++round) {
        RandomCorrection<TypeParam> correction(random);
        correction.compare(1 + random() % correction.width());
        if (this->HasFatalFailure()) return;
    }
}

// Frames of a calibration, and the map that comes of them.
template <class Sample>
class RandomCalibration {
  public:
    RandomCalibration(std::mt19937& random, u32 width, u32 height, u16 bits)
        : random_(random), bits_(bits), plain_{width, height, {}} {}

    void compare(const Plain::Targets& targets, u16 colorArray) {
        const u32 width = plain_.width, height = plain_.height;
        CShadingCorrection stage;
        stage.SetColorArray(colorArray);
        stage.SetTargets(pack(targets[0], targets[1], targets[2], targets[3]));
        stage.SetMode(random_() % 2 == 0 ? 1 : 3);
        // A stride of the map, so that all frames count.
        const u32 rowSamples = 4 * width / static_cast<u32>(sizeof(Sample));
        for (u32 frames = 1 + random_() % 4; frames > 0; --frames) {
            std::vector<Sample> frame(std::size_t{rowSamples} * height);
            for (Sample& s : frame) s = static_cast<Sample>(random_() % (1u << (random_() % (bits_ + 1))));
            plain_.add(frame, rowSamples);
            ASSERT_EQ(apply(stage, width, height, 4 * width, frame.data(), bits_), 0u);
        }
        const bool gains = random_() % 2 == 0;
        const bool ofAll = colorArray == 1 || (colorArray >= 12 && colorArray <= 15);
        // No sample of a byte is above the maximum of more than 8 bits.
        const auto lastBits = random_() % 2 == 0 ? bits_ : static_cast<u16>(random_() % 17);
        const Plain::Targets met = plain_.measured(targets, ofAll, (1u << lastBits) - 1);
        std::vector<std::int32_t> wanted;
        for (std::size_t y = 0; y < height; ++y) {
            for (std::size_t x = 0; x < width; ++x) {
                wanted.push_back(gains ? plain_.gain(x, y, met) : plain_.offset(x, y, met));
            }
        }
        stage.SetMode(gains ? 2 : 4);
        std::vector<Sample> frame(std::size_t{width} * height);
        ASSERT_EQ(apply(stage, width, height, 0, frame.data(), lastBits), 0u);
        ASSERT_EQ(mapOf(stage), wanted)
            << width << " x " << height << ", array " << colorArray << ", targets "
            << testing::PrintToString(targets) << ", bits " << bits_ << " and " << lastBits;
    }

  private:
    std::mt19937& random_;
    u16 bits_;
    Plain plain_;
};

template <class Sample>
u16 randomBits(std::mt19937& random) {
    return sizeof(Sample) == 1 ? u16{8} : std::array<u16, 4>{8, 10, 12, 16}[random() % 4];
}

TYPED_TEST(ShadingOf, MakesTheMapOfTheMeanAtAnySize) {
    std::mt19937 random(3);
    for (int round = 0; round < 200; ++round) {
        const u16 bits = randomBits<TypeParam>(random);
        Plain::Targets targets{};
        for (u16& t : targets) t = static_cast<u16>(1 + random() % ((1u << bits) - 1));
        RandomCalibration<TypeParam> calibration(random, 1 + random() % 40, 1 + random() % 20, bits);
        calibration.compare(targets, static_cast<u16>(1 + random() % 5));
        if (this->HasFatalFailure()) return;
    }
}

// The square is the whole of the smaller side below 4, and a quarter of it from there on, wherever that puts
// its corner in the mosaic.
TYPED_TEST(ShadingOf, MeasuresTheTargetsThatAre0AtAnySize) {
    std::mt19937 random(5);
    for (int round = 0; round < 600; ++round) {
        const u16 bits = randomBits<TypeParam>(random);
        Plain::Targets targets{};
        for (u16& t : targets) {
            if (random() % 2 == 0) t = static_cast<u16>(random() % (1u << bits));
        }
        u32 width = 1 + round % 5, height = 1 + random() % 40;  // sides of 1, 2, 3, 4 and 5
        if (round % 2 == 0) width = 1 + random() % 40;
        if (round % 3 == 0) std::swap(width, height);
        RandomCalibration<TypeParam> calibration(random, width, height, bits);
        calibration.compare(targets, static_cast<u16>(random() % 21));
        if (this->HasFatalFailure()) return;
    }
}

}  // namespace
}  // namespace tavra::test
