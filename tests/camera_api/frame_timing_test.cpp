// Clock, frame rate and vertical blanking.
#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

class FrameTiming : public CameraTest {
  protected:
    static Bytes longClock(std::uint32_t mode, std::uint32_t clock) {
        Bytes data{10, 0x22};
        for (const std::uint8_t byte : le32(mode)) data.push_back(byte);
        for (const std::uint8_t byte : le32(clock)) data.push_back(byte);
        return data;
    }
    void expectClock(std::uint32_t mode, std::uint32_t clock) {
        std::uint32_t m = 99, c = 99;
        expectSuccess(Tavra_GetClock(handle, &m, &c));
        EXPECT_EQ(m, mode);
        EXPECT_EQ(c, clock);
    }
    float fps() {
        float value = -1;
        expectSuccess(Tavra_GetOutputFPS(handle, &value));
        return value;
    }
};

TEST_F(FrameTiming, TheClockIsReadAtOpen) {
    DoubleCamera camera;
    camera.clockMode = 4;
    camera.clock = 36000000;
    open(camera);
    expectClock(4, 36000000);
    close();
    usb.camera().longClockReply = false;
    open();
    expectClock(0, 36000000);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(FrameTiming, ClocksGoOutInTenBytesAndAreReadBack) {
    open();
    expectSuccess(Tavra_SetClock(handle, 1, 20000000));
    EXPECT_THAT(traffic(), ElementsAre(toDevice(34, 0, 0, longClock(1, 20000000)), readClock()));
    expectClock(1, 20000000);
}

TEST_F(FrameTiming, OldFirmwareTakesSixBytes) {
    for (const std::uint16_t firmware : {0, 2, 3}) {
        usb.reset();
        DoubleCamera camera;
        camera.setIdentity16(8, firmware);
        camera.longClockReply = firmware >= 3;
        open(camera);
        expectSuccess(Tavra_SetClock(handle, 1, 0x12345678));
        const Bytes sixBytes{6, 0x22, 0x78, 0x56, 0x34, 0x12};
        EXPECT_EQ(traffic()[0], toDevice(34, 0, 0, firmware < 3 ? sixBytes : longClock(1, 0x12345678)));
        expectClock(firmware < 3 ? 0 : 1, 0x12345678);
        close();
    }
}

TEST_F(FrameTiming, Mode0IsSentThoughItIsInNoMask) {
    open();
    expectSuccess(Tavra_SetClock(handle, 0, 5));
    EXPECT_EQ(traffic()[0], toDevice(34, 0, 0, longClock(0, 5)));
}

TEST_F(FrameTiming, OtherModesMustBeOffered) {
    DoubleCamera camera;
    camera.setIdentity32(40, 5);
    open(camera);
    expectSuccess(Tavra_SetClock(handle, 4, 5));
    traffic();
    for (const std::uint32_t mode : {2u, 3u, 7u, 0x80000000u})
        expectFailure(Tavra_SetClock(handle, mode, 20000000), 87);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(FrameTiming, TheFreeClockHasLimits) {
    DoubleCamera camera;
    camera.setIdentity32(40, 0x80000000);
    open(camera);
    expectFailure(Tavra_SetClock(handle, 0x80000000, 11999999), 87);
    expectFailure(Tavra_SetClock(handle, 0x80000000, 48000001), 87);
    EXPECT_THAT(traffic(), IsEmpty());
    expectSuccess(Tavra_SetClock(handle, 0x80000000, 12000000));
    expectSuccess(Tavra_SetClock(handle, 0x80000000, 48000000));
    expectClock(0x80000000, 48000000);
}

TEST_F(FrameTiming, ClockRequestsOfAnotherLengthFail) {
    open();
    usb.shortenRequest(34, 9, 1);
    expectFailure(Tavra_SetClock(handle, 0, 5), 0xE0000005);
    EXPECT_EQ(traffic().size(), 1u);
    for (std::uint32_t length = 0; length < 10; ++length) {
        if (length == 6) continue;
        UsbDouble::Fault fault;
        fault.request = 34;
        fault.requestType = 0xC0;
        fault.transferred = length;
        usb.addFault(fault);
        expectFailure(Tavra_SetClock(handle, 0, 5), 0xE0000005);
    }
}

TEST_F(FrameTiming, AClockThatCannotBeReadBackIsTheOneThatWasSent) {
    open();
    usb.failTransfer(1);
    expectFailure(Tavra_SetClock(handle, 1, 20000000), 0xE0000005);
    expectClock(1, 20000000);
    usb.failTransfer(0);
    expectFailure(Tavra_SetClock(handle, 0, 5), 0xE0000005);
    expectClock(1, 20000000);
}

TEST_F(FrameTiming, WhatTheCameraMadeOfTheClockCounts) {
    open();
    usb.camera().longClockReply = false;
    expectSuccess(Tavra_SetClock(handle, 1, 20000000));
    expectClock(0, 20000000);
}

TEST_F(FrameTiming, FrameClockIsInTheScanRecord) {
    open();
    std::uint16_t lines = 0, clocks = 0;
    expectSuccess(Tavra_GetFrameClock(handle, &lines, &clocks));
    EXPECT_EQ(lines, 525);
    EXPECT_EQ(clocks, 780);
}

TEST_F(FrameTiming, FpsIsTheClockOverTheFrame) {
    DoubleCamera camera;
    camera.clock = 40950000;  // 525 x 780 = 409500
    open(camera);
    EXPECT_FLOAT_EQ(fps(), 100.0F);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(FrameTiming, AStoredClockOf0GivesNoFrames) {
    DoubleCamera camera;
    camera.clock = 0;
    open(camera);
    EXPECT_EQ(fps(), 0.0F);
    close();
    usb.reset();
    camera.clock = 1000;
    camera.setScan16(26, 0);
    open(camera);
    EXPECT_EQ(fps(), 0.0F) << "nor does a frame without clocks";
}

TEST_F(FrameTiming, LongScanModesTakeTheExposureIn) {
    for (const std::uint16_t mode : {4, 32}) {
        for (const std::uint32_t lines : {100u, 525u, 1050u, 0x10000u}) {
            usb.reset();
            DoubleCamera camera;
            camera.setScan16(22, mode);
            camera.clock = 40950000;
            camera.exposureBlock[2] = static_cast<std::uint8_t>(lines);
            camera.exposureBlock[3] = static_cast<std::uint8_t>(lines >> 8);
            camera.exposureBlock[10] = static_cast<std::uint8_t>(lines >> 16);
            open(camera);
            EXPECT_FLOAT_EQ(fps(),
                            lines <= 525 ? 100.0F : 40950000.0F / (780.0F * static_cast<float>(lines)));
            EXPECT_THAT(traffic(), IsEmpty()) << "exposure control knows it";
            close();
        }
    }
}

TEST_F(FrameTiming, LongScanModesAskACameraThatControlsItsExposure) {
    DoubleCamera camera;
    camera.setScan16(22, 4);
    camera.clock = 40950000;
    camera.setCapability(1, 10);
    camera.status(73) = 1;
    open(camera);
    usb.camera().exposureBlock[3] = 8;  // 2048 lines
    EXPECT_FLOAT_EQ(fps(), 40950000.0F / (780.0F * 2048.0F));
    EXPECT_THAT(traffic(), ElementsAre(readExposure()));
    usb.shortenRequest(33, 63);
    float value = 5;
    expectFailure(Tavra_GetOutputFPS(handle, &value), 0xE0000005);
}

TEST_F(FrameTiming, CamerasMayTellTheirTimingInStatusWords) {
    DoubleCamera camera;
    camera.setCapability(1, 4);
    camera.status(86) = 0x8000;
    camera.status(87) = 0x0012;
    open(camera);
    EXPECT_FLOAT_EQ(fps(), 18.5F) << "0x128000 / 65536";
    EXPECT_THAT(traffic(), ElementsAre(readStatus(86, 2)));
}

TEST_F(FrameTiming, CamerasMayTellTheirTimingInPages) {
    DoubleCamera camera = pageCamera();
    camera.setCapability(1, 4);
    camera.pageRegister(21, 20) = 72000000;
    camera.pageRegister(21, 84) = 1000000;
    open(camera);
    EXPECT_FLOAT_EQ(fps(), 72.0F);
    EXPECT_THAT(traffic(), ElementsAre(readPage(21, 20), readPage(21, 84)));
    usb.failTransfer(1);
    float value = 5;
    expectFailure(Tavra_GetOutputFPS(handle, &value), 0xE0000005);
    EXPECT_EQ(value, 0.0F);
}

TEST_F(FrameTiming, VBlankThatIsNotThere) {
    open();
    std::uint32_t lines = 9;
    expectSuccess(Tavra_GetVBlankForFPS(handle, &lines));
    EXPECT_EQ(lines, 0u);
    lines = 9;
    expectSuccess(Tavra_GetMaxVBlankForFPS(handle, &lines));
    EXPECT_EQ(lines, 0u);
    expectSuccess(Tavra_SetVBlankForFPS(handle, 0));
    expectFailure(Tavra_SetVBlankForFPS(handle, 1), 87);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(FrameTiming, VBlankInAStatusWord) {
    DoubleCamera camera;
    camera.setCapability(1, 5);
    camera.setCapability(8, 5);  // the page's maximum, but no page
    open(camera);
    expectSuccess(Tavra_SetVBlankForFPS(handle, 300));
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(23, le16(300)), apply(), readScan()));
    std::uint32_t lines = 0;
    expectSuccess(Tavra_GetVBlankForFPS(handle, &lines));
    EXPECT_EQ(lines, 300u);
    expectSuccess(Tavra_GetMaxVBlankForFPS(handle, &lines));
    EXPECT_EQ(lines, 2035u);
    EXPECT_THAT(traffic(), ElementsAre(readStatus(23)));
    expectFailure(Tavra_SetVBlankForFPS(handle, 0x10000), 87);
    for (std::uint32_t nth = 0; nth < 3; ++nth) {
        usb.failTransfer(nth);
        expectFailure(Tavra_SetVBlankForFPS(handle, 1), 0xE0000005);
    }
}

TEST_F(FrameTiming, VBlankInAPage) {
    DoubleCamera camera = pageCamera();
    camera.setCapability(1, 5);
    camera.pageRegister(21, 88) = 4000;
    open(camera);
    expectSuccess(Tavra_SetVBlankForFPS(handle, 0x12345));
    EXPECT_THAT(traffic(), ElementsAre(writePage(2, 16, 0x12345), apply(), readScan()));
    std::uint32_t lines = 0;
    expectSuccess(Tavra_GetVBlankForFPS(handle, &lines));
    EXPECT_EQ(lines, 0x12345u);
    expectSuccess(Tavra_GetMaxVBlankForFPS(handle, &lines));
    EXPECT_EQ(lines, 2035u) << "the page's maximum needs a capability";
    close();
    usb.camera().setCapability(8, 5);
    open();
    expectSuccess(Tavra_GetMaxVBlankForFPS(handle, &lines));
    EXPECT_EQ(lines, 4000u);
}

TEST_F(FrameTiming, VBlankReadsTheFrameAgain) {
    DoubleCamera camera;
    camera.setCapability(1, 5);
    open(camera);
    usb.camera().setScan16(26, 825);
    expectSuccess(Tavra_SetVBlankForFPS(handle, 300));
    std::uint16_t lines = 0, clocks = 0;
    expectSuccess(Tavra_GetFrameClock(handle, &lines, &clocks));
    EXPECT_EQ(lines, 825);
}

}  // namespace
}  // namespace tavra::test
