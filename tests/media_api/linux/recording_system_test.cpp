// Recordings where the system gives out: threads, descriptors, a file's length, names.
#include <pthread.h>
#include <sys/resource.h>

#include <atomic>
#include <cerrno>
#include <limits>

#include "media_api/recording_fixture.h"
#include "support/process.h"

namespace {

constexpr int kNoLimit = std::numeric_limits<int>::max();
std::atomic<int> threadsLeft{kNoLimit};

}  // namespace

// The linker sends the making of the library's threads here (--wrap).
extern "C" {
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument) {
    if (threadsLeft != kNoLimit && threadsLeft-- <= 0) return EAGAIN;
    return __real_pthread_create(thread, attributes, body, argument);
}
}

namespace tavra::test {
namespace {

class RecordingSystem : public RecordingTest {
  protected:
    ~RecordingSystem() override { threadsLeft = kNoLimit; }
};

TEST_F(RecordingSystem, ACodecOfTheSystemCompressesTheMovie) {
    constexpr std::uint32_t kFfv1 = 0x31564646, kMissing = 0xE000000A;
    openCamera();
    forgetPlaces();
    collectImages();
    if (save("a.avi", 1000, kFfv1) == 0) {
        ASSERT_EQ(lastError(), kMissing);
        record().lastError = 0;
        GTEST_SKIP() << "built without codecs";
    }
    expectMessages({{kRecordingStarted, 0}, {TAVRA_MESSAGE_TRANSFER_STARTED, 0}});
    const std::size_t before = images.count();
    for (std::uint32_t i = 0; i < 4; ++i) sendFrame(i, framePattern(i));
    EXPECT_EQ(images.waitFor(before + 4).size(), before + 4) << "an image's callback is behind the recorder";
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    const Bytes file = readFile(folder / "a.avi");
    ASSERT_GT(file.size(), 376u);
    EXPECT_EQ(loadLe32(&file[4]), file.size() - 8) << "the header was completed";
    EXPECT_EQ(loadLe32(&file[112]), kFfv1) << "the stream's codec";
    EXPECT_EQ(loadLe32(&file[48]), 4u) << "frames";
}

TEST_F(RecordingSystem, WithoutAThreadForItsWriterThereIsNoRecording) {
    openCamera();
    const std::size_t handles = openHandles();
    threadsLeft = 0;
    expectFailure(save(), 8);
    threadsLeft = kNoLimit;
    EXPECT_EQ(status(), 0);
    EXPECT_FALSE(record().transferRunning());
    expectNoMessage();
    EXPECT_EQ(openHandles(), handles);
    startBoth();
}

// The writer is there by then; it ends, and leaves a movie without frames.
TEST_F(RecordingSystem, WithoutAStreamThereIsNoRecording) {
    openCamera();
    const std::size_t handles = openHandles();
    threadsLeft = 1;
    expectFailure(save(), 8);
    threadsLeft = kNoLimit;
    EXPECT_EQ(status(), 0);
    EXPECT_FALSE(record().transferRunning());
    expectMessages({{kRecordingStarted, 0}, {kRecordingEnded, 0}});
    expectNoMessage();
    EXPECT_EQ(openHandles(), handles) << "the file is closed";
    EXPECT_TRUE(movie().frames.empty());
    startBoth();
    sendFrame(0, framePattern(0));
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
}

TEST_F(RecordingSystem, KeepsTheFramesThatAFileTakes) {
    constexpr std::uint32_t kWidth = 160, kHeight = 120, kRecord = 24 + kWidth * kHeight;
    constexpr std::uint32_t kWhole = 30;
    openCamera(1, 5, kWidth, kHeight);
    collectImages();
    start();
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit limited{376 + kWhole * kRecord + 1000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    EXPECT_EQ(save(), 1);
    EXPECT_EQ(expectMessage(kRecordingStarted), 0u);
    for (std::uint32_t number = 0; record().recording.exists(); ++number) {
        sendFrame(number, framePattern(number));
        images.waitFor(number + 1);
    }
    EXPECT_EQ(expectMessage(kRecordingEnded), 223u) << "the file is too large";
    setrlimit(RLIMIT_FSIZE, &before);
    stopAndExpectCode(0);

    const TavraSmfHandle reader = Tavra_SMFOpenFileW(name().c_str());
    ASSERT_NE(reader, nullptr);
    std::uint32_t frames = 0, last = 0;
    EXPECT_EQ(Tavra_GetSMFFileInfo(reader, &frames, &last), 1);
    EXPECT_EQ(frames, kWhole);
    EXPECT_EQ(last, kWhole - 1);
    Tavra_SMFCloseFile(reader);
}

TEST_F(RecordingSystem, TakesNamesOfMoreThan259Characters) {
    std::filesystem::path deep = folder.path();
    while (deep.string().size() < 600) deep /= std::string(100, 'd');
    std::filesystem::create_directories(deep);
    openCamera();
    const std::u16string longName = wideName(deep / "a.smf");
    ASSERT_GT(longName.size(), 600u);
    ASSERT_EQ(Tavra_SaveAVIW(handle, longName.c_str(), 0, 5), 1);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(readRawMovie(readFile(deep / "a.smf")).field(44), 5u);
    expectFailure(Tavra_SaveAVIA(handle, (deep / "b.smf").c_str(), 0, 5), 0xE000000F);
    EXPECT_FALSE(std::filesystem::exists(deep / "b.smf"));
}

}  // namespace
}  // namespace tavra::test
