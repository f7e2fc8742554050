// The white balance law beside a plain one, step by step as it is told, over random settings and frames.
#include <algorithm>
#include <cmath>
#include <random>

#include "control/white_balance_double.h"

namespace tavra::test {
namespace {

struct PlainBalance {
    std::uint32_t gain[4] = {};  // R, Gr, Gb, B
    std::uint32_t targetR = 100, targetB = 100, threshold = 5;
    std::uint32_t sum[4] = {};
    unsigned mode = 2, count = 0, toSkip = 0;
    bool moved = false;

    bool gate() {
        if (mode >= 2 && toSkip == 0) return true;
        if (toSkip != 0) --toSkip;
        return false;
    }

    void frame(const Gains& means) {
        for (std::size_t i = 0; i < 4; ++i) sum[i] = (count == 0 ? 0 : sum[i]) + means[i];
        if (++count < 10) return;
        count = 0;
        toSkip = 10;
        const std::uint32_t r = sum[0] / 10, b = sum[3] / 10, greens = sum[1] / 10 + sum[2] / 10;
        const std::uint32_t green = greens / 2;
        if (green >= 245 || green <= 10) return;
        const std::uint32_t wantR = targetR * green / 100, wantB = targetB * green / 100;
        const std::int64_t dR = std::int64_t{wantR} - r, dB = std::int64_t{wantB} - b;
        const auto squares = static_cast<std::uint32_t>(dR * dR + dB * dB);
        const auto tenths = static_cast<std::uint32_t>(std::sqrt(static_cast<double>(squares)) * 10);
        bool changed = false;
        if (tenths >= (moved ? threshold : 2 * threshold)) {
            const std::uint32_t newR = adjusted(gain[0], wantR, r, greens);
            const std::uint32_t newB = adjusted(gain[3], wantB, b, greens);
            changed = newR != gain[0] || newB != gain[3];
            gain[0] = newR;
            gain[3] = newB;
        }
        moved = changed;
        if (mode == 3 && !changed) mode = 1;
    }

    static std::uint32_t adjusted(std::uint32_t old, std::uint32_t want, std::uint32_t mean,
                                  std::uint32_t greens) {
        if (mean != 0) return std::min(old * want / mean, 1023u);
        if (greens < 2) return 0;
        return old == 0 ? 1 : std::min(2 * old, 1023u);
    }
};

TEST(WhiteBalanceReference, EveryFrameComesOutAsInThePlainLaw) {
    std::mt19937 random(5);
    const auto below = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
    for (int round = 0; round < 150; ++round) {
        PlainBalance plain;
        Gains start{};
        for (std::size_t i = 0; i < 4; ++i) {
            start[i] = static_cast<std::uint16_t>(below(4) == 0 ? below(0x10000) : below(500));
            plain.gain[i] = start[i];
        }
        plain.mode = 1 + below(3);
        plain.threshold = below(3) == 0 ? below(0x10000) : below(300);
        if (below(2) == 0) plain.targetR = below(below(3) == 0 ? 0x10000 : 250);
        if (below(2) == 0) plain.targetB = below(below(3) == 0 ? 0x10000 : 250);
        PlainControl control(start);
        ASSERT_TRUE(control.setMode(static_cast<std::uint8_t>(plain.mode)).ok());
        ASSERT_TRUE(control.setBand({7, static_cast<std::uint16_t>(plain.threshold)}).ok());
        ASSERT_TRUE(control
                        .setTarget({static_cast<std::uint16_t>(plain.targetR),
                                    static_cast<std::uint16_t>(plain.targetB)})
                        .ok());
        CAveragePixelValue statistics;
        Gains means{};
        for (int frame = 0; frame < 130; ++frame) {
            if (frame % 20 == 0 || below(8) == 0) {
                for (std::uint16_t& mean : means) mean = static_cast<std::uint16_t>(below(256));
                if (below(5) == 0) means[below(2) * 3] = 0;
                if (below(3) == 0) means = {means[1], means[1], means[1], means[1]};
            }
            const bool due = plain.gate();
            ASSERT_EQ(control.frameIsDue(), due) << "round " << round << ", frame " << frame;
            if (due) {
                statistics.Accumulate(kSide, kSide, 2, frameOf(2, means).data());
                EXPECT_TRUE(control.controlStep(statistics));
                plain.frame(means);
            }
            Gains gains{};
            std::uint8_t mode = 0;
            ASSERT_TRUE(control.getGains(gains).ok());
            ASSERT_TRUE(control.getMode(mode).ok());
            ASSERT_TRUE(std::equal(gains.begin(), gains.end(), plain.gain))
                << "round " << round << ", frame " << frame;
            ASSERT_EQ(mode, plain.mode) << "round " << round << ", frame " << frame;
        }
    }
}

}  // namespace
}  // namespace tavra::test
