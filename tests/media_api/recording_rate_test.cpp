// Rate and scale of movies of cameras whose frames last longer than their lines, and of the oldest ones.
#include <algorithm>
#include <utility>

#include "media_api/recording_fixture.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kClock = 36000000, kLines = 1000, kClocksPerLine = 1200;

class RecordingRate : public RecordingTest {
  protected:
    DoubleCamera& describeTiming(std::uint16_t scanMode, std::uint32_t exposureLines) {
        DoubleCamera& camera = describe();
        camera.clock = kClock;
        camera.setScan16(22, scanMode);
        camera.setScan16(26, kLines);
        camera.setScan16(28, kClocksPerLine);
        camera.exposureBlock[2] = static_cast<std::uint8_t>(exposureLines);
        camera.exposureBlock[3] = static_cast<std::uint8_t>(exposureLines >> 8);
        camera.exposureBlock[10] = static_cast<std::uint8_t>(exposureLines >> 16);
        return camera;
    }
    void expectRate(std::uint32_t rate, std::uint32_t scale) {
        ASSERT_EQ(save("a.smf"), 1) << lastError();
        ASSERT_EQ(Tavra_StopTransfer(handle), 1);
        EXPECT_EQ(movie().field(24), rate);
        EXPECT_EQ(movie().field(28), scale);
    }
    void startOver() {
        Tavra_Close(std::exchange(handle, nullptr));
        usb.reset();
    }
};

// In these two modes a frame ends no earlier than its exposure.
TEST_F(RecordingRate, FollowsTheExposureInTheScanModesThatExposeLongest) {
    for (const std::uint16_t mode : {4, 32}) {
        for (const std::uint32_t exposed : {1u, 999u, 1000u, 1001u, 1700u, 3000u}) {
            SCOPED_TRACE(testing::Message() << mode << ' ' << exposed);
            describeTiming(mode, exposed);
            open();
            expectRate(kClock, kClocksPerLine * std::max(kLines, exposed));
            startOver();
        }
    }
}

TEST_F(RecordingRate, IsThatOfTheExposureWhenTheRecordingBegins) {
    describeTiming(4, 1500);
    open();
    expectRate(kClock, kClocksPerLine * 1500);
    ASSERT_EQ(Tavra_SetShutterSpeed(handle, 2500, 0), 1);
    expectRate(kClock, kClocksPerLine * 2500);
    ASSERT_EQ(Tavra_SetShutterSpeed(handle, 10, 0), 1);
    expectRate(kClock, kClocksPerLine * kLines);
}

TEST_F(RecordingRate, IsThatOfTheLinesInEveryOtherMode) {
    for (const std::uint16_t mode : {0, 1, 2, 8, 16, 36, 64}) {
        SCOPED_TRACE(mode);
        describeTiming(mode, 3000);
        open();
        expectRate(kClock, kClocksPerLine * kLines);
        startOver();
    }
}

// What later cameras tell in words of their own, these are never asked for.
TEST_F(RecordingRate, OfTheOldestCamerasIsTheirClockByTheirLines) {
    for (const std::uint16_t type : {773, 1541, 1797, 2053}) {
        for (const std::uint16_t mode : {1, 4, 32}) {
            SCOPED_TRACE(testing::Message() << type << ' ' << mode);
            DoubleCamera& camera = describeTiming(mode, 1300);
            camera.setIdentity16(4, type);
            camera.setCapability(1, 4);
            camera.status(86) = 0x89AB;
            open();
            expectRate(kClock, kClocksPerLine * (mode == 1 ? kLines : 1300));
            startOver();
        }
    }
}

TEST_F(RecordingRate, StandsInAnAviAsWell) {
    describeTiming(32, 1700);
    open();
    ASSERT_EQ(save("a.avi"), 1) << lastError();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    const Bytes file = readFile(folder / "a.avi");
    ASSERT_GT(file.size(), 136u);
    EXPECT_EQ(loadLe32(&file[128]), kClocksPerLine * 1700) << "scale";
    EXPECT_EQ(loadLe32(&file[132]), kClock) << "rate";
    // 2040000 clocks of 1/36 microsecond
    EXPECT_EQ(loadLe32(&file[32]), 56666u);
}

}  // namespace
}  // namespace tavra::test
