// From the camera's transfer formats to preview images, each by its own plain rule.
#include <gtest/gtest.h>

#include <functional>

#include "capture_api/stream_fixture.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kWidth = 7, kHeight = 4;

struct Pixel {
    std::uint8_t b, g, r;
};

std::uint32_t word16(const Bytes& raw, std::size_t index) {
    return static_cast<std::uint32_t>(raw[2 * index] | raw[2 * index + 1] << 8);
}

Pixel grey(std::uint32_t value) {
    const auto byte = static_cast<std::uint8_t>(value);
    return {byte, byte, byte};
}

// Sample of a packed frame: `bits` bits each, lowest bit first, each row from a byte of its own.
std::uint32_t packedSample(const Bytes& raw, std::uint32_t bits, std::uint32_t x, std::uint32_t y) {
    const std::size_t row = y * ((kWidth * bits + 7) / 8);
    std::uint32_t sample = 0;
    for (std::uint32_t bit = 0; bit < bits; ++bit) {
        const std::size_t position = x * bits + bit;
        sample |= static_cast<std::uint32_t>(raw[row + position / 8] >> position % 8 & 1) << bit;
    }
    return sample;
}

struct Format {
    std::uint32_t code;
    std::uint32_t rawSize;
    std::function<Pixel(const Bytes&, std::uint32_t x, std::uint32_t y)> expected;
};

std::function<Pixel(const Bytes&, std::uint32_t, std::uint32_t)> wide(unsigned shift) {
    return [shift](const Bytes& raw, std::uint32_t x, std::uint32_t y) {
        return grey(word16(raw, y * kWidth + x) >> shift);
    };
}

std::function<Pixel(const Bytes&, std::uint32_t, std::uint32_t)> packed(std::uint32_t bits) {
    return [bits](const Bytes& raw, std::uint32_t x, std::uint32_t y) {
        return grey(packedSample(raw, bits, x, y) >> (bits - 8));
    };
}

Pixel plainByte(const Bytes& raw, std::uint32_t x, std::uint32_t y) {
    return grey(raw[y * kWidth + x]);
}

Pixel bgr8(const Bytes& raw, std::uint32_t x, std::uint32_t y) {
    const std::size_t at = 3 * (y * kWidth + x);
    return {raw[at], raw[at + 1], raw[at + 2]};
}

Pixel bgr10(const Bytes& raw, std::uint32_t x, std::uint32_t y) {
    const std::size_t at = 4 * (y * kWidth + x);
    const std::uint32_t word =
        raw[at] | raw[at + 1] << 8 | raw[at + 2] << 16 | std::uint32_t{raw[at + 3]} << 24;
    return {static_cast<std::uint8_t>(word >> 2), static_cast<std::uint8_t>(word >> 12),
            static_cast<std::uint8_t>(word >> 22)};
}

constexpr std::uint32_t kPixels = kWidth * kHeight;
const Format kFormats[] = {{1, kPixels, plainByte},
                           {2, kPixels * 2, wide(2)},
                           {4, kPixels * 2, wide(4)},
                           {8, kPixels * 2, wide(6)},
                           {16, kPixels * 2, wide(8)},
                           {0x10000, kPixels * 10 / 8, packed(10)},
                           {0x20000, kPixels * 12 / 8, packed(12)},
                           {32, kPixels, plainByte},
                           {64, kPixels * 2, wide(2)},
                           {128, kPixels * 2, wide(4)},
                           {256, kPixels * 2, wide(6)},
                           {512, kPixels * 2, wide(8)},
                           {0x100000, kPixels * 10 / 8, packed(10)},
                           {0x200000, kPixels * 12 / 8, packed(12)},
                           {1024, kPixels * 3, bgr8},
                           {2048, kPixels * 4, bgr10}};

