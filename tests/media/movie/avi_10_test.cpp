// Numbers of AVI 1.0 files that are worth stating one by one.
#include <gtest/gtest.h>

#include "base/little_endian.h"
#include "media/movie/avi_layouts.h"

namespace tavra::test {
namespace {

struct Avi10 : ::testing::Test {
    MovieFilesDouble files;

    std::uint32_t number(std::uint64_t position) const {
        return loadLe32(files.bytes(u"movie.avi", position, 4).data());
    }
    std::string tag(std::uint64_t position) const {
        const FileBytes bytes = files.bytes(u"movie.avi", position, 4);
        return {bytes.begin(), bytes.end()};
    }
    void record(const AviLayout& layout, const MovieForm& form, const std::vector<std::uint32_t>& positions) {
        Recording recording(layout.make(files), form);
        for (const std::uint32_t position : positions) recording.add(position, makeImage(form, position));
        EXPECT_EQ(recording.run(), Status());
    }
};

TEST_F(Avi10, OneUncompressedFrameHasTwoEntriesInTheIndex) {
    record(kAvi10NotCompressed, {.width = 4, .height = 2, .rate = 25}, {0});
    EXPECT_EQ(tag(4096), "00dc");
    EXPECT_EQ(number(4100), 0u);
    EXPECT_EQ(tag(4104), "00db");
    EXPECT_EQ(number(4108), 24u);
    EXPECT_EQ(tag(4136), "idx1");
    EXPECT_EQ(number(4140), 32u);
    EXPECT_EQ(tag(4144), "00db");
    EXPECT_EQ(number(4148), 16u);
    EXPECT_EQ(number(4152), 4u);
    EXPECT_EQ(number(4156), 0u);
    EXPECT_EQ(tag(4160), "00db");
    EXPECT_EQ(number(4164), 16u);
    EXPECT_EQ(number(4168), 12u);
    EXPECT_EQ(number(4172), 24u);
    EXPECT_EQ(files.size(u"movie.avi"), 4176u);
    EXPECT_EQ(number(4), 4168u);
    EXPECT_EQ(tag(4084), "LIST");
    EXPECT_EQ(number(4088), 44u);
}

TEST_F(Avi10, UncompressedLeavesTheTotalOpenAndTellsTheLength) {
    record(kAvi10NotCompressed, {.width = 4, .height = 2, .rate = 25, .scale = 2}, {0, 4});
    EXPECT_EQ(number(32), 80000u) << "microseconds a frame";
    EXPECT_EQ(number(36), 13u * 24) << "bytes a second";
    EXPECT_EQ(number(44), 0x810u);
    EXPECT_EQ(number(48), 0xFFFFFFFFu);
    EXPECT_EQ(number(60), 24u);
    EXPECT_EQ(number(140), 5u);
    EXPECT_EQ(number(144), 24u);
    EXPECT_EQ(number(148), 0xFFFFFFFFu);
    EXPECT_EQ(number(168), 40u);
    EXPECT_EQ(tag(212), "JUNK");
    EXPECT_EQ(number(216), 3864u);
}

TEST_F(Avi10, GrayFramesBringAPalette) {
    record(kAvi10NotCompressed, {.width = 4, .height = 2, .bits = 8, .rate = 25}, {0});
    EXPECT_EQ(number(16), 1216u);
    EXPECT_EQ(number(92), 1140u);
    EXPECT_EQ(number(168), 1064u);
    EXPECT_EQ(number(204), 256u);
    EXPECT_EQ(number(212), 0u);
    EXPECT_EQ(number(212 + 4 * 200), 0xC8C8C8u);
    EXPECT_EQ(tag(1236), "JUNK");
    EXPECT_EQ(number(1240), 2840u);
}

TEST_F(Avi10, AJumpOfThreeLeavesTwoEmptyChunks) {
    record(kAvi10NotCompressed, {.width = 4, .height = 2}, {0, 3});
    EXPECT_EQ(tag(4136), "00db");
    EXPECT_EQ(number(4140), 0u);
    EXPECT_EQ(tag(4144), "00db");
    EXPECT_EQ(number(4148), 0u);
    EXPECT_EQ(tag(4152), "00db");
    EXPECT_EQ(number(4156), 24u);
    EXPECT_EQ(number(4188), 5u * 16) << "bytes of the index";
}

TEST_F(Avi10, MotionJpegBeginsWithItsFrameAndCountsAll) {
    record(kAvi10Mjpeg, {.width = 16, .height = 8, .rate = 10, .quality = 90}, {0, 3});
    EXPECT_EQ(tag(2048), "00dc");
    EXPECT_GT(number(2052), 600u);
    EXPECT_EQ(number(48), 4u);
    EXPECT_EQ(number(140), 4u);
    EXPECT_EQ(number(36), 11u * 16 * 8 * 3);
    EXPECT_EQ(number(44), 16u);
    EXPECT_EQ(number(148), 9000u);
    EXPECT_EQ(tag(284), "JUNK");
    EXPECT_EQ(number(288), 1744u);
    EXPECT_EQ(tag(2044), "movi");
}

TEST_F(Avi10, AnOddJpegIsFilledUpWithADigit) {
    const MovieForm base{.width = 16, .height = 8};
    MovieForm form = base;
    while (encodeJpegFrame(form, makeImage(form, 0)).size() % 2 == 0) ++form.height;
    record(kAvi10Mjpeg, form, {0, 1});
    const std::uint32_t size = number(2052);
    EXPECT_EQ(size % 2, 1u);
    EXPECT_EQ(files.bytes(u"movie.avi", 2056 + size, 1), FileBytes{0x30});
    EXPECT_EQ(tag(2056 + size + 1), "00dc");
}

TEST_F(Avi10, NoiseAtTheBestQualityIsNotCut) {
    for (const std::uint32_t bits : {8u, 24u}) {
        const MovieForm form{.width = 61, .height = 45, .bits = bits, .quality = 100};
        FileBytes image(std::size_t{strideOf(form)} * form.height);
        std::uint32_t state = 1;
        for (std::uint8_t& sample : image) {
            state = state * 1664525 + 1013904223;
            sample = (state & 0x80000000) != 0 ? 255 : 0;
        }
        Recording recording(kAvi10Mjpeg.make(files), form);
        recording.add(0, image);
        EXPECT_EQ(recording.run(), Status());
        const FileBytes whole = encodeJpegFrame(form, image);
        EXPECT_GT(whole.size(), image.size()) << "more than the pixels take";
        EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), buildAvi10Mjpeg(form, {{0, whole}})));
    }
}

