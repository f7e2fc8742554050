#include "media/jpeg/std_file_output.h"

namespace tavra {

JpegError CStdFileOutput2::Close() {
    file_ = nullptr;
    return JpegError::None;
}

JpegError CStdFileOutput2::Write(const void* buffer, std::size_t size, std::size_t& written) {
    written = 0;
    if (size == 0) return JpegError::None;
    if (file_ == nullptr) return JpegError::FileIo;
    written = std::fwrite(buffer, 1, size, file_);
    return written == size ? JpegError::None : JpegError::FileIo;
}

}  // namespace tavra
