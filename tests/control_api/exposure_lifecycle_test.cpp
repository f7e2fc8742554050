// Exposure control from the open to the reset, and what a step of the loop sends.
#include <thread>

#include "control_api/exposure_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

class ExposureLifecycle : public ExposureTest {
  protected:
    static Traffic cameraSettings() {
        return {readStatus(73),    readStatus(75),    readStatus(76),
                readStatus(69, 2), readStatus(71, 2), readStatus(74)};
    }
    // A decision on frames of this brightness.
    Status decide(std::uint8_t luminance) {
        const std::vector<std::uint8_t> pixels(16, luminance);
        CAveragePixelValue statistics;
        statistics.Accumulate(4, 4, 1, pixels.data());
        while (!control().due()) {
        }
        Status status;
        for (int i = 0; i < control().controlSpeed().averageFrames; ++i) status = control().step(statistics);
        return status;
    }
};

TEST_F(ExposureLifecycle, TheCamerasSettingsAreTakenOverAtOpen) {
    DoubleCamera camera = limitedCamera();
    setBlock(camera, 0x12345, 6, 78);
    camera.setScan32(52, 0x20000);
    camera.status(20) = 90;
    open(camera);
    expectShutter(0x12345, 6);
    expectGain(78);
    expectDigitalGain(90);
    expectMode(0);
}

TEST_F(ExposureLifecycle, ACameraWithAControlOfItsOwnTellsItsSettings) {
    for (const unsigned bit : {9u, 10u}) {
        usb.reset();
        DoubleCamera camera = limitedCamera();
        camera.setCapability(1, bit);
        camera.status(73) = 0xFFF2;
        camera.status(75) = 400;
        camera.status(76) = 30;
        camera.status(69) = 0x2345;
        camera.status(70) = 1;
        camera.status(71) = 8;
        camera.status(72) = 0;
        camera.status(74) = 0x1064;
        open(camera);
        expectMode(0x20);
        expectGainRange(30, 400);
        expectShutterRange({8, 0, 0x12345, 0});
        expectTarget(0x64, 5, 5);
        close();
    }
}

TEST_F(ExposureLifecycle, ItIsReadInAFixedOrder) {
    open(controllingCamera());
    EXPECT_TRUE(control().LoadFromCamera().ok());
    Traffic expected{readExposure(), readDigitalGain()};
    for (const ControlTransfer& transfer : cameraSettings()) expected.push_back(transfer);
    EXPECT_EQ(traffic(), expected);
    for (std::uint32_t nth = 0; nth < expected.size(); ++nth) {
        usb.failTransfer(nth);
        EXPECT_EQ(control().LoadFromCamera().code(), 0xE0000005u);
        EXPECT_EQ(traffic(), Traffic(expected.begin(), expected.begin() + nth + 1)) << "the failure ends it";
    }
}

TEST_F(ExposureLifecycle, WhatWasReadBeforeAFailureIsKept) {
    open(controllingCamera());
    setBlock(usb.camera(), 1, 2, 3);
    usb.camera().status(20) = 4;
    usb.camera().status(75) = 5;
    usb.failTransfer(3);  // the gain's top
    EXPECT_EQ(control().LoadFromCamera().code(), 0xE0000005u);
    expectShutter(1, 2);
    expectDigitalGain(4);
    expectGainRange(0, 0);  // as the camera told at open
}

TEST_F(ExposureLifecycle, TheOldestTypesHaveOnlyTheBlock) {
    open(legacyCamera());
    EXPECT_TRUE(control().LoadFromCamera().ok());
    EXPECT_THAT(traffic(), ElementsAre(readExposure()));
    expectSuccess(Tavra_SetGain(handle, 40));
    EXPECT_THAT(traffic(), ElementsAre(writeExposure(0, 0, 40)));
    EXPECT_TRUE(control().reset().ok());
    EXPECT_THAT(traffic(), ElementsAre(writeExposure(0, 0, 20)));
}

TEST_F(ExposureLifecycle, AnOpenGoesOnIfTheFirstReadingFailed) {
    usb.addCamera(limitedCamera());
    usb.failRequest(33, 1);
    handle = Tavra_Open(0);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(lastError(), 0xE0000005u);
    record().lastError = 0;
    expectShutter(10, 7);
    close();
    usb.reset();
    usb.addCamera(limitedCamera());
    usb.failRequest(33, 2);
    EXPECT_EQ(Tavra_Open(0), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000005u);
}

TEST_F(ExposureLifecycle, ANewGeometryReadsTheSettingsAgain) {
    open(limitedCamera());
    setBlock(usb.camera(), 33, 4, 55);
    usb.camera().status(20) = 66;
    expectSuccess(Tavra_SetImageSize(handle, 0, 1, 0, 0, 320, 240));
    expectShutter(33, 4);
    expectGain(55);
    expectDigitalGain(66);
    usb.failRequest(33, 1);
    expectFailure(Tavra_SetImageSize(handle, 0, 1, 0, 0, 640, 480), 0xE0000005);
    traffic();
    usb.failTransfer(1);  // the scan record
    expectFailure(Tavra_SetImageSize(handle, 0, 1, 0, 0, 640, 480), 0xE0000005);
    EXPECT_EQ(traffic().size(), 2u) << "exposure is not asked for then";
}

