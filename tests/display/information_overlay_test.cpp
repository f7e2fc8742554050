// The text and the grid of the information overlay, on a paint that writes down what it is asked for.
#include "display/information_overlay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "support/recording_paint.h"

namespace tavra::test {
namespace {

using testing::ElementsAre;

TEST(InformationOverlay, StatisticsAreFourLinesFromTheCorner) {
    RecordingPaint paint;
    ControlState state;
    state.means = {1, 22, 133, 255};
    state.luminance = 77;
    state.whiteBalanceGains = {7, 128, 1023, 65};
    state.shutterLine = 1200;
    state.shutterClock = 0xFFFFFFFF;
    state.gain = 34;
    state.digitalGain = 511;
    EXPECT_TRUE(DrawStatisticsText(paint, state).ok());
    EXPECT_THAT(paint.log, ElementsAre("text 0,0 Average:R=1, Gr=22, Gb=133, B=255, Y=77",
                                       "text 0,13 WB Gain:R=  7, Gr=128, Gb=1023, B= 65",
                                       "text 0,26 Shutter:Line=1200, Clock=-1",
                                       "text 0,39 CDSGain=34, DigitalGain=511"));
}

// A paint on which some of the texts and lines fail, by their numbers from 1, each with a code of its own.
class PaintThatFails final : public platform::IPaint {
  public:
    Status copy(const platform::Rectangle&, const platform::Bitmap&, std::int32_t, std::int32_t) override {
        return Status();
    }
    Status stretch(const platform::Rectangle&, const platform::Bitmap&, const platform::Rectangle&,
                   platform::StretchQuality) override {
        return Status();
    }
    Status fillBlack(const platform::Rectangle&) override { return Status(); }
    Status text(std::int32_t, std::int32_t, std::string_view) override { return resultOf(failures, ++texts); }
    std::int32_t textHeight() override { return 13; }
    Status line(std::int32_t, std::int32_t, std::int32_t, std::int32_t) override {
        return resultOf(lineFailures, ++lines);
    }

    std::map<int, std::uint32_t> failures, lineFailures;
    int texts = 0, lines = 0;

  private:
    static Status resultOf(const std::map<int, std::uint32_t>& codes, int number) {
        const auto failure = codes.find(number);
        return failure != codes.end() ? Status(failure->second) : Status();
    }
};

TEST(InformationOverlay, StatisticsEndWithTheLineThatFails) {
    PaintThatFails paint;
    paint.failures = {{3, 6}};
    EXPECT_EQ(DrawStatisticsText(paint, {}), Status(6));
    EXPECT_EQ(paint.texts, 3);
}

TEST(InformationOverlay, FailedWeightLeavesTheRestOfTheGrid) {
    PaintThatFails paint;
    paint.failures = {{1, 6}, {7, 8}, {12, 87}};
    EXPECT_EQ(DrawControlGrid(paint, {100, 100}, {}), Status(87)) << "the last failure";
    EXPECT_EQ(paint.texts, 16);
    EXPECT_EQ(paint.lines, 6);
}

TEST(InformationOverlay, FailedLineLeavesTheRestOfTheGrid) {
    PaintThatFails paint;
    paint.failures = {{7, 8}};
    paint.lineFailures = {{1, 6}, {4, 87}};
    EXPECT_EQ(DrawControlGrid(paint, {100, 100}, {}), Status(87)) << "the last failure";
    EXPECT_EQ(paint.texts, 16);
    EXPECT_EQ(paint.lines, 6);
}

// 33 ten-thousandths of 1000 are 3.3; 2500 of 401 are 100.25; 20000 lies outside.
TEST(InformationOverlay, GridPrintsWeightsAndDrawsTheBoundaries) {
    RecordingPaint paint;
    ControlState state;
    for (std::uint8_t i = 0; i < 16; ++i) {
        state.exposureWeights[i] = i;
        state.whiteBalanceWeights[i] = static_cast<std::uint8_t>(100 + i);
    }
    state.xBoundary = {33, 5000, 10000};
    state.yBoundary = {2500, 5000, 20000};
    EXPECT_TRUE(DrawControlGrid(paint, {1000, 401}, state).ok());
    EXPECT_THAT(
        paint.log,
        ElementsAre("text 0,0 EE:  0  WB:100", "text 3,0 EE:  1  WB:101", "text 500,0 EE:  2  WB:102",
                    "text 1000,0 EE:  3  WB:103", "text 0,100 EE:  4  WB:104", "text 3,100 EE:  5  WB:105",
                    "text 500,100 EE:  6  WB:106", "text 1000,100 EE:  7  WB:107",
                    "text 0,200 EE:  8  WB:108", "text 3,200 EE:  9  WB:109", "text 500,200 EE: 10  WB:110",
                    "text 1000,200 EE: 11  WB:111", "text 0,802 EE: 12  WB:112", "text 3,802 EE: 13  WB:113",
                    "text 500,802 EE: 14  WB:114", "text 1000,802 EE: 15  WB:115", "line 3,0,3,400",
                    "line 0,100,999,100", "line 500,0,500,400", "line 0,200,999,200", "line 1000,0,1000,400",
                    "line 0,802,999,802"));
}

}  // namespace
}  // namespace tavra::test
