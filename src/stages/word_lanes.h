// Vectors of words beside those of bytes. Pure; any thread.
#pragma once

#include <cstdint>

#include "stages/byte_lanes.h"

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace tavra::lanes {

using Words [[gnu::vector_size(kVectorBytes)]] = std::uint16_t;
using SignedWords [[gnu::vector_size(kVectorBytes)]] = std::int16_t;

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

// What the compiler makes of several instructions, or of one only where it likes to.

// Held to 0.
inline Words heldDifference(Words a, Words b) {
#if defined(__AVX2__)
    return reinterpret_cast<Words>(
        _mm256_subs_epu16(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
#elif defined(__SSE2__)
    return reinterpret_cast<Words>(
        _mm_subs_epu16(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#else
    return (a > b ? a : b) - b;
#endif
}

// Of words with a sign; that of the least is 32768.
inline Words magnitude(Words a) {
#if defined(__AVX2__)
    return reinterpret_cast<Words>(_mm256_abs_epi16(reinterpret_cast<__m256i>(a)));
#else
    const auto sign = reinterpret_cast<Words>(reinterpret_cast<SignedWords>(a) >> 15);
    return (a ^ sign) - sign;
#endif
}

// Words of at most 32767 with the sign of others, and 0 where those are 0.
inline Words withSign(Words a, Words of) {
#if defined(__AVX2__)
    return reinterpret_cast<Words>(
        _mm256_sign_epi16(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(of)));
#else
    const auto sign = reinterpret_cast<Words>(reinterpret_cast<SignedWords>(of) >> 15);
    return ((a ^ sign) - sign) & reinterpret_cast<Words>(of != 0);
#endif
}

}  // namespace tavra::lanes
