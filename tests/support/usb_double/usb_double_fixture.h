// Base of every test that talks to libtavra with the USB access double behind it.
#pragma once

#include <gtest/gtest.h>

#include "support/usb_double/usb_double.h"

namespace tavra::test {

// Each case starts without cameras and ends without open devices of an earlier one.
class UsbDoubleTest : public testing::Test {
  protected:
    UsbDoubleTest() : usb(usbDouble()) {
        makeDoubleTheUsbAccessLibrary();
        usb.reset();
    }
    ~UsbDoubleTest() override { usb.reset(); }

    UsbDouble& usb;
};

}  // namespace tavra::test
