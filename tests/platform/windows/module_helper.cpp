// The second process of module_test: loads a library, compares the word that processes share with what is
// expected
// ("own": the library's handle in this process), and stores another value if one is given.
//
// usage: tavra_module_helper <library> <expected> [<value to store>]; exit code 0: as expected, 1: not, 2:
// cannot tell
#include <cstdlib>
#include <string>

#include "platform/windows/loaded_image.h"

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    const HMODULE library = LoadLibraryA(argv[1]);
    if (library == nullptr) return 2;
    volatile std::int64_t* const word = tavra::test::LoadedImage(library).sharedWord();
    if (word == nullptr) return 2;
    const std::string expected = argv[2];
    const std::int64_t wanted =
        expected == "own" ? reinterpret_cast<std::int64_t>(library) : std::strtoll(argv[2], nullptr, 0);
    const bool same = *word == wanted;
    if (argc > 3) *word = std::strtoll(argv[3], nullptr, 0);
    return same ? 0 : 1;
}
