// Recordings whose disk stands still for a while: the frames wait, who only looks does not, and nothing is
// lost.
#include <atomic>
#include <thread>

#include "media_api/attached_recording.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kBefore = 20, kWhileStalled = 256, kAfter = 20;
constexpr std::uint32_t kFrames = kBefore + kWhileStalled + kAfter;
constexpr std::uint32_t kBuffers = 10;
constexpr std::uint32_t kRecordingRuns = 0xE0000008;

class RecordingStall : public AttachedRecording, public testing::WithParamInterface<RecordingLayout> {
  protected:
    // Sends so many frames while no write comes to its end. The camera cannot be rid of them: the buffers are
    // full, and the frame behind them waits.
    void sendWhileStalled(MovieFilesDouble& files, std::uint32_t count) {
        files.stallWrites();
        for (std::uint32_t i = 0; i < count; ++i, ++number_) sendFrame(number_, framePattern(number_));
        EXPECT_TRUE(files.stalled().wait(kPatienceMs));
        awaitWaitingFrame(record().recording, [&] { return images.count() >= kBefore + count; });
        EXPECT_LE(images.count(), kBefore + kBuffers + 1) << "one more where a write is in flight";
        files.releaseWrites();
    }
    void expectStatus(std::uint32_t position) {
        std::uint8_t state = 9;
        std::uint32_t framesPerFile = 0, told = 0;
        ASSERT_EQ(Tavra_GetAVIStatus(handle, &state, &framesPerFile, &told), 1);
        EXPECT_EQ(state, 1);
        EXPECT_EQ(framesPerFile, 10000u);
        EXPECT_EQ(told, position);
    }
    void expectRawFrames(const Bytes& file) const {
        const RawMovie movie = readRawMovie(file);
        ASSERT_EQ(movie.frames.size(), kFrames);
        for (std::uint32_t i = 0; i < kFrames; ++i) {
            EXPECT_EQ(movie.frames[i].number, i);
            EXPECT_EQ(movie.frames[i].tag, 5u);
            EXPECT_EQ(movie.frames[i].image, framePattern(i)) << i;
        }
    }
    void expectPictures(const Bytes& file, const RecordingLayout& layout) {
        const PlainAvi movie(file);
        EXPECT_EQ(movie.length(), kFrames);
        const bool counted = layout.format == 2 || layout.jpeg();
        EXPECT_EQ(movie.totalFrames(), counted ? kFrames : 0xFFFFFFFFu);
        if (layout.format == 2) {
            EXPECT_EQ(movie.indexedSizes().size(), kFrames);
        }
        const std::vector<Bytes> pictures = movie.pictures();
        ASSERT_EQ(pictures.size(), kFrames);
        // Nothing stands for a frame that was lost: the empty chunk that leads is the only one.
        const std::size_t leading = layout.format == 1 && layout.jpeg() ? 0 : 1;
        EXPECT_EQ(movie.frames().size(), kFrames + leading);
        const std::vector<SeenImage> seen = images.waitFor(kFrames);
        for (std::size_t i = 0; i < kFrames; ++i) {
            if (layout.jpeg()) {
                EXPECT_EQ(Bytes(pictures[i].begin(), pictures[i].begin() + 2), (Bytes{0xFF, 0xD8})) << i;
                EXPECT_EQ(Bytes(pictures[i].end() - 2, pictures[i].end()), (Bytes{0xFF, 0xD9})) << i;
            } else {
                EXPECT_TRUE(isImageFromTheBottom(pictures[i], seen[i].data, 18)) << i;
            }
        }
    }
};

TEST_P(RecordingStall, LosesNoFrame) {
    openCamera(1, 5);
    ASSERT_EQ(Tavra_SetWhiteBalanceMode(handle, 0), 1);  // the frames are recorded as they are sent
    collectRaw();
    collectImages();
    start();
    MovieFilesDouble files;
    attach(GetParam(), files, 10000, kBuffers);
    while (number_ < kBefore) passFrame();
    sendWhileStalled(files, kWhileStalled);
    EXPECT_EQ(images.waitFor(kBefore + kWhileStalled).size(), kBefore + kWhileStalled);
    expectStatus(kBefore + kWhileStalled - 1);
    while (number_ < kFrames) passFrame();
    expectStatus(kFrames - 1);
    ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    EXPECT_EQ(expectMessage(kRecordingEnded), 0u);
    EXPECT_EQ(files.openFiles(), 0u);
    const Bytes file = files.bytes(kAttachedMovie);
    if (GetParam().raw()) {
        expectRawFrames(file);
    } else {
        expectPictures(file, GetParam());
    }
    stopAndExpectCode(0);
}

