// The command's window as a person uses it: on an X server of the test's own, with keys that go through it.
#include <signal.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#include "command_fixture.h"
#include "support/x_keyboard.h"
#include "support/x_server.h"

namespace tavra::test {
namespace {

// A still scene without noise, and nothing that acts on it by itself: every frame is the same picture.
const std::string kCamera = "--virtual bayer:width=64:height=48:noise=off --set wb=manual ";

constexpr xcb_keysym_t kEscape = 0xFF1B, kRight = 0xFF53, kKeypadPlus = 0xFFAB;

// A `tavra view` in work. It ends with its X server at the latest.
class CommandViewTest : public CommandTest {
  protected:
    void SetUp() override {
        server_.emplace();
        ASSERT_TRUE(server_->started()) << "Xvfb is missing: scripts/install-deps test";
        keyboard_.emplace(server_->connection());
    }
    void TearDown() override {
        server_.reset();
        if (pipe_ != nullptr) pclose(pipe_);
    }

    void startView(const std::string& arguments) {
        pipe_ = start("view " + arguments);
        window = keyboard_->waitForWindow("TV-");
        ASSERT_NE(window, 0u) << outcome().output;
        EXPECT_TRUE(keyboard_->titleGets(window, " fps")) << title();
    }

    Outcome outcome() {
        FILE* const pipe = pipe_;
        pipe_ = nullptr;
        return outcomeOf(pipe);
    }

    std::string title() const { return keyboard_->titleOf(window); }
    void type(xcb_keysym_t key) const { keyboard_->type(window, key); }
    bool titleGets(const std::string& text) const { return keyboard_->titleGets(window, text); }
    bool titleLoses(const std::string& text) const { return keyboard_->titleLoses(window, text); }

    // A picture as the server's pixels.
    static std::vector<std::uint32_t> pixelsOf(const Picture& picture) {
        std::vector<std::uint32_t> pixels;
        for (std::size_t i = 0; i + 2 < picture.rgb.size(); i += 3) {
            pixels.push_back(picture.rgb[i] * 65536u + picture.rgb[i + 1] * 256u + picture.rgb[i + 2]);
        }
        return pixels;
    }

    std::optional<XServer> server_;
    std::optional<XKeyboard> keyboard_;
    xcb_window_t window = 0;

