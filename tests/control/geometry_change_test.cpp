// Exposure control of a camera whose geometry changes at the worst moment: between any two looks at it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "base/little_endian.h"
#include "camera/control_channel.h"
#include "control/luminance_ctrl_usb.h"

namespace tavra::test {
namespace {

using testing::AnyOf;

// The limits of one format, in a scan record.
struct Limits {
    std::uint32_t maxClock;
    Shutter maxShort, maxLong;

    ScanRecord record() const {
        ScanRecord scan;
        storeLe16(&scan.bytes()[30], 680);
        storeLe16(&scan.bytes()[32], 20);
        storeLe32(&scan.bytes()[36], maxClock);
        storeLe32(&scan.bytes()[40], maxShort.clock);
        storeLe32(&scan.bytes()[44], maxShort.line);
        storeLe32(&scan.bytes()[48], maxLong.clock);
        storeLe32(&scan.bytes()[52], maxLong.line);
        return scan;
    }
};

// Lines of 100 and of 1000 clocks.
constexpr Limits kNarrow{99, {50, 20}, {200, 30}};
constexpr Limits kWide{999, {40, 700}, {100, 800}};

// Tells the two formats by turns, from `next` on.
class ChangingCamera final : public IExposureCamera, private IStatusWords {
  public:
    ChangingCamera() { identity_.enableShutterSpeed = 1; }

    const CameraInfo& exposureIdentity() const override { return identity_; }
    const CapabilityWords& exposureCapabilities() const override { return capabilities_; }
    IStatusWords& statusWords() override { return *this; }
    ScanRecord scanRecord() const override {
        wide = !wide;
        return (wide ? kNarrow : kWide).record();
    }
    Status readExposure(ExposureBlock& read) override {
        read = block;
        return Status();
    }
    Status writeExposure(const ExposureBlock& written) override {
        block = written;
        return Status();
    }
    Status sendFrameTiming() override { return Status(); }

    ExposureBlock block{10, 7, 20};
    mutable bool wide = false;  // the format that is told next

  private:
    Status readStatus(std::uint16_t, std::uint16_t, std::span<std::uint16_t>) override { return Status(); }
    Status writeStatus(std::uint16_t, std::uint16_t, std::span<const std::uint16_t>) override {
        return Status();
    }

    CameraInfo identity_;
    CapabilityWords capabilities_;
};

class GeometryChange : public testing::TestWithParam<bool> {
  protected:
    GeometryChange() {
        EXPECT_TRUE(control.LoadFromCamera().ok());
        camera.wide = GetParam();
    }
    // What an operation does that finds the format the test began with, and that one alone.
    template <typename T>
    static T either(const T& narrow, const T& wide) {
        return GetParam() ? wide : narrow;
    }

    ChangingCamera camera;
    CLuminanceCtrlUSB control{camera};
};

INSTANTIATE_TEST_SUITE_P(Formats, GeometryChange, testing::Bool());

TEST_P(GeometryChange, LimitsAgree) {
    const ShutterScale scale = control.shutterScale();
    const Limits& limits = either(kNarrow, kWide);
    EXPECT_EQ(scale.maxClock, limits.maxClock);
    EXPECT_EQ(scale.maxShort, limits.maxShort);
    EXPECT_EQ(scale.maxLong, limits.maxLong);
}

TEST_P(GeometryChange, ClocksAreOfOneFormat) {
    std::uint32_t clocks = 0;
    EXPECT_TRUE(control.exposureClocks(clocks).ok());
    EXPECT_EQ(clocks, either(1007u, 10007u));
}

TEST_P(GeometryChange, TheLongestExposureIsOfOneFormat) {
    camera.block.lines = 150;  // within the longest of the first, beyond that of the second
    EXPECT_TRUE(control.LoadFromCamera().ok());
    std::uint32_t clocks = 0;
    EXPECT_TRUE(control.exposureClocks(clocks).ok());
    EXPECT_EQ(clocks, either(15007u, 100800u));
}

TEST_P(GeometryChange, AnExposureInClocksIsSplitAndCheckedByOneFormat) {
    // 120 lines and 99 clocks, or 12 lines and 99 clocks. Taken apart, 120 lines may be more than the
    // longest.
    EXPECT_TRUE(control.setExposureClocks(12099).ok());
    EXPECT_EQ(camera.block.lines, either(120u, 12u));
    EXPECT_EQ(camera.block.clocks, 99);
}

TEST_P(GeometryChange, AnExposureOfTheWidestLineIsCheckedByOneFormat) {
    // 150 lines are short enough for the first format, 500 clocks fit a line of the second.
    EXPECT_EQ(control.setShutter({150, 500}), Status(87));
    EXPECT_EQ(camera.block.lines, 10u);
}

TEST_P(GeometryChange, EndsOfTheRangeAreOfOneFormat) {
    EXPECT_TRUE(control.setShutterRange({{1, 2}, {30, 4}}).ok());
    camera.wide = GetParam();
    EXPECT_EQ(control.shutterRangeTop(), either(3004u, 30004u));
    camera.wide = GetParam();
    EXPECT_EQ(control.shutterRangeBottom(), either(102u, 1002u));
}

TEST_P(GeometryChange, ARangeIsMovedWithinOneFormat) {
    EXPECT_TRUE(control.setShutterRangeTop(18050).ok());
    EXPECT_EQ(control.shutterRange().max, either(Shutter{180, 50}, Shutter{18, 50}));
    camera.wide = GetParam();
    EXPECT_TRUE(control.setShutterRangeBottom(15050).ok());
    EXPECT_EQ(control.shutterRange().min, either(Shutter{150, 50}, Shutter{15, 50}));
}

TEST_P(GeometryChange, ADecisionIsOfOneFormat) {
    EXPECT_TRUE(control.setMode(TAVRA_ALC_SHUTTER).ok());
    control.setControlSpeed({0, 0, 0, 1});
    camera.wide = GetParam();
    const std::vector<std::uint8_t> black(16);
    CAveragePixelValue statistics;
    statistics.Accumulate(4, 4, 1, black.data());
    EXPECT_TRUE(control.step(statistics).ok());
    // Doubled, plus one clock: 2 x 1007 + 1, or 2 x 10007 + 1.
    EXPECT_EQ(camera.block.lines, 20u);
    EXPECT_EQ(camera.block.clocks, 15);
}

}  // namespace
}  // namespace tavra::test
