// AVI writers on disks that fail, fill up and stall.
#include <gtest/gtest.h>

#include <algorithm>

#include "media/movie/avi_layouts.h"
#include "media/movie/no_files.h"
#include "support/failing_allocations.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kFault = 29;
constexpr MovieForm kForm{.width = 21, .height = 13, .rate = 25};
constexpr SegmentLimits kTwoFrames = {.entries = 2};

class AviFaults : public ::testing::TestWithParam<AviLayout> {
  protected:
    static constexpr std::uint32_t kFrames = 5;

    static void addFrames(Recording& recording, std::uint32_t count = kFrames) {
        for (std::uint32_t i = 0; i < count; ++i) recording.add(i, makeImage(kForm, i));
    }

    static FileBytes fileOf(std::uint32_t count, SegmentLimits limits = kTwoFrames, std::uint32_t first = 0) {
        std::vector<MovieFrame> frames;
        for (std::uint32_t i = 0; i < count; ++i) {
            frames.push_back(GetParam().frame(kForm, i, makeImage(kForm, first + i)));
        }
        return GetParam().build(kForm, frames, limits);
    }
};

TEST_P(AviFaults, AFailureOfAnyWriteEndsTheRecordingWithItsCode) {
    MovieFilesDouble whole;
    Recording clean(GetParam().make(whole, kTwoFrames), kForm);
    addFrames(clean);
    EXPECT_EQ(clean.run(), Status());
    // The index's head, its entries and the header; or the last index, the head and two more segments'. By
    // design their failures are not reported.
    const std::size_t closing = GetParam().format == 1 ? 3 : 4;

    for (std::size_t nth = 1; nth <= whole.writeCount(); ++nth) {
        for (const bool atStart : {false, true}) {
            SCOPED_TRACE(::testing::Message() << "write " << nth << (atStart ? " at its start" : ""));
            MovieFilesDouble files;
            files.failWrite(nth, kFault, atStart);
            Recording recording(GetParam().make(files, kTwoFrames), kForm);
            addFrames(recording);
            const std::uint32_t wanted = nth <= whole.writeCount() - closing ? kFault : 0;
            EXPECT_EQ(recording.run().code(), wanted);
            EXPECT_EQ(recording.events, (std::vector<Recording::Event>{{45064, 0}, {45065, wanted}}));
            EXPECT_EQ(files.openFiles(), 0u);
            EXPECT_EQ(recording.free.size() + recording.filled.size(), kFrames);
        }
    }
}

TEST_P(AviFaults, WhatWasWrittenAheadOfAFailureIsWhole) {
    // The writes of a whole recording, to know which one is the third frame's.
    MovieFilesDouble whole;
    Recording clean(GetParam().make(whole, kTwoFrames), kForm);
    addFrames(clean);
    EXPECT_EQ(clean.run(), Status());
    const FileBytes wanted = fileOf(2);
    std::size_t third = 0;
    for (const MovieFilesDouble::Write& write : whole.writes()) {
        ++third;
        // In AVI 2.0 it stands behind the first sector of a segment.
        const std::uint64_t at = GetParam().format == 1 ? wanted.size() - 8 - 16 * (GetParam().jpeg() ? 2 : 3)
                                                        : wanted.size() + 2048;
        if (write.position == at) break;
    }
    ASSERT_LT(third, whole.writeCount());

    MovieFilesDouble files;
    files.failWrite(third, kFault);
    Recording recording(GetParam().make(files, kTwoFrames), kForm);
    addFrames(recording);
    EXPECT_EQ(recording.run().code(), kFault);
    EXPECT_EQ(recording.filled.size(), 2u);
    FileBytes got = files.bytes(u"movie.avi");
    ASSERT_GE(got.size(), wanted.size());
    EXPECT_LE(got.size() - wanted.size(), 2048u) << "at most what would have opened another segment";
    got.resize(wanted.size());
    EXPECT_TRUE(equalFiles(got, wanted));
}

TEST_P(AviFaults, TheNextFileOfTheQueueStandsForItself) {
    MovieFilesDouble files;
    files.failWrite(1, kFault);
    Recording recording(GetParam().make(files, kTwoFrames), kForm);
    addFrames(recording);
    EXPECT_EQ(recording.run({u"bad.avi", u"good.avi"}), Status());
    EXPECT_EQ(files.openFiles(), 0u);
    EXPECT_TRUE(equalFiles(files.bytes(u"good.avi"), fileOf(4, kTwoFrames, 1)));
}

TEST_P(AviFaults, AFullDiskEndsTheRecordingWithItsCode) {
    MovieFilesDouble files;
    // Room for two frames and part of the third.
    files.setRoom(GetParam().format == 1 ? fileOf(3).size() - 8 - 4 * 16 - 100 : 0x101000 + 2 * 2048 + 100);
    Recording recording(GetParam().make(files), kForm);
    addFrames(recording);
    EXPECT_EQ(recording.run().code(), 112u);
    EXPECT_EQ(recording.events.back(), (Recording::Event{45065, 112}));
    EXPECT_EQ(recording.filled.size(), 2u);
}

