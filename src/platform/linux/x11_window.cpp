#include "platform/linux/x11_window.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tavra::platform {
namespace {

constexpr std::uint32_t kChildWithoutParent = 1406;
constexpr std::uint32_t kMostPixels = 32767;
constexpr std::uint32_t kUseDefaultPlace = 0x80000000;
constexpr std::uint32_t kStyleCaption = 0xC00000;
constexpr xcb_timestamp_t kDoubleClickMs = 500;
constexpr std::int32_t kWheelStep = 120;
constexpr std::int32_t kLeastThumb = 8;

constexpr std::uint32_t kEventMask =
    XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY |
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION |
    XCB_EVENT_MASK_LEAVE_WINDOW | XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE;

constexpr std::uint32_t kTrackColor = 0xD8D8D8;
constexpr std::uint32_t kThumbColor = 0x808080;
constexpr std::uint32_t kArrowColor = 0xB0B0B0;

constexpr std::uint32_t kMostTitleBytes = 0x10000;  // far below what a request holds
constexpr std::uint64_t kMostCanvasPixels = 1u << 26;

std::int16_t placeOf(std::int32_t value) {
    return static_cast<std::int16_t>(std::clamp<std::int32_t>(value, INT16_MIN, INT16_MAX));
}

std::uint16_t sideOf(std::uint32_t size) {
    return static_cast<std::uint16_t>(std::clamp<std::uint32_t>(size, 1, kMostPixels));
}

// As much of it as a title may have.
std::string utf8(const std::u16string& wide) {
    std::string bytes;
    for (std::size_t i = 0; i < wide.size() && bytes.size() < kMostTitleBytes; ++i) {
        std::uint32_t code = wide[i];
        const bool high = code >= 0xD800 && code < 0xDC00;
        if (high && i + 1 < wide.size() && (wide[i + 1] & 0xFC00) == 0xDC00) {
            code = 0x10000 + ((code - 0xD800) << 10) + (wide[++i] - 0xDC00u);
        } else if ((code & 0xF800) == 0xD800) {
            code = '?';
        }
        const auto put = [&bytes](std::uint32_t byte) { bytes.push_back(static_cast<char>(byte)); };
        if (code < 0x80) {
            put(code);
        } else if (code < 0x800) {
            put(0xC0 | code >> 6);
            put(0x80 | (code & 0x3F));
        } else {
            if (code < 0x10000) {
                put(0xE0 | code >> 12);
            } else {
                put(0xF0 | code >> 18);
                put(0x80 | (code >> 12 & 0x3F));
            }
            put(0x80 | (code >> 6 & 0x3F));
            put(0x80 | (code & 0x3F));
        }
    }
    return bytes;
}

// Messages of the buttons: pressed, released, pressed twice.
struct ButtonMessages {
    std::uint32_t pressed, released, twice;
};
constexpr ButtonMessages kButtons[] = {
    {513, 514, 515}, {519, 520, 521}, {516, 517, 518}};  // left, middle, right

// Keys and buttons that are held, as mouse messages carry them.
std::uint64_t keysOf(std::uint16_t state) {
    std::uint64_t keys = 0;
    if ((state & XCB_BUTTON_MASK_1) != 0) keys |= 1;
    if ((state & XCB_BUTTON_MASK_3) != 0) keys |= 2;
    if ((state & XCB_MOD_MASK_SHIFT) != 0) keys |= 4;
    if ((state & XCB_MOD_MASK_CONTROL) != 0) keys |= 8;
    if ((state & XCB_BUTTON_MASK_2) != 0) keys |= 16;
    return keys;
}

// A caption is of both bits; one alone is a border.
std::uint32_t decorationsOf(std::uint32_t style) {
    constexpr std::uint32_t kNone = 0, kAll = 1, kBorder = 2;
    const std::uint32_t bits = style & kStyleCaption;
    return bits == kStyleCaption ? kAll : bits != 0 ? kBorder : kNone;
}

}  // namespace

