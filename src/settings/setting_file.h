// Setting files: everything that was set on a camera, in a text file of sections and keys. The camera's
// stream must not run.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/profile_file.h"
#include "settings/setting_camera.h"
#include "settings/walk.h"

namespace tavra {

// Both give false on a failure, which then is the last error of the handle.

// Reads the camera, then the file once, and replaces that once, whole: when a getter fails, or the file
// cannot be written, it stays as it was. Two that save to one file at the same time, of whatever processes,
// come one behind the other, and both sets of values are in the file.
bool saveSettingFile(ISettingCamera& camera, const std::u16string& name);

// Reads the file once, and sets group after group. Ends at the first setter that fails; what was set before
// stays.
bool loadSettingFile(ISettingCamera& camera, const std::u16string& name);

// What a load of the text begins with for a group that the camera has, and then puts the text's values over.
// False: a getter failed.
bool beginGroup(const WalkCamera& camera, const Group& group, std::vector<std::uint32_t>& values);
void readGroup(const WalkCamera& camera, const Group& group, platform::ProfileText& text,
               std::vector<std::uint32_t>& values);

// Sets the defaults. Ends at the first setter that fails.
bool resetSettings(ISettingCamera& camera);

}  // namespace tavra
