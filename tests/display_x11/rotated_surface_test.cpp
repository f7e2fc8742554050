// Rotated images in the display modes with a drawing surface, pixel by pixel, against a composition made
// here.
#include <cmath>
#include <functional>
#include <string>

#include "display_x11/preview_on_screen.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kWidth = 6, kHeight = 5;  // of a frame: turned, its rows have an odd number of pixels
constexpr Size kClient{12, 11};

// Blue, green and red of a pixel.
struct Bgr {
    std::uint32_t blue, green, red;
};
// The pixel of a frame at (x, y).
using Frame = std::function<Bgr(std::uint32_t x, std::uint32_t y)>;

class RotatedSurface : public PreviewOnScreen, public testing::WithParamInterface<int> {
  protected:
    // Bytes of a frame are its number and three more from one to the next.
    static std::uint32_t byteAt(std::uint32_t number, std::uint32_t index) {
        return (number + 3 * index) & 0xFF;
    }
    static Frame monoFrame(std::uint32_t number) {
        return [number](std::uint32_t x, std::uint32_t y) {
            const std::uint32_t grey = byteAt(number, y * kWidth + x);
            return Bgr{grey, grey, grey};
        };
    }
    static Frame colorFrame(std::uint32_t number) {
        return [number](std::uint32_t x, std::uint32_t y) {
            const std::uint32_t first = 3 * (y * kWidth + x);
            return Bgr{byteAt(number, first), byteAt(number, first + 1), byteAt(number, first + 2)};
        };
    }

    // What the screen has of a pixel that went through the mode's surface.
    static std::uint32_t onScreen(const Bgr& pixel) {
        if (GetParam() == 1) {  // five bits of red and blue, six of green
            const auto five = [](std::uint32_t value) { return value / 8 * 8 + value / 32; };
            const std::uint32_t six = pixel.green / 4 * 4 + pixel.green / 64;
            return five(pixel.red) << 16 | six << 8 | five(pixel.blue);
        }
        if (GetParam() == 2) {  // grey as luma, from 16 to 235
            const double wide = std::floor((pixel.green - 16.0) * 255 / 219 + 0.5);
            return static_cast<std::uint32_t>(std::fmin(std::fmax(wide, 0), 255)) * 0x010101;
        }
        return pixel.red << 16 | pixel.green << 8 | pixel.blue;
    }
    // The frame, turned and enlarged, in the middle of a black window.
    static Picture composed(const Frame& frame, std::uint32_t rotation, Size client,
                            std::uint32_t factor = 1) {
        const bool turned = rotation != TAVRA_ROTATION_NONE;
        const std::uint32_t width = turned ? kHeight : kWidth, height = turned ? kWidth : kHeight;
        const std::uint32_t left = (client.width - width * factor) / 2;
        const std::uint32_t top = (client.height - height * factor) / 2;
        Picture picture(std::size_t{client.width} * client.height, 0);
        for (std::uint32_t y = 0; y < height * factor; ++y) {
            for (std::uint32_t x = 0; x < width * factor; ++x) {
                const std::uint32_t column = x / factor, row = y / factor;
                const Bgr pixel = rotation == TAVRA_ROTATION_CLOCKWISE ? frame(row, kHeight - 1 - column)
                                  : rotation == TAVRA_ROTATION_ANTICLOCKWISE ? frame(kWidth - 1 - row, column)
                                                                             : frame(column, row);
                picture[std::size_t{y + top} * client.width + x + left] = onScreen(pixel);
            }
        }
        return picture;
    }

    void chooseMode() { ASSERT_TRUE(Tavra_SetDisplayMode(handle, static_cast<std::uint8_t>(GetParam()))); }
    // Frame `number`, turned, with the destination fitted to its sides. A rotation makes the window as large
    // as the image.
    void showTurned(std::uint32_t number, std::uint32_t rotation, Size client,
                    std::uint8_t aspect = TAVRA_ASPECT_IMAGE) {
        ASSERT_TRUE(Tavra_SetRotationMode(handle, static_cast<std::uint8_t>(rotation)));
        ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 0, 0, client.width, client.height));
        sendFrame(number, pattern(static_cast<std::uint8_t>(number)));
        for (ReceivedMessage got{}; got.message != 45067;) ASSERT_TRUE(receiver.wait(got, kPatienceMs));
        ASSERT_TRUE(Tavra_SetAspectMode(handle, aspect));
    }
};

INSTANTIATE_TEST_SUITE_P(Modes, RotatedSurface, testing::Values(1, 2, 3, 4),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

TEST_P(RotatedSurface, GreyImageTurnsWhileTheStreamRuns) {
    openMono(kWidth, kHeight);
    chooseMode();
    createWindow(kClient);
    start();
    std::uint32_t number = 0;
    for (const std::uint32_t rotation :
         {TAVRA_ROTATION_NONE, TAVRA_ROTATION_CLOCKWISE, TAVRA_ROTATION_ANTICLOCKWISE, TAVRA_ROTATION_NONE,
          TAVRA_ROTATION_ANTICLOCKWISE, TAVRA_ROTATION_CLOCKWISE}) {
        number += 25;  // to 150: 237 with the last pixel
        showTurned(number, rotation, kClient);
        EXPECT_TRUE(server.looksLike(window, kClient, composed(monoFrame(number), rotation, kClient)))
            << number;
    }
    EXPECT_TRUE(Tavra_StopTransfer(handle));
}

// Not through UYVY, where colours are mixed by twos and only nearly what they were.
class RotatedColors : public RotatedSurface {};
INSTANTIATE_TEST_SUITE_P(Modes, RotatedColors, testing::Values(1, 3, 4),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

TEST_P(RotatedColors, TurnWithTheirPixels) {
    openCamera(1024, 2, kWidth, kHeight);
    chooseMode();
    for (const std::uint32_t format : {TAVRA_PIXEL_BGR_24, TAVRA_PIXEL_BGR_32}) {
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, format));
        createWindow(kClient);
        start();
        for (const std::uint32_t rotation : {TAVRA_ROTATION_CLOCKWISE, TAVRA_ROTATION_ANTICLOCKWISE}) {
            showTurned(5 + rotation, rotation, kClient);
            EXPECT_TRUE(
                server.looksLike(window, kClient, composed(colorFrame(5 + rotation), rotation, kClient)))
                << format << ' ' << rotation;
        }
        ASSERT_TRUE(Tavra_StopTransfer(handle));
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        forgetAll();
    }
}

TEST_P(RotatedSurface, TurnedImageIsEnlargedAlongItsNewSides) {
    constexpr Size kTwice{2 * kHeight, 2 * kWidth};
    openMono(kWidth, kHeight);
    chooseMode();
    createWindow(kTwice);
    start();
    for (const std::uint32_t rotation : {TAVRA_ROTATION_ANTICLOCKWISE, TAVRA_ROTATION_CLOCKWISE}) {
        showTurned(40 + rotation, rotation, kTwice, TAVRA_ASPECT_STRETCH);
        EXPECT_TRUE(server.looksLike(window, kTwice, composed(monoFrame(40 + rotation), rotation, kTwice, 2)))
            << rotation;
    }
    EXPECT_TRUE(Tavra_StopTransfer(handle));
}

}  // namespace
}  // namespace tavra::test
