#include <gtest/gtest.h>

#include "media/still_support.h"
#include "platform/last_error.h"
#include "support/failing_allocations.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

// A bitmap put together byte by byte: a row of the file is `stride` bytes of the image and zeros up to four.
Bytes expectedBmp(const TestImage& image) {
    const bool mono = image.format == 1;
    const std::uint32_t header = mono ? 1078 : 54;
    const std::uint32_t padded = image.stride + (4 - image.stride % 4) % 4;
    Bytes file;
    file.text("BM").u32(header + padded * image.height).u16(0).u16(0).u32(header);
    file.u32(40).u32(image.width).u32(image.height).u16(1).u16(mono ? 8 : image.format == 4 ? 24 : 32);
    file.u32(0).u32(padded * image.height).u32(0).u32(0).u32(mono ? 256 : 0).u32(mono ? 256 : 0);
    if (mono) {
        for (std::uint32_t i = 0; i < 256; ++i) file.u8(i).u8(i).u8(i).u8(0);
    }
    for (std::uint32_t y = image.height; y-- > 0;) {
        for (std::uint32_t i = 0; i < image.stride; ++i) file.u8(image.data[y * image.stride + i]);
        file.zeros(padded - image.stride);
    }
    return file;
}

TEST(BmpStill, ATwoByTwoColourImageToTheByte) {
    const TempFolder folder;
    const std::uint8_t data[] = {1, 2, 3, 4, 5, 6, 0xEE, 0xEF, 7, 8, 9, 10, 11, 12, 0xF0, 0xF1};
    ASSERT_EQ(save(2, 2, 0, 4, data, folder / "image.bmp"), 0u);
    const std::vector<std::uint8_t> expected = {
        'B', 'M', 70, 0,  0,  0,  0,    0,    0, 0, 54, 0, 0, 0,                         // file header
        40,  0,   0,  0,  2,  0,  0,    0,    2, 0, 0,  0, 1, 0, 24,   0,   0, 0, 0, 0,  // info header
        16,  0,   0,  0,  0,  0,  0,    0,    0, 0, 0,  0, 0, 0, 0,    0,   0, 0, 0, 0,  //
        7,   8,   9,  10, 11, 12, 0xF0, 0xF1, 1, 2, 3,  4, 5, 6, 0xEE, 0xEF};            // bottom row first
    EXPECT_EQ(readFile(folder / "image.bmp"), expected);
}

TEST(BmpStill, AllFormatsAndSizesToTheByte) {
    const TempFolder folder;
    for (const std::uint32_t format : {1u, 4u, 8u}) {
        for (const Size size : kSizes) {
            SCOPED_TRACE(::testing::Message()
                         << "format " << format << ", " << size.width << "x" << size.height);
            const TestImage image(size.width, size.height, format);
            EXPECT_EQ(savedBytes(image, folder / "image.bmp"), expectedBmp(image));
        }
    }
}

TEST(BmpStill, DenseRowsArePaddedWithZeros) {
    const TempFolder folder;
    const std::uint8_t data[] = {1, 2, 3, 4, 5, 6};
    ASSERT_EQ(save(3, 2, 3, 1, data, folder / "image.bmp"), 0u);
    const std::vector<std::uint8_t> file = readFile(folder / "image.bmp");
    ASSERT_EQ(file.size(), 1078u + 8);
    EXPECT_EQ(std::vector<std::uint8_t>(file.end() - 8, file.end()),
              (std::vector<std::uint8_t>{4, 5, 6, 0, 1, 2, 3, 0}));
}

TEST(BmpStill, AnyStrideIsTakenWhole) {
    const TempFolder folder;
    for (const std::uint32_t format : {1u, 4u, 8u}) {
        for (std::uint32_t stride = 20; stride < 32; ++stride) {
            SCOPED_TRACE(::testing::Message() << "format " << format << ", stride " << stride);
            const TestImage image(5, 3, format, stride);
            EXPECT_EQ(savedBytes(image, folder / "image.bmp"), expectedBmp(image));
        }
    }
}

