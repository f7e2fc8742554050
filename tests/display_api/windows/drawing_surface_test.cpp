// The display modes that draw through surfaces on the screen of Windows: image, background and the
// application's drawing. What an overlay shows cannot be read from the screen: that has the key.
#include "display_api/windows/preview_on_screen.h"

namespace tavra::test {
namespace {

constexpr Size kClient{12, 9};  // puts the image of 6 x 4 pixels at (3, 2)
constexpr std::uint8_t k16BitOffscreen = 1, k16BitOverlay = 2, k32BitOffscreen = 3, k32BitOverlay = 4;

std::string nameOf(const testing::TestParamInfo<int>& mode) {
    return "Mode" + std::to_string(mode.param);
}

class DrawingSurface : public PreviewOnScreen, public testing::WithParamInterface<int> {
  protected:
    explicit DrawingSurface(int top = 760) : PreviewOnScreen(top) {}

    std::uint8_t mode() const { return static_cast<std::uint8_t>(GetParam()); }
    bool isOverlay() const { return mode() == k16BitOverlay || mode() == k32BitOverlay; }
    void showImage() { PreviewOnScreen::showImage(mode(), kClient); }
    Picture picture(std::uint32_t number, std::uint32_t left = 3, std::uint32_t top = 2) const {
        Picture shown = imageAt(number, left, top);
        if (isOverlay()) paint(shown, {static_cast<int>(left), static_cast<int>(top), 6, 4}, key);
        return shown;
    }
    // A red rectangle of 3 x 2 pixels at (1, 1) of the drawing, and where that is in the client area.
    void drawRed() { drawOn({1, 1, 3, 2}, {255, 0, 0}); }
    Picture withRed(Picture shown, int left = 3, int top = 2) const {
        paint(shown, {left + 1, top + 1, 3, 2}, kRed);
        return shown;
    }
    // How 16 bits are filled up to 24 is the system's matter.
    bool looksLike(const Picture& expected) const {
        const COLORREF kept = mode() == k16BitOffscreen ? 0xF8FCF8 : 0xFFFFFF;
        const auto isSame = [kept](COLORREF seen, COLORREF asked) {
            return asked == kAnything || ((seen ^ asked) & kept) == 0;
        };
        return looks([&](const Picture& seen) {
            return std::equal(seen.begin(), seen.end(), expected.begin(), expected.end(), isSame);
        });
    }

