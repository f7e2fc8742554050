#include <gmock/gmock.h>
#include <sys/utsname.h>

#include <cerrno>
#include <cstdio>
#include <thread>

#include "libusb_test.h"

namespace tavra::usbd {
namespace {

using test::allDescriptors;
using test::Bytes;
using test::configDescriptor;
using test::ControlAnswer;
using test::ControlRequest;
using test::DescriptorOptions;
using test::DeviceOptions;
using test::UmockdevDevice;

// Serves configuration descriptors as a device does; everything else is refused.
auto serving(const std::vector<Bytes>& configurations) {
    return [configurations](const ControlRequest& request) {
        const std::size_t index = request.value & 0xFF;
        const bool asked = request.requestType == 0x80 && request.request == 6 && request.value >> 8 == 2;
        if (!asked || index >= configurations.size()) return ControlAnswer{-EPIPE, {}};
        return ControlAnswer{0, configurations[index]};
    };
}

TEST_F(OpenCameraTest, TheOpeningClaimsTheInterface) {
    EXPECT_EQ(camera.counts().claims, 1u);
    EXPECT_EQ(camera.counts().alternate, 0u);
    EXPECT_EQ(device->functionAddress(), 5u);
}

TEST_F(OpenCameraTest, OpeningsInThisProcessAreCounted) {
    EXPECT_EQ(device->openCount(), 1u);
    ErrorCode error = 1;
    auto second = source->open("usb:1-1", error);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->openCount(), 2u);
    EXPECT_EQ(device->openCount(), 2u);
    second.reset();
    EXPECT_EQ(device->openCount(), 1u);
    device.reset();
    device = openFirst();
    EXPECT_EQ(device->openCount(), 1u);
}

TEST_F(LibusbTest, ACameraThatAnotherProcessHasOpensWithACountAboveOneAndDoesNotStream) {
    UmockdevDevice camera(bus, {});
    camera.setClaimedElsewhere(true);
    const auto device = openFirst();
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->openCount(), 2u);
    EXPECT_EQ(device->beginRead(), 170u);
    Read read;
    EXPECT_EQ(read.start(*device), 5u);
    EXPECT_EQ(camera.counts().reads, 0u);
    // The other process goes: the same opening becomes the only one.
    camera.setClaimedElsewhere(false);
    EXPECT_EQ(device->openCount(), 1u);
    EXPECT_EQ(device->beginRead(), 0u);
    EXPECT_EQ(read.start(*device), 997u);
}

TEST_F(LibusbTest, AStreamInAnAlternateSettingIsSelected) {
    DescriptorOptions descriptors;
    descriptors.alternates = 3;
    DeviceOptions options;
    options.descriptors = allDescriptors(descriptors);
    UmockdevDevice camera(bus, options);
    const auto device = openFirst();
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(camera.counts().alternate, 2u);
}

TEST_F(OpenCameraTest, TheConfigurationCheckTellsTheConfigurationAndTheStream) {
    std::uint32_t word0 = 9;
    std::uint32_t word1 = 9;
    EXPECT_EQ(device->checkConfiguration(word0, word1), 0u);
    EXPECT_EQ(word0, 1u);
    EXPECT_EQ(word1, 1024u << 16 | 0x81u);
}

TEST_F(LibusbTest, ADeviceWithoutAStreamIsConfiguredButCannotBegin) {
    DescriptorOptions descriptors;
    descriptors.bulkEndpoint = 0;
    DeviceOptions options;
    options.descriptors = allDescriptors(descriptors);
    UmockdevDevice camera(bus, options);
    const auto device = openFirst();
    ASSERT_NE(device, nullptr);
    std::uint32_t word0 = 9;
    std::uint32_t word1 = 9;
    EXPECT_EQ(device->checkConfiguration(word0, word1), 0u);
    EXPECT_EQ(word1, 0u);
    EXPECT_EQ(device->beginRead(), 2u);
    Read read;
    EXPECT_EQ(read.start(*device), 5u);
}

TEST_F(LibusbTest, ADeviceInNoConfigurationFailsItsCheckWith31) {
    DeviceOptions options;
    options.configuration.reset();
    UmockdevDevice camera(bus, options);
    const auto device = openFirst();
    ASSERT_NE(device, nullptr);
    std::uint32_t word0 = 9;
    std::uint32_t word1 = 9;
    EXPECT_EQ(device->checkConfiguration(word0, word1), 31u);
    EXPECT_EQ(word0, 0u);
    EXPECT_EQ(word1, 0u);
}

