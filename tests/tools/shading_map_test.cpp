#include "shading_map.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>

#include "exit_code.h"
#include "support/temp_folder.h"

namespace tavra::tool {
namespace {

class ShadingMapFile : public testing::Test {
  protected:
    std::string name() const { return (folder_ / "flat.shading").string(); }

    std::string bytes() const {
        std::ifstream file(name(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void write(const std::string& bytes) const { std::ofstream(name(), std::ios::binary) << bytes; }

  private:
    test::TempFolder folder_;
};

TEST_F(ShadingMapFile, KeepsModeSizeAndEntries) {
    saveShadingMap({TAVRA_SHADING_OFFSET, 3, 2, {0, 1, -1, 2048, INT32_MIN, INT32_MAX}}, name());
    const ShadingMap map = loadShadingMap(name());
    EXPECT_EQ(map.mode, static_cast<std::uint32_t>(TAVRA_SHADING_OFFSET));
    EXPECT_EQ(map.width, 3u);
    EXPECT_EQ(map.height, 2u);
    EXPECT_EQ(map.entries, (std::vector<std::int32_t>{0, 1, -1, 2048, INT32_MIN, INT32_MAX}));
}

TEST_F(ShadingMapFile, IsLittleEndianBehindItsName) {
    saveShadingMap({TAVRA_SHADING_GAIN, 2, 1, {0x01020304, -2}}, name());
    using namespace std::string_literals;
    EXPECT_EQ(bytes(), "TVSHADE1\2\0\0\0\2\0\0\0\1\0\0\0\4\3\2\1\xFE\xFF\xFF\xFF"s);
}

TEST_F(ShadingMapFile, RefusesWhatIsNone) {
    saveShadingMap({TAVRA_SHADING_GAIN, 2, 1, {128, 128}}, name());
    const std::string good = bytes();
    const auto with = [&](std::size_t at, char value) {
        std::string changed = good;
        changed[at] = value;
        return changed;
    };
    const std::string cases[] = {"",
                                 good.substr(0, 19),               // cut in the header
                                 good.substr(0, good.size() - 1),  // cut in the entries
                                 good + 'x',                       // too long
                                 with(0, 'X'),
                                 with(8, 1),  // another name; a calibration mode
                                 with(12, 0),
                                 with(16, 0),  // an empty side
                                 with(12, 3),
                                 with(15, '\x7F')};  // sizes that the file does not have
    for (const std::string& wrong : cases) {
        write(wrong);
        EXPECT_THROW(loadShadingMap(name()), Failure) << testing::PrintToString(wrong);
    }
    EXPECT_THROW(loadShadingMap(name() + ".absent"), Failure);
    EXPECT_THROW(saveShadingMap({TAVRA_SHADING_GAIN, 1, 1, {1}}, name() + ".absent/map"), Failure);
}

}  // namespace
}  // namespace tavra::tool
