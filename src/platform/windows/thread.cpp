#include "platform/thread.h"

#include <windows.h>

#include <new>
#include <string>
#include <utility>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

// Names are a service of newer systems: found at run time, done without where it is missing.
void nameThread(HANDLE thread, const char* name) {
    using SetDescription = HRESULT(WINAPI*)(HANDLE, const wchar_t*);
    static const auto setDescription = reinterpret_cast<SetDescription>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
    if (setDescription == nullptr) return;
    const std::string narrow(name);
    setDescription(thread, std::wstring(narrow.begin(), narrow.end()).c_str());
}

}  // namespace

struct Thread::Native {
    HANDLE handle = nullptr;
    std::function<void()> body;
    Event* ended = nullptr;

    static DWORD WINAPI run(void* self) {
        auto& native = *static_cast<Native*>(self);
        native.body();
        native.ended->set();
        return 0;
    }
};

Thread::Thread() = default;

Thread::~Thread() {
    join();
}

Status Thread::start(const char* name, ThreadPriority priority, std::function<void()> body) {
    if (!ended_.valid()) return failWith(error::kOutOfMemory);
    ended_.reset();
    native_.reset(new (std::nothrow) Native{nullptr, std::move(body), &ended_});
    if (!native_) return failWith(error::kOutOfMemory);
    // Suspended at first, so that the body never runs without its priority and name.
    native_->handle = CreateThread(nullptr, 0, &Native::run, native_.get(), CREATE_SUSPENDED, nullptr);
    if (native_->handle == nullptr) {
        const std::uint32_t reason = lastSystemError();
        native_.reset();
        return failWith(reason);
    }
    static_assert(THREAD_PRIORITY_TIME_CRITICAL == 15);
    if (priority == ThreadPriority::TimeCritical) {
        SetThreadPriority(native_->handle, THREAD_PRIORITY_TIME_CRITICAL);
    }
    nameThread(native_->handle, name);
    ResumeThread(native_->handle);
    return Status();
}

bool Thread::exists() const {
    return native_ != nullptr;
}

void Thread::join() {
    if (!native_) return;
    WaitForSingleObject(native_->handle, INFINITE);
    CloseHandle(native_->handle);
    native_.reset();
}

}  // namespace tavra::platform