TEST_F(OpenCameraTest, TheConfigurationDescriptorComesAsTheDeviceSentIt) {
    const Bytes expected = configDescriptor({}, 1);
    camera.onControl(serving({expected}));
    Bytes buffer(1024, 0xEE);
    std::uint32_t length = 0;
    EXPECT_EQ(device->configDescriptor(buffer, length), 0u);
    EXPECT_EQ(length, expected.size());
    EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + length), expected);
}

TEST_F(OpenCameraTest, ASmallBufferGetsTheStartOfTheConfigurationDescriptor) {
    camera.onControl(serving({configDescriptor({}, 1)}));
    Bytes buffer(9);
    std::uint32_t length = 0;
    EXPECT_EQ(device->configDescriptor(buffer, length), 0u);
    EXPECT_EQ(length, 9u);
    EXPECT_EQ(buffer[2], 25) << "the whole length stands in the header";
}

TEST_F(OpenCameraTest, AConfigurationDescriptorCutAnywhereArrivesAsFarAsItGoes) {
    const Bytes whole = configDescriptor({}, 1);
    for (std::size_t cut = 0; cut < whole.size(); ++cut) {
        const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
        camera.onControl(serving({part}));
        Bytes buffer(1024);
        std::uint32_t length = 9999;
        EXPECT_EQ(device->configDescriptor(buffer, length), 0u) << cut;
        EXPECT_EQ(length, cut);
    }
}

TEST_F(OpenCameraTest, AConfigurationDescriptorLargerThanAPageIsCutThere) {
    Bytes huge(5000, 0);
    camera.onControl(serving({huge}));
    Bytes buffer(6000);
    std::uint32_t length = 0;
    EXPECT_EQ(device->configDescriptor(buffer, length), 0u);
    EXPECT_EQ(length, 4096u);
}

TEST_F(LibusbTest, OfSeveralConfigurationsTheActiveOneIsGiven) {
    DescriptorOptions descriptors;
    descriptors.configurations = 3;
    DeviceOptions options;
    options.configuration = 2;
    options.descriptors = allDescriptors(descriptors);
    UmockdevDevice camera(bus, options);
    camera.onControl(serving({configDescriptor(descriptors, 1), configDescriptor(descriptors, 2),
                              configDescriptor(descriptors, 3)}));
    const auto device = openFirst();
    ASSERT_NE(device, nullptr);
    Bytes buffer(1024);
    std::uint32_t length = 0;
    EXPECT_EQ(device->configDescriptor(buffer, length), 0u);
    EXPECT_EQ(buffer[5], 2);
    // None of them says that it is the active one.
    camera.onControl(serving({configDescriptor({}, 7), configDescriptor({}, 8), configDescriptor({}, 9)}));
    EXPECT_EQ(device->configDescriptor(buffer, length), 31u);
    EXPECT_EQ(length, 0u);
}

TEST_F(OpenCameraTest, ARefusedConfigurationDescriptorIsAFailure) {
    camera.onControl([](const ControlRequest&) { return ControlAnswer{-EPIPE, {}}; });
    Bytes buffer(1024);
    std::uint32_t length = 9;
    EXPECT_EQ(device->configDescriptor(buffer, length), 22u);
    EXPECT_EQ(length, 0u);
}

// What the kernel shows in sysfs, cut at every byte: whatever of it libusb takes, nothing breaks, and a
// camera whose configuration cannot be read in full says so.
TEST_F(LibusbTest, DescriptorsCutAnywhereDoNoHarm) {
    const Bytes whole = allDescriptors({});
    unsigned opened = 0;
    for (std::size_t cut = 18; cut <= whole.size(); ++cut) {
        DeviceOptions options;
        options.number = 10;
        options.descriptors = Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
        UmockdevDevice camera(bus, options);
        if (cut < 27) {
            source->enumerate();  // too short for a configuration: libusb may leave the device out
        } else {
            ASSERT_TRUE(seesCameras(1)) << cut;
        }
        ErrorCode error = 0;
        const auto device = source->open(0u, error);
        if (device != nullptr) {
            ++opened;
            std::uint32_t word0 = 0;
            std::uint32_t word1 = 0;
            const ErrorCode check = device->checkConfiguration(word0, word1);
            EXPECT_TRUE(check == 0 || (check == 31 && cut < whole.size())) << cut << ": " << check;
            const bool stream = word1 != 0;
            EXPECT_EQ(stream, cut == whole.size()) << cut;
            EXPECT_EQ(device->beginRead(), stream ? 0u : 2u) << cut;
        } else {
            EXPECT_NE(error, 0u);
        }
        camera.unplug();
        ASSERT_TRUE(seesCameras(0)) << cut;
    }
    EXPECT_GE(opened, 1u);
}

