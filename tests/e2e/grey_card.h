// A grey card as the scene of virtual cameras, and what a camera makes of it.
#pragma once

#include <array>
#include <cmath>
#include <fstream>
#include <numeric>
#include <string>

#include "e2e/camera_fixture.h"
#include "support/temp_folder.h"

namespace tavra::e2e {

// A PNG file of one pixel of level 128, which covers the whole sensor.
class GreyCard {
  public:
    GreyCard() {
        constexpr unsigned char kPng[] = {
            0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x48,
            0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x00, 0x00, 0x00,
            0x00, 0x3A, 0x7E, 0x9B, 0x55, 0x00, 0x00, 0x00, 0x0A, 0x49, 0x44, 0x41, 0x54, 0x78,
            0xDA, 0x63, 0x68, 0x00, 0x00, 0x00, 0x82, 0x00, 0x81, 0xDA, 0x45, 0x08, 0x3B, 0x00,
            0x00, 0x00, 0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82};
        std::ofstream file(path(), std::ios::binary);
        file.write(reinterpret_cast<const char*>(kPng), sizeof kPng);
    }

    // For the list of cameras.
    std::string key() const {
        std::string key = ":scene=";
        for (const char c : path().generic_string()) {
            if (c == ':' || c == ',') key += '\\';
            key += c;
        }
        return key;
    }

  private:
    std::filesystem::path path() const { return folder_ / "grey.png"; }

    test::TempFolder folder_;
};

inline double meanOf(const Bytes& bytes) {
    return std::accumulate(bytes.begin(), bytes.end(), 0.0) / static_cast<double>(bytes.size());
}

// Means of blue, green and red of an image whose rows have no padding.
inline std::array<double, 3> channelMeans(const Bytes& image) {
    std::array<double, 3> means{};
    for (std::size_t i = 0; i < image.size(); ++i) means[i % 3] += image[i];
    for (double& mean : means) mean /= static_cast<double>(image.size()) / 3;
    return means;
}

// Red, green and blue of a grey card within 2 %.
inline void expectGrey(const Bytes& image) {
    ASSERT_FALSE(image.empty());
    const auto [blue, green, red] = channelMeans(image);
    EXPECT_GT(green, 10);
    EXPECT_LT(green, 245);
    EXPECT_NEAR(red / green, 1, 0.02) << red << " of " << green;
    EXPECT_NEAR(blue / green, 1, 0.02) << blue << " of " << green;
}

// The next preview that begins after the call: one may be under way, with the settings of before.
inline Bytes takeNextPreview(TavraHandle handle) {
    takePreview(handle);
    return takePreview(handle);
}

}  // namespace tavra::e2e
