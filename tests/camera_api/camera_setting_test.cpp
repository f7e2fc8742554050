#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using namespace request;
using CameraSetting = CameraTest;

TEST_F(CameraSetting, CommandsAreTwoBytes) {
    open();
    expectSuccess(Tavra_CameraSetting(handle, 0x0A0B));
    EXPECT_THAT(traffic(), ElementsAre(toDevice(129, 0, 0, {0x0B, 0x0A})));
    usb.shortenRequest(129, 1);
    expectFailure(Tavra_CameraSetting(handle, 0x9000), 0xE0000005);
    EXPECT_EQ(traffic().size(), 1u);
}

TEST_F(CameraSetting, Bits12And15ReadTheStateAgain) {
    DoubleCamera camera;
    camera.setIdentity32(18, 7);
    camera.setCapability(1, 6);
    open(camera);
    usb.camera().setScan32(6, 320);
    usb.camera().transferBits = 2;
    usb.camera().clock = 99;
    usb.camera().status(63) = 1;
    for (const std::uint16_t command : {0x1000, 0x8000}) {
        expectSuccess(Tavra_CameraSetting(handle, command));
        EXPECT_THAT(traffic(), ElementsAre(toDevice(129, 0, 0, le16(command)), readScan(), readBits(),
                                           readClock(), readExposure(), readDigitalGain(), readStatus(63),
                                           readScan(), readExposure(), readDigitalGain()));
    }
    EXPECT_EQ(record().imagesA.shape().width, 320u);
    EXPECT_EQ(record().geometry->transferBits, 2u);
    EXPECT_EQ(record().geometry->rawDataSize, 2u * 320u * 480u);
    EXPECT_EQ(record().geometry->clock().hz, 99u);
    EXPECT_EQ(record().mirrorMode, 0x10);
    EXPECT_EQ(record().preview.mask.width, 320u);
}

TEST_F(CameraSetting, Bit13GoesToTheSetupMemoryOfTwoTypes) {
    for (const std::uint16_t type : {273, 529}) {
        usb.reset();
        DoubleCamera camera;
        camera.setIdentity16(4, type);
        camera.setupMemory[14] = 0x34;
        camera.setupMemory[15] = 0x02;
        open(camera);
        expectSuccess(Tavra_CameraSetting(handle, 0x2C00));
        EXPECT_THAT(usb.calls(), ElementsAre(OperationCall{"UsbReadSetupMemory", {14, 15}},
                                             OperationCall{"UsbWriteSetupMemory", {14, 15}}));
        EXPECT_THAT(traffic(), ElementsAre(toDevice(129, 0, 0, {0x00, 0x2C}))) << "nothing is read again";
        EXPECT_EQ(usb.camera().setupMemory[14], 0x34);
        EXPECT_EQ(usb.camera().setupMemory[15], 0x1E);
        usb.camera().setupMemoryError = 31;
        expectFailure(Tavra_CameraSetting(handle, 0x2000), 0xE0000005);
        close();
    }
    usb.reset();
    open();
    expectSuccess(Tavra_CameraSetting(handle, 0x2C00));
    EXPECT_THAT(usb.calls(), IsEmpty());
}

TEST_F(CameraSetting, BitsThatTheSetupMemoryHasStaySet) {
    DoubleCamera camera;
    camera.setIdentity16(4, 273);
    open(camera);
    const struct {
        std::uint16_t before, command, after;
    } rows[] = {{0x0834, 0x2400, 0x1C34},  // bit 11 was there, bit 10 comes
                {0xEFCB, 0x2000, 0xFFCB},  // nothing but bit 12 comes
                {0xFFFF, 0x2800, 0xFFFF},  // nothing is cleared
                {0x0000, 0x2BFF, 0x1800},  // nothing but bits 10 and 11 is taken from the command
                {0x0000, 0x6400, 0x1400}};
    for (const auto& row : rows) {
        Bytes& memory = usb.camera().setupMemory;
        memory[14] = static_cast<std::uint8_t>(row.before);
        memory[15] = static_cast<std::uint8_t>(row.before >> 8);
        expectSuccess(Tavra_CameraSetting(handle, row.command));
        EXPECT_EQ(memory[14] | memory[15] << 8, row.after) << std::hex << row.command;
    }
}

TEST_F(CameraSetting, AStateThatCannotBeReadIsTheResult) {
    open();
    for (std::uint32_t nth = 0; nth < 4; ++nth) {
        usb.failTransfer(nth);
        expectFailure(Tavra_CameraSetting(handle, 0x1000), 0xE0000005);
    }
}

TEST_F(CameraSetting, TheMirrorOfTheApplicationStays) {
    DoubleCamera camera;
    camera.setCapability(1, 7);
    camera.status(63) = 0xFFF2;
    open(camera);
    record().mirrorMode = 0x03;
    expectSuccess(Tavra_CameraSetting(handle, 0x1000));
    EXPECT_EQ(record().mirrorMode, 0x23);
}

}  // namespace
}  // namespace tavra::test
