// What a preview window shows, and where.
#include "display/preview_fixture.h"

namespace tavra::test {
namespace {

using platform::Axis;
using platform::ScrollBar;
using platform::ScrollCode;

TEST_F(Preview, DestinationAndMaskAreStoredAndTold) {
    window.setDestination({1, 2, 3, 4});
    window.setMask({5, 6, 7, 8});
    EXPECT_EQ(window.destination.load(), (PreviewPlace{1, 2, 3, 4}));
    EXPECT_EQ(window.mask.load(), (PreviewPlace{5, 6, 7, 8}));
    EXPECT_THAT(camera.takePosts(), ElementsAre(message(45063), message(45062)));
    EXPECT_THAT(system.log, IsEmpty());
    open();
    window.setDestination({1, 2, 3, 4});
    EXPECT_THAT(system.takeLog(), ElementsAre("post resize"));
    system.postResult = Status(1816);
    window.setMask({});
    EXPECT_EQ(camera.lastError, 1816u);
    EXPECT_THAT(camera.takePosts(), ElementsAre(message(45063), message(45062)));
}

TEST_F(Preview, AspectModeTakesEffectAtOnce) {
    EXPECT_TRUE(window.setAspectMode(2).ok());
    EXPECT_THAT(system.log, IsEmpty());
    open();
    EXPECT_TRUE(window.setAspectMode(3).ok());
    EXPECT_THAT(system.log, ElementsAre("post resize", "invalidate erase"));
    system.invalidateResult = Status(6);
    EXPECT_EQ(window.setAspectMode(4), Status(6));
    system.postResult = Status(7);
    EXPECT_EQ(window.setAspectMode(5), Status(7));
    EXPECT_EQ(window.aspectMode, 5);
}

TEST_F(Preview, ResizeRecomputesTheDestinationAndTells) {
    open();
    system.setClient(20, 30, 164, 148);
    system.events->onSize(0, 164, 148);
    EXPECT_EQ(window.destination.load(), (PreviewPlace{50, 50, 64, 48}));
    EXPECT_THAT(camera.posts, ElementsAre(message(45061), message(45063)));
    EXPECT_THAT(system.log, ElementsAre("bar h", "bar v", "invalidate", "bar h", "bar v", "invalidate",
                                        "bar h", "bar v", "invalidate", "invalidate erase"));
}

TEST_F(Preview, MinimisingLeavesTheDestination) {
    open();
    system.setClient(20, 30, 0, 0);
    system.events->onSize(1, 0, 0);
    EXPECT_EQ(window.destination.load(), (PreviewPlace{0, 0, 64, 48}));
    EXPECT_THAT(camera.posts, IsEmpty());
    EXPECT_THAT(system.log, ElementsAre("bar h", "bar v", "invalidate", "bar h", "bar v", "invalidate",
                                        "invalidate erase"));
}

TEST_F(Preview, RotatedImageExchangesItsSides) {
    open();
    camera.rotated = true;
    system.events->onSize(2, 100, 80);
    EXPECT_EQ(window.destination.load(), (PreviewPlace{26, 8, 48, 64}));
}

TEST_F(Preview, SetDestinationLastsOnlyWhereTheModeLetsIt) {
    open();
    const PreviewPlace set{1, 2, 30, 40};
    const auto after = [&](std::uint8_t mode) {
        window.aspectMode = mode;
        window.setDestination(set);
        system.events->onSize(0, 0, 0);  // what the post leads to
        return window.destination.load();
    };
    EXPECT_EQ(after(TAVRA_ASPECT_FREE), set);
    EXPECT_EQ(after(TAVRA_ASPECT_SIZE), (PreviewPlace{35, 20, 30, 40}));
    EXPECT_EQ(after(TAVRA_ASPECT_STRETCH), (PreviewPlace{0, 0, 100, 80}));
}

TEST_F(Preview, LargeImageIsScrolled) {
    open(kScrolls);
    camera.size = {300, 200};
    system.events->onSize(0, 0, 0);
    EXPECT_EQ(system.horizontal, (ScrollBar{299, 100, 0}));
    EXPECT_EQ(system.vertical, (ScrollBar{199, 80, 0}));
    system.takeLog();
    system.events->onScroll(Axis::Horizontal, ScrollCode::PageOn, 0);
    EXPECT_EQ(system.horizontal, (ScrollBar{299, 100, 100}));
    EXPECT_THAT(system.takeLog(), ElementsAre("bar h", "invalidate"));
    system.events->onScroll(Axis::Vertical, ScrollCode::ThumbMoves, 25);
    EXPECT_THAT(paint(), ElementsAre("stretch 0,0,100,80 from 21,6,43,25 nearest"));
    system.setClient(20, 30, 400, 300);  // all in sight: back at 0
    system.events->onSize(0, 400, 300);
    EXPECT_EQ(system.horizontal, ScrollBar());
    EXPECT_THAT(paint(), ElementsAre("stretch 50,50,350,250 from 0,0,64,48 nearest", "black 0,0,50,300",
                                     "black 50,0,400,50", "black 350,50,400,300", "black 50,250,350,300"));
}

TEST_F(Preview, PaintShowsTheMaskInTheDestination) {
    open();
    window.destination.store({18, 16, 64, 48});
    EXPECT_THAT(paint(), ElementsAre("copy 18,16,82,64 from 0,0", "black 0,0,18,80", "black 18,0,100,16",
                                     "black 82,16,100,80", "black 18,64,82,80"));
    window.mask.store({8, 4, 32, 24});
    EXPECT_EQ(paint().front(), "stretch 18,16,82,64 from 8,4,40,28 nearest");
}

TEST_F(Preview, PaintTakesTheReadyImageOfTheShownSet) {
    open();
    const std::uint32_t chosen = camera.imagesB.chooseFree(7);
    camera.imagesB.publish(chosen);
    camera.rotated = true;
    EXPECT_EQ(paint().front(), "copy 0,0,64,48 from 0,0");
    EXPECT_EQ(camera.imagesB.takeReady(), chosen);
    EXPECT_NE(camera.imagesB.chooseFree(8), chosen);
}

TEST_F(Preview, WithoutImageOrDrawObjectAllIsBlack) {
    open();
    camera.imagesA.destroy();
    EXPECT_THAT(paint(), ElementsAre("black 0,0,100,80"));
    platform::IWindowEvents& events = *system.events;
    system.close();
    RecordingPaint recorder;
    events.onPaint(recorder, {100, 80});
    EXPECT_THAT(recorder.log, ElementsAre("black 0,0,100,80"));
}

TEST_F(Preview, MoveErasesAndCommandIsTold) {
    open();
    system.events->onMove();
    EXPECT_THAT(system.log, ElementsAre("invalidate erase"));
    system.events->onCommand(0x12345678);
    EXPECT_THAT(camera.posts, ElementsAre(message(45066, 0x12345678)));
}

}  // namespace
}  // namespace tavra::test
