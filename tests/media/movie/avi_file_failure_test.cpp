// What the writer's thread makes of failures, and which of them is a recording's result.
#include "media/movie/avi_file_fixture.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

TEST_F(AviFileTest, AFailedWriteEndsTheFileAndTheNextBegins) {
    writer.failingIndex = 1;
    writer.writeResult = 112;
    addFiles({u"a", u"b"});
    fill({0, 1, 2, 5});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "45064 0", "a 0 1000 5", "a 1 1001 6", "close a", "b 0 1002 7",
                                    "b 3 1005 10", "close b", "finish", "45065 0"}));
    EXPECT_EQ(free.size(), 4u) << "the buffer of the failed write as well";
}

TEST_F(AviFileTest, BehindAFailedWriteTheCloseTellsTheResult) {
    writer.failingIndex = 0;
    writer.writeResult = 29;
    writer.closeResults = {112};
    addFiles({u"a"});
    fill({0});
    EXPECT_EQ(run().code(), 112u);
    EXPECT_EQ(journal.lines().back(), "45065 112");
}

TEST_F(AviFileTest, BehindGoodWritesAFailedCloseIsNotReported) {
    writer.closeResults = {112};
    addFiles({u"a"});
    fill({0});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines().back(), "45065 0");
}

TEST_F(AviFileTest, TheResultIsThatOfTheLastFile) {
    writer.failingIndex = 1;
    writer.writeResult = 29;
    writer.closeResults = {112, 5};
    addFiles({u"a", u"b"});
    fill({0, 1, 2, 3});
    EXPECT_EQ(run().code(), 5u);

    writer.closeResults = {112, 0};
    addFiles({u"c", u"d"});
    fill({0, 1, 2});
    EXPECT_TRUE(run().ok()) << "a good file behind a bad one";
}

TEST_F(AviFileTest, AFailedFinishIsTheResultOfAGoodRecording) {
    writer.finishResult = 31;
    addFiles({u"a"});
    EXPECT_EQ(run().code(), 31u);
    writer.failingIndex = 0;
    writer.closeResults = {112};
    writer.writeResult = 112;
    addFiles({u"b"});
    fill({0});
    EXPECT_EQ(run().code(), 112u);
}

TEST_F(AviFileTest, OutOfMemoryOnTheThreadIsCode8) {
    writer.outOfMemory = {"write", "close"};
    addFiles({u"a"});
    fill({0, 1});
    EXPECT_EQ(run().code(), 8u);
    EXPECT_EQ(free.size(), 1u) << "the file has ended with its first frame";
    writer.outOfMemory = {"finish"};
    addFiles({u"b"});
    EXPECT_EQ(run().code(), 8u);
}

TEST_F(AviFileTest, AMessageThatDoesNotGoThroughChangesNothing) {
    listener.result = 1400;
    addFiles({u"a"});
    fill({0});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines().back(), "45065 0");
}

TEST_F(AviFileTest, AFailedHeaderIsTheResultOfTheStart) {
    writer.prepareResult = 8;
    addFiles({u"a"});
    EXPECT_TRUE(writer.ended().wait(0)) << "set while nothing runs";
    EXPECT_EQ(writer.Start().code(), 8u);
    EXPECT_FALSE(writer.hasThread());
    EXPECT_TRUE(writer.ended().wait(0));
    EXPECT_EQ(journal.lines(), Log{"prepare"});
    EXPECT_EQ(NotingLayout::records, 1) << "the file waits for another start";
    writer.prepareResult = 0;
    EXPECT_TRUE(run().ok());
}

TEST_F(AviFileTest, WithoutMemoryNothingStarts) {
    std::uint32_t code = 0;
    {
        const FailAllocationsFrom none(1);
        code = writer.Start().code();
    }
    EXPECT_EQ(code, 8u);
    EXPECT_FALSE(writer.hasThread());
    EXPECT_TRUE(writer.ended().wait(0)) << "whoever waits for the end has it";
    EXPECT_TRUE(run().ok());
}

TEST_F(AviFileTest, AFileThatCannotBeOpenedIsNotQueued) {
    writer.openResult = 0xE0000009;
    EXPECT_EQ(writer.addFile(u"a").code(), 0xE0000009u);
    EXPECT_EQ(NotingLayout::records, 0);
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "finish"}));
}

}  // namespace
}  // namespace tavra::test
