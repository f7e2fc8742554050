// Vectors of words beside those of bytes. Pure; any thread.
#pragma once

#include <cstdint>

#include "stages/byte_lanes.h"

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace tavra::lanes {

using Words [[gnu::vector_size(kVectorBytes)]] = std::uint16_t;

// The upper halves of the products. The compiler makes one instruction of the loop only where it likes to,
// and half the machine's speed hangs on it.
inline Words highProduct(Words a, Words b) {
#if defined(__AVX2__)
    return reinterpret_cast<Words>(
        _mm256_mulhi_epu16(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
#elif defined(__SSE2__)
    return reinterpret_cast<Words>(
        _mm_mulhi_epu16(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#else
    for (std::size_t i = 0; i < kVectorBytes / 2; ++i) {
        a[i] = static_cast<std::uint16_t>((std::uint32_t{a[i]} * b[i]) >> 16);
    }
    return a;
#endif
}

}  // namespace tavra::lanes
