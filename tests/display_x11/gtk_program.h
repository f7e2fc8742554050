// What an application made with GTK 3 does that gives a place in its window to the preview: a widget that it
// paints itself, and to the right of it an area with an X window of its own.
//
// One thread, the first that makes one: GTK is initialised there with the first program, on the server that
// DISPLAY names, and stays with both until the process ends. GTK's headers do not get out of here, since they
// bring macros of Xlib with names of everyday words.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>

#include "platform/rectangle.h"

// As GTK itself declares it.
using GtkWidget = struct _GtkWidget;
using GtkAllocation = struct _cairo_rectangle_int;
using GdkEvent = union _GdkEvent;
using cairo_t = struct _cairo;

namespace tavra::test {

class GtkProgram {
  public:
    static constexpr int kLeft = 30, kTop = 20;  // of the window on the screen
    static constexpr std::uint32_t kBesideWidth = 24;
    static constexpr std::uint32_t kAreaColor = 0x802040;  // where nobody draws over it

    explicit GtkProgram(platform::Size area);
    ~GtkProgram();
    GtkProgram(const GtkProgram&) = delete;
    GtkProgram& operator=(const GtkProgram&) = delete;

    // Null: GTK does not start, or its window is gone.
    xcb_window_t areaWindow() const;
    // Changes the window so that the area gets this size.
    void resize(platform::Size area);
    void paintBeside(std::uint32_t color);  // 0x00RRGGBB
    // Has GTK paint its whole window. False: it does not.
    bool repaintAll();
    void hide();
    void show();
    void destroyWindow();
    // Called by GTK with each size that the area gets, and with each button that goes down or up in it.
    std::function<void(platform::Size)> onAreaSized;
    std::function<void(bool pressed, double x, double y)> onAreaButton;

    // Runs GTK's main loop until something is the case, which is looked at again and again. False: it took
    // too long.
    static bool runUntil(const std::function<bool()>& done);

  private:
    static int drawBeside(GtkWidget* widget, cairo_t* context, void* self);
    static int drawArea(GtkWidget* widget, cairo_t* context, void* self);
    static void sizeArea(GtkWidget* widget, GtkAllocation* allocation, void* self);
    static int useButton(GtkWidget* widget, GdkEvent* event, void* self);

    GtkWidget* window_ = nullptr;
    GtkWidget* beside_ = nullptr;
    GtkWidget* area_ = nullptr;
    std::uint32_t besideColor_ = 0;
    std::uint64_t areaPaintings_ = 0;
};

}  // namespace tavra::test
