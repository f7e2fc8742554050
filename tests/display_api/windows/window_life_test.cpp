// The preview window as one of USER, from its creation to its end: its class, what it tells, and who ends it.
#include <functional>
#include <thread>
#include <utility>

#include "display_api/windows/preview_of_user.h"
#include "platform/window.h"

namespace tavra::test {
namespace {

constexpr const wchar_t* kClosableClass = L"904F13E3-D12E-44c5-8E99-B743DAD8D345";
constexpr const wchar_t* kPlainClass = L"8BB6BA46-A351-4729-9DBC-4D051501270B";
constexpr DWORD kOwnParentNotification = WS_EX_NOPARENTNOTIFY;

TEST_F(PreviewOfUser, IsOfTheClassThatCanBeClosedOrNot) {
    openMono();
    for (const bool closable : {true, false}) {
        create(30, 20, kPopup, nullptr, closable);
        wchar_t name[64] = {};
        GetClassNameW(window, name, 64);
        EXPECT_STREQ(name, closable ? kClosableClass : kPlainClass);
        EXPECT_EQ(GetClassLongW(window, GCL_STYLE), closable ? 11u : 523u);
        EXPECT_EQ(GetClassLongW(window, GCL_CBWNDEXTRA), 8u);
        EXPECT_EQ(GetClassLongPtrW(window, GCLP_HCURSOR),
                  reinterpret_cast<ULONG_PTR>(LoadCursorW(nullptr, IDC_ARROW)));
        EXPECT_EQ(GetClassLongPtrW(window, GCLP_HBRBACKGROUND),
                  reinterpret_cast<ULONG_PTR>(GetStockObject(BLACK_BRUSH)));
        EXPECT_EQ(GetWindowLongPtrW(window, 0), reinterpret_cast<LONG_PTR>(handle));
        EXPECT_EQ(GetWindowLongW(window, GWL_EXSTYLE) & kOwnParentNotification, kOwnParentNotification);
        EXPECT_EQ(GetWindowLongPtrW(window, GWLP_HINSTANCE),
                  reinterpret_cast<LONG_PTR>(GetModuleHandleW(nullptr)));
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        WNDCLASSW description{};
        EXPECT_FALSE(GetClassInfoW(GetModuleHandleW(nullptr), name, &description)) << "unregistered";
    }
}

TEST_F(PreviewOfUser, TellsItsSizeAndThenItself) {
    openMono();
    create(30, 20);
    expectMessage(45061);
    expectMessage(45063);
    EXPECT_EQ(expectMessage(45059), reinterpret_cast<std::uintptr_t>(window));
    ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
    EXPECT_EQ(expectMessage(45060), 0u);
    expectNoMessage();
}

TEST_F(PreviewOfUser, UserClosesItAndTheStreamGoesOn) {
    openMono();
    collectRaw();
    create(30, 20);
    forgetAll();
    start();
    PostMessageW(window, WM_CLOSE, 0, 0);
    pump();
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(expectMessage(45060), 0u);
    sendFrame(1, pattern(1));
    EXPECT_EQ(raws.waitFor(1).size(), 1u);
    TavraWindow known = nullptr;
    EXPECT_TRUE(Tavra_GetPreviewWnd(handle, &known));
    EXPECT_EQ(known, window) << "the handle stays";
    EXPECT_TRUE(Tavra_SetDisplayMode(handle, 8));
    EXPECT_FALSE(Tavra_SetPreviewWindowSize(handle, 0, 0, 5, 5));
    EXPECT_EQ(lastError(), 1400u);
    stopAndExpectCode(0);
    create(31, 20);
    EXPECT_FALSE(Tavra_SetDisplayMode(handle, 0));
    EXPECT_EQ(lastError(), TAVRA_ERROR_WINDOW_EXISTS);
}

TEST_F(PreviewOfUser, EndsWithItsParent) {
    openMono();
    ParentWindow parent;
    create(30, 20, WS_CHILD | WS_VISIBLE, parent.window());
    forgetAll();
    parent.destroy();
    EXPECT_EQ(expectMessage(45060), 0u);
    EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
}

TEST_F(PreviewOfUser, IsDestroyedFromAnotherThreadToo) {
    openMono();
    create(30, 20);
    forgetAll();
    std::thread other([this] { EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle)); });
    EXPECT_EQ(expectMessage(45060), 0u);  // this thread takes messages meanwhile
    other.join();
    EXPECT_FALSE(IsWindow(window));
}

