#include "stages/shading_correction.h"

#include <array>
#include <atomic>
#include <random>
#include <thread>

#include "platform/last_error.h"
#include "stages/factory.h"
#include "stages/shading_fixture.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

TEST_F(Shading, StartsOffWithTargetsOfZeroAndNoMap) {
    u32 mode = 9, width = 9, height = 9, stride = 9;
    u16 target = 9, array = 9;
    u64 targets = 9;
    EXPECT_EQ(stage.GetMode(&mode), 0u);
    EXPECT_EQ(stage.GetMode(nullptr), 0u);
    EXPECT_EQ(stage.GetTarget(&target), 0u);
    EXPECT_EQ(stage.GetTargets(&targets), 0u);
    EXPECT_EQ(stage.GetColorArray(&array), 0u);
    u8 untouched = 5;
    EXPECT_EQ(stage.GetMap(&width, &height, &stride, &untouched), 0u);
    EXPECT_EQ(mode, 0u);
    EXPECT_EQ(target, 0);
    EXPECT_EQ(targets, 0u);
    EXPECT_EQ(array, 1);
    EXPECT_EQ(width, 0u);
    EXPECT_EQ(height, 0u);
    EXPECT_EQ(stride, 0u);
    EXPECT_EQ(untouched, 5);
}

TEST_F(Shading, AFlatFieldOf100WithTarget200DoublesTheLight) {
    stage.SetTarget(200);
    EXPECT_EQ(calibrated(1, 2, 8, 6, flat(48, 100)), std::vector<std::int32_t>(48, 256));
    EXPECT_EQ(corrected(8, 6, 100), 200);
    EXPECT_EQ(corrected(8, 6, 200), 255) << "the highest level of 8 bits";
    EXPECT_EQ(corrected(8, 6, 127), 254);
    EXPECT_EQ(corrected(8, 6, 0), 0);
    EXPECT_EQ(corrected(8, 6, 10, 4), 15) << "the highest level of 4 bits";
}

TEST_F(Shading, WhereTheFieldIsTooDarkTheGainIsTheHighest) {
    stage.SetTarget(200);  // the limit is 12
    const auto map = calibrated(1, 2, 4, 2, {0, 1, 5, 12, 13, 100, 200, 255});
    EXPECT_EQ(map, (std::vector<std::int32_t>{2048, 2048, 2048, 2048, 25600 / 13, 256, 128, 25600 / 255}));
    auto frame = flat(8, 5);
    stage.Apply8(4, 2, 0, frame.data(), 8);
    EXPECT_EQ(frame[2], 80);
}

TEST_F(Shading, AGainJustAboveTheLimitMayPassTheHighest) {
    stage.SetTarget(207);  // limit 12; 207 x 128 / 12.5 is 2119
    stage.SetMode(1);
    for (const u8 sample : {12, 13}) {
        std::vector<u8> field = {sample, 0, 0, 0};
        stage.Apply8(1, 1, 4, field.data(), 8);
    }
    stage.SetMode(2);
    u8 pixel = 1;
    stage.Apply8(1, 1, 0, &pixel, 8);
    EXPECT_EQ(mapOf(stage), std::vector<std::int32_t>{2119});
}

TEST_F(Shading, OffsetOfAFlatFieldOf100ToTarget80) {
    stage.SetTarget(80);
    EXPECT_EQ(calibrated(3, 4, 5, 3, flat(15, 100)), std::vector<std::int32_t>(15, -20));
    EXPECT_EQ(corrected(5, 3, 10), 0);
    EXPECT_EQ(corrected(5, 3, 20), 0);
    EXPECT_EQ(corrected(5, 3, 21), 1);
    EXPECT_EQ(corrected(5, 3, 255), 235);
    stage.SetTarget(120);
    EXPECT_EQ(calibrated(3, 4, 5, 3, flat(15, 100)), std::vector<std::int32_t>(15, 20));
    EXPECT_EQ(corrected(5, 3, 234), 254);
    EXPECT_EQ(corrected(5, 3, 240), 255);
}

TEST_F(Shading, EitherCalibrationServesEitherCorrection) {
    stage.SetTarget(50);
    EXPECT_EQ(calibrated(3, 2, 2, 2, flat(4, 100)), std::vector<std::int32_t>(4, 64));
    EXPECT_EQ(calibrated(1, 4, 2, 2, flat(4, 100)), std::vector<std::int32_t>(4, -50));
}

