// The life of a preview window, what it shows and what it answers, on a window that exists in memory only.
#include "display/preview_window.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "support/window_double.h"

namespace tavra::test {
namespace {

using platform::Axis;
using platform::MouseMessage;
using platform::ScrollBar;
using platform::ScrollCode;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kScrolls = platform::kStyleHorizontalScroll | platform::kStyleVerticalScroll;

// A camera with images of 64 x 48 pixels that remembers what was posted.
class CameraDouble final : public IPreviewCamera {
  public:
    CameraDouble() {
        EXPECT_TRUE(imagesA.create({64, 48, 24}).ok());
        EXPECT_TRUE(imagesB.create({48, 64, 24}).ok());
    }
    ImageSize previewImageSize() const override {
        if (whenAskedForTheImage) whenAskedForTheImage();
        return size;
    }
    std::uint32_t previewPixelFormat() const override { return format; }
    bool previewIsRotated() const override { return rotated; }
    ImageBufferSet& previewImages(bool turned) override { return turned ? imagesB : imagesA; }
    Status postToReceiver(std::uint32_t message, std::uint64_t parameter) override {
        posts.emplace_back(message, parameter);
        return postResult;
    }
    void notePreviewFailure(Status status) override {
        if (!status.ok()) lastError = status.code();
    }

    using Post = std::pair<std::uint32_t, std::uint64_t>;
    std::vector<Post> takePosts() { return std::exchange(posts, {}); }

    ImageSize size{64, 48};
    std::uint32_t format = 4;
    bool rotated = false;
    ImageBufferSet imagesA, imagesB;
    std::vector<Post> posts;
    Status postResult;
    std::uint32_t lastError = 0;
    std::function<void()> whenAskedForTheImage;
};

// Fails to draw, as it is told to.
class FailingDrawing final : public CDrawImage {
  public:
    using CDrawImage::CDrawImage;

    static std::shared_ptr<CDrawImage> make(std::uint8_t, platform::IWindowSystem& system) {
        return std::make_shared<FailingDrawing>(system);
    }
    std::uint32_t DrawImage(const Rectangle&, const Rectangle&, const BackgroundRectangles&,
                            const DrawImageInfo&) override {
        return result;
    }
    static inline std::uint32_t result = 0;
};

class Preview : public testing::Test {
  protected:
    Preview() {
        window.mask.store({0, 0, 64, 48});
        window.destination.store({0, 0, 64, 48});
    }

    // A window with a client area of 100 x 80.
    void open(std::uint32_t style = 0) {
        PreviewRequest request;
        request.style = style;
        request.place = {20, 30, 100, 80};
        request.parent = parent;
        ASSERT_TRUE(window.create(request).ok());
        system.setClient(20, 30, 100, 80);
        system.takeLog();
        camera.takePosts();
    }
    std::vector<std::string> paint() {
        RecordingPaint recorder;
        const Rectangle& client = system.client;
        system.events->onPaint(recorder, {static_cast<std::uint32_t>(client.width()),
                                          static_cast<std::uint32_t>(client.height())});
        return recorder.log;
    }
    void mouse(std::uint32_t message, int x, int y) { system.events->onMouse({message, 0, x, y}); }
    static CameraDouble::Post message(std::uint32_t code, std::uint64_t parameter = 0) {
        return {code, parameter};
    }
    std::uint64_t windowNumber() { return reinterpret_cast<std::uintptr_t>(system.handle()); }

