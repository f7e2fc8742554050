#include "record_tally.h"

#include <gtest/gtest.h>

namespace tavra::tool {
namespace {

MovieReport smfOf(std::uint64_t pictures, std::uint64_t length) {
    MovieReport report;
    report.fileBytes = 1000;
    report.smf.emplace();
    report.smf->pictures = pictures;
    report.smf->length = length;
    return report;
}

TEST(RecordTally, SaysWhatBecameOfEveryFrame) {
    RecordTally tally;
    tally.addFile("out.smf", smfOf(598, 600));
    Gap gap;
    gap.first = 10;
    gap.last = 11;
    tally.addGap(gap);
    StreamMonitor::Totals seen;
    seen.frames = 600;
    seen.lost = 2;
    EXPECT_EQ(
        tally.sentence("out.smf", seen),
        "out.smf: 600 frames seen, 598 stored, 0 paused, 2 lost (2 damaged on the way, or never sent by the "
        "camera); 2 came while no file took them.");
    EXPECT_EQ(tally.length(), 600u);
}

TEST(RecordTally, AddsUpFilesAndTellsTheBrokenOne) {
    RecordTally tally;
    tally.addFile("a.smf", smfOf(5, 5));
    MovieReport broken = smfOf(4, 4);
    broken.problems.emplace_back("it is cut");
    tally.addFile("a-2.smf", broken);
    StreamMonitor::Totals seen;
    seen.frames = 9;
    EXPECT_EQ(
        tally.sentence("a.smf", seen),
        "a.smf: 9 frames seen, 9 stored in 2 files, 0 paused, 0 lost; a-2.smf is not whole: it is cut.");
    EXPECT_FALSE(tally.whole());
    EXPECT_EQ(tally.bytes(), 2000u);
}

TEST(FrameBook, CountsUpToTheLastFrameThatIsWanted) {
    FrameBook book;
    book.countOnly(3);
    const auto now = StreamMonitor::Clock::now();
    for (const std::uint32_t number : {0xFFFFFFFFu, 0u, 2u, 3u}) book.frame(number, 10, now);
    EXPECT_EQ(book.totals().frames, 2u) << "the third was lost, and what follows it is behind the end";
    FrameBook open;
    open.frame(5, 10, now);
    open.close();
    open.frame(6, 10, now);
    EXPECT_EQ(open.totals().frames, 1u);
}

}  // namespace
}  // namespace tavra::tool
