#include "platform/linux/loaded_modules.h"

#include <dlfcn.h>
#include <link.h>

namespace tavra::platform {

std::set<std::string> loadedModules() {
    std::set<std::string> modules;
    dl_iterate_phdr(
        [](dl_phdr_info* module, std::size_t, void* list) {
            static_cast<std::set<std::string>*>(list)->insert(module->dlpi_name);
            return 0;
        },
        &modules);
    return modules;
}

void keepLoadedSince(const std::set<std::string>& before) {
    for (const std::string& module : loadedModules()) {
        if (before.count(module) != 0) continue;
        void* const kept = dlopen(module.c_str(), RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
        if (kept != nullptr) dlclose(kept);
    }
}

}  // namespace tavra::platform
