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

}  // namespace

constexpr LumaTable LumaR = shareOf(299);
constexpr LumaTable LumaG = shareOf(587);
constexpr LumaTable LumaB = shareOf(114);

}  // namespace tavra
