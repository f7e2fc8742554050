// The control law beside a plain one, step by step as it is told, over random settings and frames.
#include <cmath>
#include <random>

#include "control/control_double.h"

namespace tavra::test {
namespace {

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using i64 = std::int64_t;

// Decibels and values of the eight classes.
float plainDecibels(unsigned scale, double v) {
    const int whole = static_cast<int>(v);
    switch (scale) {
        case 1: return static_cast<float>(0.07038 * (v + 128) + 2.0);
        case 2: return static_cast<float>(20 * std::log10(v < 21 ? (v + 8) * 8 / 64 : (v - 12) * 28 / 64));
        case 3: return static_cast<float>(20 * std::log10((1 << (whole / 64 % 4)) * (whole % 64 / 64.0 + 1)));
        case 4: return static_cast<float>(0.1 * v);
        case 5: return static_cast<float>(0.0351 * v);
        default: return static_cast<float>(0.132 * v - 2.36);
    }
}
u32 plainValue(unsigned scale, double d, u16 highest) {
    double value = (d + 2.36) / 0.132;
    if (scale == 1) value = (d - 2.0) / 0.07038 - 128;
    if (scale == 2) {
        const double x = std::floor(std::pow(10.0, d / 20) * 64);
        value = x <= 160 ? x / 8 - 8 : x / 28 + 12;
    }
    if (scale == 3) {
        value = 0;
        for (double f = std::pow(10.0, d / 20); f >= 2; f /= 2) value += 64;
    }
    if (scale == 5) value = d / 0.351 + 0.5;
    if (value < 0) return 0;
    return value > highest ? highest : static_cast<u32>(value);
}

struct PlainLaw {
    bool clockUnit = true;
    unsigned scale = 0;
    u16 highestGain = 680;
    i64 c = 100;  // clocks of a line
    Shutter shortest, longest, bottom, top, now;
    u16 gain = 0, gainBottom = 0, gainTop = 0;
    u8 mode = 0, target = 128, tolerance = 5, threshold = 5;
    u8 shutterSpeed = 0, gainSpeed = 0, skip = 3, average = 4;
    bool moved = false;
    u8 toSkip = 0, count = 0;
    u32 sum = 0;
    unsigned writes = 0;

    bool gate() {
        if (mode != 0 && toSkip == 0) return true;
        if (toSkip != 0) --toSkip;
        return false;
    }

    void frame(u8 luminance) {
        sum = count == 0 ? luminance : sum + luminance;
        ++count;
        if (count < average) return;
        const int mean = static_cast<int>(sum / count);
        count = 0;
        const bool dark = target > mean;
        const int difference = dark ? target - mean : mean - target;
        bool adjusted = clamp();
        if (!adjusted) {
            const int limit = tolerance + (moved ? 0 : threshold);
            if (difference > limit)
                adjusted = useShutter(dark) ? moveShutter(mean, dark) : moveGain(mean, dark);
            if (!adjusted && mode >= 4) mode = 0;
        }
        if (adjusted) ++writes;
        moved = adjusted;
        toSkip = skip;
    }

  private:
    bool shutterMode() const { return mode != 3 && mode != 6; }
    bool gainMode() const { return mode != 2 && mode != 5; }

    i64 total(Shutter s) const {
        if (s.line == 0 && s.clock == 0) s = shortest;
        if (s.line > longest.line || (s.line == longest.line && s.clock > longest.clock)) s = longest;
        const i64 p = c * s.line;
        if (clockUnit) return p + s.clock;
        return p == 0 && s.clock != 0 ? c : p;
    }
    i64 plain(Shutter s) const { return c * s.line + s.clock; }
    void store(i64 clocks) { now = {static_cast<u32>(clocks / c), static_cast<u32>(clocks % c)}; }

    bool clamp() {
        bool changed = false;
        if (gainMode()) {
            const u16 before = gain;
            if (gain < gainBottom) {
                gain = gainBottom;
            } else if (gain > gainTop) {
                gain = gainTop;
            }
            changed = gain != before;
        }
        const i64 lo = total(bottom), hi = total(top), cur = total(now);
        i64 a = cur;
        if (shutterMode()) {
            if (!clockUnit && now.clock != 0) a = now.line != 0 ? plain(shortest) : c;
            if (hi < cur) a = hi;
            if (cur < lo) a = lo;
            if (a != cur) {
                store(a);
                if (!clockUnit) now.clock = 0;
                changed = true;
            }
        }
        if ((mode == 1 || mode == 4) && a != hi && gain != gainBottom) {
            gain = gainBottom;
            changed = true;
        }
        return changed;
    }

    bool useShutter(bool dark) const {
        if (mode == 2 || mode == 5) return true;
        if (mode == 3 || mode == 6) return false;
        return dark ? total(now) != total(top) : gain == gainBottom;
    }

    bool moveShutter(int mean, bool dark) {
        const i64 cur = total(now), u = clockUnit ? 1 : c, d = shutterSpeed + 1;
        i64 hi = total(top), lo = total(bottom), step = cur / d;
        if (u > 1) step = step / u * u;
        if (dark) {
            if (step + u + cur < hi) hi = step + u + cur;
        } else {
            const i64 m = cur - step;
            const i64 floor = u < m ? m - u : u;
            if (lo < floor) lo = floor;
        }
        i64 ideal = (cur * target) % (i64{1} << 32) / (mean > 0 ? mean : 1);
        if (!clockUnit) {  // the nearest multiple of d, half up
            const i64 below = ideal / d * d;
            ideal = 2 * (ideal - below) >= d ? below + d : below;
        }
        const i64 next = ideal < lo ? lo : ideal > hi ? hi : ideal;
        if (next == cur) return false;
        now = {};
        if (next < plain(longest)) store(next);
        return true;
    }

