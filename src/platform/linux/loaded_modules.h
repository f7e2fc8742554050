// The libraries that are loaded into the process. Any thread.
#pragma once

#include <set>
#include <string>

namespace tavra::platform {

// By their paths.
std::set<std::string> loadedModules();

// Keeps what has come since loaded until the process ends, whoever unloads it.
void keepLoadedSince(const std::set<std::string>& before);

}  // namespace tavra::platform
