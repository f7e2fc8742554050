#include "platform/linux/x11_canvas.h"

#include <sys/ipc.h>
#include <sys/shm.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace tavra::platform {

bool X11Canvas::resize(Size size) {
    if (pixels_ != nullptr && size == size_) return true;
    release();
    const std::size_t bytes = std::size_t{size.width} * size.height * 4;
    if (!connection_.shmWorks || !allocateShared(bytes)) {
        own_.reset(new (std::nothrow) std::uint8_t[bytes]);
        pixels_ = own_.get();
    }
    if (pixels_ == nullptr) return false;
    std::memset(pixels_, 0, bytes);
    size_ = size;
    return true;
}

// The segment goes with the last of the two that have it, whatever happens to this process.
bool X11Canvas::allocateShared(std::size_t bytes) {
    const int id = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (id == -1) return false;
    void* const memory = shmat(id, nullptr, 0);
    if (memory == reinterpret_cast<void*>(-1)) {
        shmctl(id, IPC_RMID, nullptr);
        return false;
    }
    const X11Library& x = *connection_.x;
    segment_ = x.xcb_generate_id(connection_.raw);
    const auto asked = x.xcb_shm_attach_checked(connection_.raw, segment_, static_cast<std::uint32_t>(id), 1);
    const Reply<xcb_generic_error_t> refused(x.xcb_request_check(connection_.raw, asked));
    shmctl(id, IPC_RMID, nullptr);
    if (refused) {
        shmdt(memory);
        segment_ = 0;
        return false;
    }
    pixels_ = static_cast<std::uint8_t*>(memory);
    return true;
}

void X11Canvas::release() {
    if (segment_ != 0) {
        connection_.x->xcb_shm_detach(connection_.raw, segment_);
        shmdt(pixels_);
    }
    segment_ = 0;
    own_.reset();
    pixels_ = nullptr;
    size_ = {};
}

void X11Canvas::show(xcb_window_t window, xcb_gcontext_t gc, std::int16_t left, std::int16_t top) const {
    if (pixels_ == nullptr) return;
    if (segment_ == 0) {
        putRows(window, gc, left, top);
        return;
    }
    const auto width = static_cast<std::uint16_t>(size_.width);
    const auto height = static_cast<std::uint16_t>(size_.height);
    connection_.x->xcb_shm_put_image(connection_.raw, window, gc, width, height, 0, 0, width, height, left,
                                     top, connection_.screen->root_depth, XCB_IMAGE_FORMAT_Z_PIXMAP, 0,
                                     segment_, 0);
    connection_.synchronise();  // the server has read them
}

// As many rows at once as a request holds.
void X11Canvas::putRows(xcb_window_t window, xcb_gcontext_t gc, std::int16_t left, std::int16_t top) const {
    constexpr std::size_t kRequestHead = 64;
    const std::size_t rowBytes = std::size_t{size_.width} * 4;
    const std::size_t request =
        std::size_t{connection_.x->xcb_get_maximum_request_length(connection_.raw)} * 4;
    if (request <= kRequestHead) return;  // the connection is lost
    const std::size_t most = request - kRequestHead;
    const auto rows = static_cast<std::uint32_t>(std::max<std::size_t>(1, most / rowBytes));
    for (std::uint32_t y = 0; y < size_.height; y += rows) {
        const std::uint32_t count = std::min(rows, size_.height - y);
        connection_.x->xcb_put_image(
            connection_.raw, XCB_IMAGE_FORMAT_Z_PIXMAP, window, gc, static_cast<std::uint16_t>(size_.width),
            static_cast<std::uint16_t>(count), left,
            static_cast<std::int16_t>(top + static_cast<std::int32_t>(y)), 0, connection_.screen->root_depth,
            static_cast<std::uint32_t>(count * rowBytes), pixels_ + y * rowBytes);
    }
}

}  // namespace tavra::platform
