// Bytes at positions: of a file, or of memory. One thread.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <span>

namespace tavra::tool {

class ByteSource {
  public:
    ByteSource() = default;
    virtual ~ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    virtual std::uint64_t size() const = 0;
    // Reads as many bytes from `position` on as there are, at most what `target` takes. How many came.
    virtual std::size_t read(std::uint64_t position, std::span<std::uint8_t> target) = 0;
};

class MemorySource : public ByteSource {
  public:
    explicit MemorySource(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    std::uint64_t size() const override { return bytes_.size(); }
    std::size_t read(std::uint64_t position, std::span<std::uint8_t> target) override;

  private:
    std::span<const std::uint8_t> bytes_;
};

// Throws std::system_error when the file cannot be opened, is a folder, or cannot be read.
class FileSource : public ByteSource {
  public:
    explicit FileSource(const std::filesystem::path& path);
    ~FileSource() override;
    std::uint64_t size() const override { return size_; }
    std::size_t read(std::uint64_t position, std::span<std::uint8_t> target) override;

  private:
    int descriptor_;
    std::uint64_t size_ = 0;
};

// Small pieces of a source. A page is read at a time, so that neighbours cost one read and frames none.
class ByteReader {
  public:
    explicit ByteReader(ByteSource& source) : source_(source) {}

    std::uint64_t size() const { return source_.size(); }
    // Fills `target` (4096 bytes at most); false if not all of it stands in the source.
    bool get(std::uint64_t position, std::span<std::uint8_t> target);

  private:
    ByteSource& source_;
    std::array<std::uint8_t, 4096> page_{};
    std::uint64_t start_ = 0;
    std::size_t length_ = 0;
};

}  // namespace tavra::tool