TEST_F(PreviewOfUser, OfAThreadThatTakesNoMessagesIsLeftWithoutACamera) {
    openMono();
    create(30, 20);
    forgetAll();
    std::thread([this] { Tavra_Close(handle); }).join();
    ReceivedMessage got;
    ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    EXPECT_EQ(got.message, 45060u);
    handle = nullptr;
    pump();
    UpdateWindow(window);
    DestroyWindow(window);
}

// A window without a camera, whose painting takes until the test lets it go on.
class SlowPainting final : public platform::IWindowEvents {
  public:
    void onCreate(TavraWindow) override {}
    void onDestroy() override { ++ends; }
    void onMove() override {}
    void onSize(std::uint32_t, std::uint32_t, std::uint32_t) override {}
    void onPaint(platform::IPaint&, platform::Size) override {
        painting.set();
        endedMeanwhile = ended.wait(3000);  // longer than anybody waits for the thread
    }
    void onErase(platform::IPaint&) override {}
    void onCommand(std::uint64_t) override {}
    void onScroll(platform::Axis, platform::ScrollCode, std::int32_t) override {}
    void onMouse(const platform::MouseMessage&) override {}
    void onAltKey() override {}

    platform::Event painting{platform::Event::Reset::Manual}, ended{platform::Event::Reset::Manual};
    bool endedMeanwhile = false;
    int ends = 0;
};

// Whoever gets the events is freed then.
TEST(WindowOfUser, IsTakenFromItsThreadOnlyBetweenTwoEvents) {
    platform::IWindowSystem& system = platform::windowSystem();
    ASSERT_TRUE(system.registerClass(true).ok());
    SlowPainting events;
    platform::WindowRequest request;
    request.closable = true;
    request.style = kPopup;
    request.size = {30, 20};
    TavraWindow window = nullptr;
    ASSERT_TRUE(system.create(request, events, window).ok());
    std::thread other([&] {
        EXPECT_TRUE(events.painting.wait(kPatienceMs));
        EXPECT_TRUE(system.destroy(window).ok());
        events.ended.set();
    });
    const auto native = static_cast<HWND>(window);
    InvalidateRect(native, nullptr, FALSE);
    UpdateWindow(native);
    EXPECT_FALSE(events.endedMeanwhile);
    other.join();
    EXPECT_EQ(events.ends, 1);
    for (MSG message; PeekMessageW(&message, native, 0, 0, PM_REMOVE);) DispatchMessageW(&message);
    if (IsWindow(native)) DestroyWindow(native);
    EXPECT_EQ(events.ends, 1);
    EXPECT_TRUE(system.unregisterClass(true).ok());
}

struct Subclassed {
    TavraHandle camera = nullptr;
    WNDPROC before = nullptr;
    int destructions = 0;
} subclassed;

LRESULT CALLBACK destroyAgain(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_DESTROY) {
        ++subclassed.destructions;
        EXPECT_TRUE(Tavra_DestroyPreviewWindow(subclassed.camera));
    }
    return CallWindowProcW(subclassed.before, window, message, first, second);
}

TEST_F(PreviewOfUser, ApplicationMayDestroyItInsideOfItsDestruction) {
    openMono();
    create(30, 20);
    forgetAll();
    subclassed = {};
    subclassed.camera = handle;
    subclassed.before = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(destroyAgain)));
    EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
    EXPECT_EQ(subclassed.destructions, 1);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(expectMessage(45060), 0u);
    expectNoMessage();
    create(30, 20);
}

// A window procedure of the application, which does something when the window is erased for the first time:
// in the middle of a painting.
struct Painted {
    WNDPROC before = nullptr;
    std::function<void()> whenErased;
} painted;

LRESULT CALLBACK workWhenErased(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_ERASEBKGND) {
        const auto work = std::exchange(painted.whenErased, nullptr);
        if (work) work();
    }
    return CallWindowProcW(painted.before, window, message, first, second);
}

