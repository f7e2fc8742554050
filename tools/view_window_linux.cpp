// The window of `tavra view` on an X server, over a connection of its own.
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <vector>

#include "exit_code.h"
#include "platform/linux/x11_connection.h"
#include "view_icon.h"
#include "view_keys.h"
#include "view_window.h"

namespace tavra::tool {
namespace {

using platform::Reply;

constexpr std::uint32_t kNoDisplay = 1459;
constexpr std::uint32_t kEventMask =
    XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_FOCUS_CHANGE;
constexpr xcb_button_t kWheelUp = 4, kWheelDown = 5;

struct SymbolOf {
    xcb_keysym_t symbol;
    char32_t key;
};
// Symbols up to 0xFF are the characters themselves.
constexpr SymbolOf kSymbols[] = {
    {0xFF1B, kKeyEscape}, {0xFF51, kKeyLeft}, {0xFF52, kKeyUp}, {0xFF53, kKeyRight}, {0xFF54, kKeyDown},
    {0xFFAB, U'+'},       {0xFFAD, U'-'},     {0xFFB1, U'1'},   {0xFFBE, U'h'},  // keypad; F1
};

char32_t keyOf(xcb_keysym_t symbol) {
    if (symbol <= 0xFF) return symbol;
    for (const SymbolOf& known : kSymbols) {
        if (known.symbol == symbol) return known.key;
    }
    return 0;
}

Failure displayGone() {
    return Failure("the window is gone: the connection to the X server has ended");
}

Failure noDisplay(std::uint32_t code) {
    if (code != kNoDisplay) {
        return Failure(
            "cannot open a window: the X11 libraries (libxcb.so.1) were not found, or are not whole");
    }
    const char* const display = std::getenv("DISPLAY");
    const std::string where =
        display == nullptr || *display == '\0' ? "DISPLAY is not set" : "DISPLAY is " + std::string(display);
    return Failure("cannot open a window: no X server answers (" + where +
                   "); run it in a desktop session, over ssh -X, or under xvfb-run");
}

}  // namespace

class ViewWindow::Native {
  public:
    Native() {
        // A server that goes away is told in words. Standard output is looked after by the command.
        std::signal(SIGPIPE, SIG_IGN);
        const Status opened = connection_.open();
        if (!opened.ok()) throw noDisplay(opened.code());
    }

    Extent room() const {
        const platform::Size area = connection_.workArea();
        return {area.width, area.height};
    }

