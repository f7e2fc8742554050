#include "platform/page_memory.h"

#include <windows.h>

namespace tavra::platform {

Status PageBlock::allocate(std::size_t size) {
    free();
    void* const pages = VirtualAlloc(nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    if (pages == nullptr) return Status(error::kOutOfMemory);
    data_ = static_cast<std::uint8_t*>(pages);
    size_ = size;
    return {};
}

void PageBlock::free() {
    if (data_ != nullptr) VirtualFree(data_, 0, MEM_RELEASE);
    data_ = nullptr;
    size_ = 0;
}

std::uint64_t freePhysicalMemory() {
    MEMORYSTATUSEX memory{};
    memory.dwLength = sizeof memory;
    return GlobalMemoryStatusEx(&memory) ? memory.ullAvailPhys : 0;
}

}  // namespace tavra::platform
