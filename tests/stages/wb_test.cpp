// White balance of a mosaic beside a plain reference that builds the tables of the rule entry by entry.
#include "stages/wb.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "platform/last_error.h"
#include "stages/factory.h"

namespace tavra::test {
namespace {

using Gains = std::vector<std::uint16_t>;  // R, Gr, Gb, B

// The table of a gain: its entry for one sample.
unsigned plainScaled(unsigned sample, unsigned gain, unsigned bits) {
    const unsigned maximum = (1u << bits) - 1;
    if (gain == 0) return 0;
    unsigned n = 0;
    while (std::uint64_t{n + 1} * gain < std::uint64_t{maximum} << 7) ++n;
    return sample <= n ? sample * gain >> 7 : maximum;
}

// Which gain stands at each position of the cell, top-left, top-right, bottom-left, bottom-right.
const char* plainCell(std::uint16_t colorArray) {
    switch (colorArray) {
        case 3: return "gRBh";
        case 4: return "hBRg";
        case 5: return "BhgR";
        default: return "RghB";
    }
}

unsigned plainGain(const Gains& gains, std::uint16_t colorArray, std::size_t x, std::size_t y) {
    switch (plainCell(colorArray)[2 * (y % 2) + x % 2]) {
        case 'R': return gains[0];
        case 'g': return gains[1];
        case 'h': return gains[2];
        default: return gains[3];
    }
}

std::uint32_t apply(CWB& stage, std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                    std::uint16_t array, std::uint8_t* pixels, std::uint16_t bits) {
    return stage.Apply8(width, height, stride, array, pixels, bits);
}
std::uint32_t apply(CWB& stage, std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                    std::uint16_t array, std::uint16_t* pixels, std::uint16_t bits) {
    return stage.Apply16(width, height, stride, array, pixels, bits);
}

Gains gainsOf(CWB& stage) {
    Gains gains(4);
    EXPECT_EQ(stage.GetGains(gains.data()), 0u);
    return gains;
}

std::uint8_t modeOf(CWB& stage) {
    std::uint8_t mode = 99;
    EXPECT_EQ(stage.GetMode(&mode), 0u);
    return mode;
}

struct Frame {
    std::uint32_t width, height;
    std::uint32_t stride;       // argument, bytes
    std::size_t strideSamples;  // what that means
    std::uint16_t colorArray, bits;
};

template <class Sample>
Frame randomFrame(std::mt19937& random, std::uint16_t bits) {
    Frame frame{};
    frame.width = 1 + random() % (random() % 8 == 0 ? 300 : 40);
    frame.height = 1 + random() % 6;
    frame.strideSamples = (frame.width * sizeof(Sample) + 3) / 4 * 4 / sizeof(Sample);
    if (random() % 2 == 0) {
        frame.strideSamples = frame.width + random() % 5;
        frame.stride = static_cast<std::uint32_t>(frame.strideSamples * sizeof(Sample));
    }
    frame.colorArray = static_cast<std::uint16_t>(random() % 21);
    frame.bits = bits;
    return frame;
}

template <class Sample>
std::vector<Sample> randomSamples(std::mt19937& random, const Frame& frame) {
    std::vector<Sample> samples(frame.strideSamples * (frame.height - 1) + frame.width);
    for (Sample& sample : samples) {
        sample = static_cast<Sample>(random() & ((1u << frame.bits) - 1));
    }
    return samples;
}

Gains randomGains(std::mt19937& random) {
    Gains gains(4);
    for (std::uint16_t& gain : gains) {
        const unsigned roll = random() % 8;
        gain = static_cast<std::uint16_t>(roll == 0   ? random()
                                          : roll == 1 ? 128
                                          : roll == 2 ? random() % 3
                                                      : random() % 700);
    }
    return gains;
}

template <class Sample>
std::vector<Sample> plainApply(const Frame& frame, const Gains& gains, std::vector<Sample> samples) {
    for (std::size_t y = 0; y < frame.height; ++y) {
        for (std::size_t x = 0; x < frame.width; ++x) {
            Sample& sample = samples[y * frame.strideSamples + x];
            sample = static_cast<Sample>(
                plainScaled(sample, plainGain(gains, frame.colorArray, x, y), frame.bits));
        }
    }
    return samples;
}

template <class Sample>
void compareRandom(std::mt19937& random, std::uint16_t bits) {
    const Frame frame = randomFrame<Sample>(random, bits);
    const Gains gains = randomGains(random);
    SCOPED_TRACE(::testing::Message()
                 << frame.width << " x " << frame.height << ", stride " << frame.stride << ", array "
                 << frame.colorArray << ", bits " << bits << ", gains " << ::testing::PrintToString(gains));
    std::vector<Sample> samples = randomSamples<Sample>(random, frame);
    const std::vector<Sample> wanted = plainApply(frame, gains, samples);
    CWB stage;
    stage.SetMode(1);
    stage.SetGains(gains.data());
    ASSERT_EQ(apply(stage, frame.width, frame.height, frame.stride, frame.colorArray, samples.data(), bits),
              0u);
    ASSERT_EQ(samples, wanted);
}

TEST(WhiteBalance, FixedGainsEqualTheTablesOfTheRuleInBytes) {
    std::mt19937 random(3);
    for (int i = 0; i < 300; ++i) {
        compareRandom<std::uint8_t>(random, i % 3 == 0 ? static_cast<std::uint16_t>(random() % 9) : 8);
        if (HasFatalFailure()) return;
    }
}

TEST(WhiteBalance, FixedGainsEqualTheTablesOfTheRuleInWords) {
    std::mt19937 random(5);
    for (int i = 0; i < 120; ++i) {
        compareRandom<std::uint16_t>(random, static_cast<std::uint16_t>(i % 4 == 0 ? 8 : 9 + random() % 4));
        if (HasFatalFailure()) return;
    }
}

TEST(WhiteBalance, EveryByteAndGainEqualsTheTable) {
    CWB stage;
    stage.SetMode(1);
    for (unsigned gain = 0; gain < 65536; gain += gain < 700 ? 1 : 997) {
        const Gains gains(4, static_cast<std::uint16_t>(gain));
        stage.SetGains(gains.data());
        std::vector<std::uint8_t> samples(256);
        for (std::size_t i = 0; i < 256; ++i) samples[i] = static_cast<std::uint8_t>(i);
        ASSERT_EQ(stage.Apply8(256, 1, 0, 2, samples.data(), 8), 0u);
        for (unsigned i = 0; i < 256; ++i)
            ASSERT_EQ(samples[i], plainScaled(i, gain, 8)) << gain << ", " << i;
    }
}

TEST(WhiteBalance, TheCellFollowsTheColourArray) {
    const Gains gains = {256, 384, 512, 640};  // 2, 3, 4, 5
    CWB stage;
    stage.SetMode(1);
    stage.SetGains(gains.data());
    using Cell = std::vector<std::uint8_t>;
    const auto cell = [&](std::uint16_t array) {
        Cell samples(8, 10);
        EXPECT_EQ(stage.Apply8(2, 2, 0, array, samples.data(), 8), 0u);
        return Cell{samples[0], samples[1], samples[4], samples[5]};
    };
    for (std::uint16_t array : {0, 1, 2, 6, 12, 16, 65535}) EXPECT_EQ(cell(array), (Cell{20, 30, 40, 50}));
    EXPECT_EQ(cell(3), (Cell{30, 20, 50, 40}));
    EXPECT_EQ(cell(4), (Cell{40, 50, 20, 30}));
    EXPECT_EQ(cell(5), (Cell{50, 40, 30, 20}));
}

TEST(WhiteBalance, AllGainsAtUnityLeaveEvenWhatLiesAboveTheDepth) {
    CWB stage;
    stage.SetMode(1);
    const Gains unity(4, 128);
    stage.SetGains(unity.data());
    std::vector<std::uint16_t> samples = {0, 1, 1023, 1024, 65535, 7};
    const std::vector<std::uint16_t> before = samples;
    EXPECT_EQ(stage.Apply16(3, 2, 6, 2, samples.data(), 10), 0u);
    EXPECT_EQ(samples, before);
}

TEST(WhiteBalance, ModeZeroChangesNothing) {
    CWB stage;
    EXPECT_EQ(modeOf(stage), 0);
    const Gains gains = {256, 256, 256, 256};
    stage.SetGains(gains.data());
    std::uint8_t samples[4] = {1, 2, 3, 4};
    EXPECT_EQ(stage.Apply8(4, 1, 0, 0, samples, 8), 0u);
    EXPECT_EQ(samples[3], 4);
}

TEST(WhiteBalance, ModesThatAreNotToldActAsFixedGains) {
    CWB stage;
    const Gains gains = {256, 256, 256, 256};
    stage.SetGains(gains.data());
    EXPECT_EQ(stage.SetMode(200), 0u);
    EXPECT_EQ(modeOf(stage), 200);
    std::uint8_t sample = 4;
    EXPECT_EQ(stage.Apply8(1, 1, 0, 2, &sample, 8), 0u);
    EXPECT_EQ(sample, 8);
}

TEST(WhiteBalance, MoreThanTwelveBitsAreABadArgumentInEveryMode) {
    CWB stage;
    std::uint16_t words[4] = {1, 2, 3, 4};
    std::uint8_t bytes[4] = {1, 2, 3, 4};
    for (std::uint8_t mode : {0, 1, 2, 3}) {
        stage.SetMode(mode);
        for (std::uint16_t bits : {13, 16, 65535}) {
            EXPECT_EQ(stage.Apply16(2, 2, 4, 2, words, bits), 87u);
            EXPECT_EQ(stage.Apply8(2, 2, 2, 2, bytes, bits), 87u);
        }
        EXPECT_EQ(modeOf(stage), mode);
    }
    EXPECT_EQ(words[2], 3);
    EXPECT_EQ(bytes[2], 3);
}

TEST(WhiteBalance, AFrameWithoutSamplesIsLeftAlone) {
    CWB stage;
    const Gains gains = {256, 256, 256, 256};
    stage.SetGains(gains.data());
    for (std::uint8_t mode : {1, 2}) {
        stage.SetMode(mode);
        EXPECT_EQ(stage.Apply8(0, 5, 0, 2, nullptr, 8), 0u);
        EXPECT_EQ(stage.Apply8(5, 0, 0, 2, nullptr, 8), 0u);
    }
}

TEST(WhiteBalance, TheFactoryMakesIt) {
    auto* const stage = static_cast<IWB*>(CreateStageObject(96));
    ASSERT_NE(stage, nullptr);
    const Gains gains(4, 256);
    stage->SetGains(gains.data());
    stage->SetMode(1);
    std::uint8_t sample = 4;
    EXPECT_EQ(stage->Apply8(1, 1, 0, 2, &sample, 8), 0u);
    EXPECT_EQ(sample, 8);
    EXPECT_EQ(stage->AddRef(), 2u);
    EXPECT_EQ(stage->Release(), 1u);
    EXPECT_EQ(stage->Release(), 0u);
}

TEST(WhiteBalance, GainsMayBeAskedForWithoutAPlaceForThem) {
    CWB stage;
    const Gains gains = {1, 2, 3, 65535};
    EXPECT_EQ(stage.SetGains(gains.data()), 0u);
    EXPECT_EQ(stage.GetGains(nullptr), 0u);
    EXPECT_EQ(gainsOf(stage), gains);
}

// A frame with one level for each position of the cell.
std::vector<std::uint8_t> flatCells(std::uint32_t width, std::uint32_t height,
                                    const std::vector<std::uint8_t>& cell) {
    std::vector<std::uint8_t> samples(std::size_t{width} * height);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = cell[2 * (i / width % 2) + i % width % 2];
    }
    return samples;
}

// Target (100 + 100) / 2; R = 100 / 40 x 128 = 320; B = 100 / 160 x 128 = 80; none of them clips.
TEST(WhiteBalance, OnceFindsTheGainsOfRedAndBlueAndGoesOnWithThem) {
    CWB stage;
    const Gains gains = {128, 130, 140, 128};
    stage.SetGains(gains.data());
    stage.SetMode(3);
    std::vector<std::uint8_t> frame = flatCells(8, 6, {40, 100, 100, 160});
    EXPECT_EQ(stage.Apply8(8, 6, 0, 2, frame.data(), 8), 0u);
    EXPECT_EQ(modeOf(stage), 1);
    EXPECT_EQ(gainsOf(stage), (Gains{320, 130, 140, 80}));
    EXPECT_EQ(frame, flatCells(8, 6, {100, 101, 109, 100}));
    frame = flatCells(8, 6, {10, 100, 100, 10});
    EXPECT_EQ(stage.Apply8(8, 6, 0, 2, frame.data(), 8), 0u);
    EXPECT_EQ(gainsOf(stage), (Gains{320, 130, 140, 80})) << "found once";
    EXPECT_EQ(frame, flatCells(8, 6, {25, 101, 109, 6}));
}

TEST(WhiteBalance, ContinuousFindsThemFromEveryFrame) {
    CWB stage;
    stage.SetMode(2);
    for (std::uint8_t red : {50, 100, 40}) {
        std::vector<std::uint8_t> frame = flatCells(4, 4, {red, 100, 100, 100});
        EXPECT_EQ(stage.Apply8(4, 4, 0, 2, frame.data(), 8), 0u);
        EXPECT_EQ(frame, flatCells(4, 4, {100, 100, 100, 100}));
        EXPECT_EQ(modeOf(stage), 2);
    }
}

TEST(WhiteBalance, FindsRedAndBlueInEveryArray) {
    const struct {
        std::uint16_t array;
        std::vector<std::uint8_t> cell;
    } cases[] = {{1, {50, 100, 100, 200}},
                 {2, {50, 100, 100, 200}},
                 {3, {100, 50, 200, 100}},
                 {4, {100, 200, 50, 100}},
                 {5, {200, 100, 100, 50}}};
    for (const auto& c : cases) {
        CWB stage;
        stage.SetMode(3);
        std::vector<std::uint8_t> frame = flatCells(4, 4, c.cell);
        EXPECT_EQ(stage.Apply8(4, 4, 0, c.array, frame.data(), 8), 0u);
        EXPECT_EQ(gainsOf(stage), (Gains{256, 128, 128, 64})) << c.array;
    }
}

TEST(WhiteBalance, AutomaticGainsRefuseOtherArrays) {
    CWB stage;
    const Gains gains = {256, 256, 256, 256};
    stage.SetGains(gains.data());
    std::vector<std::uint8_t> frame = flatCells(4, 4, {50, 100, 100, 200});
    const auto before = frame;
    for (std::uint8_t mode : {2, 3}) {
        stage.SetMode(mode);
        platform::setLastSystemError(0);
        EXPECT_EQ(stage.Apply8(4, 4, 0, 0, frame.data(), 8), 87u);
        EXPECT_EQ(platform::lastSystemError(), 87u);
        for (std::uint16_t array : {6, 12, 16, 65535}) {
            EXPECT_EQ(stage.Apply8(4, 4, 0, array, frame.data(), 8), 87u) << array;
        }
        EXPECT_EQ(modeOf(stage), mode);
    }
    EXPECT_EQ(frame, before);
    EXPECT_EQ(gainsOf(stage), gains);
}

TEST(WhiteBalance, ABlackColourIsRaisedToTheLimit) {
    CWB stage;
    stage.SetMode(3);
    std::vector<std::uint8_t> frame = flatCells(4, 4, {0, 100, 100, 100});
    EXPECT_EQ(stage.Apply8(4, 4, 0, 2, frame.data(), 8), 0u);
    EXPECT_EQ(gainsOf(stage), (Gains{640, 128, 128, 128}));
    EXPECT_EQ(frame, flatCells(4, 4, {0, 100, 100, 100}));
}

TEST(WhiteBalance, WithoutGreenTheColoursGoOut) {
    CWB stage;
    stage.SetMode(3);
    std::vector<std::uint8_t> frame = flatCells(4, 4, {50, 0, 0, 0});
    EXPECT_EQ(stage.Apply8(4, 4, 0, 2, frame.data(), 8), 0u);
    EXPECT_EQ(gainsOf(stage), (Gains{0, 128, 128, 128})) << "a black B meets a black target at once";
    EXPECT_EQ(frame, flatCells(4, 4, {0, 0, 0, 0}));
}

// The search goes on from there only below 640.
TEST(WhiteBalance, AStartAboveTheLimitStands) {
    CWB stage;
    stage.SetMode(3);
    std::vector<std::uint8_t> frame = flatCells(4, 4, {1, 100, 100, 10});
    EXPECT_EQ(stage.Apply8(4, 4, 0, 2, frame.data(), 8), 0u);
    EXPECT_EQ(gainsOf(stage), (Gains{12800, 128, 128, 1280}));
}

TEST(WhiteBalance, TheLargestGainIsAWord) {
    CWB stage;
    stage.SetMode(3);
    std::vector<std::uint16_t> frame(std::size_t{64} * 64, 4095);
    for (std::size_t y = 0; y < 64; y += 2) {
        for (std::size_t x = 0; x < 64; x += 2) frame[y * 64 + x] = 0;
    }
    frame[0] = 2;  // a mean of 2 / 1024: 4095 / that x 128 is beyond
    EXPECT_EQ(stage.Apply16(64, 64, 0, 2, frame.data(), 12), 0u);
    EXPECT_EQ(gainsOf(stage)[0], 65535);
}

// The automatic step for one colour, from its samples.
unsigned plainAutoGain(const std::vector<unsigned>& samples, double target, unsigned bits) {
    double sum = 0;
    for (unsigned s : samples) sum += s;
    const double n = static_cast<double>(samples.size());
    const double mean = samples.empty() ? 0 : sum / n;
    double start = 128;
    if (!samples.empty() && !(1 / n > mean)) start = std::min(std::floor(target / mean * 128), 65535.0);
    unsigned gain = static_cast<unsigned>(start);
    for (; gain < 640; ++gain) {
        const unsigned top = (1u << bits) - 1;
        double after = 0;
        if (gain != 0) {
            const unsigned u = (top << 7) / gain;
            double clipped = 0;
            for (unsigned s : samples) clipped += top > u ? std::min(s, u) : s;
            if (!samples.empty()) after = gain * (clipped / n) * (1.0 / 128);
        }
        if (after >= target) break;
    }
    return gain;
}

template <class Sample>
void compareAutomatic(std::mt19937& random, std::uint16_t bits) {
    Frame frame = randomFrame<Sample>(random, bits);
    frame.colorArray = static_cast<std::uint16_t>(1 + random() % 5);
    std::vector<Sample> samples = randomSamples<Sample>(random, frame);
    std::vector<unsigned> red, blue;
    double greenMeans[2] = {};
    unsigned greenCounts[2] = {};
    const double darker = 1 + static_cast<double>(random() % 30) / 10;
    for (std::size_t y = 0; y < frame.height; ++y) {
        for (std::size_t x = 0; x < frame.width; ++x) {
            Sample& s = samples[y * frame.strideSamples + x];
            const char site = plainCell(frame.colorArray)[2 * (y % 2) + x % 2];
            // One colour is dark with bright spots: what clips counts.
            if (site == 'R' && random() % 16 != 0) s = static_cast<Sample>(s / darker / 2);
            if (site == 'R') red.push_back(s);
            if (site == 'B') blue.push_back(s);
            if (site == 'g' || site == 'h') {
                greenMeans[site - 'g'] += s;
                ++greenCounts[site - 'g'];
            }
        }
    }
    for (int i = 0; i < 2; ++i) {
        if (greenCounts[i] != 0) greenMeans[i] /= greenCounts[i];
    }
    const double target = (greenMeans[0] + greenMeans[1]) / 2;
    Gains gains = {200, 140, 120, 99};
    CWB stage;
    stage.SetGains(gains.data());
    stage.SetMode(2);
    gains[0] = static_cast<std::uint16_t>(plainAutoGain(red, target, bits));
    gains[3] = static_cast<std::uint16_t>(plainAutoGain(blue, target, bits));
    SCOPED_TRACE(::testing::Message() << frame.width << " x " << frame.height << ", array "
                                      << frame.colorArray << ", bits " << bits);
    const std::vector<Sample> wanted = plainApply(frame, gains, samples);
    ASSERT_EQ(apply(stage, frame.width, frame.height, frame.stride, frame.colorArray, samples.data(), bits),
              0u);
    ASSERT_EQ(gainsOf(stage), gains);
    ASSERT_EQ(samples, wanted);
}

TEST(WhiteBalance, AutomaticGainsEqualThePlainRule) {
    std::mt19937 random(7);
    for (int i = 0; i < 60; ++i) {
        compareAutomatic<std::uint8_t>(random, 8);
        compareAutomatic<std::uint16_t>(random, static_cast<std::uint16_t>(9 + i % 4));
        if (HasFatalFailure()) return;
    }
}

TEST(WhiteBalance, WordsBeyondTwelveBitsAreCountedWithoutHarm) {
    CWB stage;
    stage.SetMode(2);
    std::vector<std::uint16_t> frame(64, 65535);
    EXPECT_EQ(stage.Apply16(8, 8, 0, 2, frame.data(), 12), 0u);
    EXPECT_EQ(gainsOf(stage), (Gains{128, 128, 128, 128}));
}

}  // namespace
}  // namespace tavra::test