class FramePath : public StreamTest, public testing::WithParamInterface<std::uint32_t> {
  protected:
    // One frame through a preview of the format, and its image.
    Bytes imageOf(std::uint32_t previewFormat, const Bytes& raw) {
        EXPECT_TRUE(Tavra_SetPreviewPixelFormat(handle, previewFormat));
        collectImages();
        start();
        sendFrame(1, raw);
        const auto seen = images.waitFor(1);
        stopAndExpectCode(0);
        if (seen.size() != 1) return {};
        EXPECT_EQ(seen[0].format, previewFormat);
        return seen[0].data;
    }
};

// Each transfer format, at each preview format. A packed row does not end on a byte here, and the camera's
// raw size, which counts the bits of all pixels together, is below what the rows take: those frames have no
// preview unless the size comes from the camera.
TEST_P(FramePath, ShowsEveryTransferFormat) {
    for (const Format& format : kFormats) {
        SCOPED_TRACE(format.code);
        usb.reset();
        DoubleCamera& camera = describe(format.code, 1, kWidth, kHeight);
        const bool isPacked = (format.code & 0x330000) != 0;
        if (isPacked) {
            camera.addRegisterPages();
            const std::uint32_t bits = (format.code & 0x110000) != 0 ? 10 : 12;
            camera.registers[{17, 8}] = (kWidth * bits + 7) / 8 * kHeight;
        }
        open();
        const std::uint32_t pixelBytes = GetParam() == 1 ? 1 : GetParam() == 4 ? 3 : 4;
        const std::uint32_t stride = (kWidth * pixelBytes + 3) / 4 * 4;
        Collected<SeenImage> fresh;
        std::uint32_t identifier = 0;
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, GetParam()));
        ASSERT_TRUE(Tavra_AddPreviewBitmapCallback(handle, seeImage, &fresh, &identifier));
        start();
        const Bytes raw = pattern(11);
        sendFrame(1, raw);
        const auto seen = fresh.waitFor(1);
        stopAndExpectCode(0);
        ASSERT_EQ(seen.size(), 1u);
        ASSERT_EQ(seen[0].data.size(), stride * kHeight);
        EXPECT_EQ(seen[0].width, kWidth);
        EXPECT_EQ(seen[0].height, kHeight);
        EXPECT_EQ(seen[0].format, GetParam());
        for (std::uint32_t y = 0; y < kHeight; ++y) {
            for (std::uint32_t x = 0; x < kWidth; ++x) {
                const Pixel expected = format.expected(raw, x, y);
                const std::uint8_t* const pixel = seen[0].data.data() + y * stride + x * pixelBytes;
                if (pixelBytes == 1) {
                    ASSERT_EQ(pixel[0], expected.g) << x << ", " << y;
                    continue;
                }
                ASSERT_EQ(pixel[0], expected.b) << x << ", " << y;
                ASSERT_EQ(pixel[1], expected.g) << x << ", " << y;
                ASSERT_EQ(pixel[2], expected.r) << x << ", " << y;
            }
        }
        Tavra_Close(handle);
        handle = nullptr;
    }
}

INSTANTIATE_TEST_SUITE_P(PreviewFormats, FramePath, testing::Values(1u, 4u, 8u));

class FramePathOf : public FramePath {};

// Raw colour: each sample in the channel of its colour, the others 0.
TEST_F(FramePathOf, AMosaicGoesThroughTheChosenInterpolation) {
    openCamera(1, 5, 6, 4);  // B G / G R
    ASSERT_TRUE(Tavra_SetColorInterpolationMethod(handle, 1));
    const Bytes raw = pattern(3);
    const Bytes image = imageOf(4, raw);
    ASSERT_EQ(image.size(), 20u * 4);
    for (std::uint32_t y = 0; y < 4; ++y) {
        for (std::uint32_t x = 0; x < 6; ++x) {
            const std::uint32_t channel = (x % 2) + (y % 2);  // B, G, R
            for (std::uint32_t c = 0; c < 3; ++c) {
                EXPECT_EQ(image[y * 20 + 3 * x + c], c == channel ? raw[y * 6 + x] : 0) << x << ", " << y;
            }
        }
    }
}

