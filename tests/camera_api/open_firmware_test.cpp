// Opening cameras that came up without firmware, round by round.
#include "camera/open_firmware.h"

#include <algorithm>
#include <fstream>

#include "camera/global_last_error.h"
#include "camera/open_camera.h"
#include "camera_api/camera_fixture.h"
#include "support/failing_allocations.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

constexpr std::uint16_t kNoFirmware = 8;

class OpenFirmware : public CameraTest {
  protected:
    OpenFirmware() {
        setEnvironment("TAVRA_FIRMWARE_DIR", images.path().string());
        globalLastError = 0;
    }
    ~OpenFirmware() override { setEnvironment("TAVRA_FIRMWARE_DIR", ""); }

    void putImage(std::uint16_t type, const std::string& text) {
        std::ofstream(images / (std::to_string(type) + ".hex"), std::ios::binary) << text;
    }
    DoubleCamera& addBareCamera(std::uint16_t type = 1541) {
        DoubleCamera camera = legacyCamera(type);
        camera.setIdentity16(8, kNoFirmware);
        return usb.addCamera(camera);
    }
    std::size_t callsOf(const std::string& name) const {
        const auto calls = usb.calls();
        return static_cast<std::size_t>(
            std::count_if(calls.begin(), calls.end(), [&](auto& call) { return call.name == name; }));
    }
    // A camera without firmware, opened, for one round.
    void openBareCamera() {
        addBareCamera();
        open();
        ASSERT_TRUE(lacksFirmware(record()));
        globalLastError = 0;
    }
    void round() {
        handle = loadAndOpenAgain(&record(), 0, loads);
        ASSERT_NE(handle, nullptr);
    }

    TempFolder images;
    std::uint32_t loads = 0;
};

TEST_F(OpenFirmware, EachOldTypeGetsItsImageAndIsOpenedAgain) {
    for (const std::uint16_t type : {773, 1541, 1797, 2053}) {
        usb.reset();
        addBareCamera(type);
        const std::string text = "image of type " + std::to_string(type);
        putImage(type, text);
        std::uint32_t count = 99;
        handle = Tavra_OpenFW(0, &count);
        ASSERT_NE(handle, nullptr) << type;
        EXPECT_EQ(count, 1u);
        EXPECT_EQ(usb.hexText, text);
        const auto calls = usb.calls();
        EXPECT_THAT(calls, testing::Contains(OperationCall{"UsbParseHexImage", {text.size(), 16384}}));
        EXPECT_THAT(calls, testing::Contains(OperationCall{"UsbDownloadFirmware", {4}}));
        EXPECT_THAT(usb.camera().firmware, ElementsAre(1, 2, 3, 4));
        EXPECT_THAT(usb.camera().firmwareMask, ElementsAre(1, 1, 0, 1));
        EXPECT_EQ(record().info.firmwareRevision, 16);
        EXPECT_EQ(usb.openHandles(), 1u) << "the first opening was closed";
        EXPECT_EQ(Tavra_GetLastError(nullptr), 0u);
        close();
    }
}

TEST_F(OpenFirmware, ACameraWithFirmwareIsOnlyOpened) {
    usb.addCamera(legacyCamera());
    std::uint32_t count = 99;
    handle = Tavra_OpenFW(0, &count);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(callsOf("UsbParseHexImage"), 0u);
    EXPECT_EQ(callsOf("UsbDownloadFirmware"), 0u);
}

TEST_F(OpenFirmware, Revision8OfAnotherTypeIsARevisionLikeAnyOther) {
    DoubleCamera camera;
    camera.setIdentity16(8, kNoFirmware);
    open(camera);
    EXPECT_FALSE(lacksFirmware(record()));
    close();
    std::uint32_t count = 99;
    handle = Tavra_OpenFW(0, &count);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(callsOf("UsbDownloadFirmware"), 0u);
}

TEST_F(OpenFirmware, TheUserIdChoosesTheCamera) {
    addBareCamera();
    DoubleCamera& second = addBareCamera(773);
    second.memory[256] = 5;
    putImage(773, "the second");
    std::uint32_t count = 0;
    handle = Tavra_OpenFW(5, &count);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(record().info.productType, 773);
    EXPECT_THAT(usb.camera(0).firmware, IsEmpty());
}

