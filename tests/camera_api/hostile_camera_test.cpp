// A camera that answers whatever it likes: every open ends, with a handle or without, and nothing is overrun.
#include <random>

#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

class HostileCamera : public CameraTest {
  protected:
    // Getters whose answers depend on what the camera told.
    void askEverything() {
        std::uint8_t speed = 0;
        std::uint16_t word = 0;
        std::uint32_t value = 0, size = 64, words[16] = {};
        float number = 0;
        char text[32] = {};
        Tavra_GetUSBSpeed(handle, &speed);
        Tavra_GetProductNameA(handle, text, sizeof text);
        Tavra_GetColorArray(handle, &word);
        Tavra_GetOutputFPS(handle, &number);
        Tavra_GetPreviewDataSize(handle, &value, &value, &value, &value);
        Tavra_GetHDRParameter(handle, words, &size);
        Tavra_GetDigitalGainTimesFromSettingValue(handle, 65535, &number);
        Tavra_ReadCameraUserIDA(handle, &value, text, sizeof text);
        for (std::uint32_t index = 0; index < 40; ++index) {
            Tavra_GetROI(handle, index, &value, &value, &value, &value, &value);
            Tavra_SetROI(handle, index, 1, 0, 0, 64, 64);
        }
        Tavra_SetImageSize(handle, 0, 0xFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 64, 64);
    }

    // Pictures that memory could hold would only cost time: the size alone is kept small.
    static void limitSize(DoubleCamera& camera) {
        for (const std::size_t offset : {8u, 9u, 12u, 13u}) camera.scanRecord[offset] = 0;
        camera.scanRecord[7] &= 1;
        camera.scanRecord[11] &= 1;
    }
};

TEST_F(HostileCamera, RandomAnswersDoNoHarm) {
    std::mt19937 random(20240229);
    const auto fill = [&](Bytes& bytes) {
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    };
    for (int round = 0; round < 200; ++round) {
        usb.reset();
        DoubleCamera camera;
        if (round % 2 == 0) camera.addRegisterPages(random() % 0x200);
        fill(camera.identity);
        camera.scanRecord.resize(random() % 600 + 64);
        fill(camera.scanRecord);
        limitSize(camera);
        fill(camera.memory);
        fill(camera.configDescriptor);
        for (std::uint16_t word = 104; word < 124; ++word)
            camera.status(word) |= static_cast<std::uint16_t>(random());
        usb.addCamera(camera);
        handle = Tavra_Open(0);
        if (handle != nullptr) askEverything();
        close();
        ASSERT_EQ(usb.openHandles(), 0u);
    }
}

TEST_F(HostileCamera, ALibraryThatClaimsMoreThanWasAskedIsNotBelieved) {
    // The double cannot lie so; the channel is asked directly, through operations that do.
    platform::UsbAccess lying{};
    lying.controlTransfer = [](TavraUsbDevice, std::uint8_t, std::uint8_t, std::uint16_t, std::uint16_t,
                               std::uint16_t length, void*, std::uint32_t* transferred) -> std::int32_t {
        *transferred = length + 1u;
        return 1;
    };
    ControlChannel channel;
    channel.attach(lying, 1);
    std::array<std::uint8_t, 8> data{};
    std::uint32_t received = 0;
    EXPECT_EQ(channel.in(1, 0, 0, data, received).code(), 0xE0000005u);
    EXPECT_EQ(channel.inExactly(1, 0, 0, data).code(), 0xE0000005u);
    EXPECT_EQ(channel.out(1, 0, 0, data).code(), 0xE0000005u);
    channel.detach();
    EXPECT_EQ(channel.out(1, 0, 0, data).code(), 0xE0000005u) << "no device";
}

}  // namespace
}  // namespace tavra::test
