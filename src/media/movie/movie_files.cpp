#include "media/movie/movie_files.h"

#include <filesystem>
#include <new>
#include <system_error>

#include "platform/random_access_file.h"
#include "platform/unbuffered_file.h"

namespace tavra::movie {
namespace {

class SystemFile final : public MovieFile {
  public:
    explicit SystemFile(platform::RandomAccessFile file) : file_(std::move(file)) {}
    Status write(std::uint64_t position, const void* data, std::size_t size) override {
        return file_.write(position, data, size);
    }
    Status close() override { return file_.close(); }

  private:
    platform::RandomAccessFile file_;
};

class SystemUnbufferedFile final : public UnbufferedMovieFile {
  public:
    explicit SystemUnbufferedFile(platform::UnbufferedFile file) : file_(std::move(file)) {}
    Status startWrite(std::uint64_t position, const void* data, std::size_t size) override {
        return file_.startWrite(position, data, size);
    }
    Status wait() override { return file_.wait(); }
    Status close() override { return file_.close(); }

  private:
    platform::UnbufferedFile file_;
};

// Gives an opened file away as the class of this room that stands for it.
template <typename Class, typename Native, typename File>
Status giveAway(Status opened, Native& native, std::unique_ptr<File>& file) {
    TAVRA_RETURN_IF_ERROR(opened);
    file.reset(new (std::nothrow) Class(std::move(native)));
    return file ? Status() : Status(error::kOutOfMemory);
}

class SystemMovieFiles final : public MovieFiles {
  public:
    Status create(const std::u16string& name, std::unique_ptr<MovieFile>& file) override {
        platform::RandomAccessFile native;
        return giveAway<SystemFile>(native.create(name), native, file);
    }
    Status createUnbuffered(const std::u16string& name, std::unique_ptr<UnbufferedMovieFile>& file) override {
        platform::UnbufferedFile native;
        return giveAway<SystemUnbufferedFile>(native.create(name), native, file);
    }
    Status openAgain(const std::u16string& name, std::unique_ptr<MovieFile>& file) override {
        platform::RandomAccessFile native;
        return giveAway<SystemFile>(native.openForWriting(name), native, file);
    }
    std::u16string lastingName(const std::u16string& name) override {
        try {
            return std::filesystem::absolute(name).u16string();
        } catch (const std::system_error&) {
            return name;  // the present folder has none
        }
    }
    Status volumeKind(const std::u16string& fileName, platform::VolumeKind& kind) override {
        return platform::volumeKind(platform::folderOf(fileName), kind);
    }
    Status freeBytes(const std::u16string& fileName, std::uint64_t& bytes) override {
        return platform::freeBytes(platform::folderOf(fileName), bytes);
    }
    Status fileSize(const std::u16string& fileName, std::uint64_t& bytes) override {
        return platform::fileSize(fileName, bytes);
    }
};

}  // namespace

MovieFiles& systemMovieFiles() {
    static SystemMovieFiles files;
    return files;
}

}  // namespace tavra::movie
