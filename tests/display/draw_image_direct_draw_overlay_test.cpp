// Drawing through an overlay, on surfaces that write down what is asked of them.
#include "display/draw_image_direct_draw_overlay.h"

#include "display/surface_fixture.h"

namespace tavra::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class OverlayDrawing : public SurfaceFixture<CDrawImageDirectDrawOverlay> {
  protected:
    using SurfaceFixture::SurfaceFixture;

    const Log kKey = {"off1 format", "off1 fill all ff00ff", "off1 read", "off1 read",
                      "primary 20,30,120,110 = off1 0,0,100,80"};
    const Log kCreation = Log{"monitor",
                              "enumerate",
                              "device default",
                              "cooperate",
                              "create primary",
                              "primary format",
                              "create off1 100x80 32:ff0000",  // the application's
                              "off1 format",
                              "off1 key ff00ff",
                              "alignment",
                              "create overlay 64x48 16:uyvy",
                              "create clipper",
                              "primary clipper"} +
                          kKey;
    const Log kChecks = {"primary lost?", "primary lost?"};
    const Log kUpload = {"overlay lock", "overlay format", "overlay unlock"};
    const Log kFormat = {"primary format"};
    const Log kDrawing = {"primary 38,46,102,94 = off1 0,0,64,48"};
    const Log kShown = {"overlay 0,0,64,48 over primary 38,46,102,94 key ff00ff",
                        "primary fill 20,30,38,110 0", "primary fill 38,30,120,46 0",
                        "primary fill 102,46,120,110 0", "primary fill 38,94,102,110 0"};
    const Log kShow = {"show 20,30,120,110"};
    const Log kFirst = kChecks + kUpload + kFormat + kDrawing + kShown + kShow;
    const Log kAgain = kChecks + kUpload + kFormat + kShown + kShow;
};

class OverlayDrawing32 : public OverlayDrawing {
  protected:
    OverlayDrawing32() : OverlayDrawing(kOrder32) {}
};

TEST_F(OverlayDrawing, CreationMakesEverythingInOrder) {
    EXPECT_EQ(create(), 0u);
    EXPECT_EQ(surfaces.log, kCreation);
}

TEST_F(OverlayDrawing32, WideFormatsComeFirstInTheOtherOrder) {
    EXPECT_EQ(create(), 0u);
    EXPECT_THAT(surfaces.log, Contains("create overlay 64x48 32:ff0000"));
}

TEST_F(OverlayDrawing, WidthIsRoundedUpForTheDeviceAndForPairs) {
    surfaces.alignment = 25;
    surfaces.refused = {{16, platform::kFourCcUyvy, 0, 0, 0}};
    ASSERT_EQ(object.Create(system.handle(), 51, 48, 8), 0u);
    EXPECT_THAT(surfaces.log, Contains("create overlay 76x48 16:uyvy"));  // 75, made even
    EXPECT_THAT(surfaces.log, Contains("create overlay 75x48 16:f800"));
}

TEST_F(OverlayDrawing, DrawingHasTheFormatOfTheScreen) {
    surfaces.screenFormat = {16, 0, 0xF800, 2016, 31};
    EXPECT_EQ(create(), 0u);
    EXPECT_THAT(surfaces.log, Contains("create off1 100x80 16:f800"));
    EXPECT_THAT(surfaces.log, Contains("off1 fill all f81f"));
}

TEST_F(OverlayDrawing, FailureOfAnyStepLeavesNothingAndIsMadeGoodByTheNextDrawing) {
    for (std::size_t step = 0; step < kCreation.size(); ++step) {
        surfaces.takeLog();
        surfaces.failAfter(step);
        const std::uint32_t result = create();
        if (kCreation[step] == "create overlay 64x48 16:uyvy") {
            EXPECT_EQ(result, 0u);  // another format does
            continue;
        }
        EXPECT_EQ(result, kFailure) << kCreation[step];
        EXPECT_EQ(surfaces.log.back(), kCreation[step]);
        EXPECT_EQ(surfaces.alive, 0) << kCreation[step];
        surfaces.takeLog();
        EXPECT_EQ(drawNext(), 0u);
        EXPECT_EQ(surfaces.takeLog(),
                  kCreation + Log{"primary lost?"} + kUpload + kFormat + kDrawing + kShown + kShow);
    }
}

TEST_F(OverlayDrawing, KeyIsPaintedWhereThePlaceIsNew) {
    createQuietly();
    EXPECT_EQ(draw(), 0u);
    EXPECT_EQ(surfaces.takeLog(), kFirst);
    EXPECT_EQ(drawNext(), 0u);
    EXPECT_EQ(surfaces.takeLog(), kAgain);
}

