// The library as an application meets it: opened at run time, by name.
#include <gtest/gtest.h>

#include "platform/usb_access.h"
#include "support/process.h"

namespace tavra::platform {
namespace {

TEST(UsbAccessLibrary, HasEveryOperationAndShowsNamedCameras) {
    test::setEnvironment("TAVRA_USBD", TAVRA_USBD_LIBRARY);
    test::setEnvironment("TAVRA_VIRTUAL_CAMERAS", "bayer");
    const UsbAccess* usb = nullptr;
    ASSERT_TRUE(loadUsbAccess(usb).ok());
    EXPECT_NE(usb->readControllerMemory, nullptr);
    EXPECT_NE(usb->allocReadMemory, nullptr);
    EXPECT_EQ(usb->parseSecondImage, nullptr) << "a further stage that no shipped firmware has";
    const TavraUsbDevice device = usb->openByIndex(0);
    ASSERT_NE(device, 0u);
    std::uint8_t identity[64];
    std::uint32_t count = 0;
    EXPECT_NE(usb->controlTransfer(device, 0xC0, 17, 0, 0, 64, identity, &count), 0);
    EXPECT_EQ(count, 64u);
    EXPECT_NE(usb->close(device), 0);
    EXPECT_EQ(usb->close(device), 0);
    EXPECT_EQ(usb->getLastError(), 6u);
}

}  // namespace
}  // namespace tavra::platform
