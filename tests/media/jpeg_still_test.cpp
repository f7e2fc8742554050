// JPEG files: what the encoder is asked for, and what happens when it cannot do it. The encoder itself is
// tested in tests/media/jpeg.
#include <gtest/gtest.h>

#include "media/jpeg/jpeg_support.h"
#include "media/still_support.h"
#include "platform/last_error.h"
#include "support/failing_allocations.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

// What the encoder makes of the image's first three bytes, or its only one, of each pixel.
ByteVector wanted(const TestImage& image, unsigned quality) {
    JpegJob job;
    job.width = image.width;
    job.height = image.height;
    job.quality = quality;
    if (image.format == 1) {
        job.channels = 1;
        job.source = job.color = JpegColor::Gray;
    }
    for (std::uint32_t y = 0; y < image.height; ++y) {
        for (std::uint32_t x = 0; x < image.width; ++x) {
            for (unsigned c = 0; c < job.channels; ++c) job.pixels.push_back(image.byteAt(x, y, c));
        }
    }
    return encoded(job);
}

TEST(JpegStill, IsGrayOrYCbCrWithoutSubsampling) {
    const TempFolder folder;
    const ByteVector gray = savedBytes(TestImage(17, 9, 1), folder / "a.jpg");
    EXPECT_EQ(segment(gray, 0xC0), (ByteVector{8, 0, 9, 0, 17, 1, 0, 0x11, 0}));
    const ByteVector color = savedBytes(TestImage(17, 9, 4), folder / "a.jpg");
    EXPECT_EQ(segment(color, 0xC0), (ByteVector{8, 0, 9, 0, 17, 3, 0, 0x11, 0, 1, 0x11, 1, 2, 0x11, 1}));
    EXPECT_TRUE(segment(color, 0xDD).empty()) << "no restart interval";
}

TEST(JpegStill, HoldsThePixels) {
    const TempFolder folder;
    for (const std::uint32_t format : {1u, 4u, 8u}) {
        for (const Size size : kSizes) {
            if (format == 8 && (size.width == 2 || size.width == 3)) continue;  // see below
            SCOPED_TRACE(::testing::Message()
                         << "format " << format << ", " << size.width << "x" << size.height);
            const TestImage image(size.width, size.height, format);
            EXPECT_EQ(savedBytes(image, folder / "a.jpg"), wanted(image, 100));
        }
    }
}

TEST(JpegStill, RowsAreSteppedByTheStride) {
    const TempFolder folder;
    for (const std::uint32_t format : {1u, 4u, 8u}) {
        for (std::uint32_t extra = 0; extra < 6; ++extra) {
            SCOPED_TRACE(::testing::Message() << "format " << format << ", padding " << extra);
            const TestImage image(5, 7, format, 5 * (format == 1 ? 1 : format == 4 ? 3 : 4) + extra);
            EXPECT_EQ(savedBytes(image, folder / "a.jpg"), wanted(image, 100));
        }
    }
}

// By design: rows as long as packed ones count as packed.
TEST(JpegStill, FourBytePixelsInTwoOrThreeColumnsAreTakenForPackedOnes) {
    const TempFolder folder;
    for (const std::uint32_t width : {2u, 3u}) {
        const TestImage image(width, 4, 8);
        TestImage packed(width, 4, 4);
        ASSERT_EQ(packed.stride, image.stride);
        packed.data = image.data;
        EXPECT_EQ(savedBytes(image, folder / "a.jpg"), wanted(packed, 100)) << width;
        TestImage wide(width, 4, 8, image.stride + 4);
        EXPECT_EQ(savedBytes(wide, folder / "a.jpg"), wanted(wide, 100))
            << "with a longer stride they are not";
    }
}

TEST(JpegStill, TheLastArgumentIsWhatTheQualityLeavesOfAHundred) {
    const TempFolder folder;
    const TestImage image(33, 9, 4);
    for (const std::uint32_t compression : {0u, 1u, 25u, 50u, 51u, 99u}) {
        EXPECT_EQ(savedBytes(image, folder / "a.jpg", compression), wanted(image, 100 - compression))
            << compression;
    }
    for (const std::uint32_t compression : {100u, 101u, 5000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(savedBytes(image, folder / "a.jpg", compression), wanted(image, 0)) << compression;
    }
}

// By design.
TEST(JpegStill, CompressionOf100GivesAFinerPictureThan99) {
    const TempFolder folder;
    const TestImage image(64, 64, 1);
    const ByteVector coarsest = savedBytes(image, folder / "a.jpg", 99);
    EXPECT_EQ(segment(coarsest, 0xDB)[1], 255);
    const ByteVector beyond = savedBytes(image, folder / "a.jpg", 100);
    EXPECT_EQ(segment(beyond, 0xDB)[1], 16);
    EXPECT_GT(beyond.size(), coarsest.size());
}

TEST(JpegStill, EveryEndingThatBeginsJpgOrJpegIsOne) {
    const TempFolder folder;
    const TestImage image(3, 3, 1);
    for (const char* name : {"a.jpg", "a.JPEG", "a.j", "a.jP", "a.jpe"}) {
        EXPECT_EQ(savedBytes(image, folder / name), wanted(image, 100)) << name;
    }
}

TEST(JpegStill, SizesThatTheHeaderCannotHoldAreRefusedWithoutAFile) {
    const TempFolder folder;
    const std::vector<std::uint8_t> row(65536 * 4);
    const struct {
        std::uint32_t width, height, stride, format;
    } rows[] = {{0, 1, 0, 1}, {1, 0, 0, 1},          {65536, 1, 0, 1}, {1, 65536, 4, 4},
                {4, 2, 3, 1}, {0xFFFFFFFF, 1, 0, 4}, {4, 2, 11, 4},    {4, 2, 15, 8}};
    for (const auto& given : rows) {
        platform::setLastSystemError(0);
        EXPECT_EQ(save(given.width, given.height, given.stride, given.format, row.data(), folder / "a.jpg"),
                  87u)
            << given.width << "x" << given.height;
        EXPECT_EQ(platform::lastSystemError(), 87u);
    }
    EXPECT_TRUE(folder.isEmpty());
    EXPECT_EQ(save(65535, 1, 0, 4, row.data(), folder / "a.jpg"), 0u);
}

TEST(JpegStill, WithoutMemoryForPackedRowsItIsCodeEight) {
    const TempFolder folder;
    const TestImage image(300, 200, 8);
    platform::setLastSystemError(0);
    std::uint32_t result = 0;
    {
        const FailAllocationsFrom large(300 * 3 * 200);
        result = save(image, folder / "a.jpg");
    }
    EXPECT_EQ(result, 8u);
    EXPECT_EQ(platform::lastSystemError(), 8u);
    EXPECT_TRUE(readFile(folder / "a.jpg").empty());
    EXPECT_EQ(save(image, folder / "a.jpg"), 0u);
}

// By design nobody looks at how the encoder fares.
TEST(JpegStill, WithoutMemoryForTheEncoderTheFileIsNotWholeAndTheResult0) {
    const TempFolder folder;
    const TestImage image(300, 200, 1);
    std::uint32_t result = 99;
    {
        const FailAllocationsFrom large(1500);
        result = save(image, folder / "a.jpg");
        EXPECT_GT(FailAllocationsFrom::failures(), 0u);
    }
    EXPECT_EQ(result, 0u);
    EXPECT_TRUE(readFile(folder / "a.jpg").empty());
}

}  // namespace
}  // namespace tavra::test