TEST_F(FramePathOf, AMosaicFollowsTheCamerasMirror) {
    DoubleCamera& camera = describe(1, 5, 6, 4);
    camera.setCapability(1, 6);
    camera.status(63) = 1;  // B G / G R becomes G B / R G
    open();
    ASSERT_TRUE(Tavra_SetColorInterpolationMethod(handle, 1));
    const Bytes raw = pattern(3);
    const Bytes image = imageOf(4, raw);
    ASSERT_EQ(image.size(), 20u * 4);
    EXPECT_EQ(image[1], raw[0]);  // green at the origin
    EXPECT_EQ(image[3], raw[1]);  // blue beside it
}

struct YcbcrCode {
    std::uint32_t code;
    std::uint32_t pixels;  // of a group
    Bytes group;           // with Y = 81 and no colour
};

class Ycbcr : public StreamTest, public testing::WithParamInterface<YcbcrCode> {};

// Without colour the three channels are the luminance: Y at full range, 1.16438 (Y - 16) = 75.68 at limited
// range.
TEST_P(Ycbcr, WithoutColorIsGrey) {
    const YcbcrCode& layout = GetParam();
    const std::uint8_t expected = layout.code >= 0x1000000 ? 75 : 81;
    for (const std::uint32_t format : {1u, 4u, 8u}) {
        usb.reset();
        describe(layout.code, 1, 8, 4);
        open();
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, format));
        Bytes raw;
        while (raw.size() < rawSize) raw.insert(raw.end(), layout.group.begin(), layout.group.end());
        ASSERT_EQ(raw.size(), rawSize);
        Collected<SeenImage> fresh;
        std::uint32_t identifier = 0;
        ASSERT_TRUE(Tavra_AddPreviewBitmapCallback(handle, seeImage, &fresh, &identifier));
        start();
        sendFrame(1, raw);
        const auto seen = fresh.waitFor(1);
        ASSERT_EQ(seen.size(), 1u);
        const std::uint32_t pixelBytes = format == 1 ? 1 : format == 4 ? 3 : 4;
        ASSERT_EQ(seen[0].data.size(), 8u * 4 * pixelBytes);
        for (std::size_t i = 0; i < seen[0].data.size(); ++i) {
            if (pixelBytes == 4 && i % 4 == 3) {
                EXPECT_EQ(seen[0].data[i], 0) << "the fourth byte is never written";
            } else {
                EXPECT_EQ(seen[0].data[i], expected) << i;
            }
        }
        stopAndExpectCode(0);
        Tavra_Close(handle);
        handle = nullptr;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Codes, Ycbcr,
    testing::Values(YcbcrCode{4096, 4, {81, 81, 128, 81, 81, 128}}, YcbcrCode{8192, 2, {81, 128, 81, 128}},
                    YcbcrCode{16384, 1, {81, 128, 128}}, YcbcrCode{0x1000000, 4, {81, 81, 128, 81, 81, 128}},
                    YcbcrCode{0x2000000, 2, {81, 128, 81, 128}}, YcbcrCode{0x4000000, 1, {81, 128, 128}}));

TEST_F(FramePathOf, AFrameSmallerThanItsDeclaredSizeHasNoPreview) {
    DoubleCamera& camera = describe(1, 1, 6, 4);
    camera.addRegisterPages();
    camera.registers[{17, 8}] = 23;  // one byte short of 6 x 4
    open();
    ASSERT_EQ(rawSize, 23u);
    collectRaw();
    collectImages();
    start();
    for (std::uint32_t i = 0; i < 3; ++i) sendFrame(i, pattern(1));
    EXPECT_EQ(raws.waitFor(3).size(), 3u) << "raw consumers get what there is";
    stopAndExpectCode(0);
    EXPECT_EQ(images.count(), 0u);
}

TEST_F(FramePathOf, APackedFrameWhoseRowsNeedMoreThanItHoldsHasNoPreview) {
    openCamera(0x10000, 1, 7, 4);  // 7 x 10 bits: rows of 9 bytes, but 35 bytes in all
    ASSERT_EQ(rawSize, 35u);
    collectRaw();
    collectImages();
    start();
    sendFrame(1, pattern(1));
    EXPECT_EQ(raws.waitFor(1).size(), 1u);
    stopAndExpectCode(0);
    EXPECT_EQ(images.count(), 0u);
}