TEST_F(Avi10, EndsAtTwoGiB) {
    const MovieForm form{.width = 16384, .height = 16384, .bits = 8};  // 256 MiB a frame
    Recording recording(kAvi10NotCompressed.make(files), form);
    movie::CAVIFile& writer = recording.writer();
    platform::PageBlock frame;
    ASSERT_TRUE(frame.allocate((1 << 28) + 2064).ok());
    ASSERT_TRUE(writer.PrepareHeader().ok());
    std::unique_ptr<movie::FileRecord> record;
    ASSERT_TRUE(writer.OpenFile(u"movie.avi", record).ok());
    for (std::uint32_t i = 0; i < 7; ++i) {
        EXPECT_FALSE(writer.IsFileFull()) << i;
        ASSERT_TRUE(writer.WriteFrame(*record, frame.data() + 8, i, 0).ok());
    }
    // 7 frames and the headers leave less than another 256 MiB of the 2 GiB.
    EXPECT_TRUE(writer.IsFileFull());
    writer.settings.imageBytes = 1;
    EXPECT_TRUE(writer.IsFileFull()) << "one as large as the largest may come";
    EXPECT_TRUE(writer.CloseFile(*record).ok());
    EXPECT_EQ(files.size(u"movie.avi"), 4096u + 8 + 7ull * ((1 << 28) + 8) + 8 + 8 * 16);
}

TEST_F(Avi10, AJumpThatNoFileCouldHoldEndsIt) {
    const MovieForm form{.width = 4, .height = 2};
    for (const AviLayout& layout : {kAvi10NotCompressed, kAvi10Mjpeg}) {
        Recording recording(layout.make(files), form);
        recording.writer().settings.framesPerFile = 0xFFFFFFFF;
        recording.add(0, makeImage(form, 0));
        recording.add(0xFFFFFFF0, makeImage(form, 1));
        EXPECT_EQ(recording.run().code(), 223u);
        const FileBytes wanted = layout.build(form, {layout.frame(form, 0, makeImage(form, 0))});
        EXPECT_TRUE(equalFiles(files.bytes(u"movie.avi"), wanted));
    }
}

TEST_F(Avi10, EstimatesTheSizeOfAFile) {
    const auto writer = kAvi10NotCompressed.make(files);
    EXPECT_EQ(writer->GetFileSizeEstimate(1000, 10), 14368u);
    EXPECT_EQ(writer->GetFileSizeEstimate(0xFFFFFFFF, 1000), 4294967319000u + 4128);
    EXPECT_EQ(kAvi10Mjpeg.make(files)->GetFileSizeEstimate(1000, 0), 4128u);
    // (2^32 - 1)^2 and 4128 are held by 64 bits, 2^32 (2^32 - 1) and 4128 as well, and a frame's byte more is
    // not.
    EXPECT_EQ(writer->GetFileSizeEstimate(0xFFFFFFFF - 24, 0xFFFFFFFF), 0xFFFFFFFE00000001u + 4128);
    EXPECT_EQ(writer->GetFileSizeEstimate(0xFFFFFFFF - 23, 0xFFFFFFFF), 0xFFFFFFFF00000000u + 4128);
    EXPECT_EQ(writer->GetFileSizeEstimate(0xFFFFFFFF - 22, 0xFFFFFFFF), 0xFFFFFFFFFFFFFFFFu);
    EXPECT_EQ(writer->GetFileSizeEstimate(0xFFFFFFFF, 0xFFFFFFFF), 0xFFFFFFFFFFFFFFFFu);
    EXPECT_EQ(writer->GetMaxFileSize(), 0x80000000u);
}

}  // namespace
}  // namespace tavra::test
