// What stands between this computer and a camera that streams, each finding with the line that fixes it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tavra::tool {

struct Finding {
    enum class Kind { Good, Advice, Problem } kind;
    std::string text;
    std::string fix;  // a command or a place to look; empty for a good finding
};

// Where the system tells of itself. Tests point it at a tree of their own.
struct SystemView {
    std::string sysfs = "/sys";
    std::string usbDevices = "/dev/bus/usb";
};

std::vector<Finding> findCameraProblems(const SystemView& system);
std::vector<Finding> findUsbMemoryProblems(const SystemView& system);
// `limit` is RLIMIT_RTPRIO of the user; `root` that he may do anything.
std::vector<Finding> findPriorityProblems(std::uint64_t limit, bool root);

}  // namespace tavra::tool
