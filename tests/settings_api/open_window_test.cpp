// Settings while a preview window is open, on an X server that nobody sees.
#include "display_x11/preview_on_screen.h"
#include "platform/profile_file.h"
#include "settings_api/camera_state.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

class OpenWindow : public PreviewOnScreen {
  protected:
    OpenWindow() {
        openMono(6, 4);
        createWindow({40, 30});
    }

    using Place = std::array<std::uint32_t, 4>;  // x, y, width, height
    Place place() {
        Place now{};
        EXPECT_TRUE(Tavra_GetPreviewWindowSize(handle, &now[0], &now[1], &now[2], &now[3]));
        return now;
    }
    std::uint8_t displayMode() {
        std::uint8_t mode = 99;
        EXPECT_TRUE(Tavra_GetDisplayMode(handle, &mode));
        return mode;
    }
    std::u16string file() const { return wideName(folder_ / "settings.ini"); }

    const TempFolder folder_;
};

TEST_F(OpenWindow, ASaveHasItsSizeAheadOfItsPlace) {
    const Place now = place();
    ASSERT_TRUE(Tavra_SaveSettingFileW(handle, file().c_str()));
    const std::vector<std::uint8_t> bytes = readFile(folder_ / "settings.ini");
    std::string text;
    for (std::size_t i = 2; i < bytes.size(); i += 2) text += static_cast<char>(bytes[i]);
    const auto number = [](std::uint32_t value) {
        return std::to_string(static_cast<std::int32_t>(value)) + "\r\n";
    };
    EXPECT_NE(text.find("[PreviewWindowSize-2016]\r\nWidth=" + number(now[2]) + "Height=" + number(now[3]) +
                        "PositionX=" + number(now[0]) + "PositionY=" + number(now[1]) + "["),
              std::string::npos)
        << text;
}

TEST_F(OpenWindow, ALoadSizesItAndLeavesItsDisplayMode) {
    ASSERT_EQ(displayMode(), 0);
    platform::ProfileText text;
    text.set(u"PreviewWindowSize-2016", u"Width", u"50");
    text.set(u"PreviewWindowSize-2016", u"Height", u"20");
    text.set(u"Other-2016", u"DisplayMode", u"5");
    ASSERT_TRUE(platform::writeProfile(file(), text).ok());
    ASSERT_TRUE(Tavra_LoadSettingFileW(handle, file().c_str())) << lastError();
    EXPECT_EQ(place()[2], 50u);
    EXPECT_EQ(place()[3], 20u);
    EXPECT_EQ(displayMode(), 0) << "the window is drawn in this mode";
    ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
    ASSERT_TRUE(Tavra_LoadSettingFileW(handle, file().c_str())) << lastError();
    EXPECT_EQ(displayMode(), 5) << "without one it counts";
}

// The double takes the size of nothing, which asks for the whole sensor, as its image's; a window has a pixel
// at least.
TEST_F(OpenWindow, AResetGivesItTheSizeOfTheImageUnlessSizesAreLeftOut) {
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, TAVRA_SETTING_FILE_NO_GEOMETRY));
    ASSERT_TRUE(Tavra_ResetSetting(handle)) << lastError();
    EXPECT_EQ(place()[2], 40u);
    EXPECT_EQ(place()[3], 30u);
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, 0));
    ASSERT_TRUE(Tavra_ResetSetting(handle)) << lastError();
    EXPECT_EQ(place()[2], 1u);
    EXPECT_EQ(place()[3], 1u);
}

}  // namespace
}  // namespace tavra::test
