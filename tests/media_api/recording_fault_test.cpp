// Recordings whose disk fails or fills up while the camera streams on, with every layout and a disk of the
// test's own.
#include <string>

#include "media_api/attached_recording.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kFault = 1117;
constexpr std::uint32_t kFrames = 3;

struct FaultyLayout {
    RecordingLayout layout;
    // Writes for kFrames frames. A failure behind them, when the file is closed, is not reported.
    std::size_t frameWrites;
};

constexpr FaultyLayout kLayouts[] = {
    {kAvi1Layout, 1 + kFrames},  // an empty chunk leads
    {kAvi1MjpegLayout, kFrames}, {kAvi2Layout, kFrames},
    {kAvi2MjpegLayout, kFrames}, {kSmfLayout, 1 + 2 * kFrames},  // the header; a header and an image for each
};

class RecordingFault : public AttachedRecording {
  protected:
    // Behind the end of its writer, the recording ends with the next frame, and the stream goes on.
    void expectClosed(const MovieFilesDouble& files) {
        passFrame();
        EXPECT_FALSE(record().recording.exists());
        EXPECT_EQ(files.openFiles(), 0u);
        expectFailure(Tavra_SetAVIStatus(handle, 0), 87);
        passFrame();
    }
};

class EveryWrite : public RecordingFault, public testing::WithParamInterface<FaultyLayout> {};

TEST_P(EveryWrite, EndsTheRecordingWithItsCodeAndClosesTheFile) {
    openCamera(1, 5);
    collectImages();
    start();
    for (std::size_t nth = 1;; ++nth) {
        SCOPED_TRACE(nth);
        ASSERT_LT(nth, 30u);
        MovieFilesDouble files;
        files.failWrite(nth, kFault);
        attach(GetParam().layout, files, kFrames);
        // The frame behind the last is what ends a file.
        for (std::uint32_t i = 0; i <= kFrames; ++i) passFrame();
        const std::uint64_t code = expectMessage(kRecordingEnded);
        expectClosed(files);
        EXPECT_EQ(code, nth <= GetParam().frameWrites ? kFault : 0u);
        if (files.writeCount() < nth) break;
    }
    stopAndExpectCode(0);
}

INSTANTIATE_TEST_SUITE_P(Layouts, EveryWrite, testing::ValuesIn(kLayouts),
                         [](const auto& layout) { return std::string(layout.param.layout.name); });

// The writer stops in front of the end of the room, so that there is place for the indexes.
TEST_F(RecordingFault, ADiskThatFillsUpLeavesAMovieThatCanBeRead) {
    openCamera(1, 5);
    collectImages();
    start();
    MovieFilesDouble files;
    const std::uint64_t room = 0x101000 + 60000;
    files.setRoom(room);
    files.free = {.value = room};
    attach(kAvi2Layout, files, 1000);
    while (record().recording.exists()) passFrame();
    EXPECT_EQ(expectMessage(kRecordingEnded), 0u);
    expectClosed(files);
    stopAndExpectCode(0);

    const PlainAvi movie(files.bytes(u"/movie"));
    const std::vector<Bytes> pictures = movie.pictures();
    const std::vector<SeenImage> seen = images.waitFor(0);
    EXPECT_GE(pictures.size(), 5u);
    EXPECT_EQ(movie.length(), pictures.size());
    ASSERT_LT(pictures.size(), seen.size());
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        EXPECT_TRUE(isImageFromTheBottom(pictures[i], seen[i].data, 18)) << i;
    }
}

TEST_F(RecordingFault, ADiskThatIsFullUnawaresKeepsWholeRawFrames) {
    openCamera(1, 5);
    collectImages();
    start();
    MovieFilesDouble files;
    files.setRoom(376 + 5 * 48 + 30);  // the sixth frame is cut
    attach(kSmfLayout, files, 1000);
    while (record().recording.exists()) passFrame();
    EXPECT_EQ(expectMessage(kRecordingEnded), 112u);
    expectClosed(files);
    Bytes bytes = files.bytes(u"/movie");
    ASSERT_GE(bytes.size(), 376u + 5 * 48);
    bytes.resize(376 + 5 * 48);
    const RawMovie recorded = readRawMovie(bytes);
    ASSERT_EQ(recorded.frames.size(), 5u);
    for (std::uint32_t i = 0; i < 5; ++i) EXPECT_EQ(recorded.frames[i].image, framePattern(i));
    stopAndExpectCode(0);
}

TEST_F(RecordingFault, WithoutABufferThereIsNoRecording) {
    openCamera();
    record().recording.bufferCount = 0;
    expectFailure(save(), 8);
    EXPECT_EQ(status(), 0);
    EXPECT_FALSE(record().transferRunning()) << "no stream was started";
    expectNoMessage();
    std::filesystem::remove(folder / "a.smf");  // which nobody holds
    EXPECT_TRUE(folder.isEmpty());
    record().recording.bufferCount = 1;
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
}

}  // namespace
}  // namespace tavra::test
