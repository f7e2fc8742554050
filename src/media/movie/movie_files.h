// Where movies are written to and read from: the file system, or a test's stand-in that fails, stalls and
// fills up.
//
// A writer is given one when it is made and keeps the reference. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "base/status.h"
#include "platform/volume.h"

namespace tavra::movie {

// A file with ordinary access at any position (platform/random_access_file.h). One thread at a time.
class MovieFile {
  public:
    virtual ~MovieFile() = default;
    // All of it, or the system's error.
    virtual Status write(std::uint64_t position, const void* data, std::size_t size) = 0;
    virtual Status close() = 0;
};

// A file that is written past the system's cache, one write in flight. One thread at a time.
//
// Positions and sizes are multiples of 2048, the memory starts at a page and stays as it is until the write
// has ended.
class UnbufferedMovieFile {
  public:
    virtual ~UnbufferedMovieFile() = default;
    // Waits for the write before it, then starts this one. Fails with the code of either.
    virtual Status startWrite(std::uint64_t position, const void* data, std::size_t size) = 0;
    // Waits for the write in flight; its result. Nothing in flight: success.
    virtual Status wait() = 0;
    virtual Status close() = 0;
};

class MovieFiles {
  public:
    virtual ~MovieFiles() = default;

    // A new file in place of an old one.
    virtual Status create(const std::u16string& name, std::unique_ptr<MovieFile>& file) = 0;
    virtual Status createUnbuffered(const std::u16string& name,
                                    std::unique_ptr<UnbufferedMovieFile>& file) = 0;
    // An existing file a second time, to write its headers.
    virtual Status openAgain(const std::u16string& name, std::unique_ptr<MovieFile>& file) = 0;

    // The same file's name, which stays the same when the process changes its folder; `name` where the place
    // knows no folders.
    virtual std::u16string lastingName(const std::u16string& name) { return name; }

    // As in platform/volume.h, for the folder that the file stands in.
    virtual Status volumeKind(const std::u16string& fileName, platform::VolumeKind& kind) = 0;
    virtual Status freeBytes(const std::u16string& fileName, std::uint64_t& bytes) = 0;
    virtual Status fileSize(const std::u16string& fileName, std::uint64_t& bytes) = 0;
};

// The file system.
MovieFiles& systemMovieFiles();

}  // namespace tavra::movie