    WindowDouble system;
    CameraDouble camera;
    PreviewWindow window{camera, system};
    TavraWindow parent = nullptr;
};

// Life.

TEST_F(Preview, CreationRegistersMakesAndTells) {
    PreviewRequest request;
    request.title = u"Eyes";
    request.style = kScrolls;
    request.place = {20, static_cast<std::uint32_t>(-30), 100, 80};
    request.closable = true;
    ASSERT_TRUE(window.create(request).ok());
    EXPECT_EQ(window.window(), system.handle());
    EXPECT_TRUE(window.alive());
    EXPECT_TRUE(system.request.closable);
    EXPECT_EQ(system.request.title, u"Eyes");
    EXPECT_EQ(system.request.y, -30);
    EXPECT_EQ(system.request.size, (platform::Size{110, 90}));
    EXPECT_THAT(system.log, ElementsAre("register closable", "create", "invalidate"));
    EXPECT_THAT(camera.posts, ElementsAre(message(45059, windowNumber())));
}

TEST_F(Preview, WithoutASizeItTakesTheImages) {
    ASSERT_TRUE(window.create({}).ok());
    EXPECT_EQ(system.request.size, (platform::Size{74, 58}));
}

TEST_F(Preview, ImageWithoutPixelsDoesNoHarm) {
    camera.size = {0, 0};
    ASSERT_TRUE(camera.imagesA.create({0, 0, 24}).ok());
    window.mask.store({});
    window.destination.store({});
    ASSERT_TRUE(window.create({}).ok());
    EXPECT_EQ(system.request.size, (platform::Size{10, 10})) << "the frame alone";
    system.setClient(0, 0, 40, 30);
    system.events->onSize(0, 40, 30);
    EXPECT_EQ(window.destination.load(), (PreviewPlace{20, 15, 0, 0}));
    EXPECT_THAT(paint(), ElementsAre("black 0,0,20,30", "black 20,0,40,15", "black 20,15,40,30"));
    window.magnificationMode = 1;
    mouse(514, 5, 5);
    EXPECT_EQ(window.mask.load(), PreviewPlace());
}

TEST_F(Preview, OneSideOfZeroStays) {
    PreviewRequest request;
    request.place.height = 80;
    ASSERT_TRUE(window.create(request).ok());
    EXPECT_EQ(system.request.size, (platform::Size{10, 90}));
}

TEST_F(Preview, WorkAreaLimitsAWindowThatIsNoChild) {
    PreviewRequest request;
    request.place = {0, 0, 5000, 300};
    ASSERT_TRUE(window.create(request).ok());
    EXPECT_EQ(system.request.size, (platform::Size{1280, 310}));
    request.style = platform::kStyleChild;
    ASSERT_TRUE(window.create(request).ok());
    EXPECT_EQ(system.request.size, (platform::Size{5010, 310}));
}

TEST_F(Preview, ExistingWindowIsDestroyedFirst) {
    open();
    ASSERT_TRUE(window.create({}).ok());
    EXPECT_THAT(system.log, ElementsAre("destroy", "unregister", "register", "create", "invalidate"));
    EXPECT_THAT(camera.posts, ElementsAre(message(45060), message(45059, windowNumber())));
}

TEST_F(Preview, CreationFailsIfTheOldClassCannotGo) {
    open();
    system.unregisterResult = Status(6);
    EXPECT_EQ(window.create({}), Status(6));
    EXPECT_FALSE(window.alive());
}

TEST_F(Preview, ClassThatIsThereOrInUseIsNoFailure) {
    system.registerResult = Status(1410);
    system.unregisterResult = Status(1412);
    EXPECT_TRUE(window.create({}).ok());
    EXPECT_TRUE(window.destroy().ok());
}

TEST_F(Preview, ClassThatCannotBeRegisteredFails) {
    system.registerResult = Status(8);
    EXPECT_EQ(window.create({}), Status(8));
    EXPECT_THAT(system.log, ElementsAre("register"));
    EXPECT_THAT(camera.posts, IsEmpty());
}

TEST_F(Preview, WindowThatDoesNotComeAboutIsTold) {
    system.createResult = Status(1406);
    window.displayError = 3;
    EXPECT_EQ(window.create({}), Status(1406));
    EXPECT_THAT(camera.posts, ElementsAre(message(45060, 3)));
    EXPECT_EQ(window.window(), nullptr);
}

TEST_F(Preview, DrawObjectThatCannotBeMadeEndsTheWindow) {
    system.desktopResult = Status(6);
    EXPECT_EQ(window.create({}), Status(6));
    EXPECT_FALSE(system.exists);
    EXPECT_EQ(window.window(), nullptr);
    EXPECT_THAT(camera.posts, ElementsAre(message(45060)));
}

TEST_F(Preview, DrawObjectWithoutMemoryEndsTheWindow) {
    camera.whenAskedForTheImage = [] { throw std::bad_alloc(); };
    PreviewRequest request;
    request.place = {0, 0, 9, 9};
    EXPECT_EQ(window.create(request), Status(8));
    EXPECT_FALSE(system.exists);
    EXPECT_EQ(window.window(), nullptr);
    EXPECT_THAT(camera.posts, ElementsAre(message(45060)));
}

// Settings come from any thread. The draw object is told of one that changes while it is made, before anybody
// is told of the window.
TEST_F(Preview, SettingsThatChangeDuringCreationReachTheDrawObject) {
    const std::function<void()> changes[] = {[this] { window.setColorKey(0x123456); },
                                             [this] { window.setAlphaChannel(7); },
                                             [this] { window.imagesChanged(); }};
    for (const auto& change : changes) {
        int asked = 0;
        camera.whenAskedForTheImage = [&] {
            if (++asked == 1) change();
            EXPECT_THAT(camera.posts, IsEmpty());
        };
        PreviewRequest request;
        request.place = {0, 0, 9, 9};
        ASSERT_TRUE(window.create(request).ok());
        EXPECT_EQ(asked, 2) << "when it was made, and after the change";
        EXPECT_THAT(camera.takePosts(), ElementsAre(message(45059, windowNumber())));
        ASSERT_TRUE(window.destroy().ok());
        camera.takePosts();
    }
}

TEST_F(Preview, DestroyWithoutAWindowSucceeds) {
    EXPECT_TRUE(window.destroy().ok());
    EXPECT_THAT(system.log, IsEmpty());
}

TEST_F(Preview, DestroyWithoutAWindowSucceedsWhateverBecomesOfTheClass) {
    system.createResult = Status(1406);
    EXPECT_EQ(window.create({}), Status(1406));
    system.unregisterResult = Status(6);
    EXPECT_TRUE(window.destroy().ok());
}

// Where windows have a thread of their own, the user may be faster than the creation.
TEST_F(Preview, WindowThatIsClosedWhileItIsMadeHasNotComeAbout) {
    camera.whenAskedForTheImage = [this] { system.close(); };
    PreviewRequest request;
    request.place = {0, 0, 9, 9};
    EXPECT_EQ(window.create(request), Status(1400));
    EXPECT_THAT(camera.posts, ElementsAre(message(45060)));
    EXPECT_FALSE(window.alive());
    EXPECT_EQ(window.window(), nullptr);
}

// As on Windows, where both run window procedures of the application.
TEST_F(Preview, ApplicationMayDestroyItInsideOfItsCreationAndItsDestruction) {
    open();
    int inside = 0;
    system.whenDestroyed = [&] {
        ++inside;
        EXPECT_TRUE(window.destroy().ok());
    };
    EXPECT_TRUE(window.destroy().ok());
    EXPECT_EQ(inside, 1);
    EXPECT_THAT(camera.takePosts(), ElementsAre(message(45060)));
    system.whenDestroyed = nullptr;
    system.whenCreated = [&] { EXPECT_TRUE(window.destroy().ok()); };
    EXPECT_EQ(window.create({}), Status(1400));
    EXPECT_THAT(camera.takePosts(), ElementsAre(message(45060))) << "and no creation";
    EXPECT_EQ(window.window(), nullptr);
    system.whenCreated = nullptr;
    EXPECT_TRUE(window.create({}).ok());
}

TEST_F(Preview, EndTellsTheLastFailureOfPaintingAndSoDoTheNextOnes) {
    PreviewWindow failing(camera, system, FailingDrawing::make);
    ASSERT_TRUE(failing.create({}).ok());
    for (const std::uint32_t result : {5u, 0x88760868u, 0u}) {
        FailingDrawing::result = result;
        paint();
    }
    camera.takePosts();
    EXPECT_TRUE(failing.destroy().ok());
    EXPECT_THAT(camera.takePosts(), ElementsAre(message(45060, 0x88760868)));
    ASSERT_TRUE(failing.create({}).ok());
    camera.takePosts();
    EXPECT_TRUE(failing.destroy().ok());
    EXPECT_THAT(camera.takePosts(), ElementsAre(message(45060, 0x88760868)));
}

TEST_F(Preview, DestroyTellsTheLastDrawError) {
    open();
    window.displayError = 8;
    EXPECT_TRUE(window.destroy().ok());
    EXPECT_EQ(window.window(), nullptr);
    EXPECT_THAT(camera.posts, ElementsAre(message(45060, 8)));
}

TEST_F(Preview, WindowClosedByTheUserKeepsItsHandle) {
    open();
    system.close();
    EXPECT_THAT(camera.takePosts(), ElementsAre(message(45060)));
    EXPECT_EQ(window.window(), system.handle());
    EXPECT_FALSE(window.alive());
    std::u16string title = u"?";
    EXPECT_TRUE(window.title(title).ok());
    EXPECT_EQ(title, u"");
    EXPECT_TRUE(window.setTitle(u"x").ok());
    EXPECT_TRUE(window.setDisplayMode(8).ok());
    TavraDC dc = nullptr;
    EXPECT_EQ(window.getDC(dc), Status(error::kNoWindow));
    ASSERT_TRUE(window.create({}).ok());  // clears the dead handle and goes on
    EXPECT_TRUE(window.alive());
}

TEST_F(Preview, OperationsNeedAWindow) {
    std::u16string title;
    PreviewPlace place;
    TavraDC dc = nullptr;
    const Status none(error::kNoWindow);
    EXPECT_EQ(window.setTitle(u"x"), none);
    EXPECT_EQ(window.title(title), none);
    EXPECT_EQ(window.setStyle(5), none);
    EXPECT_EQ(window.setSize({1, 2, 3, 4}), none);
    EXPECT_EQ(window.size(place), none);
    EXPECT_EQ(window.getDC(dc), none);
    EXPECT_EQ(window.getDCWithReset(dc), none);
    EXPECT_EQ(window.releaseDC(dc), none);
    EXPECT_EQ(window.resetOverlay(), none);
    EXPECT_EQ(window.style(), 0u);
}

TEST_F(Preview, PlainModesHaveNoDrawingSurface) {
    for (const std::uint8_t mode : {0, 8}) {
        ASSERT_TRUE(window.destroy().ok());
        ASSERT_TRUE(window.setDisplayMode(mode).ok());
        open();
        TavraDC dc = nullptr;
        const Status refused(error::kLegacyCamera);
        EXPECT_EQ(window.getDC(dc), refused);
        EXPECT_EQ(window.getDCWithReset(dc), refused);
        EXPECT_EQ(window.releaseDC(dc), refused);
        EXPECT_EQ(window.resetOverlay(), refused);
    }
}

// A code that is not listed draws plainly and yet does not refuse.
TEST_F(Preview, UnlistedModesGiveNoContextAndNoError) {
    ASSERT_TRUE(window.setDisplayMode(200).ok());
    open();
    TavraDC dc = &system;
    EXPECT_TRUE(window.getDC(dc).ok());
    EXPECT_EQ(dc, nullptr);
    EXPECT_TRUE(window.getDCWithReset(dc).ok());
    EXPECT_TRUE(window.resetOverlay().ok());
    system.takeLog();
    EXPECT_TRUE(window.releaseDC(dc).ok());
    EXPECT_THAT(system.log, ElementsAre("invalidate"));
}

TEST_F(Preview, DisplayModeIsRefusedWhileTheWindowLives) {
    open();
    EXPECT_EQ(window.setDisplayMode(8), Status(error::kWindowExists));
    EXPECT_EQ(window.displayMode, 0);
}

TEST_F(Preview, ColorKeyRedrawsOnlyALivingWindow) {
    window.setColorKey(0x123456);
    EXPECT_THAT(system.log, IsEmpty());
    EXPECT_EQ(window.colorKey, 0x123456u);
    open();
    window.setColorKey(5);
    EXPECT_THAT(system.log, ElementsAre("invalidate"));
}

// Style, size.

TEST_F(Preview, StyleIsKeptAlsoWhereTheSystemRefusesIt) {
    open(5);
    EXPECT_EQ(window.style(), 5u);
    system.styleResult = Status(87);
    EXPECT_TRUE(window.setStyle(7).ok());
    EXPECT_EQ(window.style(), 7u);
    EXPECT_EQ(camera.lastError, 87u);
}

TEST_F(Preview, SizeIsTheClientAreas) {
    open();
    EXPECT_TRUE(window.setSize({1, static_cast<std::uint32_t>(-2), 30, 40}).ok());
    EXPECT_THAT(system.log, ElementsAre("place 1,-2 40x50"));
    system.placeResult = Status(5);
    EXPECT_EQ(window.setSize({1, 2, 3, 4}), Status(5));
    system.outerSizeResult = Status(9);
    EXPECT_EQ(window.setSize({1, 2, 3, 4}), Status(9));
}

TEST_F(Preview, PositionIsOnTheScreenOrInTheParent) {
    open();
    system.outer = {20, 30, 130, 120};
    system.client = {25, 35, 125, 115};
    PreviewPlace place;
    ASSERT_TRUE(window.size(place).ok());
    EXPECT_EQ(place, (PreviewPlace{20, 30, 100, 80}));
    parent = system.parentHandle();
    open(platform::kStyleChild);
    system.outer = {90, 70, 200, 160};
    ASSERT_TRUE(window.size(place).ok());
    EXPECT_EQ(place, (PreviewPlace{static_cast<std::uint32_t>(-10), 20, 100, 80}));
}

// What is shown.

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

// The mouse.

TEST_F(Preview, ClickMagnifiesAndIsForwarded) {
    parent = system.parentHandle();
    open();
    window.magnificationMode = 1;
    mouse(514, 32, 24);
    EXPECT_EQ(window.mask.load(), (PreviewPlace{16, 12, 32, 24}));
    EXPECT_THAT(camera.takePosts(), ElementsAre(message(45062)));
    EXPECT_THAT(system.takeLog(), ElementsAre("invalidate", "forward 514 to parent"));
    system.alt = true;
    mouse(514, 32, 24);
    EXPECT_EQ(window.mask.load(), (PreviewPlace{0, 0, 64, 48}));
}

TEST_F(Preview, ClickDoesNotMagnifyWhereItIsOffOrTheWindowNotActive) {
    open();
    mouse(514, 32, 24);
    window.magnificationMode = 2;
    system.active = false;
    mouse(514, 32, 24);
    EXPECT_EQ(window.mask.load(), (PreviewPlace{0, 0, 64, 48}));
    EXPECT_THAT(system.log, IsEmpty());  // and nothing is forwarded without a parent
}

TEST_F(Preview, LastFailureOfAPostIsKept) {
    open();
    window.magnificationMode = 1;
    camera.postResult = Status(1816);
    mouse(514, 1, 1);
    camera.postResult = Status(1400);
    mouse(514, 1, 1);
    camera.postResult = Status();
    mouse(514, 1, 1);
    EXPECT_EQ(window.displayError, 1400u);
}

TEST_F(Preview, OtherButtonsAndTheWheelAreOnlyForwarded) {
    parent = system.parentHandle();
    open();
    window.magnificationMode = 1;
    mouse(513, 1, 1);
    mouse(522, 1, 1);
    EXPECT_THAT(system.log, ElementsAre("forward 513 to parent", "forward 522 to parent"));
}

TEST_F(Preview, MouseIsCapturedWhileItIsOverAMagnifyingWindow) {
    open();
    mouse(512, 5, 5);
    EXPECT_THAT(system.log, IsEmpty());
    window.magnificationMode = 1;
    mouse(512, 5, 5);
    system.alt = true;
    mouse(512, 99, 79);
    mouse(512, 100, 79);  // outside
    mouse(512, 5, 5);
    window.magnificationMode = 0;
    mouse(512, 5, 5);
    mouse(512, 5, 5);
    EXPECT_THAT(system.log, ElementsAre("take mouse", "cursor in", "cursor out", "release mouse",
                                        "take mouse", "cursor out", "release mouse"));
}

TEST_F(Preview, AltKeyChangesTheCursor) {
    open();
    system.events->onAltKey();
    window.magnificationMode = 1;
    system.alt = true;
    system.events->onAltKey();
    EXPECT_THAT(system.log, ElementsAre("cursor out"));
}

}  // namespace
}  // namespace tavra::test
