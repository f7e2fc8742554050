#include "stages/shading_correction/correction.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace tavra::shading {
namespace {

constexpr unsigned kGainShift = 7;

template <class Entry>
inline Entry entryAt(const std::uint8_t* entries, std::size_t index) {
    Entry entry;
    std::memcpy(&entry, entries + index * sizeof entry, sizeof entry);
    return entry;
}

}  // namespace

template <class Sample>
void multiplyRow(Sample* __restrict samples, const std::uint8_t* __restrict entries, std::size_t count,
                 std::uint32_t maximum) {
    // What is above this takes every sample but 0 past the maximum; cut to it, the product fits.
    constexpr std::uint32_t kCap = 1u << (8 * sizeof(Sample) + kGainShift);
    using Factor = std::conditional_t<sizeof(Sample) == 1, std::uint16_t, std::uint32_t>;
    using Product = std::conditional_t<sizeof(Sample) == 1, std::uint32_t, std::uint64_t>;
    for (std::size_t i = 0; i < count; ++i) {
        const auto gain = static_cast<Factor>(std::min(entryAt<std::uint32_t>(entries, i), kCap));
        const Product level = Product{Factor{samples[i]}} * Product{gain} >> kGainShift;
        samples[i] = static_cast<Sample>(std::min<Product>(level, maximum));
    }
}

template <class Sample>
void addRow(Sample* __restrict samples, const std::uint8_t* __restrict entries, std::size_t count,
            std::uint32_t maximum) {
    constexpr std::int32_t kCap = 1 << (8 * sizeof(Sample));  // past all levels, either way
    const auto limit = static_cast<std::int32_t>(maximum);
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t difference = std::clamp(entryAt<std::int32_t>(entries, i), -kCap, kCap);
        samples[i] = static_cast<Sample>(std::clamp(samples[i] + difference, 0, limit));
    }
}

template <class Sample>
void showRow(Sample* __restrict samples, const std::uint8_t* __restrict entries, std::size_t count,
             std::uint32_t maximum) {
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<Sample>(std::min(entryAt<std::uint32_t>(entries, i), maximum));
    }
}

template void multiplyRow(std::uint8_t*, const std::uint8_t*, std::size_t, std::uint32_t);
template void multiplyRow(std::uint16_t*, const std::uint8_t*, std::size_t, std::uint32_t);
template void addRow(std::uint8_t*, const std::uint8_t*, std::size_t, std::uint32_t);
template void addRow(std::uint16_t*, const std::uint8_t*, std::size_t, std::uint32_t);
template void showRow(std::uint8_t*, const std::uint8_t*, std::size_t, std::uint32_t);
template void showRow(std::uint16_t*, const std::uint8_t*, std::size_t, std::uint32_t);

}  // namespace tavra::shading
