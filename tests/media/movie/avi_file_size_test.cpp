// How much the writer's thread puts into a file: frames, bytes, and what the volume has room for.
#include "media/movie/avi_file_fixture.h"

namespace tavra::test {
namespace {

using platform::VolumeKind;

TEST_F(AviFileTest, TheFrameBehindTheLimitOpensTheNextFile) {
    writer.settings.framesPerFile = 2;
    addFiles({u"a", u"b", u"c"});
    fill({0, 1, 2, 3, 4});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "45064 0", "a 0 1000 5", "a 1 1001 6", "close a", "b 0 1002 7",
                                    "b 1 1003 8", "close b", "c 0 1004 9", "close c", "finish", "45065 0"}))
        << "one message for the first file";
}

TEST_F(AviFileTest, ASkippedFrameCountsTowardsTheLimit) {
    writer.settings.framesPerFile = 3;
    addFiles({u"a", u"b"});
    fill({0, 2, 3, 9});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "45064 0", "a 0 1000 5", "a 2 1002 7", "close a", "b 0 1003 8",
                                    "close b", "finish", "45065 0"}));
    EXPECT_EQ(filled.size(), 1u) << "no third file";
}

TEST_F(AviFileTest, WithoutAFurtherFileItEndsAndTheFrameStaysAtTheHead) {
    writer.settings.framesPerFile = 2;
    addFiles({u"a"});
    fill({0, 1, 2, 3});
    ASSERT_TRUE(writer.Start().ok());
    EXPECT_TRUE(writer.ended().wait(kWaitForever)) << "without a stop";
    writer.Stop();
    EXPECT_EQ(free.size(), 2u);
    EXPECT_EQ(filled.pop(), &buffers[2]);
    EXPECT_EQ(filled.pop(), &buffers[3]);
}

TEST_F(AviFileTest, NoFramesPerFileCountAsOne) {
    writer.settings.framesPerFile = 0;
    addFiles({u"a", u"b"});
    fill({0, 1});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "45064 0", "a 0 1000 5", "close a", "b 0 1001 6", "close b",
                                    "finish", "45065 0"}));
}

TEST_F(AviFileTest, AFullFileIsFollowedByTheNext) {
    // Room for another frame while 100 + 24 + projected size is at most 0x80000000.
    writer.projectedFirst = 0x80000000 - 124 - 10;
    writer.bytesPerFrame = 10;
    addFiles({u"a", u"b"});
    fill({0, 1, 2, 3});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "45064 0", "a 0 1000 5", "a 1 1001 6", "a 2 1002 7", "close a",
                                    "b 0 1003 8", "close b", "finish", "45065 0"}));
}

TEST_F(AviFileTest, SizesBeyond32BitsAreCompared) {
    NotingLayout large{files, journal, CAVIFile::kLargeSizeLimit};
    large.filledFrames = &filled;
    large.freeFrames = &free;
    large.settings.imageBytes = 0xFFFFFFF0;
    large.projectedFirst = 0x10000000000 - 0xFFFFFFF0 - 24;
    large.bytesPerFrame = 1;
    EXPECT_TRUE(large.addFile(u"a").ok());
    fill({0, 1, 2});
    ASSERT_TRUE(large.Start().ok());
    EXPECT_TRUE(large.ended().wait(kWaitForever));
    large.Stop();
    EXPECT_EQ(filled.size(), 1u);
}

TEST_F(AviFileTest, TheEstimateCountsAChunkAndAnIndexEntryForEachFrame) {
    EXPECT_EQ(writer.GetFileSizeEstimate(1000, 10), 14368u);
    EXPECT_EQ(writer.GetFileSizeEstimate(0, 0), 4128u);
    EXPECT_EQ(writer.GetFileSizeEstimate(0xFFFFFFFF, 0xFFFFFFFF), CAVIFile::kBeyondAllSizes);
}

struct VolumeLimitTest : AviFileTest {
    NotingLayout large{files, journal, CAVIFile::kLargeSizeLimit};

    std::uint64_t limit(const std::u16string& name = u"/data/a") { return large.limitFor(name); }
};

TEST_F(VolumeLimitTest, FollowsTheFileSystem) {
    EXPECT_EQ(limit(), 0x10000000000u);
    files.kind = {.value = VolumeKind::Fat32};
    EXPECT_EQ(limit(), 0x100000000u);
    files.kind = {.value = VolumeKind::Unknown};
    EXPECT_EQ(limit(), 0x80000000u);
    files.kind = {.value = VolumeKind::Fat32, .error = 21};
    EXPECT_EQ(limit(), 0x10000000000u)
        << "a volume that does not answer sets no limit, nor does the file before";
}

TEST_F(VolumeLimitTest, IsNoMoreThanTheFreeRoom) {
    files.free = {.value = 5000};
    EXPECT_EQ(limit(), 5000u);
    files.free = {.value = 0};
    EXPECT_EQ(limit(), 0u);
    files.kind = {.value = VolumeKind::Fat32};
    files.free = {.value = 0x100000001};
    EXPECT_EQ(limit(), 0x100000000u);
    files.free = {.value = 0xFFFFFFFF};
    EXPECT_EQ(limit(), 0xFFFFFFFFu);
}

TEST_F(VolumeLimitTest, CountsTheRoomOfTheFileThatIsReplaced) {
    files.free = {.value = 5000};
    files.existing = {.value = 300};
    EXPECT_EQ(limit(), 5300u);
    EXPECT_EQ(limit(), 5300u) << "once";
    files.existing = {.value = 300, .error = 5};
    EXPECT_EQ(limit(), 5000u);
    files.free = {.value = 0x20000000000};
    files.existing = {.value = 300};
    EXPECT_EQ(limit(), 0x10000000000u + 300);
}

TEST_F(VolumeLimitTest, WithoutTheFreeRoomTheExistingFileDoesNotCount) {
    files.kind = {.value = VolumeKind::Unknown};
    files.free = {.value = 5000, .error = 3};
    files.existing = {.value = 300};
    EXPECT_EQ(limit(), 0x80000000u);
}

}  // namespace
}  // namespace tavra::test
