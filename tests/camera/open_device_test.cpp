// Trying one device: what comes of an open whose operations fail one by one.
#include "camera/open_camera.h"

#include <gtest/gtest.h>

#include <string>

namespace tavra {
namespace {

// A USB access library of one device. Letters tell the calls: o open, n open count, c configuration, v driver
// version, r recovery, x close.
struct Device {
    std::string calls;
    int opensThatWork = 1000;
    std::uint32_t openCount = 1;
    int badConfigurations = 0;
    bool recovers = true;
} device;

platform::UsbAccess usbOfDevice() {
    platform::UsbAccess usb{};
    usb.getLastError = []() -> std::uint32_t { return 1167; };
    usb.getOpenCount = [](TavraUsbDevice, std::uint32_t* count) -> std::int32_t {
        device.calls += 'n';
        *count = device.openCount;
        return 1;
    };
    usb.checkConfiguration = [](TavraUsbDevice, std::uint32_t*, std::uint32_t*) -> std::int32_t {
        device.calls += 'c';
        return device.badConfigurations-- > 0 ? 0 : 1;
    };
    usb.getDriverVersion = [](TavraUsbDevice, std::uint32_t* version, std::uint32_t*, std::uint32_t*,
                              std::uint32_t*) -> std::int32_t {
        device.calls += 'v';
        *version = 0x30001;
        return 1;
    };
    usb.deviceControl = [](TavraUsbDevice, std::uint32_t) -> std::int32_t {
        device.calls += 'r';
        return device.recovers ? 1 : 0;
    };
    usb.close = [](TavraUsbDevice) -> std::int32_t {
        device.calls += 'x';
        return 1;
    };
    return usb;
}

class OpenDevice : public testing::Test {
  protected:
    OpenDevice() { device = {}; }

    DeviceOpening run() {
        return openDevice(usb_, [] {
            device.calls += 'o';
            return device.opensThatWork-- > 0 ? TavraUsbDevice{7} : TavraUsbDevice{0};
        });
    }

    const platform::UsbAccess usb_ = usbOfDevice();
};

TEST_F(OpenDevice, AConfiguredDeviceIsKept) {
    const DeviceOpening opening = run();
    EXPECT_EQ(opening.device, 7u);
    EXPECT_TRUE(opening.answered);
    EXPECT_EQ(device.calls, "onc");
}

TEST_F(OpenDevice, ADeviceThatDoesNotOpenGivesTheSystemsCode) {
    device.opensThatWork = 0;
    const DeviceOpening opening = run();
    EXPECT_EQ(opening.device, 0u);
    EXPECT_FALSE(opening.answered);
    EXPECT_EQ(opening.code, 1167u);
    EXPECT_EQ(device.calls, "o");
}

TEST_F(OpenDevice, ADeviceOfSomebodyElseAnsweredAndIsClosed) {
    device.openCount = 2;
    const DeviceOpening opening = run();
    EXPECT_EQ(opening.device, 0u);
    EXPECT_TRUE(opening.answered);
    EXPECT_EQ(opening.code, 0u);
    EXPECT_EQ(device.calls, "onx");
}

TEST_F(OpenDevice, TheDriverVersionIsAskedForOnceAndTheDeviceOpenedAgain) {
    device.badConfigurations = 2;
    const DeviceOpening opening = run();
    EXPECT_EQ(opening.device, 7u);
    EXPECT_EQ(device.calls, "oncvrxoncrxonc");
}

TEST_F(OpenDevice, ADeviceThatDoesNotComeBackGivesTheSystemsCode) {
    device.badConfigurations = 1;
    device.opensThatWork = 1;
    const DeviceOpening opening = run();
    EXPECT_EQ(opening.device, 0u);
    EXPECT_FALSE(opening.answered);
    EXPECT_EQ(opening.code, 1167u);
    EXPECT_EQ(device.calls, "oncvrxo");
}

TEST_F(OpenDevice, AFailedRecoveryGivesNoCode) {
    device.badConfigurations = 1;
    device.recovers = false;
    const DeviceOpening opening = run();
    EXPECT_EQ(opening.device, 0u);
    EXPECT_FALSE(opening.answered);
    EXPECT_EQ(opening.code, 0u);
    EXPECT_EQ(device.calls, "oncvrx");
}

}  // namespace
}  // namespace tavra
