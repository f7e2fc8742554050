// AVI 2.0: segments, indices, sectors, and files larger than 4 GiB.
#include <gtest/gtest.h>

#include "base/little_endian.h"
#include "media/movie/avi_index.h"
#include "media/movie/avi_layouts.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

constexpr std::uint64_t kData = 0x101000;

struct Avi20 : ::testing::Test {
    MovieFilesDouble files;

    std::uint32_t number(std::uint64_t position) const {
        return loadLe32(files.bytes(u"movie.avi", position, 4).data());
    }
    std::uint64_t longNumber(std::uint64_t position) const {
        return loadLe64(files.bytes(u"movie.avi", position, 8).data());
    }
    std::string tag(std::uint64_t position) const {
        const FileBytes bytes = files.bytes(u"movie.avi", position, 4);
        return {bytes.begin(), bytes.end()};
    }
    // The super index of a colour movie stands at 212.
    std::uint32_t segments() const { return number(212 + 12); }

    void expectFile(const AviLayout& layout, const MovieForm& form,
                    const std::vector<std::uint32_t>& positions, SegmentLimits limits) {
        SCOPED_TRACE(::testing::Message() << layout.name << ", " << limits.entries << " entries, "
                                          << limits.bytes << " bytes, " << positions.size() << " frames");
        Recording recording(layout.make(files, limits), form);
        recording.writer().settings.framesPerFile = 100000;
        std::vector<MovieFrame> frames;
        for (const std::uint32_t position : positions) {
            recording.add(position, makeImage(form, position));
            frames.push_back(layout.frame(form, position, makeImage(form, position)));
        }
        EXPECT_EQ(recording.run(), Status());
        EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), layout.build(form, frames, limits)));
    }
};

// The process's folder, for as long as it lives.
class PresentFolder {
  public:
    explicit PresentFolder(const std::filesystem::path& folder) : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    ~PresentFolder() { std::filesystem::current_path(before_); }
    PresentFolder(const PresentFolder&) = delete;
    PresentFolder& operator=(const PresentFolder&) = delete;

  private:
    const std::filesystem::path before_;
};

// A movie of one frame in the file system, named relative to the present folder, that is not closed yet.
struct OpenMovie {
    static constexpr MovieForm kForm{.width = 21, .height = 13, .rate = 25};
    const FileBytes image = makeImage(kForm, 0);
    Recording recording{kAvi20NotCompressed.make(movie::systemMovieFiles(), {}), kForm};
    std::unique_ptr<movie::FileRecord> record;

    OpenMovie() {
        movie::CAVIFile& writer = recording.writer();
        recording.add(0, image);
        EXPECT_TRUE(writer.PrepareHeader().ok());
        EXPECT_TRUE(writer.OpenFile(u"movie.avi", record).ok());
        EXPECT_TRUE(writer.WriteFrame(*record, recording.filled.pop()->image(), 0, 0).ok());
    }
    Status close() { return recording.writer().CloseFile(*record); }
};

TEST(Avi20Names, AMovieIsClosedWholeWhereverTheProcessHasGone) {
    const TempFolder made, other;
    PresentFolder first(made.path());
    OpenMovie movie;
    {
        const PresentFolder second(other.path());
        EXPECT_TRUE(movie.close().ok());
        EXPECT_TRUE(other.isEmpty());
    }
    EXPECT_TRUE(equalFiles(readFile(made / "movie.avi"),
                           kAvi20NotCompressed.build(OpenMovie::kForm, {{0, movie.image}}, {})));
}

