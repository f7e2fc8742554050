#include <gtest/gtest.h>

#include "media/still_support.h"
#include "platform/last_error.h"
#include "support/failing_allocations.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

bool isColour(const TestImage& image) {
    return image.bytesAPixel > 2;
}

Bytes monoHeader(const TestImage& image) {
    const std::uint32_t bits = image.format == 1 ? 8 : 16;
    Bytes file;
    file.u8(0x49).u8(0x49).u8(0x2A).u8(0x00).u32(8).u16(11);
    file.u16(0x0100).u16(3).u32(1).u32(image.width);
    file.u16(0x0101).u16(3).u32(1).u32(image.height);
    file.u16(0x0102).u16(3).u32(1).u32(bits);
    file.u16(0x0103).u16(3).u32(1).u32(1);
    file.u16(0x0106).u16(3).u32(1).u32(1);
    file.u16(0x0111).u16(4).u32(1).u32(162);
    file.u16(0x0116).u16(3).u32(1).u32(image.height);
    file.u16(0x0117).u16(4).u32(1).u32(image.width * image.height * bits / 8);
    file.u16(0x011A).u16(5).u32(1).u32(146);
    file.u16(0x011B).u16(5).u32(1).u32(154);
    file.u16(0x0128).u16(3).u32(1).u32(2);
    file.u32(0);
    file.u32(720000).u32(10000).u32(720000).u32(10000);
    return file;
}

Bytes colourHeader(const TestImage& image) {
    const bool four = image.format == 8 || image.format == 512;
    const std::uint32_t bits = image.format < 256 ? 8 : 16;
    const std::uint32_t first = four ? 8 + 2 + 13 * 12 + 4 : 8 + 2 + 12 * 12 + 4;  // of the rationals
    Bytes file;
    file.u8(0x49).u8(0x49).u8(0x2A).u8(0x00).u32(8).u16(four ? 13 : 12);
    file.u16(0x0100).u16(3).u32(1).u32(image.width);
    file.u16(0x0101).u16(3).u32(1).u32(image.height);
    file.u16(0x0102).u16(3).u32(four ? 4 : 3).u32(first + 16);
    file.u16(0x0103).u16(3).u32(1).u32(1);
    file.u16(0x0106).u16(3).u32(1).u32(2);
    file.u16(0x0111).u16(4).u32(1).u32(four ? 194 : 180);
    file.u16(0x0115).u16(3).u32(1).u32(four ? 4 : 3);
    if (four) file.u16(0x0152).u16(3).u32(1).u32(0);
    file.u16(0x0116).u16(3).u32(1).u32(image.height);
    file.u16(0x0117).u16(4).u32(1).u32((four ? 4 : 3) * (bits / 8) * image.width * image.height);
    file.u16(0x011A).u16(5).u32(1).u32(first);
    file.u16(0x011B).u16(5).u32(1).u32(first + 8);
    file.u16(0x0128).u16(3).u32(1).u32(2);
    file.u32(0);
    file.u32(720000).u32(10000).u32(720000).u32(10000);
    for (int i = 0; i < (four ? 4 : 3); ++i) file.u16(bits);
    return file;
}

void addMonoPixel(const TestImage& image, std::uint32_t x, std::uint32_t y, Bytes& file) {
    switch (image.format) {
        case 1: file.u8(image.byteAt(x, y, 0)); break;
        case 2: file.u16(image.wordAt(x, y, 0)); break;
        case 16: file.u16(image.wordAt(x, y, 0) * 64); break;
        case 32: file.u16(image.wordAt(x, y, 0) * 16); break;
        case 64: file.u16(image.wordAt(x, y, 0) * 4); break;
        default: FAIL();
    }
}

void addColourPixel(const TestImage& image, std::uint32_t x, std::uint32_t y, Bytes& file) {
    const auto put = [&](std::uint32_t sample) {
        if (image.format < 256)
            file.u8(image.byteAt(x, y, sample));
        else
            file.u16(image.wordAt(x, y, sample));
    };
    put(2);
    put(1);
    put(0);
    if (image.format == 8 || image.format == 512) put(3);
}

Bytes expectedTiff(const TestImage& image) {
    Bytes file = isColour(image) ? colourHeader(image) : monoHeader(image);
    for (std::uint32_t y = 0; y < image.height; ++y) {
        for (std::uint32_t x = 0; x < image.width; ++x) {
            if (isColour(image))
                addColourPixel(image, x, y, file);
            else
                addMonoPixel(image, x, y, file);
        }
    }
    return file;
}

