// Somebody who sits before the screen: mouse and keyboard, as the X server has them from real devices.
#pragma once

#include <gtest/gtest.h>
#include <sys/uio.h>
#include <xcb/xcbext.h>
#include <xcb/xtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "support/x_server.h"

namespace tavra::test {

class User {
  public:
    explicit User(XServer& server) : connection_(server.connection()), root_(server.root()) {}

    void moveTo(int x, int y) { input(XCB_MOTION_NOTIFY, 0, x, y); }
    void press(std::uint8_t button) { input(XCB_BUTTON_PRESS, button); }
    void release(std::uint8_t button) { input(XCB_BUTTON_RELEASE, button); }
    void clickAt(int x, int y, std::uint8_t button = 1) {
        moveTo(x, y);
        press(button);
        release(button);
    }
    void holdAlt() { input(XCB_KEY_PRESS, altKey()); }
    void letAltGo() { input(XCB_KEY_RELEASE, altKey()); }

    // The pixels of the cursor that is shown; none if they cannot be read.
    std::vector<std::uint32_t> cursor() {
        constexpr std::uint8_t kQueryVersion = 0, kGetCursorImage = 4;
        constexpr std::size_t kSizes = 12, kPixels = 32;  // where width and height, and the pixels are
        std::free(askXfixes(kQueryVersion, {0, 1, 0}));   // version 1.0
        const auto* const reply = static_cast<std::uint8_t*>(askXfixes(kGetCursorImage, {0}));
        if (reply == nullptr) return {};
        std::uint16_t sizes[2];
        std::memcpy(sizes, reply + kSizes, sizeof sizes);
        std::vector<std::uint32_t> pixels(std::size_t{sizes[0]} * sizes[1]);
        std::memcpy(pixels.data(), reply + kPixels, pixels.size() * 4);
        std::free(const_cast<std::uint8_t*>(reply));
        return pixels;
    }

  private:
    // A request of the extension that knows cursors. Its first word is filled in; the caller frees the reply.
    void* askXfixes(std::uint8_t number, std::vector<std::uint32_t> words) {
        static xcb_extension_t xfixes{"XFIXES", 0};
        const xcb_protocol_request_t request{1, &xfixes, number, 0};
        iovec parts[4] = {};  // the first two are the library's
        parts[2] = {words.data(), words.size() * 4};
        const unsigned sent = xcb_send_request(connection_, XCB_REQUEST_CHECKED, parts + 2, &request);
        xcb_generic_error_t* failure = nullptr;
        void* const reply = xcb_wait_for_reply(connection_, sent, &failure);
        std::free(failure);
        return reply;
    }
    void input(std::uint8_t type, std::uint8_t detail, int x = 0, int y = 0) {
        xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, root_, static_cast<std::int16_t>(x),
                            static_cast<std::int16_t>(y), 0);
        // The server has taken it when it answers what comes behind.
        std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    }
    // The key of the left Alt, by its symbol.
    std::uint8_t altKey() {
        constexpr xcb_keysym_t kAltLeft = 0xFFE9;
        const xcb_setup_t* const setup = xcb_get_setup(connection_);
        const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
        xcb_get_keyboard_mapping_reply_t* const reply = xcb_get_keyboard_mapping_reply(
            connection_, xcb_get_keyboard_mapping(connection_, setup->min_keycode, count), nullptr);
        std::uint8_t found = 0;
        for (int i = 0; reply != nullptr && i < count * reply->keysyms_per_keycode; ++i) {
            if (xcb_get_keyboard_mapping_keysyms(reply)[i] != kAltLeft) continue;
            found = static_cast<std::uint8_t>(setup->min_keycode + i / reply->keysyms_per_keycode);
            break;
        }
        std::free(reply);
        EXPECT_NE(found, 0) << "no Alt key";
        return found;
    }

    xcb_connection_t* connection_;
    xcb_window_t root_;
};

}  // namespace tavra::test
