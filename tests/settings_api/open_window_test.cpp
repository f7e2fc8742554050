// Settings while a preview window is open, on an X server that nobody sees.
#include <functional>
#include <optional>
#include <thread>

#include "display_x11/preview_on_screen.h"
#include "platform/profile_file.h"
#include "settings/setting_file.h"
#include "settings_api/camera_state.h"
#include "settings_api/setting_camera_wrapper.h"
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
    void reopen() {
        ASSERT_TRUE(
            Tavra_CreatePreviewWindowA(handle, "Preview", kVisible, 0, 0, 40, 30, nullptr, nullptr, 1))
            << lastError();
    }

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

// Its size is the image's by then, which is set ahead of it.
TEST_F(OpenWindow, ALoadPlacesItOnEitherSideOfTheScreensCorner) {
    const std::pair<const char16_t*, std::uint32_t> places[] = {
        {u"30", 30}, {u"-12", 0u - 12u}, {u"7", 7}, {u"-1", 0u - 1u}, {u"0", 0}};
    for (const auto& [x, left] : places) {
        for (const auto& [y, top] : {std::pair{u"25", 25u}, {u"-9", 0u - 9u}}) {
            platform::ProfileText text;
            text.set(u"PreviewWindowSize-2016", u"PositionX", x);
            text.set(u"PreviewWindowSize-2016", u"PositionY", y);
            ASSERT_TRUE(platform::writeProfile(file(), text).ok());
            ASSERT_TRUE(Tavra_LoadSettingFileW(handle, file().c_str())) << lastError();
            EXPECT_EQ(place(), (Place{left, top, 6, 4}));
        }
    }
}

// What has something else in it than digits and a minus, or reaches bit 30.
TEST_F(OpenWindow, ALoadLeavesItWhereItIsForTextThatIsNoPlace) {
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 0u - 5u, 11, 40, 30));
    for (const char16_t* const none : {u"1073741824", u"-1073741824", u"1.5", u"+3", u"x"}) {
        platform::ProfileText text;
        text.set(u"PreviewWindowSize-2016", u"PositionX", none);
        text.set(u"PreviewWindowSize-2016", u"PositionY", none);
        ASSERT_TRUE(platform::writeProfile(file(), text).ok());
        ASSERT_TRUE(Tavra_LoadSettingFileW(handle, file().c_str())) << lastError();
        EXPECT_EQ(place(), (Place{0u - 5u, 11, 6, 4}));
    }
}

TEST_F(OpenWindow, ASaveAndALoadBringItBackToWhereItWas) {
    const Place kept{0u - 20u, 0u - 3u, 44, 22};
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, kept[0], kept[1], kept[2], kept[3]));
    ASSERT_TRUE(Tavra_SaveSettingFileW(handle, file().c_str())) << lastError();
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 60, 70, 50, 40));
    ASSERT_EQ(place(), (Place{60, 70, 50, 40}));
    ASSERT_TRUE(Tavra_LoadSettingFileW(handle, file().c_str())) << lastError();
    EXPECT_EQ(place(), kept);
}

TEST_F(OpenWindow, AResetBringsItToTheScreensCornerUnlessSizesAreLeftOut) {
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 60, 0u - 7u, 50, 40));
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, TAVRA_SETTING_FILE_NO_GEOMETRY));
    ASSERT_TRUE(Tavra_ResetSetting(handle)) << lastError();
    EXPECT_EQ(place(), (Place{60, 0u - 7u, 50, 40}));
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, 0));
    ASSERT_TRUE(Tavra_ResetSetting(handle)) << lastError();
    EXPECT_EQ(place()[0], 0u);
    EXPECT_EQ(place()[1], 0u);
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

// By the user, or by another thread. What else is set on the camera must not be lost for it.
TEST_F(OpenWindow, ItCanBeClosedAtAnyMomentOfACall) {
    const std::function<bool(ISettingCamera&)> calls[] = {
        [&](ISettingCamera& camera) { return saveSettingFile(camera, file()); },
        [&](ISettingCamera& camera) { return loadSettingFile(camera, file()); },
        [&](ISettingCamera& camera) { return resetSettings(camera); }};
    for (std::size_t i = 0; i < std::size(calls); ++i) {
        // So many uses of the camera behind the first look for the window: its size is among them.
        for (int moment = 0; moment < 4; ++moment) {
            std::optional<int> left;
            int closings = 0;
            const auto close = [&] {
                if (left && (*left)-- == 0) closings += Tavra_DestroyPreviewWindow(handle) != 0 ? 1 : 0;
            };
            const auto begin = [&] {
                if (!left) left = moment;
            };
            SettingCameraWrapper camera(record(), close, begin);
            EXPECT_TRUE(calls[i](camera)) << i << ", " << moment << ": " << lastError();
            EXPECT_EQ(closings, 1) << i << ", " << moment;
            reopen();
        }
    }
}

TEST_F(OpenWindow, ItCanBeClosedByAnotherThreadDuringACall) {
    for (int round = 0; round < 3; ++round) {
        for (const auto call : {Tavra_SaveSettingFileW, Tavra_LoadSettingFileW}) {
            std::thread closing([this] { EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle)); });
            EXPECT_TRUE(call(handle, file().c_str())) << lastError();
            closing.join();
            reopen();
        }
        std::thread closing([this] { EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle)); });
        EXPECT_TRUE(Tavra_ResetSetting(handle)) << lastError();
        closing.join();
        reopen();
    }
}

}  // namespace
}  // namespace tavra::test
