#include "support/movie_files_double.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace tavra::test {
namespace {

constexpr std::uint64_t kChunk = 65536;
constexpr std::uint64_t kSector = 2048;
constexpr std::uintptr_t kPage = 4096;
constexpr std::uint64_t kWholeFileLimit = 256 << 20;

constexpr std::uint32_t kFileNotFound = 2;
constexpr std::uint32_t kSharingViolation = 32;

bool allZero(const std::uint8_t* bytes, std::size_t size) {
    return size == 0 || (bytes[0] == 0 && std::memcmp(bytes, bytes + 1, size - 1) == 0);
}

Status statusOf(std::uint32_t code) {
    return Status(code);
}

}  // namespace

// Ordinary access: nobody else may have the file open that was created so.
class MovieFilesDouble::OpenFile final : public movie::MovieFile {
  public:
    OpenFile(MovieFilesDouble& owner, const std::u16string& name, int& handles)
        : owner_(owner), name_(name), handles_(&handles) {
        ++*handles_;
        ++owner_.openFiles_;
    }
    ~OpenFile() override { static_cast<void>(closeHandle()); }

    Status write(std::uint64_t position, const void* data, std::size_t size) override {
        std::unique_lock lock(owner_.mutex_);
        EXPECT_NE(handles_, nullptr) << "write to a closed file";
        Content& content = owner_.files_.at(name_);
        EXPECT_FALSE(content.inFlight) << "ordinary write beside an unbuffered one in flight";
        const std::uint32_t fault = owner_.noteWrite({name_, position, size, false});
        owner_.awaitRelease(lock);
        return fault != 0 ? Status(fault) : owner_.store(content, position, data, size);
    }

    Status close() override {
        EXPECT_NE(handles_, nullptr) << "closed twice";
        return closeHandle();
    }

  private:
    Status closeHandle() {
        const std::lock_guard lock(owner_.mutex_);
        if (handles_ == nullptr) return {};
        --*std::exchange(handles_, nullptr);
        --owner_.openFiles_;
        return statusOf(owner_.closeFault_);
    }

    MovieFilesDouble& owner_;
    const std::u16string name_;
    int* handles_;  // of the content, which stays where it is; null when closed
};

// The bytes are taken when the write is waited for: a buffer that is touched before that shows in the file.
class MovieFilesDouble::OpenUnbufferedFile final : public movie::UnbufferedMovieFile {
  public:
    OpenUnbufferedFile(MovieFilesDouble& owner, const std::u16string& name)
        : owner_(owner), content_(owner.files_.at(name)), name_(name) {
        ++content_.sharedHandles;
        ++owner_.openFiles_;
    }
    ~OpenUnbufferedFile() override {
        if (open_) static_cast<void>(closeHandle());
    }

    Status startWrite(std::uint64_t position, const void* data, std::size_t size) override {
        std::unique_lock lock(owner_.mutex_);
        EXPECT_TRUE(open_) << "write to a closed file";
        EXPECT_EQ(position % kSector, 0u);
        EXPECT_EQ(size % kSector, 0u);
        EXPECT_NE(size, 0u);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data) % kPage, 0u);
        TAVRA_RETURN_IF_ERROR(finish(lock));
        EXPECT_EQ(owner_.inFlight_, 0u) << "one write at a time, of all files";
        if (const std::uint32_t fault = owner_.noteWrite({name_, position, size, true}); fault != 0) {
            return Status(fault);
        }
        position_ = position;
        data_ = data;
        size_ = size;
        number_ = owner_.writes_.size();
        content_.inFlight = true;
        ++owner_.inFlight_;
        return {};
    }

    Status wait() override {
        std::unique_lock lock(owner_.mutex_);
        return finish(lock);
    }

    Status close() override {
        EXPECT_TRUE(open_) << "closed twice";
        return closeHandle();
    }

  private:
    Status finish(std::unique_lock<std::mutex>& lock) {
        if (data_ == nullptr) return {};
        owner_.awaitRelease(lock);
        const void* const data = std::exchange(data_, nullptr);
        content_.inFlight = false;
        --owner_.inFlight_;
        const auto fault = owner_.writeFaults_.find(number_);
        if (fault != owner_.writeFaults_.end()) return Status(fault->second.code);
        return owner_.store(content_, position_, data, size_);
    }

    Status closeHandle() {
        std::unique_lock lock(owner_.mutex_);
        const Status written = finish(lock);
        if (std::exchange(open_, false)) {
            --content_.sharedHandles;
            --owner_.openFiles_;
        }
        return written.ok() ? statusOf(owner_.closeFault_) : written;
    }

    MovieFilesDouble& owner_;
    Content& content_;
    const std::u16string name_;
    bool open_ = true;
    std::uint64_t position_ = 0;
    const void* data_ = nullptr;  // of the write in flight
    std::size_t size_ = 0;
    std::size_t number_ = 0;  // from 1, among the writes of all files
};