TEST_F(Shading, TheMapIsMadeOnceAndStays) {
    stage.SetTarget(200);
    calibrated(1, 2, 2, 2, flat(4, 100));
    stage.SetTarget(50);
    stage.SetMode(4);
    EXPECT_EQ(corrected(2, 2, 0), 255) << "the gains, taken for offsets of 256";
    EXPECT_EQ(mapOf(stage), std::vector<std::int32_t>(4, 256));
}

TEST_F(Shading, ShownMapDropsTheCalibration) {
    stage.SetTarget(200);
    EXPECT_EQ(calibrated(1, 255, 2, 2, flat(4, 100)), std::vector<std::int32_t>(4, 0));
    stage.SetMode(2);
    EXPECT_EQ(corrected(2, 2, 100), 0) << "no map was made of the mean";
}

TEST_F(Shading, ShownMapIsCutToTheHighestLevel) {
    const std::vector<std::int32_t> map = {0, 1, 254, 255, 256, -1, INT32_MIN, INT32_MAX};
    EXPECT_EQ(stage.SetMap(8, 1, 32, map.data()), 0u);
    stage.SetMode(255);
    auto frame = flat(8, 77);
    stage.Apply8(8, 1, 0, frame.data(), 8);
    EXPECT_EQ(frame, (std::vector<u8>{0, 1, 254, 255, 255, 255, 255, 255}));
    std::vector<u16> words(8, 77);
    stage.Apply16(8, 1, 0, words.data(), 8);
    EXPECT_EQ(words, (std::vector<u16>{0, 1, 254, 255, 255, 255, 255, 255}));
}

TEST_F(Shading, OtherModesActAsOff) {
    const std::vector<std::int32_t> map(4, 0);
    stage.SetMap(2, 2, 8, map.data());
    for (const u32 mode : {0u, 5u, 254u, 256u, 0xFFFFFFFFu}) {
        stage.SetMode(mode);
        EXPECT_EQ(corrected(2, 2, 77), 77) << mode;
        u32 read = 9;
        stage.GetMode(&read);
        EXPECT_EQ(read, mode);
        EXPECT_EQ(stage.Apply8(2, 2, 0, nullptr, 8), 0u);
    }
}

TEST_F(Shading, AMapOfAnotherSizeLeavesTheFrame) {
    const std::vector<std::int32_t> map(12, 0);
    stage.SetMap(4, 3, 16, map.data());
    for (const u32 mode : {2, 4, 255}) {
        stage.SetMode(mode);
        EXPECT_EQ(corrected(3, 4, 77), 77);
        EXPECT_EQ(corrected(4, 2, 77), 77);
        EXPECT_EQ(corrected(5, 3, 77), 77);
    }
    EXPECT_EQ(corrected(4, 3, 77), 0);
}

TEST_F(Shading, WithDenseRowsTheMapIsMadeFromTheLastFrameAlone) {
    stage.SetTarget(100);
    stage.SetMode(1);
    for (const u8 level : {10, 200, 50}) {
        auto field = flat(4, level);
        stage.Apply8(2, 2, 0, field.data(), 8);
        std::vector<u16> words(4, level);
        stage.Apply16(2, 2, 4, words.data(), 8);
    }
    stage.SetMode(2);
    corrected(2, 2, 0);
    EXPECT_EQ(mapOf(stage), std::vector<std::int32_t>(4, 256));
}

TEST_F(Shading, AStrideOfTheMapGivesARunningMean) {
    stage.SetTarget(100);
    stage.SetMode(3);
    double mean = 0;
    u32 frames = 0;
    for (const u8 level : {10, 11, 13, 200, 7}) {
        std::vector<u8> field(3 * 12, 255);
        for (std::size_t y = 0; y < 3; ++y) std::fill_n(&field[12 * y], 3, level);
        EXPECT_EQ(stage.Apply8(3, 3, 12, field.data(), 8), 0u);
        mean = (frames * mean + level) / (frames + 1.0);
        ++frames;
    }
    stage.SetMode(4);
    corrected(3, 3, 0);
    EXPECT_EQ(mapOf(stage), std::vector<std::int32_t>(9, 100 - static_cast<std::int32_t>(mean)));
    EXPECT_EQ(static_cast<std::int32_t>(mean), 48);
}

