// White balance of a mosaic beside a plain reference that builds the tables of the rule entry by entry.
#include <algorithm>
#include <cmath>
#include <random>

#include "stages/wb_fixture.h"

namespace tavra::test {
namespace {

// The table of a gain, entry by entry.
std::vector<unsigned> plainTable(unsigned gain, unsigned bits) {
    const unsigned maximum = (1u << bits) - 1;
    std::vector<unsigned> table(bits <= 8 ? 256 : std::size_t{1} << bits);
    if (gain == 0) return table;
    unsigned n = 0;
    while (n < table.size() && std::uint64_t{n + 1} * gain < std::uint64_t{maximum} << 7) ++n;
    for (unsigned i = 0; i < table.size(); ++i) table[i] = i <= n ? i * gain >> 7 : maximum;
    return table;
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

// The index of the gain for a position: 0 to 3 for R, Gr, Gb, B.
std::size_t plainColour(std::uint16_t colorArray, std::size_t x, std::size_t y) {
    switch (plainCell(colorArray)[2 * (y % 2) + x % 2]) {
        case 'R': return 0;
        case 'g': return 1;
        case 'h': return 2;
        default: return 3;
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

struct Frame {
    std::uint32_t width, height;
    std::uint32_t stride;       // argument, bytes
    std::size_t strideSamples;  // what that means
    std::uint16_t colorArray, bits;
    std::size_t behind;  // samples after the last row
};

template <class Sample>
Frame randomFrame(std::mt19937& random, std::uint16_t bits) {
    Frame frame{};
    const bool wide = random() % 4 == 0;
    frame.width = 1 + random() % (wide ? 300 : 20);
    frame.height = 1 + random() % (wide ? 4 : 12);
    frame.strideSamples = (frame.width * sizeof(Sample) + 3) / 4 * 4 / sizeof(Sample);
    if (random() % 2 == 0) {
        frame.strideSamples = frame.width + random() % 5;
        frame.stride = static_cast<std::uint32_t>(frame.strideSamples * sizeof(Sample));
    }
    frame.colorArray = static_cast<std::uint16_t>(random() % 21);
    frame.bits = bits;
    return frame;
}

// Rows that begin inside the one above.
template <class Sample>
Frame overlappingFrame(std::mt19937& random, std::uint16_t bits) {
    Frame frame = randomFrame<Sample>(random, bits);
    frame.width += 1;
    frame.strideSamples = 1 + random() % (frame.width - 1);
    frame.stride = static_cast<std::uint32_t>(frame.strideSamples * sizeof(Sample));
    frame.behind = 32;
    return frame;
}

template <class Sample>
std::vector<Sample> randomSamples(std::mt19937& random, const Frame& frame) {
    std::vector<Sample> samples(frame.strideSamples * (frame.height - 1) + frame.width + frame.behind);
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

// Row by row, as rows may overlap. Of an entry deeper than a byte a byte takes the lower eight bits.
template <class Sample>
std::vector<Sample> plainApply(const Frame& frame, const Gains& gains, std::vector<Sample> samples) {
    std::vector<std::vector<unsigned>> tables;
    for (const std::uint16_t gain : gains) tables.push_back(plainTable(gain, frame.bits));
    for (std::size_t y = 0; y < frame.height; ++y) {
        for (std::size_t x = 0; x < frame.width; ++x) {
            Sample& sample = samples[y * frame.strideSamples + x];
            sample = static_cast<Sample>(tables[plainColour(frame.colorArray, x, y)].at(sample));
        }
    }
    return samples;
}

template <class Sample>
void compareRandom(std::mt19937& random, const Frame& frame, std::vector<Sample> samples) {
    const Gains gains = randomGains(random);
    SCOPED_TRACE(::testing::Message() << frame.width << " x " << frame.height << ", stride " << frame.stride
                                      << ", array " << frame.colorArray << ", bits " << frame.bits
                                      << ", gains " << ::testing::PrintToString(gains));
    const std::vector<Sample> wanted = plainApply(frame, gains, samples);
    CWB stage;
    stage.SetMode(1);
    stage.SetGains(gains.data());
    ASSERT_EQ(
        apply(stage, frame.width, frame.height, frame.stride, frame.colorArray, samples.data(), frame.bits),
        0u);
    ASSERT_EQ(samples, wanted);
}

TEST(WhiteBalanceRule, FixedGainsEqualTheTablesOfTheRuleInBytes) {
    std::mt19937 random(3);
    for (int i = 0; i < 1500; ++i) {
        const auto bits = static_cast<std::uint16_t>(i % 2 == 0 ? random() % 13 : 8);
        const Frame frame = randomFrame<std::uint8_t>(random, bits);
        auto samples = randomSamples<std::uint8_t>(random, frame);
        if (i % 4 == 0) {  // levels above the depth, too
            for (std::uint8_t& sample : samples) sample = static_cast<std::uint8_t>(random());
        }
        compareRandom(random, frame, samples);
        if (HasFatalFailure()) return;
    }
}

TEST(WhiteBalanceRule, FixedGainsEqualTheTablesOfTheRuleInWords) {
    std::mt19937 random(5);
    for (int i = 0; i < 1000; ++i) {
        const auto bits = static_cast<std::uint16_t>(i % 4 == 0 ? random() % 9 : 9 + random() % 4);
        const Frame frame = randomFrame<std::uint16_t>(random, bits);
        compareRandom(random, frame, randomSamples<std::uint16_t>(random, frame));
        if (HasFatalFailure()) return;
    }
}

TEST(WhiteBalanceRule, RowsThatOverlapAreWorkedOnFromTheTop) {
    std::mt19937 random(6);
    for (int i = 0; i < 200; ++i) {
        const auto bits = static_cast<std::uint16_t>(8 + random() % 5);
        const Frame bytes = overlappingFrame<std::uint8_t>(random, bits);
        compareRandom(random, bytes, randomSamples<std::uint8_t>(random, bytes));
        const Frame words = overlappingFrame<std::uint16_t>(random, bits);
        compareRandom(random, words, randomSamples<std::uint16_t>(random, words));
        if (HasFatalFailure()) return;
    }
}

TEST(WhiteBalanceRule, EveryByteAndGainEqualsTheTable) {
    CWB stage;
    stage.SetMode(1);
    for (unsigned gain = 0; gain < 65536; gain += gain < 700 ? 1 : 997) {
        const Gains gains(4, static_cast<std::uint16_t>(gain));
        stage.SetGains(gains.data());
        std::vector<std::uint8_t> samples(256);
        for (std::size_t i = 0; i < 256; ++i) samples[i] = static_cast<std::uint8_t>(i);
        ASSERT_EQ(stage.Apply8(256, 1, 0, 2, samples.data(), 8), 0u);
        const std::vector<unsigned> wanted = plainTable(gain, 8);
        for (unsigned i = 0; i < 256; ++i) ASSERT_EQ(samples[i], wanted[i]) << gain << ", " << i;
    }
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

TEST(WhiteBalanceRule, AutomaticGainsEqualThePlainRule) {
    std::mt19937 random(7);
    for (int i = 0; i < 100; ++i) {
        compareAutomatic<std::uint8_t>(random, static_cast<std::uint16_t>(i % 2 == 0 ? 8 : 9 + random() % 4));
        compareAutomatic<std::uint16_t>(random, static_cast<std::uint16_t>(9 + i % 4));
        if (HasFatalFailure()) return;
    }
}

}  // namespace
}  // namespace tavra::test
