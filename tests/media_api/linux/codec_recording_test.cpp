// Recordings and conversions through the codecs of the system, by the exported functions.
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <limits>
#include <utility>

#include "media/movie/smf_builder.h"
#include "media_api/recording_fixture.h"
#include "platform/last_error.h"
#include "support/ffmpeg_reader.h"
#include "support/process.h"
#include "tavra/tavra_host.h"

namespace {

constexpr int kNoFault = std::numeric_limits<int>::max();
std::atomic<int> writesLeft{kNoFault};

}  // namespace

// The linker sends the library's writes of movies here (--wrap): the one behind so many fails, and no other.
extern "C" {
ssize_t __real_pwrite(int, const void*, std::size_t, off_t);
ssize_t __wrap_pwrite(int, const void*, std::size_t, off_t);

ssize_t __wrap_pwrite(int file, const void* data, std::size_t size, off_t position) {
    if (writesLeft == kNoFault || writesLeft-- != 0) return __real_pwrite(file, data, size, position);
    errno = EIO;
    return -1;
}
}

namespace tavra::test {
namespace {

constexpr std::uint32_t kFfv1 = 'F' | 'F' << 8 | 'V' << 16 | '1' << 24;
constexpr std::uint32_t kMpeg1 = 'm' | 'p' << 8 | 'g' << 16 | '1' << 24;
constexpr std::uint32_t kUserChooses = 0xFFFFFFFF;

constexpr std::uint32_t kMissing = 0xE000000A;
constexpr std::uint32_t kRefuses = 0xE000000B;
constexpr std::uint32_t kNoFile = 0xE000000C;
constexpr std::uint32_t kCancelled = 0xE000000D;
constexpr std::uint32_t kWriteFault = 29;

// The application's chooser: what it answers, and for which pictures it was asked.
struct Chooser {
    std::uint32_t answer = 0;  // 0: cancel
    int asked = 0;
    std::uint32_t width = 0, height = 0, bits = 0;

    Chooser() { TavraHost_SetCodecChooser(&Chooser::ask, this); }
    ~Chooser() { TavraHost_SetCodecChooser(nullptr, nullptr); }
    Chooser(const Chooser&) = delete;
    Chooser& operator=(const Chooser&) = delete;

    static TavraBool ask(void* context, std::uint32_t width, std::uint32_t height, std::uint32_t bitCount,
                         TavraCodecChoice* choice) {
        auto& self = *static_cast<Chooser*>(context);
        ++self.asked;
        self.width = width;
        self.height = height;
        self.bits = bitCount;
        choice->compressor = self.answer;
        return self.answer != 0 ? 1 : 0;
    }
};

// ---- from a camera

class CodecRecording : public RecordingTest {
  protected:
    static constexpr std::uint32_t kWidth = 160, kHeight = 120;

    CodecRecording() { silenceFfmpeg(); }
    ~CodecRecording() override { writesLeft = kNoFault; }

    // Frames that no codec makes small, so that they do not stay in a buffer on their way to the file.
    Bytes noise(std::uint32_t seed) const {
        Bytes raw(rawSize);
        for (std::uint8_t& byte : raw) {
            seed = seed * 1664525 + 1013904223;
            byte = static_cast<std::uint8_t>(seed >> 24);
        }
        return raw;
    }
    // Frames that have been through the whole chain when this returns.
    void passFrames(std::uint32_t count) {
        const std::size_t before = images.count();
        for (std::uint32_t i = 0; i < count; ++i, ++number_) sendFrame(number_, noise(number_));
        ASSERT_EQ(images.waitFor(before + count).size(), before + count);
    }
    ReadMovie read() const {
        std::optional<ReadMovie> found = readMovie(folder / "a.avi");
        EXPECT_TRUE(found);
        return found.value_or(ReadMovie());
    }
    // What FFmpeg reads is what the preview showed.
    void expectSeen(const ReadMovie& movie, std::size_t first) {
        const std::vector<SeenImage> seen = images.waitFor(first + movie.frames.size());
        ASSERT_GE(seen.size(), first + movie.frames.size());
        for (std::size_t i = 0; i < movie.frames.size(); ++i) {
            EXPECT_EQ(movie.frames[i].position, static_cast<std::int64_t>(i));
            EXPECT_EQ(movie.frames[i].pixels, seen[first + i].data)
                << i;  // rows of 480 bytes need no padding
        }
    }

