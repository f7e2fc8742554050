#include "control/white_balance_gains.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace tavra::test {
namespace {

using Table = std::array<std::uint8_t, 256>;

// The table of a gain by its rule: products below the full scale of 255 x 128 up to a count of entries, 255
// behind them.
Table tableOf(std::uint32_t gain) {
    Table table{};
    if (gain == 0) return table;
    const std::uint32_t n = std::min(32640 / gain, 256u);
    for (std::uint32_t i = 0; i < 256; ++i) {
        table[i] = static_cast<std::uint8_t>(i < n ? (i * gain) >> 7 : 255);
    }
    return table;
}

Table tableOf(const GainCurve& curve) {
    Table table{};
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = curve(static_cast<std::uint8_t>(i));
    return table;
}

TEST(WhiteBalanceGains, EveryGainIsItsTable) {
    for (std::uint32_t gain = 0; gain <= 0xFFFF; ++gain) {
        const GainCurve curve(static_cast<std::uint16_t>(gain));
        ASSERT_EQ(curve.gain(), gain);
        ASSERT_EQ(tableOf(curve), tableOf(gain)) << gain;
    }
}

TEST(WhiteBalanceGains, KnownTables) {
    for (unsigned i = 0; i < 256; ++i) {
        const auto sample = static_cast<std::uint8_t>(i);
        EXPECT_EQ(GainCurve()(sample), i) << "unity";
        EXPECT_EQ(GainCurve(128)(sample), i);
        EXPECT_EQ(GainCurve(0)(sample), 0);
        EXPECT_EQ(GainCurve(64)(sample), i / 2);
        EXPECT_EQ(GainCurve(0xFFFF)(sample), 255) << "also 0: no entry is below";
    }
    EXPECT_EQ(GainCurve(256)(126), 252);
    EXPECT_EQ(GainCurve(256)(127), 255) << "twice 127 is 254, and yet";
    EXPECT_EQ(GainCurve(256)(255), 255);
    EXPECT_EQ(GainCurve(127)(255), 253);
    EXPECT_EQ(GainCurve(127)(254), 252);
}

// Sizes around the blocks in which rows are mapped, and bytes behind the image that stay.
TEST(WhiteBalanceGains, MosaicsAreMappedByPositionInPairs) {
    std::mt19937 random(7);
    for (int round = 0; round < 400; ++round) {
        const std::uint32_t width = random() % (round % 2 == 0 ? 12 : 300);
        const std::uint32_t height = random() % 6;
        std::array<Table, 4> tables;
        std::array<GainCurve, 4> curves;
        for (std::size_t p = 0; p < 4; ++p) {
            const auto gain = static_cast<std::uint16_t>(random() % (p == 0 ? 0x10000 : 700));
            curves[p] = GainCurve(gain);
            tables[p] = tableOf(gain);
        }
        std::vector<std::uint8_t> image(std::size_t{width} * height + 3);
        for (std::uint8_t& pixel : image) pixel = static_cast<std::uint8_t>(random());
        std::vector<std::uint8_t> wanted = image;
        for (std::uint32_t y = 0; y < height - height % 2; ++y) {
            for (std::uint32_t x = 0; x < width - width % 2; ++x) {
                std::uint8_t& pixel = wanted[std::size_t{y} * width + x];
                pixel = tables[x % 2 + 2 * (y % 2)][pixel];
            }
        }
        applyGains(width, height, curves, image.data());
        ASSERT_EQ(image, wanted) << width << " x " << height;
    }
}

}  // namespace
}  // namespace tavra::test
