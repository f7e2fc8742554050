// Drawing that fails, in the window, in the stream and on the application's drawing surface, and who is told.
#include <algorithm>

#include "display_seams/window_fixture.h"

namespace tavra::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::StartsWith;

class FailedDrawing : public PreviewOnSeams {
  protected:
    // What the end of the window tells.
    std::uint64_t toldAtTheEnd() {
        EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
        return expectMessage(TAVRA_MESSAGE_WINDOW_CLOSED);
    }
    void paintOn(RecordingPaint& paint) { window().events().onPaint(paint, {6, 4}); }
};

TEST_F(FailedDrawing, OfTheImageIsToldInPlainModes) {
    openMono();
    for (const std::uint8_t mode : {0, 8}) {
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, mode));
        createWindow();
        record().preview.displayError = 0;
        record().lastError = 0;
        RecordingPaint paint;
        paint.failures = {{"copy", 1400u + mode}};
        paintOn(paint);
        EXPECT_THAT(paint.log, Contains("copy 0,0,6,4 from 0,0"));
        EXPECT_EQ(lastError(), 0u) << "of a drawing only the end of the window tells";
        EXPECT_EQ(toldAtTheEnd(), 1400u + mode);
    }
}

TEST_F(FailedDrawing, OfAStripIsTold) {
    openMono();
    createWindow();
    ASSERT_TRUE(Tavra_SetPreviewDestSize(handle, 2, 0, 6, 4));
    expectMessage(TAVRA_MESSAGE_DESTINATION_CHANGED);
    RecordingPaint paint;
    paint.failures = {{"black", 6}};
    paintOn(paint);
    EXPECT_THAT(paint.log, Contains("black 0,0,2,4"));
    EXPECT_EQ(toldAtTheEnd(), 6u);
}

// The other lines are drawn all the same, and so are the frames.
TEST_F(FailedDrawing, OfALineOfTheGridIsTold) {
    openMono();
    createWindow();
    ASSERT_TRUE(Tavra_SetDisplayInfoMode(handle, TAVRA_DISPLAY_INFO_GRID));
    seams().lineResult = Status(87);
    start();
    show(1);
    show(2);
    EXPECT_EQ(toldAtTheEnd(), 87u);
    stopAndExpectCode(0);
    const auto isLine = [](const std::string& entry) { return entry.starts_with("line "); };
    EXPECT_EQ(std::count_if(seams().drawing.begin(), seams().drawing.end(), isLine), 2 * 6);
}

// The colour key of the textured modes: there is no drawing then, and nobody has to wait for anything.
TEST_F(FailedDrawing, OfTheKeyColourGivesNoContext) {
    openMono();
    ASSERT_TRUE(Tavra_SetDisplayMode(handle, 5));
    createWindow();
    window().locked([](WindowDouble& double_) { double_.setClient(20, 30, 6, 4); });
    window().events().onSize(0, 6, 4);
    seams().sprites.takeLog();
    seams().fillResult = Status(14);
    record().lastError = 0;
    TavraDC dc = &dc;
    EXPECT_TRUE(Tavra_GetDC(handle, &dc));
    EXPECT_EQ(dc, nullptr);
    EXPECT_EQ(lastError(), 14u);
    EXPECT_THAT(seams().sprites.takeLog(),
                ElementsAre("surface 6x4 xrgb", "texture 8x4 argb", "getDC", "releaseDC",
                            StartsWith("release texture "), "release surface"));
    seams().fillResult = Status();
    EXPECT_TRUE(Tavra_GetDC(handle, &dc)) << "is free, and made anew";
    ASSERT_NE(dc, nullptr);
    EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
}

// The context is there, with what was drawn before.
TEST_F(FailedDrawing, OfAResetIsTheLastError) {
    openMono();
    ASSERT_TRUE(Tavra_SetDisplayMode(handle, 1));
    createWindow();
    seams().fillResult = Status(8);
    record().lastError = 0;
    TavraDC dc = nullptr;
    EXPECT_TRUE(Tavra_GetDCWithReset(handle, &dc));
    ASSERT_NE(dc, nullptr);
    EXPECT_EQ(lastError(), 8u);
    EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
}

}  // namespace
}  // namespace tavra::test
