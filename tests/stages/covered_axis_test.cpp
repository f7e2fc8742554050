#include "stages/multi_roi_image/axis.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace tavra::test {
namespace {

TEST(CoveredAxisOfRegions, AgreesWithASetOfPlaces) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        CoveredAxis axis;
        std::set<std::uint64_t> places;
        const std::uint32_t count = 1 + random() % 32;
        const std::uint32_t span = 1 + random() % 200;
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint64_t start = random() % span, length = random() % 12;
            axis.add(start, length);
            for (std::uint64_t at = start; at < start + length; ++at) places.insert(at);
        }
        ASSERT_EQ(axis.total(), places.size());
        for (std::uint64_t at = 0; at < span + 20; ++at) {
            const auto found = places.find(at);
            const std::uint64_t expected =
                found == places.end() ? at : static_cast<std::uint64_t>(std::distance(places.begin(), found));
            ASSERT_EQ(axis.compressed(at), expected) << "place " << at << ", round " << round;
        }
        axis.clear();
        ASSERT_EQ(axis.total(), 0u);
        ASSERT_EQ(axis.compressed(3), 3u);
    }
}

TEST(CoveredAxisOfRegions, OneThatReachesOverManyFillsTheGaps) {
    CoveredAxis axis;
    for (std::uint64_t start : {10, 30, 50}) axis.add(start, 10);
    axis.add(0, 100);
    EXPECT_EQ(axis.total(), 100u);
    EXPECT_EQ(axis.compressed(99), 99u);
}

TEST(CoveredAxisOfRegions, TheMostIntervalsThatThereCanBeFit) {
    CoveredAxis axis;
    for (std::uint64_t i = 0; i < 31; ++i) axis.add(4 * i + 2, 2);
    axis.add(0, 126);  // 31 intervals, and the 31 gaps before them
    EXPECT_EQ(axis.total(), 126u);
    EXPECT_EQ(axis.compressed(125), 125u);
}

}  // namespace
}  // namespace tavra::test
