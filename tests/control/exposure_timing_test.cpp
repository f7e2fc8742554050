#include "control/exposure_timing.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <utility>

namespace tavra::test {
namespace {

constexpr std::uint32_t kLong = 0xFFFFFFFF;

// 50 MHz, lines of 1000 clocks (20 us).
ExposureTiming camera(TimingClass timing) {
    ExposureTiming camera;
    camera.timing = timing;
    camera.clockHz = 50e6;
    camera.clocksPerLine = 1000;
    camera.baseHz = 100e6;
    camera.minimumClocks = 1426;
    camera.imageWidth = 640;
    return camera;
}

TEST(ExposureTiming, ClassesByProductType) {
    const std::pair<TimingClass, std::set<std::uint16_t>> classes[] = {
        {TimingClass::SensorTicks, {273, 529}},
        {TimingClass::Lines, {274, 276, 277, 530, 533, 2069, 2326, 3448, 4118, 16385, 16386, 16387, 16388}},
        {TimingClass::DelayedLines,
         {1811, 2067, 4374, 4630, 4886, 5142, 9494, 9750, 10006, 10262, 789, 1045, 1301, 1557}},
        {TimingClass::SlowBase, {278, 534, 790, 1046}},
        {TimingClass::Base,
         {1302, 1558, 1814, 2070, 5398, 5654, 5910, 6166, 6422, 8214, 8470, 8726, 8982, 9238}},
        {TimingClass::Microseconds, {275, 531, 787, 1043, 1299, 1555}},
    };
    for (unsigned type = 0; type <= 0xFFFF; ++type) {
        TimingClass expected = TimingClass::Clocks;
        for (const auto& [timing, types] : classes) {
            if (types.contains(static_cast<std::uint16_t>(type))) expected = timing;
        }
        EXPECT_EQ(timingClass(static_cast<std::uint16_t>(type), 0), expected) << type;
    }
}

TEST(ExposureTiming, VariantsOfFourTypesCountTheBaseClock) {
    for (const std::uint16_t type : {789, 1045, 1301, 1557}) {
        for (unsigned samePid = 0; samePid < 300; ++samePid) {
            const bool base = samePid == 4 || samePid == 5 || samePid == 128;
            EXPECT_EQ(timingClass(type, static_cast<std::uint16_t>(samePid)),
                      base ? TimingClass::Base : TimingClass::DelayedLines);
        }
    }
    EXPECT_EQ(timingClass(1811, 4), TimingClass::DelayedLines) << "only of these";
}

TEST(ExposureTiming, Lines) {
    const ExposureTiming lines = camera(TimingClass::Lines);
    EXPECT_EQ(lines.clocks(0.01F, kLong), 499u) << "the float is a little below 10 ms";
    EXPECT_EQ(lines.clocks(0.010001F, kLong), 500u);
    EXPECT_FLOAT_EQ(lines.seconds(500), 0.01F);
}

TEST(ExposureTiming, LinesBehindADelay) {
    const ExposureTiming lines = camera(TimingClass::DelayedLines);
    EXPECT_EQ(lines.clocks(1.3e-5F, kLong), 1u);
    EXPECT_EQ(lines.clocks(2e-5F, kLong), 1u);
    EXPECT_EQ(lines.clocks(0.010014F, kLong), 500u) << "10.00027 ms are 500.01 lines";
    EXPECT_FLOAT_EQ(lines.seconds(500), 0.01001373F);
}

TEST(ExposureTiming, Clocks) {
    const ExposureTiming clocks = camera(TimingClass::Clocks);
    EXPECT_EQ(clocks.clocks(0.0010001F, kLong), 50005u);
    EXPECT_FLOAT_EQ(clocks.seconds(50000), 0.001F);
}

TEST(ExposureTiming, Microseconds) {
    const ExposureTiming micro = camera(TimingClass::Microseconds);
    EXPECT_EQ(micro.clocks(0.0012344F, kLong), 1234u);
    EXPECT_EQ(micro.clocks(0.0012346F, kLong), 1235u) << "rounded";
    EXPECT_FLOAT_EQ(micro.seconds(1234), 0.001234F);
    EXPECT_FLOAT_EQ(micro.seconds(22), 2.2e-5F);
    EXPECT_FLOAT_EQ(micro.seconds(1), 2.2e-5F) << "no shorter";
}

TEST(ExposureTiming, ShortOnesCountTheBaseClock) {
    const ExposureTiming base = camera(TimingClass::Base);
    EXPECT_EQ(base.clocks(1.00004e-5F, kLong), 1000u) << "1000.004 + 0.5";
    EXPECT_EQ(base.clocks(1.00006e-5F, kLong), 1000u);
    EXPECT_EQ(base.clocks(1.0008e-5F, kLong), 1001u) << "1000.8 + 0.5";
    EXPECT_EQ(base.clocks(0.0F, kLong), 100u) << "1 us";
    EXPECT_EQ(camera(TimingClass::SlowBase).clocks(0.0F, kLong), 150u) << "1.5 us";
    EXPECT_FLOAT_EQ(base.seconds(1000), 1e-5F);
    EXPECT_FLOAT_EQ(base.seconds(1426), 1.426e-5F);
    EXPECT_FLOAT_EQ(base.seconds(50), 1e-6F) << "no shorter";
    EXPECT_FLOAT_EQ(camera(TimingClass::SlowBase).seconds(50), 1.5e-6F);
}

// M / B = 14.26 us; a line of 20 us is 2000 base clocks.
TEST(ExposureTiming, LongOnesCountLines) {
    for (const TimingClass timing : {TimingClass::Base, TimingClass::SlowBase}) {
        const ExposureTiming base = camera(timing);
        EXPECT_EQ(base.clocks(1.5e-5F, kLong), 1426u) << "less than half a line above";
        EXPECT_EQ(base.clocks(2.42e-5F, kLong), 1426u) << "9.94 us above";
        EXPECT_EQ(base.clocks(2.44e-5F, kLong), 3426u) << "10.14 us above";
        EXPECT_EQ(base.clocks(0.01001426F, kLong), 1001426u) << "500 lines";
        EXPECT_FLOAT_EQ(base.seconds(1427), 3.426e-5F) << "rounded up to a line";
        EXPECT_FLOAT_EQ(base.seconds(3426), 3.426e-5F);
        EXPECT_FLOAT_EQ(base.seconds(3427), 5.426e-5F);
    }
}

// (F t + b) / a. At v = 0: b = 426 and a = 2 max(T + w / 2, 486).
TEST(ExposureTiming, SensorTicksFollowBinningAndWidth) {
    const struct {
        unsigned h, v;
        double width, a, b;
    } rows[] = {
        {0, 0, 640, 1540, 426},   // 450 + 320
        {1, 0, 640, 1500, 426},   // 430 + 320
        {2, 0, 640, 1480, 426},   // 420 + 320
        {9, 0, 640, 1480, 426},   // as 2
        {0, 0, 60, 972, 426},     // 480 is below 486
        {0, 1, 640, 2232, 842},   // 796 + 320
        {0, 1, 60, 1664, 842},    // 826 is below 346 + 486
        {1, 1, 640, 2192, 842},   // 776 + 320
        {2, 1, 640, 2172, 842},   // 766 + 320
        {0, 2, 640, 3616, 1674},  // 1488 + 320; b = 3 x 416 + 426
        {1, 2, 640, 3576, 1674},  // 1468 + 320
        {2, 2, 640, 3556, 1674},  // 1458 + 320
        {2, 7, 60, 3048, 1674},   // as 2; 1488 is below 3 x 346 + 486 = 1524
        {0, 0, 641, 1541, 426},   // half a pixel counts
    };
    for (const auto& row : rows) {
        ExposureTiming ticks = camera(TimingClass::SensorTicks);
        ticks.horizontalBinning = row.h;
        ticks.verticalBinning = row.v;
        ticks.imageWidth = row.width;
        EXPECT_FLOAT_EQ(ticks.seconds(1000), static_cast<float>((row.a * 1000 - row.b) / 50e6));
        const double time = (row.a * 1000.5 - row.b) / 50e6;
        EXPECT_EQ(ticks.clocks(static_cast<float>(time), kLong), 1000u) << row.h << ' ' << row.v;
    }
}

TEST(ExposureTiming, ClocksAreLimitedTo1AndTheLongest) {
    const float times[] = {0.0F, -1.0F, -std::numeric_limits<float>::infinity(),
                           std::numeric_limits<float>::quiet_NaN()};
    for (const TimingClass timing : {TimingClass::SensorTicks, TimingClass::Lines, TimingClass::DelayedLines,
                                     TimingClass::Microseconds, TimingClass::Clocks}) {
        for (const float time : times) EXPECT_EQ(camera(timing).clocks(time, kLong), 1u);
        EXPECT_EQ(camera(timing).clocks(1e9F, 5000), 5000u);
        EXPECT_EQ(camera(timing).clocks(std::numeric_limits<float>::infinity(), 5000), 5000u);
        EXPECT_EQ(camera(timing).clocks(1.0F, 0), 1u);
    }
    EXPECT_EQ(camera(TimingClass::Clocks).clocks(3.9e-8F, kLong), 1u) << "1.95";
    EXPECT_EQ(camera(TimingClass::Clocks).clocks(4.1e-8F, kLong), 2u) << "2.05";
}

TEST(ExposureTiming, NumbersThatTheCameraTellsAs0DoNoHarm) {
    for (const TimingClass timing :
         {TimingClass::SensorTicks, TimingClass::Lines, TimingClass::DelayedLines, TimingClass::SlowBase,
          TimingClass::Base, TimingClass::Microseconds, TimingClass::Clocks}) {
        ExposureTiming nothing;
        nothing.timing = timing;
        for (const float time : {0.0F, 1.0F, -1.0F}) {
            const std::uint32_t clocks = nothing.clocks(time, 1000);
            EXPECT_GE(clocks, 1u);
            EXPECT_LE(clocks, 1000u);
        }
        EXPECT_FALSE(nothing.seconds(5) < 0);
    }
}

}  // namespace
}  // namespace tavra::test
