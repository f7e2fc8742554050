// What is to be seen in the window, pixel by pixel, against a composition made here.
#include <algorithm>
#include <cmath>
#include <functional>

#include "display_x11/preview_on_screen.h"

namespace tavra::test {
namespace {

// The screen's colour of each pixel of an image.
using Image = std::function<std::uint32_t(std::uint32_t x, std::uint32_t y)>;

// Black, with a rectangle of an image enlarged by a whole factor.
Picture composed(Size client, int left, int top, Size part, int factor, const Image& image) {
    Picture picture(std::size_t{client.width} * client.height, 0);
    for (int y = 0; y < static_cast<int>(client.height); ++y) {
        for (int x = 0; x < static_cast<int>(client.width); ++x) {
            if (x < left || y < top) continue;
            const auto column = static_cast<std::uint32_t>((x - left) / factor);
            const auto row = static_cast<std::uint32_t>((y - top) / factor);
            if (column >= part.width || row >= part.height) continue;
            picture[static_cast<std::size_t>(y) * client.width + static_cast<std::size_t>(x)] =
                image(column, row);
        }
    }
    return picture;
}

class Composition : public PreviewOnScreen {
  protected:
    explicit Composition(const std::vector<const char*>& serverArguments = {})
        : PreviewOnScreen(serverArguments) {}

    Image frame(std::uint32_t number, std::uint32_t fromX = 0, std::uint32_t fromY = 0) {
        return [=, this](std::uint32_t x, std::uint32_t y) { return grey(number, x + fromX, y + fromY); };
    }
    void setDestination(std::int32_t x, std::int32_t y, std::uint32_t width, std::uint32_t height) {
        ASSERT_TRUE(Tavra_SetPreviewDestSize(handle, static_cast<std::uint32_t>(x),
                                             static_cast<std::uint32_t>(y), width, height));
        ReceivedMessage got;  // of the call, and of the resize that it posts
        for (int messages = 0; messages < 3; ++messages) ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    }
    std::uint32_t expectAny() {
        ReceivedMessage got{45067, 0, 0};
        EXPECT_TRUE(receiver.wait(got, kPatienceMs));
        return got.message;
    }
    // Waits until each pixel is within one step of grey of the expected value.
    bool looksNearly(Size size, const std::function<double(int x, int y)>& expected) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatienceMs);
        for (;;) {
            const Picture seen = server.pixels(window, size.width, size.height);
            bool good = seen.size() == std::size_t{size.width} * size.height;
            for (std::size_t i = 0; good && i < seen.size(); ++i) {
                const auto value = static_cast<int>(seen[i] & 0xFF);
                const double wanted =
                    expected(static_cast<int>(i % size.width), static_cast<int>(i / size.width));
                good = seen[i] == static_cast<std::uint32_t>(value) * 0x010101u &&
                       std::abs(value - wanted) <= 1.0;
            }
            if (good) return true;
            if (std::chrono::steady_clock::now() > deadline) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));  // between two looks
        }
    }
};

TEST_F(Composition, ColoursAreThoseOfTheImage) {
    openCamera(1024, 2, 6, 4);  // blue, green, red of each pixel
    for (const std::uint32_t format : {TAVRA_PIXEL_BGR_24, TAVRA_PIXEL_BGR_32}) {
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, format));
        createWindow({8, 6});
        start();
        show(5);
        const Image image = [](std::uint32_t x, std::uint32_t y) {
            const std::uint32_t first = 3 * (y * 6 + x);
            const auto byte = [&](std::uint32_t i) {
                return std::uint32_t{static_cast<std::uint8_t>(5 + 3 * (first + i))};
            };
            return byte(2) << 16 | byte(1) << 8 | byte(0);
        };
        EXPECT_TRUE(server.looksLike(window, {8, 6}, composed({8, 6}, 1, 1, {6, 4}, 1, image))) << format;
        stopAndExpectCode(0);
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        expectMessage(45060);
    }
}

TEST_F(Composition, DestinationOfTheApplicationHasStripsAround) {
    openMono(6, 4);
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
    createWindow({20, 15});
    start();
    show(1);
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_FREE));
    expectMessage(45061);
    expectMessage(45063);
    // Somewhere in it, over each edge, and beside it.
    const std::int32_t places[][2] = {{3, 2}, {-4, -2}, {14, 11}, {-12, 3}, {20, 0}, {4, -8}, {-100, -100}};
    for (const auto& place : places) {
        setDestination(place[0], place[1], 12, 8);
        EXPECT_TRUE(
            server.looksLike(window, {20, 15}, composed({20, 15}, place[0], place[1], {6, 4}, 2, frame(1))))
            << place[0] << ' ' << place[1];
    }
    setDestination(3, 2, 0, 8);
    EXPECT_TRUE(server.looksLike(window, {20, 15}, Picture(300, 0)));
    stopAndExpectCode(0);
}

