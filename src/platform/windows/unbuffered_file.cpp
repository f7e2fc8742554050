#include "platform/unbuffered_file.h"

#include <windows.h>

#include <utility>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

constexpr DWORD kAlignment = 2048;            // of positions and sizes
constexpr std::size_t kLargest = 0x40000000;  // of one write; the system's sizes have 32 bits

// Whether the cache can be bypassed with our alignment. A disk of larger sectors would refuse the writes.
bool takesUnbuffered(const wchar_t* name) {
    wchar_t root[MAX_PATH + 1] = {};
    DWORD sectors = 0, sectorBytes = 0, freeClusters = 0, clusters = 0;
    return !GetVolumePathNameW(name, root, MAX_PATH) ||
           !GetDiskFreeSpaceW(root, &sectors, &sectorBytes, &freeClusters, &clusters) || sectorBytes == 0 ||
           kAlignment % sectorBytes == 0;
}

}  // namespace

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
    const auto* const wide = reinterpret_cast<const wchar_t*>(name.c_str());
    const DWORD access = FILE_FLAG_OVERLAPPED | (takesUnbuffered(wide) ? FILE_FLAG_NO_BUFFERING : 0);
    native->handle = CreateFileW(wide, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                 CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL | access, nullptr);
    if (native->handle == INVALID_HANDLE_VALUE) return Status(GetLastError());
    native_ = std::move(native);
    return {};
}

Status UnbufferedFile::startWrite(std::uint64_t position, const void* data, std::size_t size) {
    TAVRA_RETURN_IF_ERROR(native_->wait());
    if (size > kLargest) return failWith(error::kInvalidArgument);
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
