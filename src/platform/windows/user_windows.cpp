// Windows of USER. A window belongs to the thread that creates it, which pumps messages.
#include <windows.h>
#include <windowsx.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "base/never_destroyed.h"
#include "platform/last_error.h"
#include "platform/module.h"
#include "platform/window.h"
#include "platform/windows/gdi_paint.h"

namespace tavra::platform {
namespace {

constexpr const wchar_t* kClosableName = L"904F13E3-D12E-44c5-8E99-B743DAD8D345";
constexpr const wchar_t* kPlainName = L"8BB6BA46-A351-4729-9DBC-4D051501270B";
constexpr UINT kClassStyle = CS_DBLCLKS | CS_HREDRAW | CS_VREDRAW;
constexpr DWORD kExtendedStyle = WS_EX_NOPARENTNOTIFY;
constexpr int kStorage = 8;  // bytes of a window, for its owner
// Asks a window's thread to end the window. Nobody else sends messages of this range to a class of the
// library.
constexpr UINT kEndMessage = WM_APP + 1;
constexpr UINT kEndPatienceMs = 2000;
// For the end of what the thread is doing with the window just then.
constexpr std::chrono::seconds kEventPatience{3};
constexpr UINT kFrameChange = SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_FRAMECHANGED;

HWND native(TavraWindow window) {
    return static_cast<HWND>(window);
}

const wchar_t* className(bool closable) {
    return closable ? kClosableName : kPlainName;
}

Status resultOf(BOOL done) {
    return done ? Status() : Status(lastSystemError());
}

// A failure that leaves no code is none.
Status lastFailure() {
    return Status(lastSystemError());
}

// Who gets the events of a window, until its end. The window's thread tells of them; where it does not take
// messages, another one ends this, and whoever gets the events may be gone when end returns: nobody is told
// of anything then, also not of what had begun. Events may lie in one another, with window procedures of the
// application between them, which may wait for the very thread that ends the window.
class Listener {
  public:
    explicit Listener(IWindowEvents& events) : events_(&events) {}

    // False: nobody listens any more.
    template <typename Work>
    bool tell(Work work) {
        const std::lock_guard lock(mutex_);
        if (events_ == nullptr) return false;
        ++depth_;
        work(*events_);
        --depth_;
        return true;
    }
    // Of the window's thread: no event is under way.
    bool isIdle() const { return depth_ == 0; }
    // Of the window's thread. Tells of the end, once.
    void end() {
        const std::lock_guard lock(mutex_);
        tellEnd();
    }
    // Of another thread: 1400 if the end was told of, and that has been heard; 1460 if an event is under way
    // all the time.
    Status endSoon() {
        const std::unique_lock lock(mutex_, kEventPatience);
        if (!lock) return Status(error::kWindowBusy);
        return tellEnd() ? Status() : Status(error::kInvalidWindowHandle);
    }

    // Another thread asks for the window's end; not any more once it has given up.
    std::atomic<bool> endAsked{false};

  private:
    bool tellEnd() {
        IWindowEvents* const last = std::exchange(events_, nullptr);
        if (last != nullptr) last->onDestroy();
        return last != nullptr;
    }

