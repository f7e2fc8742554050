#include "platform/unbuffered_file.h"

#include <fcntl.h>
#include <linux/aio_abi.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/last_error.h"
#include "platform/linux/file_claim.h"
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
bool awaitWrite(aio_context_t context, io_event* event) {
    long events;
    do {
        events = syscall(SYS_io_getevents, context, 1, 1, event, nullptr);
    } while (events < 0 && errno == EINTR);
    return events == 1;
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
        leaveAsynchronous();
        if (descriptor >= 0) ::close(descriptor);
    }

    // Ends with the kernel's asynchronous writes; returns when none is in flight any more.
    void leaveAsynchronous() {
        if (context != 0) syscall(SYS_io_destroy, std::exchange(context, 0));
    }

    // From now on through the cache, which takes any alignment. False if that is so already.
    bool leaveDirect() {
        if (!std::exchange(direct, false)) return false;
        const int flags = fcntl(descriptor, F_GETFL);
        return flags >= 0 && fcntl(descriptor, F_SETFL, flags & ~O_DIRECT) == 0;
    }

    Status writePlainly(std::uint64_t position, const std::uint8_t* data, std::size_t size) {
        while (size > 0) {
            const ssize_t done = ::pwrite(descriptor, data, size, static_cast<off_t>(position));
            const int failure = done < 0 ? errno : 0;
            // A disk of larger sectors refuses the alignment only here.
            if (failure == EINTR || (failure == EINVAL && leaveDirect())) continue;
            if (failure != 0) return systemFailure(failure);
            if (done == 0) return failWith(error::kWriteFault);
            if (static_cast<std::size_t>(done) < size) leaveDirect();  // the rest may start anywhere
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
        if (!std::exchange(inFlight, false)) return std::exchange(plainResult, Status());
        io_event event{};
        if (!awaitWrite(context, &event)) leaveAsynchronous();  // nothing known of it: all of it again
        const std::int64_t done = event.res;
        if (done == static_cast<std::int64_t>(request.aio_nbytes)) return {};
        if (done < 0 && done != -EINVAL) return systemFailure(static_cast<int>(-done));
        // Only a part, or refused: the rest the ordinary way, which tells an alignment that the disk does not
        // take from any other refusal.
        const std::uint64_t written = done < 0 ? 0 : static_cast<std::uint64_t>(done);
        if (written > 0) leaveDirect();
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
    Status opened = createClaimed(narrow->c_str(), O_WRONLY | O_DIRECT, native->descriptor);
    native->direct = opened.ok();
    // A file system that cannot bypass the cache says so here.
    if (opened == Status(error::kInvalidArgument)) {
        opened = createClaimed(narrow->c_str(), O_WRONLY, native->descriptor);
    }
    TAVRA_RETURN_IF_ERROR(opened);
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