TEST_F(ExposureLifecycle, AResetWritesTheDefaults) {
    open(controllingCamera());
    expectSuccess(Tavra_SetALCMode(handle, 0x30));
    expectSuccess(Tavra_SetShutterControlRange2(handle, 3, 4, 5, 6));
    expectSuccess(Tavra_SetGainControlRange(handle, 3, 4));
    expectSuccess(Tavra_SetTargetBrightness(handle, 1, 2, 3));
    expectSuccess(Tavra_SetALCControlSpeed(handle, 1, 2, 3, 5));
    const std::uint8_t none[16] = {};
    expectSuccess(Tavra_SetALCWeight(handle, none));
    expectSuccess(Tavra_SetALCMode(handle, 1));
    traffic();
    EXPECT_TRUE(control().reset().ok());
    EXPECT_THAT(traffic(), ElementsAre(writeExposure(0, 0, 20), writeStatus(0x8014, le16(64))));
    expectMode(0);
    expectShutter(0, 0);
    expectGain(20);
    expectDigitalGain(64);
    expectShutterRange({0, 1, 0, 0});
    expectGainRange(20, 680);
    expectTarget(128, 5, 5);
    EXPECT_EQ(control().controlSpeed().averageFrames, 4);
    EXPECT_EQ(control().weights()[7], 1);
}

// By itself it goes on from the defaults; no request tells it to stop.
TEST_F(ExposureLifecycle, AResetLeavesTheControlToACameraThatHasIt) {
    open(controllingCamera());
    for (const std::uint8_t mode : {0x30, 0x20, 0x10}) {
        expectSuccess(Tavra_SetALCMode(handle, mode));
        traffic();
        EXPECT_TRUE(control().reset().ok());
        EXPECT_THAT(traffic(), ElementsAre(writeExposure(0, 0, 20), writeStatus(0x8014, le16(64))));
        expectMode(mode);
        setBlock(usb.camera(), 12, 3, 45);
        expectShutter(12, 3);
        EXPECT_THAT(traffic(), ElementsAre(readExposure())) << "the camera still moves it";
    }
}

TEST_F(ExposureLifecycle, AFailedResetHasChangedTheMemory) {
    open(limitedCamera());
    for (std::uint32_t nth = 0; nth < 2; ++nth) {
        expectSuccess(Tavra_SetGain(handle, 100));
        traffic();
        usb.failTransfer(nth);
        EXPECT_EQ(control().reset().code(), 0xE0000005u);
        EXPECT_EQ(traffic().size(), nth + 1);
        expectGain(20);
    }
}

// The loop.

TEST_F(ExposureLifecycle, ADecisionSendsOneBlockAndNoTiming) {
    open(limitedCamera());
    expectSuccess(Tavra_SetALCMode(handle, 1));
    expectSuccess(Tavra_SetGain(handle, 20));
    traffic();
    EXPECT_TRUE(decide(100).ok());
    EXPECT_THAT(traffic(), ElementsAre(writeExposure(12, 88, 20))) << "1007 x 128 / 100 = 1288";
    EXPECT_TRUE(decide(128).ok());
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(ExposureLifecycle, ADecisionThatDoesNotGoOutKeepsItsValues) {
    open(limitedCamera());
    expectSuccess(Tavra_SetALCMode(handle, 2));
    traffic();
    usb.failRequest(33, 1);
    EXPECT_EQ(decide(100).code(), 0xE0000005u);
    expectShutter(12, 88);
    usb.shortenRequest(33, 63, 1);
    EXPECT_EQ(decide(100).code(), 0xE0000005u) << "1288 x 128 / 100 = 1648";
    expectShutter(16, 48);
    EXPECT_TRUE(decide(128).ok());
    expectMode(2);
}

TEST_F(ExposureLifecycle, TheGainOfALoopFollowsTheScaleOfTheCamera) {
    DoubleCamera camera = limitedCamera();
    camera.setCapability(3, 2);  // 0.1 dB a value; back as 0.132 and 2.36
    camera.setScan16(32, 0);
    setBlock(camera, 0, 0, 100);
    open(camera);
    expectSuccess(Tavra_SetALCMode(handle, 3));
    traffic();
    // 10 dB is 3.1623; 139 / 3.1623 = 43; 128 / 43 = 2.9767: 9.4748 dB, value 89.7.
    EXPECT_TRUE(decide(139).ok());
    EXPECT_THAT(traffic(), ElementsAre(writeExposure(0, 0, 89)));
}

TEST_F(ExposureLifecycle, ACameraWithoutClockPartMovesByLines) {
    DoubleCamera camera = limitedCamera();
    camera.setIdentity16(44, 0);
    setBlock(camera, 10, 0, 20);
    open(camera);
    expectSuccess(Tavra_SetALCMode(handle, 2));
    traffic();
    EXPECT_TRUE(decide(0).ok());
    EXPECT_THAT(traffic(), ElementsAre(writeExposure(21, 0, 20)));
}

// Shutter and gain travel in one block, which the loop and an application write.
TEST_F(ExposureLifecycle, CameraAndMemoryAgreeWhereTheLoopAndAnApplicationMeet) {
    open(limitedCamera());
    expectSuccess(Tavra_SetALCControlSpeed(handle, 0, 0, 0, 1));
    expectSuccess(Tavra_SetALCMode(handle, 2));
    std::thread application([this] {
        for (std::uint16_t gain = 100; gain < 300; ++gain) EXPECT_EQ(Tavra_SetGain(handle, gain), 1);
    });
    for (int i = 0; i < 200; ++i) EXPECT_TRUE(decide(i % 2 == 0 ? 100 : 160).ok());
    application.join();
    std::uint32_t line = 0, clock = 0;
    expectSuccess(Tavra_GetShutterSpeed2(handle, &line, &clock));
    expectGain(299);
    EXPECT_EQ(usb.camera().exposureBlock, writeExposure(line, static_cast<std::uint16_t>(clock), 299).data);
}

}  // namespace
}  // namespace tavra::test
