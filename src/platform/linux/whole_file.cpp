#include "platform/whole_file.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "platform/last_error.h"
#include "platform/linux/busy_wait.h"
#include "platform/text.h"

namespace tavra::platform {
namespace {

constexpr std::uint32_t kAccessDenied = 5;
constexpr std::uint32_t kInvalidName = 123;
constexpr std::uint32_t kBusy = 170;
constexpr std::uint32_t kFileTooLarge = 223;
constexpr int kMostLinks = 40;         // one behind the other, as the system follows them
constexpr int kTemporaryNames = 1000;  // tried before giving up; a killed process leaves its own behind
constexpr mode_t kAnyoneMayWrite = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr mode_t kPermissions = 07777;

Status lastFailure() {
    return failWith(errorFromErrno(errno));
}

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool valid() const { return number_ >= 0; }
    int get() const { return number_; }
    bool close() {
        const int number = number_;
        number_ = -1;
        return ::close(number) == 0;
    }

  private:
    int number_;
};

// With its slash; empty: the present one.
std::string folderOf(const std::string& name) {
    return name.substr(0, name.rfind('/') + 1);  // no slash: npos + 1 is 0
}

// The file behind links, so that a link to it stays one, also where that file is not there yet.
std::string behindLinks(std::string name) {
    char target[PATH_MAX];
    for (int i = 0; i < kMostLinks; ++i) {
        const ssize_t length = ::readlink(name.c_str(), target, sizeof target);
        if (length <= 0) break;  // it is no link, or not there
        const std::string_view led(target, static_cast<std::size_t>(length));
        name = led.front() == '/' ? std::string(led) : folderOf(name).append(led);
    }
    return name;
}

// A file that has just been made, removed again unless it has taken its place.
class TemporaryFile {
  public:
    TemporaryFile(const std::string& folder, const struct stat* replaced) : descriptor_(make(folder)) {
        if (valid() && replaced != nullptr) takeOver(*replaced);
    }
    ~TemporaryFile() {
        if (!name_.empty()) ::unlink(name_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool valid() const { return descriptor_.valid(); }

    bool write(std::span<const std::uint8_t> bytes) {
        while (!bytes.empty()) {
            const ssize_t written = ::write(descriptor_.get(), bytes.data(), bytes.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) return false;
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        }
        return ::fsync(descriptor_.get()) == 0 && descriptor_.close();
    }

    bool takeThePlaceOf(const std::string& name) {
        if (::rename(name_.c_str(), name.c_str()) != 0) return false;
        name_.clear();
        return true;
    }

  private:
    int make(const std::string& folder) {
        static std::atomic<unsigned> count{0};
        for (int i = 0; i < kTemporaryNames; ++i) {
            std::string name =
                folder + ".tavra-" + std::to_string(::getpid()) + "-" + std::to_string(count++) + ".tmp";
            const int made = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (made >= 0) name_ = std::move(name);
            if (made >= 0 || errno != EEXIST) return made;
        }
        return -1;
    }

    // Owner and permissions of the file that goes. An owner that cannot be kept is the user's own from now
    // on.
    void takeOver(const struct stat& replaced) {
        if (::fchown(descriptor_.get(), replaced.st_uid, replaced.st_gid) != 0) errno = 0;
        if (::fchmod(descriptor_.get(), replaced.st_mode & kPermissions) != 0) errno = 0;
    }

    std::string name_;
    Descriptor descriptor_;
};

// Whether the file that is there may be replaced. Its folder alone does not say so: a file that is marked
// read-only could be replaced by name.
Status checkReplaceable(const std::string& name, const struct stat& present) {
    if (!S_ISREG(present.st_mode) || (present.st_mode & kAnyoneMayWrite) == 0) return failWith(kAccessDenied);
    return ::access(name.c_str(), W_OK) == 0 ? Status() : lastFailure();
}

int openFolder(const std::string& folder) {
    return ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

// The new name is on the disk when the folder is. A file system that cannot do that has no better to offer.
void flushFolder(const std::string& folder) {
    const Descriptor descriptor(openFolder(folder));
    if (descriptor.valid() && ::fsync(descriptor.get()) != 0) errno = 0;
}

}  // namespace

Status readWholeFile(const std::u16string& name, std::vector<std::uint8_t>& bytes) {
    bytes.clear();
    const std::optional<std::string> narrow = toNarrowExactly(name);
    if (!narrow) return failWith(kInvalidName);
    // A pipe would let the open wait for somebody who writes.
    const Descriptor file(::open(narrow->c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat present {};
    if (!file.valid() || ::fstat(file.get(), &present) != 0) return lastFailure();
    if (!S_ISREG(present.st_mode)) return failWith(kAccessDenied);
    if (static_cast<std::uint64_t>(present.st_size) > kMostFileBytes) return failWith(kFileTooLarge);
    bytes.resize(static_cast<std::size_t>(present.st_size));
    std::size_t have = 0;
    while (have < bytes.size()) {
        const ssize_t got = ::read(file.get(), bytes.data() + have, bytes.size() - have);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return lastFailure();
        if (got == 0) break;  // it has been cut meanwhile
        have += static_cast<std::size_t>(got);
    }
    bytes.resize(have);
    return Status();
}

Status replaceWholeFile(const std::u16string& name, std::span<const std::uint8_t> bytes) {
    const std::optional<std::string> narrow = toNarrowExactly(name);
    if (!narrow) return failWith(kInvalidName);
    const std::string target = behindLinks(*narrow);
    struct stat present {};
    const bool exists = ::stat(target.c_str(), &present) == 0;
    if (!exists && errno != ENOENT) return lastFailure();
    if (exists) TAVRA_RETURN_IF_ERROR(checkReplaceable(target, present));

    const std::string folder = folderOf(target);
    TemporaryFile file(folder, exists ? &present : nullptr);
    if (!file.valid() || !file.write(bytes) || !file.takeThePlaceOf(target)) return lastFailure();
    flushFolder(folder);
    return Status();
}

FileUpdateLock::FileUpdateLock(const std::u16string& name) {
    const std::optional<std::string> narrow = toNarrowExactly(name);
    if (!narrow) return;  // nor will there be such a file
    folder_ = openFolder(folderOf(behindLinks(*narrow)));
    BusyWait wait;
    while (folder_ >= 0 && ::flock(folder_, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) return;
        if (!wait.again()) {
            status_ = failWith(kBusy);
            return;
        }
    }
}

FileUpdateLock::~FileUpdateLock() {
    if (folder_ >= 0) ::close(folder_);
}

}  // namespace tavra::platform
