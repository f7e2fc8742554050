// A program whose window has two cameras in it, for a picture in docs/display.md. It ends with its X server.
#include <tavra/tavra_api.h>
#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::uint32_t kChild = 1u << 30, kVisible = 1u << 28;
constexpr std::uint16_t kWidth = 640, kHeight = 260;
constexpr std::uint32_t kPaper = 0xE8E8E4, kInk = 0x303030;

struct Place {
    std::int16_t x, y;
    std::uint16_t width, height;
};
constexpr std::array<Place, 2> kPlaces{{{16, 40, 296, 167}, {328, 40, 296, 167}}};
constexpr std::array<const char*, 2> kNames{"Front: colour", "Back: mono"};

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "embedding: %s\n", what);
    std::exit(1);
}

// The window exists on the server when this returns, as a preview window in it needs.
xcb_window_t makeWindow(xcb_connection_t* connection) {
    const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_window_t window = xcb_generate_id(connection);
    const std::uint32_t values[] = {kPaper, XCB_EVENT_MASK_EXPOSURE};
    const auto asked = xcb_create_window_checked(
        connection, XCB_COPY_FROM_PARENT, window, screen.root, 0, 0, kWidth, kHeight, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
    if (xcb_generic_error_t* const refused = xcb_request_check(connection, asked)) {
        std::free(refused);
        fail("no window");
    }
    xcb_map_window(connection, window);
    xcb_flush(connection);
    return window;
}

TavraHandle showCamera(xcb_window_t window, const Place& place) {
    const TavraHandle camera = Tavra_Open(0);
    if (camera == nullptr) fail("no camera");
    Tavra_SetALCMode(camera, TAVRA_ALC_SHUTTER_AND_GAIN);
    Tavra_SetDisplayMode(camera, 8);
    Tavra_SetAspectMode(camera, TAVRA_ASPECT_FIT);
    const auto parent = reinterpret_cast<TavraWindow>(static_cast<std::uintptr_t>(window));
    if (!Tavra_CreatePreviewWindowW(camera, nullptr, kChild | kVisible, static_cast<std::uint32_t>(place.x),
                                    static_cast<std::uint32_t>(place.y), place.width, place.height, parent,
                                    nullptr, 0))
        fail("no preview window");
    if (!Tavra_StartTransfer(camera)) fail("no stream");
    return camera;
}

void drawLabels(xcb_connection_t* connection, xcb_window_t window, xcb_gcontext_t gc) {
    for (std::size_t i = 0; i < kPlaces.size(); ++i) {
        const Place& place = kPlaces[i];
        xcb_image_text_8(connection, static_cast<std::uint8_t>(std::strlen(kNames[i])), window, gc, place.x,
                         static_cast<std::int16_t>(place.y - 12), kNames[i]);
        const xcb_rectangle_t button{place.x, static_cast<std::int16_t>(place.y + place.height + 14), 90, 24};
        xcb_poly_rectangle(connection, window, gc, 1, &button);
        xcb_image_text_8(connection, 8, window, gc, static_cast<std::int16_t>(button.x + 21),
                         static_cast<std::int16_t>(button.y + 16), "Snapshot");
    }
    xcb_flush(connection);
}

}  // namespace

int main() {
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) != 0) fail("no X server");
    const xcb_window_t window = makeWindow(connection);
    const xcb_font_t font = xcb_generate_id(connection);
    xcb_open_font(connection, font, 5, "fixed");
    const xcb_gcontext_t gc = xcb_generate_id(connection);
    const std::uint32_t values[] = {kInk, kPaper, font};
    xcb_create_gc(connection, gc, window, XCB_GC_FOREGROUND | XCB_GC_BACKGROUND | XCB_GC_FONT, values);
    std::array<TavraHandle, 2> cameras{};
    for (std::size_t i = 0; i < kPlaces.size(); ++i) cameras[i] = showCamera(window, kPlaces[i]);
    while (xcb_generic_event_t* const event = xcb_wait_for_event(connection)) {
        if ((event->response_type & 0x7F) == XCB_EXPOSE) drawLabels(connection, window, gc);
        std::free(event);
    }
    for (const TavraHandle camera : cameras) Tavra_Close(camera);
    xcb_disconnect(connection);
    return 0;
}
