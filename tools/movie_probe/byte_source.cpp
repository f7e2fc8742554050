#include "movie_probe/byte_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace tavra::tool {
namespace {

[[noreturn]] void throwErrno(int error, const std::filesystem::path& path) {
    throw std::system_error(error, std::generic_category(), path.string());
}

}  // namespace

std::size_t MemorySource::read(std::uint64_t position, std::span<std::uint8_t> target) {
    if (position >= bytes_.size()) return 0;
    const auto rest = bytes_.subspan(static_cast<std::size_t>(position));
    const std::size_t count = std::min(rest.size(), target.size());
    std::copy_n(rest.begin(), count, target.begin());
    return count;
}

FileSource::FileSource(const std::filesystem::path& path)
    : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) throwErrno(errno, path);
    struct stat status {};
    int error = fstat(descriptor_, &status) != 0 ? errno : 0;
    if (error == 0 && S_ISDIR(status.st_mode)) error = EISDIR;
    if (error == 0 && !S_ISREG(status.st_mode)) error = ESPIPE;
    if (error != 0) {
        close(descriptor_);
        throwErrno(error, path);
    }
    size_ = static_cast<std::uint64_t>(status.st_size);
}

FileSource::~FileSource() {
    close(descriptor_);
}

std::size_t FileSource::read(std::uint64_t position, std::span<std::uint8_t> target) {
    std::size_t done = 0;
    while (done < target.size() && position + done < size_) {
        const ssize_t got = pread(descriptor_, target.data() + done, target.size() - done,
                                  static_cast<off_t>(position + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw std::system_error(errno, std::generic_category(), "cannot read the file");
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

bool ByteReader::get(std::uint64_t position, std::span<std::uint8_t> target) {
    if (position < start_ || position - start_ > length_ || length_ - (position - start_) < target.size()) {
        start_ = position;
        length_ = source_.read(position, page_);
        if (length_ < target.size()) return false;
    }
    std::copy_n(page_.begin() + static_cast<std::ptrdiff_t>(position - start_), target.size(),
                target.begin());
    return true;
}

}  // namespace tavra::tool
