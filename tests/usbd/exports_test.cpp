// The exported operations: what every one of them does with a bad handle and with arguments left out.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "usbd/virtual_cameras.h"

namespace tavra::usbd {
namespace {

using test::Camera;
using test::useCameras;

TEST(Exports, ABadHandleGivesAnErrorEverywhere) {
    for (const TavraUsbDevice bad : {TavraUsbDevice{0}, TavraUsbDevice{12345}, ~TavraUsbDevice{0}}) {
        std::uint8_t bytes[16] = {};
        std::uint32_t n = 0;
        TavraUsbRead read{};
        const auto failed = [](std::int32_t result) {
            const std::uint32_t error = UsbGetLastError();
            return result == 0 && error == 6;
        };
        EXPECT_TRUE(failed(UsbClose(bad)));
        EXPECT_TRUE(failed(UsbGetDriverVersion(bad, &n, &n, &n, &n)));
        EXPECT_TRUE(failed(UsbGetConfigDescriptor(bad, bytes, 16, &n)));
        EXPECT_TRUE(failed(UsbGetFunctionAddress(bad, &n)));
        EXPECT_TRUE(failed(UsbGetOpenCount(bad, &n)));
        EXPECT_TRUE(failed(UsbControlTransfer(bad, 0xC0, 17, 0, 0, 16, bytes, &n)));
        EXPECT_TRUE(failed(UsbReadI2CWord(bad, 0, 0, 0, 1, bytes, &n)));
        EXPECT_TRUE(failed(UsbWriteI2CWord(bad, 0, 0, 0, 1, bytes, &n)));
        EXPECT_TRUE(failed(UsbReadI2CByte(bad, 0, 0, 0, 1, bytes, &n)));
        EXPECT_TRUE(failed(UsbWriteI2CByte(bad, 0, 0, 0, 1, bytes, &n)));
        EXPECT_TRUE(failed(UsbReadControllerMemory(bad, 0, 0, bytes, &n)));
        EXPECT_TRUE(failed(UsbWriteControllerMemory(bad, 0, 0, bytes, &n)));
        EXPECT_TRUE(failed(UsbReadMemory(bad, 0, 0, bytes, &n)));
        EXPECT_TRUE(failed(UsbWriteMemory(bad, 0, 0, bytes, &n)));
        EXPECT_TRUE(failed(UsbReadSetupMemory(bad, 0, 0, bytes, &n)));
        EXPECT_TRUE(failed(UsbWriteSetupMemory(bad, 0, 0, bytes, &n)));
        EXPECT_TRUE(failed(UsbDownloadFirmware(bad, bytes, bytes, 16, &n)));
        EXPECT_TRUE(failed(UsbBeginRead(bad)));
        EXPECT_TRUE(failed(UsbEndRead(bad)));
        EXPECT_TRUE(failed(UsbCanResumeRead(bad)));
        EXPECT_TRUE(failed(UsbCheckConfiguration(bad, &n, &n)));
        EXPECT_TRUE(failed(UsbStartRead(bad, bytes, 16, &read)));
        EXPECT_TRUE(failed(UsbGetReadResult(bad, &read, &n, 1)));
        EXPECT_TRUE(failed(UsbDeviceControl(bad, 0x222140)));
        EXPECT_EQ(UsbAllocReadMemory(bad, 16), nullptr);
        EXPECT_EQ(UsbGetLastError(), 6u);
        UsbFreeReadMemory(bad, bytes, 16);
    }
}

TEST(Exports, TheLastErrorBelongsToTheThread) {
    UsbClose(0);
    EXPECT_EQ(UsbGetLastError(), 6u);
    std::thread([] { EXPECT_EQ(UsbGetLastError(), 0u); }).join();
}

TEST(Exports, VersionsAreTheProjectsAndAtLeastThree) {
    std::uint32_t words[4] = {1, 1, 1, 1};
    EXPECT_EQ(UsbGetLibraryVersion(&words[0], &words[1], &words[2], &words[3]), 1);
    EXPECT_EQ(words[0], words[2]);
    EXPECT_EQ(words[1], words[3]);
    EXPECT_EQ(UsbGetLibraryVersion(nullptr, nullptr, nullptr, nullptr), 1);
    useCameras("mono");
    Camera camera;
    ASSERT_TRUE(camera.open());
    EXPECT_EQ(UsbGetDriverVersion(camera.handle(), &words[0], &words[1], &words[2], &words[3]), 1);
    EXPECT_TRUE(words[0] > 0x30000 || (words[0] == 0x30000 && words[1] >= 5));
}

TEST(Exports, NoCamerasUnlessTheyAreNamed) {
    useCameras("");
    EXPECT_EQ(UsbOpenByIndex(0), 0u);
    EXPECT_EQ(UsbGetLastError(), 259u);
    useCameras("mono, bayer ,");
    for (std::uint32_t i = 0; i < 2; ++i) EXPECT_TRUE(Camera(i).open());
    EXPECT_FALSE(Camera(2).open());
}

TEST(Exports, ThePathOpensTheSameCamera) {
    useCameras("mono,bayer:userid=7");
    char16_t path[1024] = {};
    std::uint32_t bytes = sizeof path;
    const TavraUsbDevice byIndex = UsbOpenByIndexPath(1, path, &bytes);
    ASSERT_NE(byIndex, 0u);
    EXPECT_EQ(std::u16string(path), u"virtual:1:bayer");
    EXPECT_EQ(bytes, 32u) << "fifteen characters and the NUL";
    const TavraUsbDevice wide = UsbOpenByPathW(path), narrow = UsbOpenByPathA("virtual:1:bayer");
    std::uint32_t count = 0;
    EXPECT_EQ(UsbGetOpenCount(narrow, &count), 1);
    EXPECT_EQ(count, 3u);
    for (const TavraUsbDevice each : {byIndex, wide, narrow}) EXPECT_EQ(UsbClose(each), 1);
    EXPECT_EQ(UsbOpenByPathA("virtual:2:bayer"), 0u);
    EXPECT_EQ(UsbGetLastError(), 2u);
    EXPECT_EQ(UsbOpenByPathA(nullptr), 0u);
    EXPECT_EQ(UsbGetLastError(), 87u);
    EXPECT_EQ(UsbOpenByPathW(nullptr), 0u);
    EXPECT_EQ(UsbGetLastError(), 87u);
}

TEST(Exports, APathBufferThatIsTooSmallLeavesNothingOpen) {
    useCameras("mono");
    char16_t path[4] = {};
    std::uint32_t bytes = sizeof path;
    EXPECT_EQ(UsbOpenByIndexPath(0, path, &bytes), 0u);
    EXPECT_EQ(UsbGetLastError(), 122u);
    EXPECT_EQ(bytes, 30u) << "virtual:0:mono and the NUL";
    EXPECT_EQ(UsbOpenByIndexPath(0, nullptr, &bytes), 0u);
    EXPECT_EQ(UsbGetLastError(), 87u);
    Camera camera;
    std::uint32_t count = 0;
    EXPECT_EQ(UsbGetOpenCount(camera.handle(), &count), 1);
    EXPECT_EQ(count, 1u);
}

TEST(Exports, ASecondOpeningCounts) {
    useCameras("mono");
    Camera first, second;
    std::uint32_t count = 0;
    EXPECT_EQ(UsbGetOpenCount(second.handle(), &count), 1);
    EXPECT_EQ(count, 2u);
    second.close();
    EXPECT_EQ(UsbGetOpenCount(first.handle(), &count), 1);
    EXPECT_EQ(count, 1u);
}

TEST(Exports, MissingMemoryIsRefused) {
    useCameras("mono");
    Camera camera;
    std::uint8_t bytes[16];
    std::uint32_t n = 0;
    TavraUsbRead read{};
    const auto refused = [](std::int32_t result) { return result == 0 && UsbGetLastError() == 87; };
    EXPECT_TRUE(refused(UsbControlTransfer(camera.handle(), 0xC0, 17, 0, 0, 64, nullptr, &n)));
    EXPECT_TRUE(refused(UsbGetConfigDescriptor(camera.handle(), nullptr, 64, &n)));
    EXPECT_TRUE(refused(UsbStartRead(camera.handle(), nullptr, 64, &read)));
    EXPECT_TRUE(refused(UsbStartRead(camera.handle(), bytes, 0, &read)));
    EXPECT_TRUE(refused(UsbStartRead(camera.handle(), bytes, 16, nullptr)));
    EXPECT_TRUE(refused(UsbGetReadResult(camera.handle(), nullptr, &n, 0)));
    EXPECT_TRUE(refused(UsbDownloadFirmware(camera.handle(), nullptr, nullptr, 4, &n)));
    EXPECT_TRUE(refused(UsbParseHexImage(nullptr, 0, bytes, bytes, 16, &n)));
    EXPECT_EQ(UsbControlTransfer(camera.handle(), 0xC0, 17, 0, 0, 16, bytes, nullptr), 1)
        << "the count may be left out";
}

TEST(Exports, HexTextBecomesImageAndMask) {
    const char text[] = ":0300300002337A1E\n:00000001FF\n";
    std::uint8_t image[128], mask[128];
    std::uint32_t length = 0;
    EXPECT_EQ(UsbParseHexImage(text, sizeof text, image, mask, sizeof image, &length), 1);
    EXPECT_EQ(length, 0x33u);
    EXPECT_EQ(image[0x31], 0x33);
    EXPECT_EQ(mask[0x31], 1);
    EXPECT_EQ(UsbParseHexImage(text, 5, image, mask, sizeof image, &length), 0);
    EXPECT_EQ(UsbGetLastError(), 13u);
}

TEST(Exports, AThousandOpenings) {
    useCameras("legacy773");
    for (int i = 0; i < 1000; ++i) {
        Camera camera;
        ASSERT_TRUE(camera.open());
        std::uint32_t count = 0;
        ASSERT_EQ(UsbGetOpenCount(camera.handle(), &count), 1);
        ASSERT_EQ(count, 1u);
    }
}

}  // namespace
}  // namespace tavra::usbd
