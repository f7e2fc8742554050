// Drawing through surfaces off screen, and what both kinds have in common, on surfaces that write down what
// is asked of them.
#include "display/draw_image_direct_draw_offscreen.h"

#include <algorithm>

#include "display/next_pixel_format.h"
#include "display/surface_fixture.h"

namespace tavra::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class OffscreenDrawing : public SurfaceFixture<CDrawImageDirectDrawOffscreen> {
  protected:
    using SurfaceFixture::SurfaceFixture;

    const Log kCreation = {"monitor",
                           "enumerate",
                           "device default",
                           "cooperate",
                           "create primary",
                           "create off1 100x80 16:f800",  // where the picture is composed
                           "create off2 100x80 16:f800",  // the application's
                           "off2 format",
                           "off2 key f81f",
                           "create off3 64x48 16:f800",  // the image
                           "create clipper",
                           "primary clipper",
                           "primary format",
                           "primary fill all 0",
                           "primary read",
                           "off2 format",
                           "off2 fill all f81f",
                           "off2 read"};
    const Log kChecks = {"primary lost?", "primary lost?"};
    const Log kUpload = {"off3 lock", "off3 format", "off3 unlock"};
    const Log kPresent = {"off1 18,16,82,64 = off3 0,0,64,48",
                          "off1 at 18,16 keyed off2 0,0,64,48",
                          "primary 38,46,102,94 = off1 18,16,82,64",
                          "primary fill 20,30,38,110 0",
                          "primary fill 38,30,120,46 0",
                          "primary fill 102,46,120,110 0",
                          "primary fill 38,94,102,110 0"};
    const Log kShow = {"show 20,30,120,110"};

    bool rebuilt() { return testing::Matches(Contains("create primary"))(surfaces.takeLog()); }
};

class OffscreenDrawing32 : public OffscreenDrawing {
  protected:
    OffscreenDrawing32() : OffscreenDrawing(kOrder32) {}
};

// Making the surfaces.

TEST_F(OffscreenDrawing, CreationMakesEverythingInOrder) {
    EXPECT_EQ(create(), 0u);
    EXPECT_EQ(surfaces.log, kCreation);
}

TEST_F(OffscreenDrawing32, WideFormatsComeFirstInTheOtherOrder) {
    EXPECT_EQ(create(), 0u);
    EXPECT_THAT(surfaces.log, Contains("create off1 100x80 32:ff0000"));
    EXPECT_THAT(surfaces.log, Contains("off2 key ff00ff"));
}

TEST_F(OffscreenDrawing, FormatsAreTriedUntilOneCanBeHad) {
    surfaces.refused = {{16, 0, 0xF800, 2016, 31}, {16, 0, 0xEC00, 992, 31}};
    EXPECT_EQ(create(), 0u);
    EXPECT_THAT(surfaces.log, Contains("create off1 100x80 16:ec00"));
    EXPECT_THAT(surfaces.log, Contains("create off2 100x80 16:1f"));
    EXPECT_THAT(surfaces.log, Contains("create off3 64x48 16:1f"));
}

TEST_F(OffscreenDrawing, WithoutAnyFormatThereIsNothing) {
    platform::SurfaceFormat format;
    for (std::uint32_t i = 0; NextPixelFormat(0, false, i, format); ++i) surfaces.refused.push_back(format);
    surfaces.screenFormat = {8, 0, 0, 0, 0};
    EXPECT_EQ(create(), platform::kSurfaceInvalidFormat);
    EXPECT_EQ(surfaces.alive, 0);
}

TEST_F(OffscreenDrawing, FailureOfAnyStepLeavesNothingAndIsMadeGoodByTheNextDrawing) {
    for (std::size_t step = 0; step < kCreation.size(); ++step) {
        surfaces.takeLog();
        surfaces.failAfter(step);
        const std::uint32_t result = create();
        if (kCreation[step] == "create off1 100x80 16:f800") {
            EXPECT_EQ(result, 0u);  // another format does
            continue;
        }
        EXPECT_EQ(result, kFailure) << kCreation[step];
        EXPECT_EQ(surfaces.log.back(), kCreation[step]);
        EXPECT_EQ(surfaces.alive, 0) << kCreation[step];
        surfaces.takeLog();
        EXPECT_EQ(drawNext(), 0u);
        // The surfaces are there before the drawing is, which asks once whether they still are.
        EXPECT_EQ(surfaces.takeLog(), kCreation + Log{"primary lost?"} + kUpload + kPresent + kShow);
    }
}

