#include <gtest/gtest.h>
#include <png.h>

#include "media/still_support.h"
#include "media/stills/png_writer.h"
#include "platform/last_error.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

// What libpng finds in a file.
struct ReadBack {
    std::uint32_t width = 0, height = 0;
    int depth = 0, colourType = 0, interlace = 0;
    std::vector<std::uint8_t> samples;  // rows without padding, R first, words big-endian
};

ReadBack readPng(const std::filesystem::path& path) {
    ReadBack result;
    std::FILE* const stream = std::fopen(path.string().c_str(), "rb");
    if (stream == nullptr) return result;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png)) == 0) {
        png_init_io(png, stream);
        png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
        result.width = png_get_image_width(png, info);
        result.height = png_get_image_height(png, info);
        result.depth = png_get_bit_depth(png, info);
        result.colourType = png_get_color_type(png, info);
        result.interlace = png_get_interlace_type(png, info);
        const png_bytepp rows = png_get_rows(png, info);
        for (std::uint32_t y = 0; y < result.height; ++y) {
            result.samples.insert(result.samples.end(), rows[y], rows[y] + png_get_rowbytes(png, info));
        }
    } else {
        ADD_FAILURE() << "libpng cannot read " << path;
    }
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(stream);
    return result;
}

// The samples as a PNG holds them.
std::vector<std::uint8_t> expectedSamples(const TestImage& image) {
    Bytes samples;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        for (std::uint32_t x = 0; x < image.width; ++x) {
            switch (image.format) {
                case 1: samples.u8(image.byteAt(x, y, 0)); break;
                case 2: samples.u8(image.byteAt(x, y, 1)).u8(image.byteAt(x, y, 0)); break;
                case 4:
                case 8:
                    samples.u8(image.byteAt(x, y, 2)).u8(image.byteAt(x, y, 1)).u8(image.byteAt(x, y, 0));
                    break;
                default:
                    for (int word = 2; word >= 0; --word) {
                        samples.u8(image.byteAt(x, y, 2 * word + 1)).u8(image.byteAt(x, y, 2 * word));
                    }
            }
        }
    }
    return samples;
}