// (100 + 50) / 2: with the mean kept the target 75 is met by a gain of 1.
TEST_F(Shading, ACalibrationBeginsAnewWithItsModeAndWithAnotherSize) {
    stage.SetTarget(75);
    const auto add = [&](u32 width, u32 height, u8 level) {
        auto field = flat(std::size_t{4} * width * height, level);
        stage.Apply8(width, height, 4 * width, field.data(), 8);
    };
    const auto map = [&](u32 width, u32 height) {
        stage.SetMode(2);
        corrected(width, height, 0);
        return mapOf(stage).front();
    };
    stage.SetMode(1);
    add(2, 2, 100);
    add(2, 2, 50);
    EXPECT_EQ(map(2, 2), 128);
    stage.SetMode(1);
    add(2, 2, 100);
    stage.SetMode(3);
    add(2, 2, 50);
    EXPECT_EQ(map(2, 2), 192);
    stage.SetMode(1);
    add(2, 2, 100);
    add(3, 2, 50);
    EXPECT_EQ(map(3, 2), 192);
    stage.SetMode(1);
    add(2, 2, 100);
    stage.SetMode(0);
    add(2, 2, 99);
    EXPECT_EQ(map(2, 2), 96) << "off, the mean waits";
}

TEST_F(Shading, ASetMapOfAnotherSizeDropsACalibration) {
    stage.SetTarget(200);
    const std::vector<std::int32_t> other(16, 64);
    const struct {
        u32 width, height, stride;
        std::int32_t expected;
    } maps[] = {{2, 2, 8, 256}, {2, 2, 16, 64}, {3, 2, 16, 64}, {2, 1, 8, 64}};
    for (const auto& m : maps) {
        stage.SetMode(1);
        auto field = flat(4, 100);
        stage.Apply8(2, 2, 0, field.data(), 8);
        EXPECT_EQ(stage.SetMap(m.width, m.height, m.stride, other.data()), 0u);
        stage.SetMode(2);
        corrected(m.width, m.height, 0);
        EXPECT_EQ(mapOf(stage).front(), m.expected) << m.width << ' ' << m.height << ' ' << m.stride;
    }
}

TEST_F(Shading, AMapIsGivenBackWithItsPadding) {
    std::mt19937 random(1);
    for (const auto& [width, height, stride] : std::vector<std::array<u32, 3>>{
             {3, 2, 12}, {3, 2, 16}, {3, 2, 13}, {0, 2, 8}, {2, 0, 8}, {0, 0, 0}}) {
        std::vector<u8> data(std::size_t{height} * stride), back(data.size() + 1, 9);
        for (u8& b : data) b = static_cast<u8>(random());
        EXPECT_EQ(stage.SetMap(width, height, stride, data.data()), 0u);
        u32 w = 9, h = 9, s = 9;
        EXPECT_EQ(stage.GetMap(&w, &h, &s, back.data()), 0u);
        EXPECT_EQ(w, width);
        EXPECT_EQ(h, height);
        EXPECT_EQ(s, stride);
        EXPECT_EQ(back.back(), 9);
        back.pop_back();
        EXPECT_EQ(back, data);
    }
}

TEST_F(Shading, ABadMapChangesNothing) {
    const std::vector<std::int32_t> map = {1, 2, 3, 4};
    stage.SetMap(2, 2, 8, map.data());
    platform::setLastSystemError(0);
    EXPECT_EQ(stage.SetMap(2, 2, 7, map.data()), 87u);
    EXPECT_EQ(platform::lastSystemError(), 87u);
    EXPECT_EQ(stage.SetMap(0x40000001, 1, 4, map.data()), 87u);
    EXPECT_EQ(stage.SetMap(2, 2, 8, nullptr), 87u);
    {
        const FailAllocationsFrom all(0);
        EXPECT_EQ(stage.SetMap(1, 1, 4, map.data()), 8u);
    }
    EXPECT_EQ(stage.SetMap(0x3FFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, map.data()), 8u) << "more than memory holds";
    EXPECT_EQ(platform::lastSystemError(), 8u);
    EXPECT_EQ(mapOf(stage), map);
}

TEST_F(Shading, AMapOfTheSameSizeNeedsNoMemory) {
    const std::vector<std::int32_t> first(4, 1), second(4, 2);
    stage.SetMap(2, 2, 8, first.data());
    {
        const FailAllocationsFrom all(0);
        EXPECT_EQ(stage.SetMap(2, 2, 8, second.data()), 0u);
    }
    EXPECT_EQ(mapOf(stage), second);
}

TEST_F(Shading, ACalibrationWithoutMemoryForItsMeanFails) {
    std::vector<u8> field(64 * 64, 100);
    stage.SetMode(1);
    platform::setLastSystemError(0);
    u32 code = 0;
    {
        const FailAllocationsFrom mean(64 * 64 * 8);
        code = stage.Apply8(64, 64, 0, field.data(), 8);
    }
    EXPECT_EQ(code, 8u);
    EXPECT_EQ(platform::lastSystemError(), 8u);
    stage.SetMode(2);
    EXPECT_EQ(corrected(64, 64, 77), 77) << "there is no map";
    EXPECT_EQ(stage.Apply8(0xFFFFFFFF, 0xFFFFFFFF, 0, field.data(), 8), 0u) << "of another size than the map";
    stage.SetTarget(200);
    EXPECT_EQ(calibrated(1, 2, 64, 64, field).front(), 256) << "memory is there again";
}

