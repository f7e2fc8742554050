// Settings of the controls that change while frames are measured and balanced.
#include <array>

#include "control/control_double.h"
#include "control/white_balance_double.h"
#include "support/never_torn.h"

namespace tavra::test {
namespace {

TEST(SettingsThreads, GainsOfTheWhiteBalance) {
    PlainControl control;
    ASSERT_TRUE(control.setMode(1).ok());
    const std::vector<std::function<void()>> settings{
        [&] {
            EXPECT_TRUE(control.setGains({300, 140, 150, 90}).ok());
        },
        [&] {
            EXPECT_TRUE(control.setGains({70, 100, 110, 400}).ok());
        },
    };
    Frame mosaic(64 * 64);
    for (std::size_t i = 0; i < mosaic.size(); ++i) mosaic[i] = static_cast<std::uint8_t>(i * 37);
    neverTorn(settings, [&] {
        Frame balanced = mosaic;
        EXPECT_TRUE(control.ApplyGain(64, 64, 2, balanced.data()).ok());
        return balanced;
    });
    neverTorn(settings, [&] {
        Gains gains{};
        EXPECT_TRUE(control.getGains(gains).ok());
        return gains;
    });
}

// The grid of a frame counts from its first row to its last: a new one waits for the next frame.
TEST(SettingsThreads, GridOfTheStatistics) {
    CAveragePixelValue statistics;
    Frame ramp;
    for (unsigned y = 0; y < 64; ++y)
        for (unsigned x = 0; x < 64; ++x) ramp.push_back(static_cast<std::uint8_t>(2 * x + y));
    const CAveragePixelValue::Boundaries narrow{1000, 2000, 3000}, wide{6000, 8000, 9000};
    neverTorn(
        {[&] { statistics.setControlArea(narrow, narrow); }, [&] { statistics.setControlArea(wide, wide); },
         [&] { statistics.setControlArea(narrow, wide); }},
        [&] {
            statistics.Accumulate(64, 64, 2, ramp.data());
            std::array<CAveragePixelValue::Means, 16> cells{};
            for (std::size_t i = 0; i < cells.size(); ++i) {
                CAveragePixelValue::Weights only{};
                only[i] = 1;
                statistics.GetWeightedAverage(only, cells[i]);
            }
            return cells;
        });
}

TEST(SettingsThreads, GroupsOfTheExposureControl) {
    ControlDouble control;
    neverTorn({[&] {
                   control.setControlSpeed({1, 2, 3, 4});
               },
               [&] {
                   control.setControlSpeed({5, 6, 7, 8});
               }},
              [&] {
                  const ControlSpeed speed = control.controlSpeed();
                  return std::array<int, 4>{speed.shutter, speed.gain, speed.skipFrames, speed.averageFrames};
              });
    neverTorn({[&] {
                   EXPECT_TRUE(control.setShutterRange({{1, 2}, {3, 4}}).ok());
               },
               [&] {
                   EXPECT_TRUE(control.setShutterRange({{5, 6}, {100, 8}}).ok());
               }},
              [&] { return control.shutterRange(); });
}

}  // namespace
}  // namespace tavra::test
