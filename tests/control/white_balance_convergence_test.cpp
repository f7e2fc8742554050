// The loop on a grey card, from the gains of other lights.
#include <algorithm>
#include <cmath>
#include <random>

#include "control/white_balance_double.h"

namespace tavra::test {
namespace {

// A grey card under daylight, with shot noise, seen through a mosaic; the loop starts from the gains of
// another light.
class GreyCard {
  public:
    GreyCard(std::uint16_t code, double r, double g, double b) : code_(code), light_{r, g, g, b} {}

    Frame shoot() {
        constexpr std::size_t kColors[4][4] = {{0, 1, 2, 3}, {1, 0, 3, 2}, {2, 3, 0, 1}, {3, 2, 1, 0}};
        Frame frame;
        for (std::uint32_t y = 0; y < kSize; ++y) {
            for (std::uint32_t x = 0; x < kSize; ++x) {
                const double level = light_[kColors[code_ - 2][x % 2 + 2 * (y % 2)]];
                std::normal_distribution<double> noise(level, std::sqrt(level) / 4);
                frame.push_back(static_cast<std::uint8_t>(std::clamp(noise(random_), 0.0, 255.0)));
            }
        }
        return frame;
    }

    // Frames as the capture thread treats them: gains, statistics, step.
    void run(CWhiteBalanceCtrl& control, CAveragePixelValue& statistics, int frames) {
        for (int i = 0; i < frames; ++i) {
            const bool due = control.frameIsDue();
            Frame frame = shoot();
            ASSERT_TRUE(control.ApplyGain(kSize, kSize, code_, frame.data()).ok());
            if (!due) continue;
            statistics.Accumulate(kSize, kSize, code_, frame.data());
            ASSERT_TRUE(control.controlStep(statistics));
        }
    }

    static constexpr std::uint32_t kSize = 16;

  private:
    std::uint16_t code_;
    std::array<double, 4> light_;
    std::mt19937 random_{3};
};

// As whatever light the gains were for: under 3000 K red is strong and blue weak, under 9000 K it is the
// other way round.
TEST(WhiteBalanceLoop, AGreyCardEndsGreyFromTheGainsOfAnyLight) {
    const Gains starts[] = {
        {96, 128, 128, 310}, {290, 128, 128, 110}, {128, 128, 128, 128}, {0, 140, 120, 1023}};
    for (std::uint16_t code = 2; code <= 5; ++code) {
        for (const Gains& start : starts) {
            for (const std::uint8_t mode : {2, 3}) {
                PlainControl control(start, code);
                ASSERT_TRUE(control.setMode(mode).ok());
                CAveragePixelValue statistics;
                GreyCard card(code, 85, 140, 105);
                card.run(control, statistics, 20 * (start[0] == 0 ? 16 : 8));
                Frame frame = card.shoot();
                ASSERT_TRUE(control.ApplyGain(GreyCard::kSize, GreyCard::kSize, code, frame.data()).ok());
                statistics.Accumulate(GreyCard::kSize, GreyCard::kSize, code, frame.data());
                CAveragePixelValue::Means means{};
                statistics.GetWeightedAverage({1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, means);
                const double green = (means[1] + means[2]) / 2.0;
                EXPECT_NEAR(means[0], green, 0.02 * green) << "code " << code << " from R " << start[0];
                EXPECT_NEAR(means[3], green, 0.02 * green) << "code " << code << " from B " << start[3];
                std::uint8_t end = 0;
                ASSERT_TRUE(control.getMode(end).ok());
                EXPECT_EQ(end, mode == 3 ? 1 : 2) << "one-push has come to rest";
            }
        }
    }
}

}  // namespace
}  // namespace tavra::test
