#include "new_file.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <system_error>

#include "exit_code.h"

namespace tavra::tool {

namespace fs = std::filesystem;

fs::path makeNextFile(const std::string& name, const std::string& ending) {
    constexpr std::uint32_t kMostFiles = 1'000'000;
    for (std::uint32_t number = 1; number <= kMostFiles; ++number) {
        fs::path file = name;
        file += "-" + std::to_string(number);
        file += ending;
        if (std::FILE* const made = std::fopen(file.c_str(), "wbx")) {
            std::fclose(made);
            return file;
        }
        if (errno != EEXIST) {
            throw Failure("cannot write " + file.string() + ": " + std::generic_category().message(errno));
        }
    }
    throw Failure("every name from " + name + "-1" + ending + " on is taken");
}

}  // namespace tavra::tool
