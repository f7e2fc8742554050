// A library made of the same platform objects and version resource as the real one, with a way to ask it.
// Tests of what processes share use it, so that they do not disturb tests that have the real library loaded
// at the same time.
#include "platform/library_version.h"
#include "platform/module.h"

extern "C" __declspec(dllexport) void* probeModuleHandle() {
    return tavra::platform::moduleHandle();
}

extern "C" __declspec(dllexport) void probeLibraryVersion(tavra::platform::LibraryVersion* version) {
    *version = tavra::platform::libraryVersion();
}
