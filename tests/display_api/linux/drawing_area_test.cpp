// What a context that begins clear leaves of an earlier drawing, pixel by pixel on an X server.
#include "capture_api/stream_fixture.h"
#include "platform/window.h"
#include "support/drawing.h"
#include "support/x_server.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kRed = 0xFF0000;
constexpr std::uint8_t kSurfacesOf32Bits = 3;  // display mode

class DrawingArea : public StreamTest {
  protected:
    DrawingArea() {
        if (!server.started()) ADD_FAILURE() << "Xvfb does not start: scripts/install-deps test";
    }
    ~DrawingArea() override {
        if (handle != nullptr) Tavra_Close(handle);
        handle = nullptr;
    }
    // Regions of 4 x 2 at (0, 0) and of 2 x 1 at (3, 7), which make an image of 5 x 3.
    void openRegions() {
        DoubleCamera& camera = describe(1, 1, 4, 2);
        camera.offerRegions(2);
        camera.setScan32(60, 3);
        const std::uint32_t second[] = {2, 1, 3, 7};
        for (std::size_t i = 0; i < 4; ++i) camera.setScan32(64 + 4 * i, second[i]);
        camera.addRegisterPages();
        camera.registers[{17, 8}] = 10;  // bytes of a frame
        open();
        ASSERT_EQ(rawSize, 10u);
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, TAVRA_PIXEL_MONO_8));
        forgetPlaces();
    }
    // 12 x 9 pixels, which the image fills.
    void createWindow() {
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, kSurfacesOf32Bits));
        ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
        ASSERT_TRUE(Tavra_CreatePreviewWindowW(handle, u"Preview", platform::kStyleVisible, 40, 30, 12, 9,
                                               nullptr, nullptr, 1))
            << lastError();
        expectMessage(TAVRA_MESSAGE_WINDOW_SIZED);
        expectMessage(TAVRA_MESSAGE_DESTINATION_CHANGED);
        window = static_cast<xcb_window_t>(expectMessage(TAVRA_MESSAGE_WINDOW_CREATED));
    }

    XServer server;
    xcb_window_t window = 0;
};

TEST_F(DrawingArea, ResetClearsTheComposedImagesSizeAndLeavesTheRest) {
    openRegions();
    createWindow();
    start();
    sendFrame(1, {10, 20, 30, 40, 50, 60, 70, 80, 90, 100});
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_FRAME_FINISHED), 1u);
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    ASSERT_TRUE(fillRectangle(dc, {0, 0, 12, 9}, {255, 0, 0}));
    ASSERT_TRUE(Tavra_ReleaseDC(handle, dc));
    std::vector<std::uint32_t> expected(12 * 9, kRed);
    EXPECT_TRUE(server.looksLike(window, {12, 9}, expected));

    ASSERT_TRUE(Tavra_GetDCWithReset(handle, &dc));
    ASSERT_NE(dc, nullptr);
    ASSERT_TRUE(Tavra_ReleaseDC(handle, dc));
    constexpr std::uint32_t kImage[3][5] = {{10, 20, 30, 40, 0}, {50, 60, 70, 80, 0}, {0, 0, 0, 90, 100}};
    for (std::size_t y = 0; y < 3; ++y) {
        // The middle of pixel x lies at (x + 0.5) * 5 / 12 of the image.
        for (std::size_t x = 0; x < 5; ++x) {
            expected[y * 12 + x] = kImage[(2 * y + 1) * 3 / 18][(2 * x + 1) * 5 / 24] * 0x010101;
        }
    }
    EXPECT_TRUE(server.looksLike(window, {12, 9}, expected));
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
