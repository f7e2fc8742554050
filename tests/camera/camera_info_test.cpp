#include "camera/camera_info.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

#include "base/little_endian.h"

namespace tavra {
namespace {

using Block = std::array<std::uint8_t, CameraInfo::kReplySize>;

// Each byte its own number, so that a field read from a wrong place shows.
Block numbered() {
    Block block{};
    for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<std::uint8_t>(i);
    return block;
}

void put16(Block& block, std::size_t offset, std::uint16_t value) {
    storeLe16(&block[offset], value);
}
void put32(Block& block, std::size_t offset, std::uint32_t value) {
    storeLe32(&block[offset], value);
}

Block oldLayout(std::uint16_t productType) {
    Block block{};
    put16(block, 2, productType);
    put16(block, 10, 64);
    return block;
}

TEST(CameraInfo, NewLayoutHasEveryFieldAtItsPlace) {
    const CameraInfo info = CameraInfo::parse(numbered());
    EXPECT_EQ(info.vendor, 0x0302);
    EXPECT_EQ(info.productType, 0x0504);
    EXPECT_EQ(info.hardwareRevision, 0x0706);
    EXPECT_EQ(info.firmwareRevision, 0x0908);
    EXPECT_EQ(info.colorArray, 0x0B0A);
    EXPECT_EQ(info.frameHeaderSize, 0x0D0C);
    EXPECT_EQ(info.enableImageSize, 0x11100F0Eu);
    EXPECT_EQ(info.enableTransferBits, 0x15141312u);
    EXPECT_EQ(info.furtherMask, 0x19181716u);
    EXPECT_EQ(info.enableScanModes, 0x1B1A);
    EXPECT_EQ(info.clockMaximum, 0x1F1E1D1Cu);
    EXPECT_EQ(info.clockMinimum, 0x23222120u);
    EXPECT_EQ(info.clockValue, 0x27262524u);
    EXPECT_EQ(info.enableClock, 0x2B2A2928u);
    EXPECT_EQ(info.enableShutterSpeed, 0x2D2C);
    EXPECT_EQ(info.furtherWord, 0x2F2E);
    EXPECT_EQ(info.furtherLong, 0x33323130u);
    EXPECT_EQ(info.enableTriggerVersion, 0x37363534u);
    EXPECT_EQ(info.defaultWord, 130u);
    EXPECT_EQ(info.maximumWidth, 0x3B3A3938u);
    EXPECT_EQ(info.maximumHeight, 0x3F3E3D3Cu);
}

TEST(CameraInfo, OldLayoutIsTwoBytesEarlierAndKeepsDefaults) {
    Block block = numbered();
    put16(block, 10, 64);
    const CameraInfo info = CameraInfo::parse(block);
    EXPECT_EQ(info.vendor, 11883);
    EXPECT_EQ(info.productType, 0x0302);
    EXPECT_EQ(info.hardwareRevision, 0x0504);
    EXPECT_EQ(info.firmwareRevision, 0x0706);
    EXPECT_EQ(info.colorArray, 0x0908);
    EXPECT_EQ(info.frameHeaderSize, 64);
    EXPECT_EQ(info.enableImageSize, 0x0F0E0D0Cu);
    EXPECT_EQ(info.enableTransferBits, 0x13121110u);
    EXPECT_EQ(info.furtherMask, 0x17161514u);
    EXPECT_EQ(info.enableScanModes, 0x1918);
    EXPECT_EQ(info.clockMaximum, 24545455u);
    EXPECT_EQ(info.clockMinimum, 24545455u);
    EXPECT_EQ(info.clockValue, 24545455u);
    EXPECT_EQ(info.enableClock, 0u);
    EXPECT_EQ(info.enableShutterSpeed, 0);
    EXPECT_EQ(info.enableTriggerVersion, 0u);
    EXPECT_EQ(info.maximumWidth, 4092u);
    EXPECT_EQ(info.maximumHeight, 4092u);
}

TEST(CameraInfo, TheVendorWordMeansTheNewLayoutEvenWith64AtByte10) {
    Block block{};
    put16(block, 2, 0x2E6B);
    put16(block, 4, 2320);
    put16(block, 10, 64);
    const CameraInfo info = CameraInfo::parse(block);
    EXPECT_EQ(info.productType, 2320);
    EXPECT_EQ(info.colorArray, 64);
}

TEST(CameraInfo, AnyVendorWithout64AtByte10MeansTheNewLayout) {
    Block block{};
    put16(block, 2, 0x1234);
    put16(block, 4, 528);
    put16(block, 10, 63);
    EXPECT_EQ(CameraInfo::parse(block).vendor, 0x1234);
    EXPECT_EQ(CameraInfo::parse(block).productType, 528);
}

TEST(CameraInfo, SensorSizesThatAreNotToldComeFromTheType) {
    using Size = std::pair<std::uint32_t, std::uint32_t>;
    const std::pair<Size, std::vector<std::uint16_t>> rows[] = {
        {{640, 480}, {773, 1797}},
        {{640, 492}, {272, 528, 2310, 4102}},
        {{1024, 768}, {1541, 2053}},
        {{1024, 776}, {784, 1040, 4358, 4614}},
        {{1280, 964}, {265, 521, 1296, 1552}},
        {{1360, 1040}, {1808, 2064, 4870, 5126}},
        {{1600, 1236}, {2320, 4112, 5382, 5638}},
        {{4092, 4092}, {0, 273, 8214, 16385, 65535}},
    };
    for (const auto& [size, types] : rows) {
        for (const std::uint16_t type : types) {
            const CameraInfo info = CameraInfo::parse(oldLayout(type));
            EXPECT_EQ(Size(info.maximumWidth, info.maximumHeight), size) << type;
        }
    }
}

TEST(CameraInfo, OneMissingSideReplacesBoth) {
    Block block{};
    put16(block, 2, 0x2E6B);
    put16(block, 4, 2310);
    put32(block, 56, 700);
    EXPECT_EQ(CameraInfo::parse(block).maximumWidth, 640u);
    EXPECT_EQ(CameraInfo::parse(block).maximumHeight, 492u);
    put32(block, 60, 500);
    EXPECT_EQ(CameraInfo::parse(block).maximumWidth, 700u);
    EXPECT_EQ(CameraInfo::parse(block).maximumHeight, 500u);
}

TEST(CameraInfo, FourTypesAreLegacy) {
    int count = 0;
    for (unsigned type = 0; type <= 0xFFFF; ++type)
        count += isLegacyType(static_cast<std::uint16_t>(type)) ? 1 : 0;
    EXPECT_EQ(count, 4);
    for (const std::uint16_t type : {773, 1541, 1797, 2053}) EXPECT_TRUE(isLegacyType(type));
}

TEST(CameraInfo, SevenTypesAreTheWideGainFamily) {
    int count = 0;
    for (unsigned type = 0; type <= 0xFFFF; ++type)
        count += isWideGainFamily(static_cast<std::uint16_t>(type)) ? 1 : 0;
    EXPECT_EQ(count, 7);
    for (const std::uint16_t type : {2326, 3448, 4118, 16385, 16386, 16387, 16388})
        EXPECT_TRUE(isWideGainFamily(type));
}

}  // namespace
}  // namespace tavra
