// What the commands that let a camera run for a while have in common: which camera, its settings, and when to
// end.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "camera.h"

namespace tavra::tool {

struct RunOptions {
    CameraChoice choice;
    std::vector<std::string> assignments;  // --set
    double seconds = 0;                    // 0: without end
    std::uint64_t frames = 0;              // 0: without end
    bool json = false;

    void addTo(CLI::App& command);
    bool endless() const { return seconds <= 0 && frames == 0; }
    // How long to wait for a message at a time: short enough to meet the end, long enough not to matter.
    std::uint32_t waitMs() const { return endless() ? 100 : 10; }
    // Whether a run that took so long and had so many frames is over.
    bool reached(double elapsedSeconds, std::uint64_t framesSoFar) const;
};

}  // namespace tavra::tool
