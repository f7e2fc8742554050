// Memories, I2C and firmware of virtual cameras, through the exported operations.
#include <gtest/gtest.h>

#include <cstring>
#include <numeric>

#include "usbd/virtual_cameras.h"

namespace tavra::usbd {
namespace {

using test::Camera;
using test::useCameras;

TEST(NonVolatileMemory, HoldsTheRecordsOfTheModel) {
    useCameras("mono:userid=0x01020304:usertext=left:serial=77");
    Camera camera;
    std::uint8_t record[256];
    std::uint32_t count = 0;
    ASSERT_EQ(UsbReadMemory(camera.handle(), 256, 511, record, &count), 1);
    EXPECT_EQ(count, 256u);
    EXPECT_EQ(loadLe32(record), 0x01020304u);
    EXPECT_EQ(record[4], 0);
    EXPECT_EQ(record[5], 4);
    EXPECT_EQ(std::string(record + 6, record + 10), "left");
    ASSERT_EQ(UsbReadMemory(camera.handle(), 0, 255, record, &count), 1);
    EXPECT_EQ(loadLe32(record), 77u);
}

TEST(NonVolatileMemory, IsKeptFromOneOpeningToTheNext) {
    useCameras("mono");
    std::vector<std::uint8_t> written(1024), read(1024);
    std::iota(written.begin(), written.end(), std::uint8_t{3});
    std::uint32_t count = 0;
    ASSERT_EQ(UsbWriteMemory(Camera().handle(), 512, 1535, written.data(), &count), 1);
    ASSERT_EQ(UsbReadMemory(Camera().handle(), 512, 1535, read.data(), &count), 1);
    EXPECT_EQ(read, written);
}

TEST(NonVolatileMemory, EndsAt1535) {
    useCameras("mono");
    Camera camera;
    std::uint8_t byte = 0;
    std::uint32_t count = 7;
    EXPECT_EQ(UsbReadMemory(camera.handle(), 1535, 1535, &byte, &count), 1);
    EXPECT_EQ(UsbReadMemory(camera.handle(), 1536, 1536, &byte, &count), 0);
    EXPECT_EQ(UsbGetLastError(), 31u);
    EXPECT_EQ(count, 0u);
}

TEST(SetupMemory, IsASpaceOfItsOwn) {
    useCameras("mono");
    Camera camera;
    const std::uint8_t two[2] = {0xAB, 0xCD};
    std::uint8_t back[2] = {};
    std::uint32_t count = 0;
    ASSERT_EQ(UsbWriteSetupMemory(camera.handle(), 14, 15, two, &count), 1);
    ASSERT_EQ(UsbReadSetupMemory(camera.handle(), 14, 15, back, &count), 1);
    EXPECT_EQ(std::memcmp(two, back, 2), 0);
    ASSERT_EQ(UsbReadControllerMemory(camera.handle(), 14, 15, back, &count), 1);
    EXPECT_EQ(back[0], 0);
    ASSERT_EQ(UsbWriteControllerMemory(camera.handle(), 0xFFFE, 0xFFFF, two, &count), 1);
    EXPECT_EQ(UsbWriteControllerMemory(camera.handle(), 0xFFFF, 0x10000, two, &count), 0);
}

TEST(I2cBus, DevicesAnswerAtTheirPlaceAndWidth) {
    useCameras("bayer");
    Camera camera;
    std::uint8_t bytes[3] = {};
    std::uint32_t count = 0;
    ASSERT_EQ(UsbReadI2CWord(camera.handle(), 0, 0x50, 0, 3, bytes, &count), 1);
    EXPECT_EQ(bytes[0], 0x54);
    EXPECT_EQ(bytes[2], 0x01);
    bytes[0] = 9;
    ASSERT_EQ(UsbWriteI2CByte(camera.handle(), 1, 0x10, 5, 1, bytes, &count), 1);
    bytes[0] = 0;
    ASSERT_EQ(UsbReadI2CByte(camera.handle(), 1, 0x10, 5, 1, bytes, &count), 1);
    EXPECT_EQ(bytes[0], 9);
    EXPECT_EQ(UsbReadI2CByte(camera.handle(), 0, 0x50, 0, 1, bytes, &count), 0) << "a 16-bit device";
    EXPECT_EQ(UsbReadI2CWord(camera.handle(), 0, 0x11, 0, 1, bytes, &count), 0) << "nobody there";
    EXPECT_EQ(UsbGetLastError(), 31u);
    EXPECT_EQ(UsbReadI2CWord(camera.handle(), 0, 0x50, 4095, 2, bytes, &count), 0) << "past its end";
}

std::uint16_t revision(Camera& camera) {
    return loadLe16(&camera.get(17, 0, 0, 64)[6]);
}

TEST(Firmware, ADownloadBringsTheCameraBackWithAnotherRevision) {
    useCameras("legacy1541:firmware=absent");
    std::vector<std::uint8_t> image(16384), mask(16384);
    std::fill_n(mask.begin() + 100, 5000, std::uint8_t{1});
    {
        Camera camera;
        EXPECT_EQ(revision(camera), 8);
        std::uint32_t taken = 0;
        ASSERT_EQ(UsbDownloadFirmware(camera.handle(), image.data(), mask.data(), 16384, &taken), 1);
        EXPECT_EQ(taken, 5000u);
        std::uint8_t bytes[64];
        EXPECT_EQ(UsbControlTransfer(camera.handle(), 0xC0, 17, 0, 0, 64, bytes, nullptr), 0);
        EXPECT_EQ(UsbGetLastError(), 1167u) << "it has left the bus";
    }
    Camera again;
    ASSERT_TRUE(again.open());
    EXPECT_EQ(revision(again), 16);
}

TEST(Firmware, WithoutItNoFrameComes) {
    useCameras("legacy773:firmware=absent:pace=off");
    {
        Camera camera;
        test::Read read(4096);
        ASSERT_EQ(read.start(camera), 997u);
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        EXPECT_FALSE(read.event.wait(20));
        EXPECT_EQ(camera.get(33, 0, 0, 64).size(), 64u) << "it answers all the same";
        UsbEndRead(camera.handle());
        EXPECT_EQ(read.look(camera), 995u);
        const std::vector<std::uint8_t> image(16, 1);
        std::uint32_t taken = 0;
        ASSERT_EQ(UsbDownloadFirmware(camera.handle(), image.data(), nullptr, 16, &taken), 1);
    }
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    EXPECT_EQ(test::readTransfer(camera).size(), 64u + 640 * 480);
    UsbEndRead(camera.handle());
}

TEST(Firmware, AnEmptyDownloadStartsNothing) {
    useCameras("legacy1541:firmware=absent");
    Camera camera;
    const std::vector<std::uint8_t> image(16), mask(16);
    std::uint32_t taken = 9;
    EXPECT_EQ(UsbDownloadFirmware(camera.handle(), image.data(), mask.data(), 16, &taken), 1);
    EXPECT_EQ(taken, 0u);
    EXPECT_EQ(revision(camera), 8);
}

TEST(Firmware, NewerCamerasTakeNone) {
    useCameras("mono");
    Camera camera;
    const std::vector<std::uint8_t> image(16, 1);
    std::uint32_t taken = 0;
    EXPECT_EQ(UsbDownloadFirmware(camera.handle(), image.data(), nullptr, 16, &taken), 0);
    EXPECT_EQ(UsbGetLastError(), 31u);
}

}  // namespace
}  // namespace tavra::usbd
