// The command as a person runs it: a process of its own, virtual cameras, files, exit codes.
#include <array>
#include <cstdio>
#include <filesystem>

#include "command_fixture.h"

namespace tavra::test {
namespace {

TEST_F(CommandTest, SnapWritesAPictureFromAVirtualCamera) {
    const Outcome outcome = run("snap --virtual bayer chart.png");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_EQ(pngLayout("chart.png"), "1920x1080 color");
    EXPECT_NE(outcome.output.find("chart.png: 1920x1080 bgr24"), std::string::npos) << outcome.output;
}

TEST_F(CommandTest, SnapTakesOddSizesAndPackedFormats) {
    EXPECT_EQ(
        run("snap --virtual mono:geometry.width_step=1:geometry.height_step=1:width=641:height=479 odd.png")
            .exitCode,
        0);
    EXPECT_EQ(pngLayout("odd.png"), "641x479 gray");
    EXPECT_EQ(run("snap --virtual bayer --set transfer-bits=mosaic12p --set pixel-format=bgr32 packed.png")
                  .exitCode,
              0);
    EXPECT_EQ(pngLayout("packed.png"), "1920x1080 color");
}

TEST_F(CommandTest, SnapDumpsRawFramesAndKeepsTheirBits) {
    EXPECT_EQ(run("snap --virtual bayer --set transfer-bits=mosaic12p frame.raw").exitCode, 0);
    EXPECT_EQ(std::filesystem::file_size(folder / "frame.raw"), 1920u * 1080u * 3 / 2);
    EXPECT_EQ(run("snap --virtual bayer --set transfer-bits=mosaic12 --raw frame.tif").exitCode, 0);
    EXPECT_EQ(std::filesystem::file_size(folder / "frame.tif"), 162u + 1920u * 1080u * 2);
    const Outcome packed = run("snap --virtual bayer --set transfer-bits=mosaic12p --raw frame.tif");
    EXPECT_EQ(packed.exitCode, 1);
    EXPECT_NE(packed.output.find(".raw"), std::string::npos) << packed.output;
}

// The step of the mean stands behind the start, 20 bytes of JFIF and 5 of the table's head.
TEST_F(CommandTest, SnapWritesAJpegOfTheQualityAskedFor) {
    const auto stepOf = [this](const std::string& name) { return readFile(folder / name).at(25); };
    EXPECT_EQ(run("snap --virtual bayer usual.jpg").exitCode, 0);
    EXPECT_EQ(stepOf("usual.jpg"), 3) << "quality 90: (16 * 20 + 50) / 100";
    EXPECT_EQ(run("snap --virtual bayer --quality 100 best.jpg").exitCode, 0);
    EXPECT_EQ(stepOf("best.jpg"), 1);
    EXPECT_EQ(run("snap --virtual mono --quality 50 grey.jpeg").exitCode, 0);
    EXPECT_EQ(stepOf("grey.jpeg"), 16);
    EXPECT_EQ(run("snap --virtual mono --quality 0 zero.jpeg").exitCode, 0);
    EXPECT_EQ(stepOf("zero.jpeg"), 16);
    EXPECT_GT(std::filesystem::file_size(folder / "best.jpg"),
              std::filesystem::file_size(folder / "usual.jpg"));
}

TEST_F(CommandTest, SnapTakesAQualityForJpegOnlyAndUpToAHundred) {
    const Outcome other = run("snap --virtual bayer --quality 90 picture.png");
    EXPECT_EQ(other.exitCode, 1) << other.output;
    EXPECT_NE(other.output.find("--quality is for JPEG"), std::string::npos) << other.output;
    EXPECT_NE(run("snap --virtual bayer --quality 101 picture.jpg").exitCode, 0);
    EXPECT_NE(run("snap --virtual bayer --quality -1 picture.jpg").exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(folder / "picture.png"));
    EXPECT_FALSE(std::filesystem::exists(folder / "picture.jpg"));
}

TEST_F(CommandTest, SnapSaysWhatIsWrongWithAFileName) {
    const Outcome ending = run("snap --virtual mono picture.gif");
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_NE(ending.output.find("no known ending"), std::string::npos) << ending.output;
    const Outcome place = run("snap --virtual mono nowhere/picture.png");
    EXPECT_EQ(place.exitCode, 1);
    EXPECT_NE(place.output.find("nowhere/picture.png"), std::string::npos) << place.output;
}

TEST_F(CommandTest, SnapThatWaitsForATriggerTimesOut) {
    const Outcome outcome = run("snap --virtual bayer --set trigger=on --timeout 0.2 never.png");
    EXPECT_EQ(outcome.exitCode, 5) << outcome.output;
    EXPECT_FALSE(std::filesystem::exists(folder / "never.png"));
}

TEST_F(CommandTest, WithoutACameraItSaysSoAndOffersAVirtualOne) {
    const Outcome outcome = run("snap picture.png");
    EXPECT_EQ(outcome.exitCode, 3) << outcome.output;
    EXPECT_NE(outcome.output.find("--virtual bayer"), std::string::npos) << outcome.output;
    EXPECT_EQ(run("list").exitCode, 0);
}

TEST_F(CommandTest, CamerasAreChosenByIndexAndByUserId) {
    const std::string three = "--virtual mono:userid=4,bayer:userid=7,quad:userid=9 ";
    EXPECT_EQ(run("get " + three + "--index 2 user-id").output, "9\n");
    EXPECT_EQ(run("get " + three + "--camera 7 user-id").output, "7\n");
    EXPECT_EQ(run("get " + three + "--path virtual:0:mono user-id").output, "4\n");
    const Outcome absent = run("get " + three + "--camera 5 user-id");
    EXPECT_EQ(absent.exitCode, 3);
    EXPECT_NE(absent.output.find("user ID 5"), std::string::npos) << absent.output;
    EXPECT_EQ(run("get " + three + "--index 3 user-id").exitCode, 3);
    EXPECT_EQ(run("get " + three + "--index 1 --camera 7 user-id").exitCode, 2)
        << "one way of naming at a time";
}

TEST_F(CommandTest, ListShowsEveryCameraForPeopleAndPrograms) {
    const Outcome text = run("list --virtual bayer:userid=3,usb2");
    EXPECT_NE(text.output.find("user ID 3"), std::string::npos) << text.output;
    EXPECT_NE(text.output.find("super speed"), std::string::npos) << text.output;
    EXPECT_NE(text.output.find("high speed"), std::string::npos) << text.output;
    const auto json = nlohmann::json::parse(run("list --virtual bayer:userid=3,usb2 --json").output);
    ASSERT_EQ(json.size(), 2u);
    EXPECT_EQ(json[0]["userId"], "3");
    EXPECT_EQ(json[1]["index"], 1);
    EXPECT_EQ(json[1]["path"], "virtual:1:usb2");
}

TEST_F(CommandTest, StreamCountsWholeFrames) {
    const auto events = lines(run("stream --virtual mono:pace=off --frames 200 --json").output);
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events.back()["event"], "end");
    EXPECT_GE(events.back()["frames"], 200);
    EXPECT_EQ(events.back()["lost"], 0);
    EXPECT_EQ(events.back()["endCode"], 0);
}

TEST_F(CommandTest, StreamTellsADamagedFrameWithItsReason) {
    const auto events =
        lines(run("stream --virtual mono:pace=off:fault.shorten=100@5 --frames 20 --json").output);
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events.back()["lost"], 1);
    bool told = false;
    for (const auto& event : events) {
        if (event["event"] != "gap") continue;
        told = true;
        EXPECT_EQ(event["first"], 4) << "the fifth frame has number 4";
        EXPECT_EQ(event["frames"], 1);
        EXPECT_FALSE(event["reason"].get<std::string>().empty());
    }
    EXPECT_TRUE(told);
}

