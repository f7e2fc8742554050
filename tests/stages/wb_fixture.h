// Gains of a white balance of its own.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "stages/wb.h"

namespace tavra::test {

using Gains = std::vector<std::uint16_t>;  // R, Gr, Gb, B

inline Gains gainsOf(CWB& stage) {
    Gains gains(4);
    EXPECT_EQ(stage.GetGains(gains.data()), 0u);
    return gains;
}

}  // namespace tavra::test
