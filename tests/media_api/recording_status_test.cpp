// Status and options of recordings, and what they hold still.
#include "media_api/recording_fixture.h"

namespace tavra::test {
namespace {

class RecordingStatus : public RecordingTest {};

TEST_F(RecordingStatus, HasNoStatusToSetWithoutARecording) {
    openCamera();
    for (const std::uint8_t value : {0, 1, 2, 3, 255}) expectFailure(Tavra_SetAVIStatus(handle, value), 87);
    std::uint8_t state = 9;
    std::uint32_t frames = 77, position = 78;
    ASSERT_EQ(Tavra_GetAVIStatus(handle, &state, &frames, &position), 1);
    EXPECT_EQ(state, 0);
    EXPECT_EQ(frames, 77u);
    EXPECT_EQ(position, 78u);
    EXPECT_EQ(Tavra_GetAVIStatus(handle, nullptr, nullptr, nullptr), 1);
}

TEST_F(RecordingStatus, IsNotPausedThoughTheCallSucceeds) {
    openCamera();
    startBoth();
    EXPECT_EQ(Tavra_SetAVIStatus(handle, 1), 1);
    EXPECT_EQ(Tavra_SetAVIStatus(handle, 2), 1);
    EXPECT_EQ(status(), 1);
    expectFailure(Tavra_SetAVIStatus(handle, 3), 87);
    EXPECT_EQ(status(), 1);
    EXPECT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    expectMessages({{kRecordingEnded, 0}});
    expectFailure(Tavra_SetAVIStatus(handle, 0), 87);
}

// Between the writer's end and the next frame, which would close the recording, a pause is taken: from then
// on frames are counted, and only an end ends it.
TEST_F(RecordingStatus, IsPausedBehindTheEndOfItsWriterAlone) {
    openCamera();
    collectRaw();
    startBoth(1);
    sendFrame(0, framePattern(0));
    sendFrame(1, framePattern(1));  // ends the file
    expectMessages({{kRecordingEnded, 0}});
    EXPECT_EQ(status(), 0);
    EXPECT_EQ(Tavra_SetAVIStatus(handle, 1), 1);
    EXPECT_EQ(status(), 0) << "it does not go on";
    EXPECT_EQ(Tavra_SetAVIStatus(handle, 2), 1);
    EXPECT_EQ(status(), 2);
    sendAndAwait(2, 3);
    EXPECT_EQ(Tavra_SetAVIStatus(handle, 1), 1);
    std::uint8_t state = 9;
    std::uint32_t position = 99;
    ASSERT_EQ(Tavra_GetAVIStatus(handle, &state, nullptr, &position), 1);
    EXPECT_EQ(state, 2);
    EXPECT_EQ(position, 1u) << "of the last frame that was not paused";
    expectFailure(save("b.smf"), 0xE0000008);
    EXPECT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    EXPECT_EQ(status(), 0);
    EXPECT_EQ(movie().frames.size(), 1u);
    expectFailure(Tavra_SetAVIStatus(handle, 2), 87);
    expectNoMessage();
}

TEST_F(RecordingStatus, RefusesASecondOne) {
    openCamera();
    startBoth();
    expectFailure(save("b.smf"), 0xE0000008);
    expectFailure(save("no dot"), 0xE0000008);
    expectFailure(Tavra_SaveAVIW(handle, nullptr, 0, 1), 0xE0000008);
    expectFailure(Tavra_SaveAVIA(handle, nullptr, 0, 1), 0xE0000008);
    expectFailure(Tavra_SaveAVIA(handle, std::string(400, 'x').c_str(), 0, 1), 0xE0000008);
    expectFailure(Tavra_SaveAVIA(handle, (folder / "b.smf").string().c_str(), 0, 1), 0xE0000008);
    EXPECT_EQ(status(), 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "b.smf"));
}

TEST_F(RecordingStatus, HoldsClockRotationAndFrameSizeStill) {
    openCamera();
    startBoth();
    expectFailure(Tavra_SetClock(handle, 0, 1), 0xE0000008);
    expectFailure(Tavra_SetRotationMode(handle, 1), 0xE0000008);
    expectFailure(Tavra_SetAVIFrameSize(handle, 1), 0xE0000008);
    std::uint8_t rotation = 9, size = 9;
    EXPECT_EQ(Tavra_GetRotationMode(handle, &rotation), 1);
    EXPECT_EQ(rotation, 0) << "not stored";
    EXPECT_EQ(Tavra_GetAVIFrameSize(handle, &size), 1);
    EXPECT_EQ(size, 0) << "not stored";
    EXPECT_EQ(Tavra_SetAVIQuality(handle, 10), 1);
    EXPECT_EQ(Tavra_SetAVIPriorityFileFormat(handle, 1), 1);
    ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    EXPECT_EQ(Tavra_SetAVIFrameSize(handle, 1), 1);
    EXPECT_EQ(Tavra_SetRotationMode(handle, 1), 1);
    EXPECT_EQ(Tavra_GetRotationMode(handle, &rotation), 1);
    EXPECT_EQ(rotation, 1);
    EXPECT_EQ(Tavra_SetClock(handle, 0, 24545455), 1);
    EXPECT_EQ(loadLe32(&movie().header[48]), 75u) << "the quality of its start";
}

TEST_F(RecordingStatus, HasOptionsWithLimits) {
    openCamera();
    std::uint8_t size = 9;
    std::uint32_t quality = 0, format = 9;
    ASSERT_EQ(Tavra_GetAVIFrameSize(handle, &size), 1);
    ASSERT_EQ(Tavra_GetAVIQuality(handle, &quality), 1);
    ASSERT_EQ(Tavra_GetAVIPriorityFileFormat(handle, &format), 1);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(quality, 75u);
    EXPECT_EQ(format, 0u);
    for (const auto& [given, stored] : {std::pair{1, 1}, {2, 2}, {3, 0}, {255, 0}}) {
        ASSERT_EQ(Tavra_SetAVIFrameSize(handle, static_cast<std::uint8_t>(given)), 1);
        ASSERT_EQ(Tavra_GetAVIFrameSize(handle, &size), 1);
        EXPECT_EQ(size, stored);
    }
    for (const auto& [given, stored] : {std::pair{0u, 0u}, {100u, 100u}, {101u, 100u}, {0xFFFFFFFFu, 100u}}) {
        ASSERT_EQ(Tavra_SetAVIQuality(handle, given), 1);
        ASSERT_EQ(Tavra_GetAVIQuality(handle, &quality), 1);
        EXPECT_EQ(quality, stored);
    }
    ASSERT_EQ(Tavra_SetAVIPriorityFileFormat(handle, 1), 1);
    expectFailure(Tavra_SetAVIPriorityFileFormat(handle, 2), 87);
    ASSERT_EQ(Tavra_GetAVIPriorityFileFormat(handle, &format), 1);
    EXPECT_EQ(format, 1u);
    expectFailure(Tavra_GetAVIFrameSize(handle, nullptr), 87);
    expectFailure(Tavra_GetAVIQuality(handle, nullptr), 87);
    expectFailure(Tavra_GetAVIPriorityFileFormat(handle, nullptr), 87);
}

TEST_F(RecordingStatus, NeedsAHandle) {
    std::uint8_t byte = 0;
    std::uint32_t word = 0;
    EXPECT_EQ(Tavra_SaveAVIW(nullptr, u"a.smf", 0, 1), 0);
    EXPECT_EQ(Tavra_SaveAVIA(nullptr, "a.smf", 0, 1), 0);
    EXPECT_EQ(Tavra_SetAVIStatus(nullptr, 0), 0);
    EXPECT_EQ(Tavra_GetAVIStatus(nullptr, &byte, &word, &word), 0);
    EXPECT_EQ(Tavra_SetAVIFrameSize(nullptr, 0), 0);
    EXPECT_EQ(Tavra_GetAVIFrameSize(nullptr, &byte), 0);
    EXPECT_EQ(Tavra_SetAVIQuality(nullptr, 0), 0);
    EXPECT_EQ(Tavra_GetAVIQuality(nullptr, &word), 0);
    EXPECT_EQ(Tavra_SetAVIPriorityFileFormat(nullptr, 0), 0);
    EXPECT_EQ(Tavra_GetAVIPriorityFileFormat(nullptr, &word), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u);
}

}  // namespace
}  // namespace tavra::test
