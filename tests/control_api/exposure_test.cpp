// The shutter by hand.
#include "control_api/exposure_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

class Exposure : public ExposureTest {};

TEST_F(Exposure, ShutterIsWrittenWithTheGainAndThenTheFrameTiming) {
    const DoubleCamera camera = limitedCamera();
    open(camera);
    expectSuccess(Tavra_SetShutterSpeed2(handle, 0x1234, 56));
    EXPECT_THAT(traffic(), ElementsAre(writeExposure(0x1234, 56, 33), writeScan(camera)));
    expectShutter(0x1234, 56);
    expectSuccess(Tavra_SetShutterSpeed2(handle, 69999, 99));
    EXPECT_THAT(traffic(), ElementsAre(writeExposure(69999, 99, 33), writeScan(camera)));
    expectShutter(69999, 99);
    EXPECT_THAT(traffic(), IsEmpty()) << "what the library set needs no reading";
}

TEST_F(Exposure, ShutterOf16Bits) {
    open(limitedCamera());
    expectSuccess(Tavra_SetShutterSpeed(handle, 0xFFFF, 99));
    EXPECT_EQ(traffic()[0], writeExposure(0xFFFF, 99, 33));
    std::uint16_t line = 1, clock = 1;
    expectSuccess(Tavra_GetShutterSpeed(handle, &line, &clock));
    EXPECT_EQ(line, 0xFFFF);
    EXPECT_EQ(clock, 99);
    expectSuccess(Tavra_SetShutterSpeed2(handle, 65536 + 7, 3));
    expectSuccess(Tavra_GetShutterSpeed(handle, &line, &clock));
    EXPECT_EQ(line, 7) << "the low 16 bits";
}

TEST_F(Exposure, ShutterOutOfRangeChangesNothing) {
    open(limitedCamera());
    expectFailure(Tavra_SetShutterSpeed2(handle, 70001, 0), 87);
    expectFailure(Tavra_SetShutterSpeed2(handle, 10, 100), 87);
    expectFailure(Tavra_SetShutterSpeed(handle, 10, 100), 87);
    EXPECT_THAT(traffic(), IsEmpty());
    expectShutter(10, 7);
}

TEST_F(Exposure, FromTheLongestLineOnTheLongestExposureIsTold) {
    open(limitedCamera());
    expectSuccess(Tavra_SetShutterSpeed2(handle, 70000, 99));
    EXPECT_EQ(traffic()[0], writeExposure(70000, 99, 33)) << "the clocks of the longest line are not limited";
    expectShutter(70000, 30);
    EXPECT_EQ(got(Tavra_GetExposureClock), 7000030u);
    expectSuccess(Tavra_SetShutterSpeed2(handle, 70000, 1));
    expectShutter(70000, 30);
    expectSuccess(Tavra_SetShutterSpeed2(handle, 69999, 99));
    expectShutter(69999, 99);
}

TEST_F(Exposure, EitherResultMayBeLeftOut) {
    open(limitedCamera());
    std::uint32_t value = 99;
    expectSuccess(Tavra_GetShutterSpeed2(handle, &value, nullptr));
    EXPECT_EQ(value, 10u);
    expectSuccess(Tavra_GetShutterSpeed2(handle, nullptr, &value));
    EXPECT_EQ(value, 7u);
    expectSuccess(Tavra_GetShutterSpeed(handle, nullptr, nullptr));
}