TEST(Avi20Names, AnotherFileThatHasComeToStandThereIsLeftAlone) {
    MovieFilesDouble files;
    constexpr MovieForm kForm{.width = 21, .height = 13, .rate = 25};
    Recording recording(kAvi20NotCompressed.make(files, {}), kForm);
    recording.add(0, makeImage(kForm, 0));
    movie::CAVIFile& writer = recording.writer();
    std::unique_ptr<movie::FileRecord> record;
    ASSERT_TRUE(writer.PrepareHeader().ok());
    ASSERT_TRUE(writer.OpenFile(u"movie.avi", record).ok());
    ASSERT_TRUE(writer.WriteFrame(*record, recording.filled.pop()->image(), 0, 0).ok());
    files.existing = {.value = 5};  // what stands under that name now
    EXPECT_EQ(writer.CloseFile(*record).code(), 0xE0000009u);
    EXPECT_EQ(files.bytes(u"movie.avi", 0, 4), FileBytes(4)) << "no header";
    EXPECT_EQ(files.openFiles(), 0u);
}
std::vector<std::uint32_t> upTo(std::uint32_t count) {
    std::vector<std::uint32_t> positions(count);
    for (std::uint32_t i = 0; i < count; ++i) positions[i] = i;
    return positions;
}

TEST_F(Avi20, AFrameThatEndsAtASectorNeedsNoJunk) {
    Recording recording(kAvi20NotCompressed.make(files), {.width = 680, .height = 1});
    recording.add(0, makeImage({.width = 680, .height = 1}, 0));  // 2040 bytes
    EXPECT_EQ(recording.run(), Status());
    EXPECT_EQ(tag(kData), "00db");
    EXPECT_EQ(number(kData + 4), 2040u);
    EXPECT_EQ(tag(kData + 2048), "ix00");
}

TEST_F(Avi20, FourBytesAreTooFewForJunkAndTakeAnotherSector) {
    Recording recording(kAvi20NotCompressed.make(files), {.width = 2036, .height = 1, .bits = 8});
    recording.add(0, makeImage({.width = 2036, .height = 1, .bits = 8}, 0));
    EXPECT_EQ(recording.run(), Status());
    EXPECT_EQ(number(kData + 4), 2036u);
    EXPECT_EQ(tag(kData + 2044), "JUNK");
    EXPECT_EQ(number(kData + 2048), 2052u - 8);
    EXPECT_EQ(files.bytes(u"movie.avi", kData + 2052, 2044), FileBytes(2044))
        << "what was in the buffer shows";
    EXPECT_EQ(tag(kData + 4096), "ix00");
}

TEST_F(Avi20, EveryRestOfASectorIsFilledUp) {
    for (std::uint32_t width = 2020; width <= 2060; width += 4) {
        expectFile(kAvi20NotCompressed, {.width = width, .height = 1, .bits = 8}, {0, 1, 2}, {.entries = 2});
    }
}

TEST_F(Avi20, OddStreamsAndSkippedFramesAreIndexed) {
    const MovieForm form{.width = 21, .height = 13};
    expectFile(kAvi20Mjpeg, form, {0, 3, 4, 5, 9, 10, 11, 12}, {.entries = 4028});
    EXPECT_EQ(tag(kData), "00dc");
    expectFile(kAvi20NotCompressed, form, {0, 3}, {.entries = 4028});
    const std::uint64_t index = longNumber(212 + 32);
    EXPECT_EQ(tag(index), "ix00");
    EXPECT_EQ(number(index + 12), 4u);
    EXPECT_EQ(longNumber(index + 20), kData);
    EXPECT_EQ(number(index + 32), 8u);
    EXPECT_EQ(longNumber(index + 40), 0x8000000000000000u);
    EXPECT_EQ(longNumber(index + 48), 0x8000000000000000u);
    EXPECT_EQ(number(index + 56), 2048u + 8);
    EXPECT_EQ(number(index + 60), 832u);
    // The old index behind it: the empty chunk, then two frames that are not there, then the second real one.
    const std::uint64_t old = index + 2048;
    EXPECT_EQ(tag(old), "idx1");
    EXPECT_EQ(number(old + 4), 2040u);
    EXPECT_EQ(tag(old + 8), "7Fxx");
    EXPECT_EQ(number(old + 16), 0x8000u);
    EXPECT_EQ(tag(old + 24), "00dc");
    EXPECT_EQ(number(old + 32), 0x100FF8u);
    EXPECT_EQ(tag(old + 40), "00dc");
    EXPECT_EQ(number(old + 48), kData + 8);
    EXPECT_EQ(number(old + 64), kData + 8);
    EXPECT_EQ(tag(old + 72), "00db");
    EXPECT_EQ(number(old + 76), 16u);
    EXPECT_EQ(number(old + 80), kData + 2048);
    EXPECT_EQ(number(old + 84), 832u);
    EXPECT_EQ(tag(old + 88), "7Fxx");
    EXPECT_EQ(longNumber(old + 2040), 0u);
    EXPECT_EQ(number(4), old + 2048 - 8);
    EXPECT_EQ(number(48), 4u);
}