    std::recursive_timed_mutex mutex_;
    IWindowEvents* events_;
    int depth_ = 0;  // of the window's thread
};

// The listener of each window, from its creation to its end.
class Listeners {
  public:
    std::shared_ptr<Listener> of(HWND window) {
        const std::lock_guard lock(mutex_);
        const auto found = listeners_.find(window);
        return found != listeners_.end() ? found->second : nullptr;
    }
    // False: no memory.
    bool add(HWND window, IWindowEvents& events) {
        try {
            auto made = std::make_shared<Listener>(events);
            const std::lock_guard lock(mutex_);
            listeners_[window] = std::move(made);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }
    // By the window's thread alone.
    void remove(HWND window) {
        const std::lock_guard lock(mutex_);
        listeners_.erase(window);
    }

  private:
    std::mutex mutex_;  // held for a moment, with no event under way
    std::map<HWND, std::shared_ptr<Listener>> listeners_;
};

Listeners& listeners() {
    static NeverDestroyed<Listeners> all;  // windows may end after static objects
    return all.get();
}

// What the creation of a window hands to its procedure.
struct Creation {
    IWindowEvents& events;
    void* owner;
};

void paint(HWND window, IWindowEvents& events) {
    RECT client{};
    GetClientRect(window, &client);
    PAINTSTRUCT painting{};
    const HDC dc = BeginPaint(window, &painting);
    if (dc == nullptr) {
        ValidateRect(window, nullptr);  // or the system asks again at once, for ever
        return;
    }
    GdiPaint paint(dc);
    events.onPaint(paint,
                   {static_cast<std::uint32_t>(client.right), static_cast<std::uint32_t>(client.bottom)});
    EndPaint(window, &painting);
    GdiFlush();
}

void scroll(HWND window, IWindowEvents& events, Axis axis, WPARAM parameter) {
    const unsigned code = LOWORD(parameter);
    if (code > static_cast<unsigned>(ScrollCode::Last)) return;  // the end of scrolling
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_TRACKPOS;
    // The message holds 16 bits of the thumb's position. All of them are known while the user drags it, not
    // when an application sends the message.
    std::int32_t thumb = HIWORD(parameter);
    if (GetScrollInfo(window, axis == Axis::Horizontal ? SB_HORZ : SB_VERT, &info) &&
        LOWORD(info.nTrackPos) == HIWORD(parameter)) {
        thumb = info.nTrackPos;
    }
    events.onScroll(axis, static_cast<ScrollCode>(code), thumb);
}

LRESULT hitTest(HWND window, WPARAM first, LPARAM second) {
    const LRESULT hit = DefWindowProcW(window, WM_NCHITTEST, first, second);
    const bool child = (GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD) != 0;
    return child && hit == HTBOTTOMRIGHT ? HTNOWHERE : hit;
}

// Of the messages with events. False: the default handler's.
bool dispatch(HWND window, IWindowEvents& events, UINT message, WPARAM first, LPARAM second,
              LRESULT& result) {
    result = 0;
    switch (message) {
        case WM_MOVE: events.onMove(); return true;
        case WM_SIZE:
            events.onSize(static_cast<std::uint32_t>(first), LOWORD(second), HIWORD(second));
            return true;
        case WM_PAINT: paint(window, events); return true;
        case WM_ERASEBKGND: {
            GdiPaint paint(reinterpret_cast<HDC>(first));
            events.onErase(paint);
            result = 1;
            return true;
        }
        case WM_NCHITTEST: result = hitTest(window, first, second); return true;
        case WM_COMMAND: events.onCommand(first); return true;
        case WM_HSCROLL: scroll(window, events, Axis::Horizontal, first); return true;
        case WM_VSCROLL: scroll(window, events, Axis::Vertical, first); return true;
        // By design: the default handler's too, or Alt and F4 would close nothing and Alt open no menu.
        case WM_SYSKEYDOWN:
        case WM_SYSKEYUP: events.onAltKey(); return false;
        default: break;
    }
    if (message < WM_MOUSEFIRST || message > kMouseWheel) return false;
    events.onMouse({message, first, GET_X_LPARAM(second), GET_Y_LPARAM(second)});
    return true;
}

LRESULT CALLBACK windowProcedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_CREATE) {
        const auto& creation =
            *static_cast<const Creation*>(reinterpret_cast<const CREATESTRUCTW*>(second)->lpCreateParams);
        if (!listeners().add(window, creation.events)) {
            SetLastError(ERROR_OUTOFMEMORY);
            return -1;
        }
        SetWindowLongPtrW(window, 0, reinterpret_cast<LONG_PTR>(creation.owner));
        creation.events.onCreate(window);
        return 0;
    }
    const std::shared_ptr<Listener> listener = listeners().of(window);
    if (listener == nullptr) return DefWindowProcW(window, message, first, second);
    // Not in the middle of an event, which would go on with whom it was told to gone.
    if (message == kEndMessage) {
        return listener->endAsked && listener->isIdle() ? DestroyWindow(window) : 0;
    }
    if (message == WM_DESTROY) {
        listener->end();
        SetWindowLongPtrW(window, 0, 0);
        listeners().remove(window);
        return 0;
    }
    LRESULT result = 0;
    bool handled = false;
    listener->tell(
        [&](IWindowEvents& events) { handled = dispatch(window, events, message, first, second, result); });
    return handled ? result : DefWindowProcW(window, message, first, second);
}

// A window can be destroyed by its own thread only. One that takes no messages keeps its window, black and
// with nobody behind it, until it takes them again; one that stays in the middle of an event keeps all of it.
Status endFromElsewhere(HWND window) {
    const std::shared_ptr<Listener> listener = listeners().of(window);
    if (listener == nullptr) return Status(error::kInvalidWindowHandle);
    listener->endAsked = true;
    DWORD_PTR ended = 0;
    SendMessageTimeoutW(window, kEndMessage, 0, 0, SMTO_NORMAL, kEndPatienceMs, &ended);
    if (ended != 0) return Status();
    const Status status = listener->endSoon();
    if (status.code() == error::kWindowBusy) listener->endAsked = false;
    if (status.ok()) {
        SetWindowLongPtrW(window, 0, 0);
        InvalidateRect(window, nullptr, TRUE);
        PostMessageW(window, kEndMessage, 0, 0);
    }
    return status;
}

bool isOfAnotherThread(HWND window) {
    DWORD process = 0;
    const DWORD thread = GetWindowThreadProcessId(window, &process);
    return thread != 0 && process == GetCurrentProcessId() && thread != GetCurrentThreadId();
}

// The library's own. A program that has the library's objects linked in has none, and takes the system's.
HCURSOR loadZoomCursor(Cursor cursor) {
    constexpr WORD kZoomIn = 110, kZoomOut = 111;
    const bool in = cursor == Cursor::ZoomIn;
    const auto library = static_cast<HMODULE>(moduleHandle());
    const HCURSOR own =
        library != nullptr ? LoadCursorW(library, MAKEINTRESOURCEW(in ? kZoomIn : kZoomOut)) : nullptr;
    return own != nullptr ? own : LoadCursorW(nullptr, in ? IDC_CROSS : IDC_IBEAM);
}

class UserWindows final : public IWindowSystem {
  public:
    Status registerClass(bool closable) override {
        WNDCLASSEXW description{};
        description.cbSize = sizeof description;
        description.style = kClassStyle | (closable ? 0u : unsigned{CS_NOCLOSE});
        description.lpfnWndProc = windowProcedure;
        description.cbWndExtra = kStorage;
        description.hInstance = GetModuleHandleW(nullptr);
        description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        description.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
        description.lpszClassName = className(closable);
        return RegisterClassExW(&description) != 0 ? Status() : lastFailure();
    }
    Status unregisterClass(bool closable) override {
        return UnregisterClassW(className(closable), GetModuleHandleW(nullptr)) ? Status() : lastFailure();
    }

