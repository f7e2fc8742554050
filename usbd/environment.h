// Environment variables that name files or cameras.
#pragma once

namespace tavra::usbd {

// Null where the variable is not set, and in a program that runs with more rights than its user has.
const char* environmentVariable(const char* name);

}  // namespace tavra::usbd
