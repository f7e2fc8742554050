// What loading a setting file would change on a camera.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "camera.h"

namespace tavra::tool {

// Values of one key, or of several of the same meaning.
struct SettingChange {
    std::string meaning;  // "analogue gain"
    std::string section;  // without the camera's suffix
    std::string key;      // the first one's
    std::string command;  // the setting of `get` and `set`; may be empty
    std::string present, wanted;
    std::uint32_t more = 0;  // further keys that would change with it
};

// In the order of a load. Throws Failure when the file or the camera cannot be read.
std::vector<SettingChange> settingChanges(const Camera& camera, const std::string& fileName);

}  // namespace tavra::tool