TEST_F(OverlayDrawing, KeyIsTheColorThatTheScreenShows) {
    surfaces.firstPixel = 0x102030;  // blue, green, red
    createQuietly();
    EXPECT_EQ(draw(), 0u);
    EXPECT_THAT(surfaces.log, Contains("overlay 0,0,64,48 over primary 38,46,102,94 key 302010"));
}

TEST_F(OverlayDrawing, FailureWhilePresentingEndsItSilently) {
    const Log present = kFormat + kDrawing + kShown;
    for (std::size_t step = 0; step < present.size(); ++step) {
        createQuietly();
        surfaces.failAfter(kChecks.size() + kUpload.size() + step);
        EXPECT_EQ(drawNext(), 0u);
        const Log done(present.begin(), present.begin() + static_cast<int>(step) + 1);
        EXPECT_EQ(surfaces.takeLog(), kChecks + kUpload + done + kShow);
    }
}

TEST_F(OverlayDrawing, OverlayIsCutAtTheEdgesOfTheDesktop) {
    system.setClient(-50, 1000, 100, 80);  // of 1280 x 1024
    createQuietly();
    destination = {0, 0, 96, 48};  // 64 pixels of the image on 96 of the screen, 24 on 48
    source = {0, 0, 64, 24};
    background = {};
    EXPECT_EQ(draw(), 0u);
    // On the screen -50 to 46 and 1000 to 1048. Left: -50 / 1.5 - 0.5 is -33.8, so 33 pixels of the image
    // go; at the bottom 24 / 2 + 0.5, so 12.
    EXPECT_EQ(surfaces.log, kChecks + kUpload + kFormat +
                                Log({"primary 0,1000,46,1024 = off1 50,0,96,24",
                                     "overlay 33,0,64,12 over primary 0,1000,46,1024 key ff00ff",
                                     "show -50,1000,50,1080"}));
}

TEST_F(OverlayDrawing, ReleasedContextComesToTheScreenWithTheNextDrawing) {
    createQuietly();
    draw();
    TavraDC dc = nullptr;
    ASSERT_EQ(object.GetDC(&dc), 0u);
    EXPECT_EQ(elsewhere([&] { return object.ReleaseDC(dc); }), 288u);
    EXPECT_EQ(object.ReleaseDC(dc), 0u);
    surfaces.takeLog();
    drawNext();
    EXPECT_EQ(surfaces.takeLog(), kFirst);
}

TEST_F(OverlayDrawing, EraseCopiesTheDrawing) {
    createQuietly();
    EXPECT_EQ(object.EraseBackground(&paint), 0u);
    EXPECT_EQ(surfaces.takeLog(),
              Log({"primary lost?", "primary 20,30,120,110 = off1 0,0,100,80", "show 20,30,120,110"}));
    draw();
    surfaces.takeLog();
    EXPECT_EQ(object.EraseBackground(&paint), 0u);  // to where the overlay is now
    EXPECT_EQ(surfaces.takeLog(),
              Log({"primary lost?", "primary 38,46,102,94 = off1 0,0,64,48", "show 20,30,120,110"}));
}

TEST_F(OverlayDrawing, EraseCopiesThePartThatIsOnTheDesktop) {
    system.setClient(-50, -20, 100, 80);
    createQuietly();
    destination = {10, 4, 74, 52};  // -40 to 24 and -16 to 32 on the screen
    background = {};
    EXPECT_EQ(draw(), 0u);
    EXPECT_THAT(surfaces.takeLog(), Contains("primary 0,0,24,32 = off1 40,16,64,48"));
    EXPECT_EQ(object.EraseBackground(&paint), 0u);  // the first after a creation is of the whole client area
    EXPECT_THAT(surfaces.takeLog(), Contains("primary -50,-20,50,60 = off1 0,0,100,80"));
    EXPECT_EQ(drawNext(), 0u);
    surfaces.takeLog();
    EXPECT_EQ(object.EraseBackground(&paint), 0u);
    EXPECT_THAT(surfaces.takeLog(), Contains("primary 0,0,24,32 = off1 40,16,64,48"));
    EXPECT_EQ(object.OnMove(0, 0), 0u);
    EXPECT_EQ(object.EraseBackground(&paint), 0u);
    EXPECT_THAT(surfaces.takeLog(), Contains("primary -50,-20,50,60 = off1 0,0,100,80"));
}

