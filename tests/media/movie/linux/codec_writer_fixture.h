// A writer of movies through FFmpeg's encoders, which are read back with its reader.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <optional>
#include <random>
#include <vector>

#include "media/movie/avi_file_vfw.h"
#include "support/ffmpeg_reader.h"
#include "support/movie_files_double.h"
#include "support/temp_folder.h"
#include "tavra/tavra_host.h"

namespace tavra::test {

using movie::CAVIFile;
using movie::FrameBuffer;
using movie::PointerQueue;
using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint32_t kMissing = 0xE000000A;
inline constexpr std::uint32_t kRefuses = 0xE000000B;

constexpr std::uint32_t fourcc(const char (&name)[5]) {
    std::uint32_t code = 0;
    for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<std::uint8_t>(name[i]);
    return code;
}

// Frames as they lie in a recorder's buffer: rows from the bottom up, filled up to four bytes.
struct Picture {
    std::uint32_t width, height, bits;

    std::uint32_t stride() const { return (width * bits / 8 + 3) / 4 * 4; }
    std::uint32_t bytes() const { return stride() * height; }

    // The colour of a pixel, counted from the top: noise, or something smooth that a codec likes.
    template <typename Color>
    Bytes draw(Color color) const {
        Bytes image(bytes(), 0xA5);
        for (std::uint32_t y = 0; y < height; ++y) {
            std::uint8_t* const row = image.data() + std::size_t{height - 1 - y} * stride();
            for (std::uint32_t x = 0; x < width; ++x) {
                for (std::uint32_t c = 0; c < bits / 8; ++c) row[x * (bits / 8) + c] = color(x, y, c);
            }
        }
        return image;
    }
    Bytes noise(std::uint32_t seed) const {
        std::minstd_rand random(seed + 1);
        return draw([&](auto, auto, auto) { return static_cast<std::uint8_t>(random() >> 8); });
    }
    Bytes smooth(std::uint32_t shift) const {
        return draw([&](std::uint32_t x, std::uint32_t y, std::uint32_t c) {
            return static_cast<std::uint8_t>(128 + 90 * std::sin((x + 2.0 * shift) / 40.0 + c) *
                                                       std::cos(y / 30.0));
        });
    }
    // The same from the top, in three bytes, nothing between the rows.
    Bytes asRead(const Bytes& image) const {
        Bytes result;
        for (std::uint32_t y = 0; y < height; ++y) {
            const std::uint8_t* const row = image.data() + std::size_t{height - 1 - y} * stride();
            for (std::uint32_t x = 0; x < width; ++x) {
                for (std::uint32_t c = 0; c < 3; ++c) result.push_back(bits == 8 ? row[x] : row[3 * x + c]);
            }
        }
        return result;
    }
};

struct CodecWriterTest : testing::Test {
    TempFolder folder;
    MovieFilesDouble noFiles;
    PointerQueue<FrameBuffer> filled, free;
    std::deque<FrameBuffer> buffers;
    Picture picture{64, 48, 24};

    CodecWriterTest() { silenceFfmpeg(); }
    ~CodecWriterTest() override { TavraHost_SetCodecChooser(nullptr, nullptr); }

    std::u16string name(const char* file) const { return wideName(folder / file); }

    void prepare(CAVIFile& writer, std::uint32_t compressor) {
        writer.filledFrames = &filled;
        writer.freeFrames = &free;
        writer.SetCompressor(compressor);
        writer.settings.rate = 30;
        writer.settings.rowStride = picture.stride();
        writer.settings.imageBytes = picture.bytes();
        writer.settings.image = movie::ImageDescription::of(picture.width, picture.height, picture.stride(),
                                                            static_cast<std::uint16_t>(picture.bits));
    }
    void fill(std::uint32_t position, const Bytes& image) {
        FrameBuffer& frame = buffers.emplace_back();
        ASSERT_TRUE(frame.allocate(image.size()).ok());
        std::copy(image.begin(), image.end(), frame.image());
        frame.position = position;
        filled.push(&frame);
    }
    // What is filled goes to the files that have been added.
    static Status run(CAVIFile& writer) {
        EXPECT_TRUE(writer.Start().ok());
        writer.Stop();
        return writer.result();
    }
    // A movie of one file with these frames at positions from 0.
    void record(std::uint32_t compressor, const std::vector<Bytes>& images, std::uint32_t quality = 75) {
        const auto writer = movie::makeCodecWriter(noFiles);
        ASSERT_NE(writer, nullptr);
        prepare(*writer, compressor);
        writer->settings.quality = quality;
        ASSERT_EQ(writer->addFile(name("a.avi")).code(), 0u);
        std::uint32_t position = 0;
        for (const Bytes& image : images) fill(position++, image);
        EXPECT_EQ(run(*writer).code(), 0u);
        EXPECT_EQ(filled.size(), 0u);
    }
    ReadMovie read(const char* file = "a.avi") const {
        std::optional<ReadMovie> found = readMovie(folder / file);
        EXPECT_TRUE(found) << file;
        return found.value_or(ReadMovie());
    }
};

}  // namespace tavra::test
