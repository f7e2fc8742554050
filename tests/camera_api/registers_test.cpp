// Status words and registers as the application reaches them.
#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

class Registers : public CameraTest {
  protected:
    void openWithRegisters() {
        DoubleCamera camera;
        camera.setCapability(4, 0);  // function 64
        open(camera);
    }
};

TEST_F(Registers, StatusWordsGoOutAndComeIn) {
    open();
    usb.camera().status(77, 3) = 0x1234;
    usb.camera().status(78, 3) = 0x5678;
    std::uint16_t words[2] = {};
    expectSuccess(Tavra_GetFPGAStatusEx(handle, 3, 77, 2, words));
    EXPECT_THAT(words, ElementsAre(0x1234, 0x5678));
    const std::uint16_t out[] = {0xAABB, 0xCCDD};
    expectSuccess(Tavra_SetFPGAStatusEx(handle, 129, 0xC001, 2, out));
    expectSuccess(Tavra_GetFPGAStatus(handle, 5, 1, words));
    expectSuccess(Tavra_SetFPGAStatus(handle, 0x8030, 1, out));
    EXPECT_THAT(traffic(),
                ElementsAre(readStatus(77, 2, 3), writeStatus(0xC001, {0xBB, 0xAA, 0xDD, 0xCC}, 129),
                            readStatus(5), writeStatus(0x8030, {0xBB, 0xAA})));
}

TEST_F(Registers, AnAnswerOfAnotherLengthIsAFailure) {
    open();
    std::uint16_t words[4] = {};
    for (std::uint32_t length = 0; length < 8; ++length) {
        usb.shortenRequest(128, length, 1);
        expectFailure(Tavra_GetFPGAStatus(handle, 0, 4, words), 0xE0000005);
        usb.shortenRequest(128, length, 1);
        expectFailure(Tavra_SetFPGAStatus(handle, 0, 4, words), 0xE0000005);
    }
    usb.failRequest(128);
    expectFailure(Tavra_GetFPGAStatus(handle, 0, 4, words), 0xE0000005);
}

