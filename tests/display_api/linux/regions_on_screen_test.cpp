// Window and drawing surface of a camera whose image is composed of several regions.
#include "display_x11/preview_on_screen.h"
#include "support/drawing.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kRed = 0xFF0000;

// Regions of 4 x 2 pixels at (0, 0) and of 2 x 1 at (3, 2), together 5 x 3.
class RegionsOnScreen : public PreviewOnScreen {
  protected:
    void openRegions() {
        DoubleCamera& camera = describe();
        camera.offerRegions(2);
        camera.setScan32(60, 3);
        const std::uint32_t first[] = {4, 2, 0, 0}, second[] = {2, 1, 3, 2};
        for (std::size_t i = 0; i < 4; ++i) {
            camera.setScan32(6 + 4 * i, first[i]);
            camera.setScan32(64 + 4 * i, second[i]);
        }
        camera.addRegisterPages();
        camera.registers[{17, 8}] = 10;
        open();
        ASSERT_EQ(rawSize, 10u);
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, TAVRA_PIXEL_MONO_8));
    }
    // Of a frame with the bytes 10, 20, ... 100.
    static std::uint32_t composed(std::uint32_t x, std::uint32_t y) {
        constexpr std::uint32_t kValues[3][5] = {
            {10, 20, 30, 40, 0}, {50, 60, 70, 80, 0}, {0, 0, 0, 90, 100}};
        return kValues[y][x] * 0x010101;
    }
    void showFrame() {
        start();
        sendFrame(1, {10, 20, 30, 40, 50, 60, 70, 80, 90, 100});
        EXPECT_EQ(expectMessage(45067), 1u);
    }
};

TEST_F(RegionsOnScreen, WindowWithoutASizeTakesTheComposedImages) {
    openRegions();
    forgetPlaces();
    createWindow({0, 0});
    std::uint32_t place[4] = {};
    ASSERT_TRUE(Tavra_GetPreviewWindowSize(handle, &place[0], &place[1], &place[2], &place[3]));
    EXPECT_EQ(place[2], 5u);
    EXPECT_EQ(place[3], 3u);
    showFrame();
    Picture expected;
    for (std::uint32_t i = 0; i < 15; ++i) expected.push_back(composed(i % 5, i / 5));
    EXPECT_TRUE(server.looksLike(window, {5, 3}, expected));
    stopAndExpectCode(0);
}

TEST_F(RegionsOnScreen, ContextWithResetClearsAsMuchAsTheComposedImage) {
    openRegions();
    ASSERT_TRUE(Tavra_SetDisplayMode(handle, 3));
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
    forgetPlaces();
    createWindow({8, 6});
    showFrame();
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    ASSERT_NE(dc, nullptr);
    EXPECT_TRUE(fillRectangle(dc, {0, 0, 8, 6}, {255, 0, 0}));
    EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    EXPECT_TRUE(server.looksLike(window, {8, 6}, Picture(48, kRed)));
    ASSERT_TRUE(Tavra_GetDCWithReset(handle, &dc));
    ASSERT_NE(dc, nullptr);
    EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    Picture expected(48, kRed);
    for (std::uint32_t y = 0; y < 3; ++y) {
        // The image's pixel under the middle of the window's.
        for (std::uint32_t x = 0; x < 5; ++x) {
            expected[y * 8 + x] = composed((2 * x + 1) * 5 / 16, (2 * y + 1) * 3 / 12);
        }
    }
    EXPECT_TRUE(server.looksLike(window, {8, 6}, expected));
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
