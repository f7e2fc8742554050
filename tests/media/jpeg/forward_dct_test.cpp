// The transform and quantisation against the definition, in double precision.
#include "media/jpeg/forward_dct.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <random>
#include <vector>

#include "media/jpeg/jpeg_reference.h"
#include "media/jpeg/quant_table.h"

namespace tavra::test {
namespace {

using jpeg::Block;
using jpeg::kTileBlocks;

// `count` blocks side by side, in memory that holds nothing else.
struct Samples {
    std::size_t count, step;
    std::vector<std::uint8_t> bytes;

    Samples(std::size_t blocks, std::size_t extra,
            const std::function<int(std::size_t x, std::size_t y)>& value)
        : count(blocks), step(8 * blocks + extra), bytes(7 * step + 8 * blocks) {
        for (std::size_t y = 0; y < 8; ++y) {
            for (std::size_t x = 0; x < 8 * count; ++x)
                bytes[y * step + x] = static_cast<std::uint8_t>(value(x, y));
        }
    }
    ReferenceBlock block(std::size_t b) const {
        return referenceDct([&](std::size_t x, std::size_t y) { return bytes[y * step + 8 * b + x]; });
    }
};

void expectTransformed(const Samples& samples, const JpegSteps& steps) {
    std::vector<Block> blocks(samples.count);
    std::vector<Block*> places;
    for (Block& block : blocks) places.push_back(&block);
    const jpeg::ForwardTable table = jpeg::makeForwardTable(steps);
    jpeg::transformBlocks(samples.bytes.data(), samples.step, table, places);
    for (std::size_t b = 0; b < samples.count; ++b) {
        const ReferenceBlock wanted = samples.block(b);
        for (std::size_t k = 0; k < 64; ++k) {
            const auto [v, u] = referenceZigZag(k);
            ASSERT_TRUE(isQuantized(blocks[b][u * 8 + v], wanted[v][u], steps[k]))
                << "block " << b << ", row " << v << ", column " << u << ": " << blocks[b][u * 8 + v]
                << " for " << wanted[v][u] << " / " << int{steps[k]};
        }
    }
}

JpegSteps stepsOf(unsigned quality, const JpegSteps& steps = CJPEGEncoderQuantTable::kLuminance) {
    CJPEGEncoderQuantTable table;
    table.Load(0, steps);
    table.Scale(quality);
    return table.steps();
}

TEST(ForwardDct, RandomBlocksAreThoseOfTheDefinition) {
    std::mt19937 random(1);
    for (int i = 0; i < 240; ++i) {
        const int middle = static_cast<int>(random() % 256), range = 1 << (i % 9);
        const auto noise = [&](std::size_t, std::size_t) {
            return std::clamp(middle + static_cast<int>(random() % static_cast<unsigned>(range)) - range / 2,
                              0, 255);
        };
        const unsigned quality = i % 3 == 0 ? 100 : random() % 101;
        const Samples samples(kTileBlocks, random() % 5, noise);
        expectTransformed(samples, stepsOf(quality));
    }
}

TEST(ForwardDct, ExtremesAreThoseOfTheDefinition) {
    const JpegSteps finest = stepsOf(100);
    std::mt19937 random(2);
    for (int i = 0; i < 20; ++i) {
        expectTransformed({8, 0, [&](std::size_t, std::size_t) { return random() % 2 == 0 ? 0 : 255; }},
                          finest);
    }
    // Black and white as each basis function has its signs: the largest coefficients there are.
    for (std::size_t v = 0; v < 8; ++v) {
        expectTransformed(
            {8, 0,
             [&](std::size_t x, std::size_t y) {
                 const double pi = std::numbers::pi;
                 const double wave =
                     std::cos((2.0 * static_cast<double>(x % 8) + 1) * static_cast<double>(x / 8) * pi / 16) *
                     std::cos((2.0 * static_cast<double>(y) + 1) * static_cast<double>(v) * pi / 16);
                 return wave < 0 ? 0 : 255;
             }},
            finest);
    }
}

TEST(ForwardDct, FlatBlocksHaveNothingButTheirMean) {
    for (const int value : {0, 1, 127, 128, 129, 255}) {
        const Samples samples(8, 0, [&](std::size_t, std::size_t) { return value; });
        Block blocks[8];
        Block* places[8];
        for (int b = 0; b < 8; ++b) places[b] = &blocks[b];
        jpeg::transformBlocks(samples.bytes.data(), samples.step, jpeg::makeForwardTable(stepsOf(100)),
                              places);
        for (const Block& block : blocks) {
            EXPECT_EQ(block[0], 8 * (value - 128));
            for (std::size_t i = 1; i < 64; ++i) ASSERT_EQ(block[i], 0) << i;
        }
    }
}

TEST(ForwardDct, AnyNumberOfBlocksAndAnyStep) {
    std::mt19937 random(3);
    for (std::size_t count = 1; count <= kTileBlocks; ++count) {
        for (const std::size_t extra : {0u, 1u, 7u, 64u}) {
            const auto noise = [&](std::size_t, std::size_t) { return static_cast<int>(random() % 256); };
            expectTransformed({count, extra, noise}, stepsOf(90, CJPEGEncoderQuantTable::kChrominance));
        }
    }
}

}  // namespace
}  // namespace tavra::test