TEST_F(OpenFirmware, WithoutACameraThereIsNoHandleAndNoLoad) {
    std::uint32_t count = 99;
    EXPECT_EQ(Tavra_OpenFW(0, &count), nullptr);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000001u);
}

TEST_F(OpenFirmware, WithoutAPlaceForTheCountNothingIsOpened) {
    addBareCamera();
    EXPECT_EQ(Tavra_OpenFW(0, nullptr), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 87u);
    EXPECT_THAT(usb.calls(), IsEmpty());
}

TEST_F(OpenFirmware, ARoundThatFailsLeavesItsCodeAndTheCameraOpen) {
    putImage(1541, "text");
    openBareCamera();
    usb.hexImageErrors = {13};
    round();
    EXPECT_EQ(Tavra_GetLastError(nullptr), 13u);
    EXPECT_EQ(loads, 0u);
    EXPECT_EQ(callsOf("UsbDownloadFirmware"), 0u);
    EXPECT_TRUE(lacksFirmware(record()));

    usb.camera().firmwareErrors = {1117};
    round();
    EXPECT_EQ(Tavra_GetLastError(nullptr), 1117u);
    EXPECT_EQ(loads, 0u);
    EXPECT_TRUE(lacksFirmware(record()));

    round();
    EXPECT_EQ(Tavra_GetLastError(nullptr), 1117u) << "of the last load that failed";
    EXPECT_EQ(loads, 1u);
    EXPECT_FALSE(lacksFirmware(record()));
    EXPECT_EQ(usb.openHandles(), 1u);
}

TEST_F(OpenFirmware, ALoadThatKeepsFailingIsRepeated) {
    putImage(1541, "text");
    DoubleCamera& camera = addBareCamera();
    usb.hexImageErrors = {13, 122};
    camera.firmwareErrors.assign(98, 31);
    std::uint32_t count = 0;
    handle = Tavra_OpenFW(0, &count);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(callsOf("UsbParseHexImage"), 101u);
    EXPECT_EQ(callsOf("UsbDownloadFirmware"), 99u);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 31u);
}

TEST_F(OpenFirmware, EveryLoadThatWorksCountsWhileTheRevisionStays) {
    putImage(1541, "text");
    openBareCamera();
    usb.camera().loadedRevision = kNoFirmware;
    round();
    round();
    EXPECT_EQ(loads, 2u);
    EXPECT_TRUE(lacksFirmware(record()));
}

TEST_F(OpenFirmware, ACameraThatDoesNotComeBackGivesNullAndTheCount) {
    putImage(1541, "text");
    addBareCamera().goneWhenLoaded = true;
    std::uint32_t count = 99;
    EXPECT_EQ(Tavra_OpenFW(0, &count), nullptr);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000001u);
    EXPECT_EQ(usb.openHandles(), 0u);
}

TEST_F(OpenFirmware, AnImageMustStayBelowItsLimit) {
    openBareCamera();
    EXPECT_NE(loadFirmware(record()).code(), 0u) << "there is none";
    putImage(1541, "");
    EXPECT_EQ(loadFirmware(record()).code(), 38u);
    putImage(1541, std::string(0x15000, ':'));
    EXPECT_EQ(loadFirmware(record()).code(), 8u);
    EXPECT_EQ(callsOf("UsbParseHexImage"), 0u);
    putImage(1541, std::string(0x15000 - 1, ':'));
    EXPECT_TRUE(loadFirmware(record()).ok());
    EXPECT_EQ(usb.hexText.size(), 0x15000u - 1);
}

TEST_F(OpenFirmware, WithoutMemoryTheLoadFails) {
    putImage(1541, "text");
    openBareCamera();
    const FailAllocationsFrom limit(0x15000);
    EXPECT_EQ(loadFirmware(record()).code(), 8u);
}

TEST_F(OpenFirmware, AFailureWithoutACodeIsAFailureAllTheSame) {
    putImage(1541, "text");
    platform::UsbAccess access{};
    access.getLastError = []() -> std::uint32_t { return 0; };
    access.parseHexImage = [](const char*, std::uint32_t, std::uint8_t*, std::uint8_t*, std::uint32_t,
                              std::uint32_t*) -> std::int32_t { return 0; };
    TAVRA_COMMON_PARAM camera;
    camera.control.attach(access, 7);
    camera.info.productType = 1541;
    EXPECT_EQ(loadFirmware(camera).code(), 31u);
    camera.control.detach();
}

}  // namespace
}  // namespace tavra::test