TEST_P(AviFaults, NoRoomAtAllEndsTheRecordingWithItsCode) {
    MovieFilesDouble files;
    files.setRoom(0);
    Recording recording(GetParam().make(files), kForm);
    addFrames(recording);
    EXPECT_EQ(recording.run().code(), 112u);
    EXPECT_EQ(recording.filled.size(), kFrames - 1);
}

TEST_P(AviFaults, ACloseThatFailsBehindGoodFramesIsNotReported) {
    MovieFilesDouble files;
    files.failClose(kFault);
    files.failOpenAgain(3);
    Recording recording(GetParam().make(files), kForm);
    addFrames(recording);
    EXPECT_EQ(recording.run(), Status());
    EXPECT_EQ(files.openFiles(), 0u);
}

TEST_P(AviFaults, AFrameIsNotGivenBackBeforeItIsWritten) {
    MovieFilesDouble files;
    files.stallWrites();
    Recording recording(GetParam().make(files), kForm);
    addFrames(recording);
    ASSERT_TRUE(recording.writer().addFile(u"movie.avi").ok());
    ASSERT_TRUE(recording.writer().Start().ok());
    EXPECT_TRUE(files.stalled().wait(platform::kWaitForever));
    EXPECT_EQ(recording.free.size(), 0u);
    files.releaseWrites();
    recording.writer().Stop();
    EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), fileOf(kFrames, {})));
}

TEST_P(AviFaults, WithoutMemoryForTheHeadersNothingStarts) {
    MovieFilesDouble files;
    const auto writer = GetParam().make(files);
    writer->settings.framesPerFile = 100000;
    writer->settings.image = movie::ImageDescription::of(16, 16, 48, 24);
    const FailAllocationsFrom fail(100000);
    EXPECT_EQ(writer->Start().code(), 8u);
    EXPECT_TRUE(writer->ended().wait(0));
}

// The file system's own: it makes the second handle on the file, for which there is no memory.
TEST_P(AviFaults, WithoutMemoryAtItsEndAFileIsClosedAndTheNextOneIsWhole) {
    const TempFolder folder;
    const std::filesystem::path first = folder / "first.avi", second = folder / "second.avi";
    Recording recording(GetParam().make(movie::systemMovieFiles(), kTwoFrames), kForm);
    addFrames(recording, 3);
    movie::CAVIFile& writer = recording.writer();
    ASSERT_TRUE(writer.PrepareHeader().ok());
    std::unique_ptr<movie::FileRecord> files[2];
    ASSERT_TRUE(writer.OpenFile(wideName(first), files[0]).ok());
    ASSERT_TRUE(writer.OpenFile(wideName(second), files[1]).ok());
    ASSERT_TRUE(writer.WriteFrame(*files[0], recording.filled.pop()->image(), 0, 0).ok());
    Status closed;
    {
        const FailAllocationsFrom none(1);
        closed = writer.CloseFile(*files[0]);
    }
    EXPECT_EQ(closed.code(), GetParam().format == 1 ? 0u : 8u);
    for (std::uint32_t i = 0; i < 2; ++i) {
        ASSERT_TRUE(writer.WriteFrame(*files[1], recording.filled.pop()->image(), i, 0).ok());
    }
    EXPECT_TRUE(writer.CloseFile(*files[1]).ok());
    EXPECT_TRUE(equalFiles(readFile(second), fileOf(2, kTwoFrames, 1)));
}

INSTANTIATE_TEST_SUITE_P(Layouts, AviFaults, kAllLayouts, layoutName);

class JpegFaultsInMovies : public ::testing::TestWithParam<AviLayout> {};

// The encoder refuses rows that overlap. Nothing of such a frame comes into the file.
TEST_P(JpegFaultsInMovies, AFrameThatCannotBeEncodedFailsAndIsNotInTheMovie) {
    MovieFilesDouble files;
    Recording recording(GetParam().make(files), kForm);
    movie::CAVIFile& writer = recording.writer();
    ASSERT_TRUE(writer.PrepareHeader().ok());
    std::unique_ptr<movie::FileRecord> record;
    ASSERT_TRUE(writer.OpenFile(u"movie.avi", record).ok());
    std::vector<MovieFrame> frames;
    for (std::uint32_t i = 0; i < 3; ++i) {
        const FileBytes image = makeImage(kForm, i);
        const bool fails = i == 2;
        if (fails) writer.settings.rowStride = 1;
        if (!fails) frames.push_back({i, encodeJpegFrame(kForm, image)});
        recording.add(i, image);
        const Status written = writer.WriteFrame(*record, recording.filled.pop()->image(), i, 0);
        EXPECT_EQ(written.code(), fails ? 87u : 0u);
    }
    EXPECT_EQ(writer.CloseFile(*record).code(), 87u);
    EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), GetParam().build(kForm, frames)));
}

