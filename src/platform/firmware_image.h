// The text of the firmware images that cameras of the oldest types are loaded with. Data, found at run time.
//
// The first that exists: the file <type>.hex in the folder that TAVRA_FIRMWARE_DIR names (ignored in set-id
// programs); Linux: the same file in share/tavra/firmware of the installation that the library stands in;
// Windows: the resource of the library. Any thread.
#pragma once

#include <cstdint>
#include <span>

#include "base/status.h"

namespace tavra::platform {

// Reads the image for a product type to the start of `text`; `size` receives its bytes. What is behind them
// is left alone.
//
// The system's code when there is none, or none that can be read (38: it is empty); 8 when it has as many
// bytes as `text` or more.
Status readFirmwareText(std::uint16_t productType, std::span<char> text, std::uint32_t& size);

}  // namespace tavra::platform
