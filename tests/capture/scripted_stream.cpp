#include "capture/scripted_stream.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>

namespace tavra::test {
namespace {

constexpr std::uint64_t kInFlight = 0x103;
constexpr std::uint64_t kCompleted = std::uint64_t{1} << 32;

ScriptedStream* instance = nullptr;
thread_local std::uint32_t lastError = 0;

std::int32_t answer(std::uint32_t code) {
    lastError = code;
    return code == 0 ? 1 : 0;
}

std::uint32_t nextOf(std::deque<std::uint32_t>& script) {
    if (script.empty()) return 0;
    const std::uint32_t code = script.front();
    script.pop_front();
    return code;
}

#if defined(_WIN32)
void signal(std::int64_t event) {
    SetEvent(reinterpret_cast<HANDLE>(event));
}

void clear(std::int64_t event) {
    ResetEvent(reinterpret_cast<HANDLE>(event));
}
#else
void signal(std::int64_t event) {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(static_cast<int>(event), &one, sizeof one);
}

void clear(std::int64_t event) {
    std::uint64_t ignored = 0;
    [[maybe_unused]] const ssize_t got = read(static_cast<int>(event), &ignored, sizeof ignored);
}
#endif

}  // namespace

ScriptedStream::ScriptedStream() {
    instance = this;
}
ScriptedStream::~ScriptedStream() {
    instance = nullptr;
}

platform::UsbAccess ScriptedStream::table(bool withMemory) const {
    platform::UsbAccess usb{};
    usb.getLastError = [] { return lastError; };
    usb.beginRead = [](TavraUsbDevice) { return answer(instance->begin()); };
    usb.endRead = [](TavraUsbDevice) {
        instance->end();
        return answer(0);
    };
    usb.canResumeRead = [](TavraUsbDevice) { return instance->canResume ? 1 : 0; };
    usb.startRead = [](TavraUsbDevice, void* buffer, std::uint32_t size, TavraUsbRead* record) {
        lastError = instance->start({static_cast<std::uint8_t*>(buffer), size, record});
        return 0;
    };
    usb.getReadResult = [](TavraUsbDevice, TavraUsbRead* record, std::uint32_t* transferred,
                           std::int32_t wait) {
        const std::uint32_t status = instance->result(record, *transferred, wait != 0);
        lastError = status & 0xFFFF;
        return status == 0 ? 1 : 0;
    };
    if (withMemory) {
        usb.allocReadMemory = [](TavraUsbDevice, std::size_t size) { return instance->allocate(size); };
        usb.freeReadMemory = [](TavraUsbDevice, void* memory, std::size_t) { instance->release(memory); };
    }
    return usb;
}

void ScriptedStream::completeLocked(std::uint32_t code, const std::vector<std::uint8_t>& bytes) {
    const Read read = inFlight_.front();
    inFlight_.pop_front();
    const std::size_t size = std::min<std::size_t>(bytes.size(), read.size);
    if (size > 0) std::memcpy(read.buffer, bytes.data(), size);
    read.record->transferred = size;
    read.record->status = kCompleted | code;
    signal(read.record->event);
    changed_.notify_all();
}

void ScriptedStream::complete(const std::vector<std::uint8_t>& bytes) {
    const std::lock_guard lock(mutex_);
    completeLocked(0, bytes);
}

// An empty failure is a failure whose code is 0: marked by a bit beside the code.
void ScriptedStream::fail(std::uint32_t code, const std::vector<std::uint8_t>& bytes) {
    const std::lock_guard lock(mutex_);
    completeLocked(code | 0x10000, bytes);
}

template <typename Predicate>
bool ScriptedStream::waitFor(Predicate predicate) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(10), predicate);
}

bool ScriptedStream::waitInFlight(std::size_t count) {
    return waitFor([&] { return inFlight_.size() == count; });
}

bool ScriptedStream::waitStarted(std::size_t count) {
    return waitFor([&] { return started_.size() >= count; });
}

bool ScriptedStream::waitBegun(std::size_t count) {
    return waitFor([&] { return begun_ >= count; });
}

std::vector<ScriptedStream::Read> ScriptedStream::started() const {
    const std::lock_guard lock(mutex_);
    return started_;
}

std::size_t ScriptedStream::inFlight() const {
    const std::lock_guard lock(mutex_);
    return inFlight_.size();
}

std::vector<std::string> ScriptedStream::calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
}

std::uint32_t ScriptedStream::begin() {
    const std::lock_guard lock(mutex_);
    calls_.push_back("begin");
    ++begun_;
    changed_.notify_all();
    return nextOf(beginErrors);
}

void ScriptedStream::end() {
    const std::lock_guard lock(mutex_);
    calls_.push_back("end");
    while (!inFlight_.empty()) completeLocked(995, {});
}

std::uint32_t ScriptedStream::start(const Read& read) {
    const std::lock_guard lock(mutex_);
    const std::uint32_t code = nextOf(startErrors);
    if (code != 0) return code == 0xFFFF ? 0 : code;  // 0xFFFF: success where a read in flight is expected
    clear(read.record->event);
    read.record->status = kInFlight;
    inFlight_.push_back(read);
    started_.push_back(read);
    changed_.notify_all();
    return 997;
}

std::uint32_t ScriptedStream::result(TavraUsbRead* record, std::uint32_t& transferred, bool wait) {
    std::unique_lock lock(mutex_);
    if (wait) changed_.wait(lock, [&] { return record->status != kInFlight; });
    transferred = static_cast<std::uint32_t>(record->transferred);
    return static_cast<std::uint32_t>(record->status);
}

void* ScriptedStream::allocate(std::size_t size) {
    const std::lock_guard lock(mutex_);
    if (memoryRefused) return nullptr;
    calls_.push_back("alloc");
    return std::malloc(size);
}

void ScriptedStream::release(void* memory) {
    const std::lock_guard lock(mutex_);
    calls_.push_back("free");
    if (!inFlight_.empty()) freedEarly_ = true;
    std::free(memory);
}

}  // namespace tavra::test