TEST_F(OverlayDrawing, EraseWaitsForNoContext) {
    createQuietly();
    TavraDC dc = nullptr;
    ASSERT_EQ(object.GetDC(&dc), 0u);
    surfaces.takeLog();
    EXPECT_EQ(elsewhere([&] { return object.EraseBackground(&paint); }), 0u);
    EXPECT_EQ(object.EraseBackground(&paint), 0u);
    EXPECT_EQ(object.ResetOverlay(), 1131u);
    EXPECT_THAT(surfaces.log, IsEmpty());
    EXPECT_EQ(object.ReleaseDC(dc), 0u);
}

// From the release to the next picture.
TEST_F(OverlayDrawing, EraseBringsNothingWhileTheOverlayIsNowhere) {
    createQuietly();
    EXPECT_EQ(object.EraseBackground(&paint), 0u);  // of a new place, which is all of the client area
    draw();
    TavraDC dc = nullptr;
    ASSERT_EQ(object.GetDC(&dc), 0u);
    ASSERT_EQ(object.ReleaseDC(dc), 0u);
    surfaces.takeLog();
    EXPECT_EQ(object.EraseBackground(&paint), 0u);
    EXPECT_EQ(surfaces.takeLog(), Log{"primary lost?"} + kShow);
    drawNext();
    surfaces.takeLog();
    EXPECT_EQ(object.EraseBackground(&paint), 0u);
    EXPECT_THAT(surfaces.log, Contains(testing::HasSubstr("= off1")));
}

TEST_F(OverlayDrawing, EraseTellsOfARebuildThatFails) {
    createQuietly();
    surfaces.lost = true;
    surfaces.failAfter(1);
    EXPECT_EQ(object.EraseBackground(&paint), kFailure);
    EXPECT_EQ(surfaces.alive, 0);
}

TEST_F(OverlayDrawing, MoveBringsTheKeyAlong) {
    createQuietly();
    draw();
    surfaces.takeLog();
    system.setClient(50, 60, 100, 80);
    EXPECT_EQ(object.CheckMove(), 0u);
    EXPECT_THAT(surfaces.takeLog(), ElementsAre("primary lost?", "monitor", "enumerate",
                                                "primary 50,60,150,140 = off1 0,0,100,80"));
    EXPECT_EQ(object.EraseBackground(&paint), 0u);
    EXPECT_THAT(surfaces.takeLog(), Contains("primary 50,60,150,140 = off1 0,0,100,80"));
    drawNext();
    EXPECT_THAT(surfaces.log, Contains("overlay 0,0,64,48 over primary 68,76,132,124 key ff00ff"));
}

TEST_F(OverlayDrawing, MoveToAnotherMonitorRebuilds) {
    createQuietly();
    surfaces.monitor = {surfaces.handleOf(2), {1280, 0, 2560, 1024}};
    system.setClient(1300, 60, 100, 80);
    EXPECT_EQ(object.CheckMove(), 0u);
    EXPECT_THAT(surfaces.log, Contains("create overlay 64x48 16:uyvy"));
    EXPECT_EQ(surfaces.log.back(), "primary 20,60,120,140 = off1 0,0,100,80");
}

TEST_F(OverlayDrawing, ResetPaintsTheKeyAnew) {
    createQuietly();
    EXPECT_EQ(object.ResetOverlay(), 0u);
    EXPECT_EQ(surfaces.takeLog(), Log{"primary lost?"} + kKey + Log{"show soon"});
    surfaces.failAfter(5);
    EXPECT_EQ(object.ResetOverlay(), kFailure);
    EXPECT_THAT(surfaces.log, Not(Contains("show soon")));
}

TEST_F(OverlayDrawing, RotationExchangesTheSidesOfTheOverlay) {
    createQuietly();
    setImage({48, 64, 24});
    info.rotated = 1;
    EXPECT_EQ(draw(), 0u);
    EXPECT_THAT(surfaces.log, Contains("create overlay 48x64 16:uyvy"));
}

TEST_F(OverlayDrawing, LossRebuildsEverything) {
    createQuietly();
    draw();
    surfaces.takeLog();
    surfaces.lost = true;
    draw();
    EXPECT_EQ(surfaces.takeLog(), Log{"primary lost?"} + kCreation + Log{"primary lost?"} + kCreation +
                                      kUpload + kFormat + kDrawing + kShown + kShow);
}

TEST_F(OverlayDrawing, WithoutSurfacesEachEntryTriesOnceMore) {
    surfaces.failAfter(0);
    EXPECT_EQ(create(), kFailure);
    surfaces.takeLog();
    EXPECT_EQ(object.ResetOverlay(), 0u);
    EXPECT_EQ(surfaces.takeLog(), kCreation + kKey + Log{"show soon"});
}

}  // namespace
}  // namespace tavra::test