TEST_F(Avi20, AnOddJpegIsFilledUpWithADigitAheadOfItsJunk) {
    MovieForm form{.width = 16, .height = 8};
    while (encodeJpegFrame(form, makeImage(form, 1)).size() % 2 == 0) ++form.height;
    const auto first = static_cast<std::uint32_t>(encodeJpegFrame(form, makeImage(form, 0)).size());
    const auto odd = static_cast<std::uint32_t>(encodeJpegFrame(form, makeImage(form, 1)).size());
    ASSERT_LT(std::max(first, odd), 2000u) << "a sector each";
    expectFile(kAvi20Mjpeg, form, {0, 1, 2}, {});
    const std::uint64_t chunk = kData + 2048;
    EXPECT_EQ(tag(chunk), "00dc");
    EXPECT_EQ(number(chunk + 4), odd) << "without the digit";
    EXPECT_EQ(files.bytes(u"movie.avi", chunk + 8 + odd, 1), FileBytes{0x30});
    EXPECT_EQ(tag(chunk + 8 + odd + 1), "JUNK");
    EXPECT_EQ(number(chunk + 8 + odd + 5), 2048 - (8 + odd + 1) - 8);
    const std::uint64_t index = kData + 3 * 2048;
    EXPECT_EQ(tag(index), "ix00");
    EXPECT_EQ(tag(index + 16), "00dc");
    EXPECT_EQ(number(index + 32 + 4), first);
    EXPECT_EQ(number(index + 40), 2048u + 8);
    EXPECT_EQ(number(index + 44), odd);
    const std::uint64_t old = index + 2048;
    EXPECT_EQ(tag(old + 40), "00dc");
    EXPECT_EQ(number(old + 44), 16u);
    EXPECT_EQ(number(old + 48), chunk);
    EXPECT_EQ(number(old + 52), odd);
}

TEST_F(Avi20, HeadersTellOfAllFrames) {
    expectFile(kAvi20NotCompressed, {.width = 21, .height = 13, .rate = 50}, upTo(5), {.entries = 2});
    EXPECT_EQ(number(16), 460u + 0x100020);
    EXPECT_EQ(number(40), 2048u);
    EXPECT_EQ(number(44), 0x810u);
    EXPECT_EQ(number(48), 2u) << "those of the first segment";
    EXPECT_EQ(number(60), 832u + 8);
    EXPECT_EQ(number(92), 116u + 0x100020);
    EXPECT_EQ(number(140), 5u);
    EXPECT_EQ(number(144), 832u + 8);
    EXPECT_EQ(number(148), 0u);
    EXPECT_EQ(number(192), 832u);
    EXPECT_EQ(tag(212), "indx");
    EXPECT_EQ(number(216), 0x100018u);
    EXPECT_EQ(segments(), 3u);
    EXPECT_EQ(number(212 + 32 + 2 * 16 + 8), 40u) << "bytes of the last index";
    EXPECT_EQ(number(212 + 32 + 2 * 16 + 12), 1u) << "its frames";
    EXPECT_EQ(tag(212 + 0x100020 + 8), "odml");
    EXPECT_EQ(number(212 + 0x100020 + 20), 5u);
}

