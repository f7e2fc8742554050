// Settings of the automatic control, by the library and by the camera.
#include <array>

#include "control_api/exposure_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

class AutoExposure : public ExposureTest {};

// Mode.

TEST_F(AutoExposure, OnlyLegalModesAreTaken) {
    open(controllingCamera());
    for (unsigned mode = 0; mode <= 0xFF; ++mode) {
        const bool legal = mode <= 6 || mode == 0x10 || mode == 0x20 || mode == 0x30;
        const TavraBool result = Tavra_SetALCMode(handle, static_cast<std::uint8_t>(mode));
        if (!legal) {
            expectFailure(result, 87);
            continue;
        }
        expectSuccess(result);
        expectMode(static_cast<std::uint8_t>(mode));
        EXPECT_THAT(traffic(), ElementsAre(writeStatus(0x8049, le16(mode >> 4)), readExposure()));
    }
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(AutoExposure, CamerasControlOnlyWhatTheyCan) {
    for (const bool shutter : {false, true}) {
        for (const bool gain : {false, true}) {
            usb.reset();
            DoubleCamera camera = limitedCamera();
            camera.setCapability(1, 9, gain);
            camera.setCapability(1, 10, shutter);
            open(camera);
            EXPECT_EQ(Tavra_SetALCMode(handle, 0x10), shutter);
            EXPECT_EQ(Tavra_SetALCMode(handle, 0x20), gain);
            EXPECT_EQ(Tavra_SetALCMode(handle, 0x30), shutter && gain);
            EXPECT_EQ(lastError(), shutter && gain ? 0u : 87u);
            close();
        }
    }
}

TEST_F(AutoExposure, ModesOfTheLibraryNeedNoCamera) {
    for (const DoubleCamera& camera : {limitedCamera(), legacyCamera()}) {
        usb.reset();
        open(camera);
        for (const std::uint8_t mode : {1, 2, 3, 4, 5, 6, 0}) {
            expectSuccess(Tavra_SetALCMode(handle, mode));
            expectMode(mode);
        }
        expectFailure(Tavra_SetALCMode(handle, 0x10), 87);
        expectMode(0);
        EXPECT_THAT(traffic(), IsEmpty());
        close();
    }
}

TEST_F(AutoExposure, AModeThatDoesNotGoOutStaysInMemory) {
    open(controllingCamera());
    usb.failTransfer(0);
    expectFailure(Tavra_SetALCMode(handle, 0x10), 0xE0000005);
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(0x8049, le16(1))));
    expectMode(0x10);
    usb.failTransfer(1);
    expectFailure(Tavra_SetALCMode(handle, 3), 0xE0000005);
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(0x8049, le16(0)), readExposure()));
    expectMode(3);
}

TEST_F(AutoExposure, WhatTheCameraControlsIsReadFromIt) {
    open(controllingCamera());
    expectSuccess(Tavra_SetALCMode(handle, 0x10));
    setBlock(usb.camera(), 44, 5, 66);
    traffic();
    expectShutter(44, 5);
    setBlock(usb.camera(), 45, 6, 67);
    expectGain(67);
    EXPECT_EQ(got(Tavra_GetExposureClock), 4506u);
    EXPECT_THAT(traffic(), ElementsAre(readExposure(), readExposure(), readExposure()));
    usb.failRequest(33);
    std::uint32_t line = 9, clock = 9;
    std::uint16_t gain = 9;
    expectFailure(Tavra_GetShutterSpeed2(handle, &line, &clock), 0xE0000005);
    EXPECT_EQ(line, 0u);
    EXPECT_EQ(clock, 0u);
    expectFailure(Tavra_GetGain(handle, &gain), 0xE0000005);
    EXPECT_EQ(gain, 9);
    expectFailure(Tavra_GetExposureClock(handle, &line), 0xE0000005);
    usb.clearFaults();
    expectSuccess(Tavra_SetALCMode(handle, 0));
    traffic();
    expectShutter(45, 6);
    EXPECT_THAT(traffic(), IsEmpty());
}

// Speed, target, weights.

