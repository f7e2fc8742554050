#include "platform/firmware_image.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFolderVariable = "TAVRA_FIRMWARE_DIR";
constexpr std::uint32_t kEndOfFile = 38;

// Where the images are installed, seen from the folder of the library: the installed tree can be moved.
constexpr const char* kFolderFromLibrary = TAVRA_FIRMWARE_FROM_LIBRARY;

class File {
  public:
    // Not waiting for whoever writes to it, should it be a pipe.
    explicit File(const fs::path& name)
        : descriptor_(::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~File() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }
    bool isPlain() const {
        struct stat about {};
        return ::fstat(descriptor_, &about) == 0 && S_ISREG(about.st_mode);
    }

    // Bytes read: fewer than asked at the end of the file only; -1 with errno.
    ssize_t read(std::span<char> bytes) const {
        std::size_t have = 0;
        while (have < bytes.size()) {
            const ssize_t got = ::read(descriptor_, bytes.data() + have, bytes.size() - have);
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) return -1;
            if (got == 0) break;
            have += static_cast<std::size_t>(got);
        }
        return static_cast<ssize_t>(have);
    }

  private:
    int descriptor_;
};

// An empty path when the system does not tell where this code was loaded from.
fs::path installedFolder() {
    Dl_info library{};
    if (dladdr(reinterpret_cast<const void*>(&readFirmwareText), &library) == 0) return {};
    std::error_code failed;
    const fs::path file = fs::canonical(library.dli_fname, failed);
    return failed ? fs::path() : file.parent_path() / kFolderFromLibrary;
}

Status read(const File& file, std::span<char> text, std::uint32_t& size) {
    if (!file.isPlain()) return failWith(error::kAccessDenied);
    const ssize_t got = file.read(text);
    if (got < 0) return failWith(errorFromErrno(errno));
    if (got == 0) return failWith(kEndOfFile);
    if (static_cast<std::size_t>(got) == text.size()) return failWith(error::kOutOfMemory);
    size = static_cast<std::uint32_t>(got);
    return Status();
}

bool isMissing(int error) {
    return error == ENOENT || error == ENOTDIR;
}

}  // namespace

Status readFirmwareText(std::uint16_t productType, std::span<char> text, std::uint32_t& size) {
    const std::string name = std::to_string(productType) + ".hex";
    if (const char* const folder = secure_getenv(kFolderVariable); folder != nullptr && *folder != '\0') {
        const File file(fs::path(folder) / name);
        if (file.isOpen()) return read(file, text, size);
        if (!isMissing(errno)) return failWith(errorFromErrno(errno));
    }
    const fs::path folder = installedFolder();
    if (folder.empty()) return failWith(errorFromErrno(ENOENT));
    const File file(folder / name);
    return file.isOpen() ? read(file, text, size) : failWith(errorFromErrno(errno));
}

}  // namespace tavra::platform
