#include "platform/unbuffered_file.h"

#include <windows.h>

#include <utility>

#include "platform/last_error.h"

namespace tavra::platform {

struct UnbufferedFile::Native {
    HANDLE handle = INVALID_HANDLE_VALUE;
    HANDLE written = nullptr;  // event of the write in flight
    OVERLAPPED place{};
    DWORD asked = 0;
    bool inFlight = false;

    ~Native() {
        (void)wait();
        if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
        if (written != nullptr) CloseHandle(written);
    }

    Status wait() {
        if (!std::exchange(inFlight, false)) return {};
        DWORD done = 0;
        if (!GetOverlappedResult(handle, &place, &done, TRUE)) return Status(GetLastError());
        return done == asked ? Status() : failWith(error::kWriteFault);
    }
};

UnbufferedFile::UnbufferedFile() = default;
UnbufferedFile::~UnbufferedFile() = default;
UnbufferedFile::UnbufferedFile(UnbufferedFile&& other) noexcept = default;
UnbufferedFile& UnbufferedFile::operator=(UnbufferedFile&& other) noexcept = default;

Status UnbufferedFile::create(const std::u16string& name) {
    auto native = std::make_unique<Native>();
    native->written = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (native->written == nullptr) return Status(GetLastError());
    native->handle =
        CreateFileW(reinterpret_cast<const wchar_t*>(name.c_str()), GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS,
                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_NO_BUFFERING | FILE_FLAG_OVERLAPPED, nullptr);
    if (native->handle == INVALID_HANDLE_VALUE) return Status(GetLastError());
    native_ = std::move(native);
    return {};
}

Status UnbufferedFile::startWrite(std::uint64_t position, const void* data, std::size_t size) {
    TAVRA_RETURN_IF_ERROR(native_->wait());
    native_->place = {};
    native_->place.Offset = static_cast<DWORD>(position);
    native_->place.OffsetHigh = static_cast<DWORD>(position >> 32);
    native_->place.hEvent = native_->written;
    native_->asked = static_cast<DWORD>(size);
    ResetEvent(native_->written);
    // Also a write that has ended at once is waited for.
    if (!WriteFile(native_->handle, data, native_->asked, nullptr, &native_->place) &&
        GetLastError() != ERROR_IO_PENDING) {
        return Status(GetLastError());
    }
    native_->inFlight = true;
    return {};
}

Status UnbufferedFile::wait() {
    return native_ ? native_->wait() : Status();
}

Status UnbufferedFile::close() {
    if (!native_) return {};
    const Status written = native_->wait();
    const bool closed = CloseHandle(std::exchange(native_->handle, INVALID_HANDLE_VALUE));
    const Status result = !written.ok() ? written : closed ? Status() : Status(GetLastError());
    native_.reset();
    return result;
}

}  // namespace tavra::platform