TEST_F(Shading, ACalibrationWithoutMemoryForItsMapLeadsToNone) {
    std::vector<u8> field(64 * 64, 100);
    stage.SetTarget(200);
    stage.SetMode(1);
    stage.Apply8(64, 64, 0, field.data(), 8);  // the mean has its memory, the map of another size has none
    const std::vector<std::int32_t> small(1, 1);
    stage.SetMap(1, 1, 4, small.data());
    u32 code = 9;
    {
        const FailAllocationsFrom all(0);
        code = stage.Apply8(64, 64, 0, field.data(), 8);
    }
    EXPECT_EQ(code, 0u);
    stage.SetMode(2);
    EXPECT_EQ(corrected(64, 64, 77), 77);
    u32 width = 9;
    stage.GetMap(&width, nullptr, nullptr, nullptr);
    EXPECT_EQ(width, 0u);
}

TEST_F(Shading, NoMemoryIsTakenByCorrectionAndByMoreFramesOfACalibration) {
    std::vector<u8> field(64 * 64 * 4, 100);
    stage.SetMode(1);
    stage.Apply8(64, 64, 0, field.data(), 8);
    std::size_t failures = 0;
    {
        const FailAllocationsFrom all(0);
        stage.Apply8(64, 64, 0, field.data(), 8);
        stage.Apply8(64, 64, 256, field.data(), 8);
        for (const u32 mode : {2, 4, 255}) {
            stage.SetMode(mode);
            stage.Apply8(64, 64, 0, field.data(), 8);
        }
        failures = FailAllocationsFrom::failures();
    }
    EXPECT_EQ(failures, 0u);
}

TEST_F(Shading, FramesWithoutPixels) {
    for (const u32 mode : {1, 3, 2, 4, 255}) {
        stage.SetMode(mode);
        platform::setLastSystemError(0);
        EXPECT_EQ(stage.Apply8(2, 2, 0, nullptr, 8), 87u);
        EXPECT_EQ(stage.Apply16(2, 2, 0, nullptr, 8), 87u);
        EXPECT_EQ(platform::lastSystemError(), 87u);
        EXPECT_EQ(stage.Apply8(0, 2, 0, nullptr, 8), 0u);
        EXPECT_EQ(stage.Apply16(2, 0, 0, nullptr, 8), 0u);
    }
}

TEST_F(Shading, TargetsAreReadAsTheirMean) {
    EXPECT_EQ(stage.SetTargets(pack(10, 11, 12, 14)), 0u);
    u16 target = 0;
    u64 targets = 0;
    EXPECT_EQ(stage.GetTarget(&target), 0u);
    EXPECT_EQ(target, 11);
    EXPECT_EQ(stage.GetTargets(&targets), 0u);
    EXPECT_EQ(targets, pack(10, 11, 12, 14));
    EXPECT_EQ(stage.SetTarget(0xFFFF), 0u);
    stage.GetTarget(&target);
    stage.GetTargets(&targets);
    EXPECT_EQ(target, 0xFFFF);
    EXPECT_EQ(targets, ~u64{0});
    EXPECT_EQ(stage.GetTarget(nullptr), 0u);
    EXPECT_EQ(stage.GetTargets(nullptr), 0u);
    EXPECT_EQ(stage.SetColorArray(17), 0u);
    u16 array = 0;
    EXPECT_EQ(stage.GetColorArray(&array), 0u);
    EXPECT_EQ(array, 17);
    EXPECT_EQ(stage.GetColorArray(nullptr), 0u);
}

TEST_F(Shading, EachPositionHasItsTarget) {
    stage.SetColorArray(2);
    stage.SetTargets(pack(100, 200, 50, 150));
    EXPECT_EQ(calibrated(1, 2, 3, 2, flat(6, 100)), (std::vector<std::int32_t>{128, 256, 128, 64, 192, 64}));
    EXPECT_EQ(calibrated(3, 4, 3, 2, flat(6, 100)), (std::vector<std::int32_t>{0, 100, 0, -50, 50, -50}));
}

