#include "platform/page_memory.h"

#include <sys/mman.h>

#include <fstream>
#include <string>

namespace tavra::platform {

Status PageBlock::allocate(std::size_t size) {
    free();
    if (size == 0) return Status(error::kOutOfMemory);
    void* const pages =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (pages == MAP_FAILED) return Status(error::kOutOfMemory);
    data_ = static_cast<std::uint8_t*>(pages);
    size_ = size;
    return {};
}

void PageBlock::free() {
    if (data_ != nullptr) munmap(data_, size_);
    data_ = nullptr;
    size_ = 0;
}

std::uint64_t freePhysicalMemory() {
    std::ifstream memory("/proc/meminfo");
    std::string name, unit;
    std::uint64_t kibibytes = 0;
    while (memory >> name >> kibibytes) {
        if (name == "MemAvailable:") return kibibytes * 1024;
        std::getline(memory, unit);
    }
    return 0;
}

}  // namespace tavra::platform
