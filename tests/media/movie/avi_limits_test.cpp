// Where an AVI file ends: the size that a writer reckons with, the limit of its layout and of its volume, and
// frames and jumps that no file could hold.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "media/movie/avi_layouts.h"
#include "media/movie/no_files.h"

namespace tavra::test {
namespace {

constexpr MovieForm kForm{.width = 21, .height = 13, .rate = 25};

// A writer without a thread of its own, which is asked frame by frame.
class Direct {
  public:
    Direct(const AviLayout& layout, MovieFilesDouble& files, const MovieForm& form, SegmentLimits limits = {})
        : recording_(layout.make(files, limits), form) {
        EXPECT_TRUE(writer().PrepareHeader().ok());
        EXPECT_TRUE(writer().OpenFile(u"movie.avi", record_).ok());
    }
    movie::CAVIFile& writer() { return recording_.writer(); }

    std::uint32_t write(const FileBytes& image, std::uint32_t index) {
        movie::FrameBuffer buffer;
        EXPECT_TRUE(buffer.allocate(image.size()).ok());
        std::copy(image.begin(), image.end(), buffer.image());
        return writer().WriteFrame(*record_, buffer.image(), index, 0).code();
    }
    // Of memory that is the frame's buffer already.
    std::uint32_t writeBuffer(const platform::PageBlock& buffer, std::uint32_t index) {
        return writer().WriteFrame(*record_, buffer.data() + 8, index, 0).code();
    }
    std::uint32_t close() { return writer().CloseFile(*record_).code(); }

    // The largest frame for which the file still has room.
    std::uint64_t roomForAFrame() {
        const std::uint32_t imageBytes = writer().settings.imageBytes;
        std::uint64_t fits = 0, tooMuch = std::uint64_t{1} << 32;
        while (tooMuch - fits > 1) {
            const std::uint64_t middle = (fits + tooMuch) / 2;
            writer().settings.imageBytes = static_cast<std::uint32_t>(middle);
            (writer().IsFileFull() ? tooMuch : fits) = middle;
        }
        writer().settings.imageBytes = imageBytes;
        return fits;
    }

  private:
    Recording recording_;
    std::unique_ptr<movie::FileRecord> record_;
};

class AviSizes : public ::testing::TestWithParam<AviLayout> {
  protected:
    // What the writer takes the file's size for, if it were closed now: it tells by the room that is left. In
    // AVI 2.0 six sectors of it are kept for what a frame brings with it.
    std::uint64_t projectedSize(Direct& direct) const {
        const std::uint64_t besides = GetParam().format == 1 ? 24 : 6 * 2048;
        return direct.writer().GetMaxFileSize() - besides - direct.roomForAFrame();
    }

