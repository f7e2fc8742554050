// Counts what the read path asks of operator new.
#include <pthread.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "libusb_test.h"

namespace {

// Allocations of the two threads of the read path: the one of the test while it says so, and the event
// thread.
std::atomic<unsigned> counted{0};
std::atomic<bool> counting{false};
thread_local bool callerCounts = false;

bool onEventThread() {
    char name[16] = {};
    pthread_getname_np(pthread_self(), name, sizeof name);
    return std::strcmp(name, "tavra-usb") == 0;
}

void* allocate(std::size_t size) {
    if (counting && (callerCounts || onEventThread())) ++counted;
    return std::malloc(size != 0 ? size : 1);
}

}  // namespace

void* operator new(std::size_t size) {
    void* const memory = allocate(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
// Out of line: where only one of the pair is inlined, the compiler takes the two for mismatched.
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace tavra::usbd {
namespace {

TEST_F(OpenCameraTest, AStreamAllocatesNothingAfterItsFirstReads) {
    camera.setBudget(6 * 4096);  // some of the eight wait inside, which must not cost anything either
    const auto reads = makeReads(8);
    callerCounts = true;
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    const auto once = [&](unsigned i) {
        callerCounts = false;
        camera.send(pattern(500, i));
        callerCounts = true;
        Read& read = *reads[i % 8];
        ASSERT_EQ(read.finish(*device), 0u);
        ASSERT_EQ(read.start(*device), 997u);
    };
    for (unsigned i = 0; i < 8; ++i) once(i);
    counting = true;
    for (unsigned i = 8; i < 200; ++i) once(i);
    counting = false;
    EXPECT_EQ(counted, 0u);

    // The counter works: a new slot for a ninth read is an allocation.
    counting = true;
    Read ninth;
    ASSERT_EQ(ninth.start(*device), 997u);
    counting = false;
    EXPECT_GE(counted, 1u);
    callerCounts = false;
}

}  // namespace
}  // namespace tavra::usbd
