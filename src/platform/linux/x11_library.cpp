#include "platform/linux/x11_library.h"

#include <dlfcn.h>

#include <mutex>

#include "base/never_destroyed.h"

namespace tavra::platform {
namespace {

struct Loaded {
    X11Library functions;
    Status status;

    Loaded() : status(load()) {}

  private:
    template <typename Function>
    static bool look(void* library, const char* name, Function& function) {
        function = reinterpret_cast<Function>(dlsym(library, name));
        return function != nullptr;
    }

    Status load() {
        void* const core = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
        if (core == nullptr) return Status(error::kModuleNotFound);
        bool complete = true;
#define TAVRA_LOOK(name) complete = look(core, #name, functions.name) && complete;
        TAVRA_XCB_FUNCTIONS(TAVRA_LOOK)
#undef TAVRA_LOOK
        if (!complete) return Status(error::kOperationNotFound);
        loadShm();
        return Status();
    }

    // Pictures go without it, slower.
    void loadShm() {
        void* const shm = dlopen("libxcb-shm.so.0", RTLD_NOW | RTLD_LOCAL);
        if (shm == nullptr) return;
        functions.shmId = static_cast<xcb_extension_t*>(dlsym(shm, "xcb_shm_id"));
        functions.hasShm = functions.shmId != nullptr;
#define TAVRA_LOOK(name) functions.hasShm = look(shm, #name, functions.name) && functions.hasShm;
        TAVRA_XCB_SHM_FUNCTIONS(TAVRA_LOOK)
#undef TAVRA_LOOK
    }
};

}  // namespace

Status loadX11(const X11Library*& library) {
    static const Loaded loaded;
    library = &loaded.functions;
    return loaded.status;
}

xcb_connection_t* connectX11(const X11Library& library, int* screen) {
    static NeverDestroyed<std::mutex> oneAtATime;  // threads may connect until the end
    const std::lock_guard lock(oneAtATime.get());
    return library.xcb_connect(nullptr, screen);
}

}  // namespace tavra::platform