    MovieFilesDouble files;
};

TEST_P(AviSizes, AreKnownToTheByteBehindEveryFrame) {
    files.free = {.value = 0x80000000};
    for (const MovieForm& form : {kForm, MovieForm{.width = 2036, .height = 1, .bits = 8}}) {
        Direct direct(GetParam(), files, form, {.entries = 5});
        std::vector<MovieFrame> frames;
        for (const std::uint32_t index : {0u, 1u, 2u, 5u, 6u, 7u, 8u, 9u, 10u, 30u, 31u}) {
            ASSERT_EQ(direct.write(makeImage(form, index), index), 0u);
            frames.push_back(GetParam().frame(form, index, makeImage(form, index)));
            EXPECT_EQ(projectedSize(direct), GetParam().build(form, frames, {.entries = 5}).size()) << index;
        }
        EXPECT_EQ(direct.close(), 0u);
        EXPECT_EQ(files.size(u"movie.avi"), GetParam().build(form, frames, {.entries = 5}).size());
    }
}

// Of 253 entries, 253 x 8 + 24 bytes are a sector, and the index's own 32 are not in it.
TEST_P(AviSizes, LeaveOutWhatASectorOfIndicesMayTake) {
    files.free = {.value = 0x80000000};
    Direct direct(GetParam(), files, kForm);
    std::vector<MovieFrame> frames = {
        GetParam().frame(kForm, 0, makeImage(kForm, 0)), GetParam().frame(kForm, 251, makeImage(kForm, 1)),
        GetParam().frame(kForm, 252, makeImage(kForm, 2)), GetParam().frame(kForm, 253, makeImage(kForm, 3))};
    std::vector<MovieFrame> written;
    for (std::uint32_t i = 0; i < 4; ++i) {
        ASSERT_EQ(direct.write(makeImage(kForm, i), frames[i].index), 0u);
        written.push_back(frames[i]);
        const std::uint64_t short_by = GetParam().format == 2 && frames[i].index == 252 ? 2048 : 0;
        EXPECT_EQ(projectedSize(direct) + short_by, GetParam().build(kForm, written).size()) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Layouts, AviSizes, kAllLayouts, layoutName);

// ---- frames

TEST(AviLimits, MotionJpegHasNoSideAbove65535) {
    struct Case {
        std::int32_t width, height;
        std::uint32_t quality, code;
    };
    for (const AviLayout& layout : {kAvi10Mjpeg, kAvi20Mjpeg}) {
        for (const Case& each : {Case{65535, 1, 75, 0},
                                 {1, 65535, 100, 0},
                                 {65536, 1, 75, 87},
                                 {1, 65536, 75, 87},
                                 {0, 1, 75, 87},
                                 {1, 0, 75, 87},
                                 {-1, 1, 75, 87},
                                 {65535, 21846, 75, 87},  // x 3 is more than 32 bits
                                 {1, 1, 101, 87}}) {
            SCOPED_TRACE(::testing::Message() << layout.name << ' ' << each.width << 'x' << each.height);
            MovieFilesDouble files;
            const auto writer = layout.make(files);
            writer->settings.quality = each.quality;
            writer->settings.image.width = each.width;
            writer->settings.image.height = each.height;
            writer->settings.image.bitCount = 8;
            ASSERT_TRUE(writer->addFile(u"movie.avi").ok());
            if (each.code == 0) {
                EXPECT_TRUE(writer->PrepareHeader().ok());
                continue;
            }
            EXPECT_EQ(writer->Start().code(), each.code);
            EXPECT_TRUE(writer->ended().wait(0)) << "no thread runs";
            EXPECT_EQ(files.writeCount(), 0u);
        }
    }
}

TEST(AviLimits, UncompressedFramesMayBeLongerThan65535) {
    for (const AviLayout& layout : {kAvi10NotCompressed, kAvi20NotCompressed}) {
        const MovieForm form{.width = 70000, .height = 1, .bits = 8};
        MovieFilesDouble files;
        Recording recording(layout.make(files), form);
        recording.add(0, makeImage(form, 0));
        EXPECT_EQ(recording.run(), Status());
        EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), layout.build(form, {{0, makeImage(form, 0)}})));
    }
}

std::uint32_t startWith(const AviLayout& layout, std::uint32_t imageBytes) {
    MovieFilesDouble files;
    const auto writer = layout.make(files);
    writer->settings.imageBytes = imageBytes;
    const std::uint32_t code = writer->PrepareHeader().code();
    EXPECT_EQ(files.writeCount(), 0u);
    return code;
}

