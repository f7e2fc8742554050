// Files under counting names, made so that nothing that exists is ever written over.
#pragma once

#include <filesystem>
#include <string>

namespace tavra::tool {

// Makes an empty file of the first free name: "view-1.png", "view-2.png", ... Somebody else who counts at the
// same time gets another. Throws Failure when none can be made.
std::filesystem::path makeNextFile(const std::string& name, const std::string& ending);

}  // namespace tavra::tool
