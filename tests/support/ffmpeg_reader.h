// Reads movies back with FFmpeg's own reader and decoders, as a player does. A test program that uses it also
// lists support/ffmpeg_reader.cpp and links FFmpeg.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavra::test {

struct ReadMovie {
    // A chunk of the file that is not empty.
    struct Packet {
        std::int64_t position;  // in frames
        std::size_t size;
        bool key;
    };
    struct Frame {
        std::int64_t position;
        std::vector<std::uint8_t> pixels;  // rows from the top, width x 3, blue first, nothing between rows
    };

    int width = 0;
    int height = 0;
    std::string codec;  // the codec's name at FFmpeg
    std::uint32_t fourcc = 0;
    int rate = 0;  // frames a second are rate / scale, in lowest terms
    int scale = 0;
    std::int64_t frameCount = 0;  // as the header tells it
    std::vector<Packet> packets;
    std::vector<Frame> frames;
};

// FFmpeg's messages, also those of its encoders, stay out of the test's output.
void silenceFfmpeg();

// Nothing if it is no movie, or cannot be decoded to its end.
std::optional<ReadMovie> readMovie(const std::filesystem::path& name);

}  // namespace tavra::test
