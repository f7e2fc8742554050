// What the exports of preview window and drawing keep and answer where there is no window.
#include "camera_api/camera_fixture.h"
#include "support/message_receiver.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kNoWindow = TAVRA_ERROR_NO_WINDOW;

class PreviewState : public CameraTest {
  protected:
    PreviewState() { open(); }
};

TEST_F(PreviewState, MaskAndDestinationAreTheImageAtFirst) {
    std::uint32_t width = 0, height = 0, total = 0, line = 0;
    ASSERT_TRUE(Tavra_GetPreviewDataSize(handle, &total, &width, &height, &line));
    std::uint32_t place[4] = {9, 9, 9, 9};
    expectSuccess(Tavra_GetPreviewMaskSize(handle, &place[0], &place[1], &place[2], &place[3]));
    EXPECT_THAT(place, ElementsAre(0u, 0u, width, height));
    expectSuccess(Tavra_GetPreviewDestSize(handle, &place[0], &place[1], &place[2], &place[3]));
    EXPECT_THAT(place, ElementsAre(0u, 0u, width, height));
}

TEST_F(PreviewState, PlacesAreKeptAndTold) {
    MessageReceiver receiver;
    ASSERT_TRUE(Tavra_SetReceiveMsgWindow(handle, receiver.window()));
    expectSuccess(Tavra_SetPreviewMaskSize(handle, 1, 2, 3, 4));
    expectSuccess(Tavra_SetPreviewDestSize(handle, 5, 6, 7, 0xFFFFFFFF));
    std::uint32_t place[4] = {};
    expectSuccess(Tavra_GetPreviewMaskSize(handle, &place[0], &place[1], &place[2], &place[3]));
    EXPECT_THAT(place, ElementsAre(1u, 2u, 3u, 4u));
    expectSuccess(Tavra_GetPreviewDestSize(handle, &place[0], &place[1], &place[2], &place[3]));
    EXPECT_THAT(place, ElementsAre(5u, 6u, 7u, 0xFFFFFFFFu));
    for (const std::uint32_t code : {45062u, 45063u}) {
        ReceivedMessage got;
        ASSERT_TRUE(receiver.wait(got, 0));
        EXPECT_EQ(got.message, code);
        EXPECT_EQ(got.parameter1, reinterpret_cast<std::uintptr_t>(handle));
        EXPECT_EQ(got.parameter2, 0u);
    }
}

TEST_F(PreviewState, ModesAreKeptUnchecked) {
    std::uint8_t mode = 9;
    expectSuccess(Tavra_GetAspectMode(handle, &mode));
    EXPECT_EQ(mode, 0);
    expectSuccess(Tavra_SetAspectMode(handle, 77));
    expectSuccess(Tavra_GetAspectMode(handle, &mode));
    EXPECT_EQ(mode, 77);
    expectSuccess(Tavra_GetMagnificationMode(handle, &mode));
    EXPECT_EQ(mode, 0);
    expectSuccess(Tavra_SetMagnificationMode(handle, 255));
    expectSuccess(Tavra_GetMagnificationMode(handle, &mode));
    EXPECT_EQ(mode, 255);
    expectSuccess(Tavra_GetDisplayMode(handle, &mode));
    EXPECT_EQ(mode, 0);
    expectSuccess(Tavra_SetDisplayMode(handle, 8));
    expectSuccess(Tavra_GetDisplayMode(handle, &mode));
    EXPECT_EQ(mode, 8);
}

