// Somebody who sits before the screen: mouse and keyboard, as the X server has them from real devices.
#pragma once

#include <gtest/gtest.h>
#include <xcb/xtest.h>

#include <cstdint>
#include <cstdlib>

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

  private:
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
