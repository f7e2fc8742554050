// Which cameras there are, without opening them through the library: their paths, and whether somebody has
// them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tavra::tool {

struct Found {
    std::uint32_t index = 0;
    std::u16string path;  // what Tavra_OpenByDevicePathW takes
    bool inUse = false;   // open in another program
    bool isVirtual = false;
};

// Names the virtual cameras for this process; before the first use of the library.
void useVirtualCameras(const std::string& models);

// Every camera in the order of enumeration. Throws Failure when the USB access library cannot be loaded.
std::vector<Found> discover();

// A device path for the terminal; paths are plain ASCII, anything else is shown as a question mark.
std::string shown(const std::u16string& path);

}  // namespace tavra::tool
