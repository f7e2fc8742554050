// Loads and stores of little-endian numbers at any address, on any machine.
#pragma once

#include <cstdint>

namespace tavra {

constexpr std::uint16_t loadLe16(const std::uint8_t* p) {
    return static_cast<std::uint16_t>(p[0] | p[1] << 8);
}

constexpr std::uint32_t loadLe32(const std::uint8_t* p) {
    return static_cast<std::uint32_t>(loadLe16(p)) | static_cast<std::uint32_t>(loadLe16(p + 2)) << 16;
}

constexpr std::uint64_t loadLe64(const std::uint8_t* p) {
    return static_cast<std::uint64_t>(loadLe32(p)) | static_cast<std::uint64_t>(loadLe32(p + 4)) << 32;
}

constexpr void storeLe16(std::uint8_t* p, std::uint16_t value) {
    p[0] = static_cast<std::uint8_t>(value);
    p[1] = static_cast<std::uint8_t>(value >> 8);
}

constexpr void storeLe32(std::uint8_t* p, std::uint32_t value) {
    storeLe16(p, static_cast<std::uint16_t>(value));
    storeLe16(p + 2, static_cast<std::uint16_t>(value >> 16));
}

constexpr void storeLe64(std::uint8_t* p, std::uint64_t value) {
    storeLe32(p, static_cast<std::uint32_t>(value));
    storeLe32(p + 4, static_cast<std::uint32_t>(value >> 32));
}

}  // namespace tavra