    COLORREF key = kMagenta;
};

INSTANTIATE_TEST_SUITE_P(Modes, DrawingSurface,
                         testing::Values(k16BitOffscreen, k16BitOverlay, k32BitOffscreen, k32BitOverlay),
                         nameOf);

TEST_P(DrawingSurface, ImageIsInTheMiddleOfBlackStrips) {
    showImage();
    EXPECT_TRUE(looksLike(picture(1)));
    show(40);
    EXPECT_TRUE(looksLike(picture(40)));
    stopAndExpectCode(0);
    endWindow();
}

TEST_P(DrawingSurface, DrawingShowsOverTheImageUntilItIsReset) {
    showImage();
    EXPECT_TRUE(looksLike(picture(1)));
    drawRed();
    EXPECT_TRUE(looksLike(withRed(picture(1))));
    show(40);
    EXPECT_TRUE(looksLike(withRed(picture(40))));
    EXPECT_TRUE(Tavra_ResetOverlay(handle));
    // At once. The key of an overlay is painted all over, until the strips come with the next painting.
    Picture cleared = picture(40);
    if (isOverlay()) {
        cleared.assign(cleared.size(), kAnything);
        paint(cleared, {3, 2, 6, 4}, key);
    }
    EXPECT_TRUE(looksLike(cleared));
    show(41);
    EXPECT_TRUE(looksLike(picture(41)));
    stopAndExpectCode(0);
    endWindow();
}

TEST_P(DrawingSurface, KeyColourIsOfWindowsOrderAndTransparent) {
    showImage();
    key = kGreen;
    ASSERT_TRUE(Tavra_SetColorKey(handle, key));
    EXPECT_TRUE(looksLike(picture(1)));
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    ASSERT_NE(dc, nullptr) << std::hex << lastError();
    EXPECT_TRUE(fillRectangle(dc, {0, 0, 3, 4}, {0, 0, 255}));
    EXPECT_TRUE(fillRectangle(dc, {1, 1, 1, 2}, {0, 255, 0}));
    EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    const Picture plain = picture(1);
    Picture expected = plain;
    paint(expected, {3, 2, 3, 4}, kBlue);
    for (const std::size_t at : {3 * 12 + 4, 4 * 12 + 4}) expected[at] = plain[at];
    EXPECT_TRUE(looksLike(expected));
    ASSERT_TRUE(Tavra_SetColorKey(handle, key = kBlue));
    EXPECT_TRUE(looksLike(picture(1))) << "begins the drawing anew";
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, ResizeMovesTheImageAndClearsTheDrawing) {
    showImage();
    drawRed();
    EXPECT_TRUE(looksLike(withRed(picture(1))));
    moveBy(0, 0, {16, 14});
    show(2);
    EXPECT_TRUE(looksLike(picture(2, 5, 5)));
    stopAndExpectCode(0);
    endWindow();
}

TEST_P(DrawingSurface, WindowThatIsMovedShowsTheNextFrameThere) {
    showImage();
    EXPECT_TRUE(looksLike(picture(1)));
    moveBy(15, 20, kClient);
    show(2);
    EXPECT_TRUE(looksLike(picture(2)));
    stopAndExpectCode(0);
    endWindow();
}

TEST_P(DrawingSurface, RotatedImageStandsUpright) {
    openMode(mode());
    ASSERT_TRUE(Tavra_SetRotationMode(handle, TAVRA_ROTATION_CLOCKWISE));
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
    forgetPlaces();
    ASSERT_TRUE(Tavra_SetPreviewMaskSize(handle, 0, 0, 4, 6));
    forgetPlaces();
    createWindow({4, 6});
    start();
    show(1);
    // What was on the left is above.
    Picture expected;
    for (std::uint32_t y = 0; y < 6; ++y) {
        for (std::uint32_t x = 0; x < 4; ++x) expected.push_back(isOverlay() ? key : grey(1, y, 3 - x));
    }
    EXPECT_TRUE(looksLike(expected));
    drawRed();
    EXPECT_TRUE(looksLike(withRed(expected, 0, 0)));
    stopAndExpectCode(0);
    endWindow();
}

TEST_P(DrawingSurface, ClickShowsLessOfTheImage) {
    openMode(mode());
    createWindow({6, 4});
    start();
    show(1);
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    SetActiveWindow(window);
    ASSERT_EQ(GetActiveWindow(), window);
    forgetAll();
    SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(3, 2));
    expectMessage(45062);
    // 3 x 2 pixels from (2, 1) on, twice as large. Whether the nearest is taken, or what lies between, is the
    // system's matter: that is six shades from the nearest at most.
    Picture expected;
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 6; ++x) {
            const double shade = 1 + 3 * ((1 + (y + 0.5) / 2 - 0.5) * 6 + 2 + (x + 0.5) / 2 - 0.5);
            expected.push_back(isOverlay() ? key : static_cast<COLORREF>(shade) * 0x010101);
        }
    }
    constexpr int kFilter = 6, kLowBits = 7;
    EXPECT_TRUE(looksNearly(expected, mode() == k16BitOffscreen ? kFilter + kLowBits : kFilter));
    stopAndExpectCode(0);
    endWindow();
}

TEST_P(DrawingSurface, ModeChangesBetweenTwoWindowsOfOneStream) {
    showImage();
    EXPECT_TRUE(looksLike(picture(1)));
    std::uint32_t number = 1;
    for (const std::uint8_t next : {std::uint8_t{0}, mode()}) {
        changeMode(next);
        show(++number);
        EXPECT_TRUE(looksLike(next == 0 ? imageAt(number, 3, 2) : picture(number))) << +next;
    }
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, UserClosesItAndTheStreamGoesOn) {
    showImage();
    EXPECT_TRUE(looksLike(picture(1)));
    closeByUser();
    createWindow(kClient);
    show(3);
    EXPECT_TRUE(looksLike(picture(3)));
    stopAndExpectCode(0);
}

// A context that is out.

TEST_P(DrawingSurface, ContextThatIsOutHoldsUpOnlyThePicture) {
    showImage();
    EXPECT_TRUE(looksLike(picture(1)));
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    ASSERT_NE(dc, nullptr);
    show(2);
    show(3);
    pump();
    EXPECT_EQ(screen().size(), picture(1).size());
    EXPECT_TRUE(looksLike(picture(1)));
    expectContextOfThisThread(dc);
    ASSERT_TRUE(Tavra_ReleaseDC(handle, dc));
    EXPECT_TRUE(looksLike(picture(3)));
    stopAndExpectCode(0);
}

TEST_P(DrawingSurface, ContextOutlivesTheWindow) {
    showImage();
    drawBeyondTheWindow();
    show(2);
    EXPECT_TRUE(looksLike(picture(2)));
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
