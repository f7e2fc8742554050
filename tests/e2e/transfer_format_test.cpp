// A still scene in every transfer format: raw frame, reduction to 8 bits and preview agree with each other
// and with a plain reading of the bits.
#include <algorithm>
#include <array>

#include "e2e/camera_fixture.h"

namespace tavra::e2e {
namespace {

struct Format {
    std::uint32_t code, bits;
    bool packed;
};

constexpr std::array kFormats{
    Format{0x1, 8, false},      Format{0x2, 10, false},     Format{0x4, 12, false},
    Format{0x8, 14, false},     Format{0x10, 16, false},    Format{0x20, 8, false},
    Format{0x40, 10, false},    Format{0x80, 12, false},    Format{0x100, 14, false},
    Format{0x200, 16, false},   Format{0x10000, 10, true},  Format{0x20000, 12, true},
    Format{0x100000, 10, true}, Format{0x200000, 12, true},
};

struct Picture {
    std::uint32_t width, height;
};

// One bit after the other, low bits first, each row from a byte of its own; the top eight bits of each
// sample.
Bytes topBytes(const Bytes& raw, Picture size, const Format& format) {
    const std::uint32_t stored = format.packed ? format.bits : format.bits > 8 ? 16 : 8;
    const std::size_t rowBytes = (std::size_t{size.width} * stored + 7) / 8;
    EXPECT_EQ(raw.size(), rowBytes * size.height);
    Bytes top;
    for (std::uint32_t y = 0; y < size.height; ++y) {
        for (std::uint32_t x = 0; x < size.width; ++x) {
            std::uint32_t sample = 0;
            for (std::uint32_t bit = 0; bit < stored; ++bit) {
                const std::size_t at = std::size_t{x} * stored + bit;
                sample |= (raw[y * rowBytes + at / 8] >> at % 8 & 1u) << bit;
            }
            EXPECT_LT(sample, 1u << format.bits);
            top.push_back(static_cast<std::uint8_t>(sample >> (format.bits - 8)));
        }
    }
    return top;
}

Bytes withPaddedRows(const Bytes& plane, Picture size) {
    Bytes padded;
    for (std::uint32_t y = 0; y < size.height; ++y) {
        const auto row = plane.begin() + static_cast<std::ptrdiff_t>(std::size_t{y} * size.width);
        padded.insert(padded.end(), row, row + size.width);
        padded.resize(std::size_t{y + 1} * ((size.width + 3) / 4 * 4));
    }
    return padded;
}

// What pads the rows is nobody's.
void clearPadding(Bytes& image, Picture size, std::uint32_t pixelBytes) {
    const std::size_t used = std::size_t{size.width} * pixelBytes, line = (used + 3) / 4 * 4;
    for (std::size_t row = 0; row < image.size(); row += line) {
        std::fill(image.begin() + static_cast<std::ptrdiff_t>(row + used),
                  image.begin() + static_cast<std::ptrdiff_t>(row + line), std::uint8_t{0});
    }
}

// The formats that the camera has, of which there are so many.
void expectAllFormats(const std::string& model, Picture size, std::size_t count) {
    useCameras(model +
               ":noise=off:pace=off:geometry.width_step=1:geometry.height_step=1:geometry.sensor_width=128:"
               "geometry.sensor_height=96:"
               "width=" +
               std::to_string(size.width) + ":height=" + std::to_string(size.height));
    const Camera camera;
    ASSERT_TRUE(camera.isOpen());
    std::uint32_t mask = 0, format = 0;
    std::size_t tried = 0;
    ASSERT_TRUE(Tavra_GetEnableTransferBitsPerPixel(camera, &mask));
    ASSERT_TRUE(Tavra_GetPreviewPixelFormat(camera, &format));
    const bool mono = format == TAVRA_PIXEL_MONO_8;
    Bytes mosaicOfFirst;
    for (const Format& each : kFormats) {
        if ((mask & each.code) == 0) continue;
        SCOPED_TRACE(model + ", code " + std::to_string(each.code) + ", width " + std::to_string(size.width));
        ++tried;
        ASSERT_TRUE(Tavra_SetTransferBitsPerPixel(camera, each.code));
        const Bytes raw = takeRaw(camera);
        const Bytes top = topBytes(raw, size, each);

        Bytes reduced(top.size());
        if (each.code == 1 || each.code == 0x20) {
            reduced = raw;
        } else {
            ASSERT_TRUE(Tavra_ConvTo8BitsImage(camera, size.width, size.height, each.code, raw.data(),
                                               reduced.data()));
        }
        EXPECT_EQ(reduced, top);
        if (mosaicOfFirst.empty()) mosaicOfFirst = top;
        EXPECT_EQ(top, mosaicOfFirst) << "the picture is the same in every format";

        Bytes preview = takePreview(camera);
        Bytes expected(preview.size());
        ASSERT_EQ(preview.size(), previewSizeOf(camera));
        if (mono) {
            expected = withPaddedRows(top, size);
        } else {
            ASSERT_TRUE(Tavra_ConvertRawToBGR(camera, size.width, size.height, top.data(), expected.data(),
                                              TAVRA_INTERPOLATION_BILINEAR, format));
        }
        clearPadding(preview, size, mono ? 1 : 3);
        EXPECT_EQ(preview, expected);
    }
    EXPECT_EQ(tried, count);
}

TEST(TransferFormats, OfABayerCameraGiveTheSamePreview) {
    expectAllFormats("bayer", {64, 48}, 5);
    expectAllFormats("bayer12p", {64, 48}, 3);
}

TEST(TransferFormats, OfAMonoCameraGiveTheSamePreview) {
    expectAllFormats("mono", {64, 48}, 6);
    expectAllFormats("mono16", {64, 48}, 12);
}

TEST(TransferFormats, OfOddSizesGiveTheSamePreview) {
    for (const Picture size : {Picture{33, 5}, Picture{35, 7}, Picture{37, 13}, Picture{47, 9}}) {
        expectAllFormats("bayer", size, 5);
        expectAllFormats("bayer12p", size, 3);
        expectAllFormats("mono", size, 6);
        expectAllFormats("mono16", size, 12);
    }
}

TEST(TransferFormats, AreRefusedWhileTheStreamRuns) {
    useCameras("bayer:width=64:height=48");
    Camera camera;
    FrameLog log;
    log.takeRawOf(camera);
    camera.start();
    EXPECT_FALSE(Tavra_SetTransferBitsPerPixel(camera, 4));
    EXPECT_EQ(Tavra_GetLastError(camera), TAVRA_ERROR_TRANSFER_RUNNING);
    EXPECT_FALSE(Tavra_SetImageSize(camera, 0, 1, 0, 0, 128, 96));
    EXPECT_EQ(Tavra_GetLastError(camera), TAVRA_ERROR_TRANSFER_RUNNING);
    for (const Frame& frame : log.waitFor(log.count() + 2)) EXPECT_EQ(frame.bytes.size(), 64u * 48u);
    camera.stop();
    EXPECT_TRUE(Tavra_SetTransferBitsPerPixel(camera, 4));
    EXPECT_EQ(takeRaw(camera).size(), 64u * 48u * 2);
}

}  // namespace
}  // namespace tavra::e2e
