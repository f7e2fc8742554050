// The way of a frame once more, call by call on stages of its own: what images of a stream are compared
// with. It shares the stage classes with the library, and no line of the frame path. Used by one thread.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "camera/common_param.h"
#include "control/white_balance_ctrl_usb.h"
#include "stages/bgr_conversion.h"
#include "stages/bit_reduction.h"
#include "stages/chroma_suppress.h"
#include "stages/color_interpolation.h"
#include "stages/color_matrix.h"
#include "stages/flip.h"
#include "stages/gamma.h"
#include "stages/grey_spread.h"
#include "stages/shading_correction.h"
#include "stages/sharpness.h"
#include "support/usb_double/usb_double.h"

namespace tavra::test {

// What a class of transfer formats does, by the table of the formats.
struct TransferClass {
    bool raw = false;    // a mosaic or plane that noise reduction, white balance and shading see
    bool wide = false;   // reduced to 8 bits first
    bool mono = false;   // always one plane
    bool ycbcr = false;  // becomes an image as it comes
    std::uint16_t ycbcrArray = 0;
};

inline TransferClass transferClass(std::uint32_t code) {
    switch (code) {
        case 1: return {.raw = true};
        case 2:
        case 4:
        case 8:
        case 16:
        case 0x10000:
        case 0x20000: return {.raw = true, .wide = true};
        case 32: return {.mono = true};
        case 64:
        case 128:
        case 256:
        case 512:
        case 0x100000:
        case 0x200000: return {.wide = true, .mono = true};
        case 1024:
        case 2048: return {};
        case 4096: return {.ycbcr = true, .ycbcrArray = 8};
        case 8192: return {.ycbcr = true, .ycbcrArray = 6};
        case 16384: return {.ycbcr = true, .ycbcrArray = 7};
        case 0x1000000: return {.ycbcr = true, .ycbcrArray = 11};
        case 0x2000000: return {.ycbcr = true, .ycbcrArray = 9};
        case 0x4000000: return {.ycbcr = true, .ycbcrArray = 10};
        default: ADD_FAILURE() << "no transfer format " << code; return {};
    }
}

// Of a frame with rows that end on a byte.
inline std::uint32_t transferBitsPerPixel(std::uint32_t code) {
    switch (code) {
        case 1:
        case 32: return 8;
        case 0x10000:
        case 0x100000: return 10;
        case 0x20000:
        case 0x200000:
        case 4096:
        case 0x1000000: return 12;
        case 1024:
        case 16384:
        case 0x4000000: return 24;
        case 2048: return 32;
        default: return 16;
    }
}

struct ChainFrame {
    std::uint32_t width = 0, height = 0;
    std::uint32_t transferBits = 1;
    std::uint16_t colorArray = 1;
    std::uint32_t previewFormat = 4;
    std::uint8_t method = 3;
    std::uint8_t mirror = 0, rotation = 0;
    bool reducesNoise = false;
};

// Stages of its own, to be given the settings of the camera's.
class PlainChain {
  public:
    explicit PlainChain(const ChainFrame& frame, std::array<std::uint16_t, 4> gains = {128, 128, 128, 128})
        : frame_(frame) {
        stages_.colorArray = frame.colorArray;
        stages_.whiteBalanceWords = gains;
        stages_.makeWhiteBalance();
    }

    TAVRA_COMMON_PARAM& stages() { return stages_; }

