// The display modes with a drawing surface on an X server: image, background and the application's drawing,
// pixel by pixel.
#include <cmath>
#include <cstring>
#include <future>

#include "capture_api/stream_fixture.h"
#include "platform/linux/pixel_paint.h"
#include "platform/surface_device.h"
#include "platform/window.h"
#include "support/drawing.h"
#include "support/x_server.h"

namespace tavra::test {
namespace {

using Picture = std::vector<std::uint32_t>;
using platform::Size;

constexpr std::uint32_t kRed = 0xFF0000, kMagenta = 0xFF00FF;

// Shows a mono camera with images of 6 x 4 pixels in a window of 12 x 9, which puts them at (3, 2).
class DrawingSurface : public StreamTest, public testing::WithParamInterface<int> {
  protected:
    DrawingSurface() {
        if (!server.started()) ADD_FAILURE() << "Xvfb does not start: scripts/install-deps test";
    }
    ~DrawingSurface() override {
        if (handle != nullptr) Tavra_Close(handle);
        handle = nullptr;
    }

    void showImage(std::uint32_t format = TAVRA_PIXEL_MONO_8, int aspect = TAVRA_ASPECT_IMAGE) {
        openCamera(1, 1, 6, 4);
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, format));
        ASSERT_TRUE(Tavra_SetAspectMode(handle, static_cast<std::uint8_t>(aspect)));
        createWindow();
        start();
        show(1);
    }
    void createWindow() {
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, static_cast<std::uint8_t>(GetParam())));
        ASSERT_TRUE(Tavra_CreatePreviewWindowW(handle, u"Preview", platform::kStyleVisible, 40, 30, 12, 9,
                                               nullptr, nullptr, 1))
            << lastError();
        expectMessage(45061);
        expectMessage(45063);
        window = static_cast<xcb_window_t>(expectMessage(45059));
    }
    void show(std::uint32_t number) {
        sendFrame(number, pattern(static_cast<std::uint8_t>(number)));
        EXPECT_EQ(expectMessage(45067), number);
    }
    bool looksLike(const Picture& expected, Size size = {12, 9}) {
        return server.looksLike(window, size, expected);
    }
    // Likewise, but channels may differ by `most`.
    bool looksNearly(const Picture& expected, std::uint32_t most) {
        const auto near = [most](std::uint32_t a, std::uint32_t b) {
            for (const std::uint32_t shift : {0, 8, 16}) {
                const std::uint32_t one = a >> shift & 0xFF, other = b >> shift & 0xFF;
                if (std::max(one, other) - std::min(one, other) > most) return false;
            }
            return true;
        };
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < deadline) {
            const Picture seen = server.pixels(window, 12, 9);
            if (std::equal(seen.begin(), seen.end(), expected.begin(), expected.end(), near)) return true;
        }
        return false;
    }

    // Grey of frame `number` at (x, y), as the mode's pixels hold it.
    static std::uint32_t grey(std::uint32_t number, std::uint32_t x, std::uint32_t y) {
        const std::uint32_t value = (number + 3 * (y * 6 + x)) & 0xFF;
        if (GetParam() == 1) {  // five bits of red and blue, six of green
            const std::uint32_t five = value / 8, six = value / 4;
            const std::uint32_t outer = five * 8 + five / 4;
            return outer * 0x10001 + (six * 4 + six / 16) * 0x100;
        }
        if (GetParam() == 2) {  // luma from 16 to 235
            const double wide = std::floor((value - 16.0) * 255 / 219 + 0.5);
            return static_cast<std::uint32_t>(std::fmin(std::fmax(wide, 0), 255)) * 0x010101;
        }
        return value * 0x010101;
    }
    Picture imageAt(std::uint32_t number, std::uint32_t left, std::uint32_t top, Size size = {12, 9}) const {
        Picture picture(std::size_t{size.width} * size.height, 0);
        for (std::uint32_t y = 0; y < 4; ++y) {
            for (std::uint32_t x = 0; x < 6; ++x) {
                picture[(y + top) * size.width + x + left] = grey(number, x, y);
            }
        }
        return picture;
    }
    static void paint(Picture& picture, std::uint32_t left, std::uint32_t top, std::uint32_t width,
                      std::uint32_t height, std::uint32_t color) {
        for (std::uint32_t y = top; y < top + height; ++y) {
            for (std::uint32_t x = left; x < left + width; ++x) picture[y * 12 + x] = color;
        }
    }
    // A red rectangle of 3 x 2 pixels at (1, 1) of the drawing.
    void drawRed() {
        TavraDC dc = nullptr;
        ASSERT_TRUE(Tavra_GetDC(handle, &dc));
        ASSERT_NE(dc, nullptr);
        EXPECT_TRUE(fillRectangle(dc, {1, 1, 3, 2}, {255, 0, 0}));
        EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    }

    void receive(int messages) {
        for (int i = 0; i < messages; ++i) {
            ReceivedMessage got;
            ASSERT_TRUE(receiver.wait(got, kPatienceMs)) << i;
        }
    }
    // Paints all of the window again, from the background on, and waits for it: what is told of the second
    // round comes after the painting of the first.
    void repaint() {
        std::uint8_t mode = 0;
        ASSERT_TRUE(Tavra_GetAspectMode(handle, &mode));
        for (int round = 0; round < 2; ++round) {
            ASSERT_TRUE(Tavra_SetAspectMode(handle, mode));
            receive(2);
        }
    }
    void setDestination(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height) {
        ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_FREE));
        ASSERT_TRUE(Tavra_SetPreviewDestSize(handle, x, y, width, height));
        receive(5);  // a size and a destination of each, and the destination itself
        repaint();
    }

    XServer server;
    xcb_window_t window = 0;
};

