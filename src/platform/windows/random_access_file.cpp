#include "platform/random_access_file.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

HANDLE handleOf(std::intptr_t native) {
    return reinterpret_cast<HANDLE>(native);
}

Status systemFailure() {
    return Status(GetLastError());
}

Status openNative(const std::u16string& name, DWORD access, DWORD sharing, DWORD disposition,
                  std::intptr_t& native) {
    const HANDLE handle = CreateFileW(reinterpret_cast<const wchar_t*>(name.c_str()), access, sharing,
                                      nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return systemFailure();
    native = reinterpret_cast<std::intptr_t>(handle);
    return {};
}

OVERLAPPED at(std::uint64_t position) {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(position);
    place.OffsetHigh = static_cast<DWORD>(position >> 32);
    return place;
}

// One transfer of the system takes a 32-bit size.
DWORD piece(std::size_t size) {
    return static_cast<DWORD>(std::min<std::size_t>(size, 0x40000000));
}

}  // namespace

Status RandomAccessFile::create(const std::u16string& name) {
    (void)close();
    return openNative(name, GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS, native_);
}

Status RandomAccessFile::openForReading(const std::u16string& name) {
    (void)close();
    return openNative(name, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, native_);
}

Status RandomAccessFile::openForWriting(const std::u16string& name) {
    (void)close();
    return openNative(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING,
                      native_);
}

Status RandomAccessFile::write(std::uint64_t position, const void* data, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    while (size > 0) {
        OVERLAPPED place = at(position);
        DWORD done = 0;
        if (!WriteFile(handleOf(native_), bytes, piece(size), &done, &place)) return systemFailure();
        if (done == 0) return failWith(error::kWriteFault);
        bytes += done;
        position += done;
        size -= done;
    }
    return {};
}

Status RandomAccessFile::read(std::uint64_t position, void* data, std::size_t size, std::size_t& got) {
    auto* const bytes = static_cast<std::uint8_t*>(data);
    got = 0;
    while (got < size) {
        OVERLAPPED place = at(position + got);
        DWORD done = 0;
        if (!ReadFile(handleOf(native_), bytes + got, piece(size - got), &done, &place)) {
            if (GetLastError() == ERROR_HANDLE_EOF) break;
            return systemFailure();
        }
        if (done == 0) break;
        got += done;
    }
    return {};
}

Status RandomAccessFile::size(std::uint64_t& bytes) const {
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(handleOf(native_), &size)) return systemFailure();
    bytes = static_cast<std::uint64_t>(size.QuadPart);
    return {};
}

bool RandomAccessFile::isNamed(const std::u16string&) const {
    return false;
}

Status RandomAccessFile::close() {
    if (!isOpen()) return {};
    return CloseHandle(handleOf(std::exchange(native_, kClosed))) ? Status() : systemFailure();
}

}  // namespace tavra::platform
