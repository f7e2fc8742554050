// Our files through ImageMagick, where it is installed.
#include <gtest/gtest.h>

#include <cstdio>

#include "media/still_support.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

bool isInstalled() {
    return std::system("convert -version > /dev/null 2>&1") == 0;
}

std::vector<std::uint8_t> outputOf(const std::string& command) {
    std::vector<std::uint8_t> output;
    std::FILE* const pipe = popen(command.c_str(), "re");
    if (pipe == nullptr) return output;
    std::uint8_t buffer[4096];
    for (std::size_t count; (count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        output.insert(output.end(), buffer, buffer + count);
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return output;
}

// All pixels as R, G, B bytes; words as their upper bytes.
std::vector<std::uint8_t> expectedRgb(const TestImage& image) {
    Bytes rgb;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        for (std::uint32_t x = 0; x < image.width; ++x) {
            if (image.bytesAPixel == 1) {
                rgb.u8(image.byteAt(x, y, 0)).u8(image.byteAt(x, y, 0)).u8(image.byteAt(x, y, 0));
            } else {
                rgb.u8(image.byteAt(x, y, 2)).u8(image.byteAt(x, y, 1)).u8(image.byteAt(x, y, 0));
            }
        }
    }
    return rgb;
}

TEST(ImageMagick, ReadsBmpTiffAndPng) {
    ASSERT_TRUE(isInstalled()) << "ImageMagick is missing: scripts/install-deps test";
    const TempFolder folder;
    for (const char* name : {"image.bmp", "image.tif", "image.png"}) {
        for (const std::uint32_t format : {1u, 4u, 8u}) {
            SCOPED_TRACE(::testing::Message() << name << ", format " << format);
            const TestImage image(33, 9, format);
            ASSERT_EQ(save(image, folder / name), 0u);
            const std::string path = (folder / name).string();
            // A 32-bit bitmap's fourth byte is taken for opacity there: it is of no concern.
            EXPECT_EQ(outputOf("convert -quiet " + path + " -alpha off -depth 8 rgb:-"), expectedRgb(image));
        }
    }
}

TEST(ImageMagick, ReadsDeepTiff) {
    ASSERT_TRUE(isInstalled()) << "ImageMagick is missing: scripts/install-deps test";
    const TempFolder folder;
    for (const std::uint32_t format : {2u, 16u, 32u, 64u}) {
        SCOPED_TRACE(::testing::Message() << "format " << format);
        const TestImage image(33, 9, format);
        ASSERT_EQ(save(image, folder / "image.tif"), 0u);
        Bytes expected;
        for (std::uint32_t y = 0; y < image.height; ++y) {
            for (std::uint32_t x = 0; x < image.width; ++x) {
                expected.u16(image.wordAt(x, y, 0) * (format == 2    ? 1
                                                      : format == 16 ? 64
                                                      : format == 32 ? 16
                                                                     : 4));
            }
        }
        EXPECT_EQ(
            outputOf("convert -quiet " + (folder / "image.tif").string() + " -depth 16 -endian lsb gray:-"),
            static_cast<std::vector<std::uint8_t>>(expected));
    }
    for (const std::uint32_t format : {256u, 512u}) {
        SCOPED_TRACE(::testing::Message() << "format " << format);
        const TestImage image(33, 9, format);
        ASSERT_EQ(save(image, folder / "image.tif"), 0u);
        Bytes expected;
        for (std::uint32_t y = 0; y < image.height; ++y) {
            for (std::uint32_t x = 0; x < image.width; ++x) {
                for (int word = 2; word >= 0; --word) expected.u16(image.wordAt(x, y, word));
            }
        }
        EXPECT_EQ(outputOf("convert -quiet " + (folder / "image.tif").string() +
                           " -alpha off -depth 16 -endian lsb rgb:-"),
                  static_cast<std::vector<std::uint8_t>>(expected));
    }
}

}  // namespace
}  // namespace tavra::test
