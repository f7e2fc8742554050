// What the information overlay prints of an open camera, on a paint that writes down what it is asked for.
#include "capture/information_overlay.h"

#include <numeric>

#include "control_api/exposure_fixture.h"
#include "support/recording_paint.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kText = TAVRA_DISPLAY_INFO_STATISTICS, kGrid = TAVRA_DISPLAY_INFO_GRID;
constexpr std::uint16_t kMosaic = 2;  // R and Gr above Gb and B

class InformationOfACamera : public ExposureTest {
  protected:
    std::vector<std::string> drawn(std::uint32_t mode) {
        paint.log.clear();
        drawInformation(record(), paint, mode);
        return paint.log;
    }
    // A frame of 8 x 8 pixels, so that each cell is one pattern of the mosaic: all zero but for two cells.
    static Bytes frameWithTwoCells(const Bytes& first, const Bytes& last) {
        Bytes frame(64);
        for (std::size_t p = 0; p < 4; ++p) {
            const std::size_t x = p % 2, y = p / 2;
            frame[y * 8 + x] = first[p];
            frame[(6 + y) * 8 + 6 + x] = last[p];
        }
        return frame;
    }
    void setWeights(const Bytes& exposure, const Bytes& whiteBalance) {
        ASSERT_TRUE(Tavra_SetALCWeight(handle, exposure.data()));
        ASSERT_TRUE(Tavra_SetAWBWeight(handle, whiteBalance.data()));
    }
    static Bytes onlyCell(std::size_t cell) {
        Bytes weights(16);
        weights[cell] = 1;
        return weights;
    }

    RecordingPaint paint;
};

// Luminance by the first cell: half of 20 + 30 x 0.5866, 10 x 0.2989 and 40 x 0.1145 are 22.2. Means by the
// last one.
TEST_F(InformationOfACamera, LuminanceAndMeansHaveTheirOwnWeights) {
    open();
    setWeights(onlyCell(0), onlyCell(15));
    const Bytes frame = frameWithTwoCells({10, 20, 30, 40}, {100, 150, 200, 250});
    record().statistics.Accumulate(8, 8, kMosaic, frame.data());
    EXPECT_EQ(drawn(kText)[0], "text 0,0 Average:R=100, Gr=150, Gb=200, B=250, Y=22");
    setWeights(onlyCell(15), onlyCell(0));  // 175 x 0.5866, 100 x 0.2989 and 250 x 0.1145 are 161.2
    EXPECT_EQ(drawn(kText)[0], "text 0,0 Average:R=10, Gr=20, Gb=30, B=40, Y=161");
}

// By each of the codes that are read as one plane.
TEST_F(InformationOfACamera, MonoHasOneMeanAndZeroes) {
    open();
    const Bytes frame(64, 90);
    for (const std::uint16_t array : {1, 12, 13, 14, 15}) {
        record().statistics.Accumulate(8, 8, array, frame.data());
        EXPECT_EQ(drawn(kText)[0], "text 0,0 Average:R=90, Gr=0, Gb=0, B=0, Y=90") << array;
    }
}

TEST_F(InformationOfACamera, ShutterAndGainsAreTheCamerasSettings) {
    open(limitedCamera());  // 10 lines, 7 clocks, gain 33
    ASSERT_TRUE(Tavra_SetDigitalGain(handle, 300));
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(handle, TAVRA_WHITE_BALANCE_MANUAL));
    ASSERT_TRUE(Tavra_SetWhiteBalanceGain(handle, 200, 140, 120, 90));
    EXPECT_THAT(drawn(kText),
                ElementsAre(testing::_, "text 0,13 WB Gain:R=200, Gr=140, Gb=120, B= 90",
                            "text 0,26 Shutter:Line=10, Clock=7", "text 0,39 CDSGain=33, DigitalGain=300"));
}

