// The preview window in a window made with GTK 3: two connections to the X server, two threads that draw, one
// picture on the screen, which is compared pixel by pixel.
#include <optional>

#include "display_x11/gtk_program.h"
#include "display_x11/preview_on_screen.h"
#include "display_x11/user.h"

namespace tavra::test {
namespace {

constexpr Size kImage{36, 24};
constexpr Size kArea{40, 30};
constexpr std::uint32_t kBlue = 0x2A5C8E, kGreen = 0x1F7F3F;

class PreviewInGtk : public PreviewOnScreen {
  protected:
    // GTK knows one server for the life of the process.
    PreviewInGtk() : PreviewOnScreen(serverOfGtk()) { program.emplace(kArea); }

    static XServer& serverOfGtk() {
        static XServer server;
        return server;
    }

    // A window of GTK with a preview in it, and a stream that runs and shows its first frame.
    void streamIntoGtk() {
        ASSERT_TRUE(server.started());
        ASSERT_NE(program->areaWindow(), 0u) << "GTK does not start";
        openMono(kImage.width, kImage.height);
        collectRaw();
        program->paintBeside(kBlue);
        ASSERT_TRUE(shows(whole(kArea, kBlue, areaOfGtk()))) << "before there is a preview";
        createPreview();
        start();
        showInGtk(1);
        ASSERT_TRUE(shows(whole(kArea, kBlue, frameIn(kArea, 1))));
    }
    void createPreview() {
        createWindow(kArea, kVisible | platform::kStyleChild,
                     reinterpret_cast<TavraWindow>(std::uintptr_t{program->areaWindow()}));
    }
    void showInGtk(std::uint32_t number) {
        sendFrame(number, pattern(static_cast<std::uint8_t>(number)));
        EXPECT_EQ(tellsWhileGtkRuns(45067), number);
    }
    std::uint64_t tellsWhileGtkRuns(std::uint32_t message) {
        ReceivedMessage got{};
        EXPECT_TRUE(GtkProgram::runUntil([&] { return receiver.wait(got, 0); })) << "no message came";
        EXPECT_EQ(got.message, message);
        EXPECT_EQ(got.parameter1, reinterpret_cast<std::uintptr_t>(handle));
        return got.parameter2;
    }

    // The window of GTK as it stands on the screen, with whatever lies over it.
    Picture seen(Size size) {
        constexpr std::uint32_t left = GtkProgram::kLeft, top = GtkProgram::kTop;
        const Picture screen = server.pixels(server.root(), left + size.width, top + size.height);
        Picture part;
        for (std::uint32_t y = top; y < top + size.height && !screen.empty(); ++y) {
            const auto row = screen.begin() + std::ptrdiff_t{y} * (left + size.width);
            part.insert(part.end(), row + left, row + left + size.width);
        }
        return part;
    }
    struct Expected {
        Size size;
        Picture pixels;
    };
    bool shows(const Expected& expected) {
        return GtkProgram::runUntil([&] { return seen(expected.size) == expected.pixels; });
    }

    // The colour of a pixel of the area.
    using Area = std::function<std::uint32_t(std::uint32_t x, std::uint32_t y)>;
    static Expected whole(Size area, std::uint32_t beside, const Area& pixel) {
        Expected expected{{GtkProgram::kBesideWidth + area.width, area.height}, {}};
        for (std::uint32_t y = 0; y < area.height; ++y) {
            expected.pixels.insert(expected.pixels.end(), GtkProgram::kBesideWidth, beside);
            for (std::uint32_t x = 0; x < area.width; ++x) expected.pixels.push_back(pixel(x, y));
        }
        return expected;
    }
    static Area areaOfGtk() {
        return [](std::uint32_t, std::uint32_t) { return GtkProgram::kAreaColor; };
    }
    // The frame in the middle, black around it; at the corner of an area that is smaller.
    Area frameIn(Size area, std::uint32_t number) const {
        const std::uint32_t left = area.width > kImage.width ? (area.width - kImage.width) / 2 : 0;
        const std::uint32_t top = area.height > kImage.height ? (area.height - kImage.height) / 2 : 0;
        return [=, this](std::uint32_t x, std::uint32_t y) {
            const bool inside = x >= left && x - left < kImage.width && y >= top && y - top < kImage.height;
            return inside ? grey(number, x - left, y - top) : 0u;
        };
    }