X11Window::~X11Window() {
    if (gc_ != 0) connection_.x->xcb_free_gc(connection_.raw, gc_);
    if (id_ != 0) connection_.x->xcb_destroy_window(connection_.raw, id_);
}

Status X11Window::create(const WindowRequest& request, WindowNumbers& numbers) {
    const bool child = (request.style & kStyleChild) != 0;
    const xcb_window_t parent = nativeOf(request.parent);
    if (request.parent != nullptr && parent == 0) return Status(error::kInvalidWindowHandle);
    if (child && parent == 0) return Status(kChildWithoutParent);
    const X11Library& x = *connection_.x;
    const xcb_screen_t& screen = *connection_.screen;
    const bool anywhere = static_cast<std::uint32_t>(request.x) == kUseDefaultPlace;
    size_ = {sideOf(request.size.width), sideOf(request.size.height)};
    x_ = anywhere ? 0 : placeOf(request.x);
    y_ = anywhere ? 0 : placeOf(request.y);
    title_ = request.title;
    closable_ = request.closable;
    bool taken = false;
    while (!taken && !connection_.broken()) {
        id_ = x.xcb_generate_id(connection_.raw);
        taken = numbers.take(id_);
    }
    // A parent of another visual has nothing for the window to take over.
    const std::uint32_t values[] = {XCB_BACK_PIXMAP_NONE, 0, kEventMask, screen.default_colormap};
    const auto asked = x.xcb_create_window_checked(
        connection_.raw, screen.root_depth, id_, child ? parent : screen.root, static_cast<std::int16_t>(x_),
        static_cast<std::int16_t>(y_), static_cast<std::uint16_t>(size_.width),
        static_cast<std::uint16_t>(size_.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual,
        XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP, values);
    const Reply<xcb_generic_error_t> refused(x.xcb_request_check(connection_.raw, asked));
    if (refused || connection_.broken()) {
        if (taken) numbers.giveBack(id_);
        id_ = 0;
        return Status(error::kInvalidWindowHandle);
    }
    gc_ = x.xcb_generate_id(connection_.raw);
    x.xcb_create_gc(connection_.raw, gc_, id_, 0, nullptr);
    setHints(request);
    setTitle(request.title);
    events_.onCreate(reinterpret_cast<TavraWindow>(static_cast<std::uintptr_t>(id_)));
    applyStyle(request.style);
    return Status();
}

void X11Window::setHints(const WindowRequest& request) {
    const X11Library& x = *connection_.x;
    const auto set = [&](xcb_atom_t property, xcb_atom_t type, std::uint32_t count, const void* words) {
        x.xcb_change_property(connection_.raw, XCB_PROP_MODE_REPLACE, id_, property, type, 32, count, words);
    };
    set(connection_.atoms.protocols, XCB_ATOM_ATOM, 1, &connection_.atoms.deleteWindow);
    // Places are those of the window itself, as they are read, not of the frame around it: otherwise a window
    // that is put where it is would creep by the frame each time.
    constexpr std::uint32_t kPlaceWanted = 1, kHasGravity = 1u << 9;
    std::uint32_t hints[18] = {};
    hints[0] = kHasGravity;
    if (static_cast<std::uint32_t>(request.x) != kUseDefaultPlace) hints[0] |= kPlaceWanted;
    hints[17] = XCB_GRAVITY_STATIC;
    set(XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 18, hints);
    if (request.parent != nullptr) {
        const xcb_window_t owner = nativeOf(request.parent);
        set(XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, 1, &owner);
    }
}

void X11Window::setTitle(const std::u16string& title) {
    title_ = title;
    const std::string text = utf8(title);
    const auto length = static_cast<std::uint32_t>(text.size());
    const auto set = [&](xcb_atom_t property, xcb_atom_t type) {
        connection_.x->xcb_change_property(connection_.raw, XCB_PROP_MODE_REPLACE, id_, property, type, 8,
                                           length, text.data());
    };
    set(connection_.atoms.name, connection_.atoms.utf8);
    set(XCB_ATOM_WM_NAME, connection_.atoms.utf8);
}

// Bars that a style allows or forbids come and go at once.
void X11Window::setStyle(std::uint32_t style) {
    const std::uint32_t changed = style ^ style_;
    applyStyle(style);
    if ((changed & (kStyleHorizontalScroll | kStyleVerticalScroll)) == 0) return;
    const Size client = clientSize();
    events_.onSize(IWindowEvents::kRestored, client.width, client.height);
}

// Window managers take the frame from these hints: which functions a window offers, and what of a frame it
// has.
void X11Window::applyStyle(std::uint32_t style) {
    constexpr std::uint32_t kFunctions = 1, kDecorations = 2;
    constexpr std::uint32_t kAllFunctions = 1, kWithoutClose = 1 | 32;
    style_ = style;
    const std::uint32_t hints[5] = {kFunctions | kDecorations, closable_ ? kAllFunctions : kWithoutClose,
                                    decorationsOf(style), 0, 0};
    const X11Library& x = *connection_.x;
    x.xcb_change_property(connection_.raw, XCB_PROP_MODE_REPLACE, id_, connection_.atoms.motifHints,
                          connection_.atoms.motifHints, 32, 5, hints);
    const bool visible = (style & kStyleVisible) != 0;
    if (visible == visible_) return;
    visible_ = visible;
    if (visible) {
        x.xcb_map_window(connection_.raw, id_);
    } else {
        x.xcb_unmap_window(connection_.raw, id_);
    }
}

void X11Window::place(std::int32_t x, std::int32_t y, Size size) {
    const std::uint32_t values[] = {static_cast<std::uint32_t>(placeOf(x)),
                                    static_cast<std::uint32_t>(placeOf(y)), sideOf(size.width),
                                    sideOf(size.height)};
    connection_.x->xcb_configure_window(
        connection_.raw, id_,
        XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
        values);
}

Size X11Window::clientSizeIn(Size whole) const {
    const std::uint32_t right = vertical_.shown() ? kBarThickness : 0;
    const std::uint32_t bottom = horizontal_.shown() ? kBarThickness : 0;
    return {whole.width - std::min(right, whole.width), whole.height - std::min(bottom, whole.height)};
}

void X11Window::setScrollBar(Axis axis, const ScrollBar& state) {
    bar(axis).state = state;
}

// Until the mouse moves without being taken.
void X11Window::setCursor(Cursor cursor) {
    ownCursor_ = true;
    applyCursor(connection_.cursor(cursor));
}

void X11Window::applyCursor(xcb_cursor_t cursor) const {
    connection_.x->xcb_change_window_attributes(connection_.raw, id_, XCB_CW_CURSOR, &cursor);
}

// Without a window manager the keyboard goes to the window under the pointer.
bool X11Window::active() const {
    const X11Library& x = *connection_.x;
    const Reply<xcb_get_input_focus_reply_t> focus(
        x.xcb_get_input_focus_reply(connection_.raw, x.xcb_get_input_focus(connection_.raw), nullptr));
    return focus && (focus->focus == id_ || focus->focus == XCB_INPUT_FOCUS_POINTER_ROOT);
}

// What happens.

bool X11Window::handle(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
        case XCB_CONFIGURE_NOTIFY:
            onConfigure(reinterpret_cast<const xcb_configure_notify_event_t&>(event));
            break;
        case XCB_BUTTON_PRESS:
            onButton(reinterpret_cast<const xcb_button_press_event_t&>(event), true);
            break;
        case XCB_BUTTON_RELEASE:
            onButton(reinterpret_cast<const xcb_button_press_event_t&>(event), false);
            break;
        case XCB_MOTION_NOTIFY: onPointer(reinterpret_cast<const xcb_motion_notify_event_t&>(event)); break;
        // A window that follows the mouse sees its way out.
        case XCB_LEAVE_NOTIFY:
            if (mouseTaken_) onPointer(reinterpret_cast<const xcb_motion_notify_event_t&>(event));
            break;
        case XCB_KEY_PRESS:
        case XCB_KEY_RELEASE: {
            const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(event);
            if (!connection_.isAltKey(key.detail)) break;
            connection_.altHeld = (event.response_type & 0x7F) == XCB_KEY_PRESS;
            events_.onAltKey();
            break;
        }
        case XCB_CLIENT_MESSAGE: {
            const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
            return closable_ && message.type == connection_.atoms.protocols &&
                   message.data.data32[0] == connection_.atoms.deleteWindow;
        }
        default: break;
    }
    return false;
}

