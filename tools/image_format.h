// How a raw frame goes into a still file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tavra::tool {

// The pixel format of Tavra_SaveImage that holds frames of this transfer code as they are; none for packed
// and YCbCr frames, which only a dump of the bytes can hold.
std::optional<std::uint32_t> stillFormatOf(std::uint32_t transferBits);

// Whether the name ends in ".raw", whatever the case.
bool isRawName(const std::string& fileName);

// Whether the library writes a JPEG under this name: it ends in a dot and a beginning of "jpg" or "jpeg",
// whatever the case.
bool isJpegName(const std::string& fileName);

}  // namespace tavra::tool
