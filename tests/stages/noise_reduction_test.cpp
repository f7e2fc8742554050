// Noise reduction beside a plain reference that sorts each neighbourhood, and its edges by hand.
#include "stages/noise_reduction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <type_traits>
#include <vector>

#include "platform/last_error.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

static_assert(std::has_virtual_destructor_v<CNoiseReduction>);

constexpr std::uint32_t kMedian = 1;
constexpr std::uint32_t kSubtract = 2;
constexpr std::uint32_t kTakeDark = 0x80000000;

struct Frame {
    std::uint32_t width, height;
    std::vector<std::uint8_t> samples;

    Frame(std::uint32_t w, std::uint32_t h, std::uint8_t value = 0)
        : width(w), height(h), samples(std::size_t{w} * h, value) {}

    std::uint8_t& at(std::size_t x, std::size_t y) { return samples[y * width + x]; }
    std::uint8_t at(std::size_t x, std::size_t y) const { return samples[y * width + x]; }
    friend bool operator==(const Frame&, const Frame&) = default;
};

bool process(CNoiseReduction& stage, std::uint32_t mode, std::uint16_t colorArray, Frame& frame) {
    stage.setMode(mode);
    platform::setLastSystemError(0);
    return stage.Process(frame.width, frame.height, colorArray, frame.samples.data());
}

struct Offset {
    int x, y;
};

std::vector<Offset> plainNeighbours(std::uint16_t colorArray, std::size_t x, std::size_t y) {
    if (colorArray == 1) return {{-1, 0}, {1, 0}, {0, -1}, {0, 1}};
    if ((x + y) % 2 == 1) return {{-1, -1}, {1, -1}, {-1, 1}, {1, 1}};
    return {{-2, 0}, {2, 0}, {0, -2}, {0, 2}};
}

std::vector<int> plainValues(const Frame& frame, const std::vector<Offset>& offsets, std::size_t x,
                             std::size_t y) {
    std::vector<int> values = {frame.at(x, y)};
    for (const Offset& offset : offsets) {
        const auto nx = static_cast<std::int64_t>(x) + offset.x;
        const auto ny = static_cast<std::int64_t>(y) + offset.y;
        if (nx < 0 || ny < 0 || nx >= std::int64_t{frame.width} || ny >= std::int64_t{frame.height}) continue;
        values.push_back(frame.at(static_cast<std::size_t>(nx), static_cast<std::size_t>(ny)));
    }
    std::sort(values.begin(), values.end(), std::greater<>());
    return values;
}

Frame plainMedian(const Frame& frame, std::uint16_t colorArray) {
    Frame result = frame;
    for (std::size_t y = 0; y < frame.height; ++y) {
        for (std::size_t x = 0; x < frame.width; ++x) {
            const auto values = plainValues(frame, plainNeighbours(colorArray, x, y), x, y);
            int m = values[0];
            if (values.size() == 5) m = values[2];
            if (values.size() == 4) m = (values[1] + values[2]) >> 1;
            if (values.size() == 3) m = values[1];
            if (values.size() == 2) m = (values[0] + values[1]) >> 1;
            result.at(x, y) = static_cast<std::uint8_t>(std::min(m, int{frame.at(x, y)}));
        }
    }
    return result;
}

Frame plainDark(const Frame& frame) {
    Frame result = frame;
    for (std::size_t py = 0; py < 2; ++py) {
        for (std::size_t px = 0; px < 2; ++px) {
            int least = 255;
            for (std::size_t y = py; y < frame.height / 2 * 2; y += 2) {
                for (std::size_t x = px; x < frame.width / 2 * 2; x += 2) {
                    least = std::min(least, int{frame.at(x, y)});
                }
            }
            for (std::size_t y = py; y < frame.height / 2 * 2; y += 2) {
                for (std::size_t x = px; x < frame.width / 2 * 2; x += 2) {
                    result.at(x, y) = static_cast<std::uint8_t>(frame.at(x, y) - least);
                }
            }
        }
    }
    return result;
}