TEST(AviLimits, AFrameThatNoFileHoldsIsRefusedAheadOfTheFirst) {
    // Headers, the opening chunk, the frame's header; then the index of two entries.
    constexpr std::uint32_t kMost = 0x80000000 - (4096 + 8 + 8) - (8 + 2 * 16);
    EXPECT_EQ(startWith(kAvi10NotCompressed, kMost), 0u);
    EXPECT_EQ(startWith(kAvi10NotCompressed, kMost + 4), 223u);
    EXPECT_EQ(startWith(kAvi10NotCompressed, 0xFFFFFFFC), 223u);
    // A chunk of 1 GiB, which a rest of four bytes would take a sector further.
    EXPECT_EQ(startWith(kAvi20NotCompressed, 0x40000000 - 8), 0u);
    EXPECT_EQ(startWith(kAvi20NotCompressed, 0x40000000 - 12), 223u);
    EXPECT_EQ(startWith(kAvi20NotCompressed, 0x40000000 - 16), 0u);
    EXPECT_EQ(startWith(kAvi20NotCompressed, 0x40000000 - 4), 223u);
    EXPECT_EQ(startWith(kAvi20NotCompressed, 0x80000000), 223u);
    EXPECT_EQ(startWith(kAvi20NotCompressed, 0xFFFFFFF8), 223u) << "with its header 2^32";
}

TEST(AviLimits, RoomIsLeftForAFrameAsLargeAsTheLargest) {
    const MovieForm form{.width = 100, .height = 100};
    MovieFilesDouble files;
    files.free = {.value = 0x101000 + 110000};
    Direct direct(kAvi20NotCompressed, files, form);
    for (std::uint32_t i = 0; i < 2; ++i) ASSERT_EQ(direct.write(makeImage(form, i), i), 0u);
    direct.writer().settings.imageBytes = 1;
    EXPECT_FALSE(direct.writer().IsFileFull()) << "here is room for 30000 bytes";
    direct.writer().settings.imageBytes = 30000;
    ASSERT_EQ(direct.write(makeImage(form, 2), 2), 0u);
    direct.writer().settings.imageBytes = 1;
    EXPECT_TRUE(direct.writer().IsFileFull()) << "here is not, for all that a frame is said to be";
    EXPECT_EQ(direct.close(), 0u);
}

// A stream may take more than its image. What it takes was seen, so that the volume is never full before the
// file is.
TEST(AviLimits, NoiseInMotionJpegIsEndedAheadOfAFullDisk) {
    const MovieForm form{.width = 64, .height = 64, .bits = 8, .quality = 100};
    FileBytes noise(64 * 64);
    std::uint32_t state = 1;
    for (std::uint8_t& sample : noise) {
        state = state * 1664525 + 1013904223;
        sample = (state & 0x80000000) != 0 ? 255 : 0;
    }
    const MovieFrame frame = {0, encodeJpegFrame(form, noise)};
    ASSERT_GT(frame.data.size(), noise.size() + 1000);
    std::size_t most = 0;
    for (std::uint64_t room = 0x101000 + 30000; room < 0x101000 + 50000; room += 509) {
        MovieFilesDouble files;
        files.setRoom(room);
        files.free = {.value = room};
        Recording recording(kAvi20Mjpeg.make(files, {.entries = 2}), form);
        for (std::uint32_t i = 0; i < 12; ++i) recording.add(i, noise);
        EXPECT_EQ(recording.run(), Status()) << room;
        std::vector<MovieFrame> frames;
        for (std::uint32_t i = 0; i < recording.free.size(); ++i) frames.push_back({i, frame.data});
        EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), buildAvi20Mjpeg(form, frames, {.entries = 2})))
            << room;
        most = std::max(most, frames.size());
    }
    EXPECT_GT(most, 1u);
    EXPECT_LT(most, 12u);
}

// ---- jumps