    std::uint32_t number_ = 0;
};

TEST_F(CodecRecording, HoldsThePreviewsImagesPixelForPixel) {
    openCamera(1, 5, kWidth, kHeight);
    collectImages();
    start();
    ASSERT_EQ(save("a.avi", 1000, kFfv1), 1) << std::hex << lastError();
    expectMessages({{kRecordingStarted, 0}});
    passFrames(5);
    ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    expectMessages({{kRecordingEnded, 0}});
    const ReadMovie movie = read();
    EXPECT_EQ(movie.fourcc, kFfv1);
    EXPECT_EQ(movie.frameCount, 5);
    ASSERT_EQ(movie.frames.size(), 5u);
    expectSeen(movie, 0);
    stopAndExpectCode(0);
}

TEST_F(CodecRecording, IsWholeWhenTheCameraLeaves) {
    openCamera(1, 5, kWidth, kHeight);
    collectImages();
    start();
    ASSERT_EQ(save("a.avi", 1000, kFfv1), 1);
    expectMessages({{kRecordingStarted, 0}});
    passFrames(3);
    usb.unplug(0);
    expectMessages({{kRecordingEnded, 0}, {TAVRA_MESSAGE_TRANSFER_ENDED, 5}});
    const ReadMovie movie = read();
    EXPECT_EQ(movie.frameCount, 3);
    ASSERT_EQ(movie.frames.size(), 3u);
    expectSeen(movie, 0);
}

TEST_F(CodecRecording, IsWholeWhenTheHandleIsClosed) {
    openCamera(1, 5, kWidth, kHeight);
    collectImages();
    start();
    ASSERT_EQ(save("a.avi", 1000, kFfv1), 1);
    passFrames(3);
    Tavra_Close(handle);
    handle = nullptr;
    EXPECT_EQ(read().frames.size(), 3u);
}

TEST_F(CodecRecording, DoesNotStartWithoutItsCodecAndTellsWhy) {
    DoubleCamera& camera = describe(1, 5, kWidth, kHeight);
    camera.clock = 36000000;  // 32.7 frames a second: MPEG-1 knows eight rates, and this is none of them
    camera.setScan16(26, 1000);
    camera.setScan16(28, 1100);
    open();
    forgetPlaces();
    expectFailure(save("a.avi", 10, 1), kMissing);
    expectFailure(save("a.avi", 10, kMpeg1), kRefuses);
    expectFailure(save("no folder/a.avi", 10, kFfv1), kNoFile);
    expectFailure(save("a.avi", 10, kUserChooses), kCancelled);
    Chooser user;
    expectFailure(save("a.avi", 10, kUserChooses), kCancelled);
    user.answer = kMpeg1;
    expectFailure(save("a.avi", 10, kUserChooses), kRefuses);
    EXPECT_EQ(user.asked, 2);
    EXPECT_TRUE(folder.isEmpty());
    EXPECT_EQ(status(), 0);
    EXPECT_FALSE(record().transferRunning()) << "no stream was started";
    expectNoMessage();
}

TEST_F(CodecRecording, IsNoOneElsesMeanwhile) {
    openCamera(1, 5, kWidth, kHeight);
    collectImages();
    start();
    ASSERT_EQ(save("a.avi", 1000, kFfv1), 1);
    passFrames(2);
    const TavraHandle first = std::exchange(handle, nullptr);
    describe(1, 5, kWidth, kHeight);
    handle = Tavra_Open(0);
    ASSERT_NE(handle, nullptr);
    expectFailure(save("a.avi", 10, kFfv1), kNoFile);
    expectFailure(save("a.avi", 10), 0xE0000009);
    Tavra_Close(std::exchange(handle, first));
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(read().frames.size(), 2u);
}

TEST_F(CodecRecording, TakesTheCodecThatTheUserChooses) {
    openCamera(1, 5, kWidth, kHeight);
    collectImages();
    start();
    Chooser user;
    user.answer = kFfv1;
    ASSERT_EQ(save("a.avi", 1000, kUserChooses), 1);
    EXPECT_EQ(user.asked, 1);
    EXPECT_EQ(user.width, kWidth);
    EXPECT_EQ(user.height, kHeight);
    EXPECT_EQ(user.bits, 24u);
    passFrames(2);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    const ReadMovie movie = read();
    EXPECT_EQ(movie.fourcc, kFfv1);
    ASSERT_EQ(movie.frames.size(), 2u);
    expectSeen(movie, 0);
}

// One write after the other fails, until none is left to. The first is made when the file is opened, the last
// ones when it is closed: a close that fails behind good frames is not told.
TEST_F(CodecRecording, EndsWithTheCodeOfAWriteThatFailsAndCaptureGoesOn) {
    constexpr std::uint32_t kFrames = 8;
    openCamera(1, 5, kWidth, kHeight);
    collectImages();
    start();
    const std::size_t handles = openHandles();
    int told = 0;
    bool toldNoMore = false, everyWriteWasMade = false;
    for (int good = 0; !everyWriteWasMade; ++good) {
        SCOPED_TRACE(good);
        ASSERT_LT(good, 200);
        writesLeft = good;
        if (save("a.avi", 1000, kFfv1) == 0) {
            EXPECT_EQ(lastError(), kWriteFault);
            EXPECT_EQ(good, 0) << "what the opening writes";
            record().lastError = 0;
            continue;
        }
        expectMessages({{kRecordingStarted, 0}});
        passFrames(kFrames);
        Tavra_SetAVIStatus(handle, 0);  // of one that has ended by itself it is refused
        record().lastError = 0;
        const std::uint64_t code = expectMessage(kRecordingEnded);
        everyWriteWasMade = writesLeft >= 0;
        writesLeft = kNoFault;
        if (code == 0) {
            toldNoMore = true;
        } else {
            EXPECT_EQ(code, kWriteFault);
            EXPECT_FALSE(toldNoMore) << "a frame's write behind one of the close";
            ++told;
        }
        EXPECT_FALSE(record().recording.exists());
        EXPECT_EQ(openHandles(), handles) << "the file is closed";
        passFrames(1);
    }
    EXPECT_GE(told, 1) << "frames were written while they came";
    EXPECT_TRUE(toldNoMore);
    const ReadMovie movie = read();
    EXPECT_EQ(movie.frames.size(), kFrames) << "the one without a fault";
    stopAndExpectCode(0);
}

// ---- from a raw movie

class CodecConversion : public testing::Test {
  protected:
    static constexpr std::uint32_t kWidth = 36, kHeight = 17;
    static constexpr std::uint32_t kFrames = 4;

