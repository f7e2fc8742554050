// The head of an AVI file up to the format of its stream: the same fields at the same places in all layouts,
// written by one hand.
//
// A writer owns one, builds it before it starts, and fills in what only the end of a file tells: on the
// writer's thread.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "media/movie/avi_file.h"

namespace tavra::movie {

enum class AviCodec { Uncompressed, MotionJpeg };

// AVI 1.0 is one list of frames and its index; AVI 2.0 has segments with indices of their own, and its
// headers hold the super index and the list that tells of frames past the first segment.
enum class AviVersion { One, Two };

class AviHeader {
  public:
    // The list "odml" that follows in AVI 2.0.
    static constexpr std::uint32_t kExtendedListBytes = 268;

    void build(const MovieSettings& settings, AviCodec codec, AviVersion version);

    // Up to the end of the stream's format (and its name, where it has one).
    std::span<const std::uint8_t> bytes() const { return {block_.data(), size_}; }
    std::uint32_t size() const { return size_; }

    void setRiffSize(std::uint32_t bytes);
    void setTotalFrames(std::uint32_t frames);  // of the file's main header
    void setLength(std::uint32_t frames);       // of the stream
    void setSuggestedBuffer(std::uint32_t bytes);
    void setImageSize(std::uint32_t bytes);

  private:
    void put(std::uint32_t value);
    void putZeros(std::uint32_t bytes) { size_ += bytes; }
    void putMainHeader(const MovieSettings& settings, AviCodec codec, AviVersion version);
    void putStreamHeader(const MovieSettings& settings, AviCodec codec, AviVersion version);
    void putPlainFormat(const ImageDescription& image);
    void putJpegFormat(const ImageDescription& image);

    std::array<std::uint8_t, 1236> block_{};  // the longest: with a palette
    std::uint32_t size_ = 0;
};

}  // namespace tavra::movie