TEST_F(OffscreenDrawing, DeviceIsThatOfTheMonitor) {
    surfaces.devices = {{surfaces.handleOf(0), 7}, {surfaces.handleOf(1), 8}, {surfaces.handleOf(2), 9}};
    EXPECT_EQ(create(), 0u);
    EXPECT_THAT(surfaces.log, Contains("device 8"));
}

TEST_F(OffscreenDrawing, DeviceIsTheDefaultIfNoneIsOfTheMonitor) {
    surfaces.devices = {{surfaces.handleOf(0), 7}, {surfaces.handleOf(2), 9}};
    EXPECT_EQ(create(), 0u);
    EXPECT_THAT(surfaces.log, Contains("device default"));
}

TEST_F(OffscreenDrawing, FillThatComesOutAsNothingIsPainted) {
    surfaces.firstPixel = 0;
    EXPECT_EQ(create(), 0u);
    EXPECT_EQ(surfaces.log, kCreation + Log{"off2 paint ff00ff"});
}

// Drawing.

TEST_F(OffscreenDrawing, DrawingComposesAndCopiesToTheScreen) {
    createQuietly();
    EXPECT_EQ(draw(), 0u);
    EXPECT_EQ(surfaces.log, kChecks + kUpload + kPresent + kShow);
}

TEST_F(OffscreenDrawing, PlacesAreThoseOnTheMonitor) {
    surfaces.monitor.rectangle = {-100, -50, 900, 700};
    createQuietly();
    EXPECT_EQ(draw(), 0u);
    EXPECT_THAT(surfaces.log, Contains("primary 138,96,202,144 = off1 18,16,82,64"));
    EXPECT_THAT(surfaces.log, Contains("primary fill 120,80,138,160 0"));
    EXPECT_THAT(surfaces.log, Contains("show 120,80,220,160"));
}

TEST_F(OffscreenDrawing, DrawingOfTheApplicationIsNotScaled) {
    createQuietly();
    destination = {0, 0, 100, 80};
    background = {};
    EXPECT_EQ(draw(), 0u);
    EXPECT_EQ(surfaces.log, kChecks + kUpload +
                                Log({"off1 0,0,100,80 = off3 0,0,64,48", "off1 at 0,0 keyed off2 0,0,100,80",
                                     "primary 20,30,120,110 = off1 0,0,100,80"}) +
                                kShow);
}

TEST_F(OffscreenDrawing, FrameIsUploadedOnce) {
    createQuietly();
    draw();
    surfaces.takeLog();
    draw();
    EXPECT_EQ(surfaces.takeLog(), kChecks + kPresent + kShow);
    drawNext();
    EXPECT_EQ(surfaces.takeLog(), kChecks + kUpload + kPresent + kShow);
}

TEST_F(OffscreenDrawing, LockThatFailsEndsTheDrawing) {
    createQuietly();
    surfaces.failAfter(2);
    EXPECT_EQ(draw(), kFailure);
    EXPECT_EQ(surfaces.takeLog(), kChecks + Log{"off3 lock"});
    EXPECT_EQ(drawNext(), 0u);
    EXPECT_EQ(surfaces.takeLog(), kChecks + kUpload + kPresent + kShow);
}

TEST_F(OffscreenDrawing, UnlockThatFailsIsToldAndTheDrawingGoesOn) {
    createQuietly();
    surfaces.failAfter(4);
    EXPECT_EQ(draw(), kFailure);
    EXPECT_EQ(surfaces.takeLog(), kChecks + kUpload + kPresent + kShow);
    EXPECT_EQ(draw(), 0u);  // the image is there
    EXPECT_EQ(surfaces.takeLog(), kChecks + kPresent + kShow);
}

TEST_F(OffscreenDrawing, FormatThatCannotBeReadIsToldAndNoImageConverted) {
    createQuietly();
    std::fill(image.pixels(), image.pixels() + image.shape().bytes(), std::uint8_t{0x77});
    surfaces.memory.assign(surfaces.memory.size(), 0xEE);
    surfaces.failAfter(3);
    EXPECT_EQ(draw(), kFailure);
    EXPECT_EQ(surfaces.takeLog(), kChecks + kUpload + kPresent + kShow) << "unlocked, and shown";
    EXPECT_THAT(surfaces.memory, testing::Each(0xEE));
}

