// Error codes in words: what happened, and what to do about it.
#pragma once

#include <cstdint>
#include <string>

#include "exit_code.h"

namespace tavra::tool {

// One sentence for a code of Tavra_GetLastError or of message 45058, without a full stop.
std::string errorText(std::uint32_t code);

// The exit code that a failure with this error code ends the command with.
ExitCode exitCodeFor(std::uint32_t code);

// "what failed: why (0xE0000005)".
Failure failure(const std::string& what, std::uint32_t code);

}  // namespace tavra::tool