// The same file made with libpng from samples that need no conversion.
std::vector<std::uint8_t> referencePng(const TestImage& image, bool interlaced,
                                       const std::filesystem::path& path) {
    std::vector<std::uint8_t> samples = expectedSamples(image);
    const std::size_t rowBytes = samples.size() / image.height;
    std::vector<png_bytep> rows;
    for (std::uint32_t y = 0; y < image.height; ++y) rows.push_back(samples.data() + y * rowBytes);
    std::FILE* const stream = std::fopen(path.string().c_str(), "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png)) == 0) {
        png_init_io(png, stream);
        png_set_IHDR(png, info, image.width, image.height, 8,
                     image.format == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB,
                     interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        png_set_rows(png, info, rows.data());
        png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    } else {
        ADD_FAILURE() << "libpng cannot write the reference";
    }
    png_destroy_write_struct(&png, &info);
    std::fclose(stream);
    return readFile(path);
}

TEST(PngStill, ReadsBackAsRgbOrGrey) {
    const TempFolder folder;
    for (const std::uint32_t format : {1u, 4u, 8u}) {
        for (const Size size : kSizes) {
            for (const std::uint32_t option : {0u, 1u}) {
                SCOPED_TRACE(::testing::Message() << "format " << format << ", " << size.width << "x"
                                                  << size.height << ", option " << option);
                const TestImage image(size.width, size.height, format);
                ASSERT_EQ(save(image, folder / "image.png", option), 0u);
                const ReadBack read = readPng(folder / "image.png");
                EXPECT_EQ(read.width, size.width);
                EXPECT_EQ(read.height, size.height);
                EXPECT_EQ(read.depth, 8);
                EXPECT_EQ(read.colourType, format == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB);
                EXPECT_EQ(read.interlace, option == 0 ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE);
                EXPECT_EQ(read.samples, expectedSamples(image));
            }
        }
    }
}

TEST(PngStill, CompressionAndFiltersAreTheDefaults) {
    const TempFolder folder;
    for (const std::uint32_t format : {1u, 4u, 8u}) {
        for (const bool interlaced : {true, false}) {
            SCOPED_TRACE(::testing::Message() << "format " << format << ", interlaced " << interlaced);
            const TestImage image(67, 43, format);
            EXPECT_EQ(savedBytes(image, folder / "image.png", interlaced ? 0 : 1),
                      referencePng(image, interlaced, folder / "reference.png"));
        }
    }
}

TEST(PngStill, OnlyBit0OfTheOptionCounts) {
    const TempFolder folder;
    const TestImage image(9, 9, 1);
    for (const std::uint32_t option : {0u, 2u, 100u, 0xFFFFFFFEu}) {
        ASSERT_EQ(save(image, folder / "image.png", option), 0u);
        EXPECT_EQ(readPng(folder / "image.png").interlace, PNG_INTERLACE_ADAM7) << option;
        ASSERT_EQ(save(image, folder / "image.png", option + 1), 0u);
        EXPECT_EQ(readPng(folder / "image.png").interlace, PNG_INTERLACE_NONE) << option + 1;
    }
}

TEST(PngStill, RowsAreSteppedByTheStride) {
    const TempFolder folder;
    for (const std::uint32_t format : {1u, 4u, 8u}) {
        for (std::uint32_t extra = 0; extra < 6; ++extra) {
            for (const std::uint32_t option : {0u, 1u}) {
                SCOPED_TRACE(::testing::Message() << "format " << format << ", padding " << extra);
                const TestImage image(5, 7, format, 5 * (format == 1 ? 1 : format == 4 ? 3 : 4) + extra);
                ASSERT_EQ(save(image, folder / "image.png", option), 0u);
                EXPECT_EQ(readPng(folder / "image.png").samples, expectedSamples(image));
            }
        }
    }
}

// The writer's own paths for words, which no file name leads to.
TEST(PngStill, TheWriterTakesWordsToo) {
    const TempFolder folder;
    for (const std::uint32_t format : {2u, 256u, 512u}) {
        for (const std::uint32_t option : {0u, 1u}) {
            SCOPED_TRACE(::testing::Message() << "format " << format);
            const TestImage image(13, 9, format);
            auto file =
                platform::OutputFile::open(wideName(folder / "words.png"), stills::kPngWriter.buffering);
            ASSERT_TRUE(file.isOpen());
            ASSERT_TRUE(
                stills::kPngWriter
                    .write({image.width, image.height, image.stride, format, image.data.data()}, option, file)
                    .ok());
            file.close();
            const ReadBack read = readPng(folder / "words.png");
            EXPECT_EQ(read.depth, 16);
            EXPECT_EQ(read.colourType, format == 2 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB);
            EXPECT_EQ(read.samples, expectedSamples(image));
        }
    }
}

TEST(PngStill, OtherFormatsAreRefusedWithoutAFile) {
    const TempFolder folder;
    const std::uint8_t data[64] = {};
    for (const std::uint32_t format : {2u, 16u, 32u, 64u, 256u, 512u, 0u, 3u, 128u}) {
        platform::setLastSystemError(0);
        EXPECT_EQ(save(2, 2, 0, format, data, folder / "image.png"), 87u);
        EXPECT_EQ(platform::lastSystemError(), 87u);
        EXPECT_TRUE(folder.isEmpty());
    }
}

TEST(PngStill, SizesThatLibpngRefusesMakeNoFile) {
    const TempFolder folder;
    const std::uint8_t data[4] = {};
    struct Case {
        std::uint32_t width, height, stride, format;
    };
    for (const Case& c :
         {Case{0, 1, 0, 1}, Case{1, 0, 0, 1}, Case{1'000'001, 1, 0, 1}, Case{1, 1'000'001, 0, 1},
          Case{0xFFFFFFFF, 0xFFFFFFFF, 0, 8}, Case{4, 1, 3, 1}, Case{2, 1, 5, 4}}) {
        SCOPED_TRACE(::testing::Message() << c.width << "x" << c.height << " stride " << c.stride);
        EXPECT_EQ(save(c.width, c.height, c.stride, c.format, data, folder / "image.png"), 87u);
        EXPECT_TRUE(folder.isEmpty());
    }
}

TEST(PngStill, TheWidestAndTheTallestImageThatLibpngTakes) {
    const TempFolder folder;
    const TestImage wide(1'000'000, 1, 1);
    ASSERT_EQ(save(wide, folder / "image.png", 1), 0u);
    EXPECT_EQ(readPng(folder / "image.png").samples, expectedSamples(wide));
    const TestImage tall(1, 1'000'000, 1);
    ASSERT_EQ(save(tall, folder / "image.png", 1), 0u);
    EXPECT_EQ(readPng(folder / "image.png").height, 1'000'000u);
}

}  // namespace
}  // namespace tavra::test