TEST(AviLimits, SkippedFramesCountTowardsTwoGiB) {
    constexpr std::uint32_t kFrame = 1 << 28;
    MovieFilesDouble files;
    Direct direct(kAvi10NotCompressed, files, {.width = 16384, .height = 16384, .bits = 8});
    platform::PageBlock buffer;
    ASSERT_TRUE(buffer.allocate(kFrame + 2064).ok());
    for (std::uint32_t i = 0; i < 7; ++i) ASSERT_EQ(direct.writeBuffer(buffer, i), 0u);
    constexpr std::uint64_t kSize = 4096 + 8 + 7ull * (8 + kFrame) + 8 + 8 * 16;
    // Each frame, whether it is there or not, takes the header of a chunk and an entry. Three are skipped.
    constexpr auto kJustFits = static_cast<std::uint32_t>(0x80000000 - kSize - 4 * (8 + 16));
    const std::size_t writes = files.writeCount();
    direct.writer().settings.imageBytes = kJustFits + 1;
    EXPECT_EQ(direct.writeBuffer(buffer, 10), 223u);
    EXPECT_EQ(files.writeCount(), writes) << "not even the empty chunks";
    direct.writer().settings.imageBytes = kJustFits;
    EXPECT_EQ(direct.writeBuffer(buffer, 11), 223u);
    EXPECT_EQ(direct.writeBuffer(buffer, 10), 0u);
    direct.writer().settings.imageBytes = 0;
    EXPECT_TRUE(direct.writer().IsFileFull());
    EXPECT_EQ(direct.close(), 223u) << "the first failure";
    EXPECT_EQ(files.size(u"movie.avi"), 0x80000000u);
}

TEST(AviLimits, TheIndicesOfSkippedFramesCountTowardsTheVolume) {
    for (const AviLayout& layout : {kAvi20NotCompressed, kAvi20Mjpeg}) {
        for (const SegmentLimits limits :
             {SegmentLimits{.entries = 2}, {.entries = 5}, {.entries = 300}, {}}) {
            for (const std::uint32_t jump :
                 {2u, 3u, 4u, 5u, 6u, 7u, 10u, 11u, 252u, 253u, 300u, 601u, 4030u}) {
                SCOPED_TRACE(::testing::Message() << layout.name << ' ' << limits.entries << ' ' << jump);
                const std::vector<MovieFrame> frames = {layout.frame(kForm, 0, makeImage(kForm, 0)),
                                                        layout.frame(kForm, jump, makeImage(kForm, 1))};
                const FileBytes whole = layout.build(kForm, frames, limits);
                for (const std::uint64_t missing : {0u, 1u}) {
                    MovieFilesDouble files;
                    files.free = {.value = whole.size() - missing};
                    files.setRoom(files.free.value);
                    Direct direct(layout, files, kForm, limits);
                    ASSERT_EQ(direct.write(makeImage(kForm, 0), 0), 0u);
                    const std::size_t writes = files.writeCount();
                    const std::uint32_t code = missing == 0 ? 0 : 223;
                    EXPECT_EQ(direct.write(makeImage(kForm, 1), jump), code);
                    EXPECT_EQ(files.writeCount() == writes, missing != 0);
                    EXPECT_EQ(direct.close(), code);
                    const FileBytes wanted = missing == 0 ? whole : layout.build(kForm, {frames[0]}, limits);
                    EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), wanted));
                }
            }
        }
    }
}

// Whatever jumps come on a volume of whatever size: the file is whole and within it.
TEST(AviLimits, NoJumpFillsTheVolume) {
    const std::vector<std::uint32_t> positions = {0, 1, 9, 10, 40, 41, 42, 200, 201, 900, 901};
    std::size_t whole = 0, ended = 0;
    for (std::uint64_t room = 0x101000 + 40000; room < 0x101000 + 700000; room += 12345) {
        MovieFilesDouble files;
        files.setRoom(room);
        files.free = {.value = room};
        Recording recording(kAvi20NotCompressed.make(files, {.entries = 7}), kForm);
        recording.writer().settings.framesPerFile = 1000;
        for (const std::uint32_t position : positions) recording.add(position, makeImage(kForm, position));
        const std::uint32_t code = recording.run().code();
        EXPECT_TRUE(code == 0 || code == 223) << code;
        // A frame that was refused has been given back as well.
        const std::size_t count = recording.free.size() - (code == 0 ? 0 : 1);
        std::vector<MovieFrame> frames;
        for (std::size_t i = 0; i < count; ++i) {
            frames.push_back({positions[i], makeImage(kForm, positions[i])});
        }
        EXPECT_TRUE(
            equalFiles(files.bytes(u"movie.avi"), buildAvi20NotCompressed(kForm, frames, {.entries = 7})))
            << room;
        ++(count == positions.size() ? whole : ended);
    }
    EXPECT_GT(whole, 0u);
    EXPECT_GT(ended, 0u);
}

