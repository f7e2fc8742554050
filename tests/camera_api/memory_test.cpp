// User memory and I2C.
#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using Memory = CameraTest;

TEST_F(Memory, UserMemoryStartsAtAddress512) {
    open();
    const std::uint8_t out[] = {1, 2, 3};
    std::uint8_t in[4] = {9, 9, 9, 9};
    expectSuccess(Tavra_WriteUserMemory(handle, out, 10, 3));
    expectSuccess(Tavra_ReadUserMemory(handle, in, 10, 3));
    EXPECT_THAT(in, ElementsAre(1, 2, 3, 9));
    EXPECT_EQ(usb.camera().memory[522], 1);
    EXPECT_THAT(usb.calls(), ElementsAre(OperationCall{"UsbWriteMemory", {522, 524}},
                                         OperationCall{"UsbReadMemory", {522, 524}}));
}

TEST_F(Memory, WhatRunsPastTheEndIsCut) {
    open();
    std::vector<std::uint8_t> buffer(100, 7);
    expectSuccess(Tavra_ReadUserMemory(handle, buffer.data(), 1000, 100));
    EXPECT_THAT(usb.calls(), ElementsAre(OperationCall{"UsbReadMemory", {1512, 1535}}));
    EXPECT_EQ(buffer[23], 0);
    EXPECT_EQ(buffer[24], 7);
    usb.forgetTraffic();
    expectSuccess(Tavra_WriteUserMemory(handle, buffer.data(), 1023, 65535));
    EXPECT_THAT(usb.calls(), ElementsAre(OperationCall{"UsbWriteMemory", {1535, 1535}}));
}

TEST_F(Memory, OffsetsPastTheEndAndNothingAreBadArguments) {
    open();
    std::uint8_t byte = 0;
    expectFailure(Tavra_ReadUserMemory(handle, &byte, 1024, 1), 87);
    expectFailure(Tavra_WriteUserMemory(handle, &byte, 65535, 1), 87);
    expectFailure(Tavra_ReadUserMemory(handle, &byte, 0, 0), 87);
    expectFailure(Tavra_WriteUserMemory(handle, &byte, 0, 0), 87);
    EXPECT_THAT(usb.calls(), IsEmpty());
}

TEST_F(Memory, FailuresAreControlFailures) {
    open();
    usb.camera().memoryError = 23;
    std::uint8_t byte = 0;
    expectFailure(Tavra_ReadUserMemory(handle, &byte, 0, 1), 0xE0000005);
    expectFailure(Tavra_WriteUserMemory(handle, &byte, 0, 1), 0xE0000005);
}

TEST_F(Memory, I2cWith8BitRegisters) {
    open();
    const std::uint8_t out[] = {5, 6, 7};
    std::uint8_t in[3] = {};
    expectSuccess(Tavra_WriteI2CB(handle, 1, 0x50, 0xFE, 3, out));
    expectSuccess(Tavra_ReadI2CB(handle, 1, 0x50, 0xFE, 3, in));
    EXPECT_THAT(in, ElementsAre(5, 6, 7));
    EXPECT_THAT(usb.calls(), ElementsAre(OperationCall{"UsbWriteI2CByte", {1, 0x50, 0xFE, 3}},
                                         OperationCall{"UsbReadI2CByte", {1, 0x50, 0xFE, 3}}));
}

TEST_F(Memory, I2cWith16BitRegisters) {
    open();
    std::vector<std::uint8_t> out(300, 8), in(300);
    expectSuccess(Tavra_WriteI2CW(handle, 2, 0x36, 0x1234, 300, out.data()));
    expectSuccess(Tavra_ReadI2CW(handle, 2, 0x36, 0x1234, 300, in.data()));
    EXPECT_EQ(in, out);
    EXPECT_THAT(usb.calls(), ElementsAre(OperationCall{"UsbWriteI2CWord", {2, 0x36, 0x1234, 300}},
                                         OperationCall{"UsbReadI2CWord", {2, 0x36, 0x1234, 300}}));
}

TEST_F(Memory, OneI2cAddressIsReserved) {
    open();
    std::uint8_t byte = 0;
    expectFailure(Tavra_ReadI2CB(handle, 0, 0x51, 0, 1, &byte), 0xE0000020);
    expectFailure(Tavra_WriteI2CB(handle, 0, 0x51, 0, 1, &byte), 0xE0000020);
    expectFailure(Tavra_ReadI2CW(handle, 0, 0x51, 0, 1, &byte), 0xE0000020);
    expectFailure(Tavra_WriteI2CW(handle, 0, 0x51, 0, 1, &byte), 0xE0000020);
    EXPECT_THAT(usb.calls(), IsEmpty());
}

TEST_F(Memory, I2cFailuresAreControlFailures) {
    open();
    usb.camera().i2cError = 31;
    std::uint8_t byte = 0;
    expectFailure(Tavra_ReadI2CB(handle, 0, 1, 0, 1, &byte), 0xE0000005);
    expectFailure(Tavra_WriteI2CB(handle, 0, 1, 0, 1, &byte), 0xE0000005);
    expectFailure(Tavra_ReadI2CW(handle, 0, 1, 0, 1, &byte), 0xE0000005);
    expectFailure(Tavra_WriteI2CW(handle, 0, 1, 0, 1, &byte), 0xE0000005);
}

}  // namespace
}  // namespace tavra::test