TEST_F(PreviewState, DrawingSettingsAreKept) {
    std::uint32_t word = 0;
    expectSuccess(Tavra_GetColorKey(handle, &word));
    EXPECT_EQ(word, 0xFF00FFu);
    expectSuccess(Tavra_SetColorKey(handle, 0x00123456));
    expectSuccess(Tavra_GetColorKey(handle, &word));
    EXPECT_EQ(word, 0x00123456u);
    std::uint8_t alpha = 0;
    expectSuccess(Tavra_GetAlphaChannel(handle, &alpha));
    EXPECT_EQ(alpha, 255);
    expectSuccess(Tavra_SetAlphaChannel(handle, 3));
    expectSuccess(Tavra_GetAlphaChannel(handle, &alpha));
    EXPECT_EQ(alpha, 3);
    expectSuccess(Tavra_GetDisplayInfoMode(handle, &word));
    EXPECT_EQ(word, 0u);
    expectSuccess(Tavra_SetDisplayInfoMode(handle, 0xFFFFFFFF));
    expectSuccess(Tavra_GetDisplayInfoMode(handle, &word));
    EXPECT_EQ(word, 0xFFFFFFFFu);
}

TEST_F(PreviewState, OperationsOfAWindowNeedOne) {
    TavraWindow window = handle;
    expectFailure(Tavra_GetPreviewWnd(handle, &window), kNoWindow);
    EXPECT_EQ(window, nullptr);
    char narrow[4] = "abc";
    TavraWChar wide[4] = u"abc";
    std::uint32_t word = 0;
    TavraDC dc = nullptr;
    expectFailure(Tavra_SetPreviewWindowNameA(handle, "x"), kNoWindow);
    expectFailure(Tavra_SetPreviewWindowNameW(handle, u"x"), kNoWindow);
    expectFailure(Tavra_GetPreviewWindowNameA(handle, narrow, 4), kNoWindow);
    expectFailure(Tavra_GetPreviewWindowNameW(handle, wide, 4), kNoWindow);
    expectFailure(Tavra_SetPreviewWindowStyle(handle, 0), kNoWindow);
    expectFailure(Tavra_SetPreviewWindowSize(handle, 1, 2, 3, 4), kNoWindow);
    expectFailure(Tavra_GetPreviewWindowSize(handle, &word, &word, &word, &word), kNoWindow);
    expectFailure(Tavra_GetDC(handle, &dc), kNoWindow);
    expectFailure(Tavra_GetDCWithReset(handle, &dc), kNoWindow);
    expectFailure(Tavra_ReleaseDC(handle, dc), kNoWindow);
    expectFailure(Tavra_ResetOverlay(handle), kNoWindow);
    expectSuccess(Tavra_GetPreviewWindowStyle(handle, &word));
    expectSuccess(Tavra_DestroyPreviewWindow(handle));
}

TEST_F(PreviewState, NullOutputsAreBadArguments) {
    std::uint32_t word = 0;
    expectFailure(Tavra_GetPreviewMaskSize(handle, &word, nullptr, &word, &word), 87);
    expectFailure(Tavra_GetPreviewDestSize(handle, nullptr, &word, &word, &word), 87);
    expectFailure(Tavra_GetPreviewWindowSize(handle, &word, &word, nullptr, &word), 87);
    expectFailure(Tavra_GetPreviewWnd(handle, nullptr), 87);
    expectFailure(Tavra_GetPreviewWindowNameA(handle, nullptr, 4), 87);
    expectFailure(Tavra_GetPreviewWindowNameW(handle, nullptr, 4), 87);
    expectFailure(Tavra_GetAspectMode(handle, nullptr), 87);
    expectFailure(Tavra_GetMagnificationMode(handle, nullptr), 87);
    expectFailure(Tavra_GetDisplayMode(handle, nullptr), 87);
    expectFailure(Tavra_GetColorKey(handle, nullptr), 87);
    expectFailure(Tavra_GetAlphaChannel(handle, nullptr), 87);
    expectFailure(Tavra_GetDC(handle, nullptr), 87);
    expectFailure(Tavra_GetDCWithReset(handle, nullptr), 87);
    expectFailure(Tavra_GetDisplayInfoMode(handle, nullptr), 87);
    expectFailure(Tavra_GetPreviewWindowStyle(handle, nullptr), 87);
}

}  // namespace
}  // namespace tavra::test