void paintDoing(HWND window, std::function<void()> work) {
    painted.whenErased = std::move(work);
    painted.before = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(workWhenErased)));
    InvalidateRect(window, nullptr, TRUE);
    UpdateWindow(window);
    EXPECT_FALSE(painted.whenErased) << "it was done";
}

TEST_F(PreviewOfUser, IsThereAsBeforeIfItsThreadWaitsForItsDestruction) {
    openMono();
    create(10, 9);
    forgetAll();
    paintDoing(window, [this] {
        std::thread([this] {
            EXPECT_FALSE(Tavra_DestroyPreviewWindow(handle));
            EXPECT_EQ(lastError(), 1460u);
        }).join();
    });
    pump();
    EXPECT_TRUE(IsWindow(window)) << "nor does it end later";
    expectNoMessage();
    TavraWindow known = nullptr;
    EXPECT_TRUE(Tavra_GetPreviewWnd(handle, &known));
    EXPECT_EQ(known, window);
    show(1);
    EXPECT_TRUE(looksLike(10, 9, picture(10, 9, 2, 2, 6, 4)));
    forgetAll();
    EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
    EXPECT_EQ(expectMessage(45060), 0u);
    EXPECT_FALSE(IsWindow(window));
}

// A painting takes what other threads send, as a message box of the application's in it would.
TEST_F(PreviewOfUser, EndsBehindThePaintingInWhichItsThreadHearsOfIt) {
    openMono();
    create(30, 20);
    forgetAll();
    std::thread other;
    platform::Event ended(platform::Event::Reset::Manual);
    paintDoing(window, [&] {
        other = std::thread([&] {
            EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
            ended.set();
        });
        MSG none;
        for (int i = 0; i < 300 && !ended.wait(1); ++i) PeekMessageW(&none, nullptr, 0, 0, PM_NOREMOVE);
        EXPECT_TRUE(IsWindow(window));
        EXPECT_FALSE(ended.wait(0));
    });
    other.join();
    pump();
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(expectMessage(45060), 0u);
}

// The window's thread uses it.
TEST_F(PreviewOfUser, CameraIsNotClosedInTheMiddleOfAPainting) {
    constexpr std::uint32_t kLongerThanAnybodyWaits = 6000;
    openMono();
    create(30, 20);
    platform::Event painting(platform::Event::Reset::Manual), closed(platform::Event::Reset::Manual);
    std::thread other([&] {
        EXPECT_TRUE(painting.wait(kPatienceMs));
        Tavra_Close(handle);
        closed.set();
    });
    paintDoing(window, [&] {
        painting.set();
        EXPECT_FALSE(closed.wait(kLongerThanAnybodyWaits));
    });
    other.join();
    handle = nullptr;
    pump();
    if (IsWindow(window)) DestroyWindow(window);
}

TEST_F(PreviewOfUser, AltAndF4CloseIt) {
    openMono();
    create(30, 20);
    forgetAll();
    SendMessageW(window, WM_SYSKEYDOWN, VK_F4, LPARAM{1} << 29);  // with Alt held
    pump();
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(expectMessage(45060), 0u);
}

TEST_F(PreviewOfUser, WindowsOfTwoCamerasShareTheirClass) {
    openMono();
    describe(1, 1, 6, 4);
    const TavraHandle other = Tavra_Open(0);
    ASSERT_NE(other, nullptr);
    ASSERT_TRUE(Tavra_CreatePreviewWindowW(other, nullptr, kPopup, 50, 0, 10, 8, nullptr, nullptr, 1));
    create(30, 20);
    EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle)) << "the class stays for the other window";
    create(30, 20);
    Tavra_Close(other);
    EXPECT_TRUE(IsWindow(window));
}

TEST_F(PreviewOfUser, ManyWindowsLeaveNothingBehind) {
    openMono();
    for (int i = 0; i < 100; ++i) {
        create(30, 20);
        if (i % 2 == 0) DestroyWindow(window);
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        ASSERT_FALSE(IsWindow(window));
        forgetAll();
    }
}

}  // namespace
}  // namespace tavra::test
