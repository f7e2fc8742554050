#include "platform/usb_access.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

// Each case runs in a process of its own under ctest; a library once loaded stays.

TEST(UsbAccess, AMissingLibraryIsReportedAndTheNextCallTriesAgain) {
    setenv("TAVRA_USBD", "/nowhere/libtavrausbd.so.1", 1);
    const UsbAccess* access = nullptr;
    EXPECT_EQ(loadUsbAccess(access).code(), 126u);
    EXPECT_EQ(lastSystemError(), 126u);
    EXPECT_EQ(access, nullptr);
    EXPECT_EQ(loadUsbAccess(access).code(), 126u);
}

TEST(UsbAccess, ALibraryWithoutTheOperationsIsRefused) {
    setenv("TAVRA_USBD", "/lib/x86_64-linux-gnu/libz.so.1", 1);
    const UsbAccess* access = nullptr;
    EXPECT_EQ(loadUsbAccess(access).code(), 127u);
    EXPECT_EQ(access, nullptr);
}

}  // namespace
}  // namespace tavra::platform
