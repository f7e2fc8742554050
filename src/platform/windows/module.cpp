// The library's entry point, and the word that all processes share.
#include "platform/module.h"

#include <windows.h>

#include <cstdint>

namespace {

// The one thing that processes share. Eight bytes in a section of their own, which the linker marks as
// shared.
__attribute__((section("TAVRA_Shared"), shared)) volatile std::int64_t sharedModule = 0;

}  // namespace

namespace tavra::platform {

void* moduleHandle() {
    return reinterpret_cast<void*>(sharedModule);
}

}  // namespace tavra::platform

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        // One step, because two processes may load the library at the same time.
        InterlockedCompareExchange64(&sharedModule, reinterpret_cast<std::int64_t>(module), 0);
    }
    return TRUE;
}
