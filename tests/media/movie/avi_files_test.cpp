// What holds for all four AVI layouts: their files, byte for byte, and what they do with files and frames.
#include <gtest/gtest.h>

#include "media/movie/avi_layouts.h"

namespace tavra::test {
namespace {

using movie::IAVIFileStatusListener;

class AviFiles : public ::testing::TestWithParam<AviLayout> {
  protected:
    // Records frames at these positions, and compares the file.
    void expectFile(const MovieForm& form, const std::vector<std::uint32_t>& positions,
                    SegmentLimits limits = {}) {
        SCOPED_TRACE(::testing::Message() << form.width << "x" << form.height << ", " << form.bits
                                          << " bits, " << positions.size() << " frames");
        MovieFilesDouble files;
        Recording recording(GetParam().make(files, limits), form);
        std::vector<MovieFrame> frames;
        for (const std::uint32_t position : positions) {
            const FileBytes image = makeImage(form, position);
            recording.add(position, image);
            frames.push_back(GetParam().frame(form, position - positions[0], image));
        }
        EXPECT_EQ(recording.run(), Status());
        EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), GetParam().build(form, frames, limits)));
        EXPECT_EQ(recording.free.size(), positions.size());
        EXPECT_EQ(recording.events, (std::vector<Recording::Event>{{45064, 0}, {45065, 0}}));
        EXPECT_EQ(files.openFiles(), 0u);
    }
};

TEST_P(AviFiles, HoldFramesOfEverySize) {
    for (const auto& [width, height] : {std::pair(1u, 1u), {2u, 1u}, {3u, 2u}, {17u, 9u}, {64u, 48u}}) {
        for (const std::uint32_t bits : {8u, 24u}) {
            const MovieForm form{.width = width, .height = height, .bits = bits, .rate = 30};
            expectFile(form, {0});
            expectFile(form, {0, 1});
            expectFile(form, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
        }
    }
}

TEST_P(AviFiles, CountFromTheFirstFrame) {
    expectFile({.width = 5, .height = 4}, {1000, 1001, 1002});
}

TEST_P(AviFiles, HoldAPlaceForEverySkippedFrame) {
    expectFile({.width = 5, .height = 4}, {0, 2});
    expectFile({.width = 5, .height = 4}, {0, 3, 4, 9});
    expectFile({.width = 5, .height = 4, .bits = 8}, {7, 599});
}

TEST_P(AviFiles, KnowTheRateInEveryForm) {
    expectFile({.width = 5, .height = 4, .rate = 30000, .scale = 1001}, {0, 1});
    // The scale in microseconds does not fit 32 bits before it is divided.
    expectFile({.width = 5, .height = 4, .rate = 96'000'000, .scale = 1'000'000'000}, {0});
    expectFile({.width = 5, .height = 4, .rate = 1, .scale = 3}, {0});
    expectFile({.width = 5, .height = 4, .rate = 0xFFFFFFFF, .scale = 1}, {0});
}

TEST_P(AviFiles, KnowTheQuality) {
    expectFile({.width = 5, .height = 4, .quality = 0}, {0});
    expectFile({.width = 5, .height = 4, .quality = 100}, {0});
}

TEST_P(AviFiles, ARateOfZeroMakesAFileAllTheSame) {
    MovieFilesDouble files;
    const MovieForm form{.width = 4, .height = 4, .rate = 0, .scale = 0};
    Recording recording(GetParam().make(files), form);
    recording.add(0, makeImage(form, 0));
    EXPECT_EQ(recording.run(), Status());
    const FileBytes header = files.bytes(u"movie.avi", 0, 40);
    EXPECT_EQ((FileBytes{header.begin() + 32, header.begin() + 36}), (FileBytes{0, 0, 0, 0}));
}

TEST_P(AviFiles, AMovieWithoutFramesIsWhole) {
    const MovieForm form{.width = 5, .height = 4, .rate = 25};
    MovieFilesDouble files;
    Recording recording(GetParam().make(files), form);
    EXPECT_EQ(recording.run(), Status());
    EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), GetParam().build(form, {})));
    EXPECT_EQ(files.openFiles(), 0u);
}

