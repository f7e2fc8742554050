#include "camera/product_names.h"

#include "base/color_array.h"

namespace tavra {
namespace {

// How a row looks at the same-PID word of a camera.
enum class Test { Any, Word, LowBit, LowByte, HighByte, LowByteMask129 };

struct ProductRow {
    std::uint16_t productType;
    Test test;
    std::uint16_t constant;
    const char16_t* name;  // without the letter of the sensor
};

// One row for each model; the first that fits counts, so that a type's variants stand before the type itself.
constexpr ProductRow kProducts[] = {
    {265, Test::Any, 0, u"TV-0265"},
    {272, Test::Any, 0, u"TV-0272"},
    {273, Test::Any, 0, u"TV-0273"},
    {274, Test::Any, 0, u"TV-0274"},
    {275, Test::Any, 0, u"TV-0275"},
    {276, Test::Any, 0, u"TV-0276"},
    {277, Test::Any, 0, u"TV-0277"},
    {278, Test::Any, 0, u"TV-0278"},
    {521, Test::Any, 0, u"TV-0521"},
    {528, Test::Any, 0, u"TV-0528"},
    {529, Test::Any, 0, u"TV-0529"},
    {530, Test::Any, 0, u"TV-0530"},
    {531, Test::Any, 0, u"TV-0531"},
    {533, Test::Any, 0, u"TV-0533"},
    {534, Test::Any, 0, u"TV-0534"},
    {773, Test::Any, 0, u"TV-0773"},
    {784, Test::Any, 0, u"TV-0784"},
    {787, Test::Any, 0, u"TV-0787"},
    {789, Test::Word, 4, u"TV-0789X"},
    {789, Test::Word, 5, u"TV-0789Y"},
    {789, Test::Word, 128, u"TV-0789Z"},
    {789, Test::Any, 0, u"TV-0789"},
    {790, Test::Any, 0, u"TV-0790"},
    {1040, Test::Any, 0, u"TV-1040"},
    {1043, Test::Any, 0, u"TV-1043"},
    {1045, Test::Word, 4, u"TV-1045X"},
    {1045, Test::Word, 5, u"TV-1045Y"},
    {1045, Test::Word, 128, u"TV-1045Z"},
    {1045, Test::Any, 0, u"TV-1045"},
    {1046, Test::Any, 0, u"TV-1046"},
    {1289, Test::Any, 0, u"TV-1289"},
    {1296, Test::Any, 0, u"TV-1296"},
    {1299, Test::Any, 0, u"TV-1299"},
    {1301, Test::Word, 4, u"TV-1301X"},
    {1301, Test::Word, 5, u"TV-1301Y"},
    {1301, Test::Word, 128, u"TV-1301Z"},
    {1301, Test::Any, 0, u"TV-1301"},
    {1302, Test::Any, 0, u"TV-1302"},
    {1541, Test::Any, 0, u"TV-1541"},
    {1545, Test::Any, 0, u"TV-1545"},
    {1552, Test::Any, 0, u"TV-1552"},
    {1555, Test::Any, 0, u"TV-1555"},
    {1557, Test::Word, 4, u"TV-1557X"},
    {1557, Test::Word, 5, u"TV-1557Y"},
    {1557, Test::Word, 128, u"TV-1557Z"},
    {1557, Test::Any, 0, u"TV-1557"},
    {1558, Test::Any, 0, u"TV-1558"},
    {1797, Test::Any, 0, u"TV-1797"},
    {1808, Test::Any, 0, u"TV-1808"},
    {1811, Test::Any, 0, u"TV-1811"},
    {1814, Test::Any, 0, u"TV-1814"},
    {2053, Test::Any, 0, u"TV-2053"},
    {2064, Test::Any, 0, u"TV-2064"},
    {2067, Test::Any, 0, u"TV-2067"},
    {2069, Test::Any, 0, u"TV-2069"},
    {2070, Test::Any, 0, u"TV-2070"},
    {2310, Test::Any, 0, u"TV-2310"},
    {2320, Test::Any, 0, u"TV-2320"},
    {2326, Test::Any, 0, u"TV-2326"},
    {3448, Test::Any, 0, u"TV-3448"},
    {4102, Test::Any, 0, u"TV-4102"},
    {4112, Test::Any, 0, u"TV-4112"},
    {4118, Test::Any, 0, u"TV-4118"},
    {4358, Test::Any, 0, u"TV-4358"},
    {4374, Test::LowBit, 1, u"TV-4374S"},
    {4374, Test::Any, 0, u"TV-4374"},
    {4614, Test::Any, 0, u"TV-4614"},
    {4630, Test::LowBit, 1, u"TV-4630S"},
    {4630, Test::Any, 0, u"TV-4630"},
    {4870, Test::Any, 0, u"TV-4870"},
    {4886, Test::LowBit, 1, u"TV-4886S"},
    {4886, Test::Any, 0, u"TV-4886"},
    {5126, Test::Any, 0, u"TV-5126"},
    {5142, Test::LowBit, 1, u"TV-5142S"},
    {5142, Test::Any, 0, u"TV-5142"},
    {5382, Test::Any, 0, u"TV-5382"},
    {5398, Test::LowBit, 1, u"TV-5398S"},
    {5398, Test::Any, 0, u"TV-5398"},
    {5638, Test::Any, 0, u"TV-5638"},
    {5654, Test::LowBit, 1, u"TV-5654S"},
    {5654, Test::Any, 0, u"TV-5654"},
    {5910, Test::Any, 0, u"TV-5910"},
    {6166, Test::Any, 0, u"TV-6166"},
    {6422, Test::Any, 0, u"TV-6422"},
    {8214, Test::LowByte, 1, u"TV-8214A"},
    {8214, Test::LowByte, 2, u"TV-8214B"},
    {8214, Test::Any, 0, u"TV-8214"},
    {8470, Test::LowByte, 1, u"TV-8470A"},
    {8470, Test::LowByte, 2, u"TV-8470B"},
    {8470, Test::Any, 0, u"TV-8470"},
    {8726, Test::LowByte, 1, u"TV-8726A"},
    {8726, Test::LowByte, 2, u"TV-8726B"},
    {8726, Test::Any, 0, u"TV-8726"},
    {8982, Test::HighByte, 28, u"TV-8982L"},
    {8982, Test::Any, 0, u"TV-8982"},
    {9238, Test::HighByte, 28, u"TV-9238L"},
    {9238, Test::Any, 0, u"TV-9238"},
    {9494, Test::Any, 0, u"TV-9494"},
    {9750, Test::Any, 0, u"TV-9750"},
    {10006, Test::LowByteMask129, 128, u"TV-10006P"},
    {10006, Test::LowByteMask129, 129, u"TV-10006Q"},
    {10006, Test::Any, 0, u"TV-10006"},
    {10262, Test::LowByteMask129, 128, u"TV-10262P"},
    {10262, Test::LowByteMask129, 129, u"TV-10262Q"},
    {10262, Test::Any, 0, u"TV-10262"},
    {10518, Test::HighByte, 28, u"TV-10518L"},
    {10518, Test::Any, 0, u"TV-10518"},
    {12566, Test::HighByte, 28, u"TV-12566L"},
    {12566, Test::HighByte, 1, u"TV-12566H"},
    {12566, Test::Any, 0, u"TV-12566"},
    {16385, Test::Any, 0, u"TV-16385"},
    {16386, Test::Any, 0, u"TV-16386"},
    {16387, Test::Any, 0, u"TV-16387"},
    {16388, Test::Any, 0, u"TV-16388"},
};

bool fits(const ProductRow& row, std::uint16_t samePid) {
    switch (row.test) {
        case Test::Any: return true;
        case Test::Word: return samePid == row.constant;
        case Test::LowBit: return (samePid & 1) == row.constant;
        case Test::LowByte: return (samePid & 0xFF) == row.constant;
        case Test::HighByte: return samePid >> 8 == row.constant;
        case Test::LowByteMask129: return (samePid & 129) == row.constant;
    }
    return false;
}

}  // namespace

std::u16string productName(const CameraInfo& info, std::uint16_t samePid) {
    const std::uint16_t word = isLegacyType(info.productType) ? std::uint16_t{0} : samePid;
    for (const ProductRow& row : kProducts) {
        if (row.productType != info.productType || !fits(row, word)) continue;
        return std::u16string(row.name) + (isMonoLike(info.colorArray) ? u'M' : u'C');
    }
    return u"UNKNOWN";
}

}  // namespace tavra