// 10 x 8: the square is 2 x 2 at (4, 3), so its positions are 2 3 / 0 1.
TEST_F(Shading, ATargetOfZeroIsMeasuredInTheMiddle) {
    std::vector<u8> field(80, 1);
    field[3 * 10 + 4] = 40, field[3 * 10 + 5] = 80, field[4 * 10 + 4] = 60, field[4 * 10 + 5] = 100;
    const auto targetsBy = [&](u16 array, u64 targets, u16 bits = 8) {
        stage.SetColorArray(array);
        stage.SetTargets(targets);
        const auto map = calibrated(3, 4, 10, 8, field, bits);  // target - 1 in the corner
        return std::vector<std::int32_t>{map[0] + 1, map[1] + 1, map[10] + 1, map[11] + 1};
    };
    using Targets = std::vector<std::int32_t>;
    for (const u16 array : {2, 5, 6, 16, 19, 0, 11, 20}) {
        EXPECT_EQ(targetsBy(array, 0), (Targets{60, 100, 40, 80})) << array;
        EXPECT_EQ(targetsBy(array, pack(7, 0, 9, 0)), (Targets{7, 100, 9, 80})) << array;
    }
    for (const u16 array : {1, 12, 13, 14, 15}) {
        EXPECT_EQ(targetsBy(array, 0), (Targets{70, 70, 70, 70})) << array;
        EXPECT_EQ(targetsBy(array, pack(7, 8, 9, 0)), (Targets{70, 70, 70, 70})) << "those that are set, too";
        EXPECT_EQ(targetsBy(array, pack(7, 8, 9, 10)), (Targets{7, 8, 9, 10}))
            << "without a 0 none is measured";
    }
    EXPECT_EQ(targetsBy(2, 0, 6), (Targets{60, 63, 40, 63})) << "at most the highest level";
    EXPECT_EQ(targetsBy(1, 0, 6), (Targets{63, 63, 63, 63}));
}

TEST_F(Shading, APositionThatTheMiddleLacksHasTarget128) {
    stage.SetColorArray(3);
    EXPECT_EQ(calibrated(3, 4, 3, 1, {10, 20, 30}), (std::vector<std::int32_t>{128 - 10, 0, 128 - 30}))
        << "the square is the pixel at (1, 0)";
    EXPECT_EQ(calibrated(3, 4, 3, 1, {10, 20, 30}, 5), (std::vector<std::int32_t>{31 - 10, 0, 31 - 30}));
    // 7 x 5: one pixel, at (3, 2).
    stage.SetColorArray(1);
    std::vector<u8> field(35, 1);
    field[2 * 7 + 3] = 99;
    EXPECT_EQ(calibrated(3, 4, 7, 5, field).front(), 98);
}

TEST_F(Shading, AMeasuredTargetOfZeroMakesGainsOfZero) {
    std::vector<u8> field(16, 9);
    field[1 * 4 + 1] = 0;
    EXPECT_EQ(calibrated(1, 2, 4, 4, field)[0], 0) << "lit, for a target of 0";
    EXPECT_EQ(mapOf(stage)[5], 2048) << "dark";
}

TEST(ShadingThreads, SettingsChangeBesideTheFrames) {
    CShadingCorrection stage;
    std::atomic<bool> end{false};
    std::thread frames([&] {
        std::vector<u8> frame(32 * 32 * 4, 100);
        while (!end) {
            stage.Apply8(32, 32, 128, frame.data(), 8);
            stage.Apply8(32, 32, 0, frame.data(), 8);
        }
    });
    const std::vector<std::int32_t> map(33 * 33, 128);
    std::vector<std::int32_t> back(33 * 33);
    for (u32 i = 0; i < 300; ++i) {
        stage.SetMode(std::array<u32, 6>{1, 2, 3, 4, 255, 0}[i % 6]);
        stage.SetTarget(static_cast<u16>(i % 256));
        stage.SetColorArray(static_cast<u16>(i % 6));
        if (i % 5 == 0) {
            EXPECT_EQ(stage.SetMap(32 + i % 2, 32, 4 * (32 + i % 2), map.data()), 0u);
        }
        EXPECT_EQ(stage.GetMap(nullptr, nullptr, nullptr, back.data()), 0u);
    }
    end = true;
    frames.join();
}

TEST_F(Shading, ComesFromTheFactory) {
    auto* const made = static_cast<IShadingCorrection*>(CreateStageObject(176));
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->SetMode(2), 0u);
    u32 mode = 0;
    made->GetMode(&mode);
    EXPECT_EQ(mode, 2u);
    EXPECT_EQ(made->Release(), 0u);
}

}  // namespace
}  // namespace tavra::test
