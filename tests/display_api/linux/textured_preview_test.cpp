// The preview window drawn with OpenGL: what is to be seen of the image and of the application's drawing,
// pixel by pixel. Nothing here depends on how fast OpenGL is, or whether a graphics card does it.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <thread>

#include "display_x11/preview_on_screen.h"
#include "support/drawing.h"

namespace tavra::test {
namespace {

constexpr Color kGreen{0, 255, 0};

class TexturedPreview : public PreviewOnScreen {
  protected:
    void openMode(std::uint8_t mode, std::uint32_t width = 6, std::uint32_t height = 4) {
        openMono(width, height);
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, mode));
    }
    // The frame, unscaled, with its corner at (left, top) of a black window.
    Picture imageAt(std::uint32_t number, Size client, std::uint32_t left, std::uint32_t top) const {
        Picture expected(std::size_t{client.width} * client.height, 0);
        for (std::uint32_t y = 0; y < 4; ++y) {
            for (std::uint32_t x = 0; x < 6; ++x)
                expected[(y + top) * client.width + x + left] = grey(number, x, y);
        }
        return expected;
    }
    void drawOn(const Rectangle& rectangle, const Color& color) {
        TavraDC dc = nullptr;
        ASSERT_TRUE(Tavra_GetDCWithReset(handle, &dc));
        ASSERT_NE(dc, nullptr) << lastError();
        ASSERT_TRUE(fillRectangle(dc, rectangle, color));
        ASSERT_TRUE(Tavra_ReleaseDC(handle, dc));
    }
    // As XServer::looksLike, with channels that may be off by so much.
    bool looksNearly(Size size, const Picture& expected, int tolerance) {
        const auto near = [tolerance](std::uint32_t a, std::uint32_t b) {
            for (const unsigned shift : {0u, 8u, 16u}) {
                if (std::abs(static_cast<int>(a >> shift & 0xFF) - static_cast<int>(b >> shift & 0xFF)) >
                    tolerance)
                    return false;
            }
            return true;
        };
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        for (;;) {
            const Picture seen = server.pixels(window, size.width, size.height);
            if (seen.size() == expected.size() &&
                std::equal(seen.begin(), seen.end(), expected.begin(), near))
                return true;
            if (std::chrono::steady_clock::now() > deadline) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));  // between two looks
        }
    }
};

TEST_F(TexturedPreview, ImageIsUprightAndExactInEveryMode) {
    openMono(6, 4);
    start();
    for (const std::uint8_t mode : {5, 6, 7, 9, 10, 11}) {
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, mode));
        createWindow({10, 9});
        show(mode);
        EXPECT_TRUE(server.looksLike(window, {10, 9}, imageAt(mode, {10, 9}, 2, 2))) << +mode;
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        expectMessage(45060);
    }
    stopAndExpectCode(0);
}

TEST_F(TexturedPreview, ColoursAreInTheirPlaces) {
    openCamera(1, 1, 6, 4);
    for (const std::uint32_t format : {TAVRA_PIXEL_BGR_24, TAVRA_PIXEL_BGR_32}) {
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, format));
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, 5));
        createWindow({6, 4});
        ImageBufferSet& shown = record().previewImages(false);
        const std::uint32_t index = shown.chooseFree(1);
        platform::Bitmap& bitmap = shown.image(index).bitmap;
        const std::uint32_t bytes = format == TAVRA_PIXEL_BGR_24 ? 3 : 4;
        Picture expected(24);
        for (std::uint32_t i = 0; i < 24; ++i) {
            std::uint8_t* const pixel =
                bitmap.pixels() + i / 6 * bitmap.shape().stride() + std::size_t{i % 6} * bytes;
            pixel[0] = static_cast<std::uint8_t>(i);
            pixel[1] = static_cast<std::uint8_t>(50 + i);
            pixel[2] = static_cast<std::uint8_t>(100 + i);
            expected[i] = i | (50 + i) << 8 | (100 + i) << 16;
        }
        shown.publish(index);
        record().preview.invalidate();
        EXPECT_TRUE(server.looksLike(window, {6, 4}, expected)) << format;
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        expectMessage(45060);
    }
}

