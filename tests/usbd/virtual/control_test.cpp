// Vendor requests, as a host makes them.
#include <gtest/gtest.h>

#include "usbd/virtual_cameras.h"

namespace tavra::usbd {
namespace {

using test::Camera;
using test::useCameras;

TEST(Identity, TheNewLayoutBeginsWithTheVendor) {
    useCameras("mono");
    Camera camera;
    const auto id = camera.get(17, 0, 0, 64);
    ASSERT_EQ(id.size(), 64u);
    EXPECT_EQ(loadLe16(&id[2]), 0x2E6B);
    EXPECT_EQ(loadLe16(&id[4]), 8982);
    EXPECT_EQ(loadLe16(&id[8]), 256);
    EXPECT_EQ(loadLe16(&id[10]), 1);
    EXPECT_EQ(loadLe16(&id[12]), 64);
    EXPECT_EQ(loadLe32(&id[18]), 0x30017u);
    EXPECT_EQ(loadLe16(&id[26]), 0x8001);
    EXPECT_EQ(loadLe32(&id[28]), 74250000u);
    EXPECT_EQ(loadLe32(&id[40]), 0x80000003u);
    EXPECT_EQ(loadLe32(&id[56]), 1280u);
    EXPECT_EQ(loadLe32(&id[60]), 1024u);
}

TEST(Identity, TheOldLayoutHasTheHeaderSizeAtByteTen) {
    useCameras("legacy1797");
    Camera camera;
    const auto id = camera.get(17, 0, 0, 64);
    ASSERT_EQ(id.size(), 64u);
    EXPECT_EQ(loadLe16(&id[2]), 1797);
    EXPECT_EQ(loadLe16(&id[6]), 16);
    EXPECT_EQ(loadLe16(&id[8]), 2);
    EXPECT_EQ(loadLe16(&id[10]), 64);
    EXPECT_EQ(loadLe32(&id[16]), 1u);
}

TEST(Scan, TheLengthIsToldInTheFirstReply) {
    useCameras("regions");
    Camera camera;
    const auto first = camera.get(18, 0, 0, 64);
    ASSERT_EQ(first.size(), 64u);
    EXPECT_EQ(first[0], 176);
    const auto whole = camera.get(18, 0, 0, 176);
    ASSERT_EQ(whole.size(), 176u);
    EXPECT_EQ(loadLe32(&whole[56]), 8u);
    EXPECT_EQ(loadLe32(&whole[60]), 0b1111u);
    EXPECT_EQ(camera.get(18, 0, 0, 560).size(), 176u) << "no more than there is";
}

TEST(Scan, AWriteIsAnsweredByWhatWasMadeOfIt) {
    useCameras("mono");
    Camera camera;
    auto record = camera.get(18, 0, 0, 64);
    storeLe32(&record[6], 333);
    storeLe32(&record[10], 201);
    storeLe32(&record[14], 17);
    storeLe32(&record[18], 9);
    ASSERT_TRUE(camera.set(18, 0, 0, record));
    const auto now = camera.get(18, 0, 0, 64);
    EXPECT_EQ(loadLe32(&now[6]), 328u);
    EXPECT_EQ(loadLe32(&now[10]), 200u);
    EXPECT_EQ(loadLe32(&now[14]), 16u);
    EXPECT_EQ(loadLe32(&now[18]), 8u);
    EXPECT_EQ(loadLe16(&now[26]), 245) << "lines follow the height";
    EXPECT_FALSE(camera.set(18, 0, 0, std::vector<std::uint8_t>(10)));
}

TEST(TransferBits, OnlyEnabledCodesAreTaken) {
    useCameras("mono");
    Camera camera;
    const auto bits = [&] {
        const auto reply = camera.get(19, 0, 0, 6);
        EXPECT_EQ(reply.size(), 6u);
        EXPECT_EQ(reply[0], 6);
        EXPECT_EQ(reply[1], 0x13);
        return loadLe32(&reply[2]);
    };
    EXPECT_EQ(bits(), 1u);
    EXPECT_TRUE(camera.set(19, 0, 0, {6, 0x13, 0, 0, 2, 0}));
    EXPECT_EQ(bits(), 0x20000u);
    for (const std::uint8_t bad : {std::uint8_t{0}, std::uint8_t{3}, std::uint8_t{8}}) {
        EXPECT_FALSE(camera.set(19, 0, 0, {6, 0x13, bad, 0, 0, 0})) << int{bad};
        EXPECT_EQ(UsbGetLastError(), 31u);
    }
    EXPECT_EQ(bits(), 0x20000u);
}

TEST(Registers, TheRawSizeIsToldWithFunction64) {
    useCameras("mono:width=128:height=100");
    Camera camera;
    const auto size = [&] { return loadLe32(camera.registers(17, 8, 8).data()); };
    EXPECT_EQ(size(), 12800u);
    EXPECT_TRUE(camera.set(19, 0, 0, {6, 0x13, 0, 0, 2, 0}));
    EXPECT_EQ(size(), 19200u);
    EXPECT_TRUE(camera.registers(17, 0, 8).empty());
    EXPECT_TRUE(camera.registers(17, 12, 8).empty());
}

TEST(Registers, PagesHaveDescriptorsSizesAndValues) {
    useCameras("bayer");
    Camera camera;
    const auto table = camera.registers(1, 4, 64);
    ASSERT_EQ(table.size(), 64u);
    EXPECT_EQ(loadLe32(&table[8]) & 0xFFFFFF, camera.pageBase(2));
    EXPECT_EQ(camera.page(2, 0), 128u) << "offset 0 is the size";
    EXPECT_EQ(camera.page(5, 0), 0u) << "an empty page";
    EXPECT_EQ(camera.page(21, 20), 74250000u);
    EXPECT_EQ(camera.page(21, 84), 1125u * 2200);
    EXPECT_EQ(camera.page(21, 96), 100u);
    EXPECT_EQ(camera.page(21, 172), 1426u);
    EXPECT_EQ(camera.page(18, 4), 0xFFFFFFFFu) << "a free place for a defect pixel";
    EXPECT_TRUE(camera.setPage(27, 4, 77));
    EXPECT_EQ(camera.page(27, 4), 77u);
    EXPECT_FALSE(camera.setPage(27, 0, 99)) << "a size is the camera's";
    EXPECT_FALSE(camera.setPage(21, 20, 1));
    EXPECT_TRUE(camera.registers(1, 0xFFFFF0, 4).empty());
    EXPECT_TRUE(camera.registers(2, 4, 4).empty()) << "no such selector";
    EXPECT_TRUE(camera.registers(1, 4, 68).empty()) << "more than a transfer holds";
}

TEST(Registers, CamerasWithoutFunction64StallThem) {
    useCameras("statusword");
    Camera camera;
    EXPECT_TRUE(camera.registers(1, 4, 4).empty());
    EXPECT_TRUE(camera.registers(17, 8, 8).empty());
    EXPECT_EQ(UsbGetLastError(), 31u);
}

TEST(Status, WordsAreWrittenWithAndWithoutTheTopBit) {
    useCameras("statusword");
    Camera camera;
    EXPECT_TRUE(camera.setStatus(0x8013, 37));
    EXPECT_EQ(camera.status(19), 37);
    EXPECT_TRUE(camera.setStatus(23, 5));
    EXPECT_EQ(camera.status(23), 5);
    EXPECT_TRUE(camera.set(128, 0x8032, 0, {1, 2, 3, 4}));
    EXPECT_EQ(camera.get(128, 50, 0, 4), (std::vector<std::uint8_t>{1, 2, 3, 4}));
    EXPECT_TRUE(camera.get(128, 255, 0, 4).empty()) << "past the end";
    EXPECT_TRUE(camera.get(128, 0, 0, 3).empty()) << "half a word";
    EXPECT_TRUE(camera.get(128, 0, 5, 2).empty()) << "no such index";
}

TEST(Status, CapabilityWordsStandAt104) {
    useCameras("statusword");
    Camera camera;
    const auto words = camera.get(128, 104, 0, 40);
    ASSERT_EQ(words.size(), 40u);
    EXPECT_EQ(loadLe16(&words[0]), 0x0002);
    EXPECT_EQ(loadLe16(&words[2]), 0x0020);
    EXPECT_EQ(loadLe16(&words[6]), 0x0885);
    EXPECT_FALSE(camera.setStatus(104, 1));
}

TEST(Status, DefectPositionsHaveAnIndexOfTheirOwn) {
    useCameras("statusword");
    Camera camera;
    EXPECT_EQ(camera.get(128, 2 * 63, 129, 4), (std::vector<std::uint8_t>(4, 0xFF)));
    EXPECT_TRUE(camera.get(128, 2 * 64, 129, 4).empty()) << "64 places";
    const auto address = static_cast<std::uint16_t>((5 | 0xC000) * 2);
    EXPECT_TRUE(camera.set(128, address, 129, {10, 0, 20, 0}));
    EXPECT_EQ(camera.get(128, 10, 129, 4), (std::vector<std::uint8_t>{10, 0, 20, 0}));
}

TEST(Status, TheOldestTypesHaveNone) {
    for (const char* name : {"legacy773", "legacy1541", "legacy1797", "legacy2053"}) {
        useCameras(name);
        Camera camera;
        EXPECT_TRUE(camera.get(128, 48, 0, 4).empty()) << name;
        EXPECT_FALSE(camera.setStatus(101, 0));
        EXPECT_TRUE(camera.registers(1, 4, 4).empty());
        EXPECT_EQ(camera.get(35, 0, 0, 64).size(), 64u);
    }
}

TEST(Exposure, TheBlockIsKept) {
    useCameras("mono");
    Camera camera;
    std::vector<std::uint8_t> block(64);
    block[0] = 0x40;
    block[1] = 0x21;
    storeLe16(&block[2], 0x3344);
    storeLe16(&block[4], 55);
    storeLe16(&block[6], 120);
    storeLe16(&block[10], 0x0001);
    EXPECT_TRUE(camera.set(33, 0, 0, block));
    EXPECT_EQ(camera.get(33, 0, 0, 64), block);
    storeLe16(&block[6], 999);
    EXPECT_TRUE(camera.set(33, 0, 0, block));
    EXPECT_EQ(loadLe16(&camera.get(33, 0, 0, 64)[6]), 240) << "no more than the maximum gain";
    block.resize(63);
    EXPECT_FALSE(camera.set(33, 0, 0, block));
}

TEST(Clock, LongForm) {
    useCameras("mono");
    Camera camera;
    auto reply = camera.get(34, 0, 0, 10);
    EXPECT_EQ(reply, (std::vector<std::uint8_t>{10, 0x22, 0, 0, 0, 0, 0x10, 0xF7, 0x6C, 0x04})) << "74250000";
    std::vector<std::uint8_t> block{10, 0x22, 2, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_TRUE(camera.set(34, 0, 0, block));
    reply = camera.get(34, 0, 0, 10);
    EXPECT_EQ(loadLe32(&reply[2]), 2u);
    EXPECT_EQ(loadLe32(&reply[6]), 37125000u);
    EXPECT_EQ(camera.page(21, 20), 37125000u);
    storeLe32(&block[2], 0x80000000);
    storeLe32(&block[6], 50000000);
    EXPECT_TRUE(camera.set(34, 0, 0, block));
    EXPECT_EQ(loadLe32(&camera.get(34, 0, 0, 10)[6]), 50000000u);
    storeLe32(&block[6], 1);
    EXPECT_TRUE(camera.set(34, 0, 0, block));
    EXPECT_EQ(loadLe32(&camera.get(34, 0, 0, 10)[6]), 37125000u) << "the free clock's minimum";
    storeLe32(&block[2], 4);
    EXPECT_FALSE(camera.set(34, 0, 0, block)) << "not an enabled mode";
}

TEST(Clock, ShortFormBelowRevisionThree) {
    useCameras("statusword:identity.firmware_revision=2");
    Camera camera;
    const auto reply = camera.get(34, 0, 0, 10);
    ASSERT_EQ(reply.size(), 6u);
    EXPECT_EQ(reply[0], 6);
    EXPECT_EQ(loadLe32(&reply[2]), 24545455u);
    EXPECT_TRUE(camera.set(34, 0, 0, {6, 0x22, 0, 0, 0, 0}));
    EXPECT_FALSE(camera.set(34, 0, 0, {6, 0x22}));
}

TEST(CameraWords, AreTheGainsAtReset) {
    useCameras("bayer:memory.camera_words=[206,127,129,180]");
    Camera camera;
    const auto words = camera.get(35, 0, 0, 64);
    ASSERT_EQ(words.size(), 64u);
    EXPECT_EQ(loadLe16(&words[2]), 206);
    EXPECT_EQ(loadLe16(&words[4]), 127);
    EXPECT_EQ(loadLe16(&words[6]), 129);
    EXPECT_EQ(loadLe16(&words[8]), 180);
}

TEST(Settings, AreKeptByAddress) {
    useCameras("mono");
    Camera camera;
    EXPECT_TRUE(camera.set(129, 0x1234, 0, {1, 2, 3}));
    EXPECT_EQ(camera.get(129, 0x1235, 0, 2), (std::vector<std::uint8_t>{2, 3}));
    EXPECT_FALSE(camera.set(129, 0xFFFF, 0, {1, 2}));
}

TEST(Command, SkippingAndBinningTakeEffectWithIt) {
    useCameras("mono:width=640:height=480:x=0:y=0");
    Camera camera;
    const auto width = [&] { return loadLe32(&camera.get(18, 0, 0, 64)[6]); };
    EXPECT_TRUE(camera.setStatus(33, 0x0101));
    EXPECT_EQ(width(), 640u);
    EXPECT_TRUE(camera.setStatus(80, 1));
    EXPECT_EQ(width(), 320u);
    EXPECT_EQ(loadLe32(&camera.get(18, 0, 0, 64)[10]), 240u);
    EXPECT_FALSE(camera.set(128, 80, 0, {1, 0, 0, 0}));
}

TEST(VerticalBlank, LengthensTheFrame) {
    useCameras("mono:height=480,statusword:height=480");
    Camera pages(0), words(1);
    const auto lines = [](Camera& camera) { return loadLe16(&camera.get(18, 0, 0, 64)[26]); };
    EXPECT_EQ(lines(pages), 525);
    EXPECT_TRUE(pages.setPage(2, 16, 100));
    EXPECT_EQ(lines(pages), 625);
    EXPECT_EQ(lines(words), 500);
    EXPECT_TRUE(words.setStatus(23, 100));
    EXPECT_EQ(lines(words), 600);
}

TEST(WhiteBalance, ACameraThatFindsItsGainsItself) {
    useCameras("wb:sensor.response=[0.5,1.0,0.25]");
    Camera camera;
    EXPECT_TRUE(camera.setStatus(0x8044, 3));
    EXPECT_EQ(camera.status(68), 1) << "once, then manual";
    EXPECT_EQ(camera.status(64), 256);
    EXPECT_EQ(camera.status(65), 128);
    EXPECT_EQ(camera.status(67), 512);
}

TEST(Requests, UnknownOnesStall) {
    useCameras("mono");
    Camera camera;
    EXPECT_TRUE(camera.get(99, 0, 0, 8).empty());
    EXPECT_EQ(UsbGetLastError(), 31u);
    EXPECT_FALSE(camera.set(99, 0, 0, {1}));
    std::uint8_t byte = 0;
    EXPECT_EQ(UsbControlTransfer(camera.handle(), 0x80, 6, 0x0100, 0, 1, &byte, nullptr), 0)
        << "no vendor request";
}

TEST(Descriptor, TheBulkEndpointHasThePacketSizeOfTheBus) {
    for (const auto& [name, packet] : {std::pair{"bayer", 1024}, {"usb2", 512}, {"mono:speed=full", 64}}) {
        useCameras(name);
        Camera camera;
        std::uint8_t bytes[1024];
        std::uint32_t length = 0;
        ASSERT_EQ(UsbGetConfigDescriptor(camera.handle(), bytes, sizeof bytes, &length), 1);
        ASSERT_GT(length, 9u);
        EXPECT_EQ(loadLe16(&bytes[2]), length) << "the total length";
        std::uint32_t at = 0;
        while (at < length && bytes[at + 1] != 5) at += bytes[at];
        ASSERT_LT(at, length);
        EXPECT_EQ(bytes[at + 2] & 0x80, 0x80);
        EXPECT_EQ(bytes[at + 3], 2);
        EXPECT_EQ(loadLe16(&bytes[at + 4]), packet);
        EXPECT_EQ(UsbGetConfigDescriptor(camera.handle(), bytes, 5, &length), 1);
        EXPECT_EQ(length, 5u) << "cut to the buffer";
    }
}

}  // namespace
}  // namespace tavra::usbd
