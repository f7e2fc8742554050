#include "scene.h"

#include <gtest/gtest.h>
#include <png.h>

#include <fstream>
#include <string>

#include "support/temp_folder.h"

namespace tavra::usbd {
namespace {

std::string writePng(const tavra::test::TempFolder& folder, std::uint32_t width, std::uint32_t height,
                     const std::vector<std::uint8_t>& rgb) {
    const std::string path = (folder / "scene.png").string();
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = PNG_FORMAT_RGB;
    EXPECT_NE(png_image_write_to_file(&image, path.c_str(), 0, rgb.data(), 0, nullptr), 0);
    return path;
}

TEST(Scene, TheChartUsesTheRangeAndIsShared) {
    const auto chart = sceneOf("chart", 320, 180);
    ASSERT_NE(chart, nullptr);
    ASSERT_EQ(chart->pixels.size(), 320u * 180);
    std::uint16_t darkest = 65535, brightest = 0;
    for (const auto& pixel : chart->pixels) {
        darkest = std::min(darkest, pixel[1]);
        brightest = std::max(brightest, pixel[1]);
    }
    EXPECT_LT(darkest, 65535 * 4 / 100);
    EXPECT_GT(brightest, 65535 * 90 / 100);
    EXPECT_LT(brightest, 65535 * 95 / 100) << "white is no clipping";
    EXPECT_EQ(sceneOf("chart", 320, 180), chart);
    EXPECT_NE(sceneOf("chart", 32, 18), chart);
}

TEST(Scene, AnySizeOfChartCanBeDrawn) {
    for (const auto& [width, height] : {std::pair{1u, 1u}, {2u, 200u}, {200u, 2u}, {17u, 13u}}) {
        EXPECT_EQ(sceneOf("chart", width, height)->pixels.size(), std::size_t{width} * height);
    }
}

TEST(Scene, APngOfTheSensorsSizeIsTakenPixelByPixel) {
    const tavra::test::TempFolder folder;
    const std::string path = writePng(folder, 2, 2, {255, 0, 0, 0, 128, 0, 0, 0, 64, 10, 20, 30});
    const auto scene = sceneOf(path, 2, 2);
    ASSERT_NE(scene, nullptr);
    EXPECT_EQ(scene->at(0, 0), (std::array<std::uint16_t, 3>{65535, 0, 0}));
    EXPECT_EQ(scene->at(1, 0), (std::array<std::uint16_t, 3>{0, 128 * 257, 0}));
    EXPECT_EQ(scene->at(1, 1), (std::array<std::uint16_t, 3>{10 * 257, 20 * 257, 30 * 257}));
}

TEST(Scene, APngOfAnotherShapeCoversTheSensorFromItsMiddle) {
    // Four columns of 4 x 1: a square sensor sees the middle of the picture.
    const tavra::test::TempFolder folder;
    const std::string path = writePng(folder, 4, 1, {0, 0, 0, 100, 100, 100, 200, 200, 200, 255, 255, 255});
    const auto scene = sceneOf(path, 1, 1);
    ASSERT_NE(scene, nullptr);
    EXPECT_EQ(scene->at(0, 0)[0], 150 * 257);
}

TEST(Scene, WhatIsNoPngIsNoScene) {
    EXPECT_TRUE(isScene("chart"));
    EXPECT_FALSE(isScene("/nowhere.png"));
    const tavra::test::TempFolder folder;
    const std::string path = (folder / "not_a.png").string();
    std::ofstream(path) << "no picture";
    EXPECT_FALSE(isScene(path));
    EXPECT_EQ(sceneOf(path, 4, 4), nullptr);
}

}  // namespace
}  // namespace tavra::usbd