    bool moveGain(int mean, bool dark) {
        const float f = single(std::pow(10.0, double{plainDecibels(scale, gain) / 20.0F}));
        const float raw = std::floor(static_cast<float>(mean) / f);
        float ideal = raw != 0 ? static_cast<float>(target) / raw : 1.0F;
        if (raw == 0 && target > 0) ideal = static_cast<float>(target);
        const float step = f / (static_cast<float>(gainSpeed) + 1.0F);
        float g = f + step > ideal ? ideal : f + step;
        if (!dark) {
            g = f - step > 0 ? f - step : 0.0001F;
            if (g < ideal) g = ideal;
        }
        const float decibels = 20.0F * single(std::log10(double{g}));
        i64 next = plainValue(scale, double{decibels}, highestGain);
        if (dark && next <= gain) next = gain + 1;
        if (!dark && next >= gain) next = gain == 0 ? 0 : gain - 1;
        if (next < gainBottom) {
            next = gainBottom;
        } else if (next > gainTop) {
            next = gainTop;
        }
        if (next == gain) return false;
        gain = static_cast<u16>(next);
        return true;
    }

    static float single(double value) { return static_cast<float>(value); }
};

class LuminanceReference : public testing::TestWithParam<unsigned> {
  protected:
    u32 below(u32 limit) { return static_cast<u32>(random() % limit); }
    bool oneIn(u32 n) { return below(n) == 0; }
    u8 byte(u32 limit) { return static_cast<u8>(below(limit)); }

    // A shutter up to a little beyond `lines`; often one of the pairs that are something of their own.
    Shutter shutter(const PlainLaw& law, u32 lines) {
        if (oneIn(6)) return {};
        if (oneIn(8)) return law.longest;
        if (oneIn(8)) return law.shortest;
        return {below(oneIn(3) ? 3 : lines + 3), oneIn(3) ? 0 : below(static_cast<u32>(law.c))};
    }
    PlainLaw randomLaw() {
        PlainLaw law;
        law.clockUnit = !oneIn(3);
        law.scale = GetParam();
        law.c = 1 + below(oneIn(4) ? 3 : 2000);
        const u32 lines = 1 + below(oneIn(4) ? 40000 : 300);
        law.shortest = {lines, below(static_cast<u32>(law.c))};
        law.longest = {oneIn(2) ? lines : lines + below(1000), below(static_cast<u32>(law.c))};
        law.bottom = oneIn(2) ? Shutter{0, 1} : shutter(law, lines);
        law.top = oneIn(2) ? Shutter{} : shutter(law, lines);
        law.now = shutter(law, lines);
        law.gainBottom = static_cast<u16>(oneIn(3) ? 0 : below(200));
        law.gainTop = static_cast<u16>(oneIn(3) ? 680 : below(681));
        law.gain = static_cast<u16>(oneIn(3) ? law.gainBottom : below(681));
        law.mode = static_cast<u8>(1 + below(6));
        law.target = byte(256);
        law.tolerance = byte(oneIn(5) ? 256 : 12);
        law.threshold = byte(oneIn(5) ? 256 : 12);
        law.shutterSpeed = byte(oneIn(4) ? 256 : 4);
        law.gainSpeed = byte(oneIn(2) ? 1 : 256);
        law.skip = byte(4);
        law.average = byte(5);
        return law;
    }
    static void give(const PlainLaw& law, ControlDouble& control) {
        control.gainScale = GainScale(law.scale);
        control.maxClock = static_cast<u32>(law.c - 1);
        control.maxShort = law.shortest;
        control.maxLong = law.longest;
        control.rangeInMemory() = {law.bottom, law.top};
        control.shutterInMemory() = law.now;
        control.gainRangeInMemory() = {law.gainBottom, law.gainTop};
        control.gainInMemory() = law.gain;
        control.setControlSpeed({law.shutterSpeed, law.gainSpeed, law.skip, law.average});
        ASSERT_TRUE(control.setBrightnessTarget({law.target, law.tolerance, law.threshold}).ok());
        ASSERT_TRUE(control.setMode(law.mode).ok());
    }

    std::mt19937 random{GetParam() + 11};
};

INSTANTIATE_TEST_SUITE_P(Scales, LuminanceReference, testing::Range(0u, 8u));

TEST_P(LuminanceReference, EveryFrameComesOutAsInThePlainLaw) {
    for (int round = 0; round < 1000; ++round) {
        PlainLaw plain = randomLaw();
        ControlDouble control(plain.clockUnit, plain.scale);
        give(plain, control);
        u8 luminance = byte(256);
        for (int frame = 0; frame < 40; ++frame) {
            if (oneIn(4)) luminance = byte(256);
            const bool due = plain.gate();
            ASSERT_EQ(control.frame(luminance), due) << "round " << round << ", frame " << frame;
            if (due) plain.frame(luminance);
            ASSERT_EQ(control.shutterInMemory(), plain.now) << "round " << round << ", frame " << frame;
            ASSERT_EQ(control.gainInMemory(), plain.gain) << "round " << round << ", frame " << frame;
            ASSERT_EQ(control.presentMode(), plain.mode) << "round " << round << ", frame " << frame;
            ASSERT_EQ(control.written.size(), plain.writes) << "round " << round << ", frame " << frame;
        }
    }
}

}  // namespace
}  // namespace tavra::test
