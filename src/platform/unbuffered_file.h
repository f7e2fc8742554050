// Files that are written past the system's cache, one write in flight: movies at the rate of the camera.
//
// Linux: O_DIRECT with the kernel's asynchronous writes; where the file system, the disk or the kernel does
// not take either, the same bytes go the ordinary way. Windows: overlapped, and without buffering unless the
// disk has sectors of more than 2048 bytes. A file belongs to the object that opened it; one thread at a
// time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "base/status.h"

namespace tavra::platform {

class UnbufferedFile {
  public:
    UnbufferedFile();
    ~UnbufferedFile();  // waits for the write in flight
    UnbufferedFile(UnbufferedFile&& other) noexcept;
    UnbufferedFile& operator=(UnbufferedFile&& other) noexcept;

    // Makes the file, or empties it if it exists; others may read and write it, but on Linux none makes it
    // anew (32, as where somebody writes or reads it by then). Fails with the system's error.
    Status create(const std::u16string& name);

    // Waits for the write before it, then starts this one. Fails with the code of either. Position and size
    // are multiples of 2048, the size is at most 1 GiB; the memory starts at a page and stays unchanged until
    // the write has ended.
    Status startWrite(std::uint64_t position, const void* data, std::size_t size);

    // Waits for the write in flight; its result, success if there is none. A write that the system took only
    // in part is completed here.
    Status wait();

    // Waits, then closes. Fails with the code of the write, or of the close.
    Status close();

  private:
    struct Native;
    std::unique_ptr<Native> native_;
};

}  // namespace tavra::platform
