#include "platform/unbuffered_file.h"

#include <fcntl.h>
#include <linux/aio_abi.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/last_error.h"
#include "platform/text.h"

namespace tavra::platform {
namespace {

Status systemFailure(int errnoValue) {
    return failWith(errorFromErrno(errnoValue));
}

// What the C library has no functions for (io_submit(2)).
int setUpWrites(unsigned count, aio_context_t* context) {
    return static_cast<int>(syscall(SYS_io_setup, count, context));
}
int submitWrite(aio_context_t context, iocb* request) {
    return static_cast<int>(syscall(SYS_io_submit, context, 1, &request));
}
int awaitWrite(aio_context_t context, io_event* event) {
    return static_cast<int>(syscall(SYS_io_getevents, context, 1, 1, event, nullptr));
}

}  // namespace

struct UnbufferedFile::Native {
    int descriptor = -1;
    bool direct = false;
    aio_context_t context = 0;  // 0: the kernel has none for us, writes are plain ones
    iocb request{};
    bool inFlight = false;
    Status plainResult;  // of a write that went the ordinary way

    ~Native() {
        (void)wait();
        if (context != 0) syscall(SYS_io_destroy, context);
        if (descriptor >= 0) ::close(descriptor);
    }

    // File systems may refuse the alignment only at the write: then the cache serves.
    bool leaveDirect() {
        if (!std::exchange(direct, false)) return false;
        const int flags = fcntl(descriptor, F_GETFL);
        return flags >= 0 && fcntl(descriptor, F_SETFL, flags & ~O_DIRECT) == 0;
    }

    Status writePlainly(std::uint64_t position, const std::uint8_t* data, std::size_t size) {
        while (size > 0) {
            const ssize_t done = ::pwrite(descriptor, data, size, static_cast<off_t>(position));
            if (done < 0 && (errno == EINTR || (errno == EINVAL && leaveDirect()))) continue;
            if (done < 0) return systemFailure(errno);
            if (done == 0) return failWith(error::kWriteFault);
            // What is left of a short write may start anywhere.
            if (static_cast<std::size_t>(done) < size) leaveDirect();
            data += done;
            position += static_cast<std::uint64_t>(done);
            size -= static_cast<std::size_t>(done);
        }
        return {};
    }

    bool start(std::uint64_t position, const void* data, std::size_t size) {
        if (context == 0) return false;
        request = {};
        request.aio_lio_opcode = IOCB_CMD_PWRITE;
        request.aio_fildes = static_cast<std::uint32_t>(descriptor);
        request.aio_buf = reinterpret_cast<std::uintptr_t>(data);
        request.aio_nbytes = size;
        request.aio_offset = static_cast<std::int64_t>(position);
        inFlight = submitWrite(context, &request) == 1;
        return inFlight;
    }

    Status wait() {
        if (!inFlight) return std::exchange(plainResult, Status());
        io_event event{};
        while (awaitWrite(context, &event) < 0 && errno == EINTR) {
        }
        inFlight = false;
        const std::int64_t done = event.res;
        if (done == static_cast<std::int64_t>(request.aio_nbytes)) return {};
        if (done < 0 && done != -EINVAL) return systemFailure(static_cast<int>(-done));
        // Part of it, or an alignment that the file system does not take: the rest the ordinary way.
        const std::uint64_t written = done < 0 ? 0 : static_cast<std::uint64_t>(done);
        leaveDirect();
        return writePlainly(static_cast<std::uint64_t>(request.aio_offset) + written,
                            reinterpret_cast<const std::uint8_t*>(request.aio_buf) + written,
                            request.aio_nbytes - written);
    }
};

UnbufferedFile::UnbufferedFile() = default;
UnbufferedFile::~UnbufferedFile() = default;
UnbufferedFile::UnbufferedFile(UnbufferedFile&& other) noexcept = default;
UnbufferedFile& UnbufferedFile::operator=(UnbufferedFile&& other) noexcept = default;

Status UnbufferedFile::create(const std::u16string& name) {
    const std::optional<std::string> narrow = toNarrowExactly(name);
    if (!narrow) return failWith(error::kInvalidName);
    auto native = std::make_unique<Native>();
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    native->descriptor = ::open(narrow->c_str(), kFlags | O_DIRECT, 0666);
    native->direct = native->descriptor >= 0;
    if (!native->direct && errno == EINVAL) native->descriptor = ::open(narrow->c_str(), kFlags, 0666);
    if (native->descriptor < 0) return systemFailure(errno);
    if (setUpWrites(1, &native->context) != 0) native->context = 0;
    native_ = std::move(native);
    return {};
}

Status UnbufferedFile::startWrite(std::uint64_t position, const void* data, std::size_t size) {
    TAVRA_RETURN_IF_ERROR(native_->wait());
    if (native_->start(position, data, size)) return {};
    native_->plainResult = native_->writePlainly(position, static_cast<const std::uint8_t*>(data), size);
    return {};
}

Status UnbufferedFile::wait() {
    return native_ ? native_->wait() : Status();
}

Status UnbufferedFile::close() {
    if (!native_) return {};
    const Status written = native_->wait();
    const int closed = ::close(std::exchange(native_->descriptor, -1));
    const int closeErrno = errno;
    native_.reset();
    if (!written.ok()) return written;
    return closed == 0 ? Status() : systemFailure(closeErrno);
}

}  // namespace tavra::platform
