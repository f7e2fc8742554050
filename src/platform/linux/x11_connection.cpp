#include "platform/linux/x11_connection.h"

#include <array>
#include <cstring>

namespace tavra::platform {
namespace {

constexpr std::uint32_t kNoDisplay = 1459;                      // an interactive window station is required
constexpr std::uint32_t kAltLeft = 0xFFE9, kAltRight = 0xFFEA;  // key symbols
constexpr int kCursorSize = 32;
using CursorBits = std::array<std::uint32_t, kCursorSize>;  // rows; the lowest bit is the left pixel

// A magnifying glass with its handle to the lower right, and a plus or a minus in it.
bool isGlass(int x, int y, bool plus) {
    const int fromX = x - 10, fromY = y - 10;
    const int squared = fromX * fromX + fromY * fromY;
    if (squared >= 56 && squared <= 90) return true;
    if (x > 15 && y > 15 && x < 26 && y < 26 && x - y >= -1 && x - y <= 1) return true;
    if (fromY == 0 && fromX >= -4 && fromX <= 4) return true;
    return plus && fromX == 0 && fromY >= -4 && fromY <= 4;
}

CursorBits glass(bool plus) {
    CursorBits bits{};
    for (int y = 0; y < kCursorSize; ++y) {
        for (int x = 0; x < kCursorSize; ++x) {
            if (isGlass(x, y, plus)) bits[static_cast<std::size_t>(y)] |= 1u << x;
        }
    }
    return bits;
}

// One pixel more on each side, so that it shows on dark and on light.
CursorBits outline(const CursorBits& bits) {
    CursorBits wide = bits;
    for (std::size_t y = 0; y < bits.size(); ++y) {
        const std::uint32_t row = bits[y] | bits[y] << 1 | bits[y] >> 1;
        wide[y] |= row;
        if (y > 0) wide[y - 1] |= row;
        if (y + 1 < bits.size()) wide[y + 1] |= row;
    }
    return wide;
}

}  // namespace

Status X11Connection::open() {
    TAVRA_RETURN_IF_ERROR(loadX11(x));
    int screenNumber = 0;
    raw = connectX11(*x, &screenNumber);
    if (!broken()) setup_ = x->xcb_get_setup(raw);
    if (setup_ == nullptr || !findScreen(screenNumber)) return Status(kNoDisplay);
    atoms = {atom("WM_PROTOCOLS"), atom("WM_DELETE_WINDOW"), atom("UTF8_STRING"),
             atom("_NET_WM_NAME"), atom("_MOTIF_WM_HINTS"),  atom("_NET_WORKAREA")};
    // Asked of a server without it, anything else would end the connection.
    const xcb_query_extension_reply_t* const shm =
        x->hasShm ? x->xcb_get_extension_data(raw, x->shmId) : nullptr;
    if (shm != nullptr && shm->present != 0) {
        const Reply<xcb_shm_query_version_reply_t> version(
            x->xcb_shm_query_version_reply(raw, x->xcb_shm_query_version(raw), nullptr));
        shmWorks = version != nullptr;
    }
    findAltKeys();
    zoomIn_ = makeCursor(true);
    zoomOut_ = makeCursor(false);
    return Status();
}

X11Connection::~X11Connection() {
    if (raw != nullptr) x->xcb_disconnect(raw);
}

bool X11Connection::findScreen(int number) {
    if (setup_->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST) return false;
    auto screens = x->xcb_setup_roots_iterator(setup_);
    for (; screens.rem > 1 && number > 0; --number) x->xcb_screen_next(&screens);
    screen = screens.data;
    return screen != nullptr && screen->root_depth >= 24;
}

bool X11Connection::synchronise() const {
    const Reply<xcb_get_input_focus_reply_t> focus(
        x->xcb_get_input_focus_reply(raw, x->xcb_get_input_focus(raw), nullptr));
    return focus != nullptr;
}

xcb_atom_t X11Connection::atom(const char* name) const {
    const auto asked = x->xcb_intern_atom(raw, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const Reply<xcb_intern_atom_reply_t> reply(x->xcb_intern_atom_reply(raw, asked, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

// What window managers leave of the screen; all of it without one, or with one that has worked out nothing
// yet.
Size X11Connection::workArea() const {
    const Size whole{screen->width_in_pixels, screen->height_in_pixels};
    const Reply<xcb_get_property_reply_t> reply(x->xcb_get_property_reply(
        raw, x->xcb_get_property(raw, 0, screen->root, atoms.workArea, XCB_ATOM_CARDINAL, 0, 4), nullptr));
    std::uint32_t area[4];
    if (!reply || reply->format != 32 ||
        x->xcb_get_property_value_length(reply.get()) < static_cast<int>(sizeof area))
        return whole;
    std::memcpy(area, x->xcb_get_property_value(reply.get()), sizeof area);
    const Size left{area[2], area[3]};
    return left.width == 0 || left.height == 0 ? whole : left;
}

// Asked of the server, which may have placed a window since its last event.
Status X11Connection::onScreen(xcb_window_t window, Rectangle& rectangle) const {
    const auto sizeAsked = x->xcb_get_geometry(raw, window);
    const auto placeAsked = x->xcb_translate_coordinates(raw, window, screen->root, 0, 0);
    const Reply<xcb_get_geometry_reply_t> size(x->xcb_get_geometry_reply(raw, sizeAsked, nullptr));
    const Reply<xcb_translate_coordinates_reply_t> place(
        x->xcb_translate_coordinates_reply(raw, placeAsked, nullptr));
    if (!size || !place) return Status(error::kInvalidWindowHandle);
    rectangle = {place->dst_x, place->dst_y, place->dst_x + size->width, place->dst_y + size->height};
    return Status();
}

bool X11Connection::isAltKey(xcb_keycode_t code) const {
    return altKeys_[code];
}

void X11Connection::findAltKeys() {
    const unsigned count = setup_->max_keycode - setup_->min_keycode + 1u;
    const auto asked =
        x->xcb_get_keyboard_mapping(raw, setup_->min_keycode, static_cast<std::uint8_t>(count));
    const Reply<xcb_get_keyboard_mapping_reply_t> reply(
        x->xcb_get_keyboard_mapping_reply(raw, asked, nullptr));
    if (!reply) return;
    const xcb_keysym_t* const symbols = x->xcb_get_keyboard_mapping_keysyms(reply.get());
    for (unsigned i = 0; i < count * reply->keysyms_per_keycode; ++i) {
        const unsigned code = setup_->min_keycode + i / reply->keysyms_per_keycode;
        if (symbols[i] == kAltLeft || symbols[i] == kAltRight) altKeys_[code & 0xFF] = true;
    }
}

// 0, the parent's cursor, where bitmaps are in another order than here.
xcb_cursor_t X11Connection::makeCursor(bool plus) const {
    if (setup_->bitmap_format_bit_order != XCB_IMAGE_ORDER_LSB_FIRST) return 0;
    const CursorBits black = glass(plus);
    const CursorBits planes[2] = {black, outline(black)};
    xcb_pixmap_t pixmaps[2];
    for (int i = 0; i < 2; ++i) {
        pixmaps[i] = x->xcb_generate_id(raw);
        x->xcb_create_pixmap(raw, 1, pixmaps[i], screen->root, kCursorSize, kCursorSize);
        const xcb_gcontext_t gc = x->xcb_generate_id(raw);
        const std::uint32_t colors[] = {1, 0};
        x->xcb_create_gc(raw, gc, pixmaps[i], XCB_GC_FOREGROUND | XCB_GC_BACKGROUND, colors);
        x->xcb_put_image(raw, XCB_IMAGE_FORMAT_XY_BITMAP, pixmaps[i], gc, kCursorSize, kCursorSize, 0, 0, 0,
                         1, sizeof(CursorBits), reinterpret_cast<const std::uint8_t*>(planes[i].data()));
        x->xcb_free_gc(raw, gc);
    }
    const xcb_cursor_t cursor = x->xcb_generate_id(raw);
    constexpr std::uint16_t kWhite = 0xFFFF;
    x->xcb_create_cursor(raw, cursor, pixmaps[0], pixmaps[1], 0, 0, 0, kWhite, kWhite, kWhite, 10, 10);
    for (const xcb_pixmap_t pixmap : pixmaps) x->xcb_free_pixmap(raw, pixmap);
    return cursor;
}

}  // namespace tavra::platform