TEST_F(OffscreenDrawing, FailureWhilePresentingEndsItSilently) {
    for (std::size_t step = 0; step < kPresent.size(); ++step) {
        createQuietly();
        surfaces.failAfter(kChecks.size() + kUpload.size() + step);
        EXPECT_EQ(drawNext(), 0u);
        const Log done(kPresent.begin(), kPresent.begin() + static_cast<int>(step) + 1);
        EXPECT_EQ(surfaces.takeLog(), kChecks + kUpload + done + kShow);
    }
}

TEST_F(OffscreenDrawing, ImageIsConvertedRowByRowWhereRowsArePadded) {
    setImage({3, 2, 24});  // rows of 12 bytes
    for (std::uint8_t i = 0; i < 24; ++i) image.pixels()[i] = static_cast<std::uint8_t>(8 * i);
    surfaces.memory.assign(1 << 10, 0xEE);
    surfaces.pitch = 8;
    ASSERT_EQ(object.Create(system.handle(), 3, 2, 8), 0u);
    draw();
    const auto word = [this](std::size_t at) {
        return surfaces.memory[at] | std::uint32_t{surfaces.memory[at + 1]} << 8;
    };
    const auto expected = [](unsigned first) {  // B, G and R are 8 times the byte's number
        return 8 * (first + 2) / 8 * 2048 + 8 * (first + 1) / 4 * 32 + 8 * first / 8;
    };
    for (std::size_t x = 0; x < 3; ++x) {
        EXPECT_EQ(word(2 * x), expected(static_cast<unsigned>(3 * x))) << x;
        EXPECT_EQ(word(8 + 2 * x), expected(static_cast<unsigned>(12 + 3 * x))) << x;
    }
    EXPECT_EQ(word(6), 0xEEEEu);
}

// Grey has its rows; colours are one run of green bytes, without a pitch. The rows of both bitmaps are
// padded.
TEST_F(OffscreenDrawing, SurfaceOf8BitsGetsGreyRowsOrARunOfGreen) {
    surfaces.otherFormats["off3"] = {8, 0, 0, 0, 0};
    surfaces.pitch = 8;
    const std::uint8_t e = 0xEE;
    const auto drawn = [this](std::uint32_t bitCount, std::uint32_t bits) {
        setImage({3, 2, bitCount});
        for (std::size_t i = 0; i < image.shape().bytes(); ++i) {
            image.pixels()[i] = static_cast<std::uint8_t>(100 + i);
        }
        surfaces.memory.assign(16, 0xEE);
        EXPECT_EQ(object.Create(system.handle(), 3, 2, bits), 0u);
        EXPECT_EQ(drawNext(), 0u);
        return surfaces.memory;
    };
    EXPECT_EQ(drawn(8, 1), (std::vector<std::uint8_t>{100, 101, 102, e, e, e, e, e, 104, 105, 106, e, e, e, e,
                                                      e}));  // rows of 4 bytes
    EXPECT_EQ(drawn(24, 8), (std::vector<std::uint8_t>{101, 104, 107, 113, 116, 119, e, e, e, e, e, e, e, e,
                                                       e, e}));  // of 12
}

TEST_F(OffscreenDrawing, NothingIsDrawnBeforeItIsCreated) {
    EXPECT_EQ(draw(), 0u);
    EXPECT_THAT(surfaces.log, IsEmpty());
}

// What changes.

TEST_F(OffscreenDrawing, LossRebuildsEverythingAndUploadsAgain) {
    createQuietly();
    draw();
    surfaces.takeLog();
    surfaces.lost = true;
    draw();
    // It is lost still when it is asked the second time.
    EXPECT_EQ(surfaces.takeLog(), Log{"primary lost?"} + kCreation + Log{"primary lost?"} + kCreation +
                                      kUpload + kPresent + kShow);
}