Frame plainSubtract(const Frame& frame, const Frame& dark, std::uint16_t colorArray) {
    Frame result = frame;
    for (std::size_t i = 0; i < frame.samples.size(); ++i) {
        result.samples[i] = static_cast<std::uint8_t>(std::max(0, frame.samples[i] - dark.samples[i]));
    }
    if (colorArray > 2) return result;
    const std::int64_t margin = colorArray == 1 ? 1 : 2;
    for (std::int64_t y = margin; y < std::int64_t{frame.height} - margin; ++y) {
        for (std::int64_t x = margin; x < std::int64_t{frame.width} - margin; ++x) {
            const auto ux = static_cast<std::size_t>(x), uy = static_cast<std::size_t>(y);
            if (frame.at(ux, uy) < 253 || result.at(ux, uy) >= 253) continue;
            const std::vector<Offset> diagonals = {{-1, -1}, {1, -1}, {-1, 1}, {1, 1}};
            const auto values =
                plainValues(result, colorArray == 1 ? diagonals : plainNeighbours(2, ux, uy), ux, uy);
            result.at(ux, uy) = static_cast<std::uint8_t>(std::max(int{result.at(ux, uy)}, values[2]));
        }
    }
    return result;
}

// Every kind of frame that the rules look at: noise, many saturated samples, few levels.
Frame randomFrame(std::mt19937& random, std::uint32_t width, std::uint32_t height) {
    Frame frame(width, height);
    const unsigned kind = random() % 4;
    for (std::uint8_t& sample : frame.samples) {
        const unsigned roll = random();
        sample = static_cast<std::uint8_t>(kind == 0                        ? roll
                                           : kind == 1 && (roll & 256) != 0 ? 250 + (roll & 255) % 6
                                           : kind == 2                      ? 252 + (roll & 3)
                                                                            : (roll & 3) * 50);
    }
    return frame;
}

TEST(NoiseReduction, TheMedianLimitEqualsThePlainRule) {
    std::mt19937 random(3);
    CNoiseReduction stage;
    for (std::uint16_t array : {1, 2, 5}) {
        for (std::uint32_t height = 1; height <= 12; ++height) {
            for (std::uint32_t width = 1; width <= 40; ++width) {
                Frame frame = randomFrame(random, width, height);
                const Frame wanted = plainMedian(frame, array);
                ASSERT_TRUE(process(stage, kMedian, array, frame));
                ASSERT_EQ(frame, wanted) << width << " x " << height << ", array " << array;
            }
        }
        for (std::uint32_t width : {31u, 64u, 127u, 128u, 131u, 132u, 133u, 260u, 301u}) {
            Frame frame = randomFrame(random, width, 1 + random() % 9);
            const Frame wanted = plainMedian(frame, array);
            ASSERT_TRUE(process(stage, kMedian, array, frame));
            ASSERT_EQ(frame, wanted) << width << " x " << frame.height << ", array " << array;
        }
    }
}

TEST(NoiseReduction, TheSubtractionEqualsThePlainRule) {
    std::mt19937 random(5);
    CNoiseReduction stage;
    for (int i = 0; i < 1000; ++i) {
        const std::uint32_t width = 1 + random() % (i % 4 == 0 ? 200 : 20), height = 1 + random() % 12;
        const auto array = static_cast<std::uint16_t>(1 + random() % 2);
        Frame dark(width, height);
        for (std::uint8_t& sample : dark.samples) {
            sample = static_cast<std::uint8_t>(random() % 4 == 0 ? 10 + random() % 60 : 10 + random() % 3);
        }
        Frame taken = dark;
        ASSERT_TRUE(process(stage, kTakeDark, array, taken));
        ASSERT_EQ(taken, dark) << "the frame itself stays";
        Frame frame = randomFrame(random, width, height);
        const Frame wanted = plainSubtract(frame, plainDark(dark), array);
        ASSERT_TRUE(process(stage, kSubtract, array, frame));
        ASSERT_EQ(frame, wanted) << width << " x " << height << ", array " << array;
    }
}

TEST(NoiseReduction, ABrightOutlierFallsToItsNeighbourhood) {
    CNoiseReduction stage;
    Frame frame(7, 7, 10);
    frame.at(3, 3) = 200;
    ASSERT_TRUE(process(stage, kMedian, 1, frame));
    EXPECT_EQ(frame, Frame(7, 7, 10));
}

TEST(NoiseReduction, ADarkSampleStays) {
    CNoiseReduction stage;
    Frame frame(7, 7, 100);
    frame.at(3, 3) = 0;
    const Frame before = frame;
    ASSERT_TRUE(process(stage, kMedian, 1, frame));
    EXPECT_EQ(frame, before);
}

