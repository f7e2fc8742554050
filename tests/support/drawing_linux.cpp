#include <cairo/cairo.h>
#include <dlfcn.h>

#include "support/drawing.h"

namespace tavra::test {
namespace {

template <typename Function>
Function* look(void* library, const char* name) {
    return reinterpret_cast<Function*>(dlsym(library, name));
}

}  // namespace

bool fillRectangle(TavraDC dc, const Rectangle& rectangle, const Color& color) {
    void* const library = dlopen("libcairo.so.2", RTLD_NOW | RTLD_NOLOAD);
    if (library == nullptr) return false;
    auto* const context = static_cast<cairo_t*>(dc);
    look<decltype(cairo_set_source_rgb)>(library, "cairo_set_source_rgb")(
        context, color.red / 255.0, color.green / 255.0, color.blue / 255.0);
    look<decltype(cairo_rectangle)>(library, "cairo_rectangle")(context, rectangle.x, rectangle.y,
                                                                rectangle.width, rectangle.height);
    look<decltype(cairo_fill)>(library, "cairo_fill")(context);
    const bool good = look<decltype(cairo_status)>(library, "cairo_status")(context) == CAIRO_STATUS_SUCCESS;
    dlclose(library);
    return good;
}

}  // namespace tavra::test
