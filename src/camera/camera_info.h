// The identity block of a camera: who it is and what it offers, as read at open.
#pragma once

#include <cstdint>
#include <span>

namespace tavra {

// The fields of the 64-byte reply to vendor request 17, and their values where a camera tells none.
struct CameraInfo {
    static constexpr std::size_t kReplySize = 64;

    std::uint16_t vendor = 0;
    std::uint16_t productType = 0;  // key of every test for a model
    std::uint16_t hardwareRevision = 0;
    std::uint16_t firmwareRevision = 0;  // 3 or more: long clock request; 256 or more: USB 3 generation
    std::uint16_t colorArray = 0;
    std::uint16_t frameHeaderSize = 0;  // bytes ahead of the raw data
    std::uint32_t enableImageSize = 0;
    std::uint32_t enableTransferBits = 0;
    std::uint32_t furtherMask = 0;          // kept, not interpreted
    std::uint16_t enableScanModes = 0;      // bit 15: skipping and binning have a status word
    std::uint32_t clockMaximum = 24545455;  // Hz, for the free clock mode
    std::uint32_t clockMinimum = 24545455;
    std::uint32_t clockValue = 24545455;
    std::uint32_t enableClock = 0;  // mask of clock modes
    std::uint16_t enableShutterSpeed = 0;
    std::uint16_t furtherWord = 0;  // kept, not interpreted
    std::uint32_t furtherLong = 0;  // kept, not interpreted
    std::uint32_t enableTriggerVersion = 0;
    std::uint32_t defaultWord = 130;  // not read from the camera
    std::uint32_t maximumWidth = 0;   // pixels of the sensor
    std::uint32_t maximumHeight = 0;

    // Reads the old or the new layout, and fills in the sensor size by type where the block has none.
    static CameraInfo parse(std::span<const std::uint8_t, kReplySize> reply);
};

// The four oldest types: no status words, no capability words, no functions.
constexpr bool isLegacyType(std::uint16_t productType) {
    return productType == 773 || productType == 1541 || productType == 1797 || productType == 2053;
}

// Types 2326, 3448, 4118 and 16385 to 16388: a family with habits of its own in clock, mirror and gain.
constexpr bool isWideGainFamily(std::uint16_t productType) {
    return productType == 2326 || productType == 3448 || productType == 4118 ||
           (productType >= 16385 && productType <= 16388);
}

}  // namespace tavra
