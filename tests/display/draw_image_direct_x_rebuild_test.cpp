// Drawing with textures: what becomes of the application's drawing when the device is made anew, or is lost.
#include <algorithm>
#include <string>

#include "display/draw_image_direct_x_fixture.h"

namespace tavra::test {
namespace {

class DrawingOverARebuild : public DrawImageDirectX {
  protected:
    void openWithDrawing() {
        open();
        drawOn({0, 0, 4, 4}, {1, 2, 3});
        const Log log = painted(1);
        EXPECT_THAT(log, Contains("begin 16"));
        EXPECT_EQ(texturesDrawn(log), 2);
    }
    static std::ptrdiff_t texturesDrawn(const Log& log) {
        return std::count_if(log.begin(), log.end(),
                             [](const std::string& line) { return line.starts_with("draw "); });
    }
    // The picture has the image alone, and what was drawn is released; the next drawing begins clear.
    void expectDrawingGone(const Log& log) {
        EXPECT_THAT(log, Contains("device hardware 64 on " + clientText()));
        EXPECT_THAT(log, Contains("release texture 1"));
        EXPECT_THAT(log, Contains("release surface"));
        EXPECT_THAT(log, Contains("begin 0"));
        EXPECT_EQ(texturesDrawn(log), 1);
        TavraDC dc = nullptr;
        ASSERT_EQ(object->GetDC(&dc), 0u);
        EXPECT_THAT(sprites.takeLog(), Contains("surface " + clientText() + " xrgb"));
        ASSERT_EQ(object->ReleaseDC(dc), 0u);
        EXPECT_EQ(sprites.textures.back()->pixels[0], 0x00FF00FFu);
        sprites.takeLog();
    }

  private:
    std::string clientText() const {
        return std::to_string(system.client.width()) + "x" + std::to_string(system.client.height());
    }
};

TEST_F(DrawingOverARebuild, IsGoneInAWindowOfAnotherSize) {
    openWithDrawing();
    system.setClient(20, 30, 101, 80);
    expectDrawingGone(painted(1));
}

TEST_F(DrawingOverARebuild, IsGoneWithTheSizeMessageAlready) {
    openWithDrawing();
    system.setClient(20, 30, 100, 81);
    EXPECT_EQ(object->CheckSize(0, 100, 81), 0u);
    expectDrawingGone(painted(1));
}

TEST_F(DrawingOverARebuild, IsGoneOverARotatedImage) {
    openWithDrawing();
    ASSERT_TRUE(bitmap.create({3, 5, 24}).ok());
    EXPECT_EQ(paint(2, 1, {0, 0, 3, 5}, {0, 0, 3, 5}), 0u);
    expectDrawingGone(sprites.takeLog());
}

TEST_F(DrawingOverARebuild, IsGoneOverAnImageOfAnotherSize) {
    openWithDrawing();
    ASSERT_TRUE(bitmap.create({17, 3, 24}).ok());
    expectDrawingGone(painted(2));
}

TEST_F(DrawingOverARebuild, IsGoneOverAnImageWhoseSizeIsTold) {
    openWithDrawing();
    ASSERT_TRUE(bitmap.create({17, 3, 24}).ok());
    EXPECT_EQ(object->SetImageSize(17, 3, 8), 0u);
    expectDrawingGone(painted(2));
}

TEST_F(DrawingOverARebuild, StaysInAWindowThatIsMoved) {
    openWithDrawing();
    system.setClient(500, 400, 100, 80);
    const Log log = painted(2);
    EXPECT_THAT(log, Contains("begin 16"));
    EXPECT_EQ(texturesDrawn(log), 2);
}

// Nobody has to draw again: both textures survive, with their pixels.
TEST_F(DrawingOverARebuild, SurvivesTheLossOfTheDevice) {
    openWithDrawing();
    const auto image = sprites.textures[0]->pixels, drawing = sprites.textures[1]->pixels;
    sprites.results = {{"present", kDeviceLost}, {"test", kDeviceNotReset}};
    EXPECT_EQ(paint(1), 0u);
    const Log lost = sprites.takeLog();
    EXPECT_THAT(Log(lost.end() - 4, lost.end()), ElementsAre("test", "release sprite", "reset", "sprite"));
    sprites.results.clear();
    EXPECT_THAT(painted(1),
                ElementsAre("beginScene", "begin 16", "transform 1 1", "draw 0 from 0,0,5,3 at 10,20",
                            "transform 1 1", "draw 1 from 0,0,5,3 at 10,20", "end", "endScene", "present"));
    EXPECT_EQ(sprites.textures[0]->pixels, image);
    EXPECT_EQ(sprites.textures[1]->pixels, drawing);
}

}  // namespace
}  // namespace tavra::test
