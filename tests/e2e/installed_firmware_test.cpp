// A library that stands in an installation finds the images beside it, wherever the installation was moved.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "e2e/camera_fixture.h"
#include "support/temp_folder.h"

namespace tavra::e2e {
namespace {

namespace fs = std::filesystem;

TEST(InstalledFirmware, IsFoundFromTheLibrary) {
    const test::TempFolder prefix;
    const fs::path libraryFolder = prefix / "a/b/c" / TAVRA_INSTALL_LIBDIR;
    const fs::path images = prefix / "a/b/c" / TAVRA_INSTALL_DATADIR / "tavra" / "firmware";
    fs::create_directories(libraryFolder);
    fs::copy_file(TAVRA_LIBRARY_FILE, libraryFolder / "libtavra.so.1");
    test::setEnvironment("TAVRA_FIRMWARE_DIR", (prefix / "nothing here").string());
    useCameras("legacy1541:firmware=absent,legacy1541");

    void* const library = dlopen((libraryFolder / "libtavra.so.1").c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto openFw = reinterpret_cast<decltype(&Tavra_OpenFW)>(dlsym(library, "Tavra_OpenFW"));
    const auto close = reinterpret_cast<decltype(&Tavra_Close)>(dlsym(library, "Tavra_Close"));
    ASSERT_NE(openFw, &Tavra_OpenFW) << "not the copy";

    fs::create_directories(images);
    fs::copy_file(fs::path(TAVRA_SHIPPED_FIRMWARE) / "1541.hex", images / "1541.hex");
    std::uint32_t loads = 0;
    const TavraHandle handle = openFw(0, &loads);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(loads, 1u);
    close(handle);
    dlclose(library);
    test::setEnvironment("TAVRA_FIRMWARE_DIR", "");
}

}  // namespace
}  // namespace tavra::e2e
