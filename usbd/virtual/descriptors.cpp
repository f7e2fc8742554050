#include "descriptors.h"

#include "base/little_endian.h"

namespace tavra::usbd {
namespace {

constexpr std::uint8_t kConfiguration = 2, kInterface = 4, kEndpoint = 5, kEndpointCompanion = 48;
constexpr std::uint8_t kBusPowered = 0x80, kVendorClass = 0xFF, kStreamEndpoint = 0x82, kBulk = 2;

}  // namespace

std::vector<std::uint8_t> configurationDescriptor(const Model& model) {
    const bool super = model.usb.speed == UsbSpeed::Super;
    const std::uint32_t packet = model.usb.packetSize();
    const std::uint8_t power = super ? 112 : 250;  // in units of 8 mA and of 2 mA
    constexpr std::uint8_t kCompanionBytes = 6;
    std::vector<std::uint8_t> bytes{9,
                                    kConfiguration,
                                    0,
                                    0,
                                    1,
                                    1,
                                    0,
                                    kBusPowered,
                                    power,  //
                                    9,
                                    kInterface,
                                    0,
                                    0,
                                    1,
                                    kVendorClass,
                                    0,
                                    0,
                                    0,  //
                                    7,
                                    kEndpoint,
                                    kStreamEndpoint,
                                    kBulk,
                                    static_cast<std::uint8_t>(packet),
                                    static_cast<std::uint8_t>(packet >> 8),
                                    0,  //
                                    kCompanionBytes,
                                    kEndpointCompanion,
                                    15,
                                    0,
                                    0,
                                    0};  // bursts of 16 packets
    if (!super) bytes.resize(bytes.size() - kCompanionBytes);
    storeLe16(&bytes[2], static_cast<std::uint16_t>(bytes.size()));
    return bytes;
}

}  // namespace tavra::usbd
