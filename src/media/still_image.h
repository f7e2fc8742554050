// The save of a still image as the public interface has it: the name is looked at first, then one
// CSaveImageFile does the work. Runs on the caller's thread; any number of threads at once.
#pragma once

#include <cstdint>

#include "base/status.h"

namespace tavra {

// Arguments as in ISaveImageFile::SaveImageFile; rows are padded to four bytes, or dense for RAW. Fails with
// 0xE000000F for a name without a dot or with an extension that stands for no type, else with the save's
// result.
Status saveImage(std::uint32_t width, std::uint32_t height, std::uint32_t format, const void* data,
                 const char16_t* fileName, std::uint32_t option);

}  // namespace tavra
