// libtavra without a USB access library. A program of its own: a library once loaded stays.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tavra/tavra_api.h"

namespace {

class MissingUsbLibrary : public testing::Test {
  protected:
    MissingUsbLibrary() { useLibrary("/nowhere/libtavrausbd.so.1"); }
    static void useLibrary(const char* path) { setenv("TAVRA_USBD", path, 1); }
};

TEST_F(MissingUsbLibrary, EveryOpenFailsWithTheLoadersCode) {
    EXPECT_EQ(Tavra_Open(0), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 126u);
    EXPECT_EQ(Tavra_OpenByDevicePathA("x"), nullptr);
    EXPECT_EQ(Tavra_OpenByDevicePathW(u"x"), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 126u);
}

TEST_F(MissingUsbLibrary, ALibraryWithoutTheOperationsIsToldApart) {
    useLibrary("/lib/x86_64-linux-gnu/libz.so.1");
    EXPECT_EQ(Tavra_Open(0), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 127u);
}

TEST_F(MissingUsbLibrary, ThereAreNoCamerasAndNoError) {
    EXPECT_EQ(Tavra_Open(0), nullptr);
    useLibrary("/lib/x86_64-linux-gnu/libz.so.1");
    EXPECT_EQ(Tavra_CameraCount(), 0u);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 126u) << "of the open before";
}

TEST_F(MissingUsbLibrary, ItHasNoVersion) {
    std::uint32_t v[4] = {};
    EXPECT_EQ(Tavra_GetUSBDllVersion(&v[0], &v[1], &v[2], &v[3]), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 126u);
}

}  // namespace
