// The preview window drawn with Direct3D: what is to be seen of the image and of the application's drawing.
// The sprite asks for the best filter there is, which may mix pixels at an edge with those beside them even
// where nothing is scaled. Most of the tests therefore show the inner part of an image whose shades rise
// steadily.
#include <cmath>

#include "display_api/windows/preview_on_screen.h"

namespace tavra::test {
namespace {

constexpr int kTop = 640;
constexpr Size kClient{12, 9};                     // puts the part of the image at (3, 2)
constexpr std::uint32_t kWidth = 10, kHeight = 8;  // of the image
constexpr std::uint32_t kPartWidth = 6, kPartHeight = 4, kPartLeft = 2, kPartTop = 2;

class TexturedPreview : public PreviewOnScreen, public testing::WithParamInterface<int> {
  protected:
    explicit TexturedPreview(int top = kTop) : PreviewOnScreen(top) {}

    std::uint8_t mode() const { return static_cast<std::uint8_t>(GetParam()); }
    // The part that is shown.
    void openPart(std::uint8_t aspect = TAVRA_ASPECT_MASK) {
        openMode(mode(), kWidth, kHeight);
        ASSERT_TRUE(Tavra_SetAspectMode(handle, aspect));
        showPart();
    }
    void showPart() {
        ASSERT_TRUE(Tavra_SetPreviewMaskSize(handle, kPartLeft, kPartTop, kPartWidth, kPartHeight));
        expectMessage(45062);
    }
    void startOf(std::uint32_t number) {
        start();
        show(number);
    }
    Picture part(std::uint32_t number, std::uint32_t left = 3, std::uint32_t top = 2) const {
        Picture picture(std::size_t{client.width} * client.height, 0);
        for (std::uint32_t y = 0; y < kPartHeight; ++y) {
            for (std::uint32_t x = 0; x < kPartWidth; ++x)
                picture[(y + top) * client.width + x + left] = grey(number, x + kPartLeft, y + kPartTop);
        }
        return picture;
    }
    // What is drawn on the left of the part, over three columns, of which the last and the one after it may
    // be mixed. Below the part nothing of it shows.
    void paintLeft(Picture& picture, COLORREF color) const {
        paint(picture, {3, 2, 2, 4}, color);
        paint(picture, {5, 2, 2, 4}, kAnything);
    }
    void drawLeft(const Color& color) { drawOn({0, 0, 3, 9}, color); }
};

INSTANTIATE_TEST_SUITE_P(Modes, TexturedPreview, testing::Values(5, 6, 7, 9, 10, 11),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

TEST_P(TexturedPreview, PartOfTheImageIsInTheMiddleOfBlackStrips) {
    openPart();
    createWindow(kClient);
    startOf(1);
    EXPECT_TRUE(looksLike(part(1)));
    show(9);
    EXPECT_TRUE(looksLike(part(9)));
    stopAndExpectCode(0);
    endWindow();
}

TEST_P(TexturedPreview, DrawingCoversTheImageUntilItIsReset) {
    openPart();
    createWindow(kClient);
    startOf(1);
    drawLeft({0, 255, 0});
    Picture expected = part(1);
    paintLeft(expected, kGreen);
    EXPECT_TRUE(looksLike(expected));
    show(2);
    expected = part(2);
    paintLeft(expected, kGreen);
    EXPECT_TRUE(looksLike(expected)) << "it stays over the next image";
    ASSERT_TRUE(Tavra_ResetOverlay(handle));
    show(3);
    EXPECT_TRUE(looksLike(part(3))) << "gone with the next painting";
    stopAndExpectCode(0);
}

TEST_P(TexturedPreview, ModeChangesBetweenTwoWindowsOfOneStream) {
    openPart();
    createWindow(kClient);
    startOf(1);
    EXPECT_TRUE(looksLike(part(1)));
    std::uint32_t number = 1;
    for (const std::uint8_t next : {std::uint8_t{0}, mode()}) {
        changeMode(next);
        show(++number);
        EXPECT_TRUE(looksLike(part(number))) << +next;
    }
    stopAndExpectCode(0);
}

TEST_P(TexturedPreview, UserClosesItAndTheStreamGoesOn) {
    openPart();
    createWindow(kClient);
    startOf(1);
    EXPECT_TRUE(looksLike(part(1)));
    closeByUser();
    createWindow(kClient);
    show(3);
    EXPECT_TRUE(looksLike(part(3)));
    stopAndExpectCode(0);
}

// The largest texture of Direct3D 9 has 16384 columns on any card.
TEST_P(TexturedPreview, ImageThatFitsNoTextureHasNoWindow) {
    constexpr std::uint32_t kInvalidCall = 0x8876086C, kNotAvailable = 0x8876086A;
    openMode(mode(), 20000, 1);
    EXPECT_FALSE(tryWindow(kClient));
    EXPECT_TRUE(lastError() == kInvalidCall || lastError() == kNotAvailable) << std::hex << lastError();
    TavraWindow known = nullptr;
    EXPECT_FALSE(Tavra_GetPreviewWnd(handle, &known));
    EXPECT_EQ(lastError(), TAVRA_ERROR_NO_WINDOW);
    std::uint32_t told = 0;
    for (ReceivedMessage got; receiver.wait(got, 0);) told = got.message;
    EXPECT_EQ(told, 45060u);
    collectRaw();
    start();
    sendFrame(1, pattern(1));
    EXPECT_EQ(raws.waitFor(1).size(), 1u);
    stopAndExpectCode(0);
}

// What does not depend on the way the picture is presented, on one mode of either kind.
class TexturedDetail : public TexturedPreview {
  protected:
    TexturedDetail() : TexturedPreview(kTop + 40) {}
};

INSTANTIATE_TEST_SUITE_P(Modes, TexturedDetail, testing::Values(5, 11),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

TEST_P(TexturedDetail, WholeImageKeepsItsPlace) {
    openMode(mode());
    createWindow(kClient);
    startOf(1);
    Picture expected = imageAt(1, 3, 2);
    paint(expected, {3, 2, 6, 4}, kAnything);
    const Picture image = imageAt(1, 3, 2);
    for (const std::size_t y : {3u, 4u}) {
        for (std::size_t x = 4; x < 8; ++x) expected[y * 12 + x] = image[y * 12 + x];
    }
    EXPECT_TRUE(looksLike(expected));
    stopAndExpectCode(0);
}

TEST_P(TexturedDetail, ColoursAreInTheirPlaces) {
    openPart();
    for (const std::uint32_t format : {TAVRA_PIXEL_BGR_24, TAVRA_PIXEL_BGR_32}) {
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, format));
        forgetPlaces();
        showPart();
        createWindow({kPartWidth, kPartHeight});
        ImageBufferSet& shown = record().previewImages(false);
        const std::uint32_t index = shown.chooseFree(1);
        platform::Bitmap& bitmap = shown.image(index).bitmap;
        const std::size_t bytes = format == TAVRA_PIXEL_BGR_24 ? 3 : 4;
        Picture expected;
        for (std::uint32_t y = 0; y < kHeight; ++y) {
            for (std::uint32_t x = 0; x < kWidth; ++x) {
                std::uint8_t* const pixel = bitmap.pixels() + y * bitmap.shape().stride() + x * bytes;
                pixel[0] = static_cast<std::uint8_t>(10 * y + x);
                pixel[1] = static_cast<std::uint8_t>(50 + 10 * y + x);
                pixel[2] = static_cast<std::uint8_t>(150 - 10 * y - x);
                const bool isShown = x >= kPartLeft && x < kPartLeft + kPartWidth && y >= kPartTop &&
                                     y < kPartTop + kPartHeight;
                if (isShown) expected.push_back(RGB(pixel[2], pixel[1], pixel[0]));
            }
        }
        shown.publish(index);
        record().preview.invalidate();
        EXPECT_TRUE(looksLike(expected)) << format;
        endWindow();
    }
}

// A little is the filter's, which may weigh with 8 bits.
TEST_P(TexturedDetail, StretchedImageIsMixed) {
    openPart(TAVRA_ASPECT_STRETCH);
    createWindow({12, 12});
    startOf(1);
    // Two and three times as large: the middle of each pixel, in the image, whose shades are on a plane.
    Picture expected;
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 12; ++x) {
            const double atX = kPartLeft + (x + 0.5) / 2 - 0.5, atY = kPartTop + (y + 0.5) / 3 - 0.5;
            const double value = 1 + 3 * (atY * kWidth + atX);
            expected.push_back(static_cast<COLORREF>(std::lround(value)) * 0x010101);
        }
    }
    EXPECT_TRUE(looksNearly(expected, 2));
    stopAndExpectCode(0);
}

