// The mirror in the camera, as it shows in a frame.
#include <gtest/gtest.h>

#include "model_toml.h"
#include "usbd/virtual/small_sensor.h"

namespace tavra::usbd {
namespace {

using test::Camera;
using test::frameOf;
using test::kHeight;
using test::kWidth;
using test::useCameras;

const std::string kSmall = test::smallSensor(80, 60, 8, 4) + ":kelvin=3000";

TEST(Mirror, TheReadOutOfTheSameRegionTurns) {
    useCameras("mirror" + kSmall);
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    const auto plain = frameOf(camera);
    ASSERT_EQ(plain.size(), kWidth * kHeight);
    for (const std::uint16_t mirror :
         {std::uint16_t{1}, std::uint16_t{2}, std::uint16_t{3}, std::uint16_t{0}}) {
        ASSERT_TRUE(camera.setStatus(0x803F, mirror));
        EXPECT_EQ(camera.status(63), mirror);
        const auto turned = frameOf(camera);
        std::vector<std::uint8_t> wanted(plain.size());
        for (std::size_t y = 0; y < kHeight; ++y) {
            for (std::size_t x = 0; x < kWidth; ++x) {
                const std::size_t fromX = (mirror & 1) != 0 ? kWidth - 1 - x : x;
                const std::size_t fromY = (mirror & 2) != 0 ? kHeight - 1 - y : y;
                wanted[y * kWidth + x] = plain[fromY * kWidth + fromX];
            }
        }
        EXPECT_EQ(turned, wanted) << mirror;
    }
    UsbEndRead(camera.handle());
}

TEST(Mirror, NeedsTheCapabilityOfItsAxis) {
    useCameras("mirror:capability.word1=0x6070" + kSmall);
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    const auto plain = frameOf(camera);
    ASSERT_TRUE(camera.setStatus(0x803F, 2));
    EXPECT_EQ(frameOf(camera), plain) << "no vertical one";
    ASSERT_TRUE(camera.setStatus(0x803F, 1));
    EXPECT_NE(frameOf(camera), plain);
    UsbEndRead(camera.handle());
}

// The host works out the colour array of a mirrored frame from type and capability words.
TEST(Mirror, TheMosaicKeepsItsPhaseWhereTheHostTakesItToDoSo) {
    const auto keeps = [](const std::string& more) {
        Model model;
        std::string complaint;
        EXPECT_TRUE(parseModel("[identity]\nmaximum_width = 64\nmaximum_height = 48\nproduct_type = " + more,
                               {}, model, complaint))
            << complaint;
        return std::pair(model.sensor.mirrorKeepsPhaseX, model.sensor.mirrorKeepsPhaseY);
    };
    EXPECT_EQ(keeps("274"), std::pair(false, false));
    EXPECT_EQ(keeps("274\n[capability]\nword4 = 0x0081"), std::pair(true, true));
    for (const char* const type : {"2326", "3448", "4118", "16385", "16386", "16387", "16388"}) {
        EXPECT_EQ(keeps(type), std::pair(false, true)) << type;
    }
    EXPECT_EQ(keeps("773\n[capability]\nword4 = 0x0081"), std::pair(false, false)) << "no capability words";
    EXPECT_EQ(keeps("4118\n[sensor]\nmirror_keeps_phase_y = false"), std::pair(false, false));
}

}  // namespace
}  // namespace tavra::usbd
