#include "media/still_support.h"

#include <gtest/gtest.h>

#include "media/save_image_file.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

std::uint32_t pixelBytes(std::uint32_t format) {
    switch (format) {
        case 2:
        case 16:
        case 32:
        case 64: return 2;
        case 4: return 3;
        case 8: return 4;
        case 256: return 6;
        case 512: return 8;
        default: return 1;
    }
}

// The bits of a word's high byte that a sample may use.
std::uint32_t highByteMask(std::uint32_t format) {
    switch (format) {
        case 16: return 0x03;
        case 32: return 0x0F;
        case 64: return 0x3F;
        default: return 0xFF;
    }
}

}  // namespace

TestImage::TestImage(std::uint32_t imageWidth, std::uint32_t imageHeight, std::uint32_t imageFormat,
                     std::uint32_t imageStride)
    : width(imageWidth),
      height(imageHeight),
      format(imageFormat),
      bytesAPixel(pixelBytes(imageFormat)),
      stride(imageStride != 0 ? imageStride : (imageWidth * bytesAPixel + 3) / 4 * 4),
      givenStride(imageStride),
      data(std::size_t{stride} * imageHeight, 0xEE) {
    const bool mono16 = bytesAPixel == 2;
    std::uint32_t next = 11;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t i = 0; i < width * bytesAPixel; ++i, next = next * 5 + 7) {
            const std::uint32_t mask = mono16 && i % 2 == 1 ? highByteMask(format) : 0xFF;
            data[std::size_t{y} * stride + i] = static_cast<std::uint8_t>((next >> 3) & mask);
        }
    }
}

std::uint32_t save(std::uint32_t width, std::uint32_t height, std::uint32_t stride, std::uint32_t format,
                   const void* data, const std::filesystem::path& path, std::uint32_t option) {
    ISaveImageFile* const saver = new CSaveImageFile;
    saver->AddRef();
    const std::u16string name = wideName(path);
    const std::uint32_t result =
        saver->SaveImageFileEx(width, height, stride, format, data, name.c_str(), option);
    EXPECT_EQ(saver->Release(), 0u);
    return result;
}

std::uint32_t save(const TestImage& image, const std::filesystem::path& path, std::uint32_t option) {
    return save(image.width, image.height, image.givenStride, image.format, image.data.data(), path, option);
}

std::vector<std::uint8_t> savedBytes(const TestImage& image, const std::filesystem::path& path,
                                     std::uint32_t option) {
    EXPECT_EQ(save(image, path, option), 0u) << path;
    return readFile(path);
}

}  // namespace tavra::test
