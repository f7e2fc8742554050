#include "thread_name.h"

#include <windows.h>

#include <string>

namespace tavra::usbd {

// Names are a service of newer systems: found at run time, done without where it is missing.
void nameThisThread(const char* name) {
    using SetDescription = HRESULT(WINAPI*)(HANDLE, const wchar_t*);
    static const auto setDescription = reinterpret_cast<SetDescription>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
    if (setDescription == nullptr) return;
    const std::string narrow(name);
    setDescription(GetCurrentThread(), std::wstring(narrow.begin(), narrow.end()).c_str());
}

}  // namespace tavra::usbd
