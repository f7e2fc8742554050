#include <gtest/gtest.h>

#include "media/still_support.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

TEST(RawStill, HoldsTheBytesBackToBackFromTheStart) {
    const TempFolder folder;
    for (const std::uint32_t format : kAllFormats) {
        for (const Size size : kSizes) {
            SCOPED_TRACE(::testing::Message()
                         << "format " << format << ", " << size.width << "x" << size.height);
            const TestImage image(size.width, size.height, format);
            const std::size_t bytes = std::size_t{size.width} * size.height * image.bytesAPixel;
            const std::vector<std::uint8_t> expected(image.data.begin(), image.data.begin() + bytes);
            EXPECT_EQ(savedBytes(image, folder / "image.raw"), expected);
        }
    }
}

TEST(RawStill, ThePaddingOfTheRowsIsTakenAlongAndTheEndIsCut) {
    const TempFolder folder;
    // 3 pixels of 1 byte in rows of 4: six bytes are the first row, its padding, and two pixels of the
    // second.
    const std::uint8_t data[] = {1, 2, 3, 0xEE, 4, 5, 6, 0xEE};
    ASSERT_EQ(save(3, 2, 0, 1, data, folder / "image.raw"), 0u);
    EXPECT_EQ(readFile(folder / "image.raw"), (std::vector<std::uint8_t>{1, 2, 3, 0xEE, 4, 5}));
}

TEST(RawStill, TheStrideHasNoSay) {
    const TempFolder folder;
    const std::uint8_t data[] = {1, 2, 3, 4, 5, 6};
    for (const std::uint32_t stride : {0u, 1u, 3u, 4u, 1000u}) {
        ASSERT_EQ(save(3, 2, stride, 1, data, folder / "image.raw"), 0u);
        EXPECT_EQ(readFile(folder / "image.raw"), (std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6}));
    }
}

TEST(RawStill, WordsOfAllDepthsAreUnchanged) {
    const TempFolder folder;
    const std::uint8_t words[] = {0x34, 0x02, 0xFF, 0x03, 0x00, 0x00, 0x01, 0x00};
    for (const std::uint32_t format : {2u, 16u, 32u, 64u}) {
        ASSERT_EQ(save(2, 2, 0, format, words, folder / "image.raw"), 0u);
        EXPECT_EQ(readFile(folder / "image.raw"),
                  std::vector<std::uint8_t>(std::begin(words), std::end(words)));
    }
}

TEST(RawStill, NoPixelsGiveAnEmptyFile) {
    const TempFolder folder;
    const std::uint8_t data[4] = {};
    EXPECT_EQ(save(0, 2, 0, 1, data, folder / "image.raw"), 0u);
    EXPECT_EQ(save(2, 0, 0, 1, data, folder / "image.raw"), 0u);
    EXPECT_EQ(readFile(folder / "image.raw").size(), 0u);
}

}  // namespace
}  // namespace tavra::test
