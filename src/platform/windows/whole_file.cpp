#include "platform/whole_file.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <utility>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

constexpr int kTemporaryNames = 1000;  // tried before giving up; a killed process leaves its own behind
constexpr std::size_t kMostInOneCall = 1u << 30;
constexpr DWORD kLongestWaitMs = 5000;
constexpr int kMostMoves = 100;  // a second, with what lies between them
constexpr DWORD kBetweenMovesMs = 10;
constexpr const wchar_t* kUpdateMutex = L"Local\\tavra-file-update";

const wchar_t* systemName(const std::u16string& name) {
    static_assert(sizeof(wchar_t) == sizeof(char16_t));
    return reinterpret_cast<const wchar_t*>(name.c_str());
}

Status lastFailure() {
    return Status(GetLastError());
}

class FileHandle {
  public:
    FileHandle() = default;
    explicit FileHandle(HANDLE handle) : handle_(handle) {}
    ~FileHandle() { close(); }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    bool valid() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }
    void set(HANDLE handle) { handle_ = handle; }
    bool close() {
        if (!valid()) return true;
        const bool closed = CloseHandle(handle_) != 0;
        handle_ = INVALID_HANDLE_VALUE;
        return closed;
    }

  private:
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

// The file behind links, so that a link to it stays one. A file that is not there yet is made, empty, because
// only a file that is there can be asked for its name. Any other name stays as it is.
Status followLinks(std::u16string& name) {
    const DWORD attributes = GetFileAttributesW(systemName(name));
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return Status();
    }
    const FileHandle file(CreateFileW(systemName(name), FILE_READ_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_ALWAYS, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!file.valid()) return lastFailure();
    std::u16string target(MAX_PATH, u'\0');
    for (;;) {
        const auto room = static_cast<DWORD>(target.size());
        const DWORD length = GetFinalPathNameByHandleW(file.get(), reinterpret_cast<wchar_t*>(target.data()),
                                                       room, FILE_NAME_NORMALIZED);
        if (length == 0) return lastFailure();
        target.resize(length);  // with its zero if there was no room
        if (length < room) break;
    }
    name = std::move(target);
    return Status();
}

// With its separator; empty: the present one.
std::u16string folderOf(const std::u16string& name) {
    return name.substr(0, name.find_last_of(u"\\/:") + 1);  // none: npos + 1 is 0
}

std::u16string digits(std::uint32_t number) {
    std::u16string text;
    do {
        text.insert(text.begin(), static_cast<char16_t>(u'0' + number % 10));
        number /= 10;
    } while (number != 0);
    return text;
}

// A file that has just been made, removed again unless it has taken its place.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::u16string& folder) {
        static std::atomic<std::uint32_t> count{0};
        for (int i = 0; i < kTemporaryNames; ++i) {
            name_ = folder + u".tavra-" + digits(GetCurrentProcessId()) + u"-" + digits(count++) + u".tmp";
            file_.set(CreateFileW(systemName(name_), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
            if (file_.valid() || GetLastError() != ERROR_FILE_EXISTS) break;
        }
        if (!file_.valid()) name_.clear();
    }
    ~TemporaryFile() {
        if (name_.empty()) return;
        const DWORD reason = GetLastError();
        file_.close();
        DeleteFileW(systemName(name_));
        SetLastError(reason);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool valid() const { return file_.valid(); }

    bool write(std::span<const std::uint8_t> bytes) {
        while (!bytes.empty()) {
            DWORD written = 0;
            const auto part = static_cast<DWORD>(std::min(bytes.size(), kMostInOneCall));
            if (WriteFile(file_.get(), bytes.data(), part, &written, nullptr) == 0) return false;
            bytes = bytes.subspan(written);
        }
        return FlushFileBuffers(file_.get()) != 0 && file_.close();
    }

    // The system replaces no file that somebody has open, as who loads it or looks for viruses has for a
    // moment.
    bool takeThePlaceOf(const std::u16string& name) {
        for (int i = 1; !moveTo(name); ++i) {
            const DWORD reason = GetLastError();
            const bool inUse = reason == ERROR_ACCESS_DENIED || reason == ERROR_SHARING_VIOLATION;
            if (!inUse || i == kMostMoves) return false;
            Sleep(kBetweenMovesMs);
        }
        name_.clear();
        return true;
    }

  private:
    bool moveTo(const std::u16string& name) const {
        return MoveFileExW(systemName(name_), systemName(name),
                           MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    }

    std::u16string name_;
    FileHandle file_;
};

}  // namespace

Status readWholeFile(const std::u16string& name, std::vector<std::uint8_t>& bytes) {
    bytes.clear();
    const FileHandle file(CreateFileW(systemName(name), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    if (!file.valid()) return lastFailure();
    if (GetFileType(file.get()) != FILE_TYPE_DISK) return failWith(ERROR_ACCESS_DENIED);
    if (GetFileSizeEx(file.get(), &size) == 0) return lastFailure();
    if (static_cast<std::uint64_t>(size.QuadPart) > kMostFileBytes) return failWith(ERROR_FILE_TOO_LARGE);
    bytes.resize(static_cast<std::size_t>(size.QuadPart));
    std::size_t have = 0;
    while (have < bytes.size()) {
        DWORD got = 0;
        const auto part = static_cast<DWORD>(std::min(bytes.size() - have, kMostInOneCall));
        if (ReadFile(file.get(), bytes.data() + have, part, &got, nullptr) == 0) return lastFailure();
        if (got == 0) break;  // it has been cut meanwhile
        have += got;
    }
    bytes.resize(have);
    return Status();
}

Status replaceWholeFile(const std::u16string& wanted, std::span<const std::uint8_t> bytes) {
    std::u16string name = wanted;
    TAVRA_RETURN_IF_ERROR(followLinks(name));
    const DWORD attributes = GetFileAttributesW(systemName(name));
    if (attributes != INVALID_FILE_ATTRIBUTES &&
        (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) != 0) {
        return failWith(ERROR_ACCESS_DENIED);
    }
    TemporaryFile file(folderOf(name));
    if (!file.valid() || !file.write(bytes) || !file.takeThePlaceOf(name)) return lastFailure();
    return Status();
}

// One that cannot be made, as by a process of fewer rights than the first one's, holds nobody up.
FileUpdateLock::FileUpdateLock(const std::u16string&) : mutex_(CreateMutexW(nullptr, FALSE, kUpdateMutex)) {
    if (mutex_ == nullptr || WaitForSingleObject(mutex_, kLongestWaitMs) != WAIT_TIMEOUT) return;
    CloseHandle(mutex_);
    mutex_ = nullptr;
    status_ = failWith(ERROR_BUSY);
}

FileUpdateLock::~FileUpdateLock() {
    if (mutex_ == nullptr) return;
    ReleaseMutex(mutex_);
    CloseHandle(mutex_);
}

}  // namespace tavra::platform