TEST_P(TexturedDetail, RotatedImage) {
    openMode(mode(), kWidth, kHeight);
    ASSERT_TRUE(Tavra_SetRotationMode(handle, TAVRA_ROTATION_CLOCKWISE));
    forgetPlaces();
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
    ASSERT_TRUE(Tavra_SetPreviewMaskSize(handle, 2, 2, 4, 6));
    expectMessage(45062);
    createWindow({4, 6});
    startOf(1);
    // What was on the left is above.
    Picture expected;
    for (std::uint32_t y = 2; y < 8; ++y) {
        for (std::uint32_t x = 2; x < 6; ++x) expected.push_back(grey(1, y, kHeight - 1 - x));
    }
    EXPECT_TRUE(looksLike(expected));
    stopAndExpectCode(0);
}

TEST_P(TexturedDetail, ClickShowsLessOfTheImage) {
    openMode(mode(), kWidth, kHeight);
    createWindow({kWidth, kHeight});
    startOf(1);
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    SetActiveWindow(window);
    ASSERT_EQ(GetActiveWindow(), window);
    SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(5, 4));
    expectMessage(45062);
    // 5 x 4 pixels from (3, 2) on, twice as large.
    Picture expected;
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 10; ++x) {
            const double value = 1 + 3 * ((2 + (y + 0.5) / 2 - 0.5) * kWidth + 3 + (x + 0.5) / 2 - 0.5);
            expected.push_back(static_cast<COLORREF>(std::lround(value)) * 0x010101);
        }
    }
    EXPECT_TRUE(looksNearly(expected, 2));
    stopAndExpectCode(0);
}

