#include "operations.h"

#include <gtest/gtest.h>

#include <numeric>

#include "usbd/fake_device.h"

namespace tavra::usbd {
namespace {

using test::FakeDevice;
using wire::MemorySpace;

TEST(Memory, BothAddressesAreInclusive) {
    FakeDevice device;
    std::uint8_t bytes[16] = {};
    std::uint32_t count = 99;
    EXPECT_EQ(readMemory(device, MemorySpace::NonVolatile, 1512, 1515, bytes, count), 0u);
    EXPECT_EQ(count, 4u);
    ASSERT_EQ(device.transfers.size(), 1u);
    EXPECT_EQ(device.transfers[0].setup.requestType, 0xC0);
    EXPECT_EQ(device.transfers[0].setup.request, 0xE0);
    EXPECT_EQ(device.transfers[0].setup.value, 1512);
    EXPECT_EQ(device.transfers[0].setup.index, 0);
    EXPECT_EQ(device.transfers[0].length, 4u);
    EXPECT_EQ(readMemory(device, MemorySpace::NonVolatile, 7, 7, bytes, count), 0u);
    EXPECT_EQ(count, 1u);
}

TEST(Memory, TheSpaceAndTheHighAddressTravelInTheIndex) {
    FakeDevice device;
    std::uint8_t bytes[2] = {1, 2};
    std::uint32_t count = 0;
    EXPECT_EQ(writeMemory(device, MemorySpace::Setup, 14, 15, bytes, count), 0u);
    EXPECT_EQ(device.transfers[0].setup.requestType, 0x40);
    EXPECT_EQ(device.transfers[0].setup.index, 0x1000);
    EXPECT_EQ(writeMemory(device, MemorySpace::Controller, 0x0ABC1234, 0x0ABC1235, bytes, count), 0u);
    EXPECT_EQ(device.transfers[1].setup.value, 0x1234);
    EXPECT_EQ(device.transfers[1].setup.index, 0x2ABC);
    EXPECT_EQ(device.transfers[1].sent, (std::vector<std::uint8_t>{1, 2}));
}

TEST(Memory, LongOperationsAreCut) {
    FakeDevice device;
    std::vector<std::uint8_t> bytes(4096 + 4096 + 10);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    std::uint32_t count = 0;
    EXPECT_EQ(writeMemory(device, MemorySpace::NonVolatile, 100, 100 + 8201, bytes.data(), count), 0u);
    EXPECT_EQ(count, 8202u);
    ASSERT_EQ(device.transfers.size(), 3u);
    EXPECT_EQ(device.transfers[1].setup.value, 100 + 4096);
    EXPECT_EQ(device.transfers[2].setup.value, 100 + 8192);
    EXPECT_EQ(device.transfers[2].sent.size(), 10u);
    EXPECT_EQ(device.transfers[2].sent[9], static_cast<std::uint8_t>(8201));
}

TEST(Memory, RefusesBadRangesWithoutATransfer) {
    FakeDevice device;
    std::uint8_t byte = 0;
    std::uint32_t count = 5;
    EXPECT_EQ(readMemory(device, MemorySpace::NonVolatile, 2, 1, &byte, count), 87u);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(writeMemory(device, MemorySpace::NonVolatile, 0x10000000, 0x10000000, &byte, count), 87u);
    EXPECT_EQ(readMemory(device, MemorySpace::NonVolatile, 0, 0, nullptr, count), 87u);
    EXPECT_TRUE(device.transfers.empty());
}

TEST(Memory, StopsAtTheFirstFailureAndTellsHowFarItCame) {
    FakeDevice device;
    device.failAt = 2;
    std::vector<std::uint8_t> bytes(3 * 4096);
    std::uint32_t count = 0;
    EXPECT_EQ(readMemory(device, MemorySpace::NonVolatile, 0, 12287, bytes.data(), count), 31u);
    EXPECT_EQ(count, 4096u);
    EXPECT_EQ(device.transfers.size(), 2u);
}

TEST(Memory, AShortTransferIsAFailure) {
    FakeDevice device;
    device.shortAt = 1;
    std::uint8_t bytes[8];
    std::uint32_t count = 0;
    EXPECT_EQ(readMemory(device, MemorySpace::NonVolatile, 0, 7, bytes, count), 1117u);
    EXPECT_EQ(count, 4u);
}

TEST(I2c, BusAndDeviceTravelInTheIndex) {
    FakeDevice device;
    std::uint8_t bytes[3] = {};
    std::uint32_t count = 0;
    EXPECT_EQ(readI2c(device, {wire::kI2c16BitRegister, 2, 0x50, 0x1234}, 3, bytes, count), 0u);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(device.transfers[0].setup.request, 0xE1);
    EXPECT_EQ(device.transfers[0].setup.value, 0x1234);
    EXPECT_EQ(device.transfers[0].setup.index, 0x0250);
    EXPECT_EQ(bytes[2], 0x36);
    EXPECT_EQ(writeI2c(device, {wire::kI2c8BitRegister, 0, 0x10, 7}, 1, bytes, count), 0u);
    EXPECT_EQ(device.transfers[1].setup.request, 0xE2);
    EXPECT_EQ(readI2c(device, {wire::kI2c8BitRegister, 0, 0x10, 7}, 0, nullptr, count), 0u);
    EXPECT_EQ(device.transfers.size(), 2u) << "nothing to read, nothing is asked";
}

TEST(Firmware, SendsTheMaskedRunsBetweenHoldAndRun) {
    FakeDevice device;
    device.reply = {3, 0, 0, 0};
    const std::uint8_t image[] = {9, 1, 2, 9, 9, 3}, mask[] = {0, 1, 1, 0, 0, 1};
    std::uint32_t taken = 0;
    EXPECT_EQ(downloadFirmware(device, image, mask, taken), 0u);
    EXPECT_EQ(taken, 3u);
    ASSERT_EQ(device.transfers.size(), 5u);
    EXPECT_EQ(device.transfers[0].setup.request, 0xE3);
    EXPECT_EQ(device.transfers[0].setup.value, 1);
    EXPECT_EQ(device.transfers[1].setup.request, 0xE4);
    EXPECT_EQ(device.transfers[1].setup.value, 1);
    EXPECT_EQ(device.transfers[1].sent, (std::vector<std::uint8_t>{1, 2}));
    EXPECT_EQ(device.transfers[2].setup.value, 5);
    EXPECT_EQ(device.transfers[2].sent, (std::vector<std::uint8_t>{3}));
    EXPECT_EQ(device.transfers[3].setup.request, 0xE5);
    EXPECT_EQ(device.transfers[4].setup.request, 0xE3);
    EXPECT_EQ(device.transfers[4].setup.value, 0);
}

TEST(Firmware, WithoutAMaskTheWholeImageGoesInChunks) {
    FakeDevice device;
    const std::vector<std::uint8_t> image(5000, 1);
    device.reply = {0x88, 0x13, 0, 0};  // 5000
    std::uint32_t taken = 0;
    EXPECT_EQ(downloadFirmware(device, image, nullptr, taken), 0u);
    ASSERT_EQ(device.transfers.size(), 5u);
    EXPECT_EQ(device.transfers[2].setup.value, 4096);
    EXPECT_EQ(device.transfers[2].sent.size(), 904u);
}

TEST(Firmware, AProcessorWithHalfAProgramStaysHeld) {
    FakeDevice device;
    device.reply = {1, 0, 0, 0};
    const std::uint8_t image[] = {1, 2};
    std::uint32_t taken = 0;
    EXPECT_EQ(downloadFirmware(device, image, nullptr, taken), 1117u);
    EXPECT_EQ(taken, 1u);
    EXPECT_EQ(device.transfers.back().setup.request, 0xE5) << "no run";
}

// Every transfer of a download, one after the other, fails; then none does.
TEST(Firmware, EveryFailureIsReported) {
    const std::uint8_t image[] = {1, 2, 3}, mask[] = {1, 0, 1};
    for (std::size_t failAt = 1; failAt <= 5; ++failAt) {
        FakeDevice device;
        device.reply = {2, 0, 0, 0};
        device.failAt = failAt;
        std::uint32_t taken = 0;
        EXPECT_EQ(downloadFirmware(device, image, mask, taken), 31u) << failAt;
        EXPECT_EQ(device.transfers.size(), failAt);
    }
}

}  // namespace
}  // namespace tavra::usbd
