#include "platform/last_error.h"

#include <cerrno>

namespace tavra::platform {
namespace {

thread_local std::uint32_t threadLastError = 0;

}  // namespace

std::uint32_t lastSystemError() {
    return threadLastError;
}

void setLastSystemError(std::uint32_t code) {
    threadLastError = code;
}

Status failWith(std::uint32_t code) {
    threadLastError = code;
    return Status(code);
}

std::uint32_t errorFromErrno(int errnoValue) {
    switch (errnoValue) {
        case 0: return 0;
        case ENOENT: return 2;
        case ENOTDIR: return 3;
        case EMFILE:
        case ENFILE: return 4;
        case EACCES:
        case EPERM:
        case EISDIR: return 5;
        case EBADF: return 6;
        case EAGAIN:
        case ENOMEM: return 8;
        case EROFS: return 19;
        case EIO: return 29;
        case ETXTBSY: return 32;
        case EBUSY: return 170;
        case EINVAL: return 87;
        case ENOSPC:
        case EDQUOT: return 112;
        case ENAMETOOLONG: return 206;
        case EFBIG: return 223;
        case EEXIST: return 183;
        case ENODEV:
        case ENXIO: return 1167;
        case ETIMEDOUT: return 1460;
        default: return 31;
    }
}

void setLastErrorFromErrno(int errnoValue) {
    threadLastError = errorFromErrno(errnoValue);
}

}  // namespace tavra::platform
