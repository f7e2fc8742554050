// Identity and capabilities as the application asks for them.
#include "camera_api/camera_fixture.h"
#include "platform/library_version.h"

namespace tavra::test {
namespace {

class Identity : public CameraTest {
  protected:
    std::uint32_t colorArray() {
        std::uint16_t code = 0;
        EXPECT_EQ(Tavra_GetColorArray(handle, &code), 1);
        return code;
    }
};

TEST_F(Identity, FourVersionWords) {
    open();
    std::uint16_t vendor = 0, type = 0, hardware = 0, firmware = 0;
    expectSuccess(Tavra_GetCameraVersion(handle, &vendor, &type, &hardware, &firmware));
    EXPECT_EQ(vendor, 0x2E6B);
    EXPECT_EQ(type, 8214);
    EXPECT_EQ(hardware, 1);
    EXPECT_EQ(firmware, 256);
}

TEST_F(Identity, HasFunctionClearsItsOutputBeforeItLooksAtTheHandle) {
    std::uint32_t present = 9;
    EXPECT_EQ(Tavra_HasFunction(nullptr, 256, &present), 0);
    EXPECT_EQ(present, 0u);
    open();
    expectSuccess(Tavra_HasFunction(handle, 256, &present));
    EXPECT_EQ(present, 1u);
    expectSuccess(Tavra_HasFunction(handle, 64, &present));
    EXPECT_EQ(present, 0u);
}

TEST_F(Identity, MasksOfTheIdentityBlock) {
    DoubleCamera camera;
    camera.setIdentity32(14, 0x11223344);
    camera.setIdentity32(18, 0x55667788);
    camera.setIdentity16(26, 0x99AA);
    camera.setIdentity32(28, 4000);
    camera.setIdentity32(32, 1000);
    camera.setIdentity32(36, 2000);
    camera.setIdentity32(40, 0x80000001);
    camera.transferBits = 8;
    open(camera);
    std::uint16_t modes = 0;
    std::uint32_t mask = 0, value = 0, minimum = 0, maximum = 0;
    expectSuccess(Tavra_GetEnableImageSize(handle, &mask, &modes));
    EXPECT_EQ(mask, 0x11223344u);
    EXPECT_EQ(modes, 0x99AA);
    expectSuccess(Tavra_GetEnableImageSize(handle, nullptr, &modes));
    expectSuccess(Tavra_GetEnableTransferBitsPerPixel(handle, &mask));
    EXPECT_EQ(mask, 0x55667788u);
    expectSuccess(Tavra_GetEnableClock(handle, &mask, &value, &minimum, &maximum));
    EXPECT_EQ(mask, 0x80000001u);
    EXPECT_EQ(value, 2000u);
    EXPECT_EQ(minimum, 1000u);
    EXPECT_EQ(maximum, 4000u);
    expectSuccess(Tavra_GetEnableTriggerVersion(handle, &value));
    EXPECT_EQ(value, 7u);
    expectSuccess(Tavra_GetEnablePreviewPixelFormat(handle, &mask));
    EXPECT_EQ(mask, 12u);
    expectSuccess(Tavra_GetMaximumImageSize(handle, &mask, &value));
    EXPECT_EQ(mask, 640u);
    EXPECT_EQ(value, 480u);
    EXPECT_THAT(usb.requests(), IsEmpty());
}

TEST_F(Identity, MirrorModesThatTheCameraAdds) {
    const struct {
        bool first, second;
        std::uint8_t mask;
    } rows[] = {{false, false, 3}, {true, false, 19}, {false, true, 35}, {true, true, 51}};
    for (const auto& row : rows) {
        usb.reset();
        DoubleCamera camera;
        camera.setCapability(1, 6, row.first);
        camera.setCapability(1, 7, row.second);
        open(camera);
        std::uint8_t mask = 0;
        expectSuccess(Tavra_GetEnableMirrorMode(handle, &mask));
        EXPECT_EQ(mask, row.mask);
        close();
    }
    usb.reset();
    open(legacyCamera());
    std::uint8_t mask = 0;
    expectSuccess(Tavra_GetEnableMirrorMode(handle, &mask));
    EXPECT_EQ(mask, 3);
}

TEST_F(Identity, TheCameraSideMirrorChangesTheColorArray) {
    DoubleCamera camera;
    camera.setCapability(1, 6);
    // RGGB, GRBG, GBRG, BGGR and their mirrors in x, in y and in both.
    const std::uint16_t swaps[4][4] = {{2, 3, 4, 5}, {3, 2, 5, 4}, {4, 5, 2, 3}, {5, 4, 3, 2}};
    for (const std::uint16_t group : {2, 12, 16}) {
        for (std::uint16_t mirror = 0; mirror < 4; ++mirror) {
            for (std::uint16_t position = 0; position < 4; ++position) {
                usb.reset();
                camera.setIdentity16(10, static_cast<std::uint16_t>(group + position));
                camera.status(63) = mirror;
                open(camera);
                EXPECT_EQ(colorArray(), group + swaps[mirror][position] - 2u) << group << ' ' << mirror;
                close();
            }
        }
    }
}

TEST_F(Identity, TheMirrorLeavesMonoAlone) {
    DoubleCamera camera;
    camera.setCapability(1, 6);
    camera.setIdentity16(10, 1);
    camera.status(63) = 3;
    open(camera);
    EXPECT_EQ(colorArray(), 1u);
}

TEST_F(Identity, TheMirrorLeavesTheArrayAloneWithFunction71) {
    DoubleCamera camera;
    camera.setCapability(1, 6);
    camera.setCapability(4, 7);  // function 71
    camera.status(63) = 3;
    open(camera);
    EXPECT_EQ(colorArray(), 5u);
}

TEST_F(Identity, TheMirrorOfTheLibraryLeavesTheArrayAlone) {
    open();
    record().mirrorMode = 0x0F;
    EXPECT_EQ(colorArray(), 5u);
    record().mirrorMode = 0xCF;
    EXPECT_EQ(colorArray(), 5u) << "of the high nibble two bits count";
}

TEST_F(Identity, OneFamilyMirrorsInOneDirectionOnly) {
    for (const std::uint16_t type : {2326, 3448, 4118, 16385, 16386, 16387, 16388}) {
        usb.reset();
        DoubleCamera camera;
        camera.setIdentity16(4, type);
        camera.setCapability(1, 6);
        camera.status(63) = 2;
        open(camera);
        EXPECT_EQ(colorArray(), 5u) << type;
        close();
        usb.camera().status(63) = 3;
        open();
        EXPECT_EQ(colorArray(), 4u) << type;
        close();
    }
}

TEST_F(Identity, SetColorArrayTakesTheMosaicsAndChangesNothingElse) {
    open();
    for (std::uint16_t code = 1; code <= 5; ++code) {
        expectSuccess(Tavra_SetColorArray(handle, code));
        EXPECT_EQ(colorArray(), code);
    }
    for (const std::uint16_t code : {0, 6, 12, 16, 65535}) {
        EXPECT_EQ(Tavra_SetColorArray(handle, code), 0);
        EXPECT_EQ(lastError(), 0u);
    }
    EXPECT_EQ(colorArray(), 5u);
    expectSuccess(Tavra_SetColorArray(handle, 1));
    std::uint32_t mask = 0;
    expectSuccess(Tavra_GetEnablePreviewPixelFormat(handle, &mask));
    EXPECT_EQ(mask, 12u);
    EXPECT_THAT(traffic(), IsEmpty());
    expectSuccess(Tavra_HasFunction(handle, 259, &mask));
    EXPECT_EQ(mask, 1u) << "asks the stored code";
}

TEST_F(Identity, ProductNames) {
    DoubleCamera camera;
    camera.setIdentity16(4, 2326);
    open(camera);
    char narrow[16] = "xxxxxxxxxxxxxxx";
    TavraWChar wide[16] = {};
    expectSuccess(Tavra_GetProductNameA(handle, narrow, sizeof narrow));
    EXPECT_STREQ(narrow, "TV-2326C");
    expectSuccess(Tavra_GetProductNameA(handle, narrow, 9));
    expectFailure(Tavra_GetProductNameA(handle, narrow, 8), 122);
    expectFailure(Tavra_GetProductNameA(handle, narrow, 0), 122);
    expectFailure(Tavra_GetProductNameA(handle, nullptr, 16), 87);
    expectSuccess(Tavra_GetProductNameW(handle, wide, 18));
    EXPECT_EQ(std::u16string(wide), u"TV-2326C");
    expectFailure(Tavra_GetProductNameW(handle, wide, 17), 122);
    expectFailure(Tavra_GetProductNameW(handle, nullptr, 16), 87);
}

TEST_F(Identity, SamePidWordIsNothingOnLegacyTypes) {
    DoubleCamera camera;
    camera.setCapabilityWord(7, 0xBEEF);
    open(camera);
    std::uint32_t type = 0;
    expectSuccess(Tavra_GetSamePIDCameraType(handle, &type));
    EXPECT_EQ(type, 0xBEEFu);
    close();
    usb.reset();
    camera.setIdentity16(4, 773);
    open(camera);
    expectSuccess(Tavra_GetSamePIDCameraType(handle, &type));
    EXPECT_EQ(type, 0u);
}

TEST_F(Identity, UsbSpeedComesFromTheConfigurationDescriptor) {
    open();
    std::uint8_t speed = 9;
    expectSuccess(Tavra_GetUSBSpeed(handle, &speed));
    EXPECT_EQ(speed, 2);
    EXPECT_THAT(usb.calls(), ElementsAre(OperationCall{"UsbGetConfigDescriptor", {1024}}));
    usb.camera().configDescriptorError = 55;
    expectFailure(Tavra_GetUSBSpeed(handle, &speed), 55);
    EXPECT_EQ(speed, 0);
    usb.camera().configDescriptorError = 0;
    usb.camera().configDescriptor.resize(9);
    expectSuccess(Tavra_GetUSBSpeed(handle, &speed));
    EXPECT_EQ(speed, 1);
    expectSuccess(Tavra_GetUSBMaxSpeed(handle, &speed));
    EXPECT_EQ(speed, 2);
}

TEST_F(Identity, InterpolationMethodsUpTo5) {
    open();
    std::uint8_t method = 0;
    expectSuccess(Tavra_GetColorInterpolationMethod(handle, &method));
    EXPECT_EQ(method, 3);
    for (std::uint8_t wanted = 0; wanted <= 5; ++wanted) {
        expectSuccess(Tavra_SetColorInterpolationMethod(handle, wanted));
        expectSuccess(Tavra_GetColorInterpolationMethod(handle, &method));
        EXPECT_EQ(method, wanted);
    }
    expectFailure(Tavra_SetColorInterpolationMethod(handle, 6), 87);
    expectFailure(Tavra_SetColorInterpolationMethod(handle, 255), 87);
    expectSuccess(Tavra_GetColorInterpolationMethod(handle, &method));
    EXPECT_EQ(method, 5);
}

TEST_F(Identity, Versions) {
    open();
    std::uint32_t v[4] = {};
    usb.camera().driverVersion = {1, 2, 3, 4};
    expectSuccess(Tavra_GetDriverVersion(handle, &v[0], &v[1], &v[2], &v[3]));
    EXPECT_THAT(v, ElementsAre(1, 2, 3, 4));
    usb.camera().driverVersionError = 55;
    expectFailure(Tavra_GetDriverVersion(handle, &v[0], &v[1], &v[2], &v[3]), 55);
    EXPECT_EQ(Tavra_GetUSBDllVersion(&v[0], &v[1], &v[2], &v[3]), 1);
    EXPECT_THAT(v, ElementsAre(0x10002, 0x30004, 0x50006, 0x70008));
}

TEST_F(Identity, TheLibrarysOwnVersionIsThatOfItsFileAndAlwaysSucceeds) {
    const platform::LibraryVersion own = platform::libraryVersion();
    std::uint32_t v[4] = {1, 1, 1, 1};
    EXPECT_EQ(Tavra_GetCAMDllVersion(&v[0], &v[1], &v[2], &v[3]), 1);
    EXPECT_THAT(v, ElementsAre(own.fileHigh, own.fileLow, own.productHigh, own.productLow));
    EXPECT_EQ(Tavra_GetCAMDllVersion(nullptr, nullptr, nullptr, nullptr), 1);
}

}  // namespace
}  // namespace tavra::test
