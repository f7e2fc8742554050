// Named settings of a camera type, in the user's own tree. The camera's stream must not run for a save or a
// load.
//
// The store is never open while a camera is read or set: a save reads the camera first, a load the store. On
// Linux what is stored is all of a save or nothing, and a load sees all of one. The registry of Windows takes
// value after value: who loads while another process saves the same name, or after one that was killed in
// between, finds values of both.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "settings/setting_camera.h"

namespace tavra {

// The key of the camera's product type, and that of one of its settings. An empty name is the type's key,
// which can hold a setting itself.
std::u16string settingPath(ISettingCamera& camera, const std::u16string& name);

// False: a getter failed, which then is the last error of the handle; what was read before it is stored. A
// store that cannot be written is no failure, but leaves its error as the last error of the handle.
bool saveRegistrySetting(ISettingCamera& camera, const std::u16string& name);

// Makes the key if it is not there. False: the store cannot be read, or a getter or setter failed; what was
// set before stays.
bool loadRegistrySetting(ISettingCamera& camera, const std::u16string& name);

Status removeRegistrySetting(ISettingCamera& camera, const std::u16string& name);

// Null: no default.
Status setDefaultSetting(ISettingCamera& camera, const std::u16string* name);
// Empty: there is none, or it no longer exists.
Status getDefaultSetting(ISettingCamera& camera, std::u16string& name);

Status listSettings(ISettingCamera& camera, std::vector<std::u16string>& names);

}  // namespace tavra