// With a gap that the file has no room for, a frame belongs to the next one. Its colours were turned for the
// file that did not take it, and are once more for the other.
TEST(AviLimits, AFrameWhoseGapDoesNotFitBeginsTheNextFile) {
    FileBytes images[4], stored[4];
    for (std::uint32_t i = 0; i < 4; ++i) {
        images[i] = stored[i] = makeImage(kForm, i);
        for (std::size_t y = 0; y < kForm.height; ++y) {
            for (std::size_t x = 0; x < kForm.width; ++x) {
                std::uint8_t* const pixel = &stored[i][y * strideOf(kForm) + 3 * x];
                std::swap(pixel[0], pixel[2]);
            }
        }
    }
    for (const AviLayout& layout : {kAvi10NotCompressed, kAvi10Mjpeg, kAvi20NotCompressed, kAvi20Mjpeg}) {
        for (const std::size_t queued : {1u, 2u}) {
            SCOPED_TRACE(::testing::Message() << layout.name << ", files: " << queued);
            MovieFilesDouble files;
            if (layout.format == 2) files.free = {.value = 0x101000 + 100000};
            Recording recording(layout.make(files), kForm);
            recording.writer().settings.framesPerFile = 0xFFFFFFFF;
            recording.writer().settings.swapRedBlue = true;
            // 24 bytes for each frame of 2 GiB, 8 of a small volume.
            const std::uint32_t jump = layout.format == 1 ? 90'000'000 : 13'000;
            for (std::uint32_t i = 0; i < 4; ++i) recording.add(i < 2 ? i : jump + i, images[i]);
            const std::uint32_t code = recording
                                           .run(queued == 1 ? std::vector<std::u16string>{u"a"}
                                                            : std::vector<std::u16string>{u"a", u"b"})
                                           .code();
            EXPECT_EQ(code, queued == 1 ? 223u : 0u);
            EXPECT_EQ(recording.free.size(), queued == 1 ? 3u : 4u);
            const auto file = [&](std::size_t first) {
                std::vector<MovieFrame> frames;
                for (std::uint32_t i = 0; i < 2; ++i) {
                    frames.push_back({i, layout.jpeg() ? encodeJpegFrame(kForm, images[first + i], true)
                                                       : stored[first + i]});
                }
                return layout.build(kForm, frames);
            };
            EXPECT_TRUE(equalFiles(files.bytes(u"a"), file(0)));
            if (queued == 1) continue;
            EXPECT_TRUE(equalFiles(files.bytes(u"b"), file(2)));
        }
    }
}

TEST(AviLimits, AFileHas65536Segments) {
    NoFiles files;
    movie::CAVIFile20NotCompressed writer(files, {.segmentEntries = 1});
    ASSERT_TRUE(writer.PrepareHeader().ok());
    std::unique_ptr<movie::FileRecord> record;
    ASSERT_TRUE(writer.OpenFile(u"movie.avi", record).ok());
    movie::FrameBuffer frame;
    ASSERT_TRUE(frame.allocate(0).ok());
    const auto write = [&](std::uint32_t index) {
        return writer.WriteFrame(*record, frame.image(), index, 0).code();
    };
    EXPECT_EQ(write(0), 0u);
    EXPECT_EQ(write(65536), 223u);
    EXPECT_EQ(write(65534), 0u) << "each frame that is skipped is a segment";
    EXPECT_FALSE(writer.IsFileFull());
    EXPECT_EQ(write(65535), 0u);
    EXPECT_TRUE(writer.IsFileFull());
    EXPECT_EQ(write(65536), 223u);
}

