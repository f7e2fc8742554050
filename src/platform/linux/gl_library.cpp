#include "platform/linux/gl_library.h"

#include <dlfcn.h>

namespace tavra::platform {
namespace {

template <typename Function>
bool look(const GlLoader& loader, void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(loader.look(library, name));
    return function != nullptr;
}

// Windows of an X connection came to EGL as an extension.
template <typename Function>
bool lookExtension(const GlLibrary& library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(library.eglGetProcAddress(name));
    return function != nullptr;
}

}  // namespace

Status loadGl(const GlLoader& loader, GlLibrary& library) {
    void* const egl = loader.open("libEGL.so.1");
    void* const gles = loader.open("libGLESv2.so.2");
    if (egl == nullptr || gles == nullptr) return Status(error::kModuleNotFound);
    bool complete = true;
#define TAVRA_LOOK(name) complete = look(loader, egl, #name, library.name) && complete;
    TAVRA_EGL_FUNCTIONS(TAVRA_LOOK)
#undef TAVRA_LOOK
#define TAVRA_LOOK(name) complete = look(loader, gles, #name, library.name) && complete;
    TAVRA_GLES_FUNCTIONS(TAVRA_LOOK)
#undef TAVRA_LOOK
    complete =
        complete && lookExtension(library, "eglGetPlatformDisplayEXT", library.eglGetPlatformDisplay) &&
        lookExtension(library, "eglCreatePlatformWindowSurfaceEXT", library.eglCreatePlatformWindowSurface);
    return complete ? Status() : Status(error::kOperationNotFound);
}

Status loadGl(const GlLibrary*& library) {
    struct Loaded {
        GlLibrary functions;
        Status status;
        Loaded() {
            const GlLoader system{[](const char* name) { return dlopen(name, RTLD_NOW | RTLD_LOCAL); },
                                  [](void* from, const char* name) { return dlsym(from, name); }};
            status = loadGl(system, functions);
        }
    };
    static const Loaded loaded;
    library = &loaded.functions;
    return loaded.status;
}

}  // namespace tavra::platform
