#include "platform/linux/file_claim.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

constexpr std::uint32_t kSharingViolation = 32;

bool isPlainFile(int descriptor) {
    struct stat about {};
    return fstat(descriptor, &about) == 0 && S_ISREG(about.st_mode);
}

bool isTaken(int descriptor, int kind) {
    return flock(descriptor, kind | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

// Emptied behind the claim alone, not by open(2): it may hold what somebody else writes.
Status claimAndEmpty(int descriptor) {
    if (!isPlainFile(descriptor)) return {};
    if (isTaken(descriptor, LOCK_EX)) return failWith(kSharingViolation);
    return ftruncate(descriptor, 0) == 0 ? Status() : failWith(errorFromErrno(errno));
}

}  // namespace

Status createClaimed(const char* name, int flags, int& descriptor) {
    int opened;
    do {
        opened = ::open(name, flags | O_CREAT | O_CLOEXEC, 0666);
    } while (opened < 0 && errno == EINTR);
    if (opened < 0) return failWith(errorFromErrno(errno));
    const Status claimed = claimAndEmpty(opened);
    if (!claimed.ok()) {
        ::close(opened);
        return claimed;
    }
    descriptor = opened;
    return {};
}

void claimForReading(int descriptor) {
    if (isPlainFile(descriptor)) static_cast<void>(isTaken(descriptor, LOCK_SH));
}

bool isClaimed(const char* name) {
    const int descriptor = ::open(name, O_RDONLY | O_NONBLOCK | O_CLOEXEC);  // waits for nobody at a pipe
    if (descriptor < 0) return false;
    const bool claimed = isPlainFile(descriptor) && isTaken(descriptor, LOCK_EX);
    ::close(descriptor);
    return claimed;
}

}  // namespace tavra::platform
