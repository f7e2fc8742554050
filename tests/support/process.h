// The test's own process. A program that uses this links tavra_process.
#pragma once

#include <cstddef>
#include <string>

namespace tavra::test {

// Sets an environment variable for the rest of the process, also for libraries that are loaded already. One
// thread, while no other looks at the environment.
void setEnvironment(const char* name, const std::string& value);

// Descriptors or handles of the system that the process has open.
std::size_t openHandles();

// So many may come without anybody having left one open: on Windows the run-time library makes those of a
// lock when a thread first waits for it.
extern const std::size_t kLateHandles;

}  // namespace tavra::test
