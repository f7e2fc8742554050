#include "support/failing_allocations.h"

#include <cstdlib>
#include <new>

namespace tavra::test {
namespace {

thread_local std::size_t smallestThatFails = SIZE_MAX;
thread_local std::size_t failureCount = 0;

void* allocate(std::size_t bytes) noexcept {
    if (bytes >= smallestThatFails) {
        ++failureCount;
        return nullptr;
    }
    return std::malloc(bytes == 0 ? 1 : bytes);
}

void* allocateOrThrow(std::size_t bytes) {
    void* const memory = allocate(bytes);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

FailAllocationsFrom::FailAllocationsFrom(std::size_t bytes) {
    failureCount = 0;
    smallestThatFails = bytes;
}

FailAllocationsFrom::~FailAllocationsFrom() {
    smallestThatFails = SIZE_MAX;
}

std::size_t FailAllocationsFrom::failures() {
    return failureCount;
}

}  // namespace tavra::test

void* operator new(std::size_t bytes) {
    return tavra::test::allocateOrThrow(bytes);
}
void* operator new[](std::size_t bytes) {
    return tavra::test::allocateOrThrow(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return tavra::test::allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return tavra::test::allocate(bytes);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
