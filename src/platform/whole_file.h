// Files that are read at once and replaced at once: settings and what else must survive a crash.
//
// The name is wide, as in the interface. Any thread; two that replace one file leave the bytes of one of
// them. Who builds the new bytes from the old ones takes a FileUpdateLock first, so that the work of nobody
// is lost.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/status.h"

namespace tavra::platform {

// What is larger is no text that a person has, and would take the memory of all others.
inline constexpr std::uint64_t kMostFileBytes = 1u << 30;

// Everything in the file. 2 or 3: there is no such file; 5: it may not be read, or is no plain file; 223: it
// is larger than kMostFileBytes. Throws std::bad_alloc.
Status readWholeFile(const std::u16string& name, std::vector<std::uint8_t>& bytes);

// Makes the file, or replaces what it holds: whoever reads it, and whatever ends the process or the machine,
// finds either all of the old bytes or all of the new ones. They are written to a temporary file in the same
// folder and on the disk before that one takes the name. A file that is marked read-only stays (5), and on
// Windows one that somebody has had open for a second (5 or 32). Where the name is a link, the file that it
// leads to is made or replaced, and the link stays; on Windows such a file that is not there yet is empty for
// a moment.
Status replaceWholeFile(const std::u16string& name, std::span<const std::uint8_t> bytes);

// Holds up everybody else who takes the lock of this file, in this process or another one, for as long as the
// object lives.
//
// Linux: a lock on the file's folder, which leaves no file behind; one on a folder that cannot be locked (it
// is not there or not readable, or its file system has no locks) is free at once. Windows: one lock for all
// files, among the processes of a session.
class FileUpdateLock {
  public:
    explicit FileUpdateLock(const std::u16string& name);
    ~FileUpdateLock();
    FileUpdateLock(const FileUpdateLock&) = delete;
    FileUpdateLock& operator=(const FileUpdateLock&) = delete;

    // 170: somebody else has held it for five seconds.
    Status status() const { return status_; }

  private:
    Status status_;
#if defined(_WIN32)
    void* mutex_ = nullptr;
#else
    int folder_ = -1;
#endif
};

// Whether a failure of readWholeFile says that there is nothing to read.
constexpr bool saysNoSuchFile(Status status) {
    return status.code() == 2 || status.code() == 3;
}

}  // namespace tavra::platform
