// The stored serial and user records through the interface; the text rules are tested with the record itself.
#include <string>

#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using StoredIdentity = CameraTest;

TEST_F(StoredIdentity, EachRecordHasItsPlace) {
    open();
    char text[16] = {};
    std::uint32_t id = 0;
    expectSuccess(Tavra_WriteCameraSerialIDA(handle, 0x01020304, "serial", 16));
    expectSuccess(Tavra_WriteCameraUserIDW(handle, 0x0A0B0C0D, u"user", 16));
    EXPECT_EQ(usb.camera().memory[0], 4);
    EXPECT_EQ(usb.camera().memory[256], 0x0D);
    EXPECT_EQ(usb.camera().memory[260], 128);
    expectSuccess(Tavra_ReadCameraSerialIDA(handle, &id, text, sizeof text));
    EXPECT_EQ(id, 0x01020304u);
    EXPECT_STREQ(text, "serial");
    expectSuccess(Tavra_ReadCameraUserIDA(handle, &id, text, sizeof text));
    EXPECT_EQ(id, 0x0A0B0C0Du);
    EXPECT_STREQ(text, "user");
    EXPECT_THAT(
        usb.calls(),
        ElementsAre(OperationCall{"UsbWriteMemory", {0, 255}}, OperationCall{"UsbWriteMemory", {256, 511}},
                    OperationCall{"UsbReadMemory", {0, 255}}, OperationCall{"UsbReadMemory", {256, 511}}));
}

TEST_F(StoredIdentity, WideReadersGetEitherKindOfText) {
    open();
    TavraWChar text[16] = {};
    std::uint32_t id = 0;
    expectSuccess(Tavra_WriteCameraUserIDA(handle, 1, "narrow", 16));
    expectSuccess(Tavra_ReadCameraUserIDW(handle, &id, text, sizeof text));
    EXPECT_EQ(std::u16string(text), u"narrow");
    expectSuccess(Tavra_WriteCameraSerialIDW(handle, 2, u"wide", 16));
    expectSuccess(Tavra_ReadCameraSerialIDW(handle, &id, text, sizeof text));
    EXPECT_EQ(std::u16string(text), u"wide");
}

TEST_F(StoredIdentity, ALongTextIsCutTo249Bytes) {
    open();
    const std::string text(300, 't');
    expectSuccess(Tavra_WriteCameraUserIDA(handle, 1, text.c_str(), 300));
    EXPECT_EQ(usb.camera().memory[261], 249);
    EXPECT_EQ(usb.camera().memory[256 + 6 + 248], 't');
    EXPECT_EQ(usb.camera().memory[256 + 6 + 249], 0);
}

TEST_F(StoredIdentity, TheBufferIsClearedFirst) {
    open();
    char text[8] = "xxxxxxx";
    std::uint32_t id = 9;
    expectSuccess(Tavra_ReadCameraUserIDA(handle, &id, text, sizeof text));
    EXPECT_EQ(id, 0u);
    EXPECT_EQ(std::string(text, 8), std::string(8, '\0'));
    expectSuccess(Tavra_ReadCameraUserIDA(handle, &id, nullptr, 0));
    expectSuccess(Tavra_ReadCameraUserIDW(handle, &id, nullptr, 0));
}

TEST_F(StoredIdentity, ARecordThatCannotBeReadIsEmptyAndTheCallSucceeds) {
    open();
    expectSuccess(Tavra_WriteCameraUserIDA(handle, 5, "text", 16));
    usb.camera().memoryError = 31;
    char text[8] = "xxxxxxx";
    std::uint32_t id = 9;
    EXPECT_EQ(Tavra_ReadCameraUserIDA(handle, &id, text, sizeof text), 1);
    EXPECT_EQ(lastError(), 0xE0000005u);
    EXPECT_EQ(id, 0u);
    EXPECT_STREQ(text, "");
}

TEST_F(StoredIdentity, ARecordThatCannotBeWrittenFails) {
    open();
    usb.camera().memoryError = 31;
    expectFailure(Tavra_WriteCameraUserIDA(handle, 5, "text", 16), 0xE0000005);
    expectFailure(Tavra_WriteCameraSerialIDW(handle, 5, nullptr, 0), 0xE0000005);
}

}  // namespace
}  // namespace tavra::test