TEST(TiffStill, AOneByOneColourImageToTheByte) {
    const TempFolder folder;
    const std::uint8_t data[] = {10, 20, 30, 0xEE};
    ASSERT_EQ(save(1, 1, 0, 4, data, folder / "image.tif"), 0u);
    const std::vector<std::uint8_t> expected = {
        0x49, 0x49, 0x2A, 0, 8,    0,    0, 0, 12,  0,        //
        0x00, 1,    3,    0, 1,    0,    0, 0, 1,   0, 0, 0,  // width
        0x01, 1,    3,    0, 1,    0,    0, 0, 1,   0, 0, 0,  // height
        0x02, 1,    3,    0, 3,    0,    0, 0, 174, 0, 0, 0,  // bits of three samples
        0x03, 1,    3,    0, 1,    0,    0, 0, 1,   0, 0, 0,  // no compression
        0x06, 1,    3,    0, 1,    0,    0, 0, 2,   0, 0, 0,  // RGB
        0x11, 1,    4,    0, 1,    0,    0, 0, 180, 0, 0, 0,  // pixels
        0x15, 1,    3,    0, 1,    0,    0, 0, 3,   0, 0, 0,  // samples
        0x16, 1,    3,    0, 1,    0,    0, 0, 1,   0, 0, 0,  // rows of the strip
        0x17, 1,    4,    0, 1,    0,    0, 0, 3,   0, 0, 0,  // bytes of the strip
        0x1A, 1,    5,    0, 1,    0,    0, 0, 158, 0, 0, 0,  // resolution
        0x1B, 1,    5,    0, 1,    0,    0, 0, 166, 0, 0, 0,  //
        0x28, 1,    3,    0, 1,    0,    0, 0, 2,   0, 0, 0,  // inch
        0,    0,    0,    0,                                  // no other directory
        0x80, 0xFC, 0x0A, 0, 0x10, 0x27, 0, 0,                // 720000/10000
        0x80, 0xFC, 0x0A, 0, 0x10, 0x27, 0, 0,                //
        8,    0,    8,    0, 8,    0,                         // bits
        30,   20,   10};                                      // R, G, B
    EXPECT_EQ(readFile(folder / "image.tif"), expected);
}

TEST(TiffStill, AllFormatsAndSizesToTheByte) {
    const TempFolder folder;
    for (const std::uint32_t format : kAllFormats) {
        for (const Size size : kSizes) {
            SCOPED_TRACE(::testing::Message()
                         << "format " << format << ", " << size.width << "x" << size.height);
            const TestImage image(size.width, size.height, format);
            EXPECT_EQ(savedBytes(image, folder / "image.tif"), expectedTiff(image));
        }
    }
}

TEST(TiffStill, StridesOfAnySizeLeaveNoTrace) {
    const TempFolder folder;
    for (const std::uint32_t format : kAllFormats) {
        for (std::uint32_t extra = 0; extra < 9; ++extra) {
            SCOPED_TRACE(::testing::Message() << "format " << format << ", padding " << extra);
            const TestImage size(5, 3, format);
            const TestImage image(5, 3, format, 5 * size.bytesAPixel + extra);
            EXPECT_EQ(savedBytes(image, folder / "image.tif"), expectedTiff(image));
        }
    }
}

TEST(TiffStill, PixelsAreAt162And180And194) {
    const TempFolder folder;
    const std::uint8_t data[] = {1, 2, 3, 4};
    ASSERT_EQ(save(1, 1, 0, 1, data, folder / "1.tif"), 0u);
    EXPECT_EQ(readFile(folder / "1.tif").size(), 162u + 1);
    ASSERT_EQ(save(1, 1, 0, 4, data, folder / "3.tif"), 0u);
    EXPECT_EQ(readFile(folder / "3.tif").size(), 180u + 3);
    ASSERT_EQ(save(1, 1, 0, 8, data, folder / "4.tif"), 0u);
    const std::vector<std::uint8_t> four = readFile(folder / "4.tif");
    ASSERT_EQ(four.size(), 194u + 4);
    EXPECT_EQ(four[8], 13);
    EXPECT_EQ(std::vector<std::uint8_t>(four.begin() + 194, four.end()),
              (std::vector<std::uint8_t>{3, 2, 1, 4}));
}