// Two of the tolerance are OpenGL's: it may weigh with 8 bits, and round each of the two axes.
TEST_F(TexturedPreview, ScaledImageIsMixedInsideItself) {
    openMode(5);
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
    createWindow({12, 12});
    start();
    show(1);
    // Two and three times as large: the middle of each pixel, in the image, and the pixels around it. What
    // lies beyond the edge is the edge.
    Picture expected(12 * 12);
    for (std::uint32_t y = 0; y < 12; ++y) {
        for (std::uint32_t x = 0; x < 12; ++x) {
            const double atX = std::clamp((x + 0.5) / 2 - 0.5, 0.0, 5.0);
            const double atY = std::clamp((y + 0.5) / 3 - 0.5, 0.0, 3.0);
            const double value = 1 + 3 * (atY * 6 + atX);  // the pattern is linear
            expected[y * 12 + x] = static_cast<std::uint32_t>(std::lround(value)) * 0x010101u;
        }
    }
    EXPECT_TRUE(looksNearly({12, 12}, expected, 2));
    stopAndExpectCode(0);
}

TEST_F(TexturedPreview, ScrolledImageIsClippedExactly) {
    openMode(5, 64, 48);
    createWindow({40, 40}, kVisible | kScrolls, nullptr, true, 2);  // the bars take room
    start();
    show(1);
    const auto part = [this](std::uint32_t fromX) {
        Picture seen(24 * 24);
        for (std::uint32_t y = 0; y < 24; ++y) {
            for (std::uint32_t x = 0; x < 24; ++x) seen[y * 24 + x] = grey(1, x + fromX, y);
        }
        return seen;
    };
    EXPECT_TRUE(server.looksLike(window, {24, 24}, part(0)));
    server.button(window, true, 1, 20, 30);  // the arrow to the right
    server.button(window, false, 1, 20, 30);
    EXPECT_TRUE(server.looksLike(window, {24, 24}, part(1)));
    const Picture whole = server.pixels(window, 40, 40);
    EXPECT_NE(whole[30 * 40 + 20], 0u);  // the bar is there
    stopAndExpectCode(0);
}

TEST_F(TexturedPreview, RotatedImage) {
    openMode(5);
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
    ASSERT_TRUE(Tavra_SetRotationMode(handle, TAVRA_ROTATION_CLOCKWISE));
    expectMessage(45062);
    expectMessage(45063);
    createWindow({4, 6});
    start();
    show(1);
    Picture expected(4 * 6);
    for (std::uint32_t y = 0; y < 6; ++y) {
        for (std::uint32_t x = 0; x < 4; ++x) expected[y * 4 + x] = grey(1, y, 3 - x);
    }
    EXPECT_TRUE(server.looksLike(window, {4, 6}, expected));
    stopAndExpectCode(0);
}

TEST_F(TexturedPreview, ResizeMovesTheImage) {
    openMode(5);
    createWindow({6, 4});
    start();
    show(1);
    EXPECT_TRUE(server.looksLike(window, {6, 4}, imageAt(1, {6, 4}, 0, 0)));
    server.resize(window, 8, 8);
    expectMessage(45061);
    expectMessage(45063);
    EXPECT_TRUE(server.looksLike(window, {8, 8}, imageAt(1, {8, 8}, 1, 2)));
    stopAndExpectCode(0);
}

TEST_F(TexturedPreview, UncoveredWindowIsDrawnAgain) {
    openMode(5);
    createWindow({200, 120});
    start();
    show(1);
    const Picture expected = imageAt(1, {200, 120}, 97, 58);
    EXPECT_TRUE(server.looksLike(window, {200, 120}, expected));
    stopAndExpectCode(0);
    // Over the image: its place is (100, 50) on the screen.
    const xcb_window_t cover = server.makeWindow(60, 60);
    EXPECT_FALSE(server.pixels(cover, 60, 60).empty());  // it is there
    server.destroy(cover);
    EXPECT_TRUE(server.looksLike(window, {200, 120}, expected));
}

// The application's drawing.

TEST_F(TexturedPreview, DrawingCoversTheImageExceptInTheKeyColour) {
    openMode(5);
    createWindow({10, 9});
    start();
    show(1);
    drawOn({1, 1, 3, 2}, kGreen);
    // The drawing's corner lies on that of the image.
    Picture expected = imageAt(1, {10, 9}, 2, 2);
    for (const std::size_t y : {3u, 4u}) {
        for (const std::size_t x : {3u, 4u, 5u}) expected[y * 10 + x] = 0x00FF00;
    }
    EXPECT_TRUE(server.looksLike(window, {10, 9}, expected));
    ASSERT_TRUE(Tavra_ResetOverlay(handle));
    show(2);
    EXPECT_TRUE(server.looksLike(window, {10, 9}, imageAt(2, {10, 9}, 2, 2)));
    stopAndExpectCode(0);
}

