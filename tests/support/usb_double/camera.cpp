// The cameras of the double: a default one, and setters by wire offset.
#include "support/usb_double/usb_double.h"

namespace tavra::test {
namespace {

void put16(Bytes& bytes, std::size_t offset, std::uint16_t value) {
    if (bytes.size() < offset + 2) bytes.resize(offset + 2);
    bytes[offset] = static_cast<std::uint8_t>(value);
    bytes[offset + 1] = static_cast<std::uint8_t>(value >> 8);
}

void put32(Bytes& bytes, std::size_t offset, std::uint32_t value) {
    put16(bytes, offset, static_cast<std::uint16_t>(value));
    put16(bytes, offset + 2, static_cast<std::uint16_t>(value >> 16));
}

// Configuration, interface, and one bulk endpoint to the host with packets of 1024 bytes.
const Bytes kSuperSpeedDescriptor{9, 2,    25, 0, 1, 1, 0, 0x80, 50, 9, 4, 0, 0,
                                  1, 0xFF, 0,  0, 0, 7, 5, 0x81, 2,  0, 4, 0};

}  // namespace

// Type 8214, one of those with no habits of their own; firmware of the USB 3 generation.
DoubleCamera::DoubleCamera()
    : configDescriptor(kSuperSpeedDescriptor),
      identity(64),
      scanRecord(64),
      exposureBlock(64),
      words35(64),
      settingReply(64),
      memory(1536),
      setupMemory(16) {
    for (std::size_t offset : {2, 4, 6, 8}) put16(words35, offset, 128);  // white balance gains of 1.0
    put16(identity, 2, 0x2E6B);                                           // vendor
    put16(identity, 4, 8214);                                             // product type
    put16(identity, 6, 1);                                                // hardware revision
    put16(identity, 8, 256);                                              // firmware revision
    put16(identity, 10, 5);                                               // colour array
    put16(identity, 12, 64);                                              // frame header size
    put32(identity, 14, 1);                                               // enable image size
    put32(identity, 18, 1);                                               // enable transfer bits
    put16(identity, 26, 1);                                               // enable scan modes
    put32(identity, 28, 48000000);                                        // clock maximum
    put32(identity, 32, 12000000);                                        // clock minimum
    put32(identity, 36, 24545455);                                        // clock value
    put32(identity, 40, 1);                                               // enable clock
    put16(identity, 44, 1);                                               // enable shutter speed
    put32(identity, 52, 7);                                               // enable trigger version
    put32(identity, 56, 640);                                             // maximum width
    put32(identity, 60, 480);                                             // maximum height
    scanRecord[0] = 64;
    scanRecord[1] = 18;
    put32(scanRecord, 6, 640);
    put32(scanRecord, 10, 480);
    put16(scanRecord, 22, 1);    // scan mode
    put16(scanRecord, 26, 525);  // lines per frame
    put16(scanRecord, 28, 780);  // clocks per line
    put16(scanRecord, 30, 680);  // maximum gain
    put16(scanRecord, 32, 20);   // default gain
    put16(scanRecord, 34, 64);   // default digital gain
    put32(scanRecord, 56, 1);    // regions
    put32(scanRecord, 60, 1);
    for (std::uint16_t word = 0; word < 20; ++word) status(static_cast<std::uint16_t>(104 + word)) = 0;
    exposureBlock[0] = 0x40;
    exposureBlock[1] = 0x21;
}

void DoubleCamera::setIdentity16(std::size_t offset, std::uint16_t value) {
    put16(identity, offset, value);
}

void DoubleCamera::setIdentity32(std::size_t offset, std::uint32_t value) {
    put32(identity, offset, value);
}

void DoubleCamera::setCapability(unsigned word, unsigned bit, bool set) {
    std::uint16_t& value = status(static_cast<std::uint16_t>(104 + word));
    const auto mask = static_cast<std::uint16_t>(1u << bit);
    value = static_cast<std::uint16_t>(set ? value | mask : value & ~mask);
}

void DoubleCamera::setCapabilityWord(unsigned word, std::uint16_t value) {
    status(static_cast<std::uint16_t>(104 + word)) = value;
}

void DoubleCamera::setScan16(std::size_t offset, std::uint16_t value) {
    put16(scanRecord, offset, value);
}

void DoubleCamera::setScan32(std::size_t offset, std::uint32_t value) {
    put32(scanRecord, offset, value);
}

void DoubleCamera::offerRegions(std::uint32_t count) {
    const std::size_t length = 64 + 16 * std::size_t{count - 1};
    scanRecord.resize(length);
    put32(scanRecord, 56, count);
    if (length < 255) {
        scanRecord[0] = static_cast<std::uint8_t>(length);
    } else {
        scanRecord[0] = 255;
        put16(scanRecord, 24, static_cast<std::uint16_t>(length));
    }
}

void DoubleCamera::addRegisterPages(std::uint32_t size) {
    setCapability(4, 0);  // function 64
    for (std::uint32_t page = 0; page < 28; ++page) {
        registers[{1, 4 + 4 * page}] = 0xAB000000 | 0x1000 * (page + 1);  // the high byte is not an address
        pageRegister(page, 0) = size;
    }
}

}  // namespace tavra::test
