#include "platform/library_version.h"

#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>
#include <link.h>

#include <cstring>
#include <string>
#include <vector>

namespace tavra::platform {
namespace {

constexpr std::uint32_t kHigh = std::uint32_t{TAVRA_VERSION_MAJOR} << 16 | TAVRA_VERSION_MINOR;
constexpr std::uint32_t kLow = std::uint32_t{TAVRA_VERSION_PATCH} << 16;
constexpr LibraryVersion kProject{kHigh, kLow, kHigh, kLow};

// The contents of the notes of owner "tavra" and type 1 in a loaded object.
std::vector<LibraryVersion> notesOf(const dl_phdr_info& object) {
    std::vector<LibraryVersion> found;
    for (int i = 0; i < object.dlpi_phnum; ++i) {
        const auto& segment = object.dlpi_phdr[i];
        if (segment.p_type != PT_NOTE) continue;
        const auto* bytes = reinterpret_cast<const char*>(object.dlpi_addr + segment.p_vaddr);
        for (std::size_t at = 0; at + sizeof(ElfW(Nhdr)) <= segment.p_memsz;) {
            ElfW(Nhdr) note;
            std::memcpy(&note, bytes + at, sizeof note);
            const std::size_t name = at + sizeof note;
            const std::size_t content = name + (std::size_t{note.n_namesz} + 3) / 4 * 4;
            LibraryVersion version;
            if (note.n_type == 1 && std::string(bytes + name) == "tavra" && note.n_descsz == sizeof version) {
                std::memcpy(&version, bytes + content, sizeof version);
                found.push_back(version);
            }
            at = content + (note.n_descsz + segment.p_align - 1) / segment.p_align * segment.p_align;
        }
    }
    return found;
}

TEST(LibraryVersion, IsTheProjects) {
    EXPECT_EQ(libraryVersion(), kProject);
}

TEST(LibraryVersion, StandsInTheLibrarysFileAsANote) {
    void* const library = dlopen(TAVRA_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    std::vector<LibraryVersion> notes;
    const auto collect = [](dl_phdr_info* object, std::size_t, void* into) {
        const std::string file = object->dlpi_name;
        if (file.find("libtavra.so") == std::string::npos) return 0;
        *static_cast<std::vector<LibraryVersion>*>(into) = notesOf(*object);
        return 1;
    };
    dl_iterate_phdr(collect, &notes);
    EXPECT_EQ(notes, std::vector{kProject});
    dlclose(library);
}

}  // namespace
}  // namespace tavra::platform
