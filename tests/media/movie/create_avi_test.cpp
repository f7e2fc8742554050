// The recorder between the thread that hands frames in and the writer's.
#include "media/movie/create_avi.h"

#include <thread>

#include "media/movie/create_avi_fixture.h"
#include "stages/factory.h"
#include "support/failing_allocations.h"
#include "support/message_receiver.h"

namespace tavra::test {
namespace {

constexpr std::uint64_t kReserve = 52428800;  // left for others

class CreateAvi : public CreateAviTest {};

TEST_F(CreateAvi, ComesFromTheFactoryUnderItsCode) {
    ISUnknown* const object = CreateStageObject(144);
    ASSERT_NE(object, nullptr);
    auto* const made = static_cast<movie::ISaveAVIFile*>(object);
    std::uint8_t status = 9;
    std::uint32_t buffers = 0;
    EXPECT_EQ(made->GetStatus(&status), 0u);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(made->GetBufferCount(&buffers), 0u);
    EXPECT_EQ(buffers, 10u);
    EXPECT_EQ(made->AddRef(), 2u);
    EXPECT_EQ(made->Release(), 1u);
    EXPECT_EQ(made->Release(), 0u);
}

TEST_F(CreateAvi, KnowsNothingBeforeAFormatIsChosen) {
    std::uint32_t number = 0;
    std::uint64_t size = 0;
    EXPECT_EQ(recorder->SetFramesPerFile(1), 6u);
    EXPECT_EQ(recorder->GetFramesPerFile(&number), 6u);
    EXPECT_EQ(recorder->SetQuality(1), 6u);
    EXPECT_EQ(recorder->SetRate(1), 6u);
    EXPECT_EQ(recorder->SetScale(1), 6u);
    EXPECT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 6u);
    EXPECT_EQ(recorder->AddFile(u"movie"), 6u);
    EXPECT_EQ(recorder->Start(), 6u);
    EXPECT_EQ(recorder->WriteFrame(image.data(), 0, 0, &number), 6u);
    EXPECT_EQ(recorder->GetFileSizeEstimate(1, 1, &size), 6u);
    EXPECT_EQ(files.createCount(), 0u);
}

TEST_F(CreateAvi, HasNoWriterForAnUnknownFormat) {
    movie::CCreateAVI* const plain = new movie::CCreateAVI;
    plain->AddRef();
    for (const std::uint16_t format : {0, 3, 9, 11, 0xFFFF}) EXPECT_EQ(plain->SetFileFormat(format, 0), 87u);
    plain->Release();
}

TEST_F(CreateAvi, TellsThatThereIsNoMemoryForAWriter) {
    {
        const FailAllocationsFrom none(1);
        if (recorder->SetFileFormat(kSmf, 0) != 8) std::abort();
    }
    EXPECT_EQ(recorder->Start(), 6u);
}

TEST_F(CreateAvi, RefusesChangesWhileActive) {
    start();
    EXPECT_EQ(recorder->SetFrameSizeShift(1), 12u);
    EXPECT_EQ(recorder->SetFramesPerFile(1), 12u);
    EXPECT_EQ(recorder->SetReserved(1), 12u);
    EXPECT_EQ(recorder->SetQuality(1), 12u);
    EXPECT_EQ(recorder->SetRate(1), 12u);
    EXPECT_EQ(recorder->SetScale(1), 12u);
    EXPECT_EQ(recorder->SetImageFormat(16, 8, 0, 4), 12u) << "the buffers have their size";
    EXPECT_EQ(recorder->SetImageFormatEx(16, 8, 0, 0x02180015), 12u);
    EXPECT_EQ(recorder->Start(), 12u);
    EXPECT_EQ(recorder->SetBufferCount(3), 0u) << "for the next start";
    std::uint32_t frames = 0;
    EXPECT_EQ(recorder->GetFramesPerFile(&frames), 0u);
    EXPECT_EQ(frames, 1000u);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(recorder->SetFrameSizeShift(1), 0u);
    EXPECT_EQ(recorder->SetReserved(1), 0u);
    EXPECT_EQ(recorder->SetQuality(1), 0u);
}

TEST_F(CreateAvi, HandsItsSettingsToTheWriter) {
    prepare(77);
    EXPECT_EQ(recorder->SetQuality(33), 0u);
    EXPECT_EQ(recorder->SetRate(24000000), 0u);
    EXPECT_EQ(recorder->SetScale(800000), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    recorder.write(image, 0);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(log.settings.framesPerFile, 77u);
    EXPECT_EQ(log.settings.quality, 33u);
    EXPECT_EQ(log.settings.rate, 24000000u);
    EXPECT_EQ(log.settings.scale, 800000u);
    EXPECT_EQ(log.settings.imageBytes, 32u);
    EXPECT_EQ(log.settings.rowStride, 8u);
    EXPECT_EQ(log.settings.image.width, 8);
    EXPECT_EQ(log.settings.image.height, 4);
    EXPECT_EQ(log.settings.image.bitCount, 8u);
    EXPECT_EQ(log.settings.image.imageSize, 32u);
    EXPECT_EQ(log.settings.image.colorsUsed, 256u);
    EXPECT_EQ(log.settings.image.palette[200], 0x00C8C8C8u);
}

TEST_F(CreateAvi, TakesAQualityAboveTheFinestAsTheFinest) {
    for (const auto& [given, stored] : {std::pair{0u, 0u}, {100u, 100u}, {101u, 100u}, {0xFFFFFFFFu, 100u}}) {
        prepare();
        EXPECT_EQ(recorder->SetQuality(given), 0u);
        ASSERT_EQ(recorder->Start(), 0u);
        recorder.write(image, 0);
        EXPECT_EQ(recorder->SetStatus(0), 0u);
        EXPECT_EQ(log.settings.quality, stored) << given;
    }
}

TEST_F(CreateAvi, CountsFramesPerFileZeroAsOne) {
    prepare(0);
    ASSERT_EQ(recorder->Start(), 0u);
    recorder.write(image, 0);
    recorder.writeUntilEnded(image, 1);
    EXPECT_EQ(log.frames().size(), 1u);
}

TEST_F(CreateAvi, EstimatesTheSizeOfAFile) {
    std::uint64_t size = 0;
    ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
    ASSERT_EQ(recorder->GetFileSizeEstimate(1000000, 5000, &size), 0u);
    EXPECT_EQ(size, 5000120000u + 4128u);
}

TEST_F(CreateAvi, LeavesTheBlockAloneWhereAFormatHasNoMovieHeader) {
    ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
    Bytes block(376, 0xEE);
    EXPECT_EQ(recorder->GetMovieHeader(block.data()), 1u);
    EXPECT_EQ(recorder->SetMovieHeader(block.data()), 1u);
    EXPECT_EQ(block, Bytes(376, 0xEE));
}

// ---- buffers

TEST_F(CreateAvi, MakesAsManyBuffersAsAskedFor) {
    EXPECT_EQ(recorder->SetBufferCount(4), 0u);
    start();
    EXPECT_EQ(framesThatFit(), 4u);
}

TEST_F(CreateAvi, StopsWhenFiftyMebibytesAreLeft) {
    struct Case {
        std::uint64_t free;
        std::uint32_t buffers;
    };
    // Frames of 32 bytes. The limit is looked at behind each buffer: more than it, and that was the last.
    for (const Case& c : {Case{0, 1},
                          {kReserve - 1, 1},
                          {kReserve, 1},
                          {kReserve + 31, 1},
                          {kReserve + 32, 2},
                          {kReserve + 63, 2},
                          {kReserve + 64, 3},
                          {kReserve + 1000, 10}}) {
        SCOPED_TRACE(c.free);
        freeMemoryOfTest = c.free;
        LayoutLog own;
        MovieFilesDouble place;
        Recorder one(place);
        ASSERT_EQ(one->SetFileFormat(kTestFormat, 0), 0u);
        ASSERT_EQ(one->SetImageFormat(8, 4, 0, 1), 0u);
        ASSERT_EQ(one->AddFile(u"movie"), 0u);
        ASSERT_EQ(one->Start(), 0u);
        own.gate.reset();
        one->dropsFrames = true;
        std::uint32_t ended = 0, taken = 0;
        while (one->WriteFrame(image.data(), taken, 0, &ended) == 0) ++taken;
        EXPECT_EQ(taken, c.buffers);
        own.gate.set();
    }
}

TEST_F(CreateAvi, DoesNotStartWithoutABuffer) {
    prepare();
    EXPECT_EQ(recorder->SetBufferCount(0), 0u);
    EXPECT_EQ(recorder->Start(), 8u);
    EXPECT_EQ(recorder.status(), 0u);
    EXPECT_EQ(recorder->SetBufferCount(1), 0u);
    EXPECT_EQ(recorder->Start(), 0u) << "the file is still there";
}

TEST_F(CreateAvi, AllocatesNothingForAFrame) {
    EXPECT_EQ(recorder->SetBufferCount(2), 0u);
    start();
    {
        const FailAllocationsFrom none(1);
        std::uint32_t ended = 0;
        for (std::uint32_t number = 0; number < 20; ++number) {
            if (recorder->WriteFrame(image.data(), number, 0, &ended) != 0 || ended != 0) std::abort();
        }
        if (FailAllocationsFrom::failures() != 0) std::abort();
    }
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(log.frames().size(), 20u);
}

TEST_F(CreateAvi, WaitsForABufferAndLosesNothing) {
    EXPECT_EQ(recorder->SetBufferCount(2), 0u);
    start();
    log.gate.reset();
    std::thread camera([&] {
        for (std::uint32_t number = 0; number < 300; ++number) recorder.write(image, number);
    });
    EXPECT_TRUE(log.stopped.wait(kPatienceMs));
    EXPECT_EQ(log.frames().size(), 1u) << "the writer stands in its first frame";
    log.gate.set();
    camera.join();
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    const auto frames = log.frames();
    ASSERT_EQ(frames.size(), 300u);
    for (std::uint32_t i = 0; i < 300; ++i) EXPECT_EQ(frames[i].index, i);
}

TEST_F(CreateAvi, WritesWhatIsInTheQueueBeforeItStops) {
    start();
    log.gate.reset();
    for (std::uint32_t number = 0; number < 10; ++number) recorder.write(image, number);
    EXPECT_TRUE(log.stopped.wait(kPatienceMs));
    log.gate.set();
    recorder.release();
    EXPECT_EQ(log.frames().size(), 10u);
    EXPECT_EQ(files.openFiles(), 0u);
}

// ---- numbers

TEST_F(CreateAvi, CountsFromTheFirstFrameAndLeavesGaps) {
    start();
    recorder.write(image, 0xFFFFFFFE, 2);
    EXPECT_EQ(recorder.position(), 0u);
    recorder.write(image, 0xFFFFFFFF, 3);
    recorder.write(image, 4, 5);
    EXPECT_EQ(recorder.position(), 6u);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    const auto frames = log.frames();
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(frames[0], (LayoutLog::Frame{0, 2, image}));
    EXPECT_EQ(frames[1], (LayoutLog::Frame{1, 3, image}));
    EXPECT_EQ(frames[2], (LayoutLog::Frame{6, 5, image}));
}

TEST_F(CreateAvi, EndsAtTheNumberOfFramesAndSaysSoWithTheNextFrame) {
    start(3);
    for (std::uint32_t number = 10; number < 13; ++number) recorder.write(image, number);
    recorder.writeUntilEnded(image, 13);
    EXPECT_EQ(recorder.status(), 0u);
    EXPECT_EQ(log.frames().size(), 3u);
    EXPECT_EQ(files.openFiles(), 0u);
    std::uint32_t ended = 0;
    EXPECT_EQ(recorder->WriteFrame(image.data(), 99, 0, &ended), 0u);
    EXPECT_EQ(ended, 1u) << "it stays so";
}

TEST_F(CreateAvi, GoesOnInTheNextFileOfTheQueue) {
    prepare(2);
    EXPECT_EQ(recorder->AddFile(u"second"), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    recorder.write(image, 0);
    recorder.write(image, 1);
    recorder.write(image, 2);
    recorder.write(image, 3);
    recorder.writeUntilEnded(image, 4);
    std::vector<std::uint32_t> indices;
    for (const auto& frame : log.frames()) indices.push_back(frame.index);
    EXPECT_EQ(indices, (std::vector<std::uint32_t>{0, 1, 0, 1}));
}

TEST_F(CreateAvi, GoesOnInAFileThatIsAddedMeanwhile) {
    start(2);
    recorder.write(image, 0);
    EXPECT_EQ(recorder->AddFile(u"second"), 0u);
    for (std::uint32_t number = 1; number < 4; ++number) recorder.write(image, number);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    std::vector<std::uint32_t> indices;
    for (const auto& frame : log.frames()) indices.push_back(frame.index);
    EXPECT_EQ(indices, (std::vector<std::uint32_t>{0, 1, 0, 1}));
}

// Nobody has told how many frames a file takes: 600.
TEST_F(CreateAvi, RollsOverBehind600FramesIfNotTold) {
    ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
    ASSERT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 0u);
    ASSERT_EQ(recorder->AddFile(u"first"), 0u);
    ASSERT_EQ(recorder->AddFile(u"second"), 0u);
    std::uint32_t framesPerFile = 0;
    EXPECT_EQ(recorder->GetFramesPerFile(&framesPerFile), 0u);
    EXPECT_EQ(framesPerFile, 600u);
    ASSERT_EQ(recorder->Start(), 0u);
    for (std::uint32_t number = 0; number < 1200; ++number) recorder.write(image, number);
    recorder.writeUntilEnded(image, 1200);
    const auto frames = log.frames();
    ASSERT_EQ(frames.size(), 1200u);
    EXPECT_EQ(frames[599].index, 599u);
    EXPECT_EQ(frames[600].index, 0u);
    EXPECT_EQ(frames[1199].index, 599u);
}

TEST_F(CreateAvi, CanBeStartedAgain) {
    start(2);
    recorder.write(image, 0);
    recorder.write(image, 1);
    recorder.writeUntilEnded(image, 2);
    EXPECT_EQ(recorder->AddFile(u"again"), 0u);
    EXPECT_EQ(recorder->Start(), 0u);
    recorder.write(image, 70);
    EXPECT_EQ(recorder.position(), 0u);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    ASSERT_EQ(log.frames().size(), 3u);
    EXPECT_EQ(log.frames()[2].index, 0u);
}

// ---- status

TEST_F(CreateAvi, TakesNoPauseWhileItRecords) {
    start();
    EXPECT_EQ(recorder.status(), 1u);
    EXPECT_EQ(recorder->SetStatus(2), 12u);
    EXPECT_EQ(recorder->SetStatus(1), 12u);
    EXPECT_EQ(recorder.status(), 1u);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(recorder.status(), 0u);
}

TEST_F(CreateAvi, CanBePausedWhileIdleOnly) {
    EXPECT_EQ(recorder->SetStatus(1), 12u);
    EXPECT_EQ(recorder->SetStatus(3), 87u);
    EXPECT_EQ(recorder->SetStatus(2), 0u);
    EXPECT_EQ(recorder.status(), 2u);
    EXPECT_EQ(recorder->SetStatus(2), 12u);
    EXPECT_EQ(recorder->SetStatus(1), 12u);
    EXPECT_EQ(recorder->SetFrameSizeShift(1), 12u) << "a pause is active";
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(recorder.status(), 0u);
}

TEST_F(CreateAvi, CountsPausedFramesAndTakesThemOffThePosition) {
    start(1);
    recorder.write(image, 100);
    recorder.writeUntilEnded(image, 101);
    ASSERT_EQ(recorder->SetStatus(2), 0u);
    for (std::uint32_t number = 110; number < 113; ++number) recorder.write(image, number);
    ASSERT_EQ(recorder->SetStatus(0), 0u);
    std::uint32_t ended = 0;
    EXPECT_EQ(recorder->WriteFrame(image.data(), 113, 0, &ended), 0u);
    EXPECT_EQ(ended, 1u);
    EXPECT_EQ(recorder.position(), 10u) << "113 - 3 - 100";
    EXPECT_EQ(log.frames().size(), 1u);
}

// A writer that had no file has ended without a frame. What was counted in a pause ahead of the first frame
// is not taken off.
TEST_F(CreateAvi, ForgetsPausedFramesWithTheFirstFrame) {
    ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
    ASSERT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    ASSERT_EQ(recorder->SetStatus(0), 0u);
    ASSERT_EQ(recorder->SetStatus(2), 0u);
    for (std::uint32_t number = 5; number < 9; ++number) recorder.write(image, number);
    ASSERT_EQ(recorder->SetStatus(0), 0u);
    std::uint32_t ended = 0;
    EXPECT_EQ(recorder->WriteFrame(image.data(), 9, 0, &ended), 0u);
    EXPECT_EQ(ended, 1u);
    EXPECT_EQ(recorder.position(), 0u);
}

TEST_F(CreateAvi, StartsFromZeroBehindAPause) {
    prepare();
    ASSERT_EQ(recorder->SetStatus(2), 0u);
    for (std::uint32_t number = 0; number < 3; ++number) recorder.write(image, number);
    EXPECT_EQ(recorder->Start(), 12u) << "a pause is active";
    ASSERT_EQ(recorder->SetStatus(0), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    recorder.write(image, 50);
    recorder.write(image, 52);
    EXPECT_EQ(recorder.position(), 2u);
    ASSERT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(log.frames().at(0).index, 0u);
}

// ---- messages

TEST_F(CreateAvi, PostsBeginAndEndWithItsParameter) {
    MessageReceiver receiver;
    EXPECT_EQ(recorder->SetNotifyWindow(receiver.window()), 0u);
    EXPECT_EQ(recorder->SetNotifyParam(0x1234), 0u);
    start(1);
    ReceivedMessage got;
    ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    EXPECT_EQ(got.message, 45064u);
    EXPECT_EQ(got.parameter1, 0x1234u);
    EXPECT_EQ(got.parameter2, 0u);
    recorder.write(image, 0);
    recorder.writeUntilEnded(image, 1);
    ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    EXPECT_EQ(got.message, 45065u);
    EXPECT_EQ(got.parameter1, 0x1234u);
    EXPECT_EQ(got.parameter2, 0u);
    EXPECT_FALSE(receiver.wait(got, 0));
}

TEST_F(CreateAvi, TellsTheReceiverThatWasSetWhileItRecorded) {
    MessageReceiver first, second;
    EXPECT_EQ(recorder->SetNotifyWindow(first.window()), 0u);
    start(1);
    EXPECT_EQ(recorder->SetNotifyParam(7), 0u);  // beside the writer's thread, which begins
    ReceivedMessage got;
    ASSERT_TRUE(first.wait(got, kPatienceMs));
    EXPECT_EQ(got.message, 45064u);
    EXPECT_EQ(recorder->SetNotifyWindow(second.window()), 0u);
    recorder.write(image, 0);
    recorder.writeUntilEnded(image, 1);
    ASSERT_TRUE(second.wait(got, kPatienceMs));
    EXPECT_EQ(got.message, 45065u);
    EXPECT_EQ(got.parameter1, 7u);
    EXPECT_FALSE(first.wait(got, 0));
}

// Receiver and parameter change while the writer's thread tells: each message goes to somebody, once.
TEST_F(CreateAvi, TellsWhoeverIsTheReceiverAtThatMoment) {
    constexpr int kMovies = 40;
    MessageReceiver receivers[2];
    std::uint32_t turn = 0;
    const auto change = [&] {
        ++turn;
        EXPECT_EQ(recorder->SetNotifyWindow(receivers[turn % 2].window()), 0u);
        EXPECT_EQ(recorder->SetNotifyParam(100 + turn % 2), 0u);
    };
    change();
    for (int movie = 0; movie < kMovies; ++movie) {
        start(1);
        for (int i = 0; i < 20; ++i) change();
        recorder.write(image, 0);
        recorder.write(image, 1);  // ends the file
        while (recorder.status() == 1) change();
    }
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    int begun = 0, ended = 0;
    for (MessageReceiver& receiver : receivers) {
        for (ReceivedMessage got; receiver.wait(got, 0);) {
            ++(got.message == 45064 ? begun : ended);
            EXPECT_TRUE(got.message == 45064 || got.message == 45065) << got.message;
            EXPECT_TRUE(got.parameter1 == 100 || got.parameter1 == 101) << got.parameter1;
            EXPECT_EQ(got.parameter2, 0u);
        }
    }
    EXPECT_EQ(begun, kMovies);
    EXPECT_EQ(ended, kMovies);
}

TEST_F(CreateAvi, RecordsForAReceiverThatIsGone) {
    MessageReceiver receiver;
    EXPECT_EQ(recorder->SetNotifyWindow(receiver.window()), 0u);
    receiver.destroy();
    EXPECT_EQ(recorder->OnStatus(45064, 0).code(), 1400u);
    start(1);
    recorder.write(image, 0);
    recorder.writeUntilEnded(image, 1);
    EXPECT_EQ(recorder.status(), 0u);
}

}  // namespace
}  // namespace tavra::test
