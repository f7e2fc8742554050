#include "platform/module.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <string>

#include "platform/library_version.h"
#include "platform/windows/loaded_image.h"

namespace tavra::platform {
namespace {

using test::LoadedImage;

constexpr std::uint32_t kHigh = std::uint32_t{TAVRA_VERSION_MAJOR} << 16 | TAVRA_VERSION_MINOR;
constexpr std::uint32_t kLow = std::uint32_t{TAVRA_VERSION_PATCH} << 16;

class Library {
  public:
    explicit Library(const char* file) : module_(LoadLibraryA(file)) {}
    ~Library() { FreeLibrary(module_); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    HMODULE module() const { return module_; }
    std::int64_t address() const { return reinterpret_cast<std::int64_t>(module_); }
    template <typename Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }

  private:
    HMODULE module_;
};

// Runs the helper to its end: its exit code.
DWORD runHelper(const std::string& arguments) {
    std::string command = std::string("tavra_module_helper.exe tavra_module_probe.dll ") + arguments;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process)) {
        return 100 + GetLastError();
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code;
}

// The word is shared with whatever other case runs beside it in a process of its own: one at a time.
struct Probe : testing::Test {
    HANDLE turn = CreateMutexA(nullptr, FALSE, "tavra-module-probe");
    Probe() { WaitForSingleObject(turn, INFINITE); }
    ~Probe() override {
        ReleaseMutex(turn);
        CloseHandle(turn);
    }
};

TEST_F(Probe, TheFirstProcessLeavesItsHandleInTheWordThatAllShare) {
    const Library library("tavra_module_probe.dll");
    ASSERT_NE(library.module(), nullptr);
    volatile std::int64_t* const word = LoadedImage(library.module()).sharedWord();
    ASSERT_NE(word, nullptr);
    EXPECT_EQ(*word, library.address());
    EXPECT_EQ(library.find<void*()>("probeModuleHandle")(), library.module());

    *word = 0x123456789ABC;
    EXPECT_EQ(runHelper("0x123456789ABC 0x7777"), 0u)
        << "a word that is not zero is left alone by the next process";
    EXPECT_EQ(*word, 0x7777) << "what the other process stored is seen here";

    *word = 0;
    EXPECT_EQ(runHelper("own"), 0u) << "a word that is zero takes the handle";
    EXPECT_NE(*word, 0);
    *word = library.address();
}

TEST_F(Probe, ThreadsAndReloadingChangeNothing) {
    const Library library("tavra_module_probe.dll");
    ASSERT_NE(library.module(), nullptr);
    volatile std::int64_t* const word = LoadedImage(library.module()).sharedWord();
    ASSERT_NE(word, nullptr);
    const std::int64_t before = *word;
    EXPECT_NE(before, 0);
    const HANDLE thread = CreateThread(
        nullptr, 0, [](void*) -> DWORD { return 0; }, nullptr, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    EXPECT_EQ(*word, before);
    EXPECT_EQ(runHelper("0x1"), 1u) << "the helper sees the handle, and its end does not clear it";
    EXPECT_EQ(*word, before);
}

void expectOneSharedWord(HMODULE module) {
    ASSERT_NE(module, nullptr);
    const auto sections = LoadedImage(module).sharedSections();
    ASSERT_EQ(sections.size(), 1u);
    EXPECT_EQ(sections[0].Misc.VirtualSize, 8u);
    EXPECT_NE(sections[0].Characteristics & IMAGE_SCN_MEM_READ, 0u);
    EXPECT_NE(sections[0].Characteristics & IMAGE_SCN_MEM_WRITE, 0u);
    EXPECT_EQ(sections[0].Characteristics & IMAGE_SCN_MEM_EXECUTE, 0u);
}

// The real library's image, without running its entry point.
struct RealLibrary : testing::Test {
    HMODULE module = LoadLibraryExA("tavra.dll", nullptr, DONT_RESOLVE_DLL_REFERENCES);
    ~RealLibrary() override { FreeLibrary(module); }
};

TEST_F(RealLibrary, SharesEightBytesAndNothingElse) {
    expectOneSharedWord(module);
}

TEST_F(RealLibrary, ExportsPublicNamesOnly) {
    ASSERT_NE(module, nullptr);
    for (const std::string& name : LoadedImage(module).exportedNames()) {
        EXPECT_EQ(name.rfind("Tavra_", 0), 0u) << name;
    }
}

TEST_F(RealLibrary, CarriesTheProjectsVersionAsAResource) {
    std::array<char, 4096> resource{};
    ASSERT_TRUE(GetFileVersionInfoA("tavra.dll", 0, resource.size(), resource.data()));
    void* found = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueA(resource.data(), "\\", &found, &length));
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(found);
    EXPECT_EQ(fixed->dwFileVersionMS, kHigh);
    EXPECT_EQ(fixed->dwFileVersionLS, kLow);
    EXPECT_EQ(fixed->dwProductVersionMS, kHigh);
    EXPECT_EQ(fixed->dwProductVersionLS, kLow);
}

TEST_F(Probe, TheLibrarysVersionIsReadFromTheModule) {
    const Library library("tavra_module_probe.dll");
    ASSERT_NE(library.module(), nullptr);
    LibraryVersion version{};
    library.find<void(LibraryVersion*)>("probeLibraryVersion")(&version);
    EXPECT_EQ(version, (LibraryVersion{kHigh, kLow, kHigh, kLow}));
}

TEST(LibraryVersion, IsZeroWhereThereIsNoModule) {
    EXPECT_EQ(moduleHandle(), nullptr) << "this program has the objects linked in";
    EXPECT_EQ(libraryVersion(), LibraryVersion{});
}

}  // namespace
}  // namespace tavra::platform
