#include "display_x11/gtk_program.h"

#include <gdk/gdkx.h>
#include <gtk/gtk.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace tavra::test {
namespace {

constexpr std::chrono::seconds kPatience{60};

// GTK as it comes, whatever the desktop of the user is set to, and without services of a session.
bool startGtk() {
    setenv("GDK_BACKEND", "x11", 1);
    setenv("GSETTINGS_BACKEND", "memory", 1);
    setenv("GIO_USE_VFS", "local", 1);
    setenv("GTK_THEME", "Adwaita", 1);
    setenv("NO_AT_BRIDGE", "1", 1);
    for (const char* const name : {"GDK_SCALE", "GDK_DPI_SCALE", "GTK_CSD", "GTK_MODULES", "GTK_DEBUG"})
        unsetenv(name);
    return gtk_init_check(nullptr, nullptr) != 0;
}

void fill(cairo_t* context, std::uint32_t color) {
    const auto part = [color](int shift) { return (color >> shift & 0xFF) / 255.0; };
    cairo_set_source_rgb(context, part(16), part(8), part(0));
    cairo_paint(context);
}

int sideOf(std::uint32_t side) {
    return static_cast<int>(side);
}

}  // namespace

GtkProgram::GtkProgram(platform::Size area) {
    static const bool started = startGtk();
    if (!started) return;
    window_ = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GtkWidget* const box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    beside_ = gtk_drawing_area_new();
    area_ = gtk_drawing_area_new();
    gtk_widget_set_size_request(beside_, sideOf(kBesideWidth), -1);
    gtk_box_pack_start(GTK_BOX(box), beside_, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(box), area_, TRUE, TRUE, 0);
    gtk_container_add(GTK_CONTAINER(window_), box);
    g_signal_connect(beside_, "draw", G_CALLBACK(drawBeside), this);
    g_signal_connect(area_, "draw", G_CALLBACK(drawArea), this);
    g_signal_connect(area_, "size-allocate", G_CALLBACK(sizeArea), this);
    gtk_widget_add_events(area_, GDK_BUTTON_PRESS_MASK | GDK_BUTTON_RELEASE_MASK);
    g_signal_connect(area_, "button-press-event", G_CALLBACK(useButton), this);
    g_signal_connect(area_, "button-release-event", G_CALLBACK(useButton), this);
    gtk_window_set_default_size(GTK_WINDOW(window_), sideOf(kBesideWidth + area.width), sideOf(area.height));
    gtk_window_move(GTK_WINDOW(window_), kLeft, kTop);
    gtk_widget_show_all(window_);
    gdk_window_ensure_native(gtk_widget_get_window(area_));
    gdk_display_sync(gtk_widget_get_display(window_));
}

GtkProgram::~GtkProgram() {
    onAreaSized = nullptr;
    onAreaButton = nullptr;
    destroyWindow();
}

xcb_window_t GtkProgram::areaWindow() const {
    if (area_ == nullptr) return 0;
    return static_cast<xcb_window_t>(gdk_x11_window_get_xid(gtk_widget_get_window(area_)));
}

void GtkProgram::resize(platform::Size area) {
    gtk_window_resize(GTK_WINDOW(window_), sideOf(kBesideWidth + area.width), sideOf(area.height));
}

void GtkProgram::paintBeside(std::uint32_t color) {
    besideColor_ = color;
    gtk_widget_queue_draw(beside_);
}

bool GtkProgram::repaintAll() {
    const std::uint64_t before = areaPaintings_;
    gtk_widget_queue_draw(window_);
    if (!runUntil([&] { return areaPaintings_ != before; })) return false;
    gdk_display_sync(gtk_widget_get_display(window_));
    return true;
}

void GtkProgram::hide() {
    gtk_widget_hide(window_);
}

void GtkProgram::show() {
    gtk_widget_show(window_);
}

void GtkProgram::destroyWindow() {
    if (window_ == nullptr) return;
    GdkDisplay* const display = gtk_widget_get_display(window_);
    gtk_widget_destroy(window_);
    gdk_display_sync(display);
    window_ = beside_ = area_ = nullptr;
}

bool GtkProgram::runUntil(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    for (;;) {
        while (gtk_events_pending() != 0) gtk_main_iteration_do(FALSE);
        if (done()) return true;
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));  // between two looks, not for anything
    }
}

int GtkProgram::drawBeside(GtkWidget*, cairo_t* context, void* self) {
    fill(context, static_cast<GtkProgram*>(self)->besideColor_);
    return TRUE;
}

int GtkProgram::drawArea(GtkWidget*, cairo_t* context, void* self) {
    ++static_cast<GtkProgram*>(self)->areaPaintings_;
    fill(context, kAreaColor);
    return TRUE;
}

void GtkProgram::sizeArea(GtkWidget*, GtkAllocation* allocation, void* self) {
    const auto& program = *static_cast<GtkProgram*>(self);
    if (!program.onAreaSized) return;
    program.onAreaSized(
        {static_cast<std::uint32_t>(allocation->width), static_cast<std::uint32_t>(allocation->height)});
}

int GtkProgram::useButton(GtkWidget*, GdkEvent* event, void* self) {
    const auto& program = *static_cast<GtkProgram*>(self);
    if (!program.onAreaButton) return FALSE;
    program.onAreaButton(event->type == GDK_BUTTON_PRESS, event->button.x, event->button.y);
    return TRUE;
}

}  // namespace tavra::test
