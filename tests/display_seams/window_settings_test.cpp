// Setting files of a camera with a preview window. They hold the size of the client area, to which the
// double's frame adds 10 pixels on each axis.
#include <string>

#include "display_seams/window_fixture.h"
#include "platform/profile_file.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

using testing::Contains;
using testing::IsEmpty;

class WindowSettings : public PreviewOnSeams {
  protected:
    void SetUp() override {
        PreviewOnSeams::SetUp();
        openMono();
        createWindow();
        window().locked([](WindowDouble& double_) { double_.takeLog(); });
    }
    std::u16string file() const { return wideName(folder_ / "settings.ini"); }

    std::string saved() {
        EXPECT_TRUE(Tavra_SaveSettingFileW(handle, file().c_str())) << lastError();
        const std::vector<std::uint8_t> bytes = readFile(folder_ / "settings.ini");
        std::string text;
        for (std::size_t i = 2; i < bytes.size(); i += 2) text += static_cast<char>(bytes[i]);
        return text;
    }
    // Where the window has been put to since this was asked last. The double stays where it is.
    std::vector<std::string> newPlaces() {
        std::vector<std::string> places =
            window().locked([](WindowDouble& double_) { return double_.takeLog(); });
        std::erase_if(places, [](const std::string& entry) { return !entry.starts_with("place "); });
        return places;
    }
    std::uint8_t displayMode() {
        std::uint8_t mode = 99;
        EXPECT_TRUE(Tavra_GetDisplayMode(handle, &mode));
        return mode;
    }

    const TempFolder folder_;
};

TEST_F(WindowSettings, PlaceAndSizeAreSavedAndComeBack) {
    window().locked([](WindowDouble& double_) { double_.setClient(-20, 3, 44, 22); });
    EXPECT_NE(saved().find("[PreviewWindowSize-2016]\r\nWidth=44\r\nHeight=22\r\nPositionX=-20\r\n"
                           "PositionY=3\r\n"),
              std::string::npos);
    window().locked([](WindowDouble& double_) { double_.setClient(70, 80, 10, 10); });
    newPlaces();
    ASSERT_TRUE(Tavra_LoadSettingFileW(handle, file().c_str())) << lastError();
    EXPECT_THAT(newPlaces(), Contains("place -20,3 54x32"));
}

TEST_F(WindowSettings, ModeWithoutSizesLeavesTheWindowOut) {
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, TAVRA_SETTING_FILE_NO_GEOMETRY));
    EXPECT_EQ(saved().find("PreviewWindowSize"), std::string::npos);
    platform::ProfileText text;
    for (const char16_t* key : {u"Width", u"Height", u"PositionX", u"PositionY"}) {
        text.set(u"PreviewWindowSize-2016", key, u"50");
    }
    ASSERT_TRUE(platform::writeProfile(file(), text).ok());
    ASSERT_TRUE(Tavra_LoadSettingFileW(handle, file().c_str())) << lastError();
    ASSERT_TRUE(Tavra_ResetSetting(handle)) << lastError();
    EXPECT_THAT(newPlaces(), IsEmpty());
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, 0));
    ASSERT_TRUE(Tavra_LoadSettingFileW(handle, file().c_str())) << lastError();
    EXPECT_THAT(newPlaces(), Contains("place 50,50 60x60"));
}

TEST_F(WindowSettings, DisplayModeOfAFileCountsWithoutAWindowAlone) {
    platform::ProfileText text;
    text.set(u"Other-2016", u"DisplayMode", u"5");
    ASSERT_TRUE(platform::writeProfile(file(), text).ok());
    ASSERT_TRUE(Tavra_LoadSettingFileW(handle, file().c_str())) << lastError();
    EXPECT_EQ(displayMode(), 0);
    window().close();
    ASSERT_TRUE(Tavra_LoadSettingFileW(handle, file().c_str())) << lastError();
    EXPECT_EQ(displayMode(), 5);
    EXPECT_EQ(saved().find("PreviewWindowSize"), std::string::npos) << "it is gone";
}

// The double of the camera takes the size of the whole sensor, which a reset asks for, as 0 x 0.
TEST_F(WindowSettings, AResetPutsItToTheCornerInTheSizeOfTheImage) {
    ASSERT_TRUE(Tavra_ResetSetting(handle)) << lastError();
    EXPECT_THAT(newPlaces(), Contains("place 0,0 10x10"));
}

}  // namespace
}  // namespace tavra::test
