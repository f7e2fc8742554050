// The tone curves, and short ways to set them and to read their tables.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "stages/gamma.h"

namespace tavra::test {

using Table = std::vector<std::uint16_t>;

struct Settings {
    std::uint8_t mode = 99;
    std::uint16_t gamma = 999;
    std::int16_t brightness = 999;
    std::uint16_t contrast = 999;
    std::uint16_t bits = 0;

    bool operator==(const Settings&) const = default;
};

class GammaStage : public testing::Test {
  protected:
    // Depth and whole table (12 bits) of a curve.
    Settings settings(std::uint8_t index) {
        Settings s;
        s.bits = 12;
        EXPECT_EQ(stage->GetGamma(index, &s.mode, &s.gamma, &s.brightness, &s.contrast, nullptr, &s.bits),
                  0u);
        return s;
    }
    Table table(std::uint8_t index) {
        Table entries(4096);
        std::uint16_t bits = 12;
        EXPECT_EQ(stage->GetGamma(index, nullptr, nullptr, nullptr, nullptr, entries.data(), &bits), 0u);
        return entries;
    }
    std::uint32_t set(std::uint8_t index, std::uint8_t mode, std::uint16_t gamma, int brightness = 0,
                      std::uint16_t contrast = 0, std::uint16_t bits = 8) {
        return stage->SetGamma(index, mode, gamma, static_cast<std::int16_t>(brightness), contrast, nullptr,
                               bits);
    }
    template <class Entry>
    std::uint32_t setTable(std::uint8_t index, const std::vector<Entry>& entries, std::uint16_t bits) {
        return stage->SetGamma(index, 255, 7, 7, 7, entries.data(), bits);
    }

    std::unique_ptr<CGamma> stage = std::make_unique<CGamma>();
};

// Five curves that differ everywhere.
inline void setFive(CGamma& stage, bool words) {
    for (std::uint8_t index = 0; index < 5; ++index) {
        std::vector<std::uint16_t> entries(4096);
        for (unsigned i = 0; i < 4096; ++i)
            entries[i] =
                static_cast<std::uint16_t>((i * (2u * index + 3) + 40u * index) & (words ? 4095 : 255));
        ASSERT_EQ(stage.SetGamma(index, 255, 0, 0, 0, entries.data(), 12), 0u);
    }
}

}  // namespace tavra::test
