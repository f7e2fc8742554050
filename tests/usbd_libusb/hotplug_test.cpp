#include <filesystem>

#include "libusb_test.h"

namespace tavra::usbd {
namespace {

using test::DeviceOptions;
using test::UmockdevDevice;

std::size_t entriesOf(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

TEST_F(LibusbTest, CamerasAreSeenAsTheyComeAndGo) {
    EXPECT_EQ(source->enumerate(), 0u);
    auto camera = std::make_unique<UmockdevDevice>(bus, DeviceOptions{});
    EXPECT_TRUE(seesCameras(1));
    camera.reset();
    EXPECT_TRUE(seesCameras(0));
}

TEST_F(OpenCameraTest, TheEventThreadRunsWhileADeviceIsOpen) {
    const std::size_t whileOpen = entriesOf("/proc/self/task");
    ErrorCode error = 1;
    auto second = source->open("usb:1-1", error);
    EXPECT_EQ(entriesOf("/proc/self/task"), whileOpen) << "one thread for all devices";
    second.reset();
    EXPECT_EQ(entriesOf("/proc/self/task"), whileOpen);
    device.reset();
    // umockdev keeps threads of its own, which come and go with the connection.
    EXPECT_TRUE(comesTrue([&] { return entriesOf("/proc/self/task") < whileOpen; }));
}

TEST_F(LibusbTest, AThousandPlugCyclesLeaveNothingBehind) {
    std::size_t descriptors = 0;
    for (unsigned cycle = 0; cycle < 1000; ++cycle) {
        DeviceOptions options;
        options.number = 5 + cycle % 100;
        UmockdevDevice camera(bus, options);
        ASSERT_TRUE(seesCameras(1)) << cycle;
        ErrorCode error = 1;
        const auto device = source->open("usb:1-1", error);
        ASSERT_NE(device, nullptr) << cycle << ", error " << error;
        ASSERT_EQ(device->beginRead(), 0u) << cycle;
        Read first;
        Read second;
        ASSERT_EQ(first.start(*device), 997u);
        ASSERT_EQ(second.start(*device), 997u);
        camera.send(pattern(100, cycle));
        ASSERT_EQ(first.finish(*device), 0u) << cycle;
        camera.unplug();
        ASSERT_EQ(second.finish(*device), 1167u) << cycle;
        ASSERT_TRUE(seesCameras(0)) << cycle;
        if (cycle == 10) descriptors = entriesOf("/proc/self/fd");
    }
    EXPECT_LE(entriesOf("/proc/self/fd"), descriptors + 4);
}

TEST_F(LibusbTest, AStreamComesBackOnTheSameOpeningOrderAfterReplugging) {
    DeviceOptions options;
    auto camera = std::make_unique<UmockdevDevice>(bus, options);
    auto old = openFirst();
    ASSERT_NE(old, nullptr);
    Read read;
    ASSERT_EQ(read.start(*old), 997u);
    camera.reset();
    EXPECT_EQ(read.finish(*old), 1167u);
    ASSERT_TRUE(seesCameras(0));
    options.number = 6;
    camera = std::make_unique<UmockdevDevice>(bus, options);
    // The opening of the device that went is still there; the new device is another one.
    const auto fresh = openFirst();
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(fresh->openCount(), 1u);
    EXPECT_EQ(read.start(*old), 1167u);
    ASSERT_EQ(read.start(*fresh), 997u);
    camera->send(pattern(50));
    EXPECT_EQ(read.finish(*fresh), 0u);
}

TEST_F(LibusbTest, OneOfTwoStreamsEndsWithItsCableAndTheOtherGoesOn) {
    DeviceOptions options;
    UmockdevDevice one(bus, options);
    options.name = "1-2.4";
    options.number = 9;
    UmockdevDevice two(bus, options);
    ASSERT_TRUE(seesCameras(2));
    ErrorCode error = 1;
    const auto first = source->open("usb:1-1", error);
    const auto second = source->open("usb:1-2.4", error);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    const auto reads = makeReads(4);
    const auto others = makeReads(4);
    for (const auto& read : reads) ASSERT_EQ(read->start(*first), 997u);
    for (const auto& read : others) ASSERT_EQ(read->start(*second), 997u);
    one.unplug();
    for (const auto& read : reads) EXPECT_EQ(read->finish(*first), 1167u);
    for (unsigned i = 0; i < 4; ++i) {
        two.send(pattern(300, i));
        EXPECT_EQ(others[i]->finish(*second), 0u);
        EXPECT_EQ(others[i]->data(), pattern(300, i));
    }
}

}  // namespace
}  // namespace tavra::usbd