void X11Window::onConfigure(const xcb_configure_notify_event_t& event) {
    const Size size{event.width, event.height};
    const bool sized = size != size_;
    const bool moved = event.x != x_ || event.y != y_;
    size_ = size;
    x_ = event.x;
    y_ = event.y;
    if (moved) events_.onMove();
    if (!sized) return;
    const Size client = clientSize();
    events_.onSize(IWindowEvents::kRestored, client.width, client.height);
}

void X11Window::onButton(const xcb_button_press_event_t& event, bool pressed) {
    const std::int32_t x = event.event_x, y = event.event_y;
    current_ = &event;
    connection_.altHeld = (event.state & XCB_MOD_MASK_1) != 0;
    if (barPressed_ && !pressed && event.detail == 1) {
        barPressed_ = false;  // whatever the pointer is over by now
        if (drag_.on) dragThumb(x, y, ScrollCode::ThumbReleased);
        drag_.on = false;
    } else if (pressed && event.detail == 1 && pressBar(x, y)) {
        barPressed_ = true;
        lastButton_ = 0;
    } else if (event.detail >= 1 && event.detail <= 3) {
        if (isForClient(x, y)) sendButton(event, pressed);
    } else if (pressed && (event.detail == 4 || event.detail == 5)) {
        sendMouse(kMouseWheel, event.state, event.detail == 4 ? kWheelStep : -kWheelStep, event.root_x,
                  event.root_y);
    }
    current_ = nullptr;
}