INSTANTIATE_TEST_SUITE_P(Modes, DrawingSurface, testing::Values(1, 2, 3, 4),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

TEST_P(DrawingSurface, ImageIsInTheMiddleOfBlackStrips) {
    showImage();
    EXPECT_TRUE(looksLike(imageAt(1, 3, 2)));
    show(2);
    EXPECT_TRUE(looksLike(imageAt(2, 3, 2)));
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, ImageBeyondTheWindowIsCutAlsoWhenTheDrawingIsReset) {
    showImage();
    setDestination(0u - 2, 0u - 1, 6, 4);
    const auto cut = [](std::uint32_t number) {
        Picture picture(12 * 9, 0);
        for (std::uint32_t y = 0; y < 3; ++y) {
            for (std::uint32_t x = 0; x < 4; ++x) picture[y * 12 + x] = grey(number, x + 2, y + 1);
        }
        return picture;
    };
    EXPECT_TRUE(looksLike(cut(1)));
    drawRed();
    show(2);
    EXPECT_TRUE(Tavra_StopTransfer(handle));
    EXPECT_TRUE(Tavra_ResetOverlay(handle));
    EXPECT_TRUE(looksLike(cut(2)));
}

// Rows of 18 bytes are padded. On the way through UYVY luma is rounded three times and chroma as often, which
// is up to four values of a channel.
TEST_P(DrawingSurface, ImagesOfThreeAndFourBytesAreShown) {
    showImage();
    stopAndExpectCode(0);
    std::uint32_t number = 1;
    for (const std::uint32_t format : {TAVRA_PIXEL_BGR_24, TAVRA_PIXEL_BGR_32}) {
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, format));
        start();
        show(number += 40);
        Picture expected = imageAt(number, 3, 2);
        if (GetParam() == 2) {
            for (std::uint32_t i = 0; i < 24; ++i) {
                expected[(i / 6 + 2) * 12 + i % 6 + 3] = (number + 3 * i) * 0x010101;
            }
        }
        EXPECT_TRUE(looksNearly(expected, GetParam() == 2 ? 4 : 0)) << format;
        stopAndExpectCode(0);
    }
}