TEST_F(CommandTest, StreamEndsWithExitCode4WhenTheCameraGoesAway) {
    const Outcome outcome = run("stream --virtual mono:pace=off:fault.vanish_at_frame=10 --seconds 20");
    EXPECT_EQ(outcome.exitCode, 4) << outcome.output;
    EXPECT_NE(outcome.output.find("went away"), std::string::npos) << outcome.output;
}

TEST_F(CommandTest, SettingsAreReadAndChangedByName) {
    EXPECT_EQ(run("get --virtual bayer size interpolation").output,
              "size            1920x1080+64+36\n"
              "interpolation   bilinear\n");
    const Outcome set = run("set --virtual bayer size=640x480+64+36 user-id=12");
    EXPECT_EQ(set.exitCode, 0) << set.output;
    EXPECT_EQ(set.output, "size is now 640x480+64+36\nuser-id is now 12\n");
    EXPECT_EQ(run("get --virtual bayer colour").exitCode, 2);
    EXPECT_EQ(run("set --virtual bayer fps=3").exitCode, 2) << "can only be read";
    EXPECT_EQ(run("set --virtual bayer size=abc").exitCode, 2);
    const Outcome bits = run("set --virtual bayer transfer-bits=mono8");
    EXPECT_EQ(bits.exitCode, 1);
    EXPECT_NE(bits.output.find("mosaic8, mosaic10"), std::string::npos)
        << "says what the camera has: " << bits.output;
}

TEST_F(CommandTest, AllSettingsAreShownForEveryModel) {
    for (const char* model : {"bayer", "mono", "legacy773", "statusword"}) {
        const auto json = nlohmann::json::parse(run(std::string("get --json --virtual ") + model).output);
        EXPECT_TRUE(json.contains("size")) << model;
        EXPECT_EQ(run(std::string("info --virtual ") + model).exitCode, 0) << model;
    }
}

TEST_F(CommandTest, AWrongCommandLineIsExitCode2WithHelp) {
    for (const char* line : {"", "frobnicate", "snap", "snap --timeout -1 x.png", "stream --frames x"}) {
        const Outcome outcome = run(line);
        EXPECT_EQ(outcome.exitCode, 2) << line << '\n' << outcome.output;
        EXPECT_FALSE(outcome.output.empty());
    }
}

TEST_F(CommandTest, HelpAndVersionSucceed) {
    EXPECT_NE(run("--help").output.find("Exit codes"), std::string::npos);
    EXPECT_EQ(run("--version").output, "tavra " TAVRA_VERSION "\n");
    for (const char* name : {"list", "info", "snap", "stream", "watch", "record", "convert", "probe",
                             "calibrate", "get", "set", "doctor"}) {
        EXPECT_EQ(run(std::string(name) + " --help").exitCode, 0) << name;
    }
}

TEST_F(CommandTest, AMissingUsbAccessLibraryIsNamedWithWhatToDo) {
    const std::string line = "env TAVRA_USBD=/nowhere.so '" + std::string(TAVRA_COMMAND) + "' list 2>&1";
    FILE* const pipe = popen(line.c_str(), "r");
    std::array<char, 1024> buffer{};
    const std::size_t got = fread(buffer.data(), 1, buffer.size() - 1, pipe);
    EXPECT_EQ(WEXITSTATUS(pclose(pipe)), 3);
    EXPECT_NE(std::string(buffer.data(), got).find("TAVRA_USBD"), std::string::npos) << buffer.data();
}

}  // namespace
}  // namespace tavra::test