// What happens on the bars is theirs. The server also tells a window of what happens outside of it, while a
// button is held that was pressed inside: that is for a window that has taken the mouse.
bool X11Window::isForClient(std::int32_t x, std::int32_t y) const {
    return mouseTaken_ || clientSize().contains(x, y);
}

void X11Window::sendButton(const xcb_button_press_event_t& event, bool pressed) {
    const ButtonMessages& messages = kButtons[event.detail - 1];
    const bool twice = pressed && isDoubleClick(event);
    // The button's own bit is that of before the event.
    const auto own = static_cast<std::uint16_t>(XCB_BUTTON_MASK_1 << (event.detail - 1));
    const auto state = static_cast<std::uint16_t>(pressed ? event.state | own : event.state & ~own);
    sendMouse(twice     ? messages.twice
              : pressed ? messages.pressed
                        : messages.released,
              state, 0, event.event_x, event.event_y);
}

bool X11Window::isDoubleClick(const xcb_button_press_event_t& event) {
    const bool twice = event.detail == lastButton_ && event.time - lastPress_ < kDoubleClickMs;
    lastButton_ = twice ? xcb_button_t{0} : event.detail;
    lastPress_ = event.time;
    return twice;
}

void X11Window::onPointer(const xcb_motion_notify_event_t& event) {
    connection_.altHeld = (event.state & XCB_MOD_MASK_1) != 0;
    if (drag_.on) {
        dragThumb(event.event_x, event.event_y, ScrollCode::ThumbMoves);
        return;
    }
    if (isForClient(event.event_x, event.event_y)) {
        current_ = reinterpret_cast<const xcb_button_press_event_t*>(&event);  // of the same form
        sendMouse(kMouseMove, event.state, 0, event.event_x, event.event_y);
        current_ = nullptr;
    }
    if (!mouseTaken_ && std::exchange(ownCursor_, false)) applyCursor(XCB_CURSOR_NONE);
}

void X11Window::sendMouse(std::uint32_t message, std::uint16_t state, std::int32_t wheel, std::int32_t x,
                          std::int32_t y) {
    const auto high = static_cast<std::uint64_t>(static_cast<std::uint16_t>(wheel)) << 16;
    events_.onMouse({message, keysOf(state) | high, x, y});
}