TEST_P(DrawingSurface, StretchTakesTheNearestPixels) {
    showImage(TAVRA_PIXEL_MONO_8, TAVRA_ASPECT_STRETCH);
    Picture expected(12 * 9);
    for (std::uint32_t y = 0; y < 9; ++y) {
        // The middle of row y lies at (y + 0.5) * 4 / 9 of the image.
        for (std::uint32_t x = 0; x < 12; ++x) expected[y * 12 + x] = grey(1, x / 2, (2 * y + 1) * 4 / 18);
    }
    EXPECT_TRUE(looksLike(expected));
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, DrawingShowsOverTheImage) {
    showImage();
    drawRed();
    Picture expected = imageAt(1, 3, 2);
    paint(expected, 4, 3, 3, 2, kRed);  // from the image's corner on
    EXPECT_TRUE(looksLike(expected));
    show(2);
    expected = imageAt(2, 3, 2);
    paint(expected, 4, 3, 3, 2, kRed);
    EXPECT_TRUE(looksLike(expected));
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, ResetTakesTheDrawingAway) {
    showImage();
    drawRed();
    Picture drawn = imageAt(1, 3, 2);
    paint(drawn, 4, 3, 3, 2, kRed);
    EXPECT_TRUE(looksLike(drawn));
    EXPECT_TRUE(Tavra_ResetOverlay(handle));
    EXPECT_TRUE(looksLike(imageAt(1, 3, 2)));
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, ContextWithResetBeginsClear) {
    showImage();
    drawRed();
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDCWithReset(handle, &dc));
    ASSERT_NE(dc, nullptr);
    EXPECT_TRUE(fillRectangle(dc, {5, 0, 1, 1}, {255, 0, 0}));
    EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    Picture expected = imageAt(1, 3, 2);
    paint(expected, 8, 2, 1, 1, kRed);
    EXPECT_TRUE(looksLike(expected));
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, ColorKeyIsTransparent) {
    showImage();
    ASSERT_TRUE(Tavra_SetColorKey(handle, 0x0000FF));  // red
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    EXPECT_TRUE(fillRectangle(dc, {0, 0, 4, 4}, {255, 0, 255}));
    EXPECT_TRUE(fillRectangle(dc, {1, 1, 2, 2}, {255, 0, 0}));
    EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    const Picture image = imageAt(1, 3, 2);
    Picture expected = image;
    paint(expected, 3, 2, 4, 4, kMagenta);
    for (const std::size_t at : {3 * 12 + 4, 3 * 12 + 5, 4 * 12 + 4, 4 * 12 + 5}) expected[at] = image[at];
    EXPECT_TRUE(looksLike(expected));
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, ResizeMovesTheImageAndClearsTheDrawing) {
    showImage();
    drawRed();
    server.resize(window, 8, 10);
    expectMessage(45061);
    expectMessage(45063);
    EXPECT_TRUE(looksLike(imageAt(1, 1, 3, {8, 10}), {8, 10}));
    stopAndExpectCode(0);
}

// The modes without an overlay.
class DrawingOffScreen : public DrawingSurface {};

