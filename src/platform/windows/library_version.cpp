#include "platform/library_version.h"

#include <windows.h>

#include <vector>

#include "platform/module.h"

namespace tavra::platform {
namespace {

// Empty when the file cannot be named.
std::vector<wchar_t> moduleFile(HMODULE module) {
    std::vector<wchar_t> path(MAX_PATH);
    for (;;) {
        const DWORD capacity = static_cast<DWORD>(path.size());
        const DWORD length = GetModuleFileNameW(module, path.data(), capacity);
        if (length == 0) return {};
        if (length < capacity) return path;
        path.resize(path.size() * 2);
    }
}

}  // namespace

LibraryVersion libraryVersion() {
    const auto module = static_cast<HMODULE>(moduleHandle());
    if (module == nullptr) return {};  // the system would take it for the program
    const std::vector<wchar_t> file = moduleFile(module);
    if (file.empty()) return {};
    const DWORD size = GetFileVersionInfoSizeW(file.data(), nullptr);
    std::vector<std::uint8_t> resource(size);
    void* found = nullptr;
    UINT length = 0;
    if (size == 0 || !GetFileVersionInfoW(file.data(), 0, size, resource.data()) ||
        !VerQueryValueW(resource.data(), L"\\", &found, &length) || length < sizeof(VS_FIXEDFILEINFO)) {
        return {};
    }
    const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(found);
    return {fixed.dwFileVersionMS, fixed.dwFileVersionLS, fixed.dwProductVersionMS, fixed.dwProductVersionLS};
}

}  // namespace tavra::platform