TEST(NoiseReduction, ACornerHasThreeValuesAndAnEdgeFour) {
    CNoiseReduction stage;
    Frame frame(4, 4, 0);
    frame.at(0, 0) = 90;
    frame.at(1, 0) = 40;
    frame.at(0, 1) = 20;
    frame.at(2, 0) = 31;
    frame.at(1, 1) = 8;
    ASSERT_TRUE(process(stage, kMedian, 1, frame));
    EXPECT_EQ(frame.at(0, 0), 40) << "of 90, 40, 20";
    EXPECT_EQ(frame.at(1, 0), 35) << "of 90, 40, 31, 8 the mean of 40 and 31, cut off";
}

// With an even width the last column of the first row is green with one neighbour inside.
TEST(NoiseReduction, TwoValuesGiveTheirMean) {
    CNoiseReduction stage;
    Frame frame(6, 6, 0);
    frame.at(5, 0) = 101;
    frame.at(4, 1) = 50;
    ASSERT_TRUE(process(stage, kMedian, 2, frame));
    EXPECT_EQ(frame.at(5, 0), 75);
    Frame column(1, 2);
    column.at(0, 0) = 200;
    column.at(0, 1) = 101;
    ASSERT_TRUE(process(stage, kMedian, 1, column));
    EXPECT_EQ(column.at(0, 0), 150);
    EXPECT_EQ(column.at(0, 1), 101);
}

TEST(NoiseReduction, ASampleWithoutNeighboursStays) {
    CNoiseReduction stage;
    for (std::uint16_t array : {1, 2, 5}) {
        Frame frame(1, 1, 200);
        ASSERT_TRUE(process(stage, kMedian, array, frame));
        EXPECT_EQ(frame.at(0, 0), 200);
    }
}

// A bright sample among five is held by its second neighbour: two bright neighbours let it stay, wherever
// the rule has them, and bright samples anywhere else do not.
void expectNeighbours(std::size_t x, std::size_t y, const std::vector<Offset>& offsets) {
    CNoiseReduction stage;
    for (int dy = -2; dy <= 2; ++dy) {
        for (int dx = -2; dx <= 2; ++dx) {
            if (dx == 0 && dy == 0) continue;
            Frame frame(8, 8, 10);
            frame.at(x, y) = 200;
            frame.at(x + static_cast<std::size_t>(dx), y + static_cast<std::size_t>(dy)) = 150;
            const Offset& other = offsets[offsets[0].x == dx && offsets[0].y == dy ? 1 : 0];
            frame.at(x + static_cast<std::size_t>(other.x), y + static_cast<std::size_t>(other.y)) = 150;
            const bool isNeighbour = std::any_of(offsets.begin(), offsets.end(), [&](const Offset& offset) {
                return offset.x == dx && offset.y == dy;
            });
            ASSERT_TRUE(process(stage, kMedian, 2, frame));
            EXPECT_EQ(frame.at(x, y), isNeighbour ? 150 : 10) << dx << ", " << dy;
        }
    }
}

TEST(NoiseReduction, RedHasItsNeighboursTwoAway) {
    expectNeighbours(2, 2, {{-2, 0}, {2, 0}, {0, -2}, {0, 2}});
}

TEST(NoiseReduction, GreenHasItsNeighboursOnTheDiagonals) {
    expectNeighbours(3, 2, {{-1, -1}, {1, -1}, {-1, 1}, {1, 1}});
}

TEST(NoiseReduction, TheMedianLimitRefusesOtherArrays) {
    CNoiseReduction stage;
    std::mt19937 random(7);
    for (std::uint16_t array : {0, 3, 4, 6, 12, 16, 65535}) {
        Frame frame = randomFrame(random, 9, 9);
        const Frame before = frame;
        EXPECT_FALSE(process(stage, kMedian, array, frame)) << array;
        EXPECT_EQ(platform::lastSystemError(), 87u);
        EXPECT_EQ(frame, before);
    }
}