TEST_F(AutoExposure, SpeedIsStoredAsItIs) {
    open();
    std::uint8_t a = 9, b = 9, c = 9, d = 9;
    expectSuccess(Tavra_GetALCControlSpeed(handle, &a, &b, &c, &d));
    EXPECT_THAT((std::vector<int>{a, b, c, d}), ElementsAre(0, 0, 3, 4));
    expectSuccess(Tavra_SetALCControlSpeed(handle, 255, 1, 0, 200));
    expectSuccess(Tavra_GetALCControlSpeed(handle, &a, &b, &c, &d));
    EXPECT_THAT((std::vector<int>{a, b, c, d}), ElementsAre(255, 1, 0, 200));
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(AutoExposure, TheTargetGoesToACameraWithAControlOfItsOwn) {
    for (const unsigned bit : {0u, 9u, 10u}) {
        usb.reset();
        DoubleCamera camera = limitedCamera();
        if (bit != 0) camera.setCapability(1, bit);
        camera.status(74) = 128;
        open(camera);
        expectTarget(128, 5, 5);
        expectSuccess(Tavra_SetTargetBrightness(handle, 200, 0, 255));
        expectTarget(200, 0, 255);
        if (bit == 0) {
            EXPECT_THAT(traffic(), IsEmpty());
        } else {
            EXPECT_THAT(traffic(), ElementsAre(writeStatus(0x804A, le16(200))));
            usb.failRequest(128);
            expectFailure(Tavra_SetTargetBrightness(handle, 7, 8, 9), 0xE0000005);
            expectTarget(7, 8, 9);
        }
        close();
    }
}

TEST_F(AutoExposure, WeightsAreStoredRowByRow) {
    open();
    std::array<std::uint8_t, 17> weights{};
    weights[16] = 0xEE;
    expectSuccess(Tavra_GetALCWeight(handle, weights.data()));
    for (std::size_t i = 0; i < 16; ++i) EXPECT_EQ(weights[i], 1);
    EXPECT_EQ(weights[16], 0xEE);
    std::array<std::uint8_t, 16> set{};
    for (std::size_t i = 0; i < 16; ++i) set[i] = static_cast<std::uint8_t>(17 * i);
    expectSuccess(Tavra_SetALCWeight(handle, set.data()));
    expectSuccess(Tavra_GetALCWeight(handle, weights.data()));
    EXPECT_TRUE(std::equal(set.begin(), set.end(), weights.begin()));
    expectFailure(Tavra_SetALCWeight(handle, nullptr), 87);
}

// Ranges.

TEST_F(AutoExposure, RangesOfANewHandle) {
    open(limitedCamera());
    expectShutterRange({0, 1, 0, 0});
    expectGainRange(20, 680);
    close();
    usb.camera().setIdentity16(44, 0xFFFE);  // no clock part
    open();
    expectShutterRange({1, 0, 0, 0});
    close();
    usb.camera().setIdentity16(44, 1);
    usb.camera().setScan32(36, 0);  // lines of one clock
    open();
    expectShutterRange({1, 0, 0, 0});
}

TEST_F(AutoExposure, ShutterRangeStaysInTheLibrary) {
    open(limitedCamera());
    expectSuccess(Tavra_SetShutterControlRange2(handle, 3, 4, 69999, 5));
    expectShutterRange({3, 4, 69999, 5});
    expectSuccess(Tavra_SetShutterControlRange(handle, 1, 2, 0xFFFF, 4));
    expectShutterRange({1, 2, 0xFFFF, 4});
    expectSuccess(Tavra_SetShutterControlRange2(handle, 1, 2, 0x10005, 4));
    std::uint16_t a = 0, b = 0, c = 0, d = 0;
    expectSuccess(Tavra_GetShutterControlRange(handle, &a, &b, &c, &d));
    EXPECT_THAT((std::vector<int>{a, b, c, d}), ElementsAre(1, 2, 5, 4)) << "the low 16 bits";
    expectFailure(Tavra_SetShutterControlRange2(handle, 5, 4, 5, 3), 87);
    expectFailure(Tavra_SetShutterControlRange(handle, 5, 100, 6, 0), 87);
    expectShutterRange({1, 2, 0x10005, 4});
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(AutoExposure, ShutterRangeGoesToTheCameraInLinesTopFirst) {
    open(controllingCamera());
    expectSuccess(Tavra_SetShutterControlRange2(handle, 0x2345, 4, 0x11170, 30));
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(69, le32(0x11170)), writeStatus(0x8047, le32(0x2345))));
    expectShutterRange({0x2345, 4, 0x11170, 30});
    for (std::uint32_t nth = 0; nth < 2; ++nth) {
        usb.failTransfer(nth);
        expectFailure(Tavra_SetShutterControlRange2(handle, nth, 1, 40, 2), 0xE0000005);
        EXPECT_EQ(traffic().size(), nth + 1);
        expectShutterRange({nth, 1, 40, 2});
    }
}

TEST_F(AutoExposure, EachRangeGoesOnlyToACameraThatControlsIt) {
    for (const unsigned bit : {9u, 10u}) {
        usb.reset();
        DoubleCamera camera = limitedCamera();
        camera.setCapability(1, bit);
        open(camera);
        expectSuccess(Tavra_SetShutterControlRange2(handle, 1, 0, 2, 0));
        EXPECT_EQ(traffic().size(), bit == 10 ? 2u : 0u);
        expectSuccess(Tavra_SetGainControlRange(handle, 30, 40));
        EXPECT_EQ(traffic().size(), bit == 9 ? 2u : 0u);
        close();
    }
}