TEST_F(Exposure, ABadHandleGives0) {
    std::uint32_t line = 9, clock = 9;
    std::uint16_t line16 = 9, clock16 = 9;
    EXPECT_EQ(Tavra_GetShutterSpeed2(nullptr, &line, &clock), 0);
    EXPECT_EQ(Tavra_GetShutterSpeed(nullptr, &line16, &clock16), 0);
    EXPECT_EQ(line + clock + line16 + clock16, 0u);
    EXPECT_EQ(Tavra_GetShutterSpeed(nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u);
}

TEST_F(Exposure, AShutterThatDoesNotGoOutStaysInMemory) {
    open(limitedCamera());
    usb.failRequest(33, 1);
    expectFailure(Tavra_SetShutterSpeed2(handle, 20, 1), 0xE0000005);
    EXPECT_THAT(traffic(), ElementsAre(writeExposure(20, 1, 33))) << "the timing is not written";
    expectShutter(20, 1);
    usb.shortenRequest(33, 63, 1);
    expectFailure(Tavra_SetShutterSpeed2(handle, 21, 1), 0xE0000005);
    expectShutter(21, 1);
    usb.failTransfer(1);
    expectFailure(Tavra_SetShutterSpeed2(handle, 22, 1), 0xE0000005);
    EXPECT_EQ(traffic().size(), 3u) << "the timing that failed is the last";
    expectShutter(22, 1);
}

TEST_F(Exposure, AsOneNumberOfClocks) {
    const DoubleCamera camera = limitedCamera();
    open(camera);
    EXPECT_EQ(got(Tavra_GetExposureClock), 1007u);
    expectSuccess(Tavra_SetExposureClock(handle, 2345));
    EXPECT_THAT(traffic(), ElementsAre(writeExposure(23, 45, 33), writeScan(camera)));
    EXPECT_EQ(got(Tavra_GetExposureClock), 2345u);
    expectSuccess(Tavra_SetExposureClock(handle, 7000099));
    EXPECT_EQ(got(Tavra_GetExposureClock), 7000030u) << "the longest";
    expectSuccess(Tavra_SetExposureClock(handle, 0));
    EXPECT_EQ(got(Tavra_GetExposureClock), 0u);
    traffic();
    expectFailure(Tavra_SetExposureClock(handle, 7000100), 87);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(Exposure, LimitsComeFromTheGeometry) {
    open(limitedCamera());
    EXPECT_EQ(got(Tavra_GetShutterMaxClock), 99u);
    EXPECT_EQ(got(Tavra_GetMaxShortExposureClock), 5020u);
    EXPECT_EQ(got(Tavra_GetMaxLongExposureClock), 7000030u);
    EXPECT_EQ(got(Tavra_GetEnableShutterSpeed), 1);
    close();
    usb.reset();
    DoubleCamera camera;  // fills in no exposure limits: 525 lines of 780 clocks
    camera.setScan16(22, 32);
    camera.setIdentity16(44, 0xABCE);
    open(camera);
    EXPECT_EQ(got(Tavra_GetShutterMaxClock), 779u);
    EXPECT_EQ(got(Tavra_GetMaxShortExposureClock), 525u * 780u);
    EXPECT_EQ(got(Tavra_GetMaxLongExposureClock), 4090u * 780u);
    EXPECT_EQ(got(Tavra_GetEnableShutterSpeed), 0xABCE);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(Exposure, LinesWithoutClocksDoNoHarm) {
    DoubleCamera camera = limitedCamera();
    camera.setScan32(36, 0xFFFFFFFF);
    open(camera);
    expectSuccess(Tavra_SetExposureClock(handle, 500));
    EXPECT_EQ(traffic()[0], writeExposure(0, 500, 33));
    EXPECT_EQ(got(Tavra_GetExposureClock), 500u);
    expectSuccess(Tavra_SetAEMaxExposureClock(handle, 20));
    expectSuccess(Tavra_SetALCMode(handle, 2));
    expectSuccess(Tavra_SetALCControlSpeed(handle, 0, 0, 0, 1));
    EXPECT_TRUE(control().step(CAveragePixelValue()).ok());
    usb.camera().setIdentity16(44, 0);
    close();
    open();
    expectSuccess(Tavra_SetALCMode(handle, 2));
    EXPECT_TRUE(control().step(CAveragePixelValue()).ok());
}

TEST_F(Exposure, NullOutputsAreRefused) {
    open();
    expectFailure(Tavra_GetExposureClock(handle, nullptr), 87);
    expectFailure(Tavra_GetShutterMaxClock(handle, nullptr), 87);
    expectFailure(Tavra_GetMaxLongExposureClock(handle, nullptr), 87);
    expectFailure(Tavra_GetMaxShortExposureClock(handle, nullptr), 87);
    expectFailure(Tavra_GetEnableShutterSpeed(handle, nullptr), 87);
    expectFailure(Tavra_GetExposureClockFromTime(handle, 1.0F, nullptr), 87);
    expectFailure(Tavra_GetExposureTimeFromClock(handle, 1, nullptr), 87);
}

// Time.

class ExposureTime : public ExposureTest {
  protected:
    std::uint32_t clock(float seconds) {
        std::uint32_t value = 0;
        expectSuccess(Tavra_GetExposureClockFromTime(handle, seconds, &value));
        return value;
    }
    float seconds(std::uint32_t clock) {
        float value = -1;
        expectSuccess(Tavra_GetExposureTimeFromClock(handle, clock, &value));
        return value;
    }
    // 50 MHz, frame lines of 1000 clocks, exposures to 70000 lines of 100 clocks.
    static DoubleCamera timedCamera(std::uint16_t type) {
        DoubleCamera camera = limitedCamera();
        camera.setIdentity16(4, type);
        camera.clock = 50000000;
        camera.setScan16(28, 1000);
        return camera;
    }
};

TEST_F(ExposureTime, CountsByTheProductType) {
    const struct {
        std::uint16_t type;
        std::uint32_t clock;  // of 10.0141 ms
        float seconds;        // of 500
    } rows[] = {
        {274, 500, 0.01F},                               // lines of 20 us
        {1811, 500, 0.01001373F},                        // and a delay
        {275, 10014, 0.0005F},                           // microseconds
        {8214, 1001426, 5e-6F},                          // 100 MHz to 14.26 us, then lines
        {278, 1001426, 5e-6F},    {265, 500705, 1e-5F},  // clocks
    };
    for (const auto& row : rows) {
        usb.reset();
        open(timedCamera(row.type));
        EXPECT_EQ(clock(0.0100141F), row.clock) << row.type;
        EXPECT_FLOAT_EQ(seconds(500), row.seconds) << row.type;
        EXPECT_THAT(traffic(), IsEmpty());
        close();
    }
}

TEST_F(ExposureTime, TheBaseClockIsTheCameras) {
    DoubleCamera camera = timedCamera(8214);
    camera.addRegisterPages();
    camera.setCapability(1, 14);
    camera.setCapability(19, 8);
    camera.pageRegister(21, 96) = 50;
    camera.pageRegister(21, 172) = 2000;
    open(camera);
    EXPECT_EQ(clock(3.001e-5F), 1501u) << "50 MHz up to 40 us; 1500.5 + 0.5";
    EXPECT_FLOAT_EQ(seconds(2000), 4e-5F);
}

TEST_F(ExposureTime, ClocksAreLimitedToTheLongestAnd0IsAFrame) {
    open(timedCamera(265));
    EXPECT_EQ(clock(10.0F), 7000030u);
    EXPECT_EQ(clock(0.0F), 1u);
    EXPECT_FLOAT_EQ(seconds(0xFFFFFFFF), 7000030 / 50e6F);
    EXPECT_FLOAT_EQ(seconds(0), 5020 / 50e6F);
}

TEST_F(ExposureTime, OneFamilyAsksForTheBinning) {
    for (const std::uint16_t type : {273, 529}) {
        usb.reset();
        DoubleCamera camera = timedCamera(type);
        camera.setIdentity16(26, 0x8000);
        camera.status(33) = 0x0102;  // horizontal binning 1, vertical 2
        open(camera);
        // a = 2 max(1468 + 320, 346 x 3 + 486) = 3576, b = 416 x 3 + 426 = 1674.
        EXPECT_FLOAT_EQ(seconds(100), (357600 - 1674) / 50e6F);
        EXPECT_EQ(clock(0.01F), 140u) << "501674 / 3576 = 140.3";
        EXPECT_THAT(traffic(), ElementsAre(readStatus(33), readStatus(33)));
        usb.failRequest(128);
        std::uint32_t clock = 77;
        float time = 7.5F;
        EXPECT_EQ(Tavra_GetExposureClockFromTime(handle, 0.01F, &clock), 1);
        EXPECT_EQ(Tavra_GetExposureTimeFromClock(handle, 100, &time), 1);
        EXPECT_EQ(clock, 77u) << "as it was";
        EXPECT_EQ(time, 7.5F);
        EXPECT_EQ(lastError(), 0xE0000005u) << "what could not be read";
        close();
    }
}

TEST_F(ExposureTime, VariantsOfATypeAreToldByTheSamePidWord) {
    DoubleCamera camera = timedCamera(789);
    open(camera);
    EXPECT_FLOAT_EQ(seconds(500), 0.01001373F);
    close();
    usb.camera().setCapabilityWord(7, 128);
    open();
    EXPECT_FLOAT_EQ(seconds(500), 5e-6F);
}

}  // namespace
}  // namespace tavra::test