TEST_P(TexturedDetail, ResizeMovesTheImageAndClearsTheDrawing) {
    openPart();
    createWindow(kClient);
    startOf(1);
    drawLeft({0, 255, 0});
    Picture expected = part(1);
    paintLeft(expected, kGreen);
    EXPECT_TRUE(looksLike(expected));
    moveBy(0, 0, {16, 14});
    EXPECT_TRUE(looksLike(part(1, 5, 5)));
    stopAndExpectCode(0);
    endWindow();
}

TEST_P(TexturedDetail, KeyColourIsOfWindowsOrderAndRemovesTheDrawing) {
    openPart();
    ASSERT_TRUE(Tavra_SetColorKey(handle, kRed));
    createWindow(kClient);
    startOf(1);
    drawLeft({0, 0, 255});
    Picture expected = part(1);
    paintLeft(expected, kBlue);
    EXPECT_TRUE(looksLike(expected));
    drawLeft({255, 0, 0});
    EXPECT_TRUE(looksLike(part(1))) << "in the key's colour";
    drawLeft({0, 0, 255});
    EXPECT_TRUE(looksLike(expected));
    ASSERT_TRUE(Tavra_SetColorKey(handle, kBlue));
    EXPECT_TRUE(looksLike(part(1)));
    stopAndExpectCode(0);
}

TEST_P(TexturedDetail, AlphaBlendsTheDrawing) {
    openPart();
    ASSERT_TRUE(Tavra_SetAlphaChannel(handle, 128));
    createWindow(kClient);
    startOf(1);
    drawOn({0, 0, 12, 9}, {200, 100, 50});
    Picture expected = part(1);
    for (COLORREF& pixel : expected) {
        if (pixel == 0) continue;
        const double grey = pixel & 0xFF;
        const auto mixed = [grey](double drawn) {
            return static_cast<BYTE>(std::lround((drawn * 128 + grey * 127) / 255));
        };
        pixel = RGB(mixed(200), mixed(100), mixed(50));
    }
    EXPECT_TRUE(looksNearly(expected, 1));
    // From the next drawing on.
    ASSERT_TRUE(Tavra_SetAlphaChannel(handle, 255));
    drawOn({0, 0, 12, 9}, {0, 255, 0});
    expected = part(1);
    paint(expected, {3, 2, 6, 4}, kGreen);
    EXPECT_TRUE(looksLike(expected));
    stopAndExpectCode(0);
}

// The drawing keeps its size, and its corner is that of the image divided by the image's scale.
TEST_P(TexturedDetail, DrawingIsNotScaledWithTheImage) {
    openPart(TAVRA_ASPECT_FREE);
    createWindow({20, 14});
    startOf(1);
    ASSERT_TRUE(Tavra_SetPreviewDestSize(handle, 8, 6, 12, 8));
    expectMessage(45063);
    drawOn({0, 0, 20, 14}, {0, 255, 0});
    // From (4, 3) on, 12 x 8 pixels. What is seen of the image goes on below and on the right of it.
    Picture expected(20 * 14, 0);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 12; ++x) {
            const double atX = kPartLeft + (x + 0.5) / 2 - 0.5, atY = kPartTop + (y + 0.5) / 2 - 0.5;
            const auto value = static_cast<COLORREF>(std::lround(1 + 3 * (atY * kWidth + atX)));
            expected[static_cast<std::size_t>((y + 6) * 20 + x + 8)] = value * 0x010101;
        }
    }
    paint(expected, {4, 3, 12, 8}, kGreen);
    EXPECT_TRUE(looksNearly(expected, 2));
    forgetAll();  // of sizes
    stopAndExpectCode(0);
}

TEST_P(TexturedDetail, ContextThatIsOutStopsOnlyThePicture) {
    openPart();
    collectRaw();
    createWindow(kClient);
    startOf(1);
    EXPECT_TRUE(looksLike(part(1)));
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    ASSERT_NE(dc, nullptr);
    show(2);
    show(3);
    EXPECT_EQ(raws.waitFor(3).size(), 3u);
    pump();
    EXPECT_EQ(screen(), part(1));
    expectContextOfThisThread(dc);
    ASSERT_TRUE(Tavra_ReleaseDC(handle, dc));
    EXPECT_TRUE(looksLike(part(3)));
    stopAndExpectCode(0);
}

TEST_P(TexturedDetail, ContextOutlivesTheWindow) {
    openPart();
    createWindow(kClient);
    drawBeyondTheWindow();
    startOf(1);
    EXPECT_TRUE(looksLike(part(1)));
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
