#include "camera/usb_speed.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tavra {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes endpoint(std::uint8_t address, std::uint8_t attributes, std::uint16_t packetSize) {
    return {7,
            5,
            address,
            attributes,
            static_cast<std::uint8_t>(packetSize),
            static_cast<std::uint8_t>(packetSize >> 8),
            0};
}

Bytes configuration(std::initializer_list<Bytes> entries) {
    Bytes all{9, 2, 0, 0, 1, 1, 0, 0x80, 50, 9, 4, 0, 0, 1, 0xFF, 0, 0, 0};
    for (const Bytes& entry : entries) all.insert(all.end(), entry.begin(), entry.end());
    return all;
}

// From memory of exactly the descriptor's size, so that a sanitizer sees a read behind it.
std::uint8_t speedOf(const Bytes& descriptor) {
    const auto exact = std::make_unique<std::uint8_t[]>(descriptor.size());
    std::copy(descriptor.begin(), descriptor.end(), exact.get());
    return speedFromDescriptor({exact.get(), descriptor.size()});
}

TEST(UsbSpeed, ThePacketSizeOfTheBulkEndpointTells) {
    for (const auto& [packet, speed] :
         {std::pair{0, 0}, {8, 0}, {64, 0}, {65, 1}, {512, 1}, {513, 2}, {1024, 2}, {65535, 2}}) {
        const auto size = static_cast<std::uint16_t>(packet);
        EXPECT_EQ(speedOf(configuration({endpoint(0x81, 2, size)})), speed) << packet;
    }
}

TEST(UsbSpeed, OtherEndpointsArePassedOver) {
    EXPECT_EQ(speedOf(configuration({endpoint(0x01, 2, 64), endpoint(0x82, 3, 64), endpoint(0x83, 1, 64),
                                     endpoint(0x80, 0, 64), endpoint(0x84, 0x0E, 512)})),
              1)
        << "to the device, interrupt, isochronous, control; upper attribute bits do not count";
    EXPECT_EQ(speedOf(configuration({endpoint(0x01, 2, 1024)})), 0);
    EXPECT_EQ(speedOf(configuration({})), 0);
}

TEST(UsbSpeed, TheFirstBulkEndpointToTheHostCounts) {
    EXPECT_EQ(speedOf(configuration({endpoint(0x81, 2, 512), endpoint(0x82, 2, 1024)})), 1);
}

TEST(UsbSpeed, NineBytesOrFewerCountAsHighSpeed) {
    const Bytes whole = configuration({endpoint(0x81, 2, 1024)});
    for (std::size_t size = 0; size <= 9; ++size)
        EXPECT_EQ(speedOf(Bytes(whole.begin(), whole.begin() + size)), 1);
}

TEST(UsbSpeed, ADescriptorCutBeforeTheEndpointEndsHasNone) {
    const Bytes whole = configuration({endpoint(0x81, 2, 1024)});
    for (std::size_t size = 10; size < whole.size(); ++size) {
        EXPECT_EQ(speedOf(Bytes(whole.begin(), whole.begin() + size)), 0) << size;
    }
    EXPECT_EQ(speedOf(whole), 2);
}

TEST(UsbSpeed, LengthsThatLieEndTheWalkOrSkip) {
    const Bytes whole = configuration({endpoint(0x81, 2, 1024)});
    Bytes lying = whole;
    lying[9] = 0;
    EXPECT_EQ(speedOf(lying), 0) << "a length of 0 goes nowhere";
    lying[9] = 200;
    EXPECT_EQ(speedOf(lying), 0) << "past the end";
    lying = whole;
    lying[18] = 5;
    EXPECT_EQ(speedOf(lying), 0) << "an endpoint too short for its packet size";
    lying = whole;
    lying[0] = 18;
    EXPECT_EQ(speedOf(lying), 2) << "skips the interface as well";
}

TEST(UsbSpeed, AnyByteMayBeAnything) {
    const Bytes whole = configuration({endpoint(0x01, 2, 64), endpoint(0x81, 2, 1024)});
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (unsigned value = 0; value < 256; ++value) {
            Bytes changed = whole;
            changed[place] = static_cast<std::uint8_t>(value);
            EXPECT_LE(speedOf(changed), 2);
        }
    }
}

TEST(UsbSpeed, FirmwareOfTheUsb3GenerationIsSuperSpeed) {
    EXPECT_EQ(maximumUsbSpeed(0), 1);
    EXPECT_EQ(maximumUsbSpeed(255), 1);
    EXPECT_EQ(maximumUsbSpeed(256), 2);
}

}  // namespace
}  // namespace tavra