  private:
    FILE* pipe_ = nullptr;
};

TEST_F(CommandViewTest, ShowsThePictureThatSnapTakes) {
    ASSERT_EQ(run("snap " + kCamera + "picture.png").exitCode, 0);
    startView(kCamera);
    const auto preview = keyboard_->childOf(window);
    ASSERT_NE(preview, 0u);
    EXPECT_TRUE(server_->looksLike(preview, {64, 48}, pixelsOf(picture("picture.png"))));
    EXPECT_NE(title().find(" lost  exposure "), std::string::npos) << title();
    EXPECT_NE(title().find("dB  wb R "), std::string::npos) << title();
    EXPECT_NE(title().find("  1:1"), std::string::npos) << title();
    type('q');
    const Outcome ended = outcome();
    EXPECT_EQ(ended.exitCode, 0) << ended.output;
    EXPECT_NE(ended.output.find(" frames in "), std::string::npos) << ended.output;
}

TEST_F(CommandViewTest, KeepsThePreviewAsLargeAsItsWindow) {
    startView(kCamera + "--fit --window 320x240+20+10");
    const auto preview = keyboard_->childOf(window);
    EXPECT_EQ(keyboard_->sizeOf(preview).width, 320u);
    EXPECT_TRUE(titleGets("  fit"));
    server_->resize(window, 200, 180);
    // Fitted in: 200 x 150, below 15 rows of black.
    const auto shows = [&] {
        const auto pixels = server_->pixels(preview, 200, 180);
        return pixels.size() == std::size_t{200} * 180 && pixels[200 * 14] == 0 && pixels[200 * 15] != 0 &&
               pixels[200 * 164] != 0 && pixels[200 * 165] == 0;
    };
    EXPECT_TRUE(keyboard_->waitUntil(shows));
    type(kEscape);
    EXPECT_EQ(outcome().exitCode, 0);
}

TEST_F(CommandViewTest, ZoomsMovesAndRotatesByKeys) {
    startView(kCamera);
    type('+');
    EXPECT_TRUE(titleGets("  1:1 x2")) << title();
    type(kKeypadPlus);
    EXPECT_TRUE(titleGets("  1:1 x4")) << title();
    type('-');
    EXPECT_TRUE(titleGets("  1:1 x2")) << title();
    const auto preview = keyboard_->childOf(window);
    const auto middle = server_->pixels(preview, 64, 48);
    type(kRight);
    EXPECT_TRUE(keyboard_->waitUntil([&] { return server_->pixels(preview, 64, 48) != middle; }));
    type('f');
    EXPECT_TRUE(titleGets("  fit"));
    EXPECT_TRUE(titleLoses(" x2"));
    type('1');
    EXPECT_TRUE(titleGets("  1:1"));
    type('r');
    EXPECT_TRUE(titleGets("rotated cw")) << title();
    type('r');
    EXPECT_TRUE(titleGets("rotated ccw")) << title();
    type('r');
    EXPECT_TRUE(titleLoses("rotated")) << title();
    type('q');
    EXPECT_EQ(outcome().exitCode, 0);
}

TEST_F(CommandViewTest, ZoomsWithTheMouse) {
    startView(kCamera);
    const auto preview = keyboard_->childOf(window);
    keyboard_->click(preview, 4, 10, 10);
    EXPECT_TRUE(titleGets("  1:1 x2")) << title();
    keyboard_->click(preview, 5, 10, 10);
    EXPECT_TRUE(titleLoses(" x2")) << title();
    keyboard_->click(preview, 1, 10, 10);
    EXPECT_TRUE(titleGets("  1:1 x2")) << title();
    type('q');
    EXPECT_EQ(outcome().exitCode, 0);
}

TEST_F(CommandViewTest, ShowsARotatedImageWhole) {
    ASSERT_EQ(run("snap " + kCamera + "--set rotate=cw turned.png").exitCode, 0);
    startView(kCamera + "--window 64x64");
    type('r');
    const auto preview = keyboard_->childOf(window);
    // 48 x 64, centred between 8 columns of black on each side.
    std::vector<std::uint32_t> expected(std::size_t{64} * 64);
    const auto turned = pixelsOf(picture("turned.png"));
    ASSERT_EQ(turned.size(), std::size_t{48} * 64);
    for (std::size_t y = 0; y < 64; ++y) {
        for (std::size_t x = 0; x < 48; ++x) expected[y * 64 + x + 8] = turned[y * 48 + x];
    }
    EXPECT_TRUE(server_->looksLike(preview, {64, 64}, expected));
    type('q');
    EXPECT_EQ(outcome().exitCode, 0);
}

TEST_F(CommandViewTest, SavesSnapshotsAndOverwritesNothing) {
    ASSERT_EQ(run("snap " + kCamera + "picture.png").exitCode, 0);
    std::ofstream(folder / "view-1.png") << "kept";
    startView(kCamera + "--overlay text,grid");
    type('s');
    EXPECT_TRUE(titleGets("[view-2.png]")) << title();
    type('s');
    EXPECT_TRUE(titleGets("[view-3.png]")) << title();
    type('q');
    const Outcome ended = outcome();
    EXPECT_EQ(ended.exitCode, 0) << ended.output;
    EXPECT_NE(ended.output.find("view-2.png: 64x48 bgr24, frame "), std::string::npos) << ended.output;
    EXPECT_EQ(readFile(folder / "view-1.png").size(), 4u);
    EXPECT_EQ(picture("view-2.png").rgb, picture("picture.png").rgb) << "the overlay is not part of it";
    EXPECT_EQ(picture("view-3.png").rgb, picture("picture.png").rgb);
}

TEST_F(CommandViewTest, TellsASnapshotThatCannotBeWrittenAndGoesOn) {
    startView(kCamera + "--name none/view");
    type('s');
    EXPECT_TRUE(titleGets("[cannot write none/view-1.png: No such file")) << title();
    type('q');
    const Outcome ended = outcome();
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_NE(ended.output.find("tavra: cannot write none/view-1.png"), std::string::npos) << ended.output;
}

TEST_F(CommandViewTest, RecordsMovies) {
    startView(kCamera + "--codec none");
    type('m');
    EXPECT_TRUE(titleGets("REC view-1.avi")) << title();
    EXPECT_TRUE(keyboard_->waitUntil([&] {
        std::error_code error;
        return std::filesystem::file_size(folder / "view-1.avi", error) > 3 * 64 * 48 * 3;
    }));
    type('r');
    EXPECT_TRUE(titleGets("not possible while a recording runs")) << title();
    type('m');
    EXPECT_TRUE(titleLoses("REC")) << title();
    type('m');
    EXPECT_TRUE(titleGets("REC view-2.avi")) << title();
    type('q');
    const Outcome ended = outcome();
    EXPECT_EQ(ended.exitCode, 0) << ended.output;
    for (const std::string movie : {"view-1.avi", "view-2.avi"}) {
        const auto reports = lines(run("probe --json " + movie).output);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0]["whole"], true) << reports[0].dump();
    }
    EXPECT_GE(lines(run("probe --json view-1.avi").output)[0]["pictures"], 3);
}

TEST_F(CommandViewTest, SwitchesTheControls) {
    startView(kCamera);
    type('e');
    EXPECT_TRUE(titleGets("  auto exposure  ")) << title();
    type('w');
    EXPECT_TRUE(titleGets("  auto exposure and wb  ")) << title();
    type('e');
    EXPECT_TRUE(titleGets("  auto wb  ")) << title();
    type('w');
    EXPECT_TRUE(titleLoses("auto")) << title();
    type('h');
    type('q');
    const Outcome ended = outcome();
    EXPECT_NE(ended.output.find("fit the whole image"), std::string::npos) << ended.output;
}

