// Files that are read and written at any position: movies.
//
// Linux: pread and pwrite. Windows: file handles. A file belongs to the object that opened it and closes
// itself; one thread at a time. Positions are bytes from the start and 64 bits wide.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "base/status.h"

namespace tavra::platform {

class RandomAccessFile {
  public:
    RandomAccessFile() = default;
    ~RandomAccessFile() { (void)close(); }
    RandomAccessFile(RandomAccessFile&& other) noexcept : native_(std::exchange(other.native_, kClosed)) {}
    RandomAccessFile& operator=(RandomAccessFile&& other) noexcept {
        RandomAccessFile taken(std::move(other));
        std::swap(native_, taken.native_);
        return *this;
    }
    RandomAccessFile(const RandomAccessFile&) = delete;
    RandomAccessFile& operator=(const RandomAccessFile&) = delete;

    // Each fails with the system's error and leaves this object closed. The name is wide; a name that the
    // system cannot express fails with 123. Child processes do not inherit the file.
    //
    // Makes it, or empties it if it exists. It is this object's alone then: 32 where somebody writes or reads
    // it. Linux: among those that take locks, as this library does; and it may be read all the same.
    Status create(const std::u16string& name);
    Status openForReading(const std::u16string& name);  // an existing file; folders and pipes hold no bytes
    Status openForWriting(const std::u16string& name);  // an existing file, its content kept

    bool isOpen() const { return native_ != kClosed; }

    // Writes all of it. Fails with the system's error (112: the disk is full); what was written by then
    // stays.
    Status write(std::uint64_t position, const void* data, std::size_t size);

    // Reads up to `size` bytes; `got` is less at the file's end alone.
    Status read(std::uint64_t position, void* data, std::size_t size, std::size_t& got);

    Status size(std::uint64_t& bytes) const;

    // Whether the name leads to this file, through links as well. Windows: never, as a file that is open to
    // be read is not made anew there.
    bool isNamed(const std::u16string& name) const;

    // Fails where the system tells only now that a write did not go through. Closed it is in any case.
    Status close();

  private:
    static constexpr std::intptr_t kClosed = -1;

    std::intptr_t native_ = kClosed;  // file descriptor or HANDLE
};

}  // namespace tavra::platform