TEST_F(AutoExposure, GainRangeGoesToTheCameraTopFirst) {
    open(controllingCamera());
    expectSuccess(Tavra_SetGainControlRange(handle, 0x0021, 0x0210));
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(75, le16(0x0210)), writeStatus(0x804C, le16(0x0021))));
    expectGainRange(0x0021, 0x0210);
    for (std::uint32_t nth = 0; nth < 2; ++nth) {
        usb.failTransfer(nth);
        expectFailure(Tavra_SetGainControlRange(handle, 50, static_cast<std::uint16_t>(60 + nth)),
                      0xE0000005);
        EXPECT_EQ(traffic().size(), nth + 1);
        expectGainRange(50, static_cast<std::uint16_t>(60 + nth));
    }
}

TEST_F(AutoExposure, AGainRangeUpsideDownIsStoredAndToldOf) {
    open(limitedCamera());
    EXPECT_EQ(Tavra_SetGainControlRange(handle, 10, 5), 1);
    EXPECT_EQ(lastError(), 87u);
    record().lastError = 0;
    expectGainRange(10, 5);
    expectFailure(Tavra_SetGainControlRange(handle, 10, 681), 87);
    expectFailure(Tavra_SetGainControlRange(handle, 700, 690), 87);
    expectGainRange(10, 5);
    expectSuccess(Tavra_SetGainControlRange(handle, 0, 680));
    close();
    usb.reset();
    open(controllingCamera());
    usb.failTransfer(0);
    expectFailure(Tavra_SetGainControlRange(handle, 10, 5), 0xE0000005);
    expectGainRange(10, 5);
}

TEST_F(AutoExposure, RangesInClocks) {
    open(limitedCamera());
    EXPECT_EQ(got(Tavra_GetAEMinExposureClock), 1u);
    EXPECT_EQ(got(Tavra_GetAEMaxExposureClock), 0u);
    expectSuccess(Tavra_SetAEMaxExposureClock(handle, 2345));
    expectShutterRange({0, 1, 23, 45});
    EXPECT_EQ(got(Tavra_GetAEMaxExposureClock), 2345u);
    expectSuccess(Tavra_SetAEMinExposureClock(handle, 3456));
    expectShutterRange({34, 56, 34, 56});
    EXPECT_EQ(got(Tavra_GetAEMinExposureClock), 3456u);
    expectSuccess(Tavra_SetAEMaxExposureClock(handle, 7000030));
    expectSuccess(Tavra_SetAEMinExposureClock(handle, 5021));
    expectSuccess(Tavra_SetAEMaxExposureClock(handle, 0));
    expectShutterRange({0, 0, 0, 0});
    expectFailure(Tavra_SetAEMaxExposureClock(handle, 7000031), 87);
    expectFailure(Tavra_SetAEMinExposureClock(handle, 7000031), 87);
    expectShutterRange({0, 0, 0, 0});
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(AutoExposure, RangesInClocksGoToTheCameraToo) {
    open(controllingCamera());
    expectSuccess(Tavra_SetAEMaxExposureClock(handle, 2345));
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(69, le32(23)), writeStatus(0x8047, le32(0))));
    expectSuccess(Tavra_SetAEMinExposureClock(handle, 1234));
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(69, le32(23)), writeStatus(0x8047, le32(12))));
}

TEST_F(AutoExposure, NullOutputsAreRefused) {
    open();
    std::uint8_t byte = 0;
    std::uint16_t word = 0;
    std::uint32_t number = 0;
    expectFailure(Tavra_GetALCMode(handle, nullptr), 87);
    expectFailure(Tavra_GetALCControlSpeed(handle, &byte, &byte, &byte, nullptr), 87);
    expectFailure(Tavra_GetTargetBrightness(handle, &byte, nullptr, &byte), 87);
    expectFailure(Tavra_GetALCWeight(handle, nullptr), 87);
    expectFailure(Tavra_GetGainControlRange(handle, nullptr, &word), 87);
    expectFailure(Tavra_GetShutterControlRange(handle, &word, &word, nullptr, &word), 87);
    expectFailure(Tavra_GetShutterControlRange2(handle, &number, &number, &number, nullptr), 87);
    expectFailure(Tavra_GetAEMaxExposureClock(handle, nullptr), 87);
    expectFailure(Tavra_GetAEMinExposureClock(handle, nullptr), 87);
}

}  // namespace
}  // namespace tavra::test