MovieFilesDouble::~MovieFilesDouble() {
    EXPECT_EQ(openFiles_, 0u) << "files that outlive their place";
}

bool MovieFilesDouble::exists(const std::u16string& name) const {
    const std::lock_guard lock(mutex_);
    return files_.contains(name);
}

std::uint64_t MovieFilesDouble::size(const std::u16string& name) const {
    const std::lock_guard lock(mutex_);
    const auto found = files_.find(name);
    return found == files_.end() ? 0 : found->second.size;
}

MovieFilesDouble::Bytes MovieFilesDouble::bytes(const std::u16string& name) const {
    const std::uint64_t whole = size(name);
    EXPECT_LE(whole, kWholeFileLimit) << "ask for pieces";
    return bytes(name, 0, static_cast<std::size_t>(std::min(whole, kWholeFileLimit)));
}

MovieFilesDouble::Bytes MovieFilesDouble::bytes(const std::u16string& name, std::uint64_t position,
                                                std::size_t count) const {
    const std::lock_guard lock(mutex_);
    Bytes result(count);
    const auto found = files_.find(name);
    if (found == files_.end()) return result;
    for (std::size_t done = 0; done < count;) {
        const std::uint64_t at = position + done;
        const auto offset = static_cast<std::size_t>(at % kChunk);
        const std::size_t piece = std::min<std::size_t>(count - done, kChunk - offset);
        const auto chunk = found->second.chunks.find(at / kChunk);
        if (chunk != found->second.chunks.end()) {
            std::copy_n(chunk->second.begin() + static_cast<std::ptrdiff_t>(offset), piece,
                        result.begin() + static_cast<std::ptrdiff_t>(done));
        }
        done += piece;
    }
    return result;
}

void MovieFilesDouble::put(const std::u16string& name, const Bytes& content) {
    const std::lock_guard lock(mutex_);
    EXPECT_TRUE(store(files_[name], 0, content.data(), content.size()).ok());
}

std::size_t MovieFilesDouble::openFiles() const {
    const std::lock_guard lock(mutex_);
    return openFiles_;
}

std::vector<MovieFilesDouble::Write> MovieFilesDouble::writes() const {
    const std::lock_guard lock(mutex_);
    return writes_;
}

std::size_t MovieFilesDouble::writeCount() const {
    const std::lock_guard lock(mutex_);
    return writes_.size();
}

std::size_t MovieFilesDouble::createCount() const {
    const std::lock_guard lock(mutex_);
    return creates_;
}

void MovieFilesDouble::failWrite(std::size_t nth, std::uint32_t code, bool atStart) {
    const std::lock_guard lock(mutex_);
    writeFaults_[nth] = {code, atStart};
}

void MovieFilesDouble::failCreate(std::size_t nth, std::uint32_t code) {
    const std::lock_guard lock(mutex_);
    createFaults_[nth] = code;
}

void MovieFilesDouble::failOpenAgain(std::uint32_t code) {
    const std::lock_guard lock(mutex_);
    openAgainFault_ = code;
}

void MovieFilesDouble::failClose(std::uint32_t code) {
    const std::lock_guard lock(mutex_);
    closeFault_ = code;
}

void MovieFilesDouble::setRoom(std::uint64_t bytes) {
    const std::lock_guard lock(mutex_);
    room_ = bytes;
}

void MovieFilesDouble::stallWrites() {
    const std::lock_guard lock(mutex_);
    stalling_ = true;
}

