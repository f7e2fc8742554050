#include "control/gain_scale.h"

#include <gtest/gtest.h>

#include <limits>

namespace tavra::test {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr std::uint16_t kHigh = 60000;

TEST(GainScale, TheClassIsTheSumOfThreeCapabilityBits) {
    for (unsigned scaleClass = 0; scaleClass < 8; ++scaleClass) {
        CapabilityWords words;
        if ((scaleClass & 1) != 0) words.words[1] = 0x0001;
        words.words[3] = static_cast<std::uint16_t>((scaleClass & 6) | 0xFFF9);
        EXPECT_EQ(GainScale::of(words).scaleClass(), scaleClass);
    }
    EXPECT_EQ(GainScale::of(CapabilityWords()).scaleClass(), 0u) << "the oldest types";
}

TEST(GainScale, DecibelsOfValues) {
    const struct {
        unsigned scaleClass;
        std::uint16_t value;
        double decibels;
    } rows[] = {
        {0, 0, -2.36},       {0, 100, 10.84},      {0, 680, 87.4},     {6, 100, 10.84},   {7, 100, 10.84},
        {1, 0, 11.00864},    {1, 100, 18.04664},   {2, 0, 0.0},        {2, 8, 6.0205999},  // factors 1, 2
        {2, 20, 10.8813609},                                            // 28 x 8 / 64 = 3.5
        {2, 21, 11.9044173},                                            // 9 x 28 / 64 = 3.9375
        {2, 76, 28.9431606},                                            // 64 x 28 / 64 = 28
        {3, 0, 0.0},         {3, 32, 3.5218252},   {3, 64, 6.0205999},  // 1, 1.5, 2
        {3, 96, 9.5424251},  {3, 255, 24.0142790},                      // 3, 15.875
        {3, 256, 0.0},       {4, 100, 10.0},       {5, 100, 3.51},
    };
    for (const auto& row : rows) {
        EXPECT_NEAR(GainScale(row.scaleClass).decibels(row.value), row.decibels, 1e-5)
            << row.scaleClass << ' ' << row.value;
    }
}

TEST(GainScale, ValuesOfDecibels) {
    const struct {
        unsigned scaleClass;
        float decibels;
        std::uint32_t value;
    } rows[] = {
        {0, 0.0F, 17},                                      // 2.36 / 0.132 = 17.88
        {0, 10.9F, 100},                                    // 100.45
        {6, 10.9F, 100}, {7, 10.9F, 100}, {1, 20.0F, 127},  // 18 / 0.07038 - 128 = 127.75
        {1, 11.0F, 0},                                      // -0.1
        {2, 0.0F, 0},                                       // 64 / 8 - 8
        {2, 6.1F, 8},                                       // factor 2.0184: 129 / 8 - 8 = 8.1
        {2, 7.96F, 12},                                     // 2.50035: 160 / 8 - 8
        {2, 8.02F, 17},                                     // 2.51768: 161 / 28 + 12 = 17.75
        {3, 5.9F, 0},    {3, 6.1F, 64},   {3, 12.1F, 128}, {3, 30.0F, 256},  // 31.6 is 16 and more
        {4, 10.0F, 93},                                                      // 12.36 / 0.132 = 93.6
        {5, 3.51F, 10},                                                      // 10 + 0.5
        {5, 0.1F, 0},                                                        // 0.28 + 0.5 = 0.78
    };
    for (const auto& row : rows) {
        EXPECT_EQ(GainScale(row.scaleClass).settingValue(row.decibels, kHigh), row.value)
            << row.scaleClass << ' ' << row.decibels;
    }
}

TEST(GainScale, ValuesStayBetween0AndTheMaximum) {
    for (unsigned scaleClass = 0; scaleClass < 8; ++scaleClass) {
        const GainScale scale(scaleClass);
        EXPECT_EQ(scale.settingValue(-80.0F, kHigh), 0u) << scaleClass;
        EXPECT_EQ(scale.settingValue(-kInfinity, kHigh), 0u) << scaleClass;
        EXPECT_EQ(scale.settingValue(std::numeric_limits<float>::quiet_NaN(), kHigh), 0u) << scaleClass;
        EXPECT_EQ(scale.settingValue(200.0F, 100), 100u) << scaleClass;
        EXPECT_EQ(scale.settingValue(kInfinity, 100), 100u) << scaleClass;
        EXPECT_EQ(scale.settingValue(kInfinity, 65535), 65535u) << scaleClass;
        EXPECT_EQ(scale.settingValue(60.0F, 0), 0u) << scaleClass;
    }
}

}  // namespace
}  // namespace tavra::test