TEST_F(Composition, SmoothEnlargementMixesNeighbours) {
    openMono(6, 4);
    ASSERT_TRUE(Tavra_SetDisplayMode(handle, 8));
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
    createWindow({30, 20});
    start();
    show(1);
    const auto value = [this](int x, int y) {
        return double(grey(1, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)) & 0xFF);
    };
    EXPECT_TRUE(looksNearly({30, 20}, [&](int x, int y) {
        const double atX = std::clamp((x + 0.5) / 5 - 0.5, 0.0, 5.0);
        const double atY = std::clamp((y + 0.5) / 5 - 0.5, 0.0, 3.0);
        const int x0 = int(atX), y0 = int(atY), x1 = std::min(x0 + 1, 5), y1 = std::min(y0 + 1, 3);
        const double fx = atX - x0, fy = atY - y0;
        return (value(x0, y0) * (1 - fx) + value(x1, y0) * fx) * (1 - fy) +
               (value(x0, y1) * (1 - fx) + value(x1, y1) * fx) * fy;
    }));
    stopAndExpectCode(0);
}

TEST_F(Composition, SmoothReductionIsTheMean) {
    openMono(24, 12);
    ASSERT_TRUE(Tavra_SetDisplayMode(handle, 8));
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
    createWindow({6, 4});
    start();
    show(2);
    EXPECT_TRUE(looksNearly({6, 4}, [this](int x, int y) {
        double sum = 0;
        for (int i = 0; i < 12; ++i) {
            sum += grey(2, static_cast<std::uint32_t>(4 * x + i % 4),
                        static_cast<std::uint32_t>(3 * y + i / 4)) &
                   0xFF;
        }
        return sum / 12;
    }));
    stopAndExpectCode(0);
}

TEST_F(Composition, RotationTurnsImageAndWindowWhileTheStreamRuns) {
    openMono(6, 4);
    createWindow({6, 4});
    start();
    show(1);
    EXPECT_TRUE(server.looksLike(window, {6, 4}, composed({6, 4}, 0, 0, {6, 4}, 1, frame(1))));
    for (std::uint32_t number = 2; number < 6; ++number) {
        const bool clockwise = number % 2 == 0;
        ASSERT_TRUE(Tavra_SetRotationMode(
            handle, clockwise ? TAVRA_ROTATION_CLOCKWISE : TAVRA_ROTATION_ANTICLOCKWISE));
        sendFrame(number, pattern(static_cast<std::uint8_t>(number)));
        while (expectAny() != 45067) {
        }
        ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_IMAGE));  // for the sides that are shown now
        const Picture expected = composed({4, 6}, 0, 0, {4, 6}, 1, [&](std::uint32_t x, std::uint32_t y) {
            return clockwise ? grey(number, y, 3 - x) : grey(number, 5 - y, x);
        });
        EXPECT_TRUE(server.looksLike(window, {4, 6}, expected)) << number;
    }
    ASSERT_TRUE(Tavra_SetRotationMode(handle, TAVRA_ROTATION_NONE));
    sendFrame(7, pattern(7));
    while (expectAny() != 45067) {
    }
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_IMAGE));
    EXPECT_TRUE(server.looksLike(window, {6, 4}, composed({6, 4}, 0, 0, {6, 4}, 1, frame(7))));
    EXPECT_TRUE(Tavra_StopTransfer(handle));
}

// Another size with each request, faster than they can be drawn.
TEST_F(Composition, IsRightAfterAStormOfSizes) {
    openMono(6, 4);
    createWindow({6, 4});
    start();
    show(1);
    std::uint32_t random = 12345;
    for (int i = 0; i < 300; ++i) {
        random = random * 1664525 + 1013904223;
        server.resize(window, 1 + (random >> 8) % 300, 1 + (random >> 20) % 200);
    }
    server.resize(window, 16, 12);
    EXPECT_TRUE(server.looksLike(window, {16, 12}, composed({16, 12}, 5, 4, {6, 4}, 1, frame(1))));
    ASSERT_TRUE(Tavra_StopTransfer(handle));
    // All that was told: sizes and destinations in pairs, and the end.
    ReceivedMessage got;
    std::uint32_t sizes = 0, destinations = 0;
    for (;;) {
        ASSERT_TRUE(receiver.wait(got, kPatienceMs));
        if (got.message == 45058) break;
        EXPECT_EQ(got.message, sizes == destinations ? 45061u : 45063u);
        ++(sizes == destinations ? sizes : destinations);
    }
    EXPECT_EQ(sizes, destinations);
    EXPECT_GE(sizes, 1u);
}

class WithoutSharedMemory : public Composition {
  protected:
    // Requests of one megabyte at most: a large picture goes in several.
    WithoutSharedMemory() : Composition({"-extension", "MIT-SHM", "-maxbigreqsize", "1"}) {}
};

TEST_F(WithoutSharedMemory, PicturesAreSentInParts) {
    openMono(175, 125);
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
    createWindow({700, 500});
    start();
    show(1);
    EXPECT_TRUE(server.looksLike(window, {700, 500}, composed({700, 500}, 0, 0, {175, 125}, 4, frame(1))));
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
