// A place for movies that exists in memory alone, and that fails, stalls and fills up on order. A test
// program that uses it also lists support/movie_files_double.cpp.
//
// A file costs no more than the bytes in it that are not zero, so that positions of many GiB are free. Set
// the faults up from the test's thread; writers may run in others. It must outlive the files that it gave
// out.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "media/movie/movie_files.h"
#include "platform/event.h"

namespace tavra::test {

class MovieFilesDouble final : public movie::MovieFiles {
  public:
    using Bytes = std::vector<std::uint8_t>;

    // A write as the writer asked for it, in the order in which they were started.
    struct Write {
        std::u16string file;
        std::uint64_t position;
        std::size_t size;
        bool unbuffered;
        friend bool operator==(const Write&, const Write&) = default;
    };

    // What the volume answers: a value, or a failure where `error` is not 0.
    template <typename T>
    struct Answer {
        T value;
        std::uint32_t error = 0;
    };

    MovieFilesDouble() = default;
    MovieFilesDouble(const MovieFilesDouble&) = delete;
    MovieFilesDouble& operator=(const MovieFilesDouble&) = delete;
    ~MovieFilesDouble() override;

    // ---- what the files hold

    bool exists(const std::u16string& name) const;
    std::uint64_t size(const std::u16string& name) const;  // 0 for a file that does not exist
    Bytes bytes(const std::u16string& name) const;         // all of it; for files of up to 256 MiB
    // A piece; zeros where nothing was written and past the end.
    Bytes bytes(const std::u16string& name, std::uint64_t position, std::size_t count) const;
    // Puts a file there, as one that is about to be replaced.
    void put(const std::u16string& name, const Bytes& content);
    // Files that were opened and neither closed nor given back.
    std::size_t openFiles() const;

    // ---- what was asked

    std::vector<Write> writes() const;
    std::size_t writeCount() const;
    std::size_t createCount() const;

    // ---- faults; `nth` counts from 1, from the making of the double

    // The n-th write of any file. Ordinary access fails at the call and writes nothing; unbuffered access
    // fails when the write is waited for, or, with `atStart`, at the start.
    void failWrite(std::size_t nth, std::uint32_t code, bool atStart = false);
    void failCreate(std::size_t nth, std::uint32_t code);  // also counts unbuffered ones
    void failOpenAgain(std::uint32_t code);
    // Every close from now on; closed the file is, and its bytes stay.
    void failClose(std::uint32_t code);

    // A disk of so many bytes, counted as the sum of the files' lengths: what fits is written, then 112.
    void setRoom(std::uint64_t bytes);

    // Ordinary writes stop at their call, unbuffered ones when they are waited for, until released.
    void stallWrites();
    void releaseWrites();
    // Set while a thread waits in a stalled write.
    const platform::Event& stalled() const { return stalled_; }

    // ---- the volume, to be set before it is asked

    Answer<platform::VolumeKind> kind{platform::VolumeKind::Large};
    Answer<std::uint64_t> free{std::numeric_limits<std::uint64_t>::max()};
    std::optional<Answer<std::uint64_t>> existing;  // if not told: the file's length, or 2

    // ---- MovieFiles

    Status create(const std::u16string& name, std::unique_ptr<movie::MovieFile>& file) override;
    Status createUnbuffered(const std::u16string& name,
                            std::unique_ptr<movie::UnbufferedMovieFile>& file) override;
    Status openAgain(const std::u16string& name, std::unique_ptr<movie::MovieFile>& file) override;
    Status volumeKind(const std::u16string& fileName, platform::VolumeKind& answer) override;
    Status freeBytes(const std::u16string& fileName, std::uint64_t& bytes) override;
    Status fileSize(const std::u16string& fileName, std::uint64_t& bytes) override;

  private:
    class OpenFile;
    class OpenUnbufferedFile;

    struct Content {
        std::map<std::uint64_t, Bytes> chunks;  // by position / kChunk; those that are not all zero
        std::uint64_t size = 0;
        int sharedHandles = 0;     // open ones that let others open the file too
        int exclusiveHandles = 0;  // and those that do not
        bool inFlight = false;
    };
    struct Fault {
        std::uint32_t code;
        bool atStart;
    };

    // The caller holds the mutex in all of these.
    Status makeFile(const std::u16string& name);
    std::uint32_t noteWrite(const Write& write);
    Status store(Content& content, std::uint64_t position, const void* data, std::size_t size);
    void awaitRelease(std::unique_lock<std::mutex>& lock);

    mutable std::mutex mutex_;
    std::condition_variable released_;
    platform::Event stalled_{platform::Event::Reset::Manual};
    std::map<std::u16string, Content> files_;
    std::vector<Write> writes_;
    std::map<std::size_t, Fault> writeFaults_;
    std::map<std::size_t, std::uint32_t> createFaults_;
    std::size_t creates_ = 0;
    std::size_t openFiles_ = 0;
    std::size_t inFlight_ = 0;
    std::uint32_t openAgainFault_ = 0;
    std::uint32_t closeFault_ = 0;
    std::uint64_t room_ = std::numeric_limits<std::uint64_t>::max();
    bool stalling_ = false;
};

}  // namespace tavra::test