    std::optional<GtkProgram> program;
};

TEST_F(PreviewInGtk, FramesFillTheAreaAndNothingElse) {
    ASSERT_NO_FATAL_FAILURE(streamIntoGtk());
    showInGtk(90);
    EXPECT_TRUE(shows(whole(kArea, kBlue, frameIn(kArea, 90))));
    stopAndExpectCode(0);
}

TEST_F(PreviewInGtk, GtkPaintsAroundThePreviewAndNotOverIt) {
    ASSERT_NO_FATAL_FAILURE(streamIntoGtk());
    program->paintBeside(kGreen);
    ASSERT_TRUE(program->repaintAll());
    EXPECT_TRUE(shows(whole(kArea, kGreen, frameIn(kArea, 1))));
    showInGtk(2);
    EXPECT_TRUE(shows(whole(kArea, kGreen, frameIn(kArea, 2))));
    stopAndExpectCode(0);
}

TEST_F(PreviewInGtk, FollowsTheSizeOfItsArea) {
    ASSERT_NO_FATAL_FAILURE(streamIntoGtk());
    program->onAreaSized = [this](Size size) {
        EXPECT_TRUE(Tavra_SetPreviewWindowSize(handle, 0, 0, size.width, size.height));
    };
    std::uint32_t number = 1;
    for (const Size area : {Size{51, 43}, Size{36, 24}, Size{19, 11}, Size{200, 150}}) {
        SCOPED_TRACE(area.width);
        program->resize(area);
        EXPECT_EQ(tellsWhileGtkRuns(45061), 0u);
        EXPECT_EQ(tellsWhileGtkRuns(45063), 0u);
        EXPECT_TRUE(shows(whole(area, kBlue, frameIn(area, number)))) << "the same frame";
        std::uint32_t x = 1, y = 1, width = 0, height = 0;
        ASSERT_TRUE(Tavra_GetPreviewWindowSize(handle, &x, &y, &width, &height));
        EXPECT_EQ(x, 0u);
        EXPECT_EQ(y, 0u);
        EXPECT_EQ((Size{width, height}), area);
        showInGtk(++number);
        EXPECT_TRUE(shows(whole(area, kBlue, frameIn(area, number)))) << "the next frame";
    }
    stopAndExpectCode(0);
}

TEST_F(PreviewInGtk, IsThereAgainWhenAHiddenWindowIsShown) {
    ASSERT_NO_FATAL_FAILURE(streamIntoGtk());
    program->hide();
    ASSERT_TRUE(shows(whole(kArea, 0, [](std::uint32_t, std::uint32_t) { return 0u; })))
        << "the screen behind is black";
    showInGtk(2);
    program->show();
    EXPECT_TRUE(shows(whole(kArea, kBlue, frameIn(kArea, 2))));
    stopAndExpectCode(0);
}

TEST_F(PreviewInGtk, ClicksOnItReachTheAreaOnceWithItsCoordinates) {
    ASSERT_NO_FATAL_FAILURE(streamIntoGtk());
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 7, 5, 30, 20));
    tellsWhileGtkRuns(45061);
    tellsWhileGtkRuns(45063);
    struct Button {
        bool pressed;
        double x, y;
        bool operator==(const Button&) const = default;
    };
    std::vector<Button> seenByGtk;
    program->onAreaButton = [&](bool pressed, double x, double y) { seenByGtk.push_back({pressed, x, y}); };
    User user(server);
    user.clickAt(GtkProgram::kLeft + int{GtkProgram::kBesideWidth} + 12, GtkProgram::kTop + 9);
    EXPECT_TRUE(GtkProgram::runUntil([&] { return !seenByGtk.empty() && !seenByGtk.back().pressed; }));
    EXPECT_EQ(seenByGtk, (std::vector<Button>{{true, 12, 9}, {false, 12, 9}}));
    program->onAreaButton = nullptr;
    stopAndExpectCode(0);
}

TEST_F(PreviewInGtk, EndsWithTheWindowOfGtkAndTheStreamGoesOn) {
    ASSERT_NO_FATAL_FAILURE(streamIntoGtk());
    program->destroyWindow();
    EXPECT_EQ(tellsWhileGtkRuns(45060), 0u);
    EXPECT_FALSE(record().preview.alive());
    sendFrame(2, pattern(2));
    EXPECT_EQ(raws.waitFor(2).size(), 2u);
    stopAndExpectCode(0);  // and no picture was told of, as nobody would see it

    // Another window takes the preview in, and goes while the stream runs, which ends with the camera.
    program.emplace(kArea);
    program->paintBeside(kGreen);
    createPreview();
    start();
    showInGtk(3);
    EXPECT_TRUE(shows(whole(kArea, kGreen, frameIn(kArea, 3))));
    program->destroyWindow();
    EXPECT_EQ(tellsWhileGtkRuns(45060), 0u);

    Tavra_Close(handle);
    EXPECT_EQ(expectMessage(45058), 0u);
    handle = nullptr;
    expectNoMessage();
}

TEST_F(PreviewInGtk, LeavesTheAreaToGtkWhenItGoesFirst) {
    ASSERT_NO_FATAL_FAILURE(streamIntoGtk());
    ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
    EXPECT_EQ(tellsWhileGtkRuns(45060), 0u);
    EXPECT_TRUE(shows(whole(kArea, kBlue, areaOfGtk())));
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