TEST_F(TexturedPreview, KeyColourIsOfWindowsOrder) {
    openMode(5);
    ASSERT_TRUE(Tavra_SetColorKey(handle, 0x0000FF));  // red
    createWindow({6, 4});
    start();
    show(1);
    drawOn({0, 0, 3, 4}, {0, 0, 255});  // blue is none
    Picture expected = imageAt(1, {6, 4}, 0, 0);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (i % 6 < 3) expected[i] = 0x0000FF;
    }
    EXPECT_TRUE(server.looksLike(window, {6, 4}, expected));
    ASSERT_TRUE(Tavra_SetColorKey(handle, 0xFF0000));  // removes what was drawn
    EXPECT_TRUE(server.looksLike(window, {6, 4}, imageAt(1, {6, 4}, 0, 0)));
    stopAndExpectCode(0);
}

TEST_F(TexturedPreview, AlphaBlendsTheDrawing) {
    openMode(5);
    ASSERT_TRUE(Tavra_SetAlphaChannel(handle, 128));
    createWindow({6, 4});
    start();
    show(1);
    drawOn({0, 0, 6, 2}, {200, 100, 50});
    Picture expected = imageAt(1, {6, 4}, 0, 0);
    for (std::uint32_t i = 0; i < 12; ++i) {
        const double grey = expected[i] & 0xFF;
        const auto mixed = [grey](double drawn) {
            return static_cast<std::uint32_t>(std::lround((drawn * 128 + grey * 127) / 255));
        };
        expected[i] = mixed(200) << 16 | mixed(100) << 8 | mixed(50);
    }
    EXPECT_TRUE(looksNearly({6, 4}, expected, 1));
    // From the next drawing on.
    ASSERT_TRUE(Tavra_SetAlphaChannel(handle, 255));
    drawOn({0, 0, 6, 4}, kGreen);
    EXPECT_TRUE(server.looksLike(window, {6, 4}, Picture(24, 0x00FF00)));
    stopAndExpectCode(0);
}

TEST_F(TexturedPreview, ContextThatIsNeverReleasedStopsOnlyThePicture) {
    openMode(5);
    collectRaw();
    createWindow({6, 4});
    start();
    show(1);
    EXPECT_TRUE(server.looksLike(window, {6, 4}, imageAt(1, {6, 4}, 0, 0)));
    TavraDC dc = nullptr, second = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    ASSERT_NE(dc, nullptr);
    show(2);
    show(3);
    EXPECT_EQ(raws.waitFor(3).size(), 3u);
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    EXPECT_TRUE(Tavra_GetPreviewWindowSize(handle, &x, &y, &width, &height));  // the window goes on
    record().lastError = 0;
    ASSERT_TRUE(Tavra_GetDC(handle, &second));
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(lastError(), 1131u);
    std::thread([&] { EXPECT_TRUE(Tavra_ReleaseDC(handle, dc)); }).join();
    EXPECT_EQ(lastError(), 288u);
    stopAndExpectCode(0);
    EXPECT_TRUE(server.looksLike(window, {6, 4}, imageAt(1, {6, 4}, 0, 0)));
    ASSERT_TRUE(Tavra_ReleaseDC(handle, dc));
    EXPECT_TRUE(server.looksLike(window, {6, 4}, imageAt(3, {6, 4}, 0, 0)));
}

TEST_F(TexturedPreview, ContextOutlivesTheWindow) {
    openMode(5);
    createWindow({6, 4});
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    server.closeByUser(window);
    expectMessage(45060);
    EXPECT_TRUE(fillRectangle(dc, {0, 0, 6, 4}, kGreen));
    EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    EXPECT_FALSE(Tavra_ReleaseDC(handle, dc));
    EXPECT_EQ(lastError(), TAVRA_ERROR_NO_WINDOW);
}

TEST_F(TexturedPreview, ClosingTheCameraEndsAWindowWithAContextOut) {
    openMode(5);
    createWindow({6, 4});
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    Tavra_Close(handle);
    handle = nullptr;
}

TEST_F(TexturedPreview, ServerThatGoesAwayTakesOnlyTheWindow) {
    openMode(5);
    collectRaw();
    createWindow({10, 8});
    start();
    show(1);
    server.kill();
    expectMessage(45060);
    sendFrame(2, pattern(2));
    EXPECT_EQ(raws.waitFor(2).size(), 2u);
    stopAndExpectCode(0);
    EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
}

TEST_F(TexturedPreview, WindowsComeAndGo) {
    openMode(5);
    start();
    for (std::uint32_t i = 1; i <= 10; ++i) {
        createWindow({10, 8});
        show(i);
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        expectMessage(45060);
    }
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
