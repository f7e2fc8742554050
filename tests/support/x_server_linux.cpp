#include "support/x_server.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace tavra::test {
namespace {

constexpr int kPatienceMs = 20000;

// The display that the server tells when it is ready.
std::string readDisplay(int descriptor) {
    std::string text;
    char byte = 0;
    pollfd waiting{descriptor, POLLIN, 0};
    while (poll(&waiting, 1, kPatienceMs) == 1 && read(descriptor, &byte, 1) == 1 && byte != '\n')
        text += byte;
    return text;
}

xcb_atom_t atomOf(xcb_connection_t* connection, const char* name) {
    xcb_intern_atom_reply_t* const reply = xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name),
        nullptr);
    const xcb_atom_t atom = reply != nullptr ? reply->atom : 0;
    std::free(reply);
    return atom;
}

}  // namespace

XServer::XServer(const std::vector<const char*>& more) {
    std::vector<const char*> arguments{"Xvfb", "-displayfd", "3",         "-screen",
                                       "0",    "800x600x24", "-nolisten", "tcp"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    arguments.push_back(nullptr);
    int told[2];
    if (pipe(told) != 0) return;
    process_ = fork();
    if (process_ == 0) {
        dup2(told[1], 3);
        const int nothing = open("/dev/null", O_RDWR);
        dup2(nothing, 1);
        dup2(nothing, 2);
        execvp("Xvfb", const_cast<char* const*>(arguments.data()));
        _exit(127);
    }
    close(told[1]);
    const std::string number = readDisplay(told[0]);
    close(told[0]);
    if (number.empty()) return;
    setenv("DISPLAY", (":" + number).c_str(), 1);
    unsetenv("XAUTHORITY");
    connection_ = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection_) == 0) return;
    xcb_disconnect(connection_);
    connection_ = nullptr;
}

XServer::~XServer() {
    if (connection_ != nullptr) xcb_disconnect(connection_);
    kill();
}

void XServer::stop() {
    ::kill(process_, SIGSTOP);
    waitpid(process_, nullptr, WUNTRACED);
}

void XServer::goOn() {
    ::kill(process_, SIGCONT);
}

void XServer::kill() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    process_ = -1;
}

xcb_window_t XServer::root() const {
    return xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

xcb_window_t XServer::makeWindow(int width, int height) {
    const xcb_window_t window = xcb_generate_id(connection_);
    const std::uint32_t mask = XCB_EVENT_MASK_BUTTON_PRESS;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root(), 100, 50,
                      static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    xcb_map_window(connection_, window);
    xcb_flush(connection_);
    return window;
}

std::vector<std::uint32_t> XServer::pixels(xcb_window_t window, std::uint32_t width, std::uint32_t height) {
    std::vector<std::uint32_t> result;
    xcb_get_image_reply_t* const reply = xcb_get_image_reply(
        connection_,
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0, static_cast<std::uint16_t>(width),
                      static_cast<std::uint16_t>(height), ~0u),
        nullptr);
    if (reply == nullptr) return result;
    result.resize(std::size_t{width} * height);
    std::memcpy(result.data(), xcb_get_image_data(reply), result.size() * 4);
    for (std::uint32_t& pixel : result) pixel &= 0xFFFFFF;
    std::free(reply);
    return result;
}

bool XServer::looksLike(xcb_window_t window, platform::Size size,
                        const std::vector<std::uint32_t>& expected) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (pixels(window, size.width, size.height) != expected) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));  // between two looks, not for anything
    }
    return true;
}

void XServer::button(xcb_window_t window, bool pressed, xcb_button_t which, int x, int y,
                     std::uint16_t state) {
    xcb_button_press_event_t event{};
    event.response_type = pressed ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE;
    event.detail = which;
    event.root = root();
    event.event = window;
    event.event_x = static_cast<std::int16_t>(x);
    event.event_y = static_cast<std::int16_t>(y);
    event.state = state;
    event.same_screen = 1;
    char bytes[32] = {};
    std::memcpy(bytes, &event, sizeof event);
    xcb_send_event(connection_, 0, window, XCB_EVENT_MASK_NO_EVENT, bytes);
    xcb_flush(connection_);
}

void XServer::closeByUser(xcb_window_t window) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atomOf(connection_, "WM_PROTOCOLS");
    event.data.data32[0] = atomOf(connection_, "WM_DELETE_WINDOW");
    char bytes[32] = {};
    std::memcpy(bytes, &event, sizeof event);
    xcb_send_event(connection_, 0, window, XCB_EVENT_MASK_NO_EVENT, bytes);
    xcb_flush(connection_);
}

void XServer::resize(xcb_window_t window, std::uint32_t width, std::uint32_t height) {
    const std::uint32_t values[] = {width, height};
    xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
    xcb_flush(connection_);
}

void XServer::destroy(xcb_window_t window) {
    xcb_destroy_window(connection_, window);
    xcb_flush(connection_);
}

}  // namespace tavra::test
