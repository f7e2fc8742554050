// The pixels of a window, in memory that the X server shares where it can. Of the window thread only.
#pragma once

#include <xcb/shm.h>

#include <cstdint>
#include <memory>

#include "platform/linux/pixel_paint.h"
#include "platform/linux/x11_connection.h"

namespace tavra::platform {

class X11Canvas {
  public:
    explicit X11Canvas(const X11Connection& connection) : connection_(connection) {}
    ~X11Canvas() { release(); }
    X11Canvas(const X11Canvas&) = delete;
    X11Canvas& operator=(const X11Canvas&) = delete;

    // Black pixels, unless there are so many already. False: no memory, there are none then.
    bool resize(Size size);
    PixelArea area() const { return {pixels_, std::size_t{size_.width} * 4, size_.width, size_.height, 4}; }

    // Puts all pixels on the window, the first at (left, top). They may be changed again when this returns.
    void show(xcb_window_t window, xcb_gcontext_t gc, std::int16_t left, std::int16_t top) const;

  private:
    bool allocateShared(std::size_t bytes);
    void release();
    void putRows(xcb_window_t window, xcb_gcontext_t gc, std::int16_t left, std::int16_t top) const;

    const X11Connection& connection_;
    Size size_;
    std::uint8_t* pixels_ = nullptr;
    std::unique_ptr<std::uint8_t[]> own_;
    xcb_shm_seg_t segment_ = 0;
};

}  // namespace tavra::platform