void X11Window::forward(xcb_window_t parent) const {
    if (current_ == nullptr) return;
    const X11Library& x = *connection_.x;
    const auto asked =
        x.xcb_translate_coordinates(connection_.raw, id_, parent, current_->event_x, current_->event_y);
    const Reply<xcb_translate_coordinates_reply_t> place(
        x.xcb_translate_coordinates_reply(connection_.raw, asked, nullptr));
    if (!place) return;
    xcb_button_press_event_t event = *current_;
    if ((event.response_type & 0x7F) == XCB_LEAVE_NOTIFY) event.response_type = XCB_MOTION_NOTIFY;
    event.event = parent;
    event.child = id_;
    event.event_x = place->dst_x;
    event.event_y = place->dst_y;
    char bytes[32] = {};
    std::memcpy(bytes, &event, sizeof event);
    x.xcb_send_event(connection_.raw, 0, parent, XCB_EVENT_MASK_NO_EVENT, bytes);
}

// All of the window; of one that is larger than any screen, only what is on the screen.
Rectangle X11Window::paintedPart() const {
    const auto width = static_cast<std::int32_t>(size_.width),
               height = static_cast<std::int32_t>(size_.height);
    if (std::uint64_t{size_.width} * size_.height <= kMostCanvasPixels) return {0, 0, width, height};
    Rectangle place;
    if (!connection_.onScreen(id_, place).ok()) return {};
    const xcb_screen_t& screen = *connection_.screen;
    return {std::max(0, -place.left), std::max(0, -place.top),
            std::min(width, screen.width_in_pixels - place.left),
            std::min(height, screen.height_in_pixels - place.top)};
}

void X11Window::paint(bool erase) {
    const Rectangle part = paintedPart();
    if (part.empty()) return;
    const Size partSize{static_cast<std::uint32_t>(part.width()), static_cast<std::uint32_t>(part.height())};
    if (!canvas_.resize(partSize)) return;
    const Size client = clientSize();
    PixelArea all = canvas_.area();
    all.left = part.left;
    all.top = part.top;
    PixelArea area = all;
    const auto within = [](std::uint32_t end, std::int32_t begin, std::uint32_t most) {
        return static_cast<std::uint32_t>(std::clamp<std::int64_t>(std::int64_t{end} - begin, 0, most));
    };
    area.width = within(client.width, part.left, all.width);
    area.height = within(client.height, part.top, all.height);
    PixelPaint paint(area);
    if (erase) events_.onErase(paint);
    events_.onPaint(paint, client);
    PixelPaint whole(all);
    drawBars(whole);
    canvas_.show(id_, gc_, static_cast<std::int16_t>(part.left), static_cast<std::int16_t>(part.top));
}

// Scroll bars: an arrow at each end, as long as the bar is thick, and between them the track with the thumb.

Rectangle X11Window::barRectangle(Axis axis) const {
    const Size client = clientSize();
    const auto width = static_cast<std::int32_t>(client.width),
               height = static_cast<std::int32_t>(client.height);
    const auto right = static_cast<std::int32_t>(size_.width),
               bottom = static_cast<std::int32_t>(size_.height);
    if (!bar(axis).shown()) return {};
    return axis == Axis::Horizontal ? Rectangle{0, height, width, bottom}
                                    : Rectangle{width, 0, right, height};
}

Rectangle X11Window::thumbRectangle(Axis axis) const {
    const ScrollBar& state = bar(axis).state;
    Rectangle thumb = barRectangle(axis);
    std::int32_t& begin = axis == Axis::Horizontal ? thumb.left : thumb.top;
    std::int32_t& end = axis == Axis::Horizontal ? thumb.right : thumb.bottom;
    const std::int64_t range = std::int64_t{state.top} + 1;
    const std::int64_t track = std::max<std::int64_t>(end - begin - 2 * std::int64_t{kBarThickness}, 0);
    const std::int64_t length = std::clamp<std::int64_t>(track * state.page / range, kLeastThumb,
                                                         std::max<std::int64_t>(track, kLeastThumb));
    const std::int64_t positions = std::max<std::int64_t>(range - state.page, 1);
    begin += static_cast<std::int32_t>(kBarThickness + (track - length) * state.position / positions);
    end = begin + static_cast<std::int32_t>(length);
    return thumb;
}

