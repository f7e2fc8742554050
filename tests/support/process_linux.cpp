#include <cstdlib>
#include <filesystem>
#include <iterator>

#include "support/process.h"

namespace tavra::test {

void setEnvironment(const char* name, const std::string& value) {
    setenv(name, value.c_str(), 1);
}

std::size_t openHandles() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

const std::size_t kLateHandles = 0;

}  // namespace tavra::test