INSTANTIATE_TEST_SUITE_P(Modes, DrawingOffScreen, testing::Values(1, 3),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

// Neither image nor strips.
TEST_P(DrawingOffScreen, EmptyDestinationLeavesThePictureAsItWas) {
    showImage();
    EXPECT_TRUE(looksLike(imageAt(1, 3, 2)));
    setDestination(5, 5, 0, 0);
    show(2);
    repaint();
    EXPECT_EQ(server.pixels(window, 12, 9), imageAt(1, 3, 2));
    stopAndExpectCode(0);
}

// The modes with an overlay, which stays where it is on the screen while there is no place for it.
class DrawingOverlay : public DrawingSurface {
  protected:
    void showWithoutDestination() {
        showImage();
        EXPECT_TRUE(looksLike(imageAt(1, 3, 2)));
        repaint();
        setDestination(5, 5, 0, 0);
    }
    // The key in all of the window, and the overlay in a part of it.
    Picture keyAroundImageAt(std::uint32_t number, std::uint32_t left, std::uint32_t top) const {
        Picture picture(12 * 9, kMagenta);
        for (std::uint32_t i = 0; i < 24; ++i) {
            picture[(i / 6 + top) * 12 + i % 6 + left] = grey(number, i % 6, i / 6);
        }
        return picture;
    }
};

INSTANTIATE_TEST_SUITE_P(Modes, DrawingOverlay, testing::Values(2, 4),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

// And shows what comes.
TEST_P(DrawingOverlay, EmptyDestinationLeavesOverlayAndStrips) {
    showWithoutDestination();
    EXPECT_EQ(server.pixels(window, 12, 9), imageAt(1, 3, 2));
    show(2);
    repaint();
    EXPECT_EQ(server.pixels(window, 12, 9), imageAt(2, 3, 2));
    show(3);
    repaint();
    EXPECT_EQ(server.pixels(window, 12, 9), imageAt(3, 3, 2));
    stopAndExpectCode(0);
}

// A move brings the key to all of the client area, and without a destination nothing is painted over it.
TEST_P(DrawingOverlay, MovedWindowWithoutADestinationHasTheKey) {
    showWithoutDestination();
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 41, 31, 12, 9));
    EXPECT_TRUE(looksLike(keyAroundImageAt(1, 2, 1))) << "the overlay has not followed";
    show(2);
    repaint();
    EXPECT_EQ(server.pixels(window, 12, 9), keyAroundImageAt(2, 2, 1));
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 90, 70, 12, 9));
    EXPECT_TRUE(looksLike(Picture(12 * 9, kMagenta))) << "beside the overlay";
    setDestination(3, 2, 6, 4);
    EXPECT_TRUE(looksLike(imageAt(2, 3, 2)));
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, SecondFrameOfAMovedWindowIsWhole) {
    showImage();
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 90, 70, 12, 9));
    show(2);
    EXPECT_TRUE(looksLike(imageAt(2, 3, 2)));
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, WindowPartlyOffTheScreenShowsItsPart) {
    showImage();
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 794, 596, 12, 9));  // of 800 x 600
    show(2);
    const Picture whole = imageAt(2, 3, 2);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    bool equal = false;
    while (!equal && std::chrono::steady_clock::now() < deadline) {
        const Picture seen = server.pixels(window, 6, 4);
        equal = seen.size() == 24;
        for (std::size_t i = 0; equal && i < seen.size(); ++i) {
            equal = seen[i] == whole[i / 6 * 12 + i % 6];
        }
    }
    EXPECT_TRUE(equal);
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, WindowOffTheScreenComesBackWhole) {
    showImage();
    struct Place {
        int x, y;
    };
    std::uint32_t number = 1;
    for (const Place& place : {Place{-100, 30}, {900, 30}, {40, -100}, {40, 700}, {40, 30}}) {
        ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, static_cast<std::uint32_t>(place.x),
                                               static_cast<std::uint32_t>(place.y), 12, 9));
        show(++number);
    }
    EXPECT_TRUE(looksLike(imageAt(number, 3, 2)));
    stopAndExpectCode(0);
}

// A screen with a colour of its own for each pixel, of which a window shows four by three.
class ScreenPart {
  public:
    ScreenPart() {
        EXPECT_TRUE(server_.started()) << "Xvfb does not start: scripts/install-deps test";
        EXPECT_TRUE(platform::windowSystem().registerClass(true).ok());
        EXPECT_TRUE(platform::surfaceSystem().createDevice(nullptr, device_).ok());
        EXPECT_TRUE(device_->createSurface({}, screen_).ok());
        platform::LockedSurface locked;
        EXPECT_TRUE(screen_->lockForWriting(locked).ok());
        for (std::uint32_t y = 0; y < 600; ++y) {
            for (std::uint32_t x = 0; x < 800; ++x) {
                const std::uint32_t color = colorAt(x, y);
                std::memcpy(locked.pixels + y * locked.pitch + std::size_t{x} * 4, &color, sizeof color);
            }
        }
        EXPECT_TRUE(screen_->unlock().ok());
    }

    ~ScreenPart() { EXPECT_TRUE(platform::windowSystem().unregisterClass(true).ok()); }
    ScreenPart(const ScreenPart&) = delete;
    ScreenPart& operator=(const ScreenPart&) = delete;