TEST_F(OffscreenDrawing, RebuildThatFailsEndsTheDrawing) {
    createQuietly();
    surfaces.lost = true;
    surfaces.failAfter(3);
    EXPECT_EQ(draw(), kFailure);
    EXPECT_EQ(surfaces.takeLog(), Log({"primary lost?", "monitor", "enumerate", "device default"}));
    EXPECT_EQ(surfaces.alive, 0);
    TavraDC dc = &surfaces;
    EXPECT_EQ(object.GetDC(&dc), kNotReady);
    EXPECT_EQ(dc, nullptr);
    EXPECT_EQ(object.OnSize(0, 1, 1), kNotReady);
    EXPECT_THAT(surfaces.takeLog(), IsEmpty());
    surfaces.lost = false;
    EXPECT_EQ(draw(), 0u);
    EXPECT_GT(surfaces.alive, 0);
}

TEST_F(OffscreenDrawing, RotationExchangesTheSidesOfTheImage) {
    createQuietly();
    setImage({48, 64, 24});
    info.rotated = 1;
    EXPECT_EQ(draw(), 0u);
    EXPECT_THAT(surfaces.log, Contains("create off3 48x64 16:f800"));
    surfaces.takeLog();
    drawNext();
    EXPECT_FALSE(rebuilt());
}

TEST_F(OffscreenDrawing, ImageOfAnotherSizeRebuilds) {
    createQuietly();
    setImage({32, 24, 24});
    draw();
    EXPECT_THAT(surfaces.takeLog(), Contains("create off3 32x24 16:f800"));
    drawNext();
    EXPECT_FALSE(rebuilt());
}

TEST_F(OffscreenDrawing, SizeThatIsToldRebuilds) {
    createQuietly();
    EXPECT_EQ(object.SetImageSize(10, 20, 1), 0u);
    EXPECT_THAT(surfaces.log, Contains("create off3 10x20 16:f800"));
}

TEST_F(OffscreenDrawing, ClientAreaOfAnotherSizeRebuilds) {
    createQuietly();
    system.setClient(20, 30, 120, 90);
    EXPECT_EQ(object.CheckSize(0, 120, 90), 0u);
    EXPECT_THAT(surfaces.log, Contains("create off2 120x90 16:f800"));
}

TEST_F(OffscreenDrawing, MoveOnTheSameMonitorChangesNothing) {
    createQuietly();
    system.setClient(50, 60, 100, 80);
    EXPECT_EQ(object.CheckMove(), 0u);
    EXPECT_THAT(surfaces.log, ElementsAre("monitor", "enumerate"));
    draw();
    EXPECT_THAT(surfaces.log, Contains("primary 68,76,132,124 = off1 18,16,82,64"));
}

TEST_F(OffscreenDrawing, MoveToAnotherMonitorRebuilds) {
    createQuietly();
    surfaces.devices = {{surfaces.handleOf(2), 9}};
    surfaces.monitor = {surfaces.handleOf(2), {1280, 0, 2560, 1024}};
    system.setClient(1300, 60, 100, 80);
    EXPECT_EQ(object.CheckMove(), 0u);
    EXPECT_THAT(surfaces.takeLog(), Contains("device 9"));
    draw();
    EXPECT_THAT(surfaces.log, Contains("primary 38,76,102,124 = off1 18,16,82,64"));
}

TEST_F(OffscreenDrawing, MoveTellsWhenTheMonitorCannotBeFound) {
    createQuietly();
    surfaces.failAfter(0);
    system.setClient(50, 60, 100, 80);
    EXPECT_EQ(object.CheckMove(), kFailure);
    EXPECT_GT(surfaces.alive, 0);
}

// The application's drawing.

TEST_F(OffscreenDrawing, ColorKeyIsKeptAndRebuilds) {
    EXPECT_EQ(object.SetColorKey(0x0000FF), 0u);  // red
    EXPECT_THAT(surfaces.log, IsEmpty());
    EXPECT_EQ(create(), 0u);
    EXPECT_THAT(surfaces.takeLog(), Contains("off2 key f800"));
    EXPECT_EQ(object.SetColorKey(0xFF0000), 0u);
    EXPECT_THAT(surfaces.log, Contains("off2 key 1f"));
    EXPECT_THAT(surfaces.log, Contains("off2 fill all 1f"));
    std::uint32_t key = 0;
    EXPECT_EQ(object.GetColorKey(&key), 0u);
    EXPECT_EQ(key, 0xFF0000u);
}

