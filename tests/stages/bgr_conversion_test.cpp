#include "stages/bgr_conversion.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

namespace tavra {
namespace {

std::size_t pitchOf(std::uint32_t format) {
    return format == 1 ? 1 : format == 4 ? 3 : 4;
}

std::size_t strideOf(std::uint32_t width, std::uint32_t format) {
    return (width * pitchOf(format) + 3) / 4 * 4;
}

std::vector<std::uint8_t> noise(std::size_t count, std::mt19937& random) {
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t& b : bytes) b = static_cast<std::uint8_t>(random());
    return bytes;
}

// B, G, R of pixel i of a dense frame.
std::array<std::uint8_t, 3> channelsOf(const std::vector<std::uint8_t>& frame, std::uint32_t code,
                                       std::size_t i) {
    if (code == 1024) return {frame[3 * i], frame[3 * i + 1], frame[3 * i + 2]};
    const std::uint32_t word =
        frame[4 * i] + 256u * frame[4 * i + 1] + 65536u * frame[4 * i + 2] + 16777216u * frame[4 * i + 3];
    // Ten bits each from bits 0, 10 and 20; the upper eight of them.
    return {static_cast<std::uint8_t>(word % 1024 / 4), static_cast<std::uint8_t>(word / 1024 % 1024 / 4),
            static_cast<std::uint8_t>(word / 1048576 % 1024 / 4)};
}

TEST(BgrFrame, GoesToEachPreviewFormatAndLeavesTheRestOfTheBuffer) {
    std::mt19937 random(21);
    for (std::uint32_t code : {1024u, 2048u}) {
        for (std::uint32_t format : {1u, 4u, 8u}) {
            for (std::uint32_t width : {1u, 2u, 3u, 4u, 5u, 7u, 16u, 31u, 64u, 255u, 256u, 257u, 600u}) {
                const std::uint32_t height = 1 + width % 4;
                const std::vector<std::uint8_t> frame =
                    noise(std::size_t{width} * height * (code == 1024 ? 3 : 4), random);
                const std::size_t stride = strideOf(width, format), pitch = pitchOf(format);
                std::vector<std::uint8_t> image = noise(stride * height, random);
                std::vector<std::uint8_t> wanted = image;
                for (std::size_t i = 0; i < std::size_t{width} * height; ++i) {
                    const auto bgr = channelsOf(frame, code, i);
                    std::uint8_t* const out = wanted.data() + i / width * stride + i % width * pitch;
                    if (format == 1) {
                        out[0] = bgr[1];
                    } else {
                        for (std::size_t c = 0; c < 3; ++c) out[c] = bgr[c];
                    }
                }
                ASSERT_TRUE(convertBgrFrame(code, width, height, frame.data(), format, image.data()).ok());
                ASSERT_EQ(image, wanted) << code << " to " << format << ", " << width << " x " << height;
            }
        }
    }
}

TEST(BgrFrame, OtherCodesAndFormatsAreRefused) {
    const std::uint8_t frame[4] = {1, 2, 3, 4};
    std::uint8_t image[4] = {9, 9, 9, 9};
    EXPECT_EQ(convertBgrFrame(512, 1, 1, frame, 4, image).code(), 87u);
    EXPECT_EQ(convertBgrFrame(4096, 1, 1, frame, 4, image).code(), 87u);
    EXPECT_EQ(convertBgrFrame(1024, 1, 1, frame, 2, image).code(), 87u);
    EXPECT_EQ(convertBgrFrame(2048, 1, 1, frame, 256, image).code(), 87u);
    EXPECT_EQ(image[0], 9);
}

TEST(BgrConversion, AFrameOfWordsIsNarrowedInPlace) {
    // B 0x003, G 0x102, R 0x201 and B 0x3FF, G 0, R 0x155, from the low end; the two top bits are nobody's.
    std::uint8_t frame[] = {0x03, 0x08, 0x14, 0xE0, 0xFF, 0x03, 0x50, 0x15};
    narrowBgr10Frame(1, 2, frame);
    const std::uint8_t expected[] = {0x00, 0x40, 0x80, 0xFF, 0x00, 0x55};
    EXPECT_TRUE(std::equal(std::begin(expected), std::end(expected), frame));
    narrowBgr10Frame(0, 7, nullptr);
}

}  // namespace
}  // namespace tavra