TEST(BmpStill, NoPixelsGiveTheHeaders) {
    const TempFolder folder;
    const std::uint8_t data[4] = {};
    EXPECT_EQ(save(0, 0, 0, 4, data, folder / "image.bmp"), 0u);
    EXPECT_EQ(readFile(folder / "image.bmp").size(), 54u);
    EXPECT_EQ(save(0, 0, 0, 1, data, folder / "image.bmp"), 0u);
    EXPECT_EQ(readFile(folder / "image.bmp").size(), 1078u);
}

TEST(BmpStill, WordFormatsAreRefusedWithoutAFile) {
    const TempFolder folder;
    const std::uint8_t data[64] = {};
    for (const std::uint32_t format : {2u, 16u, 32u, 64u}) {
        platform::setLastSystemError(0);
        EXPECT_EQ(save(2, 2, 0, format, data, folder / "image.bmp"), 87u);
        EXPECT_EQ(platform::lastSystemError(), 87u);
        EXPECT_TRUE(folder.isEmpty());
    }
}

TEST(BmpStill, OtherFormatsAreRefusedAndLeaveAnEmptyFile) {
    const std::uint8_t data[64] = {};
    for (const std::uint32_t format : {256u, 512u, 0u, 3u, 128u, 0xFFFFFFFFu}) {
        const TempFolder folder;
        platform::setLastSystemError(0);
        EXPECT_EQ(save(2, 2, 0, format, data, folder / "image.bmp"), 87u);
        EXPECT_EQ(platform::lastSystemError(), 87u);
        EXPECT_TRUE(std::filesystem::exists(folder / "image.bmp"));
        EXPECT_EQ(readFile(folder / "image.bmp").size(), 0u);
    }
}

TEST(BmpStill, WithoutMemoryItSucceedsWithAnEmptyFileAndLastError8) {
    const TempFolder folder;
    const TestImage image(300, 200, 8);
    platform::setLastSystemError(0);
    {
        const FailAllocationsFrom fail(54 + 300 * 200 * 4);
        EXPECT_EQ(save(image, folder / "image.bmp"), 0u);
        EXPECT_EQ(FailAllocationsFrom::failures(), 1u);
    }
    EXPECT_EQ(platform::lastSystemError(), 8u);
    EXPECT_TRUE(std::filesystem::exists(folder / "image.bmp"));
    EXPECT_EQ(readFile(folder / "image.bmp").size(), 0u);
}

// None of these can be told in the headers' 32 bits. The one byte of data would be overrun at once if they
// were tried.
TEST(BmpStill, SizesBeyondTheHeadersAreRefusedWithoutAFile) {
    const TempFolder folder;
    const std::uint8_t data[1] = {};
    struct Case {
        std::uint32_t width, height, stride, format;
    };
    const Case cases[] = {
        {0x80000000, 1, 0, 1},           // a width that reads as negative
        {1, 0x80000000, 1, 1},           // and a height, which would read as top-down
        {0, 0x80000000, 0, 1},           //
        {0x40000000, 4, 0, 1},           // 4 GiB: the size wraps to the header's
        {0x10000, 0x4000, 0, 8},         // the same with four bytes
        {0x40000000, 1, 0, 8},           // the row alone wraps
        {0x7FFFFFFF, 0x7FFFFFFF, 0, 8},  //
        {1, 1, 0xFFFFFFFF, 1},           // the stride rounded up wraps
        {1, 1, 0xFFFFFFFC, 4},           // pixels fit, header and pixels do not
        {1, 0xFFFFFFFF, 0xFFFFFFFF, 4},  //
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.width << "x" << c.height << " stride " << c.stride);
        EXPECT_EQ(save(c.width, c.height, c.stride, c.format, data, folder / "image.bmp"), 87u);
        EXPECT_TRUE(folder.isEmpty());
    }
}

}  // namespace
}  // namespace tavra::test
