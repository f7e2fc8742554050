// The writer's thread, rule by rule, with a layout that notes what it is asked.
#include "media/movie/avi_file.h"

#include <gtest/gtest.h>

#include <deque>
#include <mutex>
#include <new>
#include <optional>
#include <set>
#include <vector>

#include "support/failing_allocations.h"
#include "support/movie_files_double.h"

namespace tavra::test {
namespace {

using movie::CAVIFile;
using movie::FileRecord;
using movie::FrameBuffer;
using movie::IAVIFileStatusListener;
using movie::PointerQueue;
using platform::kWaitForever;
using platform::VolumeKind;
using Log = std::vector<std::string>;

std::string narrow(const std::u16string& name) {
    return {name.begin(), name.end()};
}

// Files that were opened and not yet given back. They may outlive the layout's own members.
int records = 0;

// What happened, in the order in which it did, of all threads.
class Journal {
  public:
    void add(std::string line) {
        const std::lock_guard lock(mutex_);
        lines_.push_back(std::move(line));
    }
    Log lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

  private:
    mutable std::mutex mutex_;
    Log lines_;
};

// Its files are names. A write is told as name, index, tag and first byte.
class NotingLayout final : public CAVIFile {
  public:
    NotingLayout(MovieFilesDouble& files, Journal& journal, std::uint64_t limit = kSizeLimit)
        : CAVIFile(files, limit), journal_(journal) {}
    ~NotingLayout() override { Stop(); }

    Status PrepareHeader() override {
        journal_.add("prepare");
        return Status(prepareResult);
    }
    Status OpenFile(const std::u16string& name, std::unique_ptr<FileRecord>& record) override {
        if (openResult != 0) return Status(openResult);
        record = std::make_unique<CountedRecord>();
        record->name = name;
        return {};
    }
    Status WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                      std::uint32_t tag) override {
        EXPECT_EQ(projectedSize_, index == 0 ? 0 : projectedFirst + bytesPerFrame * (index - 1));
        journal_.add(narrow(record.name) + " " + std::to_string(index) + " " + std::to_string(tag) + " " +
                     std::to_string(image[0]));
        projectedSize_ = projectedFirst + bytesPerFrame * index;
        if (outOfMemory.contains("write")) throw std::bad_alloc();
        return failingIndex == index ? Status(writeResult) : Status();
    }
    Status CloseFile(FileRecord& record) override {
        journal_.add("close " + narrow(record.name));
        if (outOfMemory.contains("close")) throw std::bad_alloc();
        if (closeResults.empty()) return {};
        const Status result(closeResults.front());
        closeResults.pop_front();
        return result;
    }
    Status Finish() override {
        journal_.add("finish");
        if (outOfMemory.contains("finish")) throw std::bad_alloc();
        return Status(finishResult);
    }
    std::uint64_t GetMaxFileSize() const override { return sizeLimit_; }

    void ordersColors() { encoderOrdersColors_ = true; }
    std::uint64_t limitFor(const std::u16string& name) {
        limitSizeByVolume(name);
        return sizeLimit_;
    }
    bool hasThread() const { return runs(); }

    std::uint32_t prepareResult = 0;
    std::uint32_t openResult = 0;
    std::uint32_t finishResult = 0;
    std::deque<std::uint32_t> closeResults;  // of one file after the other
    std::optional<std::uint32_t> failingIndex;
    std::uint32_t writeResult = 0;
    std::set<std::string> outOfMemory;
    std::uint64_t projectedFirst = 0;  // projected size when frame 0 has been written
    std::uint64_t bytesPerFrame = 0;

  private:
    struct CountedRecord final : FileRecord {
        CountedRecord() { ++records; }
        ~CountedRecord() override { --records; }
    };

    Journal& journal_;
};

class NotingListener final : public IAVIFileStatusListener {
  public:
    explicit NotingListener(Journal& journal) : journal_(journal) {}
    Status OnStatus(std::uint32_t event, std::uint32_t value) override {
        EXPECT_EQ(writer->ended().wait(0), event == kEnded) << "first the event, then the message";
        journal_.add(std::to_string(event) + " " + std::to_string(value));
        return Status(result);
    }

