// A draw object of textures on sprites that write down what they are asked for, and its window.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "display/draw_image_direct_x.h"
#include "platform/paint.h"
#include "support/drawing.h"
#include "support/sprite_double.h"
#include "support/window_double.h"

namespace tavra::test {

using platform::sprite_error::kDeviceLost;
using platform::sprite_error::kDeviceNotReset;
using platform::sprite_error::kNotAvailable;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using Log = std::vector<std::string>;
using Area = platform::Rectangle;

class DrawImageDirectX : public testing::Test {
  protected:
    static constexpr std::uint32_t kFailure = SpriteDouble::kFailure;

    DrawImageDirectX() {
        system.exists = true;
        system.setClient(20, 30, 100, 80);
        EXPECT_TRUE(bitmap.create({5, 3, 24}).ok());
    }

    CDrawImageDirectX& make(std::uint32_t mode = CDrawImageDirectX::kAtOnce, bool preserve = false) {
        return object.emplace(system, sprites, mode, preserve);
    }
    // Images of 5 x 3 in 24 bits.
    CDrawImageDirectX& open(std::uint32_t mode = CDrawImageDirectX::kAtOnce, std::uint32_t bits = 8) {
        make(mode);
        EXPECT_EQ(object->Create(system.handle(), 5, 3, bits), 0u);
        sprites.takeLog();
        return *object;
    }
    std::uint32_t paint(std::uint32_t frame, std::uint32_t rotated = 0, Area source = {0, 0, 5, 3},
                        Area destination = {10, 20, 15, 23},
                        const BackgroundRectangles& background = BackgroundRectangles()) {
        const DrawImageInfo info{nullptr, &bitmap, bitmap.pixels(), rotated, frame};
        return object->Draw(&source, &destination, background, info);
    }
    Log painted(std::uint32_t frame) {
        EXPECT_EQ(paint(frame), 0u);
        return sprites.takeLog();
    }
    // Fills a rectangle of the drawing surface.
    void drawOn(const Rectangle& rectangle, const Color& color) {
        TavraDC dc = nullptr;
        ASSERT_EQ(object->GetDC(&dc), 0u);
        ASSERT_TRUE(fillRectangle(dc, rectangle, color));
        ASSERT_EQ(object->ReleaseDC(dc), 0u);
    }
    void expectNothingHeld() const {
        EXPECT_EQ(sprites.locks, 0);
        EXPECT_FALSE(sprites.sceneOpen);
        EXPECT_FALSE(sprites.spriteOpen);
    }

    WindowDouble system;
    SpriteDouble sprites;
    platform::Bitmap bitmap;
    std::optional<CDrawImageDirectX> object;
};

}  // namespace tavra::test
