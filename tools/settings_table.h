// The everyday settings by name: one table that `get`, `set` and --set share.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "camera.h"

namespace tavra::tool {

struct Setting {
    const char* name;
    const char* help;                                             // what it is, and the values it takes
    std::string (*get)(const Camera& camera);                     // throws Failure
    void (*set)(const Camera& camera, const std::string& value);  // null: can only be read
};

std::span<const Setting> settings();

// Throws Failure, naming near misses, when there is no such setting.
const Setting& settingNamed(const std::string& name);

// Applies "name=value" texts in their order. Throws Failure at the first that cannot be set.
void applyAssignments(const Camera& camera, const std::vector<std::string>& assignments);

}  // namespace tavra::tool