TEST_F(FramePathOf, AnUnknownTransferCodeHasNoPreview) {
    DoubleCamera& camera = describe(0x40, 1, 6, 4);
    camera.transferBits = 0x40000;
    camera.addRegisterPages();
    camera.registers[{17, 8}] = 24;
    open();
    collectRaw();
    collectImages();
    start();
    sendFrame(1, pattern(1));
    EXPECT_EQ(raws.waitFor(1)[0].transferBits, 0x40000u);
    stopAndExpectCode(0);
    EXPECT_EQ(images.count(), 0u);
}

TEST_F(FramePathOf, ASizeThatOverflowsTheCountOfBytesHasNoPreview) {
    // 65536 x 65537 bytes are 65536 in 32 bits; no images of that size can be made.
    describe(1, 1, 65536, 65537);
    EXPECT_EQ(Tavra_Open(0), nullptr);
}

TEST_F(FramePathOf, AFailedInterpolationEndsTheRunWithItsCode) {
    openCamera(1, 1, 6, 4);
    ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, 1));
    ASSERT_TRUE(Tavra_SetColorArray(handle, 2));  // a mosaic has no image of one byte a pixel
    ASSERT_TRUE(Tavra_SetColorInterpolationMethod(handle, 3));
    collectImages();
    start();
    sendFrame(1, pattern(1));
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), TAVRA_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(images.count(), 0u);
    auto& set = record().imagesA;
    EXPECT_EQ(set.takeReady(), 1u) << "the image that was begun is published at the end";
    EXPECT_EQ(set.image(1).frameNumber, 1u);
}

// Which a camera may declare in its identity: a layout of YCbCr, whose rows take more than the frame has, or
// none at all.
TEST_F(FramePathOf, AColorArrayThatIsNoneOfARawFrameEndsTheRun) {
    for (const std::uint16_t array : {0, 6, 7, 8, 9, 10, 11, 20, 0xFFFF}) {
        SCOPED_TRACE(array);
        usb.reset();
        openCamera(1, array, 64, 64);
        collectImages();
        start();
        sendFrame(1, pattern(1));
        EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), TAVRA_ERROR_INVALID_ARGUMENT);
        EXPECT_EQ(images.count(), 0u);
        Tavra_Close(handle);
        handle = nullptr;
    }
}

// A raw callback that asks for the preview gets it of the same frame.
struct Asking {
    TavraHandle handle;
    Collected<SeenImage>& images;
    TavraPreviewBitmapCallback seeImage;

    static void callback(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t,
                         std::uint32_t, void* context, std::uint32_t* word) {
        if ((*word)++ > 0) return;
        auto& asking = *static_cast<Asking*>(context);
        std::uint32_t identifier = 0;
        Tavra_AddPreviewBitmapCallback(asking.handle, asking.seeImage, &asking.images, &identifier);
    }
};

TEST_F(FramePathOf, WhetherThePreviewIsWantedIsDecidedBehindTheRawCallbacks) {
    openCamera(1, 1, 6, 4);
    Asking asking{handle, images, seeImage};
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddRawCallback(handle, Asking::callback, &asking, &identifier));
    start();
    sendFrame(5, pattern(0));
    const auto seen = images.waitFor(1);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].number, 5u);
    stopAndExpectCode(0);
}

TEST_F(FramePathOf, WithoutPreviewConsumersNoImageIsMade) {
    openCamera(1, 1, 6, 4);
    collectRaw();
    start();
    sendFrame(1, pattern(1));
    ASSERT_EQ(raws.waitFor(1).size(), 1u);
    stopAndExpectCode(0);
    for (std::uint32_t i = 0; i < 3; ++i) EXPECT_EQ(record().imagesA.image(i).frameNumber, 0u);
}

}  // namespace
}  // namespace tavra::test
