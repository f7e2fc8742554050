// The AVI layouts of this library's own, by the codes that a recording asks for.
#pragma once

#include <cstdint>
#include <memory>

#include "media/movie/avi_file.h"

namespace tavra::movie {

// - format: 1 AVI 1.0, 2 AVI 2.0.
// - compressor: 0 for uncompressed frames, or the code MJPG for motion JPEG.
//
// Null for anything else. The writer keeps `files`. Any thread. Throws std::bad_alloc.
std::unique_ptr<CAVIFile> makeAviWriter(std::uint16_t format, std::uint32_t compressor, MovieFiles& files);

}  // namespace tavra::movie
