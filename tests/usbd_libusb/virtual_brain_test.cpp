// A virtual camera as the inside of a USB device: what it answers and sends goes through the real libusb.
#include "virtual_brain.h"
#include "libusb_test.h"
#include "operations.h"

namespace tavra::usbd {
namespace {

using test::Bytes;
using test::ControlRequest;
using test::UmockdevDevice;

class VirtualBrainTest : public LibusbTest {
  protected:
    std::unique_ptr<Device> brain = makeBrain("bayer:width=320:height=240");
    std::unique_ptr<UmockdevDevice> camera;

    void SetUp() override {
        ASSERT_NE(brain, nullptr);
        Bytes config(1024);
        std::uint32_t length = 0;
        ASSERT_EQ(brain->configDescriptor(config, length), 0u);
        config.resize(length);
        test::DeviceOptions options;
        options.descriptors = test::deviceDescriptor({});
        options.descriptors.insert(options.descriptors.end(), config.begin(), config.end());
        camera = std::make_unique<UmockdevDevice>(bus, options);
        camera->onControl([this](const ControlRequest& request) { return askBrain(*brain, request); });
    }
};

TEST_F(VirtualBrainTest, DescriptorsIdentityAndMemoryAreTheSameOverUsb) {
    const auto device = openFirst();
    ASSERT_NE(device, nullptr);
    Bytes mine(1024);
    Bytes direct(1024);
    std::uint32_t length = 0;
    std::uint32_t directLength = 0;
    EXPECT_EQ(device->configDescriptor(mine, length), 0u);
    EXPECT_EQ(brain->configDescriptor(direct, directLength), 0u);
    EXPECT_EQ(length, directLength);
    EXPECT_EQ(mine, direct);

    mine.assign(64, 0);
    direct.assign(64, 0);
    EXPECT_EQ(device->controlTransfer({0xC0, 17, 0, 0}, mine, length), 0u);
    EXPECT_EQ(brain->controlTransfer({0xC0, 17, 0, 0}, direct, directLength), 0u);
    EXPECT_EQ(length, 64u);
    EXPECT_EQ(mine, direct);

    const Bytes content = pattern(1024);
    EXPECT_EQ(writeMemory(*device, wire::MemorySpace::NonVolatile, 512, 1535, content.data(), length), 0u);
    Bytes back(1024);
    EXPECT_EQ(readMemory(*brain, wire::MemorySpace::NonVolatile, 512, 1535, back.data(), length), 0u);
    EXPECT_EQ(back, content);
}

TEST_F(VirtualBrainTest, FramesArriveOverUsbAsTheCameraSentThem) {
    constexpr std::size_t kFrames = 5;
    constexpr std::size_t kRead = 128 * 1024;  // more than a frame
    const auto device = openFirst();
    ASSERT_NE(device, nullptr);
    ASSERT_EQ(device->beginRead(), 0u);
    const auto reads = makeReads(kFrames, kRead);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);

    ASSERT_EQ(brain->beginRead(), 0u);
    std::vector<Bytes> sent;
    for (std::size_t i = 0; i < kFrames; ++i) {
        Read frame(kRead);
        ASSERT_EQ(frame.start(*brain), 997u);
        ASSERT_EQ(frame.finish(*brain), 0u);
        sent.push_back(frame.data());
        camera->send(frame.data());
    }
    EXPECT_EQ(brain->endRead(), 0u);
    for (std::size_t i = 0; i < kFrames; ++i) {
        EXPECT_EQ(reads[i]->finish(*device), 0u);
        EXPECT_EQ(reads[i]->data(), sent[i]) << i;
        EXPECT_GE(reads[i]->transferred, 320u * 240u);
    }
}

}  // namespace
}  // namespace tavra::usbd