// ---- volumes and files

TEST(AviLimits, OldMoviesDoNotLookAtTheVolume) {
    for (const AviLayout& layout : {kAvi10NotCompressed, kAvi10Mjpeg}) {
        for (const auto kind :
             {platform::VolumeKind::Large, platform::VolumeKind::Fat32, platform::VolumeKind::Unknown}) {
            MovieFilesDouble files;
            files.kind = {.value = kind};
            files.free = {.value = 1};
            Recording recording(layout.make(files), kForm);
            std::vector<MovieFrame> frames;
            for (std::uint32_t i = 0; i < 5; ++i) {
                recording.add(i, makeImage(kForm, i));
                frames.push_back(layout.frame(kForm, i, makeImage(kForm, i)));
            }
            EXPECT_EQ(recording.run(), Status());
            EXPECT_EQ(recording.writer().GetMaxFileSize(), 0x80000000u);
            EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), layout.build(kForm, frames)));
        }
    }
}

// One buffer is as good as many where a frame does not differ from the one before.
void addTheSame(Recording& recording, movie::FrameBuffer& frame, std::uint32_t count) {
    ASSERT_TRUE(frame.allocate(recording.writer().settings.imageBytes).ok());
    for (std::uint32_t i = 0; i < count; ++i) recording.filled.push(&frame);
}

TEST(AviLimits, TheNextFileFollowsAtTwoGiB) {
    // Frames of 256 MiB: seven go into a file.
    constexpr std::uint64_t kFrame = 1 << 28;
    const MovieForm form{.width = 1 << 14, .height = 1 << 14, .bits = 8};
    MovieFilesDouble files;
    movie::FrameBuffer frame;
    Recording recording(kAvi10NotCompressed.make(files), form);
    addTheSame(recording, frame, 8);
    EXPECT_EQ(recording.run({u"a.avi", u"b.avi", u"c.avi"}), Status());
    EXPECT_EQ(files.size(u"a.avi"), 4096 + 8 + 7 * (8 + kFrame) + 8 + 8 * 16);
    EXPECT_EQ(files.size(u"b.avi"), 4096 + 8 + 8 + kFrame + 8 + 2 * 16);
    EXPECT_EQ(files.size(u"c.avi"), 0u);
    EXPECT_EQ(files.bytes(u"a.avi", 140, 4), (FileBytes{7, 0, 0, 0}));
    EXPECT_EQ(files.bytes(u"b.avi", 140, 4), (FileBytes{1, 0, 0, 0}));
}

TEST(AviLimits, ASegmentMayHaveExactlyOneGiB) {
    // With its header a frame is 256 MiB. Four are just the limit; the head of later segments leaves three.
    constexpr std::uint64_t kSuperIndex = 1236, kData = 0x101000, kChunk = 1 << 28;
    const MovieForm form{.width = kChunk - 8, .height = 1, .bits = 8};
    MovieFilesDouble files;
    movie::FrameBuffer frame;
    Recording recording(kAvi20NotCompressed.make(files), form);
    addTheSame(recording, frame, 8);
    EXPECT_EQ(recording.run(), Status());
    EXPECT_EQ(files.bytes(u"movie.avi", kSuperIndex + 12, 4), (FileBytes{3, 0, 0, 0}));
    std::vector<int> frames;
    for (std::uint64_t i = 0; i < 3; ++i) {
        frames.push_back(files.bytes(u"movie.avi", kSuperIndex + 32 + 16 * i + 12, 1)[0]);
    }
    EXPECT_EQ(frames, (std::vector{4, 3, 1}));
    // Two indices behind the first segment; a head and an index around each of the others.
    EXPECT_EQ(files.size(u"movie.avi"), kData + 8 * kChunk + 2 * 2048 + 2 * 2 * 2048);
}

}  // namespace
}  // namespace tavra::test
