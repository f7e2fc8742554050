// Lets allocations through operator new fail on order. A test program that uses this also lists
// support/failing_allocations.cpp, which replaces the operators for the whole program.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavra::test {

// While it lives, this thread's allocations of `bytes` bytes or more fail.
class FailAllocationsFrom {
  public:
    explicit FailAllocationsFrom(std::size_t bytes);
    ~FailAllocationsFrom();
    FailAllocationsFrom(const FailAllocationsFrom&) = delete;
    FailAllocationsFrom& operator=(const FailAllocationsFrom&) = delete;

    // How many have failed so far.
    static std::size_t failures();
};

}  // namespace tavra::test
