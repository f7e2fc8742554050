// Files that are made and written once, front to back: still images and the streams of the encoders.
//
// The name is wide, as in the interface; Linux turns it into the locale's encoding. An OutputFile belongs to
// the operation that opened it and closes itself. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>

namespace tavra::platform {

class OutputFile {
  public:
    // What happens between a write and the system: nothing (a write is one transfer, and tells whether it
    // went through), or the C library's buffer, for writers that come with many small pieces.
    enum class Buffering { None, Stream };

    // Makes the file, or empties it if it exists. Child processes do not inherit it. isOpen tells whether
    // it worked; a name that the system cannot express is not opened under another.
    static OutputFile open(const std::u16string& name, Buffering buffering);

    OutputFile() = default;
    explicit OutputFile(std::FILE* stream) : stream_(stream) {}  // takes it over
    ~OutputFile() { close(); }
    OutputFile(OutputFile&& other) noexcept : stream_(std::exchange(other.stream_, nullptr)) {}
    OutputFile& operator=(OutputFile&& other) noexcept {
        OutputFile taken(std::move(other));
        std::swap(stream_, taken.stream_);
        return *this;
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    bool isOpen() const { return stream_ != nullptr; }
    std::FILE* stream() const { return stream_; }

    // False if the system took fewer bytes than asked; with Buffering::Stream that may show only later,
    // at flush.
    bool write(const void* data, std::size_t size) {
        return size == 0 || std::fwrite(data, 1, size, stream_) == size;
    }

    // Hands over what is buffered. False if not all of it went through. Without an open file there is
    // nothing to hand over; the C library would flush every file of the program.
    bool flush() { return stream_ == nullptr || std::fflush(stream_) == 0; }

    void close() {
        if (stream_ != nullptr) std::fclose(std::exchange(stream_, nullptr));
    }

  private:
    std::FILE* stream_ = nullptr;
};

}  // namespace tavra::platform
