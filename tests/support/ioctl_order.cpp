#include "support/ioctl_order.h"

#ifdef __SANITIZE_THREAD__

#include <dlfcn.h>
#include <sys/ioctl.h>

#include <atomic>
#include <cstdarg>

namespace {

std::atomic<unsigned> callers;
std::atomic<unsigned> answers;

}  // namespace

namespace tavra::test {

void beginDeviceSide() {
    callers.load(std::memory_order_acquire);
}
void endDeviceSide() {
    answers.fetch_add(1, std::memory_order_release);
}

}  // namespace tavra::test

extern "C" __attribute__((visibility("default"))) int ioctl(int file, unsigned long request, ...) noexcept {
    using Function = int (*)(int, unsigned long, void*);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "ioctl"));
    std::va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    callers.fetch_add(1, std::memory_order_release);
    const int result = next(file, request, argument);
    answers.load(std::memory_order_acquire);
    return result;
}

#else

namespace tavra::test {

void beginDeviceSide() {}
void endDeviceSide() {}

}  // namespace tavra::test

#endif