void MovieFilesDouble::releaseWrites() {
    const std::lock_guard lock(mutex_);
    stalling_ = false;
    stalled_.reset();
    released_.notify_all();
}

Status MovieFilesDouble::create(const std::u16string& name, std::unique_ptr<movie::MovieFile>& file) {
    const std::lock_guard lock(mutex_);
    TAVRA_RETURN_IF_ERROR(makeFile(name));
    file = std::make_unique<OpenFile>(*this, name, files_.at(name).exclusiveHandles);
    return {};
}

Status MovieFilesDouble::createUnbuffered(const std::u16string& name,
                                          std::unique_ptr<movie::UnbufferedMovieFile>& file) {
    const std::lock_guard lock(mutex_);
    TAVRA_RETURN_IF_ERROR(makeFile(name));
    file = std::make_unique<OpenUnbufferedFile>(*this, name);
    return {};
}

Status MovieFilesDouble::openAgain(const std::u16string& name, std::unique_ptr<movie::MovieFile>& file) {
    const std::lock_guard lock(mutex_);
    if (openAgainFault_ != 0) return Status(openAgainFault_);
    const auto found = files_.find(name);
    if (found == files_.end()) return Status(kFileNotFound);
    if (found->second.exclusiveHandles > 0) return Status(kSharingViolation);
    file = std::make_unique<OpenFile>(*this, name, found->second.sharedHandles);
    return {};
}

Status MovieFilesDouble::volumeKind(const std::u16string&, platform::VolumeKind& answer) {
    if (kind.error == 0) answer = kind.value;
    return statusOf(kind.error);
}

Status MovieFilesDouble::freeBytes(const std::u16string&, std::uint64_t& bytes) {
    if (free.error == 0) bytes = free.value;
    return statusOf(free.error);
}

Status MovieFilesDouble::fileSize(const std::u16string& fileName, std::uint64_t& bytes) {
    if (existing) {
        if (existing->error == 0) bytes = existing->value;
        return statusOf(existing->error);
    }
    if (!exists(fileName)) return Status(kFileNotFound);
    bytes = size(fileName);
    return {};
}

Status MovieFilesDouble::makeFile(const std::u16string& name) {
    const auto fault = createFaults_.find(++creates_);
    if (fault != createFaults_.end()) return Status(fault->second);
    Content& content = files_[name];
    if (content.exclusiveHandles + content.sharedHandles > 0) return Status(kSharingViolation);
    content.chunks.clear();
    content.size = 0;
    return {};
}

// The fault that this write is to have at once; 0 for none.
std::uint32_t MovieFilesDouble::noteWrite(const Write& write) {
    writes_.push_back(write);
    const auto fault = writeFaults_.find(writes_.size());
    if (fault == writeFaults_.end()) return 0;
    return !write.unbuffered || fault->second.atStart ? fault->second.code : 0;
}

Status MovieFilesDouble::store(Content& content, std::uint64_t position, const void* data, std::size_t size) {
    std::uint64_t others = 0;
    for (const auto& [name, file] : files_) others += &file == &content ? 0 : file.size;
    const std::uint64_t longest = std::max(room_ - std::min(others, room_), content.size);
    const std::uint64_t fits = longest > position ? std::min<std::uint64_t>(size, longest - position) : 0;

    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    for (std::uint64_t done = 0; done < fits;) {
        const std::uint64_t at = position + done;
        const std::uint64_t offset = at % kChunk;
        const auto piece = static_cast<std::size_t>(std::min(fits - done, kChunk - offset));
        const auto chunk = content.chunks.find(at / kChunk);
        if (chunk != content.chunks.end()) {
            std::memcpy(chunk->second.data() + offset, bytes + done, piece);
        } else if (!allZero(bytes + done, piece)) {
            Bytes& made = content.chunks[at / kChunk];
            made.resize(kChunk);
            std::memcpy(made.data() + offset, bytes + done, piece);
        }
        done += piece;
    }
    if (fits > 0) content.size = std::max(content.size, position + fits);
    return fits == size ? Status() : Status(error::kDiskFull);
}

void MovieFilesDouble::awaitRelease(std::unique_lock<std::mutex>& lock) {
    while (stalling_) {
        stalled_.set();
        released_.wait(lock);
    }
}

}  // namespace tavra::test
