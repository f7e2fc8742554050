// Writes the table of keys into docs/settings.md, the file named on the command line.
#include <fstream>
#include <iostream>
#include <iterator>

#include "setting_keys_table.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: setting_keys docs/settings.md\n";
        return 2;
    }
    std::string page;
    {
        std::ifstream file(argv[1], std::ios::binary);
        page.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    const std::string marker = tavra::kTableBegin;
    const std::size_t begin = page.find(marker), end = page.find(tavra::kTableEnd);
    if (begin == std::string::npos || end == std::string::npos || end < begin) {
        std::cerr << argv[1] << " has no place for the table\n";
        return 1;
    }
    const std::size_t first = begin + marker.size();
    page.replace(first, end - first, tavra::settingKeysTable());
    std::ofstream file(argv[1], std::ios::binary);
    file << page;
    return file.flush() ? 0 : 1;
}