// Without memory for the encoder's buffers as well; those of a movie's own were made ahead of it.
TEST_P(JpegFaultsInMovies, OnlyWhatTheEncoderMakesAnewIsAllocatedForAFrame) {
    const MovieForm form{.width = 1600, .height = 9, .rate = 25};
    constexpr std::size_t kCoefficients = 100 * 4 * 128, kPlane = 8 * 1600;
    const TempFolder folder;
    Recording recording(GetParam().make(movie::systemMovieFiles()), form);
    movie::CAVIFile& writer = recording.writer();
    ASSERT_TRUE(writer.PrepareHeader().ok());
    std::unique_ptr<movie::FileRecord> record;
    ASSERT_TRUE(writer.OpenFile(wideName(folder / "movie.avi"), record).ok());
    std::vector<MovieFrame> frames;
    for (std::uint32_t i = 0; i < 3; ++i) {
        const FileBytes image = makeImage(form, i);
        const bool withoutPlanes = i == 2;
        if (!withoutPlanes) frames.push_back({i, encodeJpegFrame(form, image)});
        recording.add(i, image);
        std::uint8_t* const rows = recording.filled.pop()->image();
        const FailAllocationsFrom large(i == 0 ? SIZE_MAX : withoutPlanes ? kPlane : kCoefficients);
        EXPECT_EQ(writer.WriteFrame(*record, rows, i, 0).code(), withoutPlanes ? 8u : 0u);
        EXPECT_EQ(FailAllocationsFrom::failures(), withoutPlanes ? 1u : 0u);
    }
    EXPECT_EQ(writer.CloseFile(*record).code(), 8u);
    EXPECT_TRUE(equalFiles(readFile(folder / "movie.avi"), GetParam().build(form, frames)));
}

TEST_P(JpegFaultsInMovies, TheRecordingEndsWithTheCode) {
    MovieFilesDouble files;
    Recording recording(GetParam().make(files), kForm);
    recording.writer().settings.rowStride = 1;
    for (std::uint32_t i = 0; i < 3; ++i) recording.add(i, makeImage(kForm, i));
    EXPECT_EQ(recording.run().code(), 87u);
    EXPECT_EQ(recording.filled.size(), 2u);
}

INSTANTIATE_TEST_SUITE_P(Layouts, JpegFaultsInMovies, ::testing::Values(kAvi10Mjpeg, kAvi20Mjpeg),
                         layoutName);

// A volume of every size around those of a few frames, and frames that fill their sectors in every way.
TEST(AviDiskRoom, IsLeftByTheWriterBeforeTheDiskIsFull) {
    for (const std::uint32_t width : {10u, 679u, 680u, 682u}) {
        const MovieForm form{.width = width, .height = 2, .rate = 25};
        std::size_t fewest = 100, most = 0;
        for (std::uint64_t room = 0x101000 + 40000; room < 0x101000 + 60000; room += 509) {
            MovieFilesDouble files;
            files.setRoom(room);
            files.free = {.value = room};
            Recording recording(kAvi20NotCompressed.make(files, {.entries = 3}), form);
            for (std::uint32_t i = 0; i < 40; ++i) recording.add(i, makeImage(form, i));
            EXPECT_EQ(recording.run(), Status()) << room;
            std::vector<MovieFrame> frames;
            for (std::uint32_t i = 0; i < recording.free.size(); ++i)
                frames.push_back({i, makeImage(form, i)});
            EXPECT_TRUE(
                equalFiles(files.bytes(u"movie.avi"), buildAvi20NotCompressed(form, frames, {.entries = 3})))
                << room;
            fewest = std::min(fewest, frames.size());
            most = std::max(most, frames.size());
        }
        EXPECT_GE(fewest, 1u);
        EXPECT_GT(most, fewest);
        EXPECT_LT(most, 40u);
    }
}

TEST(AviFrames, AreWrittenWithoutAllocations) {
    NoFiles files;
    for (const AviLayout& layout : {kAvi10NotCompressed, kAvi20NotCompressed}) {
        Recording recording(layout.make(files), kForm);
        recording.add(0, makeImage(kForm, 0));
        movie::CAVIFile& writer = recording.writer();
        writer.settings.framesPerFile = 20000;
        ASSERT_TRUE(writer.PrepareHeader().ok());
        std::unique_ptr<movie::FileRecord> record;
        ASSERT_TRUE(writer.OpenFile(u"movie.avi", record).ok());
        std::uint8_t* const image = recording.filled.pop()->image();
        std::size_t failures = 0;
        {
            const FailAllocationsFrom none(1);
            for (std::uint32_t i = 0; i < 20000; i += 1 + i % 3) {
                ASSERT_TRUE(writer.WriteFrame(*record, image, i, 0).ok());
            }
            failures = FailAllocationsFrom::failures();
        }
        EXPECT_EQ(failures, 0u) << layout.name;
        EXPECT_TRUE(writer.CloseFile(*record).ok());
    }
}

}  // namespace
}  // namespace tavra::test
