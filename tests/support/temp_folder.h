// A folder of the test's own, removed with everything in it when the test ends.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace tavra::test {

class TempFolder {
  public:
    TempFolder() : TempFolder(std::filesystem::temp_directory_path()) {}
    explicit TempFolder(const std::filesystem::path& within) : path_(within / uniqueName()) {
        std::filesystem::create_directory(path_);
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
    bool isEmpty() const { return std::filesystem::is_empty(path_); }

  private:
    static std::string uniqueName() {
        std::random_device entropy;
        return "tavra-test-" + std::to_string(entropy()) + "-" + std::to_string(entropy());
    }

    std::filesystem::path path_;
};

inline std::u16string wideName(const std::filesystem::path& path) {
    return path.u16string();
}

inline std::vector<std::uint8_t> readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace tavra::test
