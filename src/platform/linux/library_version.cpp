#include "platform/library_version.h"

#include <array>

namespace tavra::platform {
namespace {

constexpr std::uint32_t kNoteType = 1;

// An ELF note as the format has it: sizes and type, the owner's name padded to four bytes, the content.
struct VersionNote {
    std::uint32_t nameBytes;
    std::uint32_t contentBytes;
    std::uint32_t type;
    std::array<char, 8> name;
    LibraryVersion version;
};

constexpr std::uint32_t kHigh = std::uint32_t{TAVRA_VERSION_MAJOR} << 16 | TAVRA_VERSION_MINOR;
constexpr std::uint32_t kLow = std::uint32_t{TAVRA_VERSION_PATCH} << 16 | TAVRA_VERSION_BUILD;

[[gnu::section(".note.tavra"), gnu::used, gnu::aligned(4)]] const VersionNote versionNote = {
    sizeof "tavra", sizeof(LibraryVersion), kNoteType, {"tavra"}, {kHigh, kLow, kHigh, kLow}};

}  // namespace

LibraryVersion libraryVersion() {
    // volatile: read from the file's record, as tools read it, and not folded into the code.
    const volatile LibraryVersion& version = versionNote.version;
    return {version.fileHigh, version.fileLow, version.productHigh, version.productLow};
}

}  // namespace tavra::platform