TEST(NoiseReduction, OffAndUnknownModesDoNothing) {
    CNoiseReduction stage;
    EXPECT_EQ(stage.mode(), 0u);
    std::mt19937 random(9);
    for (std::uint32_t mode : {0u, 3u, 4u, 0x80000001u, 0xFFFFFFFFu}) {
        Frame frame = randomFrame(random, 9, 9);
        const Frame before = frame;
        EXPECT_TRUE(process(stage, mode, 3, frame));
        EXPECT_EQ(frame, before);
    }
}

TEST(NoiseReduction, EmptyFramesAreTaken) {
    CNoiseReduction stage;
    for (const auto& size : {Frame(0, 0), Frame(0, 5), Frame(5, 0)}) {
        Frame frame = size;
        for (std::uint32_t mode : {kMedian, kTakeDark, kSubtract})
            EXPECT_TRUE(process(stage, mode, 1, frame));
    }
}

TEST(NoiseReduction, WithoutADarkFrameOfTheSizeAndArrayNothingIsSubtracted) {
    CNoiseReduction stage;
    Frame frame(8, 6, 100);
    const auto expectRefused = [&](std::uint16_t array, Frame refused) {
        const Frame before = refused;
        EXPECT_FALSE(process(stage, kSubtract, array, refused));
        EXPECT_EQ(platform::lastSystemError(), 87u);
        EXPECT_EQ(refused, before);
    };
    expectRefused(1, frame);
    Frame dark(8, 6, 5);
    ASSERT_TRUE(process(stage, kTakeDark, 1, dark));
    expectRefused(1, Frame(6, 8, 100));
    expectRefused(1, Frame(8, 7, 100));
    expectRefused(1, Frame(7, 6, 100));
    expectRefused(2, frame);
    EXPECT_TRUE(process(stage, kSubtract, 1, frame));
}

TEST(NoiseReduction, EveryFrameInTheTakingModeReplacesTheDarkFrame) {
    CNoiseReduction stage;
    for (std::uint8_t excess : {7, 3}) {
        Frame dark(6, 6, 20);
        dark.at(2, 2) = static_cast<std::uint8_t>(20 + excess);
        ASSERT_TRUE(process(stage, kTakeDark, 1, dark));
        Frame frame(6, 6, 100);
        ASSERT_TRUE(process(stage, kSubtract, 1, frame));
        EXPECT_EQ(frame.at(2, 2), 100 - excess);
        EXPECT_EQ(frame.at(3, 3), 100);
    }
}

// Whole pairs only: the odd last row and column keep their black level, and it is subtracted with the rest.
TEST(NoiseReduction, AnOddLastRowAndColumnKeepTheirBlackLevel) {
    CNoiseReduction stage;
    Frame dark(5, 3, 20);
    ASSERT_TRUE(process(stage, kTakeDark, 1, dark));
    Frame frame(5, 3, 100);
    ASSERT_TRUE(process(stage, kSubtract, 1, frame));
    for (std::size_t y = 0; y < 3; ++y) {
        for (std::size_t x = 0; x < 5; ++x) EXPECT_EQ(frame.at(x, y), x == 4 || y == 2 ? 80 : 100);
    }
}

TEST(NoiseReduction, ASaturatedSampleGoesBackToItsNeighbours) {
    for (std::uint16_t array : {1, 2}) {
        CNoiseReduction stage;
        Frame dark(8, 8, 20);
        dark.at(4, 4) = 25;
        ASSERT_TRUE(process(stage, kTakeDark, array, dark));
        Frame frame(8, 8, 255);
        ASSERT_TRUE(process(stage, kSubtract, array, frame));
        EXPECT_EQ(frame, Frame(8, 8, 255));
        frame = Frame(8, 8, 252);
        ASSERT_TRUE(process(stage, kSubtract, array, frame));
        EXPECT_EQ(frame.at(4, 4), 247) << "not saturated";
    }
}

