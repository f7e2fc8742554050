// The recorder where files, disks and memory fail, with the one layout that writes its frames as they are.
#include "media/movie/create_avi_fixture.h"
#include "support/failing_allocations.h"
#include "support/message_receiver.h"

namespace tavra::test {
namespace {

class CreateAviFault : public CreateAviTest {};

TEST_F(CreateAviFault, TellsAWriteErrorWithTheNextFrameAndByMessage) {
    // Two writes a frame behind the header.
    for (std::size_t nth = 1; nth <= 9; ++nth) {
        SCOPED_TRACE(nth);
        MessageReceiver receiver;
        MovieFilesDouble place;
        place.failWrite(nth, 1117);
        Recorder one(place);
        ASSERT_EQ(one->SetFileFormat(kSmf, 0), 0u);
        ASSERT_EQ(one->SetImageFormat(8, 4, 0, 1), 0u);
        ASSERT_EQ(one->AddFile(u"movie.smf"), 0u);
        ASSERT_EQ(one->SetNotifyWindow(receiver.window()), 0u);
        ASSERT_EQ(one->Start(), 0u);
        EXPECT_GE(one.writeUntilEnded(image, 0), nth / 2);
        ReceivedMessage got;
        ASSERT_TRUE(receiver.wait(got, kPatienceMs));
        EXPECT_EQ(got.message, 45064u);
        ASSERT_TRUE(receiver.wait(got, kPatienceMs));
        EXPECT_EQ(got.message, 45065u);
        EXPECT_EQ(got.parameter2, 1117u);
        EXPECT_EQ(one->SetStatus(0), 1117u);
        EXPECT_EQ(place.openFiles(), 0u);
    }
}

TEST_F(CreateAviFault, EndsWhenTheDiskIsFull) {
    files.setRoom(376 + 3 * (24 + 32) + 10);
    ASSERT_EQ(recorder->SetFileFormat(kSmf, 0), 0u);
    ASSERT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 0u);
    ASSERT_EQ(recorder->AddFile(u"movie.smf"), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    EXPECT_GE(recorder.writeUntilEnded(image, 0), 3u);
    EXPECT_EQ(recorder->SetStatus(0), 112u);
    EXPECT_EQ(files.openFiles(), 0u);
}

TEST_F(CreateAviFault, StopsInFrontOfAFullDisk) {
    // Room for three frames: the file is full when another would no longer fit.
    files.free.value = 376 + 3 * (24 + 32);
    files.existing = {0, 2};
    ASSERT_EQ(recorder->SetFileFormat(kSmf, 0), 0u);
    ASSERT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 0u);
    ASSERT_EQ(recorder->AddFile(u"movie.smf"), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    recorder.writeUntilEnded(image, 0);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(files.size(u"movie.smf"), 376u + 3 * 56);
}

// Each file was told the room of its volume when it was opened.
TEST_F(CreateAviFault, AFileThatIsAddedMeanwhileDoesNotLimitTheOneInWork) {
    ASSERT_EQ(recorder->SetFileFormat(kSmf, 0), 0u);
    ASSERT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 0u);
    ASSERT_EQ(recorder->AddFile(u"movie.smf"), 0u);
    files.stallWrites();
    ASSERT_EQ(recorder->Start(), 0u);
    recorder.write(image, 0);
    ASSERT_TRUE(files.stalled().wait(kPatienceMs));
    files.free.value = 100;
    ASSERT_EQ(recorder->AddFile(u"elsewhere.smf"), 0u);
    files.releaseWrites();
    recorder.write(image, 1);
    recorder.write(image, 2);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(files.size(u"movie.smf"), 376u + 3 * 56);
    EXPECT_EQ(files.size(u"elsewhere.smf"), 0u);
}

// When the fourth frame opens the second file, there is room left for two.
TEST_F(CreateAviFault, AFileHasTheRoomThatThoseBeforeItHaveLeft) {
    ASSERT_EQ(recorder->SetFileFormat(kSmf, 0), 0u);
    ASSERT_EQ(recorder->SetFramesPerFile(3), 0u);
    ASSERT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 0u);
    for (const char16_t* name : {u"first.smf", u"second.smf", u"third.smf"}) {
        ASSERT_EQ(recorder->AddFile(name), 0u);
    }
    ASSERT_EQ(recorder->Start(), 0u);
    for (std::uint32_t number = 0; number < 3; ++number) recorder.write(image, number);
    files.free.value = 376 + 2 * 56;
    for (std::uint32_t number = 3; number < 7; ++number) recorder.write(image, number);
    recorder.writeUntilEnded(image, 7);
    EXPECT_EQ(recorder->SetStatus(0), 0u) << "nothing was written past the room";
    EXPECT_EQ(files.size(u"first.smf"), 376u + 3 * 56);
    EXPECT_EQ(files.size(u"second.smf"), 376u + 2 * 56);
    EXPECT_EQ(files.size(u"third.smf"), 376u + 2 * 56);
}

