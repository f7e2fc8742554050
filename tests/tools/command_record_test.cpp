// Movies of the command: recorded from virtual cameras, developed, and read back by its own probe and by
// ffprobe.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "command_fixture.h"

namespace tavra::test {
namespace {

const std::string kCamera = " --virtual bayer:width=64:height=48:pace=off ";

class CommandRecordTest : public CommandTest {
  protected:
    // What `tavra probe` says of a file.
    nlohmann::json probe(const std::string& name) const {
        const auto objects = lines(run("probe --json " + name).output);
        return objects.empty() ? nlohmann::json() : objects.front();
    }

    void expectWhole(const std::string& name, std::uint64_t pictures) const {
        const nlohmann::json movie = probe(name);
        ASSERT_TRUE(movie.is_object()) << name;
        EXPECT_EQ(movie["whole"], true) << movie.dump();
        EXPECT_EQ(movie["pictures"], pictures) << movie.dump();
    }

    // "codec,width,height,frames" as ffprobe counts them.
    std::string ffprobe(const std::string& name) const {
        const std::string line =
            "ffprobe -v error -count_frames -select_streams v -show_entries "
            "stream=codec_name,width,height,nb_read_frames -of csv=p=0 '" +
            (folder / name).string() + "'";
        FILE* const pipe = popen(line.c_str(), "r");
        std::array<char, 256> buffer{};
        const std::size_t got = fread(buffer.data(), 1, buffer.size() - 1, pipe);
        EXPECT_EQ(pclose(pipe), 0) << "ffprobe is missing: scripts/install-deps test";
        std::string text(buffer.data(), got);
        while (!text.empty() && text.back() == '\n') text.pop_back();
        return text;
    }
};

TEST_F(CommandRecordTest, WritesEveryKindOfAvi) {
    const struct {
        const char* options;
        const char* format;
        const char* codec;
        const char* seenByOthers;
    } kinds[] = {
        {"", "AVI 2.0", "", "rawvideo,64,48,12"},
        {"--avi 1", "AVI 1.0", "", "rawvideo,64,48,12"},
        {"--codec mjpg", "AVI 2.0", "MJPG", "mjpeg,64,48,12"},
        {"--codec MJPG --avi 1 --quality 95", "AVI 1.0", "MJPG", "mjpeg,64,48,12"},
        {"--size half", "AVI 2.0", "", "rawvideo,32,24,12"},
        {"--size quarter --avi 1 --set pixel-format=bgr32", "AVI 1.0", "", "rawvideo,16,12,12"},
    };
    for (const auto& kind : kinds) {
        SCOPED_TRACE(kind.options);
        const Outcome outcome = run("record" + kCamera + kind.options + " --frames 12 out.avi");
        EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
        EXPECT_NE(outcome.output.find("out.avi: 12 frames seen, 12 stored, 0 paused, 0 lost."),
                  std::string::npos)
            << outcome.output;
        expectWhole("out.avi", 12);
        const nlohmann::json movie = probe("out.avi");
        EXPECT_EQ(movie["format"], kind.format);
        EXPECT_EQ(movie["codec"], kind.codec);
        EXPECT_EQ(ffprobe("out.avi"), kind.seenByOthers);
    }
}

TEST_F(CommandRecordTest, WritesGreyPicturesOfAMonoCamera) {
    for (const std::string options : {"", "--avi 1"}) {
        EXPECT_EQ(run("record --virtual mono:width=64:height=48:pace=off " + options + " --frames 5 out.avi")
                      .exitCode,
                  0);
        expectWhole("out.avi", 5);
        EXPECT_EQ(probe("out.avi")["bits"], 8);
        EXPECT_EQ(ffprobe("out.avi"), "rawvideo,64,48,5");
    }
}

TEST_F(CommandRecordTest, KeepsTheSettingsOfTheDayInAnSmf) {
    const Outcome outcome = run("record" + kCamera +
                                "--set gamma.y=1.8 --set interpolation=nearest --codec mjpg --quality 60 "
                                "--frames 7 raw.smf");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    expectWhole("raw.smf", 7);
    const nlohmann::json movie = probe("raw.smf");
    EXPECT_EQ(movie["bytes"], 376 + 7 * (24 + 64 * 48));
    EXPECT_EQ(movie["codec"], "MJPG");
    EXPECT_EQ(movie["quality"], 60);
    EXPECT_EQ(movie["bits"], 24);
    EXPECT_EQ(movie["colorArrays"].size(), 1u);
    EXPECT_EQ(movie["development"]["interpolation"], 2);
    EXPECT_EQ(movie["development"]["gamma"]["gamma"], 180);
}

TEST_F(CommandRecordTest, GoesOnInFollowingFiles) {
    const Outcome outcome = run("record" + kCamera + "--frames 25 --frames-per-file 10 --json out.smf");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    expectWhole("out.smf", 10);
    expectWhole("out-2.smf", 10);
    expectWhole("out-3.smf", 5);
    EXPECT_FALSE(std::filesystem::exists(folder / "out-4.smf"));
    const auto events = lines(outcome.output);
    ASSERT_FALSE(events.empty());
    const auto& end = events.back();
    EXPECT_EQ(end["event"], "end");
    EXPECT_EQ(end["stored"], 25);
    EXPECT_EQ(end["files"], 3);
    EXPECT_EQ(end["whole"], true);
    EXPECT_GE(end["seen"], 25);
}

TEST_F(CommandRecordTest, EndsAfterItsTimeWithAllThatWasStored) {
    const Outcome outcome = run("record --virtual bayer:width=64:height=48 --seconds 0.3 --json out.avi");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    const auto events = lines(outcome.output);
    ASSERT_FALSE(events.empty());
    expectWhole("out.avi", events.back()["stored"].get<std::uint64_t>());
    EXPECT_LE(events.back()["stored"], events.back()["seen"]);
}

// The interrupt comes when frames stand in the file.
TEST_F(CommandRecordTest, ClosesTheFileWhenInterrupted) {
    const std::string line =
        "cd '" + folder.path().string() + "' && { env TAVRA_USBD='" + TAVRA_USBD_LIBRARY + "' '" +
        TAVRA_COMMAND + "' record" + kCamera +
        "out.smf & camera=$!; while [ \"$(wc -c <out.smf 2>/dev/null || echo 0)\" -lt 9999 ]; do "
        "sleep 0.02; done; kill -INT $camera; wait $camera; } >out.txt 2>&1";
    const int status = std::system(line.c_str());
    const std::vector<std::uint8_t> told = readFile(folder / "out.txt");
    const std::string output(told.begin(), told.end());
    EXPECT_EQ(WEXITSTATUS(status), 130) << output;
    EXPECT_NE(output.find(" stored, 0 paused"), std::string::npos) << output;
    EXPECT_EQ(probe("out.smf")["whole"], true) << output;
}

TEST_F(CommandRecordTest, LeavesAWholeMovieWhenTheCameraGoesAway) {
    const Outcome outcome = run(
        "record --virtual bayer:width=64:height=48:pace=off:fault.vanish_at_frame=10 --frames 1000 out.avi");
    EXPECT_EQ(outcome.exitCode, 4) << outcome.output;
    EXPECT_NE(outcome.output.find("went away"), std::string::npos) << outcome.output;
    EXPECT_EQ(probe("out.avi")["whole"], true);
}

// Why it was lost is told by the clock, and a busy computer may have been late by itself: see the monitor's
// own tests for that.
TEST_F(CommandRecordTest, CountsAFrameThatTheCameraLost) {
    const Outcome outcome =
        run("record --virtual mono:width=64:height=48:pace=off:fault.shorten=100@5 --frames 12 out.avi");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_NE(outcome.output.find("frame 4 lost: "), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("11 frames seen, 11 stored, 0 paused, 1 lost (1 "), std::string::npos)
        << outcome.output;
    const nlohmann::json movie = probe("out.avi");
    EXPECT_EQ(movie["length"], 12);
    EXPECT_EQ(movie["pictures"], 11);
}

TEST_F(CommandRecordTest, SaysThatTheDiskIsFull) {
    std::filesystem::create_symlink("/dev/full", folder / "full.avi");
    const Outcome outcome = run("record --virtual mono:pace=off --avi 1 --frames 50 full.avi");
    EXPECT_EQ(outcome.exitCode, 1) << outcome.output;
    EXPECT_NE(outcome.output.find("the disk is full"), std::string::npos) << outcome.output;
}

TEST_F(CommandRecordTest, RefusesInWords) {
    const struct {
        const char* arguments;
        int exitCode;
        const char* words;
    } cases[] = {
        {"--frames 3 movie.mp4", 1, "movies end in .avi or .smf"},
        {"--frames 3 nowhere/movie.avi", 1, "nowhere/movie.avi"},
        {"--frames 3 --codec ZZZZ movie.avi", 1, "nothing here encodes ZZZZ"},
        {"--frames 3 --codec ZZZZ --avi 2 movie.avi", 2, "--avi 2 is for"},
        {"--frames 3 --codec abc movie.avi", 2, "codec cannot be 'abc'"},
        {"--frames 3 --size half movie.smf", 2, "whole frames to develop"},
        {"--frames 3 --avi 1 movie.smf", 2, "--avi is for .avi"},
        {"--frames 3 --quality 101 movie.avi", 2, "--quality"},
        {"--frames 3 --size tiny movie.avi", 2, "--size"},
    };
    for (const auto& refused : cases) {
        const Outcome outcome = run("record" + kCamera + refused.arguments);
        EXPECT_EQ(outcome.exitCode, refused.exitCode) << refused.arguments << '\n' << outcome.output;
        EXPECT_NE(outcome.output.find(refused.words), std::string::npos) << outcome.output;
    }
    const Outcome format = run("record --virtual ycbcr --frames 3 movie.smf");
    EXPECT_EQ(format.exitCode, 1) << format.output;
    EXPECT_NE(format.output.find("SMF takes mosaic formats"), std::string::npos) << format.output;
    EXPECT_TRUE(folder.isEmpty());
}

TEST_F(CommandRecordTest, DevelopsAnSmf) {
    ASSERT_EQ(run("record" + kCamera + "--frames 9 raw.smf").exitCode, 0);
    const Outcome plain = run("convert raw.smf plain.avi");
    EXPECT_EQ(plain.exitCode, 0) << plain.output;
    EXPECT_NE(plain.output.find("100 %  9 of 9 frames"), std::string::npos) << plain.output;
    expectWhole("plain.avi", 9);
    EXPECT_EQ(ffprobe("plain.avi"), "rawvideo,64,48,9");
    EXPECT_EQ(run("convert raw.smf fine.avi --codec mjpg --quality 95 --json").exitCode, 0);
    EXPECT_EQ(run("convert raw.smf coarse.avi --codec mjpg --quality 10").exitCode, 0);
    expectWhole("fine.avi", 9);
    EXPECT_EQ(ffprobe("fine.avi"), "mjpeg,64,48,9");
    EXPECT_LT(std::filesystem::file_size(folder / "coarse.avi"),
              std::filesystem::file_size(folder / "fine.avi"));
}

TEST_F(CommandRecordTest, DevelopsWhatACutSmfHolds) {
    ASSERT_EQ(run("record" + kCamera + "--frames 9 raw.smf").exitCode, 0);
    std::filesystem::resize_file(folder / "raw.smf", 376 + 5 * (24 + 64 * 48) + 100);
    const Outcome told = run("probe raw.smf");
    EXPECT_EQ(told.exitCode, 1);
    EXPECT_NE(told.output.find("cut inside frame 5: 100 of 3096 bytes"), std::string::npos) << told.output;
    const Outcome outcome = run("convert raw.smf out.avi");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    expectWhole("out.avi", 5);
}

// A frame of 1.6 GB, most of it a hole in the file, and a process that may have less.
TEST_F(CommandRecordTest, ConvertTellsNoEarlierMovieAsTheOneThatItHadNoMemoryFor) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer takes more address space than any limit";
#endif
    ASSERT_EQ(run("record" + kCamera + "--frames 3 raw.smf").exitCode, 0);
    ASSERT_EQ(run("convert raw.smf out.avi").exitCode, 0);
    const auto patch = [this](std::streamoff at, std::uint32_t value) {
        std::fstream file(folder / "raw.smf", std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(at);
        for (int shift = 0; shift < 32; shift += 8) file.put(static_cast<char>(value >> shift));
    };
    patch(8, 40000);
    patch(12, 40000);
    patch(16, 40000);
    patch(20, 8 << 16 | 8);  // grey
    patch(36, 1'600'000'000);
    std::filesystem::resize_file(folder / "raw.smf", 376 + 24 + std::uintmax_t{1'600'000'000});
    const std::string line = "cd '" + folder.path().string() + "' && ulimit -v 1500000 && '" + TAVRA_COMMAND +
                             "' convert raw.smf out.avi 2>&1";
    const Outcome outcome = outcomeOf(popen(line.c_str(), "r"));
    EXPECT_EQ(outcome.exitCode, 1) << outcome.output;
    EXPECT_NE(outcome.output.find("there is no memory for a frame of raw.smf"), std::string::npos)
        << outcome.output;
    expectWhole("out.avi", 3);
}

TEST_F(CommandRecordTest, ConvertRefusesInWords) {
    ASSERT_EQ(run("record" + kCamera + "--frames 3 raw.smf").exitCode, 0);
    ASSERT_EQ(run("record" + kCamera + "--frames 0.5 x.smf").exitCode, 2);
    const struct {
        const char* arguments;
        int exitCode;
        const char* words;
    } cases[] = {
        {"raw.smf out.smf", 2, "the output is an .avi"},
        {"raw.smf out.mov", 1, "movies end in"},
        {"nowhere.smf out.avi", 1, "cannot read nowhere.smf"},
        {"raw.smf nowhere/out.avi", 1, "its folder does not exist"},
        {"raw.smf out.avi --from 3", 2, "holds the frames 0 to 2"},
        {"raw.smf out.avi --codec ZZZZ", 1, "nothing here encodes ZZZZ"},
        {"raw.smf out.avi --quality 101", 2, "--quality"},
    };
    for (const auto& refused : cases) {
        const Outcome outcome = run(std::string("convert ") + refused.arguments);
        EXPECT_EQ(outcome.exitCode, refused.exitCode) << refused.arguments << '\n' << outcome.output;
        EXPECT_NE(outcome.output.find(refused.words), std::string::npos) << outcome.output;
        EXPECT_FALSE(std::filesystem::exists(folder / "out.avi")) << refused.arguments;
    }
}

// The test stands for a recording that has the file.
TEST_F(CommandRecordTest, LeavesTheFileOfAnotherRecordingAsItIs) {
    ASSERT_EQ(run("record" + kCamera + "--frames 3 raw.smf").exitCode, 0);
    std::ofstream(folder / "out.avi") << "theirs";
    const int theirs = ::open((folder / "out.avi").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(theirs, 0);
    ASSERT_EQ(flock(theirs, LOCK_EX), 0);
    for (const std::string& arguments :
         {"record" + kCamera + "--frames 3 out.avi", "record" + kCamera + "--frames 3 --avi 1 out.avi",
          std::string("convert raw.smf out.avi")}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 1) << arguments;
        EXPECT_NE(outcome.output.find("has the file"), std::string::npos) << outcome.output;
        EXPECT_EQ(std::filesystem::file_size(folder / "out.avi"), 6u) << arguments;
    }
    ::close(theirs);
    EXPECT_EQ(run("convert raw.smf out.avi").exitCode, 0);
    expectWhole("out.avi", 3);
}

TEST_F(CommandRecordTest, ProbeTellsManyFilesAndCountsTheBrokenOnes) {
    ASSERT_EQ(run("record" + kCamera + "--frames 3 a.avi").exitCode, 0);
    const Outcome outcome = run("probe a.avi nowhere.avi a.avi");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.output.find("1 of 3 files"), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("cannot read nowhere.avi"), std::string::npos) << outcome.output;
    EXPECT_EQ(run("probe --quick a.avi").exitCode, 0);
    EXPECT_EQ(run("probe .").exitCode, 1);
}

}  // namespace
}  // namespace tavra::test
