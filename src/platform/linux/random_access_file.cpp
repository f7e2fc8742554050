#include "platform/random_access_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/last_error.h"
#include "platform/linux/file_claim.h"
#include "platform/text.h"

namespace tavra::platform {
namespace {

Status systemFailure() {
    return failWith(errorFromErrno(errno));
}

Status openNative(const std::u16string& name, int flags, std::intptr_t& native) {
    const std::optional<std::string> narrow = toNarrowExactly(name);
    if (!narrow) return failWith(error::kInvalidName);
    int descriptor;
    do {
        descriptor = ::open(narrow->c_str(), flags | O_CLOEXEC);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) return systemFailure();
    native = descriptor;
    return {};
}

}  // namespace

Status RandomAccessFile::create(const std::u16string& name) {
    (void)close();
    const std::optional<std::string> narrow = toNarrowExactly(name);
    if (!narrow) return failWith(error::kInvalidName);
    int descriptor = -1;
    TAVRA_RETURN_IF_ERROR(createClaimed(narrow->c_str(), O_RDWR, descriptor));
    native_ = descriptor;
    return {};
}

Status RandomAccessFile::openForReading(const std::u16string& name) {
    (void)close();
    // A pipe would be waited for without the flag, which means nothing to a file.
    TAVRA_RETURN_IF_ERROR(openNative(name, O_RDONLY | O_NONBLOCK, native_));
    struct stat about {};
    const bool known = fstat(static_cast<int>(native_), &about) == 0;
    if (known && !S_ISDIR(about.st_mode) && !S_ISFIFO(about.st_mode)) {
        claimForReading(static_cast<int>(native_));
        return {};
    }
    (void)close();
    return failWith(error::kAccessDenied);
}

Status RandomAccessFile::openForWriting(const std::u16string& name) {
    (void)close();
    return openNative(name, O_RDWR, native_);
}

Status RandomAccessFile::write(std::uint64_t position, const void* data, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    while (size > 0) {
        const ssize_t done = ::pwrite(static_cast<int>(native_), bytes, size, static_cast<off_t>(position));
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) return systemFailure();
        if (done == 0) return failWith(error::kWriteFault);
        bytes += done;
        position += static_cast<std::uint64_t>(done);
        size -= static_cast<std::size_t>(done);
    }
    return {};
}

Status RandomAccessFile::read(std::uint64_t position, void* data, std::size_t size, std::size_t& got) {
    auto* const bytes = static_cast<std::uint8_t*>(data);
    got = 0;
    while (got < size) {
        const ssize_t done =
            ::pread(static_cast<int>(native_), bytes + got, size - got, static_cast<off_t>(position + got));
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) return systemFailure();
        if (done == 0) break;
        got += static_cast<std::size_t>(done);
    }
    return {};
}

Status RandomAccessFile::size(std::uint64_t& bytes) const {
    struct stat about {};
    if (fstat(static_cast<int>(native_), &about) != 0) return systemFailure();
    bytes = static_cast<std::uint64_t>(about.st_size);
    return {};
}

bool RandomAccessFile::isNamed(const std::u16string& name) const {
    const std::optional<std::string> narrow = toNarrowExactly(name);
    struct stat mine {};
    struct stat named {};
    return narrow && fstat(static_cast<int>(native_), &mine) == 0 && stat(narrow->c_str(), &named) == 0 &&
           mine.st_dev == named.st_dev && mine.st_ino == named.st_ino;
}

Status RandomAccessFile::close() {
    if (!isOpen()) return {};
    return ::close(static_cast<int>(std::exchange(native_, kClosed))) == 0 ? Status() : systemFailure();
}

}  // namespace tavra::platform