INSTANTIATE_TEST_SUITE_P(Layouts, RecordingStall, testing::ValuesIn(kEveryLayout),
                         [](const auto& layout) { return std::string(layout.param.name); });

// A recording with a frame that waits for its buffer, until the disk goes on.
class WaitingFrame : public AttachedRecording {
  protected:
    void waitWithAFrame() {
        openCamera(1, 5);
        collectRaw();
        start();
        attach(kSmfLayout, files, 10000, 1);
        files.stallWrites();
        // The first has the buffer, which the writer does not give back; the second has none.
        for (; number_ < 2; ++number_) sendFrame(number_, framePattern(number_));
        EXPECT_TRUE(files.stalled().wait(kPatienceMs));
        EXPECT_EQ(raws.waitFor(2).size(), 2u);
        awaitWaitingFrame(record().recording, [] { return false; });
    }

    MovieFilesDouble files;
};

// Who only wants to know whether there is a recording is told without waiting for the frame.
TEST_F(WaitingFrame, KeepsNobodyWaitingWhoMayNotDisturbTheRecording) {
    ASSERT_NO_FATAL_FAILURE(waitWithAFrame());
    const std::u16string other = name("b.smf");
    const std::string narrow = (folder / "b.smf").string();
    platform::Event answered{platform::Event::Reset::Manual};
    std::thread caller([&] {
        expectFailure(Tavra_SaveAVIW(handle, other.c_str(), 0, 1), kRecordingRuns);
        expectFailure(Tavra_SaveAVIA(handle, narrow.c_str(), 0, 1), kRecordingRuns);
        expectFailure(Tavra_SetAVIFrameSize(handle, 1), kRecordingRuns);
        expectFailure(Tavra_SetRotationMode(handle, 1), kRecordingRuns);
        expectFailure(Tavra_SetClock(handle, 0, 1), kRecordingRuns);
        answered.set();
    });
    EXPECT_TRUE(answered.wait(kPatienceMs)) << "the disk is still at a stand";
    EXPECT_FALSE(record().recording.operationMutex.try_lock()) << "and the frame still waits";
    files.releaseWrites();
    caller.join();
    EXPECT_FALSE(std::filesystem::exists(folder / "b.smf"));
    std::uint8_t size = 9;
    ASSERT_EQ(Tavra_GetAVIFrameSize(handle, &size), 1);
    EXPECT_EQ(size, 0);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(readRawMovie(files.bytes(kAttachedMovie)).frames.size(), 2u);
}

// The state of a recording is told between two frames, never in the middle of one. Calls that do not wait
// come and go meanwhile, so that one that did not wait either would have come back.
TEST_F(WaitingFrame, IsWaitedForByWhoAsksForTheState) {
    ASSERT_NO_FATAL_FAILURE(waitWithAFrame());
    std::atomic<bool> released{false};
    bool answeredBehindRelease = false;
    std::uint8_t state = 9;
    std::uint32_t framesPerFile = 0, position = 99;
    platform::Event asks{platform::Event::Reset::Manual}, answered{platform::Event::Reset::Manual};
    std::thread asker([&] {
        asks.set();
        EXPECT_EQ(Tavra_GetAVIStatus(handle, &state, &framesPerFile, &position), 1);
        answeredBehindRelease = released;
        answered.set();
    });
    EXPECT_TRUE(asks.wait(kPatienceMs));
    for (int i = 0; i < 1000; ++i) {
        expectFailure(Tavra_SetAVIFrameSize(handle, 1), kRecordingRuns);
        std::this_thread::yield();
    }
    EXPECT_FALSE(answered.wait(0));
    released = true;
    files.releaseWrites();
    EXPECT_TRUE(answered.wait(kPatienceMs));
    asker.join();
    EXPECT_TRUE(answeredBehindRelease);
    EXPECT_EQ(state, 1);
    EXPECT_EQ(framesPerFile, 10000u);
    EXPECT_EQ(position, 1u) << "of the frame that waited";
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
}

}  // namespace
}  // namespace tavra::test