TEST_F(Avi20, LaterSegmentsHaveAHeadAndABaseOfTheirOwn) {
    expectFile(kAvi20NotCompressed, {.width = 21, .height = 13}, upTo(3), {.entries = 2});
    // Two frames, the index, the old index: a sector each.
    const std::uint64_t second = kData + 4 * 2048;
    EXPECT_EQ(tag(second), "RIFF");
    EXPECT_EQ(number(second + 4), 2048u + 2048 + 2048 - 8) << "junk, frame, index";
    EXPECT_EQ(tag(second + 8), "AVIX");
    EXPECT_EQ(tag(second + 12), "LIST");
    EXPECT_EQ(number(second + 16), 3u * 2048 - 20);
    EXPECT_EQ(tag(second + 20), "movi");
    EXPECT_EQ(tag(second + 24), "00dc");
    EXPECT_EQ(tag(second + 32), "JUNK");
    EXPECT_EQ(number(second + 36), 2008u);
    EXPECT_EQ(tag(second + 2048), "00db");
    const std::uint64_t index = longNumber(212 + 32 + 16);
    EXPECT_EQ(index, second + 4096);
    EXPECT_EQ(longNumber(index + 20), second + 32);
    EXPECT_EQ(number(index + 32), 2016u + 8);
    EXPECT_EQ(files.size(u"movie.avi"), second + 3 * 2048);
}

TEST_F(Avi20, ASegmentIsClosedByTheCountOfItsFrames) {
    const MovieForm form{.width = 1, .height = 1};
    expectFile(kAvi20NotCompressed, form, upTo(4028), {});
    EXPECT_EQ(segments(), 1u) << "full, and nothing behind it";
    expectFile(kAvi20NotCompressed, form, upTo(4029), {});
    EXPECT_EQ(segments(), 2u);
    EXPECT_EQ(number(212 + 32 + 8), 32256u);
    EXPECT_EQ(number(212 + 32 + 12), 4028u);
    EXPECT_EQ(number(48), 4028u);
}

TEST_F(Avi20, ASegmentIsClosedByItsBytes) {
    const MovieForm form{.width = 21, .height = 13};
    for (const std::uint64_t sectors : {1u, 2u, 3u, 4u, 5u, 7u}) {
        for (const std::uint64_t less : {0u, 1u}) {
            const SegmentLimits limits = {.bytes = sectors * 2048 - less};
            expectFile(kAvi20NotCompressed, form, upTo(9), limits);
            expectFile(kAvi20Mjpeg, form, upTo(9), limits);
        }
    }
    // Two frames of a sector each, and the same again is just the limit: a third goes in.
    expectFile(kAvi20NotCompressed, form, upTo(3), {.bytes = 3 * 2048});
    EXPECT_EQ(segments(), 1u);
    expectFile(kAvi20NotCompressed, form, upTo(3), {.bytes = 3 * 2048 - 1});
    EXPECT_EQ(segments(), 2u);
}

TEST_F(Avi20, AJumpThatAnIndexCannotHoldClosesItsSegmentFirst) {
    const MovieForm form{.width = 21, .height = 13};
    const SegmentLimits limits = {.entries = 5};
    expectFile(kAvi20NotCompressed, form, {0, 1, 4, 5}, limits);  // the jump just fits
    EXPECT_EQ(number(48), 5u);
    expectFile(kAvi20NotCompressed, form, {0, 1, 5, 6}, limits);  // and here it does not
    EXPECT_EQ(number(48), 2u);
    EXPECT_EQ(segments(), 2u);
    for (std::uint32_t jump = 1; jump < 24; ++jump) {
        expectFile(kAvi20NotCompressed, form, {0, jump, jump + 1}, limits);
        expectFile(kAvi20NotCompressed, form, {0, 1, 2, 3, 4, 4 + jump, 5 + 2 * jump}, limits);
    }
}

