#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>

#include "setting_keys_table.h"
#include "settings/walk.h"

namespace tavra {
namespace {

TEST(SettingKeys, OfThePageAreThoseOfTheTable) {
    std::ifstream file(TAVRA_SETTINGS_PAGE, std::ios::binary);
    const std::string page{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const std::string begin = kTableBegin;
    const std::size_t first = page.find(begin), end = page.find(kTableEnd);
    ASSERT_NE(first, page.npos);
    ASSERT_NE(end, page.npos);
    EXPECT_EQ(page.substr(first + begin.size(), end - first - begin.size()), settingKeysTable())
        << "scripts/setting-keys writes it anew";
}

// The row of a key in the section of sizes.
std::string rowOf(const std::string& key) {
    const std::string table = settingKeysTable(), begin = "| `ImageSize` | `" + key + "` |";
    const std::size_t first = table.find(begin);
    if (first == table.npos) return "";
    return table.substr(first, table.find('\n', first) - first);
}

TEST(SettingKeys, TellBothOfTheCameraAndOfTheModeThatTheyNeed) {
    for (const char* const key : {"HSkipping", "VSkipping", "HBinning", "VBinning"}) {
        EXPECT_NE(
            rowOf(key).find("| cameras that set skipping and binning, unless the mode leaves sizes out |"),
            std::string::npos)
            << key << ": " << rowOf(key);
    }
    const std::string sum = rowOf("BinningSumMode");
    EXPECT_NE(sum.find("| cameras with a binning sum, unless the mode leaves sizes out |"), std::string::npos)
        << sum;
    const std::string scan = rowOf("ScanMode");
    EXPECT_NE(scan.find("| unless the mode leaves sizes out |"), std::string::npos) << scan;
}

TEST(SettingKeys, HaveAMeaningAndAUnit) {
    for (const Group& group : settingWalk()) {
        for (const Block& block : group.blocks) {
            for (const Key& key : block.keys) {
                EXPECT_NE(std::string(key.meaning), "") << key.name;
                EXPECT_NE(std::string(key.values), "") << key.name;
            }
        }
    }
}

TEST(SettingKeys, AreInTheirSectionsOnce) {
    std::set<std::string> seen;
    for (const Group& group : settingWalk()) {
        for (const Block& block : group.blocks) {
            for (const Key& key : block.keys) {
                EXPECT_TRUE(seen.insert(group.section + std::string("/") + key.name).second) << key.name;
            }
        }
    }
}

// Files are read by people: groups come in one order for ever.
TEST(SettingKeys, SectionsComeInTheirOrder) {
    std::vector<std::string> sections;
    for (const Group& group : settingWalk()) {
        if (sections.empty() || sections.back() != group.section) sections.emplace_back(group.section);
    }
    EXPECT_EQ(sections, (std::vector<std::string>{"AVI",
                                                  "Clock",
                                                  "ImageSize",
                                                  "PreviewWindowSize",
                                                  "PreviewMaskSize",
                                                  "PreviewDestSize",
                                                  "GainShutter",
                                                  "Other",
                                                  "Sharpness",
                                                  "GammaY",
                                                  "WhiteBalance",
                                                  "Other",
                                                  "HueSaturation",
                                                  "ColorMatrix",
                                                  "ChromaSuppression",
                                                  "GammaR",
                                                  "GammaGR",
                                                  "GammaGB",
                                                  "GammaB",
                                                  "CameraGamma",
                                                  "Clock",
                                                  "DefectPixelCorrection",
                                                  "Clamp",
                                                  "AnalogBlackLevel",
                                                  "Adjustment",
                                                  "HDR"}));
}

}  // namespace
}  // namespace tavra
