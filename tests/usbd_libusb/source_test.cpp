#include <gmock/gmock.h>

#include "libusb_test.h"

namespace tavra::usbd {
namespace {

using test::allDescriptors;
using test::DescriptorOptions;
using test::DeviceOptions;
using test::UmockdevDevice;

DeviceOptions at(const std::string& name, unsigned number, std::uint16_t product = 0x0211) {
    DescriptorOptions descriptors;
    descriptors.product = product;
    DeviceOptions options;
    options.name = name;
    options.number = number;
    options.descriptors = allDescriptors(descriptors);
    return options;
}

TEST_F(LibusbTest, AnEmptyBusHasNoCameras) {
    EXPECT_EQ(source->enumerate(), 0u);
    ErrorCode error = 0;
    EXPECT_EQ(source->open(0u, error), nullptr);
    EXPECT_EQ(error, 2u);
}

TEST_F(LibusbTest, DevicesOfOtherVendorsAreNoCameras) {
    DescriptorOptions other;
    other.vendor = 0x1234;
    DeviceOptions options = at("1-1", 5);
    options.descriptors = allDescriptors(other);
    UmockdevDevice stranger(bus, options);
    UmockdevDevice camera(bus, at("1-3", 6));
    EXPECT_TRUE(seesCameras(1));
    EXPECT_EQ(source->path(0), "usb:1-3/2e6b:0211");
}

TEST_F(LibusbTest, CamerasAreOrderedByBusAndPortWhateverTheirNumbers) {
    UmockdevDevice last(bus, at("1-10", 5));
    UmockdevDevice behindHub(bus, at("1-2.3", 6));
    UmockdevDevice first(bus, at("1-1", 9));
    ASSERT_TRUE(seesCameras(3));
    EXPECT_EQ(source->path(0), "usb:1-1/2e6b:0211");
    EXPECT_EQ(source->path(1), "usb:1-2.3/2e6b:0211");
    EXPECT_EQ(source->path(2), "usb:1-10/2e6b:0211");
    EXPECT_EQ(source->path(3), "");
}

TEST_F(LibusbTest, AnIndexOpensTheCameraOfThatPlace) {
    UmockdevDevice one(bus, at("1-1", 5));
    UmockdevDevice two(bus, at("1-3", 8));
    ASSERT_TRUE(seesCameras(2));
    ErrorCode error = 1;
    const auto device = source->open(1u, error);
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(error, 0u);
    EXPECT_EQ(device->functionAddress(), 8u);
}

TEST_F(LibusbTest, APathOpensWithAndWithoutItsModel) {
    UmockdevDevice camera(bus, at("1-2.3", 6));
    ASSERT_TRUE(seesCameras(1));
    ErrorCode error = 1;
    EXPECT_NE(source->open("usb:1-2.3/2e6b:0211", error), nullptr);
    EXPECT_EQ(error, 0u);
    EXPECT_NE(source->open("usb:1-2.3", error), nullptr);
    EXPECT_EQ(error, 0u);
}

TEST_F(LibusbTest, APathDoesNotOpenAnotherModelInTheSamePort) {
    UmockdevDevice camera(bus, at("1-1", 6, 0x0999));
    ASSERT_TRUE(seesCameras(1));
    ErrorCode error = 0;
    EXPECT_EQ(source->open("usb:1-1/2e6b:0211", error), nullptr);
    EXPECT_EQ(error, 2u);
}

TEST_F(LibusbTest, PathsThatAreNoneOfTheseAreNotFound) {
    UmockdevDevice camera(bus, at("1-1", 6));
    ASSERT_TRUE(seesCameras(1));
    for (const char* const path : {"", "usb:", "usb:1-", "usb:1-1/", "usb:1-1/2e6b", "usb:1-11", "usb:2-1",
                                   "usb:1-1/2e6b:02111", "virtual:bayer", "1-1"}) {
        ErrorCode error = 0;
        EXPECT_EQ(source->open(path, error), nullptr) << path;
        EXPECT_EQ(error, 2u) << path;
    }
}

TEST_F(LibusbTest, APathSurvivesReplugging) {
    auto camera = std::make_unique<UmockdevDevice>(bus, at("1-2.3", 6));
    ASSERT_TRUE(seesCameras(1));
    const std::string path = source->path(0);
    camera.reset();
    ASSERT_TRUE(seesCameras(0));
    camera = std::make_unique<UmockdevDevice>(bus, at("1-2.3", 7));
    ASSERT_TRUE(seesCameras(1));
    ErrorCode error = 1;
    const auto device = source->open(path, error);
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->functionAddress(), 7u);
}

TEST_F(LibusbTest, ACameraPulledAfterTheEnumerationCannotBeOpened) {
    auto camera = std::make_unique<UmockdevDevice>(bus, at("1-1", 6));
    ASSERT_TRUE(seesCameras(1));
    camera.reset();
    ErrorCode error = 0;
    EXPECT_EQ(source->open(0u, error), nullptr);
    EXPECT_EQ(error, 1167u);
}

}  // namespace
}  // namespace tavra::usbd
