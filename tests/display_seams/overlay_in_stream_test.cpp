// When the stream draws into its images, on what, and what becomes of a failure.
#include "display_seams/window_fixture.h"

namespace tavra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class OverlayInStream : public PreviewOnSeams {
  protected:
    void setMode(std::uint32_t mode) { ASSERT_TRUE(Tavra_SetDisplayInfoMode(handle, mode)); }
    void addCallback() {
        const TavraPreviewGDICallback note = [](TavraDC dc, std::uint32_t, std::uint32_t,
                                                std::uint32_t number, void*, std::uint32_t) {
            EXPECT_NE(dc, nullptr);
            seams().drawing.push_back("callback " + std::to_string(number));
        };
        std::uint32_t identifier = 0;
        ASSERT_TRUE(Tavra_AddPreviewGDICallback(handle, note, nullptr, &identifier));
    }
};

TEST_F(OverlayInStream, ModeWithNothingToDrawMakesAContextForEachFrame) {
    openMono();
    createWindow();
    setMode(4);
    start();
    for (std::uint32_t frame = 1; frame <= 3; ++frame) show(frame);
    stopAndExpectCode(0);
    EXPECT_THAT(seams().drawing,
                ElementsAre("context", "paint", "end", "context", "paint", "end", "context", "paint", "end"));
}

TEST_F(OverlayInStream, WithoutModeAndCallbackNoContextIsMade) {
    openMono();
    createWindow();
    start();
    show(1);
    setMode(4);
    show(2);
    setMode(0);
    show(3);
    stopAndExpectCode(0);
    EXPECT_THAT(seams().drawing, ElementsAre("context", "paint", "end")) << "of the second frame";
}

TEST_F(OverlayInStream, IsDrawnBehindTheCallbackOnTheSameContext) {
    openMono();
    createWindow();
    addCallback();
    setMode(TAVRA_DISPLAY_INFO_STATISTICS);
    start();
    show(7);
    setMode(0);
    show(8);
    stopAndExpectCode(0);
    EXPECT_THAT(seams().drawing,
                ElementsAre("context", "dc", "callback 7", "paint", StartsWith("text 0,0 Average"),
                            StartsWith("text 0,13 WB Gain"), StartsWith("text 0,26 Shutter"),
                            StartsWith("text 0,39 CDSGain"), "end", "context", "dc", "callback 8", "end"));
}

// The images are made all the same, for a consumer that is not shown anything.
TEST_F(OverlayInStream, IsAbsentWithoutWindowAndCallback) {
    openMono();
    collectImages();
    setMode(3);
    start();
    sendFrame(1, framePattern(1));
    ASSERT_EQ(images.waitFor(1).size(), 1u);
    createWindow();
    window().close();
    expectMessage(TAVRA_MESSAGE_WINDOW_CLOSED);
    sendFrame(2, framePattern(2));
    ASSERT_EQ(images.waitFor(2).size(), 2u);
    stopAndExpectCode(0);  // and no message of a frame
    EXPECT_THAT(seams().drawing, IsEmpty());
}

// The mode counts as it is when the callbacks have returned.
TEST_F(OverlayInStream, CallbackMaySetTheModeForItsFrame) {
    openMono();
    createWindow();
    const TavraPreviewGDICallback askForStatistics = [](TavraDC, std::uint32_t, std::uint32_t, std::uint32_t,
                                                        void* camera, std::uint32_t) {
        ASSERT_TRUE(
            Tavra_SetDisplayInfoMode(static_cast<TavraHandle>(camera), TAVRA_DISPLAY_INFO_STATISTICS));
    };
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddPreviewGDICallback(handle, askForStatistics, handle, &identifier));
    start();
    show(1);
    stopAndExpectCode(0);
    EXPECT_THAT(seams().drawing, ElementsAre("context", "dc", "paint", StartsWith("text 0,0 Average"),
                                             StartsWith("text 0,13 WB Gain"), StartsWith("text 0,26 Shutter"),
                                             StartsWith("text 0,39 CDSGain"), "end"));
}

// With the window gone a callback is enough.
TEST_F(OverlayInStream, StaysForACallbackWhenTheWindowIsGone) {
    openMono();
    createWindow();
    addCallback();
    window().close();
    expectMessage(TAVRA_MESSAGE_WINDOW_CLOSED);
    setMode(4);
    start();
    show(1);
    stopAndExpectCode(0);
    EXPECT_THAT(seams().drawing, ElementsAre("context", "dc", "callback 1", "paint", "end"));
}

// Text and grid of the first frame fail, the stream goes on, and the end of the window tells the code.
TEST_F(OverlayInStream, FailedPrintIsToldWhenTheWindowEnds) {
    for (const std::uint32_t mode : {TAVRA_DISPLAY_INFO_STATISTICS, TAVRA_DISPLAY_INFO_GRID}) {
        openMono();
        createWindow();
        setMode(mode);
        record().lastError = 0;
        seams().textResult = Status(5 + mode);
        start();
        show(1);
        show(2);
        EXPECT_EQ(lastError(), 0u) << "of a drawing only the end of the window tells";
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        EXPECT_EQ(expectMessage(TAVRA_MESSAGE_WINDOW_CLOSED), 5 + mode);
        stopAndExpectCode(0);
        Tavra_Close(handle);
        handle = nullptr;
        usb.reset();
        seams().reset();
    }
}

}  // namespace
}  // namespace tavra::test
