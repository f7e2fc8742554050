// Several regions of the sensor become one preview image, whether the library or the camera composes them.
#include "e2e/camera_fixture.h"

namespace tavra::e2e {
namespace {

constexpr const char* kStill = "regions:pace=off:noise=off";
constexpr std::uint32_t kTransferCodes[] = {0x1, 0x4, 0x10000, 0x20000};

// The preview with transfer bits `code`, of a camera that is set up by `prepare`.
template <typename Prepare>
Bytes previewOf(const std::string& camera, std::uint32_t code, Prepare prepare) {
    useCameras(camera);
    Camera opened;
    EXPECT_TRUE(opened.isOpen());
    EXPECT_TRUE(Tavra_SetTransferBitsPerPixel(opened, code));
    prepare(opened);
    return takePreview(opened);
}

TEST(Regions, ComposedHereTheyAreTheImageThatTheCameraComposes) {
    for (const std::uint32_t code : kTransferCodes) {
        const std::string format = ":identity.enable_transfer_bits=0x30005";
        const Bytes here = previewOf(kStill + format, code, [](Camera&) {});
        const Bytes there = previewOf(kStill + format + ":geometry.region_mode=2", code, [](Camera&) {});
        ASSERT_EQ(here.size(), 1040u * 3 * 640) << "640 + 400 columns, 400 + 240 rows";
        EXPECT_EQ(here, there) << std::hex << code;
        EXPECT_NE(here, Bytes(here.size(), here[0]));
    }
}

TEST(Regions, OneThatCoversWhatAnotherDoesChangesNothing) {
    const auto onlyMain = [](Camera& camera) {
        for (std::uint32_t i = 1; i < 8; ++i) ASSERT_TRUE(Tavra_SetROI(camera, i, 0, 0, 0, 32, 4));
    };
    const Bytes alone = previewOf(kStill, 1, onlyMain);
    const Bytes covered = previewOf(kStill, 1, [&](Camera& camera) {
        onlyMain(camera);
        ASSERT_TRUE(Tavra_SetROI(camera, 1, 1, 200, 160, 64, 48));
    });
    ASSERT_EQ(alone.size(), 640u * 3 * 400);
    EXPECT_EQ(covered, alone);
}

TEST(Regions, WhatNoneOfThemCoversIsBlack) {
    const Bytes image = previewOf(kStill, 1, [](Camera& camera) {
        for (std::uint32_t i = 2; i < 8; ++i) ASSERT_TRUE(Tavra_SetROI(camera, i, 0, 0, 0, 32, 4));
        ASSERT_TRUE(Tavra_SetROI(camera, 0, 1, 160, 120, 320, 200));
        ASSERT_TRUE(Tavra_SetROI(camera, 1, 1, 960, 800, 160, 100));
    });
    ASSERT_EQ(image.size(), 480u * 3 * 300);
    const auto pixel = [&](std::uint32_t x, std::uint32_t y) {
        const auto at = image.begin() + static_cast<std::ptrdiff_t>((y * 480 + x) * 3);
        return Bytes(at, at + 3);
    };
    EXPECT_EQ(pixel(400, 100), Bytes(3)) << "right of the first";
    EXPECT_EQ(pixel(160, 250), Bytes(3)) << "below it";
    EXPECT_NE(pixel(160, 100), Bytes(3));
    EXPECT_NE(pixel(400, 250), Bytes(3));
}

}  // namespace
}  // namespace tavra::e2e