    const CAVIFile* writer = nullptr;
    std::uint32_t result = 0;

  private:
    Journal& journal_;
};

struct AviFileTest : testing::Test {
    MovieFilesDouble files;
    Journal journal;
    NotingListener listener{journal};
    PointerQueue<FrameBuffer> filled, free;
    std::deque<FrameBuffer> buffers;
    NotingLayout writer{files, journal};

    AviFileTest() {
        records = 0;
        writer.filledFrames = &filled;
        writer.freeFrames = &free;
        writer.listener = &listener;
        listener.writer = &writer;
        writer.settings.imageBytes = 100;
    }

    // A frame of 100 bytes; its first byte and its tag follow from its position.
    FrameBuffer& makeFrame(std::uint32_t position) {
        FrameBuffer& frame = buffers.emplace_back();
        EXPECT_TRUE(frame.allocate(100).ok());
        frame.position = position;
        frame.tag = position % 100 + 1000;
        frame.image()[0] = static_cast<std::uint8_t>(position + 5);
        return frame;
    }
    void fill(std::initializer_list<std::uint32_t> positions) {
        for (const std::uint32_t position : positions) filled.push(&makeFrame(position));
    }
    void addFiles(std::initializer_list<const char16_t*> names) {
        for (const char16_t* name : names) EXPECT_TRUE(writer.addFile(name).ok());
    }
    // Everything that is filled is written before the stop shows.
    Status run() {
        EXPECT_TRUE(writer.Start().ok());
        writer.Stop();
        EXPECT_TRUE(writer.ended().wait(0));
        return writer.result();
    }
};

TEST_F(AviFileTest, AStopLetsThroughWhatWasFilled) {
    addFiles({u"a"});
    fill({0, 1, 2});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "45064 0", "a 0 1000 5", "a 1 1001 6", "a 2 1002 7", "close a",
                                    "finish", "45065 0"}));
    EXPECT_EQ(filled.size(), 0u);
    for (FrameBuffer& frame : buffers) EXPECT_EQ(free.pop(), &frame) << "every buffer comes back";
    EXPECT_EQ(records, 0);
}

TEST_F(AviFileTest, AStopAheadOfTheFirstFrameClosesAnEmptyFile) {
    addFiles({u"a", u"b"});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "45064 0", "close a", "finish", "45065 0"}))
        << "the second file is not begun";
    EXPECT_EQ(records, 1) << "it waits for the next start";
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
    EXPECT_EQ(records, 1) << "the file waits for another start";
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

TEST_F(AviFileTest, TheEndedEventIsResetWhileItRuns) {
    addFiles({u"a"});
    ASSERT_TRUE(writer.Start().ok());
    EXPECT_FALSE(writer.ended().wait(0));
    writer.Stop();
    EXPECT_TRUE(writer.ended().wait(0));
}

TEST_F(AviFileTest, AFileThatCannotBeOpenedIsNotQueued) {
    writer.openResult = 0xE0000009;
    EXPECT_EQ(writer.addFile(u"a").code(), 0xE0000009u);
    EXPECT_EQ(records, 0);
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(journal.lines(), (Log{"prepare", "finish"}));
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
        EXPECT_EQ(records, 2);
    }
    EXPECT_EQ(records, 0);
}

TEST_F(AviFileTest, TheEstimateCountsAChunkAndAnIndexEntryForEachFrame) {
    EXPECT_EQ(writer.GetFileSizeEstimate(1000, 10), 14368u);
    EXPECT_EQ(writer.GetFileSizeEstimate(0, 0), 4128u);
    EXPECT_EQ(writer.GetFileSizeEstimate(0xFFFFFFFF, 0xFFFFFFFF), CAVIFile::kBeyondAllSizes);
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
