#include "recording_files.h"

#include <gtest/gtest.h>

#include "exit_code.h"
#include "movie_text.h"
#include "support/temp_folder.h"

namespace tavra::tool {
namespace {

TEST(RecordingFiles, FollowOneAnotherByNumber) {
    EXPECT_EQ(followingFile("out.avi", 1), "out.avi");
    EXPECT_EQ(followingFile("out.avi", 2), "out-2.avi");
    EXPECT_EQ(followingFile("a.b/out.x.SMF", 10), "a.b/out.x-10.SMF");
}

TEST(RecordingFiles, AreKnownByTheirEnding) {
    EXPECT_EQ(movieKindOf("a.avi"), MovieKind::Avi);
    EXPECT_EQ(movieKindOf("dir/a.b.SmF"), MovieKind::Smf);
    for (const char* name : {"a", "a.mp4", "avi", "dir.avi/a", ".avi", ""})
        EXPECT_THROW(movieKindOf(name), Failure) << name;
}

TEST(RecordingFiles, CountFramesByTheSizeOfTheFile) {
    const FrameLayout smf = FrameLayout::smf(100);
    EXPECT_EQ(smf.framesIn(0), 0u);
    EXPECT_EQ(smf.framesIn(376 + 123), 0u);
    EXPECT_EQ(smf.framesIn(376 + 124), 1u);
    const FrameLayout old = FrameLayout::avi1(12);
    EXPECT_EQ(old.framesIn(4104 + 39), 1u);
    EXPECT_EQ(old.framesIn(4104 + 40), 2u);
}

// Each frame with the 8 bytes of its chunk fills whole sectors; 4 bytes left over take another sector.
TEST(RecordingFiles, KnowTheSectorsOfAvi2) {
    EXPECT_EQ(FrameLayout::avi2(2040).step, 2048u);
    EXPECT_EQ(FrameLayout::avi2(2036).step, 4096u);
    EXPECT_EQ(FrameLayout::avi2(2032).step, 2048u);
    EXPECT_EQ(FrameLayout::avi2(2044).step, 4096u);
    EXPECT_EQ(FrameLayout::avi2(2040).framesIn(0x101000 + 3 * 2048), 3u);
}

TEST(RecordingFiles, TellTheRoomBesideThem) {
    const test::TempFolder folder;
    EXPECT_TRUE(freeBytesAt(folder / "a.avi"));
    EXPECT_FALSE(freeBytesAt(folder / "nowhere/a.avi"));
    EXPECT_TRUE(freeBytesAt("a.avi"));
    EXPECT_EQ(sizeOf(folder / "a.avi"), 0u);
}

TEST(MovieText, ReadsCodecs) {
    EXPECT_EQ(codecOf("none"), 0u);
    EXPECT_EQ(codecOf("MjPg"), 0x47504A4Du);
    EXPECT_EQ(codecOf("HFYU"), 0x55594648u);
    EXPECT_EQ(codecOf("x264"), 0x34363278u);
    for (const char* text : {"", "abc", "abcde", "a\tbc"}) EXPECT_THROW(codecOf(text), Failure) << text;
    EXPECT_EQ(codecName(0), "none");
    EXPECT_EQ(codecName(0x55594648), "HFYU");
}

TEST(MovieText, ShowsSizesAndTimes) {
    EXPECT_EQ(bytesText(999), "999 bytes");
    EXPECT_EQ(bytesText(1500), "1.5 kB");
    EXPECT_EQ(bytesText(2.5e9), "2.5 GB");
    EXPECT_EQ(durationText(12.34), "12.3 s");
    EXPECT_EQ(durationText(185), "3:05");
    EXPECT_EQ(durationText(3725), "1:02:05");
}

}  // namespace
}  // namespace tavra::tool