    static std::uint32_t colorAt(std::uint32_t x, std::uint32_t y) { return x + 1000 * y; }
    // Of the client area from (left, top) on.
    Picture shown(const platform::Rectangle& client, std::int32_t left, std::int32_t top) {
        Picture pixels(12, kRed);
        platform::PixelPaint paint({reinterpret_cast<std::uint8_t*>(pixels.data()), 16, 4, 3, 4, left, top});
        device_->show(paint, client);
        return pixels;
    }

  private:
    XServer server_;  // of 800 x 600
    std::shared_ptr<platform::ISurfaceDevice> device_;
    std::shared_ptr<platform::ISurface> screen_;
};

TEST(SurfacesInMemory, PartOfAWindowShowsThatPartOfTheScreen) {
    ScreenPart part;
    Picture expected;
    for (std::uint32_t y = 0; y < 3; ++y) {
        for (std::uint32_t x = 0; x < 4; ++x)
            expected.push_back(ScreenPart::colorAt(10 + 30 + x, 20 + 7 + y));
    }
    EXPECT_EQ(part.shown({10, 20, 110, 100}, 30, 7), expected);
    EXPECT_EQ(part.shown({-960, -473, 2000, 2000}, 1000, 500), expected);
}

TEST(SurfacesInMemory, NothingIsShownOfWhatIsOffTheScreen) {
    ScreenPart part;
    const Picture untouched(12, kRed);
    EXPECT_EQ(part.shown({-100, 30, -96, 33}, 0, 0), untouched);
    EXPECT_EQ(part.shown({900, 30, 904, 33}, 0, 0), untouched);
    EXPECT_EQ(part.shown({40, -100, 44, -97}, 0, 0), untouched);
    EXPECT_EQ(part.shown({40, 700, 44, 703}, 0, 0), untouched);
    EXPECT_EQ(part.shown({-50, 30, 50, 90}, 10, 0), untouched);  // on the screen, but not this part of it
}

// A context that is out.

TEST_P(DrawingSurface, StreamAndWindowAnswerWhileAContextIsOut) {
    showImage();
    EXPECT_TRUE(looksLike(imageAt(1, 3, 2)));
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    show(2);
    show(3);
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    EXPECT_TRUE(Tavra_GetPreviewWindowSize(handle, &x, &y, &width, &height));
    EXPECT_EQ(width, 12u);
    EXPECT_TRUE(looksLike(imageAt(1, 3, 2)));  // as it was
    EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    EXPECT_TRUE(looksLike(imageAt(3, 3, 2)));
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, ContextIsReleasedByItsThreadOnly) {
    showImage();
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    std::async(std::launch::async, [&] { Tavra_ReleaseDC(handle, dc); }).wait();
    EXPECT_EQ(lastError(), 288u);
    EXPECT_TRUE(fillRectangle(dc, {0, 0, 1, 1}, {255, 0, 0}));
    EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, ContextOutlivesItsWindow) {
    showImage();
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    auto other = std::async(std::launch::async, [this] {
        TavraDC waited = nullptr;
        return Tavra_GetDC(handle, &waited) != 0 && waited == nullptr;
    });
    EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
    expectMessage(45060);
    other.wait();
    EXPECT_TRUE(fillRectangle(dc, {0, 0, 1, 1}, {255, 0, 0}));  // is nowhere to be seen
    EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    EXPECT_FALSE(Tavra_ReleaseDC(handle, dc));
    EXPECT_EQ(lastError(), TAVRA_ERROR_NO_WINDOW);
    createWindow();
    drawRed();
    Picture expected = imageAt(1, 3, 2);
    paint(expected, 4, 3, 3, 2, kRed);
    EXPECT_TRUE(looksLike(expected));
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, CameraClosesWhileAContextIsOut) {
    showImage();
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    Tavra_Close(handle);
    EXPECT_EQ(expectMessage(45058), 0u);
    EXPECT_EQ(expectMessage(45060), 0u);
    handle = nullptr;
}

}  // namespace
}  // namespace tavra::test
