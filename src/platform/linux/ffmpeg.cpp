#include "platform/linux/ffmpeg.h"

#include <dlfcn.h>

#include <mutex>

namespace tavra::platform {
namespace {

#define TAVRA_TEXT_OF(number) #number
#define TAVRA_LIBRARY(name, major) "lib" name ".so." TAVRA_TEXT_OF(major)

constexpr const char* kAvutil = TAVRA_LIBRARY("avutil", LIBAVUTIL_VERSION_MAJOR);
constexpr const char* kAvcodec = TAVRA_LIBRARY("avcodec", LIBAVCODEC_VERSION_MAJOR);
constexpr const char* kAvformat = TAVRA_LIBRARY("avformat", LIBAVFORMAT_VERSION_MAJOR);
constexpr const char* kSwscale = TAVRA_LIBRARY("swscale", LIBSWSCALE_VERSION_MAJOR);

template <typename Function>
bool find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

bool loadAll(Ffmpeg& functions) {
    void* const avutil = dlopen(kAvutil, RTLD_NOW | RTLD_LOCAL);
    void* const avcodec = dlopen(kAvcodec, RTLD_NOW | RTLD_LOCAL);
    void* const avformat = dlopen(kAvformat, RTLD_NOW | RTLD_LOCAL);
    void* const swscale = dlopen(kSwscale, RTLD_NOW | RTLD_LOCAL);
    if (avutil == nullptr || avcodec == nullptr || avformat == nullptr || swscale == nullptr) return false;
    bool found = true;
#define TAVRA_FIND(library, name) found = find(library, #name, functions.name) && found;
#define TAVRA_FIND_AVUTIL(name) TAVRA_FIND(avutil, name)
#define TAVRA_FIND_AVCODEC(name) TAVRA_FIND(avcodec, name)
#define TAVRA_FIND_AVFORMAT(name) TAVRA_FIND(avformat, name)
#define TAVRA_FIND_SWSCALE(name) TAVRA_FIND(swscale, name)
    TAVRA_AVUTIL_FUNCTIONS(TAVRA_FIND_AVUTIL)
    TAVRA_AVCODEC_FUNCTIONS(TAVRA_FIND_AVCODEC)
    TAVRA_AVFORMAT_FUNCTIONS(TAVRA_FIND_AVFORMAT)
    TAVRA_SWSCALE_FUNCTIONS(TAVRA_FIND_SWSCALE)
    return found;
}

}  // namespace

const Ffmpeg* loadFfmpeg() {
    static std::mutex mutex;
    static Ffmpeg functions;
    static bool loaded = false;
    const std::lock_guard lock(mutex);
    if (!loaded) {
        const bool broughtInByOthers = dlopen(kAvutil, RTLD_NOW | RTLD_NOLOAD) != nullptr;
        loaded = loadAll(functions);
        // The libraries write to standard error, which is the application's. Where it uses them itself, how
        // much they write is its own matter.
        if (loaded && !broughtInByOthers) functions.av_log_set_level(AV_LOG_QUIET);
    }
    return loaded ? &functions : nullptr;
}

}  // namespace tavra::platform
