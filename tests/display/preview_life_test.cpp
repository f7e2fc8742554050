// The life of a preview window: how it comes about, and how it ends.
#include <memory>
#include <new>

#include "display/preview_fixture.h"

namespace tavra::test {
namespace {

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

// The system's code for one whose thread is in the middle of something.
TEST_F(Preview, WindowThatCannotEndNowStaysAndCanBeDestroyedLater) {
    open();
    const TavraWindow before = window.window();
    system.destroyResult = Status(1460);
    EXPECT_EQ(window.destroy(), Status(1460));
    EXPECT_EQ(window.create({}), Status(1460));
    EXPECT_EQ(window.window(), before);
    EXPECT_TRUE(window.alive());
    EXPECT_THAT(camera.posts, IsEmpty());
    system.destroyResult = Status();
    EXPECT_TRUE(window.destroy().ok());
    EXPECT_EQ(window.window(), nullptr);
    EXPECT_THAT(camera.posts, ElementsAre(message(45060)));
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

}  // namespace
}  // namespace tavra::test
