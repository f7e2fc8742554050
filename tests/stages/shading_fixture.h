// The shading correction, and short ways to calibrate it and to see its map.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "stages/shading_correction.h"

namespace tavra::test {

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;

constexpr u64 pack(u16 a, u16 b, u16 c, u16 d) {
    return u64{a} | u64{b} << 16 | u64{c} << 32 | u64{d} << 48;
}

template <class Sample>
u32 apply(CShadingCorrection& stage, u32 width, u32 height, u32 stride, Sample* pixels, u16 bits) {
    if constexpr (sizeof(Sample) == 1) {
        return stage.Apply8(width, height, stride, pixels, bits);
    } else {
        return stage.Apply16(width, height, stride, pixels, bits);
    }
}

inline std::vector<std::int32_t> mapOf(CShadingCorrection& stage) {
    u32 width = 0, height = 0, stride = 0;
    stage.GetMap(&width, &height, &stride, nullptr);
    std::vector<std::int32_t> map(std::size_t{height} * stride / 4);
    stage.GetMap(nullptr, nullptr, nullptr, map.data());
    return map;
}

// A frame of one level.
inline std::vector<u8> flat(std::size_t count, u8 level) {
    return std::vector<u8>(count, level);
}

class Shading : public testing::Test {
  protected:
    // One frame of calibration, then the map of the mode is made on a copy.
    std::vector<std::int32_t> calibrated(u32 calibration, u32 mode, u32 width, u32 height,
                                         std::vector<u8> field, u16 bits = 8) {
        stage.SetMode(calibration);
        EXPECT_EQ(stage.Apply8(width, height, 0, field.data(), bits), 0u);
        stage.SetMode(mode);
        EXPECT_EQ(stage.Apply8(width, height, 0, field.data(), bits), 0u);
        return mapOf(stage);
    }
    // A sample after correction with the map in force, on a frame filled with it.
    u8 corrected(u32 width, u32 height, u8 sample, u16 bits = 8) {
        auto frame = flat(std::size_t{width} * height, sample);
        EXPECT_EQ(stage.Apply8(width, height, 0, frame.data(), bits), 0u);
        return frame[0];
    }

    CShadingCorrection stage;
};

}  // namespace tavra::test