TEST_P(AviFiles, FollowOneAnotherByTheFramesPerFile) {
    const MovieForm form{.width = 6, .height = 3, .rate = 25};
    MovieFilesDouble files;
    Recording recording(GetParam().make(files), form);
    recording.writer().settings.framesPerFile = 3;
    std::vector<FileBytes> images;
    for (std::uint32_t i = 0; i < 10; ++i) {
        images.push_back(makeImage(form, i));
        if (i != 4 && i != 6) recording.add(100 + i, images[i]);
    }
    EXPECT_EQ(recording.run({u"a", u"b", u"c", u"d"}), Status());
    const auto file = [&](std::initializer_list<std::pair<std::uint32_t, std::uint32_t>> indexAndImage) {
        std::vector<MovieFrame> frames;
        for (const auto& [index, image] : indexAndImage) {
            frames.push_back(GetParam().frame(form, index, images[image]));
        }
        return GetParam().build(form, frames);
    };
    EXPECT_TRUE(equalFiles(files.bytes(u"a"), file({{0, 0}, {1, 1}, {2, 2}})));
    EXPECT_TRUE(equalFiles(files.bytes(u"b"), file({{0, 3}, {2, 5}})));
    // Frame 6 is missing between two files, and in neither.
    EXPECT_TRUE(equalFiles(files.bytes(u"c"), file({{0, 7}, {1, 8}, {2, 9}})));
    EXPECT_EQ(files.size(u"d"), 0u) << "a file that was not begun";
    EXPECT_EQ(recording.free.size(), 8u);
}

TEST_P(AviFiles, HoldSixHundredFramesUnlessToldOtherwise) {
    const MovieForm form{.width = 1, .height = 1, .rate = 25};
    for (const std::vector<std::u16string>& names : {std::vector<std::u16string>{u"a"}, {u"a", u"b"}}) {
        MovieFilesDouble files;
        Recording recording(GetParam().make(files), form);
        std::vector<MovieFrame> first;
        for (std::uint32_t i = 0; i < 601; ++i) {
            recording.add(i, makeImage(form, i));
            if (i < 600) first.push_back(GetParam().frame(form, i, makeImage(form, i)));
        }
        EXPECT_EQ(recording.run(names), Status());
        EXPECT_TRUE(equalFiles(files.bytes(u"a"), GetParam().build(form, first)));
        EXPECT_EQ(recording.filled.size(), 2 - names.size()) << "it ends where there is no other file";
        if (names.size() == 1) continue;
        const MovieFrame last = GetParam().frame(form, 0, makeImage(form, 600));
        EXPECT_TRUE(equalFiles(files.bytes(u"b"), GetParam().build(form, {last})));
    }
}

TEST_P(AviFiles, NoFramesPerFileCountAsOne) {
    const MovieForm form{.width = 4, .height = 2, .rate = 25};
    MovieFilesDouble files;
    Recording recording(GetParam().make(files), form);
    recording.writer().settings.framesPerFile = 0;
    for (std::uint32_t i = 0; i < 3; ++i) recording.add(i, makeImage(form, i));
    EXPECT_EQ(recording.run({u"a", u"b"}), Status());
    for (std::uint32_t i = 0; i < 2; ++i) {
        const FileBytes wanted = GetParam().build(form, {GetParam().frame(form, 0, makeImage(form, i))});
        EXPECT_TRUE(equalFiles(files.bytes(i == 0 ? u"a" : u"b"), wanted));
    }
    EXPECT_EQ(recording.filled.size(), 1u) << "no file was left for the third";
}

