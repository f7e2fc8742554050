#include "support/usb_descriptors.h"

#include <cstddef>

namespace tavra::test {
namespace {

void put16(Bytes& bytes, std::size_t at, std::size_t value) {
    bytes.at(at) = static_cast<std::uint8_t>(value);
    bytes.at(at + 1) = static_cast<std::uint8_t>(value >> 8);
}

}  // namespace

Bytes deviceDescriptor(const DescriptorOptions& options) {
    Bytes bytes{18, 1, 0, 3, 0xFF, 0, 0, 9, 0, 0, 0, 0, 0, 1, 0, 0, 0, options.configurations};
    put16(bytes, 8, options.vendor);
    put16(bytes, 10, options.product);
    return bytes;
}

Bytes configDescriptor(const DescriptorOptions& options, std::uint8_t number) {
    Bytes bytes{9, 2, 0, 0, 1, number, 0, 0x80, 50};
    for (std::uint8_t alternate = 0; alternate < options.alternates; ++alternate) {
        const bool last = alternate + 1 == options.alternates;
        const bool endpoint = last && options.bulkEndpoint != 0;
        const Bytes interface {
            9, 4, 0, alternate, static_cast<std::uint8_t>(endpoint ? 1 : 0), 0xFF, 0, 0, 0
        };
        bytes.insert(bytes.end(), interface.begin(), interface.end());
        if (!endpoint) continue;
        Bytes endpointBytes{7, 5, options.bulkEndpoint, 2, 0, 0, 0};
        put16(endpointBytes, 4, options.maxPacket);
        bytes.insert(bytes.end(), endpointBytes.begin(), endpointBytes.end());
    }
    put16(bytes, 2, bytes.size());
    return bytes;
}

Bytes allDescriptors(const DescriptorOptions& options) {
    Bytes all = deviceDescriptor(options);
    for (std::uint8_t number = 1; number <= options.configurations; ++number) {
        const Bytes config = configDescriptor(options, number);
        all.insert(all.end(), config.begin(), config.end());
    }
    return all;
}

}  // namespace tavra::test
