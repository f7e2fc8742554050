#include "stages/luma_tables.h"

namespace tavra {
namespace {

// In thousandths, so that the rounding is exact.
constexpr LumaTable shareOf(std::uint32_t thousandths) {
    LumaTable table{};
    for (std::uint32_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<std::uint16_t>((thousandths * i + 500) / 1000);
    return table;
}

constexpr std::uint16_t kLastEntry = std::tuple_size_v<LumaTable> - 1;

// The entry for a byte by arithmetic in words, which vectors do faster than look-ups: a line of which every
// value, cut off, is that of the table.
struct ByteLine {
    std::uint16_t offset;  // added to 16 times the byte; half a level
    std::uint16_t factor;  // in 1/65536: a 16th of the weight

    constexpr std::uint16_t operator()(std::uint8_t value) const {
        const auto x = static_cast<std::uint16_t>(16 * value + offset);
        return static_cast<std::uint16_t>((std::uint32_t{x} * factor) >> 16);
    }
};

constexpr bool equal(const ByteLine& line, const LumaTable& table) {
    for (std::uint16_t value = 0; value <= 255; ++value)
        if (line(static_cast<std::uint8_t>(value)) != table[value]) return false;
    return true;
}

constexpr ByteLine byteShareR = {26, 1225};
constexpr ByteLine byteShareG = {14, 2404};
constexpr ByteLine byteShareB = {70, 467};
static_assert(equal(byteShareR, shareOf(299)) && equal(byteShareG, shareOf(587)) &&
              equal(byteShareB, shareOf(114)));

// The entry for a word, with 19 fractional bits. The offset is a half and what the factor lacks.
template <std::uint32_t kFactor, std::uint32_t kOffset>
constexpr std::uint32_t wordShare(std::uint16_t value) {
    return (std::min(value, kLastEntry) * kFactor + kOffset) >> 19;
}

constexpr auto wordShareR = wordShare<156762, 262600>;
constexpr auto wordShareG = wordShare<307757, 262500>;
constexpr auto wordShareB = wordShare<59769, 262300>;

}  // namespace

constexpr LumaTable LumaR = shareOf(299);
constexpr LumaTable LumaG = shareOf(587);
constexpr LumaTable LumaB = shareOf(114);

void lumaOfPlanes(const std::uint8_t* blue, const std::uint8_t* green, const std::uint8_t* red,
                  std::uint16_t* __restrict luma, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        luma[i] = static_cast<std::uint16_t>(byteShareR(red[i]) + byteShareG(green[i]) + byteShareB(blue[i]));
}

void lumaOfPlanes(const std::uint16_t* blue, const std::uint16_t* green, const std::uint16_t* red,
                  std::uint16_t* __restrict luma, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        luma[i] = static_cast<std::uint16_t>(wordShareR(red[i]) + wordShareG(green[i]) + wordShareB(blue[i]));
}

}  // namespace tavra
