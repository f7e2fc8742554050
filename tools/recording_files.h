// The files of a recording: their names one after the other, what the disk has room for, and how much of a
// file is written.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace tavra::tool {

enum class MovieKind : std::uint8_t { Avi, Smf };

// By the ending of the name. Throws Failure.
MovieKind movieKindOf(const std::string& fileName);

// "out.avi", "out-2.avi", "out-3.avi", ...: the file number `number`, from 1.
std::filesystem::path followingFile(const std::filesystem::path& first, std::uint32_t number);

// Bytes that can still be written beside this file; nothing where the system does not say.
std::optional<std::uint64_t> freeBytesAt(const std::filesystem::path& file);
std::uint64_t sizeOf(const std::filesystem::path& file);

// Uncompressed frames of one size in a file of one layout.
struct FrameLayout {
    std::uint64_t start = 0;  // bytes ahead of the first frame
    std::uint64_t step = 0;   // bytes from one frame to the next

    static FrameLayout smf(std::uint64_t frameBytes);
    static FrameLayout avi1(std::uint64_t frameBytes);
    static FrameLayout avi2(std::uint64_t frameBytes);

    // Whole frames in a file that has grown to this size.
    std::uint64_t framesIn(std::uint64_t fileBytes) const;
};

}  // namespace tavra::tool