TEST_F(CommandViewTest, TellsWhatAMonoCameraCannot) {
    startView("--virtual mono:width=64:height=48");
    EXPECT_EQ(title().find("wb"), std::string::npos) << title();
    type('w');
    EXPECT_TRUE(titleGets("  [")) << title();
    type('q');
    EXPECT_EQ(outcome().exitCode, 0);
}

TEST_F(CommandViewTest, DrawsTheOverlayByKeys) {
    startView(kCamera + "--window 64x48");
    const auto preview = keyboard_->childOf(window);
    ASSERT_EQ(run("snap " + kCamera + "picture.png").exitCode, 0);
    const auto plain = pixelsOf(picture("picture.png"));
    ASSERT_TRUE(server_->looksLike(preview, {64, 48}, plain));
    type('t');
    EXPECT_TRUE(keyboard_->waitUntil([&] { return server_->pixels(preview, 64, 48) != plain; }));
    type('t');
    EXPECT_TRUE(server_->looksLike(preview, {64, 48}, plain));
    type('g');
    EXPECT_TRUE(keyboard_->waitUntil([&] { return server_->pixels(preview, 64, 48) != plain; }));
    type('q');
    EXPECT_EQ(outcome().exitCode, 0);
}

TEST_F(CommandViewTest, EndsWhenTheUserClosesTheWindow) {
    startView(kCamera);
    server_->closeByUser(window);
    EXPECT_EQ(outcome().exitCode, 0);
}

TEST_F(CommandViewTest, TellsThatTheWindowWasDestroyed) {
    startView(kCamera);
    server_->destroy(window);
    const Outcome ended = outcome();
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_NE(ended.output.find("window"), std::string::npos) << ended.output;
}

TEST_F(CommandViewTest, TellsThatTheServerIsGone) {
    startView(kCamera);
    server_->kill();
    const Outcome ended = outcome();
    EXPECT_EQ(ended.exitCode, 1) << ended.output;
    EXPECT_NE(ended.output.find("X server"), std::string::npos) << ended.output;
}

TEST_F(CommandViewTest, TellsThatTheCameraWentAway) {
    const Outcome ended = run("view --virtual bayer:width=64:height=48:fault.vanish_at_frame=10");
    EXPECT_EQ(ended.exitCode, 4) << ended.output;
    EXPECT_NE(ended.output.find("went away"), std::string::npos) << ended.output;
}

TEST_F(CommandViewTest, EndsAtAnInterruptWithAWholeMovie) {
    startView(kCamera);
    type('m');
    EXPECT_TRUE(titleGets("REC view-1.avi")) << title();
    const std::uint32_t process = keyboard_->processOf(window);
    ASSERT_NE(process, 0u);
    kill(static_cast<pid_t>(process), SIGINT);
    const Outcome ended = outcome();
    EXPECT_EQ(ended.exitCode, 130) << ended.output;
    EXPECT_NE(ended.output.find("interrupted"), std::string::npos) << ended.output;
    EXPECT_NE(run("probe view-1.avi").output.find("whole"), std::string::npos);
}

TEST_F(CommandViewTest, EndsAfterItsFramesAndLeavesNothingBehind) {
    setenv("HOME", folder.path().c_str(), 1);
    setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
    const Outcome ended = run("view " + kCamera + "--frames 5 --json --display smooth --zoom 2");
    EXPECT_EQ(ended.exitCode, 0) << ended.output;
    const auto events = lines(ended.output);
    ASSERT_FALSE(events.empty()) << ended.output;
    EXPECT_EQ(events.back()["event"], "end");
    EXPECT_GE(events.back()["frames"], 5);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(CommandViewTest, RefusesDisplayModesThatThereAreNot) {
    EXPECT_EQ(run("view " + kCamera + "--display 12").exitCode, 2);
    const Outcome unknown = run("view " + kCamera + "--display hologram");
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_NE(unknown.output.find("plain, surface16"), std::string::npos) << unknown.output;
}

TEST_F(CommandViewTest, TellsThatThereIsNoDisplay) {
    unsetenv("DISPLAY");
    const Outcome unset = run("view " + kCamera);
    EXPECT_EQ(unset.exitCode, 1);
    EXPECT_NE(unset.output.find("DISPLAY is not set"), std::string::npos) << unset.output;
    setenv("DISPLAY", "nowhere:7", 1);
    const Outcome nowhere = run("view " + kCamera);
    EXPECT_EQ(nowhere.exitCode, 1);
    EXPECT_NE(nowhere.output.find("DISPLAY is nowhere:7"), std::string::npos) << nowhere.output;
}

TEST_F(CommandViewTest, ListsItsKeysInTheHelp) {
    const Outcome help = run("view --help");
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.output.find("Keys in the window:\n  f  "), std::string::npos) << help.output;
}

}  // namespace
}  // namespace tavra::test
