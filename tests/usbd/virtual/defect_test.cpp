// Hot pixels and their correction in the camera.
#include <gtest/gtest.h>

#include <algorithm>

#include "usbd/virtual/small_sensor.h"

namespace tavra::usbd {
namespace {

using test::Camera;
using test::frameOf;
using test::kHeight;
using test::kWidth;
using test::useCameras;

const std::string kSmall =
    test::smallSensor(64, 48, 0, 0) + ":vignetting=0:identity.maximum_width=64:identity.maximum_height=48";

struct Place {
    std::uint16_t x, y;
};

std::vector<Place> brightPlaces(const std::vector<std::uint8_t>& picture) {
    std::vector<Place> places;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        if (picture[i] > 40)
            places.push_back(
                {static_cast<std::uint16_t>(i % kWidth), static_cast<std::uint16_t>(i / kWidth)});
    }
    return places;
}

// Entry `index`, as the generation of the camera takes it.
void writeByPages(Camera& camera, std::uint16_t index, Place place) {
    ASSERT_TRUE(camera.setPage(18, 4 + 4u * index, place.x | std::uint32_t{place.y} << 16));
}
void writeByWords(Camera& camera, std::uint16_t index, Place place) {
    std::vector<std::uint8_t> words(4);
    storeLe16(words.data(), place.x);
    storeLe16(&words[2], place.y);
    ASSERT_TRUE(camera.set(128, static_cast<std::uint16_t>((index | 0xC000) * 2), 129, words));
}

TEST(HotPixels, StandWhereTheSeedPutsThem) {
    const auto dark = [](const std::string& more) {
        useCameras("mono:light=0:hotpixels=8" + kSmall + more);
        Camera camera;
        EXPECT_EQ(UsbBeginRead(camera.handle()), 1);
        auto now = frameOf(camera);
        UsbEndRead(camera.handle());
        return now;
    };
    const auto first = dark(":seed=3");
    const std::size_t count = brightPlaces(first).size();
    EXPECT_GE(count, 6u) << "eight, of which some may meet";
    EXPECT_LE(count, 8u);
    EXPECT_EQ(static_cast<std::size_t>(std::count(first.begin(), first.end(), 0)), first.size() - count);
    EXPECT_EQ(dark(":seed=3"), first);
    EXPECT_NE(dark(":seed=4"), first);
}

TEST(DefectCorrection, TheListComesIntoForceAsAWhole) {
    for (const bool pages : {true, false}) {
        useCameras((pages ? "mono" : "statusword:identity.color_array=1") +
                   (":light=0:hotpixels=8" + kSmall));
        Camera camera;
        const auto write = pages ? writeByPages : writeByWords;
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        const auto hot = brightPlaces(frameOf(camera));
        ASSERT_FALSE(hot.empty());
        ASSERT_TRUE(camera.setStatus(0x804E, 1));
        for (std::uint16_t i = 0; i < hot.size(); ++i) write(camera, i, hot[i]);
        if (pages) {
            EXPECT_EQ(brightPlaces(frameOf(camera)).size(), hot.size()) << "not yet";
        }
        ASSERT_TRUE(camera.setStatus(80, 1));
        EXPECT_TRUE(brightPlaces(frameOf(camera)).empty());
        ASSERT_TRUE(camera.setStatus(0x804E, 0));
        EXPECT_EQ(brightPlaces(frameOf(camera)).size(), hot.size()) << "off";
        write(camera, 0, {0xFFFF, 0xFFFF});
        ASSERT_TRUE(camera.setStatus(0x804E, 1));
        const auto left = brightPlaces(frameOf(camera));
        ASSERT_EQ(left.size(), 1u) << "switching it on takes the list as it stands";
        EXPECT_EQ(left[0].x, hot[0].x);
        EXPECT_EQ(left[0].y, hot[0].y);
        UsbEndRead(camera.handle());
    }
}

TEST(DefectCorrection, AListedPixelIsTheMeanOfItsNeighboursOfTheSameColour) {
    for (const auto& [name, period] : {std::pair{"mono", 1}, {"bayer", 2}, {"quad", 4}}) {
        useCameras(name + (":hotpixels=0:light=0.9" + kSmall));
        Camera camera;
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        const auto plain = frameOf(camera);
        ASSERT_EQ(plain.size(), kWidth * kHeight);
        const Place places[] = {{30, 11}, {0, 40}, {63, 5}};
        for (std::uint16_t i = 0; i < 3; ++i) writeByPages(camera, i, places[i]);
        ASSERT_TRUE(camera.setStatus(0x804E, 1));
        const auto corrected = frameOf(camera);
        ASSERT_EQ(corrected.size(), plain.size());
        UsbEndRead(camera.handle());
        const auto at = [&](int x, int y) {
            return double{1} * plain[static_cast<std::size_t>(y) * kWidth + static_cast<std::size_t>(x)];
        };
        const double wanted[] = {(at(30 - period, 11) + at(30 + period, 11)) / 2, at(period, 40),
                                 at(63 - period, 5)};
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(corrected[places[i].y * kWidth + places[i].x], wanted[i], 1) << name << ", " << i;
        }
        std::size_t changed = 0;
        for (std::size_t i = 0; i < plain.size(); ++i) changed += plain[i] != corrected[i] ? 1 : 0;
        EXPECT_LE(changed, 3u);
    }
}

TEST(DefectCorrection, NeedsTheCapability) {
    useCameras("mono:light=0:hotpixels=8:capability.word3=0x2085" + kSmall);
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    const auto hot = brightPlaces(frameOf(camera));
    ASSERT_FALSE(hot.empty());
    for (std::uint16_t i = 0; i < hot.size(); ++i) writeByPages(camera, i, hot[i]);
    ASSERT_TRUE(camera.setStatus(0x804E, 1));
    EXPECT_EQ(brightPlaces(frameOf(camera)).size(), hot.size());
    UsbEndRead(camera.handle());
}

}  // namespace
}  // namespace tavra::usbd