TEST_F(Avi20, AFileIsFullWhenTheSuperIndexIs) {
    const MovieForm form{.width = 4, .height = 2};
    const auto make = [&] {
        return std::make_unique<movie::CAVIFile20NotCompressed>(
            files, movie::AviLimits{.segmentEntries = 2, .segments = 3});
    };
    Recording recording(make(), form);
    for (std::uint32_t i = 0; i < 10; ++i) recording.add(i, makeImage(form, i));
    EXPECT_EQ(recording.run({u"movie.avi", u"next.avi"}), Status());
    EXPECT_EQ(segments(), 3u);
    EXPECT_EQ(number(140), 6u);
    EXPECT_EQ(loadLe32(files.bytes(u"next.avi", 140, 4).data()), 4u);

    Recording jumping(make(), form);
    jumping.writer().settings.framesPerFile = 0xFFFFFFFF;
    jumping.add(0, makeImage(form, 0));
    jumping.add(0x80000000, makeImage(form, 1));
    EXPECT_EQ(jumping.run().code(), 223u);
    const MovieFrame first = {0, makeImage(form, 0)};
    EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), buildAvi20NotCompressed(form, {first})));
}

TEST_F(Avi20, GoesOnPastFourGiBInSegmentsOfOne) {
    // Frames of 256 MiB: with the headers only three fit a segment.
    const MovieForm form{.width = 16384, .height = 16384, .bits = 8};
    const auto writer = kAvi20NotCompressed.make(files);
    Recording recording(kAvi20NotCompressed.make(files), form);
    writer->settings = recording.writer().settings;
    platform::PageBlock frame;
    ASSERT_TRUE(frame.allocate((1 << 28) + 2064).ok());
    ASSERT_TRUE(writer->PrepareHeader().ok());
    std::unique_ptr<movie::FileRecord> record;
    ASSERT_TRUE(writer->OpenFile(u"movie.avi", record).ok());
    constexpr std::uint32_t kFrames = 20;
    for (std::uint32_t i = 0; i < kFrames; ++i) {
        frame.data()[8] = static_cast<std::uint8_t>(i + 1);
        ASSERT_TRUE(writer->WriteFrame(*record, frame.data() + 8, i, 0).ok());
        EXPECT_FALSE(writer->IsFileFull());
    }
    EXPECT_TRUE(writer->CloseFile(*record).ok());

    constexpr std::uint64_t kSuperIndex = 1236;
    constexpr std::uint64_t kChunk = (1 << 28) + 2048;
    EXPECT_EQ(number(kSuperIndex + 12), 7u);
    std::uint64_t segment = kData;
    for (std::uint32_t i = 0; i < kFrames; ++i) {
        SCOPED_TRACE(i);
        const std::uint64_t entry = kSuperIndex + 32 + 16 * (i / 3);
        const std::uint64_t index = longNumber(entry);
        const std::uint32_t frames = i / 3 < 6 ? 3 : 2;
        EXPECT_EQ(index, segment + frames * kChunk);
        EXPECT_EQ(number(entry + 12), frames);
        EXPECT_EQ(tag(index), "ix00");
        const std::uint64_t chunk = segment + i % 3 * kChunk;
        EXPECT_EQ(longNumber(index + 20) + number(index + 32 + 8 * (i % 3)), chunk + 8);
        EXPECT_EQ(tag(chunk), "00db");
        EXPECT_EQ(files.bytes(u"movie.avi", chunk + 8, 1)[0], i + 1);
        if (i % 3 == 2) segment = index + 2048 + 2048;
        if (i == 2) segment += 2048;  // the old index
    }
    EXPECT_GT(segment, 0x100000000u);
    EXPECT_EQ(number(140), kFrames);
}

