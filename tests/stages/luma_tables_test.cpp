#include "stages/luma_tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

namespace tavra::test {
namespace {

// An entry is the nearest whole number, the upper one of two: 1000 * entry lies in
// (weight * i - 500, weight * i + 500].
void expectNearest(const LumaTable& table, int weight) {
    ASSERT_EQ(table.size(), 4096u);
    for (int i = 0; i < 4096; ++i) {
        const int distance = 1000 * table[i] - weight * i;
        ASSERT_GT(distance, -500) << i;
        ASSERT_LE(distance, 500) << i;
    }
}

TEST(LumaTables, EntriesAreRoundedHalfUp) {
    expectNearest(LumaR, 299);
    expectNearest(LumaG, 587);
    expectNearest(LumaB, 114);
    // Exact halves: 149.5, 293.5 and 28.5.
    EXPECT_EQ(LumaR[500], 150);
    EXPECT_EQ(LumaG[500], 294);
    EXPECT_EQ(LumaB[250], 29);
}

TEST(LumaTables, KnownEntries) {
    EXPECT_EQ(LumaR[0] + LumaG[0] + LumaB[0], 0);
    EXPECT_EQ(LumaR[255], 76);     // 76.245
    EXPECT_EQ(LumaG[255], 150);    // 149.685
    EXPECT_EQ(LumaB[255], 29);     // 29.07
    EXPECT_EQ(LumaR[4095], 1224);  // 1224.405
    EXPECT_EQ(LumaG[4095], 2404);  // 2403.765
    EXPECT_EQ(LumaB[4095], 467);   // 466.83
}

TEST(LumaTables, GreyKeepsItsValueWithinALevel) {
    for (int i = 0; i < 4096; ++i) {
        const auto grey = static_cast<std::uint16_t>(i);
        const int difference = lumaOf(grey, grey, grey) - i;
        ASSERT_LE(std::abs(difference), 1) << i;
    }
}

TEST(LumaTables, OnePixel) {
    EXPECT_EQ(lumaOf(std::uint8_t{10}, std::uint8_t{10}, std::uint8_t{10}), 10);  // 1 + 6 + 3
    EXPECT_EQ(lumaOf(std::uint8_t{255}, std::uint8_t{0}, std::uint8_t{0}), 29);
    EXPECT_EQ(lumaOf(std::uint8_t{0}, std::uint8_t{255}, std::uint8_t{0}), 150);
    EXPECT_EQ(lumaOf(std::uint8_t{0}, std::uint8_t{0}, std::uint8_t{255}), 76);
    EXPECT_EQ(lumaOf(std::uint16_t{100}, std::uint16_t{1000}, std::uint16_t{4000}), 11 + 587 + 1196);
}

TEST(LumaTables, WordsAbove4095CountAs4095) {
    const std::uint16_t last = 4095, above = 4096, largest = 65535;
    EXPECT_EQ(lumaOf(last, last, last), 4095);
    EXPECT_EQ(lumaOf(above, above, above), 4095);
    EXPECT_EQ(lumaOf(largest, largest, largest), 4095);
    EXPECT_EQ(lumaOf(largest, std::uint16_t{0}, std::uint16_t{0}), 467);
    EXPECT_EQ(lumaOf(std::uint16_t{0}, above, std::uint16_t{0}), 2404);
    EXPECT_EQ(lumaOf(std::uint16_t{0}, std::uint16_t{0}, above), 1224);
}

// Planes of every value of each channel, the others at random.
template <class Sample>
void expectPlanesEqualTables() {
    constexpr std::size_t kValues = 65536;
    std::mt19937 random(4);
    for (int channel = 0; channel < 3; ++channel) {
        std::vector<Sample> planes[3];
        for (int plane = 0; plane < 3; ++plane) {
            for (std::size_t i = 0; i < kValues; ++i)
                planes[plane].push_back(static_cast<Sample>(plane == channel ? i : random()));
        }
        std::vector<std::uint16_t> luma(kValues);
        lumaOfPlanes(planes[0].data(), planes[1].data(), planes[2].data(), luma.data(), kValues);
        for (std::size_t i = 0; i < kValues; ++i) {
            const auto entry = [](Sample sample) { return std::min<std::size_t>(sample, 4095); };
            const int wanted =
                LumaB[entry(planes[0][i])] + LumaG[entry(planes[1][i])] + LumaR[entry(planes[2][i])];
            ASSERT_EQ(luma[i], wanted) << i << " in channel " << channel;
        }
    }
}

TEST(LumaTables, PlanesOfBytesHaveTheSumsOfTheTables) {
    expectPlanesEqualTables<std::uint8_t>();
}

TEST(LumaTables, PlanesOfWordsHaveTheSumsOfTheTables) {
    expectPlanesEqualTables<std::uint16_t>();
}

TEST(LumaTables, NothingIsWrittenBehindThePlanes) {
    for (std::size_t count : {0u, 1u, 7u, 16u, 33u}) {
        const std::vector<std::uint8_t> plane(count, 200);
        std::vector<std::uint16_t> luma(count + 1, 999);
        lumaOfPlanes(plane.data(), plane.data(), plane.data(), luma.data(), count);
        for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(luma[i], 200);  // 60 + 117 + 23
        EXPECT_EQ(luma[count], 999);
    }
}

}  // namespace
}  // namespace tavra::test