bool X11Window::pressBar(std::int32_t x, std::int32_t y) {
    for (const Axis axis : {Axis::Horizontal, Axis::Vertical}) {
        const Rectangle area = barRectangle(axis);
        if (x < area.left || x >= area.right || y < area.top || y >= area.bottom) continue;
        pressBarAt(axis, axis == Axis::Horizontal ? x : y);
        return true;
    }
    // The corner between the bars is nobody's.
    const Size client = clientSize();
    return x >= static_cast<std::int32_t>(client.width) || y >= static_cast<std::int32_t>(client.height);
}

void X11Window::pressBarAt(Axis axis, std::int32_t at) {
    const Rectangle area = barRectangle(axis), thumb = thumbRectangle(axis);
    const bool horizontal = axis == Axis::Horizontal;
    const std::int32_t arrow = kBarThickness;
    const std::int32_t begin = horizontal ? area.left : area.top, end = horizontal ? area.right : area.bottom;
    const std::int32_t thumbBegin = horizontal ? thumb.left : thumb.top;
    const std::int32_t thumbEnd = horizontal ? thumb.right : thumb.bottom;
    if (at < begin + arrow) {
        events_.onScroll(axis, ScrollCode::LineBack, 0);
    } else if (at >= end - arrow) {
        events_.onScroll(axis, ScrollCode::LineOn, 0);
    } else if (at < thumbBegin) {
        events_.onScroll(axis, ScrollCode::PageBack, 0);
    } else if (at >= thumbEnd) {
        events_.onScroll(axis, ScrollCode::PageOn, 0);
    } else {
        drag_ = {true, axis, at, bar(axis).state.position};
    }
}

void X11Window::dragThumb(std::int32_t x, std::int32_t y, ScrollCode code) {
    const bool horizontal = drag_.axis == Axis::Horizontal;
    const ScrollBar& state = bar(drag_.axis).state;
    const Rectangle area = barRectangle(drag_.axis), thumb = thumbRectangle(drag_.axis);
    const std::int64_t length = horizontal ? area.width() : area.height();
    const std::int64_t track =
        length - 2 * std::int64_t{kBarThickness} - (horizontal ? thumb.width() : thumb.height());
    const std::int64_t positions = std::int64_t{state.top} + 1 - state.page;
    const std::int64_t moved = (horizontal ? x : y) - drag_.from;
    const std::int64_t position = drag_.position + (track > 0 ? moved * positions / track : 0);
    events_.onScroll(drag_.axis, code,
                     static_cast<std::int32_t>(
                         std::clamp<std::int64_t>(position, 0, std::max<std::int64_t>(positions, 0))));
}

void X11Window::drawBars(PixelPaint& paint) const {
    const std::int32_t arrow = kBarThickness;
    for (const Axis axis : {Axis::Horizontal, Axis::Vertical}) {
        if (!bar(axis).shown()) continue;
        const Rectangle area = barRectangle(axis);
        const bool horizontal = axis == Axis::Horizontal;
        paint.fill(area, kTrackColor);
        paint.fill(horizontal ? Rectangle{area.left, area.top, area.left + arrow, area.bottom}
                              : Rectangle{area.left, area.top, area.right, area.top + arrow},
                   kArrowColor);
        paint.fill(horizontal ? Rectangle{area.right - arrow, area.top, area.right, area.bottom}
                              : Rectangle{area.left, area.bottom - arrow, area.right, area.bottom},
                   kArrowColor);
        paint.fill(thumbRectangle(axis), kThumbColor);
    }
    if (!horizontal_.shown() || !vertical_.shown()) return;
    const Size client = clientSize();
    paint.fill({static_cast<std::int32_t>(client.width), static_cast<std::int32_t>(client.height),
                static_cast<std::int32_t>(size_.width), static_cast<std::int32_t>(size_.height)},
               kTrackColor);
}

}  // namespace tavra::platform
