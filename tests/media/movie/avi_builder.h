// AVI files put together in the simplest way, from the description of the four layouts: what the writers'
// files must equal, byte for byte. Nothing here is shared with the writers.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace tavra::test {

using FileBytes = std::vector<std::uint8_t>;

struct MovieFrame {
    std::uint32_t index = 0;  // in the file
    FileBytes data;           // as it stands in the chunk: rows, or a JPEG stream
};

struct MovieForm {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t bits = 24;
    std::uint32_t rate = 1;
    std::uint32_t scale = 1;
    std::uint32_t quality = 75;
};

struct SegmentLimits {
    std::uint64_t bytes = 1 << 30;
    std::uint32_t entries = 4028;
};

FileBytes buildAvi10NotCompressed(const MovieForm& form, const std::vector<MovieFrame>& frames);
FileBytes buildAvi10Mjpeg(const MovieForm& form, const std::vector<MovieFrame>& frames);
FileBytes buildAvi20NotCompressed(const MovieForm& form, const std::vector<MovieFrame>& frames,
                                  SegmentLimits limits = {});
FileBytes buildAvi20Mjpeg(const MovieForm& form, const std::vector<MovieFrame>& frames,
                          SegmentLimits limits = {});

}  // namespace tavra::test
