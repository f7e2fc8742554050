// What the still image tests have in common: an image with a known pattern, bytes to compare files with, and
// the save.
#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace tavra::test {

// Bytes put together one number after the other, little-endian.
class Bytes : public std::vector<std::uint8_t> {
  public:
    using std::vector<std::uint8_t>::vector;

    Bytes& text(std::string_view characters) {
        for (const char c : characters) push_back(static_cast<std::uint8_t>(c));
        return *this;
    }
    Bytes& u8(std::uint32_t value) {
        push_back(static_cast<std::uint8_t>(value));
        return *this;
    }
    Bytes& u16(std::uint32_t value) { return u8(value & 255).u8(value / 256 & 255); }
    Bytes& u32(std::uint32_t value) { return u16(value & 65535).u16(value / 65536); }
    Bytes& zeros(std::size_t count) {
        insert(end(), count, 0);
        return *this;
    }
};

// An image that owns its bytes. Each byte differs from its neighbours, the padding of the rows is 0xEE.
struct TestImage {
    TestImage(std::uint32_t width, std::uint32_t height, std::uint32_t format, std::uint32_t stride = 0);

    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t format;
    std::uint32_t bytesAPixel;
    std::uint32_t stride;       // as it lies in memory
    std::uint32_t givenStride;  // as it is told to the save: 0 where it is the default
    std::vector<std::uint8_t> data;

    std::uint8_t byteAt(std::uint32_t x, std::uint32_t y, std::uint32_t byte) const {
        return data[std::size_t{y} * stride + std::size_t{x} * bytesAPixel + byte];
    }
    std::uint32_t wordAt(std::uint32_t x, std::uint32_t y, std::uint32_t word) const {
        return byteAt(x, y, 2 * word) + 256u * byteAt(x, y, 2 * word + 1);
    }
};

// The save under test: a fresh CSaveImageFile for each. Gives the result.
std::uint32_t save(const TestImage& image, const std::filesystem::path& path, std::uint32_t option = 0);
std::uint32_t save(std::uint32_t width, std::uint32_t height, std::uint32_t stride, std::uint32_t format,
                   const void* data, const std::filesystem::path& path, std::uint32_t option = 0);

// Saves an image that must go through, and gives the file's bytes.
std::vector<std::uint8_t> savedBytes(const TestImage& image, const std::filesystem::path& path,
                                     std::uint32_t option = 0);

// Widths and heights worth trying: one pixel, all remainders of four, one row, one column.
struct Size {
    std::uint32_t width, height;
};
inline constexpr Size kSizes[] = {{1, 1}, {2, 1}, {3, 2}, {4, 3}, {5, 1}, {1, 7}, {7, 5}, {16, 2}, {33, 9}};

inline constexpr std::uint32_t kAllFormats[] = {1, 2, 4, 8, 16, 32, 64, 256, 512};

}  // namespace tavra::test
