// Keys, title, icon and file names of `tavra view`.
#include <gtest/gtest.h>

#include <fstream>

#include "exit_code.h"
#include "new_file.h"
#include "support/temp_folder.h"
#include "view_icon.h"
#include "view_keys.h"
#include "view_title.h"

namespace tavra::tool {
namespace {

TEST(ViewKeys, AreTheSameInCapitals) {
    EXPECT_EQ(viewActionOf(U'f'), ViewAction::Fit);
    EXPECT_EQ(viewActionOf(U'F'), ViewAction::Fit);
    EXPECT_EQ(viewActionOf(U'Q'), ViewAction::Quit);
    EXPECT_EQ(viewActionOf(kKeyEscape), ViewAction::Quit);
    EXPECT_EQ(viewActionOf(kKeyLeft), ViewAction::MoveLeft);
}

TEST(ViewKeys, OthersDoNothing) {
    EXPECT_EQ(viewActionOf(U'x'), ViewAction::None);
    EXPECT_EQ(viewActionOf(0), ViewAction::None);
    EXPECT_EQ(viewActionOf(0x1F600), ViewAction::None);
}

TEST(ViewKeys, AreAllInTheList) {
    const std::string list = viewKeysText();
    for (char key = '!'; key <= '~'; ++key) {
        const bool capital = key >= 'A' && key <= 'Z';
        const bool unshifted = key == '=' || key == '_';  // of + and - on some keyboards
        if (viewActionOf(static_cast<char32_t>(key)) == ViewAction::None || capital || unshifted) continue;
        bool listed = false;
        for (std::size_t line = 0; line < list.size(); line = list.find('\n', line) + 1) {
            const std::string keys = list.substr(line, 10);
            listed = listed || keys.find(std::string(" ") + key) != std::string::npos;
        }
        EXPECT_TRUE(listed) << key << " is not in\n" << list;
    }
}

ViewState stateOfACamera() {
    ViewState state;
    state.camera = "TV-1";
    state.fps = 29.97;
    state.control = ControlState{};
    state.control->exposureSeconds = 0.008;
    state.control->decibels = 6;
    state.control->whiteBalance = {160, 128, 128, 192};
    return state;
}

TEST(ViewTitle, TellsTheStateInALine) {
    ViewState state = stateOfACamera();
    state.lost = 3;
    state.color = true;
    EXPECT_EQ(viewTitle(state),
              "TV-1  30.0 fps  3 lost  exposure 8.000ms  gain 6.0dB  wb R 1.25 B 1.50  1:1");
}

TEST(ViewTitle, LeavesOutWhatAMonoCameraLacks) {
    EXPECT_EQ(viewTitle(stateOfACamera()), "TV-1  30.0 fps  0 lost  exposure 8.000ms  gain 6.0dB  1:1");
}

TEST(ViewTitle, TellsZoomRotationControlsMovieAndNotice) {
    ViewState state;
    state.camera = "TV-1";
    state.fit = true;
    state.magnification = 4;
    state.rotation = 2;
    state.autoExposure = state.autoWhiteBalance = true;
    state.movie = "view-1.avi";
    state.movieSeconds = 75;
    state.notice = "view-7.png";
    EXPECT_EQ(viewTitle(state),
              "TV-1  0.0 fps  0 lost  auto exposure and wb  fit x4  rotated ccw  REC view-1.avi 1:15  "
              "[view-7.png]");
    state.autoWhiteBalance = false;
    EXPECT_NE(viewTitle(state).find("  auto exposure  fit"), std::string::npos);
    state.autoExposure = false;
    state.autoWhiteBalance = true;
    EXPECT_NE(viewTitle(state).find("  auto wb  fit"), std::string::npos);
}

TEST(ViewIcon, IsALensOnAPlateWithoutCorners) {
    for (const std::uint32_t size : {16u, 32u, 64u}) {
        const auto pixels = viewIcon(size);
        ASSERT_EQ(pixels.size(), std::size_t{size} * size);
        for (const std::size_t corner : {std::size_t{0}, std::size_t{size} - 1, pixels.size() - 1})
            EXPECT_LT(pixels[corner] >> 24, 32u);
        EXPECT_EQ(pixels[std::size_t{size} * (size / 2) + size / 2], 0xFF12303Au) << "the depth of the lens";
        EXPECT_EQ(pixels[size / 2] >> 24, 0xFFu) << "the plate reaches the edge";
    }
    EXPECT_TRUE(viewIcon(0).empty());
}

TEST(NewFile, TakesTheFirstFreeNumber) {
    const test::TempFolder folder;
    const std::string name = (folder / "view").string();
    std::ofstream(name + "-2.png") << "kept";
    EXPECT_EQ(makeNextFile(name, ".png"), name + "-1.png");
    EXPECT_EQ(makeNextFile(name, ".png"), name + "-3.png");
    EXPECT_EQ(makeNextFile(name, ".avi"), name + "-1.avi");
    EXPECT_EQ(test::readFile(name + "-2.png").size(), 4u);
}

TEST(NewFile, TellsAFolderThatIsMissing) {
    const test::TempFolder folder;
    try {
        makeNextFile((folder / "none" / "view").string(), ".png");
        FAIL() << "made a file in a folder that does not exist";
    } catch (const Failure& failure) {
        EXPECT_NE(std::string(failure.what()).find("view-1.png: No such file"), std::string::npos)
            << failure.what();
        EXPECT_EQ(failure.exitCode(), ExitCode::Failed);
    }
}

}  // namespace
}  // namespace tavra::tool
