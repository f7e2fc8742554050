// Builds the descriptors of a camera, as a device sends them and as sysfs shows them. Pure functions.
#pragma once

#include <cstdint>
#include <vector>

namespace tavra::test {

using Bytes = std::vector<std::uint8_t>;

struct DescriptorOptions {
    std::uint16_t vendor = 0x2E6B;
    std::uint16_t product = 0x0211;
    std::uint8_t configurations = 1;
    std::uint8_t bulkEndpoint = 0x81;  // 0: an interface without endpoints
    std::uint16_t maxPacket = 1024;
    std::uint8_t alternates = 1;  // the bulk endpoint stands in the last one
};
Bytes deviceDescriptor(const DescriptorOptions& options);
Bytes configDescriptor(const DescriptorOptions& options, std::uint8_t number);
// The device descriptor, then all configurations: what sysfs shows.
Bytes allDescriptors(const DescriptorOptions& options);

}  // namespace tavra::test
