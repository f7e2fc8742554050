// The same from C++, and tells which of the installed libraries the system's loader has picked.
#include <dlfcn.h>
#include <tavra/tavra_api.h>
#include <tavra/tavra_host.h>

#include <cstdio>

int main() {
    const TavraWindow receiver = TavraHost_CreateReceiver();
    Dl_info library{};
    if (receiver == nullptr) return 1;
    TavraHost_DestroyReceiver(receiver);
    if (dladdr(reinterpret_cast<const void*>(&TavraHost_CreateReceiver), &library) == 0) return 2;
    std::printf("consumer in C++: good, with %s\n", library.dli_fname);
    return 0;
}