TEST_F(OffscreenDrawing, ContextIsOfTheDrawingSurface) {
    createQuietly();
    TavraDC dc = nullptr;
    EXPECT_EQ(object.GetDC(&dc), 0u);
    EXPECT_NE(dc, nullptr);
    EXPECT_EQ(object.ReleaseDC(dc), 0u);
    EXPECT_THAT(surfaces.log, ElementsAre("primary lost?", "off2 dc", "off2 release dc"));
}

TEST_F(OffscreenDrawing, ContextThatCannotBeHadLeavesNobodyWaiting) {
    createQuietly();
    surfaces.failAfter(1);
    TavraDC dc = &surfaces;
    EXPECT_EQ(object.GetDC(&dc), kFailure);
    EXPECT_EQ(dc, nullptr);
    EXPECT_EQ(object.ReleaseDC(dc), 0u);  // there is nothing to release
    EXPECT_EQ(elsewhere([&] { return draw(); }), 0u);
    EXPECT_THAT(surfaces.log, Contains(kPresent.back()));
}

TEST_F(OffscreenDrawing, ContextOfALostSurfaceIsThatOfItsSuccessor) {
    createQuietly();
    surfaces.lost = true;
    TavraDC dc = nullptr;
    EXPECT_EQ(object.GetDC(&dc), 0u);
    EXPECT_EQ(surfaces.log, Log{"primary lost?"} + kCreation + Log{"off2 dc"});
    EXPECT_EQ(object.ReleaseDC(dc), 0u);
}

TEST_F(OffscreenDrawing, NothingIsDrawnWhileAContextIsOut) {
    createQuietly();
    TavraDC dc = nullptr;
    ASSERT_EQ(object.GetDC(&dc), 0u);
    surfaces.takeLog();
    system.setClient(20, 30, 120, 90);
    EXPECT_EQ(elsewhere([&] { return object.CheckSize(0, 120, 90); }), 0u);
    EXPECT_EQ(elsewhere([&] { return object.CheckMove(); }), 0u);
    EXPECT_EQ(elsewhere([&] { return object.SetImageSize(10, 20, 8); }), 0u);
    EXPECT_EQ(elsewhere([&] { return draw(); }), 0u);
    EXPECT_THAT(surfaces.takeLog(), IsEmpty());
    EXPECT_EQ(object.ReleaseDC(dc), 0u);
    setImage({10, 20, 24});
    EXPECT_EQ(elsewhere([&] { return draw(); }), 0u);  // all of it comes now
    EXPECT_THAT(surfaces.log, Contains("create off2 120x90 16:f800"));
    EXPECT_THAT(surfaces.log, Contains("create off3 10x20 16:f800"));
    EXPECT_THAT(surfaces.log, Contains("show 20,30,140,120"));
}

TEST_F(OffscreenDrawing, OnlyTheThreadThatHasAContextReleasesIt) {
    createQuietly();
    TavraDC dc = nullptr;
    ASSERT_EQ(object.GetDC(&dc), 0u);
    EXPECT_EQ(elsewhere([&] { return object.ReleaseDC(dc); }), 288u);
    EXPECT_EQ(object.ReleaseDC(&surfaces), 87u);
    EXPECT_TRUE(surfaces.contextOut);
    EXPECT_EQ(object.ReleaseDC(dc), 0u);
    EXPECT_EQ(object.ReleaseDC(dc), 288u);
    EXPECT_FALSE(surfaces.contextOut);
}

TEST_F(OffscreenDrawing, WithItsOwnContextAThreadChangesNothingAndTheFirstStays) {
    constexpr std::uint32_t kRefused = 1131;
    createQuietly();
    TavraDC dc = nullptr;
    ASSERT_EQ(object.GetDC(&dc), 0u);
    surfaces.takeLog();
    surfaces.lost = true;
    EXPECT_EQ(object.SetColorKey(0x00FF00), kRefused);
    EXPECT_EQ(object.ResetOverlay(), kRefused);
    TavraDC second = &surfaces;
    EXPECT_EQ(object.GetDC(&second), kRefused);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(object.ReleaseDC(second), 0u);
    std::uint32_t key = 0;
    EXPECT_EQ(object.GetColorKey(&key), 0u);
    EXPECT_EQ(key, 0xFF00FFu);
    EXPECT_THAT(surfaces.takeLog(), IsEmpty());
    EXPECT_EQ(object.ReleaseDC(dc), 0u);
    EXPECT_THAT(surfaces.takeLog(), ElementsAre("off2 release dc"));
    EXPECT_EQ(object.ReleaseDC(dc), 288u);
    EXPECT_EQ(elsewhere([&] { return object.SetColorKey(0x00FF00); }), 0u);  // nobody has it any more
}