// It may have changed them since it was asked last.
TEST_F(InformationOfACamera, GainsOfACameraThatBalancesItselfAreRead) {
    DoubleCamera camera;
    camera.setCapability(1, 8);
    open(camera);
    for (std::uint16_t color = 0; color < 4; ++color) {
        usb.camera().status(static_cast<std::uint16_t>(64 + color)) = static_cast<std::uint16_t>(300 + color);
    }
    traffic();
    EXPECT_EQ(drawn(kText)[1], "text 0,13 WB Gain:R=300, Gr=301, Gb=302, B=303");
    EXPECT_THAT(traffic(), testing::Contains(request::readStatus(64, 4)));
    usb.camera().status(65) = 7;
    EXPECT_EQ(drawn(kText)[1], "text 0,13 WB Gain:R=300, Gr=  7, Gb=302, B=303");
}

TEST_F(InformationOfACamera, WhatCannotBeReadIsZero) {
    DoubleCamera camera;
    camera.setCapability(1, 8);
    open(camera);
    usb.camera().status(64) = 300;
    usb.failRequest(128);
    EXPECT_EQ(drawn(kText)[1], "text 0,13 WB Gain:R=  0, Gr=  0, Gb=  0, B=  0");
    EXPECT_EQ(record().preview.displayError, 0u) << "nothing failed to be drawn";
}

// Tenths of 640 and 480 pixels, also while the image is shown turned.
TEST_F(InformationOfACamera, GridIsOfTheImageAsItStands) {
    open();
    Bytes cells(16);
    std::iota(cells.begin(), cells.end(), std::uint8_t{0});
    const Bytes tens(16, 10);
    setWeights(cells, tens);
    const std::uint16_t x[] = {1000, 2000, 3000}, y[] = {4000, 5000, 6000};
    ASSERT_TRUE(Tavra_SetControlArea(handle, x, y));
    const std::vector<std::string> upright = drawn(kGrid);
    ASSERT_EQ(upright.size(), 22u);
    EXPECT_EQ(upright[0], "text 0,0 EE:  0  WB: 10");
    EXPECT_EQ(upright[6], "text 128,192 EE:  6  WB: 10");
    EXPECT_EQ(upright[15], "text 192,288 EE: 15  WB: 10");
    EXPECT_EQ(upright[16], "line 64,0,64,479");
    EXPECT_EQ(upright[17], "line 0,192,639,192");
    ASSERT_TRUE(Tavra_SetRotationMode(handle, TAVRA_ROTATION_CLOCKWISE));
    record().displayRotation = TAVRA_ROTATION_CLOCKWISE;
    EXPECT_EQ(drawn(kGrid), upright);
}

TEST_F(InformationOfACamera, GridIsPrintedOverTheText) {
    open();
    const std::vector<std::string> both = drawn(kText | kGrid);
    ASSERT_EQ(both.size(), 26u);
    EXPECT_EQ(both[0].substr(0, 16), "text 0,0 Average");
    EXPECT_EQ(both[3].substr(0, 17), "text 0,39 CDSGain");
    EXPECT_EQ(both[4], "text 0,0 EE:  1  WB:  1");
    EXPECT_EQ(both[25].substr(0, 4), "line");
}

TEST_F(InformationOfACamera, OtherBitsDrawNothing) {
    open();
    EXPECT_THAT(drawn(4), IsEmpty());
    EXPECT_THAT(drawn(0xFFFFFFFC), IsEmpty());
}

TEST_F(InformationOfACamera, FailedPrintStaysAsDisplayError) {
    open();
    for (const std::uint32_t mode : {kText, kGrid}) {
        paint.textResult = Status(5 + mode);
        drawn(mode);
        EXPECT_EQ(record().preview.displayError, 5 + mode);
    }
    paint.textResult = Status();
    drawn(kText | kGrid);
    EXPECT_EQ(record().preview.displayError, 5 + kGrid) << "a later success does not clear it";
    EXPECT_EQ(lastError(), 0u) << "nobody called";
}

}  // namespace
}  // namespace tavra::test
