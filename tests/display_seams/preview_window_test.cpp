// The preview window of an open camera, where image, window and exports meet.
#include "display_seams/window_fixture.h"
#include "platform/text.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kScrolls = platform::kStyleHorizontalScroll | platform::kStyleVerticalScroll;

class PreviewOfACamera : public PreviewOnSeams {
  protected:
    TavraWindow parent() {
        return window().locked([](WindowDouble& double_) { return double_.parentHandle(); });
    }
    // What the two bars are after a resize of the window, whose client area is all of it.
    std::pair<platform::ScrollBar, platform::ScrollBar> barsIn(int width, int height) {
        window().locked([&](WindowDouble& double_) { double_.setClient(20, 30, width, height); });
        window().events().onSize(0, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
        return window().locked(
            [](WindowDouble& double_) { return std::pair(double_.horizontal, double_.vertical); });
    }
    void click(int x, int y, bool alt = false) {
        window().locked([&](WindowDouble& double_) { double_.alt = alt; });
        window().events().onMouse({platform::kLeftButtonUp, 0, x, y});
    }
    void setMask(const PreviewPlace& mask) {
        ASSERT_TRUE(Tavra_SetPreviewMaskSize(handle, mask.x, mask.y, mask.width, mask.height));
    }
    PreviewPlace mask() { return record().preview.mask.load(); }
};

// The frame of the double's windows is 10 pixels wide and high: an image as large as the window needs bars
// where the frame counts.
TEST_F(PreviewOfACamera, FrameCountsForTheBarsUnlessAParentHasTheWindow) {
    struct Row {
        std::uint32_t style;
        TavraWindow parent;
        bool bars;
    };
    openMono(64, 48);
    for (const Row& row :
         {Row{0, nullptr, true}, Row{0, parent(), true}, Row{platform::kStyleChild, nullptr, true},
          Row{platform::kStyleChild, parent(), false}}) {
        createWindow(row.style | kScrolls, row.parent);
        const auto bars = barsIn(64, 48);
        const platform::ScrollBar none;
        EXPECT_EQ(bars.first, row.bars ? (platform::ScrollBar{63, 64, 0}) : none) << row.style;
        EXPECT_EQ(bars.second, row.bars ? (platform::ScrollBar{47, 48, 0}) : none) << row.style;
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        for (ReceivedMessage got; receiver.wait(got, 0);) {
        }
    }
}

// An image of 64 x 48 is shown as 48 x 64. The smallest part of it is 3 x 4.
TEST_F(PreviewOfACamera, MagnifiesATurnedImage) {
    openMono(64, 48);
    createWindow();
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    ASSERT_TRUE(Tavra_SetRotationMode(handle, TAVRA_ROTATION_CLOCKWISE));
    start();
    show(1);
    stopAndExpectCode(0);
    ASSERT_TRUE(Tavra_SetPreviewDestSize(handle, 0, 0, 48, 64));
    setMask({0, 0, 48, 64});
    click(40, 60);  // nearer than half the new 24 x 32 to the far edges
    EXPECT_EQ(mask(), (PreviewPlace{24, 32, 24, 32}));
    setMask({4, 2, 40, 60});
    click(40, 60, true);
    EXPECT_EQ(mask(), (PreviewPlace{0, 0, 48, 64})) << "no more than all of it";
    setMask({10, 10, 3, 4});
    click(0, 0);
    EXPECT_EQ(mask(), (PreviewPlace{9, 8, 3, 4})) << "the smallest part moves";
}

TEST_F(PreviewOfACamera, NarrowNamesAreItsTitle) {
    openMono();
    ASSERT_TRUE(Tavra_CreatePreviewWindowA(handle, "Left eye", 0, 0, 0, 0, 0, nullptr, nullptr, 1));
    EXPECT_EQ(window().title(record().preview.window()), u"Left eye");
    record().lastError = 0;
    EXPECT_TRUE(Tavra_SetPreviewWindowNameA(handle, "Right eye"));
    EXPECT_EQ(lastError(), 0u);
    EXPECT_EQ(window().title(record().preview.window()), u"Right eye");
    char name[16] = {};
    EXPECT_TRUE(Tavra_GetPreviewWindowNameA(handle, name, sizeof name));
    EXPECT_STREQ(name, "Right eye");
    EXPECT_TRUE(Tavra_SetPreviewWindowNameA(handle, nullptr));
    EXPECT_EQ(window().title(record().preview.window()), u"");
}

// In the system code page, which a test cannot choose: two, three and four bytes a character.
TEST_F(PreviewOfACamera, NarrowNamesBeyondAsciiAreItsTitle) {
    const std::u16string first = u"L\u00E4ufer \u6F22\u5B57 \U0001F3A5", second = u"\u0416\u00E9";
    const std::string firstBytes = "L\xC3\xA4ufer \xE6\xBC\xA2\xE5\xAD\x97 \xF0\x9F\x8E\xA5";
    const std::string secondBytes = "\xD0\x96\xC3\xA9";
    if (platform::toNarrow(first) != firstBytes) GTEST_SKIP() << "the system code page is not UTF-8";
    openMono();
    ASSERT_TRUE(Tavra_CreatePreviewWindowA(handle, firstBytes.c_str(), 0, 0, 0, 0, 0, nullptr, nullptr, 1));
    EXPECT_EQ(window().title(record().preview.window()), first);
    char name[32] = {};
    EXPECT_TRUE(Tavra_GetPreviewWindowNameA(handle, name, sizeof name));
    EXPECT_EQ(name, firstBytes);
    EXPECT_TRUE(Tavra_SetPreviewWindowNameA(handle, secondBytes.c_str()));
    EXPECT_EQ(window().title(record().preview.window()), second);
}

TEST_F(PreviewOfACamera, NarrowNameWithoutMemoryForItsCopyMakesNoWindow) {
    openMono();
    forgetPlaces();
    record().lastError = 0;
    const std::string name(100, 'x');
    const auto create = [&] {
        return Tavra_CreatePreviewWindowA(handle, name.c_str(), 0, 0, 0, 0, 0, nullptr, nullptr, 1);
    };
    TavraBool created = 1;
    {
        const FailAllocationsFrom failing(name.size());
        created = create();
    }
    EXPECT_FALSE(created);
    EXPECT_EQ(lastError(), 8u);
    EXPECT_THAT(window().locked([](WindowDouble& double_) { return double_.log; }), IsEmpty());
    expectNoMessage();
    EXPECT_TRUE(create());
}

// Two regions, the second two columns and one row further than the first: 5 x 3 pixels in all.
TEST_F(PreviewOfACamera, ContextWithResetIsClearedAsFarAsTheComposedImage) {
    DoubleCamera& camera = describe(1, 1, 4, 2);
    camera.offerRegions(2);
    camera.setScan32(60, 3);
    const std::uint32_t second[] = {2, 1, 3, 2};  // width, height, x, y
    for (std::size_t i = 0; i < 4; ++i) camera.setScan32(64 + 4 * i, second[i]);
    camera.addRegisterPages();
    camera.registers[{17, 8}] = 10;  // bytes of a frame
    open();
    ASSERT_TRUE(Tavra_SetDisplayMode(handle, 1));
    ASSERT_TRUE(Tavra_SetColorKey(handle, 0x123456));
    createWindow();
    TavraDC dc = nullptr;
    ASSERT_TRUE(Tavra_GetDC(handle, &dc));
    ASSERT_TRUE(Tavra_ReleaseDC(handle, dc));
    EXPECT_THAT(seams().drawing, IsEmpty());
    ASSERT_TRUE(Tavra_GetDCWithReset(handle, &dc));
    ASSERT_NE(dc, nullptr);
    EXPECT_THAT(seams().drawing, ElementsAre("fill 0,0,5,3 123456"));
    ASSERT_TRUE(Tavra_ReleaseDC(handle, dc));
}

}  // namespace
}  // namespace tavra::test
