// What the probe says of movies that the library's own writers made: whole ones, ones with lost frames, and
// ones whose disk filled up.
#include <gtest/gtest.h>

#include "media/movie/avi_file_smf.h"
#include "media/movie/avi_layouts.h"
#include "movie_probe/movie_probe.h"

namespace tavra::test {
namespace {

using tool::FrameCount;
using tool::MovieReport;
using tool::ProbeDepth;

constexpr MovieForm kForm{.width = 160, .height = 120, .rate = 25, .quality = 100};
constexpr SegmentLimits kFourFrames = {.entries = 4};

MovieReport probe(const FileBytes& bytes, ProbeDepth depth = ProbeDepth::Frames) {
    tool::MemorySource source(bytes);
    return tool::probeMovie(source, depth);
}

std::string problemsOf(const MovieReport& report) {
    std::string text;
    for (const std::string& problem : report.problems) text += problem + '\n';
    return text;
}

class ProbeOfRecordings : public ::testing::TestWithParam<AviLayout> {
  protected:
    FileBytes record(const std::vector<std::uint32_t>& positions, std::uint32_t code = 0) {
        Recording recording(GetParam().make(files, kFourFrames), kForm);
        for (const std::uint32_t position : positions) recording.add(position, makeImage(kForm, position));
        EXPECT_EQ(recording.run().code(), code);
        return files.bytes(u"movie.avi");
    }

    MovieFilesDouble files;
};

TEST_P(ProbeOfRecordings, FindsThemWhole) {
    const FileBytes bytes = record({0, 1, 2, 3, 4, 5, 6, 7, 8});
    for (const ProbeDepth depth : {ProbeDepth::Frames, ProbeDepth::Index}) {
        const MovieReport report = probe(bytes, depth);
        EXPECT_TRUE(report.whole()) << problemsOf(report);
        ASSERT_TRUE(report.avi);
        EXPECT_EQ(report.avi->openDml, GetParam().format == 2);
        EXPECT_EQ(report.avi->width, 160u);
        EXPECT_EQ(report.avi->height, 120u);
        EXPECT_EQ(report.avi->codec, GetParam().jpeg() ? "MJPG" : "");
        EXPECT_EQ(report.avi->length, 9u);
        EXPECT_EQ(report.pictures(), 9u);
        EXPECT_EQ(report.avi->segments.size(), GetParam().format == 2 ? 3u : 1u);
        if (!GetParam().jpeg()) {
            EXPECT_EQ(report.avi->pictureBytes, 9u * 160 * 120 * 3);
        }
    }
}

TEST_P(ProbeOfRecordings, CountsLostFrames) {
    const MovieReport report = probe(record({10, 11, 13, 20, 21}));
    EXPECT_TRUE(report.whole()) << problemsOf(report);
    ASSERT_TRUE(report.avi);
    EXPECT_EQ(report.avi->length, 12u);
    EXPECT_EQ(report.pictures(), 5u);
    const auto& index = GetParam().format == 2 ? report.avi->standardIndex : report.avi->oldIndex;
    ASSERT_TRUE(index);
    // Uncompressed AVI 1.0 opens with an empty chunk, which its index has as well.
    const bool opens = GetParam().format == 1 && !GetParam().jpeg();
    EXPECT_EQ(index->frames, (FrameCount{5, opens ? 8u : 7u}));
    EXPECT_EQ(index->outside, 0u);
    EXPECT_EQ(index->wrong, 0u);
}

TEST_P(ProbeOfRecordings, FindsAMovieWithoutFrames) {
    const MovieReport report = probe(record({}));
    ASSERT_TRUE(report.avi);
    EXPECT_EQ(report.avi->length, 0u);
    EXPECT_EQ(report.pictures(), 0u);
}

// With room for the index behind the frames that are whole, the movie is whole; without, the probe says so.
TEST_P(ProbeOfRecordings, TellsWhetherAFullDiskTookTheIndex) {
    const std::size_t whole = record({0, 1, 2}).size();
    const std::size_t indices = GetParam().format == 1 ? 8 + 16 * (GetParam().jpeg() ? 3 : 4) : 2 * 2048;
    for (const bool takesIndex : {true, false}) {
        files.setRoom(takesIndex ? whole : whole - indices);
        const MovieReport report = probe(record({0, 1, 2, 3, 4}, 112));
        ASSERT_TRUE(report.avi);
        EXPECT_TRUE(report.avi->hasHeader);
        EXPECT_EQ(report.avi->length, 3u);
        EXPECT_EQ(report.pictures(), 3u);
        EXPECT_EQ(report.whole(), takesIndex) << problemsOf(report);
    }
}

INSTANTIATE_TEST_SUITE_P(Layouts, ProbeOfRecordings, kAllLayouts, layoutName);

TEST(ProbeOfRawRecordings, FindsThemWholeAndTellsWhereTheyAreCut) {
    const MovieForm form{.width = 40, .height = 30, .bits = 8, .rate = 25};
    constexpr std::uint64_t kFrame = 24 + 40 * 30;
    for (const std::uint64_t rest : {std::uint64_t{0}, std::uint64_t{1}, kFrame - 1, kFrame}) {
        MovieFilesDouble files;
        files.setRoom(376 + 3 * kFrame + rest);
        Recording recording(std::make_unique<movie::CAVIFileSMF>(files, kMotionJpeg), form);
        for (const std::uint32_t position : {0u, 1u, 5u, 6u, 7u}) {
            recording.add(position, makeImage(form, position));
        }
        EXPECT_EQ(recording.run().code(), 112u);
        const MovieReport report = probe(files.bytes(u"movie.avi"));
        ASSERT_TRUE(report.smf);
        const bool four = rest == kFrame;
        EXPECT_EQ(report.smf->pictures, four ? 4u : 3u);
        EXPECT_EQ(report.smf->length, four ? 7u : 6u);
        EXPECT_EQ(report.smf->restBytes, four ? 0 : rest);
        EXPECT_EQ(report.smf->codec, "MJPG");
        EXPECT_EQ(report.smf->frameSize, 40u * 30);
        EXPECT_EQ(report.whole(), rest == 0 || four) << problemsOf(report);
    }
}

}  // namespace
}  // namespace tavra::test
