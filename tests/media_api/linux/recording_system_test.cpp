// Recordings where the system gives out: threads, descriptors, a file's length, names.
#include <pthread.h>
#include <sys/resource.h>

#include <atomic>
#include <cerrno>
#include <limits>

#include "media_api/recording_fixture.h"
#include "platform/last_error.h"
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

// The file goes with its folder. Its writer goes on into a file without a name, which nobody sees again; that
// the headers of an AVI 2.0 movie find no file at the end is no failure of a write.
TEST_F(RecordingSystem, GoesOnWhenItsFolderVanishes) {
    openCamera(1, 5);
    collectImages();
    start();
    std::uint32_t number = 0;
    for (const char* file : {"inner/a.smf", "inner/a.avi", "inner/b.avi"}) {
        SCOPED_TRACE(file);
        ASSERT_EQ(Tavra_SetAVIPriorityFileFormat(handle, file[6] == 'b' ? 1 : 0), 1);
        std::filesystem::create_directory(folder / "inner");
        ASSERT_EQ(save(file), 1);
        expectMessages({{kRecordingStarted, 0}});
        for (int half = 0; half < 2; ++half) {
            for (int i = 0; i < 3; ++i, ++number) sendFrame(number, framePattern(number));
            EXPECT_EQ(images.waitFor(number).size(), number) << "capture goes on";
            std::filesystem::remove_all(folder / "inner");
        }
        EXPECT_EQ(status(), 1);
        ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
        expectMessages({{kRecordingEnded, 0}});
        EXPECT_TRUE(folder.isEmpty());
    }
    expectFailure(save("inner/a.smf"), 0xE0000009);
    stopAndExpectCode(0);
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

    const TavraSmfHandle reader = Tavra_SMFOpenFileW(longName.c_str());
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(Tavra_SMF2AVIW(reader, wideName(deep / "a.avi").c_str(), 0, nullptr, nullptr, nullptr), 1);
    EXPECT_GT(std::filesystem::file_size(deep / "a.avi"), 4096u);
    EXPECT_EQ(Tavra_SMF2AVIA(reader, (deep / "b.avi").c_str(), 0, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(platform::lastSystemError(), 123u);
    EXPECT_FALSE(std::filesystem::exists(deep / "b.avi"));
    EXPECT_EQ(Tavra_SMFOpenFileA((deep / "a.smf").c_str()), nullptr);
    EXPECT_EQ(platform::lastSystemError(), 123u);
    Tavra_SMFCloseFile(reader);
}

}  // namespace
}  // namespace tavra::test
