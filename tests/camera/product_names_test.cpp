#include "camera/product_names.h"

#include <gtest/gtest.h>

#include <vector>

namespace tavra {
namespace {

std::u16string nameOf(std::uint16_t type, std::uint16_t samePid = 0, std::uint16_t colorArray = 5) {
    CameraInfo info;
    info.productType = type;
    info.colorArray = colorArray;
    return productName(info, samePid);
}

std::vector<std::uint16_t> knownTypes() {
    std::vector<std::uint16_t> types{265,  521,  533,  534,  773,  784,  787,  789,   790,   1040,  1043,
                                     1045, 1046, 1289, 1296, 1299, 1301, 1302, 1541,  1545,  1552,  1555,
                                     1557, 1558, 1797, 1808, 1811, 1814, 2053, 2064,  2067,  2069,  2070,
                                     2310, 2320, 2326, 3448, 4102, 4112, 4118, 4358,  4374,  4614,  4630,
                                     4870, 4886, 5126, 5142, 5382, 5398, 5638, 5654,  5910,  6166,  6422,
                                     8214, 8470, 8726, 8982, 9238, 9494, 9750, 10006, 10262, 10518, 12566};
    for (std::uint16_t type = 272; type <= 278; ++type) types.push_back(type);
    for (std::uint16_t type = 528; type <= 531; ++type) types.push_back(type);
    for (std::uint16_t type = 16385; type <= 16388; ++type) types.push_back(type);
    return types;
}

TEST(ProductNames, EveryKnownTypeHasANameWhateverItsVariant) {
    for (const std::uint16_t type : knownTypes()) {
        for (const std::uint16_t samePid : {0, 1, 2, 4, 5, 28, 128, 129, 0x1C00, 0xFFFF}) {
            EXPECT_NE(nameOf(type, samePid), u"UNKNOWN") << type << ' ' << samePid;
        }
    }
}

TEST(ProductNames, NoOtherTypeHasOne) {
    const std::vector<std::uint16_t> known = knownTypes();
    for (unsigned type = 0; type <= 0xFFFF; ++type) {
        const auto code = static_cast<std::uint16_t>(type);
        if (std::find(known.begin(), known.end(), code) == known.end()) {
            EXPECT_EQ(nameOf(code), u"UNKNOWN") << type;
        }
    }
}

TEST(ProductNames, TheSensorGivesTheLastLetter) {
    EXPECT_EQ(nameOf(2326), u"TV-2326C");
    EXPECT_EQ(nameOf(2326, 0, 1), u"TV-2326M");
    EXPECT_EQ(nameOf(2326, 0, 13), u"TV-2326M");
    EXPECT_EQ(nameOf(2326, 0, 17), u"TV-2326C");
}

TEST(ProductNames, VariantsAreToldByTheSamePidWord) {
    EXPECT_EQ(nameOf(789, 4), u"TV-0789XC");  // whole word
    EXPECT_EQ(nameOf(789, 0x104), u"TV-0789C");
    EXPECT_EQ(nameOf(4374, 3), u"TV-4374SC");  // low bit
    EXPECT_EQ(nameOf(4374, 2), u"TV-4374C");
    EXPECT_EQ(nameOf(8214, 0x5501), u"TV-8214AC");  // low byte
    EXPECT_EQ(nameOf(8214, 0x5503), u"TV-8214C");
    EXPECT_EQ(nameOf(10518, 0x1C77), u"TV-10518LC");  // high byte
    EXPECT_EQ(nameOf(10518, 0x001C), u"TV-10518C");
    EXPECT_EQ(nameOf(10006, 0x00FE), u"TV-10006PC");  // low byte under mask 129
    EXPECT_EQ(nameOf(10006, 0x00FF), u"TV-10006QC");
    EXPECT_EQ(nameOf(10006, 0x007F), u"TV-10006C");
}

TEST(ProductNames, LegacyTypesHaveNoVariants) {
    for (const std::uint16_t type : {773, 1541, 1797, 2053}) EXPECT_EQ(nameOf(type, 0xFFFF), nameOf(type, 0));
}

}  // namespace
}  // namespace tavra