TEST_P(AviFiles, AFrameThatDoesNotAdvanceIsTheNext) {
    const MovieForm form{.width = 4, .height = 2, .rate = 25};
    MovieFilesDouble files;
    Recording recording(GetParam().make(files), form);
    std::vector<MovieFrame> frames;
    for (std::uint32_t i = 0; i < 4; ++i) {
        recording.add(i == 0 ? 5 : 6, makeImage(form, i));
        frames.push_back(GetParam().frame(form, i, makeImage(form, i)));
    }
    EXPECT_EQ(recording.run(), Status());
    EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), GetParam().build(form, frames)));
}

TEST_P(AviFiles, ColorsAreStoredBlueFirst) {
    const MovieForm form{.width = 5, .height = 3, .rate = 25};
    const FileBytes redFirst = makeImage(form, 1);
    FileBytes blueFirst = redFirst;
    for (std::size_t y = 0; y < 3; ++y) {
        for (std::size_t x = 0; x < 5; ++x)
            std::swap(blueFirst[y * 16 + 3 * x], blueFirst[y * 16 + 3 * x + 2]);
    }
    MovieFilesDouble files;
    Recording recording(GetParam().make(files), form);
    recording.writer().settings.swapRedBlue = true;
    recording.add(0, redFirst);
    EXPECT_EQ(recording.run(), Status());
    const MovieFrame frame = {0, GetParam().jpeg() ? encodeJpegFrame(form, redFirst, true) : blueFirst};
    EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), GetParam().build(form, {frame})));
}

TEST_P(AviFiles, AWriterMakesOneMovieAfterTheOther) {
    MovieFilesDouble files;
    const MovieForm form{.width = 9, .height = 9, .rate = 25};
    Recording recording(GetParam().make(files, {.entries = 2}), form);
    for (const std::u16string name : {u"a", u"b"}) {
        std::vector<MovieFrame> frames;
        for (std::uint32_t i = 0; i < (name == u"a" ? 5u : 2u); ++i) {
            recording.add(i, makeImage(form, i));
            frames.push_back(GetParam().frame(form, i, makeImage(form, i)));
        }
        EXPECT_EQ(recording.run({name}), Status());
        EXPECT_TRUE(equalFiles(files.bytes(name), GetParam().build(form, frames, {.entries = 2})));
    }
}

TEST_P(AviFiles, AFileThatCannotBeMadeIsRefused) {
    MovieFilesDouble files;
    files.failCreate(1, 5);
    Recording recording(GetParam().make(files), {.width = 4, .height = 2});
    EXPECT_EQ(recording.writer().addFile(u"movie.avi").code(), 0xE0000009u);
    EXPECT_TRUE(recording.writer().addFile(u"movie.avi").ok()) << "the next try is its own";
}

TEST_P(AviFiles, OnlyUncompressedRowsStandBottomUp) {
    MovieFilesDouble files;
    EXPECT_EQ(GetParam().make(files)->StoresBottomUp(), !GetParam().jpeg());
}

INSTANTIATE_TEST_SUITE_P(Layouts, AviFiles, kAllLayouts, layoutName);

TEST(AviWriters, KnowTheFourLayoutsAlone) {
    MovieFilesDouble files;
    for (const std::uint16_t format : {1, 2}) {
        EXPECT_NE(movie::makeAviWriter(format, 0, files), nullptr);
        EXPECT_NE(movie::makeAviWriter(format, kMotionJpeg, files), nullptr);
        EXPECT_EQ(movie::makeAviWriter(format, 0xFFFFFFFF, files), nullptr);
        EXPECT_EQ(movie::makeAviWriter(format, kMotionJpeg | 0x20, files), nullptr) << "mJPG";
    }
    EXPECT_EQ(movie::makeAviWriter(0, 0, files), nullptr);
    EXPECT_EQ(movie::makeAviWriter(3, 0, files), nullptr);
    EXPECT_EQ(movie::makeAviWriter(10, 0, files), nullptr);
}

}  // namespace
}  // namespace tavra::test