// Two saturated samples on a diagonal, each with a dark excess of 50 and two more neighbours at 255. The
// first of them counts as raised when the second is looked at.
TEST(NoiseReduction, ARaisedSampleCountsForThoseBehindIt) {
    CNoiseReduction stage;
    Frame dark(8, 8, 0);
    dark.at(3, 3) = dark.at(4, 4) = 50;
    dark.at(3, 5) = 55;  // lower left of (4, 4)
    ASSERT_TRUE(process(stage, kTakeDark, 1, dark));
    Frame frame(8, 8, 255);
    frame.at(3, 5) = 100;
    frame.at(5, 5) = 10;
    ASSERT_TRUE(process(stage, kSubtract, 1, frame));
    EXPECT_EQ(frame.at(3, 3), 255) << "205 among 255, 255, 255, 205: third is 255";
    EXPECT_EQ(frame.at(4, 4), 205) << "205 among 255 (raised), 255, 45, 10: third is 205";
    frame = Frame(8, 8, 255);
    frame.at(5, 5) = 10;
    frame.at(3, 5) = 255;
    dark = Frame(8, 8, 0);
    dark.at(3, 3) = dark.at(4, 4) = 50;
    ASSERT_TRUE(process(stage, kTakeDark, 1, dark));
    ASSERT_TRUE(process(stage, kSubtract, 1, frame));
    EXPECT_EQ(frame.at(4, 4), 255) << "205 among 255 (raised), 255, 255, 10: third is 255";
}

TEST(NoiseReduction, OtherArraysAreSubtractedAndToldAsAFailure) {
    for (std::uint16_t array : {0, 3, 4, 5, 12}) {
        CNoiseReduction stage;
        Frame dark(8, 8, 0);
        dark.at(4, 4) = 5;
        ASSERT_TRUE(process(stage, kTakeDark, array, dark));
        Frame frame(8, 8, 255);
        EXPECT_FALSE(process(stage, kSubtract, array, frame)) << array;
        EXPECT_EQ(platform::lastSystemError(), 87u);
        Frame wanted(8, 8, 255);
        wanted.at(4, 4) = 250;
        EXPECT_EQ(frame, wanted) << "saturated samples stay low";
    }
}

TEST(NoiseReduction, WithoutMemoryTheFrameStays) {
    CNoiseReduction stage;
    std::mt19937 random(11);
    Frame frame = randomFrame(random, 16, 16);
    const Frame before = frame;
    {
        const FailAllocationsFrom theCopy(16 * 16);
        EXPECT_FALSE(process(stage, kMedian, 1, frame));
    }
    EXPECT_EQ(platform::lastSystemError(), 8u);
    EXPECT_EQ(frame, before);
    Frame dark(16, 16, 3);
    ASSERT_TRUE(process(stage, kTakeDark, 1, dark));
    {
        const FailAllocationsFrom theCopy(16 * 16);
        EXPECT_FALSE(process(stage, kSubtract, 1, frame));
    }
    EXPECT_EQ(platform::lastSystemError(), 8u);
    EXPECT_EQ(frame, before);
    EXPECT_TRUE(process(stage, kSubtract, 1, frame)) << "the next frame finds the dark frame still there";
}

TEST(NoiseReduction, ADarkFrameIsLostByAnAttemptToReplaceItWithoutMemory) {
    CNoiseReduction stage;
    Frame dark(16, 16, 3);
    ASSERT_TRUE(process(stage, kTakeDark, 1, dark));
    {
        const FailAllocationsFrom all(16 * 16);
        EXPECT_FALSE(process(stage, kTakeDark, 1, dark));
    }
    EXPECT_EQ(platform::lastSystemError(), 8u);
    EXPECT_FALSE(process(stage, kSubtract, 1, dark));
    EXPECT_EQ(platform::lastSystemError(), 87u);
}

TEST(NoiseReduction, FramesOfOneSizeAllocateOnce) {
    CNoiseReduction stage;
    Frame frame(16, 16, 3);
    ASSERT_TRUE(process(stage, kMedian, 1, frame));
    const FailAllocationsFrom all(0);
    EXPECT_TRUE(process(stage, kMedian, 2, frame));
    EXPECT_EQ(FailAllocationsFrom::failures(), 0u);
}

TEST(NoiseReduction, AFrameTooLargeForAnyBufferIsOutOfMemory) {
    CNoiseReduction stage;
    std::uint8_t sample = 9;
    for (std::uint32_t mode : {kMedian, kTakeDark}) {
        stage.setMode(mode);
        platform::setLastSystemError(0);
        EXPECT_FALSE(stage.Process(0xFFFFFFFF, 0xFFFFFFFF, 1, &sample));
        EXPECT_EQ(platform::lastSystemError(), 8u);
    }
    EXPECT_EQ(sample, 9);
}

}  // namespace
}  // namespace tavra::test
