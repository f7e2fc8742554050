// Builds SMF files by hand, right ones and wrong ones.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

namespace tavra::test {

class SmfBuilder {
  public:
    using Bytes = std::vector<std::uint8_t>;

    // A header as the recorder writes it, of frames of width x height.
    SmfBuilder(std::uint32_t width, std::uint32_t height, std::uint32_t bits) : header_(376) {
        header_[0] = 'S';
        header_[1] = 'M';
        header_[2] = 'F';
        put32(4, 376);
        put32(8, width);
        put32(12, height);
        put32(16, width);
        put16(20, 8);
        put16(22, bits);
        put32(24, 1);
        put32(28, 1);
        put32(32, 24);
        put32(36, width * height);
        put32(44, 600);
        put32(48, 75);
        put16(374, 100);  // saturation, which is off
    }

    void put8(std::size_t offset, std::uint32_t value) { header_[offset] = static_cast<std::uint8_t>(value); }
    void put16(std::size_t offset, std::uint32_t value) {
        put8(offset, value);
        put8(offset + 1, value >> 8);
    }
    void put32(std::size_t offset, std::uint32_t value) {
        put16(offset, value);
        put16(offset + 2, value >> 16);
    }
    // Cuts the header short; its size field is left as it is.
    void cutHeader(std::size_t size) { header_.resize(size); }

    void addFrame(std::uint32_t number, std::uint32_t colorArray, const Bytes& image) {
        for (int i = 0; i < 4; ++i) frames_.push_back(static_cast<std::uint8_t>(number >> 8 * i));
        for (int i = 0; i < 4; ++i) frames_.push_back(static_cast<std::uint8_t>(colorArray >> 8 * i));
        frames_.insert(frames_.end(), 16, 0);
        frames_.insert(frames_.end(), image.begin(), image.end());
    }

    Bytes bytes() const {
        Bytes all = header_;
        all.insert(all.end(), frames_.begin(), frames_.end());
        return all;
    }

    // As a new file: some file systems wait for the disk when an old one is emptied and written again.
    static void write(const std::filesystem::path& path, const Bytes& bytes) {
        std::filesystem::remove(path);
        std::ofstream file(path, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    void write(const std::filesystem::path& path) const { write(path, bytes()); }

  private:
    Bytes header_;
    Bytes frames_;
};

}  // namespace tavra::test