    // The image of a frame, padded rows and all, in a buffer that was zero. Frames follow each other, as the
    // stages remember.
    Bytes image(Bytes data) {
        const TransferClass kind = transferClass(frame_.transferBits);
        std::uint32_t width = frame_.width, height = frame_.height;
        std::uint16_t array = frame_.colorArray;
        const bool mono = kind.mono || (kind.raw && (array == 1 || (array >= 12 && array <= 15)));
        const bool finished = !kind.raw && !kind.mono;
        std::uint32_t code = frame_.transferBits;
        const bool turns = frame_.mirror != 0 || frame_.rotation != 0;
        std::uint8_t* const raw = data.data();

        if (kind.wide) {
            EXPECT_TRUE(reduceTo8Bits(width, height, frame_.transferBits, raw, raw));
        }
        if (kind.raw) {
            if (frame_.reducesNoise)
                static_cast<void>(stages_.noiseReduction.Process(width, height, array, raw));
            EXPECT_TRUE(stages_.whiteBalance->ApplyGain(width, height, array, raw).ok());
            EXPECT_EQ(stages_.shadingCorrection->Apply8(width, height, 0, raw, 8), 0u);
            if (!mono) {
                EXPECT_EQ(stages_.gamma->ApplyRaw8(width, height, width, array, raw), 0u);
            }
            if (turns) {
                EXPECT_EQ(
                    stages_.flip->FlipRaw8(frame_.mirror, frame_.rotation, &width, &height, raw, raw, &array),
                    0u);
            }
        } else if (!kind.ycbcr && turns) {
            if (code == 2048) {  // the upper eight bits of each colour
                for (std::size_t i = 0; i < std::size_t{width} * height; ++i) {
                    const std::uint32_t word = raw[4 * i] | raw[4 * i + 1] << 8 | raw[4 * i + 2] << 16 |
                                               std::uint32_t{raw[4 * i + 3]} << 24;
                    for (unsigned c = 0; c < 3; ++c)
                        raw[3 * i + c] = static_cast<std::uint8_t>(word >> (10 * c + 2));
                }
                code = 1024;
            }
            EXPECT_EQ(
                stages_.flip->Flip8(frame_.mirror, frame_.rotation, &width, &height, raw, raw, mono ? 1 : 3),
                0u);
        }

        const auto pixelBytes = static_cast<std::uint16_t>(previewBytes());
        Bytes image(std::max(stride(width, pixelBytes) * height, stride(height, pixelBytes) * width));
        if (kind.ycbcr) {
            const std::uint8_t method = frame_.previewFormat == 1 ? 0 : 2;
            EXPECT_EQ(stages_.colorInterpolation->ConvertEx(width, height, 0, raw, 0, image.data(), method,
                                                            kind.ycbcrArray, pixelBytes),
                      0u);
            if (turns) {
                EXPECT_EQ(stages_.flip->Flip8(frame_.mirror, frame_.rotation, &width, &height, image.data(),
                                              image.data(), frame_.previewFormat == 1 ? 1 : 3),
                          0u);
            }
        } else if (finished) {
            EXPECT_TRUE(convertBgrFrame(code, width, height, raw, frame_.previewFormat, image.data()).ok());
        } else {
            EXPECT_EQ(
                stages_.colorInterpolation->ConvertEx(width, height, width, raw, 0, image.data(),
                                                      frame_.method, mono ? 1 : array, mono ? 1 : pixelBytes),
                0u);
        }

        const std::uint32_t format = mono ? 1 : frame_.previewFormat;
        const std::uint32_t rowBytes = stride(width, mono ? 1 : pixelBytes);
        EXPECT_EQ(stages_.gamma->ApplyImage8(width, height, rowBytes, format, image.data()), 0u);
        EXPECT_EQ(stages_.sharpness->Apply8(width, height, rowBytes, format, image.data(), 8), 0u);
        if (mono) {
            EXPECT_TRUE(spreadGreyInPlace(width, height, frame_.previewFormat, image.data()).ok());
        } else {
            EXPECT_EQ(stages_.colorMatrix->Apply8(width, height, rowBytes, format, image.data(), 8), 0u);
            EXPECT_EQ(stages_.chromaSuppress->Apply8(width, height, rowBytes, format, image.data()), 0u);
        }
        width_ = width;
        height_ = height;
        image.resize(stride(width, pixelBytes) * height);
        return image;
    }

    // Of the last image.
    std::uint32_t width() const { return width_; }
    std::uint32_t height() const { return height_; }

  private:
    std::uint32_t previewBytes() const {
        return frame_.previewFormat == 1 ? 1 : frame_.previewFormat == 4 ? 3 : 4;
    }
    static std::uint32_t stride(std::uint32_t width, std::uint32_t pixelBytes) {
        return (width * pixelBytes + 3) / 4 * 4;
    }

    ChainFrame frame_;
    TAVRA_COMMON_PARAM stages_;
    std::uint32_t width_ = 0, height_ = 0;
};

}  // namespace tavra::test
