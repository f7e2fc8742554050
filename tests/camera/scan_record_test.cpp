#include <gtest/gtest.h>

#include "base/little_endian.h"
#include "camera/frame_feature.h"

namespace tavra {
namespace {

// Each byte its own number, so that a field at a wrong place shows.
ScanRecord numbered() {
    ScanRecord record;
    for (std::size_t i = 0; i < ScanRecord::kCapacity; ++i) record.bytes()[i] = static_cast<std::uint8_t>(i);
    return record;
}

TEST(ScanRecord, StartsEmptyWithLengthAndRequest) {
    const ScanRecord record;
    EXPECT_EQ(record.bytes()[0], 64);
    EXPECT_EQ(record.bytes()[1], 18);
    for (std::size_t i = 2; i < ScanRecord::kCapacity; ++i) EXPECT_EQ(record.bytes()[i], 0) << i;
}

TEST(ScanRecord, EveryFieldIsAtItsPlace) {
    const ScanRecord record = numbered();
    EXPECT_EQ(record.width(), 0x09080706u);
    EXPECT_EQ(record.height(), 0x0D0C0B0Au);
    EXPECT_EQ(record.region(0).x, 0x11100F0Eu);
    EXPECT_EQ(record.region(0).y, 0x15141312u);
    EXPECT_EQ(record.scanMode(), 0x1716);
    EXPECT_EQ(record.linesPerFrame(), 0x1B1A);
    EXPECT_EQ(record.clocksPerLine(), 0x1D1C);
    EXPECT_EQ(record.maximumGain(), 0x1F1E);
    EXPECT_EQ(record.defaultGain(), 0x2120);
    EXPECT_EQ(record.defaultDigitalGain(), 0x2322);
    EXPECT_EQ(record.lastExposureClock(), 0x27262524u);
    EXPECT_EQ(record.shortExposureClocks(), 0x2B2A2928u);
    EXPECT_EQ(record.shortExposureLines(), 0x2F2E2D2Cu);
    EXPECT_EQ(record.longExposureClocks(), 0x33323130u);
    EXPECT_EQ(record.longExposureLines(), 0x37363534u);
    EXPECT_EQ(record.region(1).width, 0x43424140u);
    EXPECT_EQ(record.region(1).height, 0x47464544u);
    EXPECT_EQ(record.region(1).x, 0x4B4A4948u);
    EXPECT_EQ(record.region(1).y, 0x4F4E4D4Cu);
    EXPECT_EQ(record.region(31).y, 0x2F2E2D2Cu) << "bytes 556 to 559, the last of the record";
}

TEST(ScanRecord, LengthIsByte0OrTheWordBehindIt) {
    ScanRecord record;
    record.bytes()[0] = 254;
    EXPECT_EQ(record.declaredLength(), 254u);
    record.bytes()[0] = 255;
    storeLe16(&record.bytes()[24], 300);
    EXPECT_EQ(record.declaredLength(), 300u);
    storeLe16(&record.bytes()[24], 600);
    EXPECT_EQ(record.declaredLength(), 560u);
    EXPECT_EQ(record.sentLength(), 255u);
}

TEST(ScanRecord, AShortReplyIsWholeOnlyIfItHoldsWhatItDeclares) {
    ScanRecord record;
    record.bytes()[0] = 40;
    EXPECT_TRUE(record.completeWith(40));
    EXPECT_TRUE(record.completeWith(64));
    EXPECT_FALSE(record.completeWith(39));
    EXPECT_FALSE(record.completeWith(0));
    record.bytes()[0] = 0;
    EXPECT_FALSE(record.completeWith(0));
    record.bytes()[0] = 255;
    EXPECT_FALSE(record.completeWith(25)) << "the length itself did not come";
    storeLe16(&record.bytes()[24], 30);
    EXPECT_TRUE(record.completeWith(30));
}

TEST(ScanRecord, RegionCountIsLimited) {
    ScanRecord record;
    EXPECT_EQ(record.regionCount(), 1u);
    storeLe32(&record.bytes()[56], 32);
    EXPECT_EQ(record.regionCount(), 32u);
    storeLe32(&record.bytes()[56], 0xFFFFFFFF);
    EXPECT_EQ(record.regionCount(), 32u);
}

TEST(ScanRecord, RegionsAreWrittenWhereTheyAreRead) {
    for (std::uint32_t index = 0; index < 32; ++index) {
        ScanRecord record;
        record.setRegion(index, {1, 2, 3, 4});
        record.setRegionEnabled(index, true);
        const std::size_t offset = index == 0 ? 6 : 64 + 16 * (index - 1);
        EXPECT_EQ(loadLe32(&record.bytes()[offset]), 1u);
        EXPECT_EQ(loadLe32(&record.bytes()[offset + 12]), 4u);
        EXPECT_EQ(loadLe32(&record.bytes()[60]), 1u << index);
        EXPECT_TRUE(record.regionEnabled(index));
        record.setRegionEnabled(index, false);
        EXPECT_EQ(loadLe32(&record.bytes()[60]), 0u);
    }
}

TEST(ScanRecord, ARegionThatCannotExistIsNothing) {
    ScanRecord record = numbered();
    const auto before = record.bytes();
    record.setRegion(32, {1, 2, 3, 4});
    record.setRegionEnabled(32, true);
    EXPECT_EQ(record.bytes(), before);
    EXPECT_EQ(record.region(32).width, 0u);
    EXPECT_FALSE(record.regionEnabled(0xFFFFFFFF));
}

TEST(ScanRecord, ExposureLimitsFollowFromTheFrame) {
    ScanRecord record = numbered();
    record.setScanMode(1);
    storeLe16(&record.bytes()[26], 525);
    storeLe16(&record.bytes()[28], 780);
    record.deriveExposureLimits();
    EXPECT_EQ(record.lastExposureClock(), 779u);
    EXPECT_EQ(record.shortExposureClocks(), 0u);
    EXPECT_EQ(record.shortExposureLines(), 525u);
    EXPECT_EQ(record.longExposureClocks(), 0u);
    EXPECT_EQ(record.longExposureLines(), 525u);
    for (const std::uint16_t mode : {4, 32}) {
        record.setScanMode(mode);
        record.deriveExposureLimits();
        EXPECT_EQ(record.longExposureLines(), 4090u);
        EXPECT_EQ(record.shortExposureLines(), 525u);
    }
}

TEST(FrameFeature, RegionInterfaceAnswersFromTheRecord) {
    CFrameFeature geometry;
    ScanRecord record;
    storeLe32(&record.bytes()[56], 8);
    record.setRegion(3, {100, 50, 7, 9});
    record.setRegionEnabled(3, true);
    geometry.storeScanRecord(record);
    EXPECT_EQ(geometry.GetMaxROICount(), 8u);
    EXPECT_EQ(geometry.GetROIMode(), 0u) << "no register pages";
    std::uint32_t enabled = 9, x = 0, y = 0, width = 0, height = 0;
    geometry.GetROI(3, &enabled, &x, &y, &width, &height);
    EXPECT_EQ(enabled, 1u);
    EXPECT_EQ(x, 7u);
    EXPECT_EQ(y, 9u);
    EXPECT_EQ(width, 100u);
    EXPECT_EQ(height, 50u);
    geometry.GetROI(1000, &enabled, &x, &y, &width, &height);
    EXPECT_EQ(enabled, 0u);
    EXPECT_EQ(width, 0u);
}

TEST(FrameFeature, GroupsAreTheCountWithTwoExceptions) {
    CFrameFeature geometry;
    for (const auto& [count, group] :
         {std::pair{1u, 1u}, {2u, 2u}, {4u, 4u}, {8u, 1u}, {9u, 9u}, {16u, 4u}, {32u, 32u}}) {
        ScanRecord record;
        storeLe32(&record.bytes()[56], count);
        geometry.storeScanRecord(record);
        EXPECT_EQ(geometry.GetROIGroup(), group);
    }
}

}  // namespace
}  // namespace tavra
