// Loaded ahead of libtavra into the command: a software trigger that comes back when its frame has been
// through all callbacks already, as it may on a busy machine.
#include <dlfcn.h>

#include <chrono>
#include <semaphore>

#include "tavra/tavra_api.h"

namespace {

std::binary_semaphore frameHasPassed{0};

void onImage(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, void*,
             std::uint32_t*) {
    frameHasPassed.release();
}

}  // namespace

TavraBool Tavra_TriggerSoftware(TavraHandle handle, std::uint32_t selector) {
    const auto trigger =
        reinterpret_cast<decltype(&Tavra_TriggerSoftware)>(dlsym(RTLD_NEXT, "Tavra_TriggerSoftware"));
    std::uint32_t identifier = 0;
    if (trigger == nullptr || !Tavra_AddPreviewBitmapCallback(handle, onImage, nullptr, &identifier))
        return 0;
    const TavraBool triggered = trigger(handle, selector);
    const bool passed = frameHasPassed.try_acquire_for(std::chrono::seconds(60));
    Tavra_RemovePreviewBitmapCallback(handle, identifier);
    return triggered != 0 && passed ? 1 : 0;
}