TEST_F(Avi20, EstimatesTheSizeOfAFile) {
    const auto writer = kAvi20NotCompressed.make(files);
    EXPECT_EQ(writer->GetFileSizeEstimate(1000, 0), 0x100FF4u);
    // One sector a frame, the old index of 11 entries, the index of 10.
    EXPECT_EQ(writer->GetFileSizeEstimate(2040, 10), 0x101000u + 2048 + 10 * 2048 + 2048);
    EXPECT_EQ(writer->GetFileSizeEstimate(2041, 10), 0x101000u + 2048 + 10 * 4096 + 2048);
    // 0x80000 frames a segment: 16 * 0x80001 and 8 * 0x80000 + 24 bytes of index, in whole sectors.
    const std::uint64_t first = 0x101000 + 0x800800 + 0x40000000 + 0x400800;
    EXPECT_EQ(writer->GetFileSizeEstimate(2040, 0x80000), first);
    EXPECT_EQ(writer->GetFileSizeEstimate(2040, 0x80001), first + 2048 + 2048 + 2048);
    const std::uint64_t next = 2048 + 0x40000000 + 0x400800;
    EXPECT_EQ(writer->GetFileSizeEstimate(2040, 3 * 0x80000), first + 2 * next);
    EXPECT_EQ(writer->GetFileSizeEstimate(2040, 3 * 0x80000 + 2), first + 2 * next + 2048 + 2 * 2048 + 2048);
    // A frame of more than a segment is one of its own.
    EXPECT_EQ(writer->GetFileSizeEstimate(0xFFFFFFF8, 2),
              0x101000u + 2048 + 0x100000000 + 2048 + 2048 + 0x100000000 + 2048);
    EXPECT_EQ(writer->GetFileSizeEstimate(0x7FFFFFF8, 0xFFFFFFFF),
              0x101000u + 2048 + (0x80000000 + 2048) * std::uint64_t{0xFFFFFFFF} +
                  2048 * std::uint64_t{0xFFFFFFFE});
    EXPECT_EQ(writer->GetFileSizeEstimate(0xFFFFFFFF, 0xFFFFFFFF), 0xFFFFFFFFFFFFFFFFu) << "and not few";
}

TEST_F(Avi20, TheVolumeLimitsTheFile) {
    const auto limitOn = [&](platform::VolumeKind kind, std::uint64_t free) {
        files.kind = {.value = kind};
        files.free = {.value = free};
        const auto writer = kAvi20NotCompressed.make(files);
        EXPECT_EQ(writer->GetMaxFileSize(), 0x10000000000u) << "ahead of the first file";
        std::unique_ptr<movie::FileRecord> record;
        EXPECT_TRUE(writer->OpenFile(u"movie.avi", record).ok());
        return writer->GetMaxFileSize();
    };
    constexpr std::uint64_t kPlenty = std::uint64_t{1} << 60;
    EXPECT_EQ(limitOn(platform::VolumeKind::Large, kPlenty), 0x10000000000u);
    EXPECT_EQ(limitOn(platform::VolumeKind::Fat32, kPlenty), 0x100000000u);
    EXPECT_EQ(limitOn(platform::VolumeKind::Unknown, kPlenty), 0x80000000u);
    EXPECT_EQ(limitOn(platform::VolumeKind::Fat32, 1000), 1000u);
    files.put(u"movie.avi", FileBytes(5000, 1));
    EXPECT_EQ(limitOn(platform::VolumeKind::Large, 1000), 1000u) << "the old file is empty by then";
}

TEST_F(Avi20, EachFileHasTheLimitOfItsOwnVolume) {
    const auto writer = kAvi20Mjpeg.make(files);
    std::unique_ptr<movie::FileRecord> record;
    files.free = {.value = 1000};
    EXPECT_TRUE(writer->OpenFile(u"full.avi", record).ok());
    files.free = {.value = 2000};
    EXPECT_TRUE(writer->OpenFile(u"movie.avi", record).ok());
    EXPECT_EQ(writer->GetMaxFileSize(), 2000u);
}

}  // namespace
}  // namespace tavra::test
