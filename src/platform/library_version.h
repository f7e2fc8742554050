// The version that the library's file carries.
//
// Windows: the fixed part of the version resource of the module. Linux: an ELF note of the library (owner
// "tavra", type 1), which `readelf -n` and other tools see without loading it. Both come from the project's
// version.
#pragma once

#include <cstdint>

namespace tavra::platform {

// High: major in the upper and minor in the lower 16 bits. Low: patch in the upper and build in the lower 16
// bits.
struct LibraryVersion {
    std::uint32_t fileHigh = 0;
    std::uint32_t fileLow = 0;
    std::uint32_t productHigh = 0;
    std::uint32_t productLow = 0;

    friend constexpr bool operator==(const LibraryVersion&, const LibraryVersion&) = default;
};

// All zero when the file has no version record. Any thread.
LibraryVersion libraryVersion();

}  // namespace tavra::platform
