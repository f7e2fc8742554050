#include "geometry.h"

#include <gtest/gtest.h>

#include "base/little_endian.h"

namespace tavra::usbd {
namespace {

GeometryModel sensor() {
    GeometryModel model;
    model.sensorWidth = 1000;
    model.sensorHeight = 600;
    model.minimumWidth = 32;
    model.minimumHeight = 4;
    model.widthStep = 8;
    model.heightStep = 2;
    model.xStep = 4;
    model.yStep = 2;
    return model;
}

std::vector<std::uint8_t> askFor(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                 std::uint32_t height) {
    std::vector<std::uint8_t> record(64);
    record[0] = 64;
    record[1] = 18;
    storeLe32(&record[6], width);
    storeLe32(&record[10], height);
    storeLe32(&record[14], x);
    storeLe32(&record[18], y);
    return record;
}

TEST(Geometry, TheWholeSensorUnlessTheModelSaysOtherwise) {
    const GeometryModel model = sensor();
    const Geometry geometry(model);
    EXPECT_EQ(geometry.regions()[0], (Region{0, 0, 1000, 600, true}));
    EXPECT_EQ(geometry.rawSize(), 600000u);
}

TEST(Geometry, WhatAHostAsksForIsMadeToFit) {
    const GeometryModel model = sensor();
    Geometry geometry(model);
    const auto result = [&](const std::vector<std::uint8_t>& record) {
        EXPECT_TRUE(geometry.write(record));
        return geometry.regions()[0];
    };
    EXPECT_EQ(result(askFor(101, 51, 333, 99)), (Region{100, 50, 328, 98, true})) << "down to the steps";
    EXPECT_EQ(result(askFor(0, 0, 5, 1)), (Region{0, 0, 32, 4, true})) << "up to the minimum";
    EXPECT_EQ(result(askFor(0, 0, 5000, 5000)), (Region{0, 0, 1000, 600, true}));
    EXPECT_EQ(result(askFor(990, 599, 64, 64)), (Region{936, 536, 64, 64, true})) << "moved into the sensor";
    EXPECT_EQ(result(askFor(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0)), (Region{0, 596, 1000, 4, true}));
    EXPECT_EQ(result(askFor(0, 0, 0, 0)), (Region{0, 0, 1000, 600, true})) << "all of the sensor";
    EXPECT_FALSE(geometry.write(std::vector<std::uint8_t>(23)));
}

TEST(Geometry, TheRecordTellsWhatIsInForce) {
    GeometryModel model = sensor();
    model.maximumGain = 255;
    model.defaultGain = 18;
    model.defaultDigitalGain = 64;
    Geometry geometry(model);
    geometry.write(askFor(100, 50, 320, 200));
    const auto record = geometry.record({245, 2000, 1999, 1, 2, 3, 4});
    ASSERT_EQ(record.size(), 64u);
    EXPECT_EQ(record[0], 64);
    EXPECT_EQ(record[1], 18);
    EXPECT_EQ(loadLe32(&record[6]), 320u);
    EXPECT_EQ(loadLe32(&record[10]), 200u);
    EXPECT_EQ(loadLe32(&record[14]), 100u);
    EXPECT_EQ(loadLe32(&record[18]), 50u);
    EXPECT_EQ(loadLe16(&record[26]), 245);
    EXPECT_EQ(loadLe16(&record[28]), 2000);
    EXPECT_EQ(loadLe16(&record[30]), 255);
    EXPECT_EQ(loadLe16(&record[32]), 18);
    EXPECT_EQ(loadLe16(&record[34]), 64);
    EXPECT_EQ(loadLe32(&record[36]), 1999u);
    EXPECT_EQ(loadLe32(&record[40]), 1u);
    EXPECT_EQ(loadLe32(&record[44]), 2u);
    EXPECT_EQ(loadLe32(&record[48]), 3u);
    EXPECT_EQ(loadLe32(&record[52]), 4u);
    EXPECT_EQ(loadLe32(&record[56]), 1u);
    EXPECT_EQ(loadLe32(&record[60]), 1u);
}

TEST(Geometry, ALongRecordTellsItsLengthInTheWord) {
    GeometryModel model = sensor();
    model.recordLength = 560;
    const auto record = Geometry(model).record({});
    EXPECT_EQ(record.size(), 560u);
    EXPECT_EQ(record[0], 255);
    EXPECT_EQ(loadLe16(&record[24]), 560);
}

TEST(Geometry, RegionsAreSentOneAfterAnother) {
    GeometryModel model = sensor();
    model.regionCount = 3;
    model.recordLength = 96;
    model.transferBits = 0x20000;
    Geometry geometry(model);
    std::vector<std::uint8_t> record(96);
    const auto head = askFor(0, 0, 40, 10);
    std::copy(head.begin(), head.end(), record.begin());
    const auto put = [&](std::size_t at, std::initializer_list<std::uint32_t> values) {
        for (const std::uint32_t value : values) storeLe32(&record[at], value), at += 4;
    };
    put(64, {48, 6, 200, 0});
    put(80, {64, 8, 300, 20});
    storeLe32(&record[60], 0b011);
    ASSERT_TRUE(geometry.write(record));
    ASSERT_EQ(geometry.sentRegions().size(), 2u);
    EXPECT_EQ(geometry.sentRegions()[1], (Region{200, 0, 48, 6, true}));
    EXPECT_EQ(geometry.rawSize(), 40u * 12 / 8 * 10 + 48u * 12 / 8 * 6);
    storeLe32(&record[60], 0b100);
    ASSERT_TRUE(geometry.write(record));
    EXPECT_EQ(geometry.sentRegions().size(), 2u) << "region 0 is always sent";
    const auto back = geometry.record({});
    EXPECT_EQ(loadLe32(&back[56]), 3u);
    EXPECT_EQ(loadLe32(&back[60]), 0b101u);
    EXPECT_EQ(loadLe32(&back[80]), 64u);
}

TEST(Geometry, TheGridCoversColumnsAndRowsOnce) {
    GeometryModel model = sensor();
    model.regionCount = 2;
    model.recordLength = 80;
    model.regionMode = 2;
    model.regions[0] = {0, 0, 96, 100, true};
    model.regions[1] = {48, 200, 96, 100, true};
    const Geometry geometry(model);
    EXPECT_TRUE(geometry.packsGrid());
    EXPECT_EQ(geometry.coveredColumns().size(), 144u);
    EXPECT_EQ(geometry.coveredRows().size(), 200u);
    EXPECT_EQ(geometry.rawSize(), 144u * 200);
}

TEST(Geometry, RowsOfPackedFormatsEndAtAByte) {
    GeometryModel model = sensor();
    model.transferBits = 0x10000;
    model.widthStep = 1;
    Geometry geometry(model);
    geometry.write(askFor(0, 0, 33, 4));
    EXPECT_EQ(geometry.rawSize(), 42u * 4) << "330 bits are 41.25 bytes";
}

TEST(Readout, NibblesArePowersOfTwo) {
    EXPECT_EQ(ReadoutFactors::fromWord(0x0000), (ReadoutFactors{1, 1, 1, 1, false}));
    EXPECT_EQ(ReadoutFactors::fromWord(0x1213), (ReadoutFactors{2, 2, 4, 8, false}));
    EXPECT_EQ(ReadoutFactors::fromWord(0xF000), (ReadoutFactors{8, 1, 1, 1, false})) << "at most 8";
}

TEST(Readout, OtherFactorsKeepThePartOfTheSensor) {
    const GeometryModel model = sensor();
    Geometry geometry(model);
    geometry.write(askFor(160, 80, 640, 400));
    geometry.setFactors({2, 1, 1, 2, false});
    EXPECT_EQ(geometry.regions()[0], (Region{80, 40, 320, 200, true}));
    geometry.setFactors({1, 1, 1, 1, false});
    EXPECT_EQ(geometry.regions()[0], (Region{160, 80, 640, 400, true}));
    geometry.setFactors({4, 4, 1, 1, false});
    geometry.write(askFor(0, 0, 5000, 5000));
    EXPECT_EQ(geometry.regions()[0], (Region{0, 0, 248, 150, true}))
        << "a quarter of the sensor, to the step";
}

}  // namespace
}  // namespace tavra::usbd
