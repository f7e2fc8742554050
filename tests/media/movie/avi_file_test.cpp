// The writer's thread, rule by rule.
#include "media/movie/avi_file.h"

#include "media/movie/avi_file_fixture.h"

namespace tavra::test {
namespace {

TEST_F(AviFileTest, AStopLetsThroughWhatWasFilled) {
    addFiles({u"a"});
    fill({0, 1, 2});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "45064 0", "a 0 1000 5", "a 1 1001 6", "a 2 1002 7", "close a",
                                    "finish", "45065 0"}));
    EXPECT_EQ(filled.size(), 0u);
    for (FrameBuffer& frame : buffers) EXPECT_EQ(free.pop(), &frame) << "every buffer comes back";
    EXPECT_EQ(NotingLayout::records, 0);
}

TEST_F(AviFileTest, AStopAheadOfTheFirstFrameClosesAnEmptyFile) {
    addFiles({u"a", u"b"});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "45064 0", "close a", "finish", "45065 0"}))
        << "the second file is not begun";
    EXPECT_EQ(NotingLayout::records, 1) << "it waits for the next start";
}

TEST_F(AviFileTest, WithoutAFileThereAreNoMessages) {
    fill({0});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "finish"}));
    EXPECT_EQ(filled.size(), 1u);
}

TEST_F(AviFileTest, TheIndexCountsFromTheFilesFirstFrameAndMayJump) {
    addFiles({u"a"});
    fill({7, 8, 12});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "45064 0", "a 0 1007 12", "a 1 1008 13", "a 5 1012 17",
                                    "close a", "finish", "45065 0"}));
}

TEST_F(AviFileTest, TheIndexGoesOnOverTheEndOfTheNumbers) {
    addFiles({u"a"});
    fill({0xFFFFFFFF, 1});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(),
              (Log{"prepare", "45064 0", "a 0 1095 4", "a 2 1001 6", "close a", "finish", "45065 0"}));
}

TEST_F(AviFileTest, RedAndBlueChangePlacesWithinTheRows) {
    writer.settings.swapRedBlue = true;
    writer.settings.rowStride = 8;
    writer.settings.image = movie::ImageDescription::of(2, 2, 8, 24);
    FrameBuffer& frame = makeFrame(0);
    const std::vector<std::uint8_t> before = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17};
    std::copy(before.begin(), before.end(), frame.image());
    filled.push(&frame);
    addFiles({u"a"});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(std::vector<std::uint8_t>(frame.image(), frame.image() + 17),
              (std::vector<std::uint8_t>{3, 2, 1, 6, 5, 4, 7, 8, 11, 10, 9, 14, 13, 12, 15, 16, 17}))
        << "two pixels of each row, and no padding";
    EXPECT_EQ(journal.lines()[2], "a 0 1000 3") << "ahead of the write";
}

TEST_F(AviFileTest, AnEncoderThatOrdersColoursGetsThemAsTheyAre) {
    writer.settings.swapRedBlue = true;
    writer.settings.rowStride = 4;
    writer.settings.image = movie::ImageDescription::of(1, 1, 4, 24);
    writer.ordersColors();
    addFiles({u"a"});
    fill({0});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines()[2], "a 0 1000 5");
}

TEST_F(AviFileTest, WithoutAListenerItWritesAllTheSame) {
    writer.listener = nullptr;
    addFiles({u"a"});
    fill({0});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "a 0 1000 5", "close a", "finish"}));
}

TEST_F(AviFileTest, TheEndedEventIsResetWhileItRuns) {
    addFiles({u"a"});
    ASSERT_TRUE(writer.Start().ok());
    EXPECT_FALSE(writer.ended().wait(0));
    writer.Stop();
    EXPECT_TRUE(writer.ended().wait(0));
}

TEST_F(AviFileTest, FramesThatComeOneByOneAreWrittenAsTheyCome) {
    addFiles({u"a"});
    ASSERT_TRUE(writer.Start().ok());
    for (std::uint32_t position = 0; position < 3; ++position) free.push(&makeFrame(0));
    constexpr std::uint32_t kFrames = 300;
    for (std::uint32_t position = 0; position < kFrames; ++position) {
        ASSERT_TRUE(free.notEmpty().wait(kWaitForever));
        FrameBuffer* const frame = free.pop();
        frame->position = position;
        filled.push(frame);
    }
    writer.Stop();
    EXPECT_EQ(free.size(), 3u);
    const Log lines = journal.lines();
    ASSERT_EQ(lines.size(), kFrames + 5);
    EXPECT_EQ(lines[kFrames + 1].substr(0, 5), "a 299");
}

TEST_F(AviFileTest, FilesThatWereNotBegunAreGivenBackAtTheEnd) {
    {
        NotingLayout other{files, journal};
        EXPECT_TRUE(other.addFile(u"a").ok());
        EXPECT_TRUE(other.addFile(u"b").ok());
        EXPECT_EQ(NotingLayout::records, 2);
    }
    EXPECT_EQ(NotingLayout::records, 0);
}

TEST_F(AviFileTest, OnlyTheBaseAnswersOfAPlainLayout) {
    std::uint8_t header[CAVIFile::kHeaderBytes] = {1, 2, 3};
    EXPECT_EQ(writer.GetMovieHeader(header), 1u);
    EXPECT_EQ(header[0], 1);
    EXPECT_EQ(writer.SetMovieHeader(header), 1u);
    EXPECT_FALSE(writer.StoresBottomUp());
    EXPECT_EQ(writer.CAVIFile::GetMaxFileSize(), 0x80000000u);
    EXPECT_EQ(writer.settings.quality, 75u);
    EXPECT_EQ(writer.settings.rate, 1u);
    EXPECT_EQ(writer.settings.scale, 1u);
    EXPECT_EQ(writer.settings.framesPerFile, 600u);
}

}  // namespace
}  // namespace tavra::test