    Status create(const WindowRequest& request, IWindowEvents& events, TavraWindow& window) override {
        Creation creation{events, request.owner};
        window = CreateWindowExW(kExtendedStyle, className(request.closable),
                                 reinterpret_cast<const wchar_t*>(request.title.c_str()), request.style,
                                 request.x, request.y, static_cast<int>(request.size.width),
                                 static_cast<int>(request.size.height), native(request.parent),
                                 static_cast<HMENU>(request.menu), GetModuleHandleW(nullptr), &creation);
        return resultOf(window != nullptr);
    }
    Status destroy(TavraWindow window) override {
        if (isOfAnotherThread(native(window))) return endFromElsewhere(native(window));
        return resultOf(DestroyWindow(native(window)));
    }
    bool isWindow(TavraWindow window) override { return IsWindow(native(window)) != 0; }
    bool isActive(TavraWindow window) override { return GetActiveWindow() == native(window); }

    Status setTitle(TavraWindow window, const std::u16string& title) override {
        return resultOf(SetWindowTextW(native(window), reinterpret_cast<const wchar_t*>(title.c_str())));
    }
    std::u16string title(TavraWindow window) override {
        const int length = GetWindowTextLengthW(native(window));
        if (length <= 0) return {};
        std::u16string text(static_cast<std::size_t>(length) + 1, u'\0');
        const int got = GetWindowTextW(native(window), reinterpret_cast<wchar_t*>(text.data()), length + 1);
        text.resize(static_cast<std::size_t>(got));
        return text;
    }
    Status setStyle(TavraWindow window, std::uint32_t style) override {
        setLastSystemError(0);
        const LONG_PTR before = SetWindowLongPtrW(native(window), GWL_STYLE, static_cast<LONG>(style));
        Status status = before == 0 ? lastFailure() : Status();
        if (!SetWindowPos(native(window), nullptr, 0, 0, 0, 0, kFrameChange) && status.ok()) {
            status = lastFailure();
        }
        UpdateWindow(native(window));
        return status;
    }

