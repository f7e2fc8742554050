#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "support/process.h"

namespace tavra::test {
namespace {

// The system's table of all handles, as it is told.
struct HandleEntry {
    void* object;
    ULONG_PTR process, handle;
    ACCESS_MASK access;
    USHORT creator, type;
    ULONG attributes, reserved;
};
struct HandleTable {
    ULONG_PTR count, reserved;
    HandleEntry entries[1];
};

}  // namespace

// The run-time library keeps an environment of its own beside the system's; this sets both.
void setEnvironment(const char* name, const std::string& value) {
    _putenv_s(name, value.c_str());
}

// Counted in the table, because Wine does not answer GetProcessHandleCount.
std::size_t openHandles() {
    constexpr ULONG kHandleTable = 64;
    constexpr LONG kTooSmall = static_cast<LONG>(0xC0000004);
    using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
    static const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<std::uint64_t> memory(4096);
    LONG result = kTooSmall;
    while ((result = query(kHandleTable, memory.data(), static_cast<ULONG>(memory.size() * 8), nullptr)) ==
           kTooSmall) {
        memory.resize(2 * memory.size());
    }
    if (result != 0) std::abort();
    const auto* const table = reinterpret_cast<const HandleTable*>(memory.data());
    const HandleEntry* const first = table->entries;
    return static_cast<std::size_t>(std::count_if(first, first + table->count, [](const HandleEntry& entry) {
        return entry.process == GetCurrentProcessId();
    }));
}

const std::size_t kLateHandles = 16;

}  // namespace tavra::test