    void open(const std::string& title, const Geometry& geometry, bool placed) {
        const xcb_screen_t& screen = *connection_.screen;
        id_ = x().xcb_generate_id(raw());
        size_ = {std::min(geometry.width, kMostPixels), std::min(geometry.height, kMostPixels)};
        const std::uint32_t values[] = {screen.black_pixel, kEventMask};
        const auto asked = x().xcb_create_window_checked(
            raw(), screen.root_depth, id_, screen.root, static_cast<std::int16_t>(geometry.x),
            static_cast<std::int16_t>(geometry.y), static_cast<std::uint16_t>(size_.width),
            static_cast<std::uint16_t>(size_.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual,
            XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
        const Reply<xcb_generic_error_t> refused(x().xcb_request_check(raw(), asked));
        if (refused) throw Failure("cannot open a window: the X server refuses it");
        setHints(placed);
        setTitle(title);
        readKeyboard();
        x().xcb_map_window(raw(), id_);
        x().xcb_flush(raw());
    }

    TavraWindow window() const { return reinterpret_cast<TavraWindow>(static_cast<std::uintptr_t>(id_)); }

    void setTitle(const std::string& title) {
        for (const xcb_atom_t property : {connection_.atoms.name, xcb_atom_t{XCB_ATOM_WM_NAME}}) {
            change(property, connection_.atoms.utf8, 8, title.size(), title.data());
        }
        x().xcb_flush(raw());
    }

    void listenTo(TavraWindow child) {
        child_ = static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(child));
        const std::uint32_t mask = XCB_EVENT_MASK_KEY_PRESS;
        x().xcb_change_window_attributes(raw(), child_, XCB_CW_EVENT_MASK, &mask);
        x().xcb_flush(raw());
    }

    std::optional<ViewEvent> next(std::uint32_t timeoutMs) {
        auto event = poll();
        if (event) return event;
        pollfd waiting{x().xcb_get_file_descriptor(raw()), POLLIN, 0};
        ::poll(&waiting, 1, static_cast<int>(timeoutMs));
        return poll();
    }

  private:
    static constexpr std::uint32_t kMostPixels = 32767;

    const platform::X11Library& x() const { return *connection_.x; }
    xcb_connection_t* raw() const { return connection_.raw; }

    // `count` is of items of so many bits.
    void change(xcb_atom_t property, xcb_atom_t type, std::uint8_t bits, std::size_t count,
                const void* data) const {
        x().xcb_change_property(raw(), XCB_PROP_MODE_REPLACE, id_, property, type, bits,
                                static_cast<std::uint32_t>(count), data);
    }

    void setHints(bool placed) {
        change(connection_.atoms.protocols, XCB_ATOM_ATOM, 32, 1, &connection_.atoms.deleteWindow);
        static constexpr char kClass[] = "tavra\0Tavra";  // name and class, each with its zero
        change(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, sizeof kClass, kClass);
        const auto process = static_cast<std::uint32_t>(getpid());
        change(connection_.atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &process);
        constexpr std::uint32_t kUserPlace = 1, kSmallest = 16;
        std::uint32_t hints[18] = {};
        hints[0] = kSmallest | (placed ? kUserPlace : 0);
        hints[5] = hints[6] = 64;  // the smallest that is of use
        change(XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, 18, hints);
        std::vector<std::uint32_t> icons;
        for (const std::uint32_t side : {16u, 32u, 64u}) {
            const auto pixels = viewIcon(side);
            icons.insert(icons.end(), {side, side});
            icons.insert(icons.end(), pixels.begin(), pixels.end());
        }
        change(connection_.atom("_NET_WM_ICON"), XCB_ATOM_CARDINAL, 32, icons.size(), icons.data());
    }

    void readKeyboard() {
        const xcb_setup_t* const setup = x().xcb_get_setup(raw());
        firstCode_ = setup->min_keycode;
        const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
        const Reply<xcb_get_keyboard_mapping_reply_t> reply(x().xcb_get_keyboard_mapping_reply(
            raw(), x().xcb_get_keyboard_mapping(raw(), firstCode_, count), nullptr));
        if (!reply) return;
        symbolsPerCode_ = reply->keysyms_per_keycode;
        const xcb_keysym_t* const symbols = x().xcb_get_keyboard_mapping_keysyms(reply.get());
        symbols_.assign(symbols, symbols + std::size_t{count} * symbolsPerCode_);
    }

    // Keys with Ctrl or Alt are somebody else's.
    char32_t keyOfPress(const xcb_key_press_event_t& press) const {
        if ((press.state & (XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1)) != 0) return 0;
        const std::size_t shifted = (press.state & XCB_MOD_MASK_SHIFT) != 0 && symbolsPerCode_ > 1 ? 1 : 0;
        const std::size_t at = std::size_t{press.detail} - firstCode_;
        if (press.detail < firstCode_ || (at + 1) * symbolsPerCode_ > symbols_.size()) return 0;
        const xcb_keysym_t symbol = symbols_[at * symbolsPerCode_ + shifted];
        return keyOf(symbol != 0 ? symbol : symbols_[at * symbolsPerCode_]);
    }

    // The next event that matters, without waiting.
    std::optional<ViewEvent> poll() {
        while (const Reply<xcb_generic_event_t> event{x().xcb_poll_for_event(raw())}) {
            if (const auto meant = meaningOf(*event)) return meant;
        }
        if (connection_.broken()) throw displayGone();
        return std::nullopt;
    }

    std::optional<ViewEvent> meaningOf(const xcb_generic_event_t& event) {
        switch (event.response_type & 0x7F) {
            case XCB_KEY_PRESS: {
                const char32_t key = keyOfPress(reinterpret_cast<const xcb_key_press_event_t&>(event));
                if (key != 0) return ViewEvent{ViewEvent::Kind::Key, key, {}};
                break;
            }
            // Sent on by the preview window.
            case XCB_BUTTON_PRESS: {
                const auto button = reinterpret_cast<const xcb_button_press_event_t&>(event).detail;
                if (button == kWheelUp) return ViewEvent{ViewEvent::Kind::Key, U'+', {}};
                if (button == kWheelDown) return ViewEvent{ViewEvent::Kind::Key, U'-', {}};
                break;
            }
            case XCB_CONFIGURE_NOTIFY: {
                const auto& change = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
                const Extent size{change.width, change.height};
                if (size == size_) break;
                size_ = size;
                return ViewEvent{ViewEvent::Kind::Resized, 0, size};
            }
            case XCB_CLIENT_MESSAGE: {
                const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
                if (message.type == connection_.atoms.protocols &&
                    message.data.data32[0] == connection_.atoms.deleteWindow)
                    return ViewEvent{ViewEvent::Kind::CloseAsked, 0, {}};
                break;
            }
            case XCB_DESTROY_NOTIFY: id_ = 0; throw Failure("another program has destroyed the window");
            case XCB_MAPPING_NOTIFY: readKeyboard(); break;
            case XCB_FOCUS_IN: handOver(reinterpret_cast<const xcb_focus_in_event_t&>(event)); break;
            default: break;
        }
        return std::nullopt;
    }

    // The keyboard goes on to the preview window, which zooms at a click only while it has it.
    void handOver(const xcb_focus_in_event_t& focus) const {
        const bool ofPointer =
            focus.detail == XCB_NOTIFY_DETAIL_POINTER || focus.detail == XCB_NOTIFY_DETAIL_POINTER_ROOT;
        if (focus.event != id_ || ofPointer || child_ == 0) return;
        x().xcb_set_input_focus(raw(), XCB_INPUT_FOCUS_PARENT, child_, XCB_CURRENT_TIME);
        x().xcb_flush(raw());
    }

    platform::X11Connection connection_;
    xcb_window_t id_ = 0;
    xcb_window_t child_ = 0;
    Extent size_;
    xcb_keycode_t firstCode_ = 0;
    std::size_t symbolsPerCode_ = 0;
    std::vector<xcb_keysym_t> symbols_;
};

ViewWindow::ViewWindow() : native_(std::make_unique<Native>()) {}

ViewWindow::~ViewWindow() = default;

Extent ViewWindow::room() const {
    return native_->room();
}

void ViewWindow::open(const std::string& title, const Geometry& geometry, bool placed) {
    native_->open(title, geometry, placed);
}

TavraWindow ViewWindow::window() const {
    return native_->window();
}

void ViewWindow::setTitle(const std::string& title) {
    native_->setTitle(title);
}

void ViewWindow::listenTo(TavraWindow child) {
    native_->listenTo(child);
}

std::optional<ViewEvent> ViewWindow::next(std::uint32_t timeoutMs) {
    return native_->next(timeoutMs);
}

}  // namespace tavra::tool
