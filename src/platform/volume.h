// What a recording wants to know of the place that it writes to. Any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/status.h"

namespace tavra::platform {

// The folder part of a file's name, up to and including the last separator: `/` on Linux, `\` or `/` on
// Windows. Empty for a name without one, which stands for the current folder in the functions below.
std::u16string_view folderOf(std::u16string_view fileName);

// How large a file the volume of a folder can hold, by its file system.
enum class VolumeKind {
    Large,   // no limit that matters. Windows: NTFS. Linux: all known ones with 64-bit sizes
    Fat32,   // 4 GiB. Linux: the vfat family
    Unknown  // anything else
};

// Each fails with the system's error where the folder cannot be asked.
Status volumeKind(std::u16string_view folder, VolumeKind& kind);
Status freeBytes(std::u16string_view folder, std::uint64_t& bytes);  // those that the caller may use
Status fileSize(const std::u16string& fileName, std::uint64_t& bytes);

}  // namespace tavra::platform
