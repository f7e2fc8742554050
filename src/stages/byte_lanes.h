// Vectors of bytes in lanes of 16: one lane, or two on machines whose vectors have room for them. A
// permutation within the lanes, the same in each, is one instruction where the processor has it; where it has
// not, the compiler writes one. Pure; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace tavra::lanes {

#if defined(__AVX2__)
inline constexpr std::size_t kLanes = 2;
#else
inline constexpr std::size_t kLanes = 1;
#endif
inline constexpr std::size_t kLaneBytes = 16;
inline constexpr std::size_t kVectorBytes = kLanes * kLaneBytes;

using Lane [[gnu::vector_size(kLaneBytes)]] = std::uint8_t;
using Vector [[gnu::vector_size(kVectorBytes)]] = std::uint8_t;
using AllBytes = std::make_index_sequence<kVectorBytes>;

template <std::size_t... kByte>
Vector joined(Lane first, Lane second, std::index_sequence<kByte...>) {
    return __builtin_shufflevector(first, second, kByte...);
}

template <std::size_t kFrom, std::size_t... kByte>
Lane laneOf(Vector vector, std::index_sequence<kByte...>) {
    return __builtin_shufflevector(vector, vector, (kFrom + kByte)...);
}

// Each lane from memory of its own, `apart` bytes from the one before.
inline Vector load(const std::uint8_t* from, std::ptrdiff_t apart) {
    Lane first, last;
    std::memcpy(&first, from, sizeof first);
    std::memcpy(&last, from + static_cast<std::ptrdiff_t>(kLanes - 1) * apart, sizeof last);
    return joined(first, last, AllBytes());
}

inline void store(Vector vector, std::uint8_t* to, std::size_t apart) {
    const Lane first = laneOf<0>(vector, std::make_index_sequence<kLaneBytes>());
    std::memcpy(to, &first, sizeof first);
    if constexpr (kLanes > 1) {
        const Lane last = laneOf<kVectorBytes - kLaneBytes>(vector, std::make_index_sequence<kLaneBytes>());
        std::memcpy(to + apart, &last, sizeof last);
    }
}

// Where each byte of a lane comes from, by its number in the lane.
using Order = std::array<std::size_t, kLaneBytes>;

template <Order kOrder, std::size_t... kByte>
Vector permuted(Vector vector, std::index_sequence<kByte...>) {
    return __builtin_shufflevector(vector, vector,
                                   (kByte / kLaneBytes * kLaneBytes + kOrder[kByte % kLaneBytes])...);
}
template <Order kOrder>
Vector permuted(Vector vector) {
    return permuted<kOrder>(vector, AllBytes());
}

// The samples whose number in the lane, divided by 3, leaves `kRest` come from `y`, the others from `x`.
template <std::size_t kSampleBytes, std::size_t kRest, std::size_t... kByte>
Vector mixed(Vector x, Vector y, std::index_sequence<kByte...>) {
    constexpr auto fromY = [](std::size_t byte) { return byte % kLaneBytes / kSampleBytes % 3 == kRest; };
    return __builtin_shufflevector(x, y, (kByte + (fromY(kByte) ? kVectorBytes : 0))...);
}

// Samples 0, 3, 6 ... of x, 1, 4, 7 ... of y, 2, 5, 8 ... of z.
template <std::size_t kSampleBytes>
Vector everyThird(Vector x, Vector y, Vector z) {
    return mixed<kSampleBytes, 2>(mixed<kSampleBytes, 1>(x, y, AllBytes()), z, AllBytes());
}

}  // namespace tavra::lanes