TEST_F(OffscreenDrawing, PaintingAndSizesOfTheThreadWithTheContextArePutOff) {
    createQuietly();
    TavraDC dc = nullptr;
    ASSERT_EQ(object.GetDC(&dc), 0u);
    surfaces.takeLog();
    system.setClient(20, 30, 120, 90);
    EXPECT_EQ(object.CheckSize(0, 120, 90), 0u);
    EXPECT_EQ(object.CheckMove(), 0u);
    EXPECT_EQ(object.SetImageSize(10, 20, 8), 0u);
    EXPECT_EQ(draw(), 0u);
    EXPECT_THAT(surfaces.takeLog(), IsEmpty());
    EXPECT_EQ(object.ReleaseDC(dc), 0u);
    setImage({10, 20, 24});
    EXPECT_EQ(draw(), 0u);
    EXPECT_THAT(surfaces.log, Contains("create off2 120x90 16:f800"));
    EXPECT_THAT(surfaces.log, Contains("create off3 10x20 16:f800"));
}

TEST_F(OffscreenDrawing, EndOfTheWindowSendsAwayWhoWaits) {
    createQuietly();
    TavraDC dc = nullptr;
    ASSERT_EQ(object.GetDC(&dc), 0u);
    auto other = std::async(std::launch::async, [&] {
        TavraDC waited = nullptr;
        return object.GetDC(&waited);
    });
    auto reset = std::async(std::launch::async, [&] { return object.ResetOverlay(); });
    auto key = std::async(std::launch::async, [&] { return object.SetColorKey(1); });
    object.endWaiting();
    EXPECT_EQ(other.get(), kNotReady);
    EXPECT_EQ(reset.get(), kNotReady);
    EXPECT_EQ(key.get(), kNotReady);
    EXPECT_EQ(object.ReleaseDC(dc), 0u);
}

TEST_F(OffscreenDrawing, ResetClearsTheDrawing) {
    createQuietly();
    EXPECT_EQ(object.ResetOverlay(), 0u);
    EXPECT_THAT(surfaces.log, ElementsAre("primary lost?", "off2 format", "off2 fill all f81f", "off2 read"));
}

TEST_F(OffscreenDrawing, ResetShowsTheLastImageWithoutTheDrawing) {
    createQuietly();
    draw();
    surfaces.takeLog();
    EXPECT_EQ(object.ResetOverlay(), 0u);
    EXPECT_EQ(surfaces.takeLog(), Log({"primary lost?", "off2 format", "off2 fill all f81f", "off2 read"}) +
                                      kPresent + Log{"show soon"});
    surfaces.failAfter(2);
    EXPECT_EQ(object.ResetOverlay(), kFailure);
    EXPECT_EQ(surfaces.log, Log({"primary lost?", "off2 format", "off2 fill all f81f"}));
}

// As the drawing before it did: surfaces take no places outside of themselves.
TEST_F(OffscreenDrawing, ResetCutsTheLastImageToTheWindow) {
    createQuietly();
    destination = {-16, -12, 48, 36};
    draw();
    EXPECT_THAT(surfaces.takeLog(), Contains("off1 0,0,48,36 = off3 16,12,64,48"));
    EXPECT_EQ(object.ResetOverlay(), 0u);
    EXPECT_THAT(surfaces.takeLog(), Contains("off1 0,0,48,36 = off3 16,12,64,48"));
}

TEST_F(OffscreenDrawing, EndLeavesNothing) {
    {
        CDrawImageDirectDrawOffscreen other(system, surfaces, kOrder16);
        ASSERT_EQ(other.Create(system.handle(), 64, 48, 8), 0u);
        TavraDC dc = nullptr;
        ASSERT_EQ(other.GetDC(&dc), 0u);
        EXPECT_GT(surfaces.alive, 0);
    }
    EXPECT_EQ(surfaces.alive, 0);
}

}  // namespace
}  // namespace tavra::test