    Status outerSize(Size client, std::uint32_t style, TavraMenu menu, Size& outer) override {
        RECT area{0, 0, static_cast<LONG>(client.width), static_cast<LONG>(client.height)};
        if (!AdjustWindowRectEx(&area, style, menu != nullptr, kExtendedStyle)) return lastFailure();
        outer = {static_cast<std::uint32_t>(area.right - area.left),
                 static_cast<std::uint32_t>(area.bottom - area.top)};
        return Status();
    }
    Size workArea() override {
        RECT area{};
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
        return {static_cast<std::uint32_t>(area.right - area.left),
                static_cast<std::uint32_t>(area.bottom - area.top)};
    }
    Status desktop(Rectangle& rectangle) override { return windowOnScreen(GetDesktopWindow(), rectangle); }
    Status place(TavraWindow window, std::int32_t x, std::int32_t y, Size size) override {
        return resultOf(SetWindowPos(native(window), nullptr, x, y, static_cast<int>(size.width),
                                     static_cast<int>(size.height), SWP_NOZORDER));
    }
    Status windowOnScreen(TavraWindow window, Rectangle& rectangle) override {
        RECT area{};
        if (!GetWindowRect(native(window), &area)) return lastFailure();
        rectangle = {area.left, area.top, area.right, area.bottom};
        return Status();
    }
    Status clientOnScreen(TavraWindow window, Rectangle& rectangle) override {
        RECT area{};
        POINT corner{};
        if (!GetClientRect(native(window), &area) || !ClientToScreen(native(window), &corner)) {
            return lastFailure();
        }
        rectangle = {corner.x, corner.y, corner.x + area.right, corner.y + area.bottom};
        return Status();
    }

    Status invalidate(TavraWindow window, bool erase) override {
        if (window == nullptr) return Status(error::kInvalidWindowHandle);  // that would be all windows
        return resultOf(InvalidateRect(native(window), nullptr, erase));
    }
    Status postResize(TavraWindow window) override {
        return resultOf(PostMessageW(native(window), WM_SIZE, SIZE_RESTORED, 0));
    }

    void setScrollBar(TavraWindow window, Axis axis, const ScrollBar& bar) override {
        SCROLLINFO info{};
        info.cbSize = sizeof info;
        info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS;
        info.nMax = bar.top;
        info.nPage = bar.page;
        info.nPos = bar.position;
        SetScrollInfo(native(window), axis == Axis::Horizontal ? SB_HORZ : SB_VERT, &info, TRUE);
    }
    std::uint32_t scrollBarThickness(Axis axis) override {
        return static_cast<std::uint32_t>(
            GetSystemMetrics(axis == Axis::Horizontal ? SM_CYHSCROLL : SM_CXVSCROLL));
    }
    void takeMouse(TavraWindow window) override { SetCapture(native(window)); }
    void releaseMouse(TavraWindow) override { ReleaseCapture(); }
    void setCursor(TavraWindow, Cursor cursor) override { SetCursor(loadZoomCursor(cursor)); }
    bool altHeld() override { return GetKeyState(VK_MENU) < 0; }
    void forward(TavraWindow window, TavraWindow parent, const MouseMessage& mouse) override {
        POINT point{mouse.x, mouse.y};
        // By design: the wheel's place is turned like all others, though it is one on the screen.
        MapWindowPoints(native(window), native(parent), &point, 1);
        PostMessageW(native(parent), mouse.message, static_cast<WPARAM>(mouse.keys),
                     MAKELPARAM(point.x, point.y));
    }
};

}  // namespace

IWindowSystem& windowSystem() {
    static UserWindows system;
    return system;
}

}  // namespace tavra::platform
