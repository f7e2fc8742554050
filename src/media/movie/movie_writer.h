// Which movie a file's name stands for, and the writer that makes it. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "media/movie/avi_file.h"

namespace tavra::movie {

namespace movie_format {
inline constexpr std::uint16_t kAvi1 = 1;
inline constexpr std::uint16_t kAvi2 = 2;  // OpenDML
inline constexpr std::uint16_t kSmf = 10;
}  // namespace movie_format

// By the extension, which is compared over its own length only and without regard to case, so that every
// beginning of AVI and SMF will do; AVI, where both would. Nothing for another one.
// preferAvi2: for AVI movies that the library writes by itself.
std::optional<std::uint16_t> movieFormatOf(std::u16string_view extension, std::uint32_t compressor,
                                           bool preferAvi2);

// The writer for a format and a compressor (FOURCC, 0 for none); null if there is none. Throws
// std::bad_alloc.
std::unique_ptr<CAVIFile> makeMovieWriter(std::uint16_t format, std::uint32_t compressor, MovieFiles& files);

}  // namespace tavra::movie