TEST_F(Registers, MoreWordsThanATransferHoldsAreABadArgument) {
    open();
    std::vector<std::uint16_t> words(65535);
    expectSuccess(Tavra_GetFPGAStatus(handle, 0, 32767, words.data()));
    EXPECT_EQ(traffic().back().length, 65534);
    expectFailure(Tavra_GetFPGAStatus(handle, 0, 32768, words.data()), 87);
    expectFailure(Tavra_SetFPGAStatus(handle, 0, 65535, words.data()), 87);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(Registers, LegacyTypesHaveNoStatusWords) {
    for (const std::uint16_t type : {773, 1541, 1797, 2053}) {
        usb.reset();
        open(legacyCamera(type));
        std::uint16_t word = 0;
        expectFailure(Tavra_GetFPGAStatus(handle, 1, 1, &word), 0xE0000021);
        expectFailure(Tavra_SetFPGAStatus(handle, 1, 1, &word), 0xE0000021);
        expectFailure(Tavra_GetFPGAStatusEx(handle, 1, 1, 1, &word), 0xE0000021);
        expectFailure(Tavra_SetFPGAStatusEx(handle, 1, 1, 1, &word), 0xE0000021);
        EXPECT_THAT(traffic(), IsEmpty());
        close();
    }
}

TEST_F(Registers, RegistersNeedFunction64) {
    open();
    std::uint32_t value = 0;
    expectFailure(Tavra_GetFPGAData2(handle, 1, 0, &value, 4), 0xE0000021);
    expectFailure(Tavra_SetFPGAData2(handle, 1, 0, &value, 4), 0xE0000021);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(Registers, ASizeThatIsNoMultipleOf4IsABadArgument) {
    openWithRegisters();
    std::uint8_t bytes[8] = {};
    for (const std::uint16_t size : {1, 2, 3, 5, 6, 7}) {
        expectFailure(Tavra_GetFPGAData2(handle, 1, 0, bytes, size), 87);
        expectFailure(Tavra_SetFPGAData2(handle, 1, 0, bytes, size), 87);
    }
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(Registers, ASizeOf0SucceedsWithoutATransfer) {
    openWithRegisters();
    expectSuccess(Tavra_GetFPGAData2(handle, 1, 0, nullptr, 0));
    expectSuccess(Tavra_SetFPGAData2(handle, 1, 0, nullptr, 0));
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(Registers, LongAccessesAreCutInPiecesOf64) {
    openWithRegisters();
    std::vector<std::uint8_t> bytes(200);
    for (std::uint32_t i = 0; i < 200; i += 4) usb.camera().registers[{0x11, 0x12340 + i}] = i;
    expectSuccess(Tavra_GetFPGAData2(handle, 0x11, 0x12340, bytes.data(), 200));
    EXPECT_THAT(traffic(), ElementsAre(readRegister(0x11, 0x12340, 64), readRegister(0x11, 0x12380, 64),
                                       readRegister(0x11, 0x123C0, 64), readRegister(0x11, 0x12400, 8)));
    for (std::uint32_t i = 0; i < 200; i += 4) EXPECT_EQ(bytes[i], i);
    expectSuccess(Tavra_SetFPGAData2(handle, 2, 0xFFFFC0, bytes.data(), 72));
    const Traffic writes = traffic();
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_EQ(writes[0], writeRegister(2, 0xFFFFC0, Bytes(bytes.begin(), bytes.begin() + 64)));
    EXPECT_EQ(writes[1], writeRegister(2, 0x1000000, Bytes(bytes.begin() + 64, bytes.begin() + 72)))
        << "the address travels in 24 bits";
}

TEST_F(Registers, TheWordIsSplitOverValueAndIndex) {
    openWithRegisters();
    std::uint32_t value = 0;
    expectSuccess(Tavra_GetFPGAData2(handle, 0x7F, 0x00ABCDEF, &value, 4));
    const Traffic requests = traffic();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].value, 0xEF7F);
    EXPECT_EQ(requests[0].index, 0xABCD);
}

TEST_F(Registers, AFailingPieceEndsTheAccess) {
    openWithRegisters();
    std::vector<std::uint8_t> bytes(200);
    usb.failTransfer(1);
    expectFailure(Tavra_GetFPGAData2(handle, 1, 0, bytes.data(), 200), 0xE0000005);
    EXPECT_EQ(traffic().size(), 2u);
    usb.failTransfer(2);
    expectFailure(Tavra_SetFPGAData2(handle, 1, 0, bytes.data(), 200), 0xE0000005);
    EXPECT_EQ(traffic().size(), 3u);
    usb.shortenRequest(130, 63, 1);
    expectFailure(Tavra_GetFPGAData2(handle, 1, 0, bytes.data(), 200), 0xE0000005);
    EXPECT_EQ(traffic().size(), 1u);
}

TEST_F(Registers, TheRegisterMapOfTheHandleIsSelector1) {
    openWithRegisters();
    usb.camera().registers[{1, 0x123454}] = 0x89ABCDEF;
    std::uint8_t bytes[8] = {};
    EXPECT_EQ(record().Read(0xFF123450, bytes, 8), 0u);
    EXPECT_EQ(Bytes(bytes + 4, bytes + 8), le32(0x89ABCDEF));
    EXPECT_EQ(record().Write(0xFF123450, bytes + 4, 4), 0u);
    EXPECT_THAT(traffic(), ElementsAre(readRegister(1, 0x123450, 8),
                                       writeRegister(1, 0x123450, {0xEF, 0xCD, 0xAB, 0x89})));
    EXPECT_EQ(lastError(), 0u);
}

TEST_F(Registers, AFailureOfTheRegisterMapIsTheLastErrorOfTheHandle) {
    openWithRegisters();
    std::uint8_t bytes[8] = {};
    usb.failTransfer(0);
    EXPECT_EQ(record().Read(4, bytes, 4), 0xE0000005u);
    EXPECT_EQ(lastError(), 0xE0000005u);
    EXPECT_EQ(record().Write(4, bytes, 6), 87u);
    EXPECT_EQ(lastError(), 87u);
    close();
    usb.reset();
    open();
    EXPECT_EQ(record().Read(4, bytes, 4), 0xE0000021u);
    EXPECT_EQ(lastError(), 0xE0000021u);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(Registers, TheDeviceHandleAndItsAddressAreHandedOut) {
    open();
    EXPECT_EQ(Tavra_GetTavraUSBHandle(handle), record().control.device());
    std::uint8_t address = 0;
    expectSuccess(Tavra_GetUSBFunctionAddress(handle, &address));
    EXPECT_EQ(address, 5);
    close();
    usb.reset();
    DoubleCamera camera;
    camera.functionAddress = 0x1FE;
    open(camera);
    expectSuccess(Tavra_GetUSBFunctionAddress(handle, &address));
    EXPECT_EQ(address, 0xFE) << "a byte is used";
}

}  // namespace
}  // namespace tavra::test
