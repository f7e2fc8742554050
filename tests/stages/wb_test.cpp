// White balance of a mosaic, reckoned by hand.
#include "platform/last_error.h"
#include "stages/factory.h"
#include "stages/wb_fixture.h"

namespace tavra::test {
namespace {

std::uint8_t modeOf(CWB& stage) {
    std::uint8_t mode = 99;
    EXPECT_EQ(stage.GetMode(&mode), 0u);
    return mode;
}

// 255 x 2 = 510, whose lower eight bits are 254; 255 x 8 = 2040, above the highest level of 10 bits, 1023.
TEST(WhiteBalance, BytesTakeTheLowerEightBitsOfADeeperTable) {
    CWB stage;
    stage.SetMode(1);
    const Gains gains = {256, 128, 1024, 4096};
    stage.SetGains(gains.data());
    std::vector<std::uint8_t> samples = {255, 255, 0, 0, 255, 100, 0, 0};
    EXPECT_EQ(stage.Apply8(2, 2, 4, 2, samples.data(), 10), 0u);
    EXPECT_EQ(samples, (std::vector<std::uint8_t>{254, 255, 0, 0, 255, 255, 0, 0}));
    samples = {255, 255, 0, 0, 255, 100, 0, 0};
    EXPECT_EQ(stage.Apply8(2, 2, 4, 2, samples.data(), 12), 0u);
    EXPECT_EQ(samples, (std::vector<std::uint8_t>{254, 255, 0, 0, 2040 - 7 * 256, 3200 - 12 * 256, 0, 0}));
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
        platform::setLastSystemError(0);
        for (std::uint16_t bits : {13, 16, 65535}) {
            for (std::uint16_t array : {0, 2, 6}) {
                EXPECT_EQ(stage.Apply16(2, 2, 4, array, words, bits), 87u);
                EXPECT_EQ(stage.Apply8(2, 2, 2, array, bytes, bits), 87u);
            }
        }
        EXPECT_EQ(platform::lastSystemError(), 0u) << "the code is the result, and nothing else";
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
        platform::setLastSystemError(0);
        for (std::uint16_t array : {6, 12, 16, 65535}) {
            EXPECT_EQ(stage.Apply8(4, 4, 0, array, frame.data(), 8), 87u) << array;
        }
        EXPECT_EQ(platform::lastSystemError(), 0u) << "which an array of 0 alone sets";
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

TEST(WhiteBalance, WordsBeyondTwelveBitsAreCountedWithoutHarm) {
    CWB stage;
    stage.SetMode(2);
    std::vector<std::uint16_t> frame(64, 65535);
    EXPECT_EQ(stage.Apply16(8, 8, 0, 2, frame.data(), 12), 0u);
    EXPECT_EQ(gainsOf(stage), (Gains{128, 128, 128, 128}));
}

}  // namespace
}  // namespace tavra::test