TEST(TiffStill, DeepMonoIsRaisedToTheFullRange) {
    const TempFolder folder;
    struct Case {
        std::uint32_t format, largest;
        std::uint8_t low, high;  // of 1 raised
        std::uint32_t largestRaised;
    };
    for (const Case& c : {Case{2, 65535, 1, 0, 65535}, Case{16, 1023, 64, 0, 65472},
                          Case{32, 4095, 16, 0, 65520}, Case{64, 16383, 4, 0, 65532}}) {
        const Bytes data = Bytes().u16(1).u16(c.largest);
        ASSERT_EQ(save(2, 1, 0, c.format, data.data(), folder / "image.tif"), 0u);
        const std::vector<std::uint8_t> file = readFile(folder / "image.tif");
        ASSERT_EQ(file.size(), 166u);
        EXPECT_EQ(std::vector<std::uint8_t>(file.begin() + 162, file.end()),
                  static_cast<std::vector<std::uint8_t>>(Bytes().u8(c.low).u8(c.high).u16(c.largestRaised)));
    }
}

TEST(TiffStill, BitsAboveTheSampleAreShiftedOut) {
    const TempFolder folder;
    const Bytes data = Bytes().u16(0xF001).u16(0xFFFF);
    ASSERT_EQ(save(2, 1, 0, 32, data.data(), folder / "image.tif"), 0u);
    const std::vector<std::uint8_t> file = readFile(folder / "image.tif");
    EXPECT_EQ(std::vector<std::uint8_t>(file.begin() + 162, file.end()),
              (std::vector<std::uint8_t>{0x10, 0x00, 0xF0, 0xFF}));
}

TEST(TiffStill, SizesBeyond16BitsStandInFull) {
    const TempFolder folder;
    const TestImage image(70000, 1, 1);
    EXPECT_EQ(savedBytes(image, folder / "image.tif"), expectedTiff(image));
    const TestImage tall(1, 70000, 1);
    EXPECT_EQ(savedBytes(tall, folder / "image.tif"), expectedTiff(tall));
}

TEST(TiffStill, UnknownFormatsAreRefusedWithoutAFile) {
    const TempFolder folder;
    const std::uint8_t data[64] = {};
    for (const std::uint32_t format : {0u, 3u, 5u, 128u, 1024u, 0xFFFFFFFFu}) {
        platform::setLastSystemError(0);
        EXPECT_EQ(save(2, 2, 0, format, data, folder / "image.tif"), 87u);
        EXPECT_EQ(platform::lastSystemError(), 87u);
        EXPECT_TRUE(folder.isEmpty());
    }
}

TEST(TiffStill, WithoutMemoryItFailsWithTheLastError8) {
    const TempFolder folder;
    const TestImage image(300, 200, 1);
    platform::setLastSystemError(0);
    {
        const FailAllocationsFrom fail(162 + 300 * 200);
        EXPECT_EQ(save(image, folder / "image.tif"), 8u);
        EXPECT_EQ(FailAllocationsFrom::failures(), 1u);
    }
    EXPECT_EQ(platform::lastSystemError(), 8u);
    EXPECT_EQ(readFile(folder / "image.tif").size(), 0u);
}

TEST(TiffStill, SizesBeyondTheHeaderAreRefusedWithoutAFile) {
    const TempFolder folder;
    const std::uint8_t data[1] = {};
    struct Case {
        std::uint32_t width, height, stride, format;
    };
    const Case cases[] = {
        {0x10000, 0x10000, 0, 1},          // 4 GiB: the strip's bytes wrap to 0
        {0xFFFFFFFF, 1, 0, 1},             // pixels fit, header and pixels do not
        {0x10000, 0x4000, 0, 512},         //
        {0xFFFFFFFF, 0xFFFFFFFF, 0, 512},  // even 64 bits are not enough
        {0x80000000, 0x40000000, 0, 512},  // 0 in 64 bits
        {0x40000000, 1, 0, 8},             // the row alone wraps
        {1, 0xFFFFFFFF, 0xFFFFFFFF, 1},    // rows that cannot lie in memory
        {4, 2, 3, 1},                      // rows with less room than their pixels
        {4, 2, 11, 4},                     //
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.width << "x" << c.height << " stride " << c.stride);
        EXPECT_EQ(save(c.width, c.height, c.stride, c.format, data, folder / "image.tif"), 87u);
        EXPECT_TRUE(folder.isEmpty());
    }
}

}  // namespace
}  // namespace tavra::test
