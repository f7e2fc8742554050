#include <xcb/xtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

#include "support/x_keyboard.h"

namespace tavra::test {
namespace {

constexpr auto kPatience = std::chrono::seconds(30);
constexpr xcb_keysym_t kShift = 0xFFE1;

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
std::unique_ptr<T, Free> owned(T* reply) {
    return std::unique_ptr<T, Free>(reply);
}

}  // namespace

XKeyboard::XKeyboard(xcb_connection_t* connection)
    : connection_(connection), root_(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root) {
    const xcb_setup_t* const setup = xcb_get_setup(connection);
    firstCode_ = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto reply = owned(xcb_get_keyboard_mapping_reply(
        connection, xcb_get_keyboard_mapping(connection, setup->min_keycode, count), nullptr));
    if (!reply) return;
    symbolsPerCode_ = reply->keysyms_per_keycode;
    const xcb_keysym_t* const symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
    symbols_.assign(symbols, symbols + std::size_t{count} * symbolsPerCode_);
}

bool XKeyboard::waitUntil(const std::function<bool()>& condition) const {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));  // between two looks, not for anything
    }
    return true;
}

xcb_atom_t XKeyboard::atom(const char* name) const {
    const auto reply = owned(xcb_intern_atom_reply(
        connection_, xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name),
        nullptr));
    return reply ? reply->atom : xcb_atom_t{0};
}

std::vector<xcb_window_t> XKeyboard::childrenOf(xcb_window_t window) const {
    const auto reply = owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
    if (!reply) return {};
    const xcb_window_t* const children = xcb_query_tree_children(reply.get());
    return {children, children + xcb_query_tree_children_length(reply.get())};
}

xcb_window_t XKeyboard::waitForWindow(const std::string& title) const {
    xcb_window_t found = 0;
    waitUntil([&] {
        for (const xcb_window_t window : childrenOf(root_)) {
            if (titleOf(window).starts_with(title)) found = window;
        }
        return found != 0;
    });
    return found;
}

std::string XKeyboard::titleOf(xcb_window_t window) const {
    const auto asked =
        xcb_get_property(connection_, 0, window, atom("_NET_WM_NAME"), atom("UTF8_STRING"), 0, 1024);
    const auto reply = owned(xcb_get_property_reply(connection_, asked, nullptr));
    if (!reply) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

bool XKeyboard::titleGets(xcb_window_t window, const std::string& text) const {
    return waitUntil([&] { return titleOf(window).find(text) != std::string::npos; });
}

bool XKeyboard::titleLoses(xcb_window_t window, const std::string& text) const {
    return waitUntil([&] { return titleOf(window).find(text) == std::string::npos; });
}

xcb_window_t XKeyboard::childOf(xcb_window_t window) const {
    const auto children = childrenOf(window);
    return children.empty() ? 0 : children.front();
}

XKeyboard::Size XKeyboard::sizeOf(xcb_window_t window) const {
    const auto reply =
        owned(xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), nullptr));
    return reply ? Size{reply->width, reply->height} : Size{};
}

std::uint32_t XKeyboard::processOf(xcb_window_t window) const {
    const auto asked = xcb_get_property(connection_, 0, window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 0, 1);
    const auto reply = owned(xcb_get_property_reply(connection_, asked, nullptr));
    std::uint32_t process = 0;
    if (reply && xcb_get_property_value_length(reply.get()) == sizeof process)
        std::memcpy(&process, xcb_get_property_value(reply.get()), sizeof process);
    return process;
}

void XKeyboard::pointTo(xcb_window_t window, int x, int y) const {
    xcb_warp_pointer(connection_, 0, window, 0, 0, 0, 0, static_cast<std::int16_t>(x),
                     static_cast<std::int16_t>(y));
}

void XKeyboard::fake(std::uint8_t event, std::uint8_t detail) const {
    xcb_test_fake_input(connection_, event, detail, XCB_CURRENT_TIME, root_, 0, 0, 0);
}

void XKeyboard::type(xcb_window_t window, xcb_keysym_t symbol) const {
    std::uint8_t code = 0, shift = 0;
    bool shifted = false;
    for (std::size_t i = 0; i < symbols_.size(); ++i) {
        const auto at = static_cast<std::uint8_t>(firstCode_ + i / symbolsPerCode_);
        const std::size_t column = i % symbolsPerCode_;
        if (symbols_[i] == kShift && shift == 0) shift = at;
        if (symbols_[i] != symbol || column > 1 || code != 0) continue;
        code = at;
        shifted = column == 1;
    }
    const Size size = sizeOf(window);
    pointTo(window, static_cast<int>(size.width / 2), static_cast<int>(size.height / 2));
    if (shifted) fake(XCB_KEY_PRESS, shift);
    fake(XCB_KEY_PRESS, code);
    fake(XCB_KEY_RELEASE, code);
    if (shifted) fake(XCB_KEY_RELEASE, shift);
    xcb_flush(connection_);
}

void XKeyboard::click(xcb_window_t window, xcb_button_t button, int x, int y) const {
    pointTo(window, x, y);
    fake(XCB_BUTTON_PRESS, button);
    fake(XCB_BUTTON_RELEASE, button);
    xcb_flush(connection_);
}

}  // namespace tavra::test
