// The age of the operating system, where behaviour depends on it.
#pragma once

namespace tavra::platform {

// Windows: major version below 6 (before Vista). Linux: never.
bool isSystemBeforeVersion6();

}  // namespace tavra::platform