TEST_F(OpenCameraTest, TheDriversVersionIsTheKernels) {
    utsname system{};
    uname(&system);
    unsigned major = 0;
    unsigned minor = 0;
    ASSERT_EQ(std::sscanf(system.release, "%u.%u", &major, &minor), 2);
    std::uint32_t words[4] = {};
    device->driverVersion(words);
    EXPECT_EQ(words[0], major << 16 | minor);
    EXPECT_GE(words[2], 1u << 16) << "libusb 1.0 or later";
}

TEST_F(OpenCameraTest, WithoutKernelMappedMemoryThereIsNone) {
    EXPECT_EQ(device->allocReadMemory(1 << 20), nullptr);
}

TEST_F(OpenCameraTest, AResetKeepsTheDeviceAndItsClaim) {
    EXPECT_EQ(device->deviceControl(0x222140), 0u);
    EXPECT_EQ(camera.counts().resets, 1u);
    EXPECT_EQ(device->openCount(), 1u);
    EXPECT_EQ(device->beginRead(), 0u);
}

TEST_F(OpenCameraTest, AResetEndsTheReadsInFlight) {
    Read read;
    ASSERT_EQ(read.start(*device), 997u);
    EXPECT_EQ(device->deviceControl(0x222140), 0u);
    EXPECT_EQ(read.finish(*device), 995u);
}

TEST_F(LibusbTest, AnUnconfiguredCameraIsConfiguredByTheSecondControl) {
    DeviceOptions options;
    options.configuration.reset();
    UmockdevDevice camera(bus, options);
    auto device = openFirst();
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->deviceControl(0x222140), 0u);
    std::uint32_t word0 = 0;
    std::uint32_t word1 = 0;
    EXPECT_EQ(device->checkConfiguration(word0, word1), 31u);
    EXPECT_EQ(device->deviceControl(0x222180), 0u);
    device.reset();
    device = openFirst();
    EXPECT_EQ(device->checkConfiguration(word0, word1), 0u);
    EXPECT_EQ(device->beginRead(), 0u);
}

TEST_F(LibusbTest, ACameraThatStaysUnconfiguredEndsTheAttempts) {
    DeviceOptions options;
    options.configuration.reset();
    UmockdevDevice camera(bus, options);
    camera.refuseConfiguration(EIO);
    const auto device = openFirst();
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->deviceControl(0x222180), 31u);
}

TEST_F(LibusbTest, ACameraThatComesBackAsANewDeviceIsWaitedFor) {
    auto camera = std::make_unique<UmockdevDevice>(bus, DeviceOptions{});
    const auto device = openFirst();
    ASSERT_NE(device, nullptr);
    std::unique_ptr<UmockdevDevice> back;
    std::thread replug;
    camera->onReset(ENODEV, [&] {
        replug = std::thread([&] {
            camera->unplug();
            DeviceOptions options;
            options.number = 6;
            back = std::make_unique<UmockdevDevice>(bus, options);
        });
    });
    EXPECT_EQ(device->deviceControl(0x222140), 0u);
    replug.join();
    ErrorCode error = 1;
    const auto again = source->open("usb:1-1", error);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->functionAddress(), 6u);
    EXPECT_EQ(again->openCount(), 1u);
}

TEST_F(OpenCameraTest, AFailedResetIsReported) {
    camera.onReset(EIO);
    EXPECT_EQ(device->deviceControl(0x222140), 31u);
}

TEST_F(OpenCameraTest, OtherControlCodesAreNotSupported) {
    EXPECT_EQ(device->deviceControl(0x222144), 50u);
    EXPECT_EQ(camera.counts().resets, 0u);
}

}  // namespace
}  // namespace tavra::usbd