TEST_F(CreateAviFault, IsAtRestWhenThereIsNoMemoryForTheHeader) {
    prepare();
    log.prepareThrows = true;
    EXPECT_EQ(recorder->Start(), 8u);
    EXPECT_EQ(recorder.status(), 0u);
    std::uint32_t ended = 0;
    EXPECT_EQ(recorder->WriteFrame(image.data(), 0, 0, &ended), 0u) << "and does not wait for a writer";
    EXPECT_EQ(ended, 1u);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    log.prepareThrows = false;
    ASSERT_EQ(recorder->Start(), 0u) << "the file is still there";
    recorder.write(image, 0);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(log.frames().size(), 1u);
    EXPECT_EQ(files.createCount(), 1u);
    EXPECT_EQ(files.openFiles(), 0u);
}

TEST_F(CreateAviFault, EndsWithTheCodeOfAFrameThatCannotBeEncoded) {
    MessageReceiver receiver;
    EXPECT_EQ(recorder->SetNotifyWindow(receiver.window()), 0u);
    log.failWith = 1168;
    log.failFrom = 3;
    start();
    EXPECT_GE(recorder.writeUntilEnded(image, 0), 4u);
    EXPECT_EQ(log.frames().size(), 4u) << "the fourth failed";
    ReceivedMessage got;
    ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    EXPECT_EQ(got.message, 45065u);
    EXPECT_EQ(got.parameter2, 1168u);
    EXPECT_EQ(recorder->SetStatus(0), 1168u);
    EXPECT_EQ(files.openFiles(), 0u);
}

TEST_F(CreateAviFault, RecordsIntoTheFilesThatCouldBeOpened) {
    files.failCreate(2, 5);
    ASSERT_EQ(recorder->SetFileFormat(kSmf, 0), 0u);
    ASSERT_EQ(recorder->SetFramesPerFile(2), 0u);
    ASSERT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 0u);
    EXPECT_EQ(recorder->AddFile(u"first.smf"), 0u);
    EXPECT_EQ(recorder->AddFile(u"second.smf"), 0xE0000009u);
    EXPECT_EQ(recorder->AddFile(nullptr), 87u);
    EXPECT_EQ(recorder->AddFile(u"third.smf"), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    EXPECT_GE(recorder.writeUntilEnded(image, 0), 4u);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(files.size(u"first.smf"), 376u + 2 * 56);
    EXPECT_FALSE(files.exists(u"second.smf"));
    EXPECT_EQ(files.size(u"third.smf"), 376u + 2 * 56);
}

TEST_F(CreateAviFault, CannotOpenAFileInAPlaceThatRefuses) {
    files.failCreate(1, 5);
    ASSERT_EQ(recorder->SetFileFormat(kSmf, 0), 0u);
    EXPECT_EQ(recorder->AddFile(u"movie.smf"), 0xE0000009u);
    EXPECT_EQ(recorder->AddFile(u"movie.smf"), 0u);
}

TEST_F(CreateAviFault, AnotherFormatEndsTheRecording) {
    start();
    recorder.write(image, 0);
    EXPECT_EQ(recorder->SetFileFormat(kSmf, 0), 0u);
    EXPECT_EQ(recorder.status(), 0u);
    EXPECT_EQ(files.openFiles(), 0u);
}

}  // namespace
}  // namespace tavra::test
