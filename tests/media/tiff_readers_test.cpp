// Our TIFF files through libtiff.
#include <gtest/gtest.h>
#include <tiffio.h>

#include "media/still_support.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

std::uint32_t raised(const TestImage& image, std::uint32_t word) {
    switch (image.format) {
        case 16: return word * 64;
        case 32: return word * 16;
        case 64: return word * 4;
        default: return word;
    }
}

// A row's samples in the order of the file, as bytes or native words.
std::vector<std::uint32_t> expectedRow(const TestImage& image, std::uint32_t y) {
    const bool bytes = image.format == 1 || image.format == 4 || image.format == 8;
    const std::uint32_t samples = image.bytesAPixel / (bytes ? 1 : 2);
    std::vector<std::uint32_t> row;
    for (std::uint32_t x = 0; x < image.width; ++x) {
        for (std::uint32_t s = 0; s < samples; ++s) {
            const std::uint32_t source = samples >= 3 && s < 3 ? 2 - s : s;
            row.push_back(bytes ? image.byteAt(x, y, source) : raised(image, image.wordAt(x, y, source)));
        }
    }
    return row;
}

std::vector<std::uint32_t> readRow(TIFF* tiff, std::uint32_t y, std::size_t samples, bool bytes) {
    std::vector<std::uint8_t> raw(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
    EXPECT_EQ(raw.size(), samples * (bytes ? 1 : 2));
    EXPECT_EQ(TIFFReadScanline(tiff, raw.data(), y, 0), 1);
    std::vector<std::uint32_t> row;
    for (std::size_t i = 0; i < samples; ++i)
        row.push_back(bytes ? raw[i] : raw[2 * i] + 256u * raw[2 * i + 1]);
    return row;
}

TEST(TiffReaders, LibtiffReadsEveryFormat) {
    TIFFSetWarningHandler(nullptr);  // it remarks on the order of the entries
    const TempFolder folder;
    for (const std::uint32_t format : kAllFormats) {
        SCOPED_TRACE(::testing::Message() << "format " << format);
        const TestImage image(33, 9, format);
        ASSERT_EQ(save(image, folder / "image.tif"), 0u);
        TIFF* const tiff = TIFFOpen((folder / "image.tif").string().c_str(), "r");
        ASSERT_NE(tiff, nullptr);

        std::uint32_t width = 0, height = 0;
        std::uint16_t bits = 0, samples = 0, photometric = 0, unit = 0;
        float resolution = 0;
        TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
        TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric);
        TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &resolution);
        TIFFGetField(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
        const bool bytes = format == 1 || format == 4 || format == 8;
        EXPECT_EQ(width, 33u);
        EXPECT_EQ(height, 9u);
        EXPECT_EQ(bits, bytes ? 8 : 16);
        EXPECT_EQ(samples, image.bytesAPixel / (bytes ? 1 : 2));
        EXPECT_EQ(photometric, samples == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
        EXPECT_EQ(resolution, 72.0f);
        EXPECT_EQ(unit, RESUNIT_INCH);
        for (std::uint32_t y = 0; y < image.height; ++y) {
            EXPECT_EQ(readRow(tiff, y, std::size_t{width} * samples, bytes), expectedRow(image, y))
                << "row " << y;
        }
        TIFFClose(tiff);
    }
}

}  // namespace
}  // namespace tavra::test