    CodecConversion() {
        silenceFfmpeg();
        SmfBuilder builder(kWidth, kHeight, 8);
        for (std::uint32_t i = 0; i < kFrames; ++i) builder.addFrame(i, 1, rawFrame(i));
        builder.write(folder / "a.smf");
        reader = Tavra_SMFOpenFileW(wideName(folder / "a.smf").c_str());
        platform::setLastSystemError(0);
    }
    ~CodecConversion() override { Tavra_SMFCloseFile(reader); }

    static Bytes rawFrame(std::uint32_t number) {
        Bytes raw(std::size_t{kWidth} * kHeight);
        for (std::size_t i = 0; i < raw.size(); ++i) raw[i] = static_cast<std::uint8_t>(i * 7 + number * 50);
        return raw;
    }
    TavraBool convert(std::uint32_t compressor, const std::filesystem::path& output) {
        EXPECT_EQ(Tavra_SetSMFCompressor(reader, compressor, 75), 1);
        return Tavra_SMF2AVIW(reader, wideName(output).c_str(), 0, &current, nullptr, nullptr);
    }
    void expectFailure(std::uint32_t compressor, const std::filesystem::path& output, std::uint32_t code) {
        platform::setLastSystemError(0);
        EXPECT_EQ(convert(compressor, output), 0);
        EXPECT_EQ(platform::lastSystemError(), code);
        EXPECT_FALSE(std::filesystem::exists(output));
    }
    void expectDeveloped(const std::filesystem::path& output) const {
        const std::optional<ReadMovie> movie = readMovie(output);
        ASSERT_TRUE(movie);
        EXPECT_EQ(movie->fourcc, kFfv1);
        EXPECT_EQ(movie->frameCount, kFrames);
        ASSERT_EQ(movie->frames.size(), kFrames);
        for (std::uint32_t i = 0; i < kFrames; ++i) {
            Bytes grey;  // three equal bytes a pixel
            for (const std::uint8_t sample : rawFrame(i)) grey.insert(grey.end(), 3, sample);
            EXPECT_EQ(movie->frames[i].pixels, grey) << i;
        }
    }

    const TempFolder folder;
    TavraSmfHandle reader = nullptr;
    std::uint32_t current = 99;
};

TEST_F(CodecConversion, GivesEveryPixelToTheCodec) {
    EXPECT_EQ(convert(kFfv1, folder / "a.avi"), 1) << std::hex << platform::lastSystemError();
    EXPECT_EQ(current, kFrames - 1);
    expectDeveloped(folder / "a.avi");
    EXPECT_EQ(Tavra_SMF2AVIA(reader, (folder / "b.avi").c_str(), 0, nullptr, nullptr, nullptr), 1);
    expectDeveloped(folder / "b.avi");
}

TEST_F(CodecConversion, TakesTheCodecThatTheUserChooses) {
    Chooser user;
    user.answer = kFfv1;
    EXPECT_EQ(convert(kUserChooses, folder / "a.avi"), 1);
    EXPECT_EQ(user.asked, 1);
    EXPECT_EQ(user.width, kWidth);
    EXPECT_EQ(user.height, kHeight);
    EXPECT_EQ(user.bits, 8u);
    expectDeveloped(folder / "a.avi");
    EXPECT_EQ(Tavra_SMF2AVIA(reader, (folder / "b.avi").c_str(), 0, nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(user.asked, 2) << "for each conversion";
    expectDeveloped(folder / "b.avi");
}

TEST_F(CodecConversion, TellsWhyThereIsNone) {
    expectFailure(1, folder / "a.avi", kMissing);
    expectFailure(kFfv1, folder / "no folder" / "a.avi", kNoFile);
    expectFailure(kUserChooses, folder / "a.avi", kCancelled);
    Chooser user;
    expectFailure(kUserChooses, folder / "a.avi", kCancelled);
    EXPECT_EQ(user.asked, 1);
    user.answer = 1;
    expectFailure(kUserChooses, folder / "a.avi", kMissing);
    EXPECT_EQ(current, 99u) << "left as it was";
}

}  // namespace
}  // namespace tavra::test
