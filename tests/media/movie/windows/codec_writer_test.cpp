// Movies through Video for Windows, with a codec of the test's own in this process.
#include <gtest/gtest.h>
#include <windows.h>
// Behind windows.h:
#include <vfw.h>

#include <atomic>
#include <cstring>
#include <deque>
#include <thread>
#include <vector>

#include "media/movie/avi_file_vfw.h"
#include "support/movie_files_double.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

using movie::CAVIFile;
using movie::CAVIFileVFW;
using movie::FrameBuffer;
using movie::PointerQueue;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kTestCodec = mmioFOURCC('T', 'v', 'T', '1');
constexpr std::uint32_t kNoCodec = mmioFOURCC('z', 'z', 'z', 'z');
constexpr std::uint32_t kUserChooses = 0xFFFFFFFF;

// ---- the codec: it turns every bit over and leaves the last byte out, so that sizes differ

std::atomic<std::uint32_t> qualityOfLastFrame{0};
// Frames that it still compresses; then it fails.
constexpr int kNoLimit = 1 << 30;
std::atomic<int> framesLeft{kNoLimit};

DWORD compressedSize(const BITMAPINFOHEADER& header) {
    return header.biSizeImage - 1;
}

LRESULT compressFrame(const ICCOMPRESS& job) {
    if (framesLeft-- <= 0) return ICERR_INTERNAL;
    qualityOfLastFrame = job.dwQuality;
    const DWORD size = compressedSize(*job.lpbiInput);
    const auto* const from = static_cast<const std::uint8_t*>(job.lpInput);
    auto* const to = static_cast<std::uint8_t*>(job.lpOutput);
    for (DWORD i = 0; i < size; ++i) to[i] = static_cast<std::uint8_t>(~from[i]);
    job.lpbiOutput->biSizeImage = size;
    if (job.lpckid != nullptr) *job.lpckid = mmioFOURCC('0', '0', 'd', 'c');
    if (job.lpdwFlags != nullptr) *job.lpdwFlags = AVIIF_KEYFRAME;
    return ICERR_OK;
}

LRESULT describeCodec(ICINFO& info) {
    info = {};
    info.dwSize = sizeof info;
    info.fccType = ICTYPE_VIDEO;
    info.fccHandler = kTestCodec;
    info.dwFlags = VIDCF_QUALITY;
    info.dwVersionICM = ICVERSION;
    std::wcscpy(info.szName, L"test");
    std::wcscpy(info.szDescription, L"Codec of the test");
    return sizeof info;
}

// The format of what comes out; asked with no place for it: its size.
LRESULT outputFormat(const BITMAPINFOHEADER& input, BITMAPINFOHEADER* output) {
    if (output == nullptr) return sizeof(BITMAPINFOHEADER);
    *output = input;
    output->biSize = sizeof *output;
    output->biCompression = kTestCodec;
    output->biBitCount = 24;
    output->biClrUsed = output->biClrImportant = 0;
    output->biSizeImage = compressedSize(input);
    return ICERR_OK;
}

LRESULT CALLBACK testCodec(DWORD_PTR, HDRVR, UINT message, LPARAM first, LPARAM second) {
    const auto* const input = reinterpret_cast<const BITMAPINFOHEADER*>(first);
    switch (message) {
        case DRV_LOAD:
        case DRV_ENABLE:
        case DRV_DISABLE:
        case DRV_FREE:
        case DRV_OPEN:
        case DRV_CLOSE: return 1;
        case ICM_GETINFO: return describeCodec(*reinterpret_cast<ICINFO*>(first));
        case ICM_COMPRESS_QUERY: return input->biCompression == BI_RGB ? ICERR_OK : ICERR_BADFORMAT;
        case ICM_COMPRESS_GET_FORMAT:
            return outputFormat(*input, reinterpret_cast<BITMAPINFOHEADER*>(second));
        case ICM_COMPRESS_GET_SIZE: return compressedSize(*input);
        case ICM_COMPRESS_BEGIN:
        case ICM_COMPRESS_END: return ICERR_OK;
        case ICM_COMPRESS: return compressFrame(*reinterpret_cast<const ICCOMPRESS*>(first));
        default: return ICERR_UNSUPPORTED;
    }
}

class InstalledCodec {
  public:
    InstalledCodec() {
        EXPECT_TRUE(ICInstall(ICTYPE_VIDEO, kTestCodec, reinterpret_cast<LPARAM>(&testCodec), nullptr,
                              ICINSTALL_FUNCTION));
    }
    ~InstalledCodec() { ICRemove(ICTYPE_VIDEO, kTestCodec, 0); }
    InstalledCodec(const InstalledCodec&) = delete;
    InstalledCodec& operator=(const InstalledCodec&) = delete;
};

// ---- what a file holds

struct ReadMovie {
    AVISTREAMINFOW info{};
    Bytes format;
    std::vector<Bytes> samples;  // as they lie in the file; an empty one for a frame that was jumped over
};

ReadMovie readMovie(const std::filesystem::path& name) {
    ReadMovie movie;
    PAVIFILE file = nullptr;
    PAVISTREAM stream = nullptr;
    EXPECT_EQ(AVIFileOpenW(&file, name.c_str(), OF_READ, nullptr), AVIERR_OK);
    if (file == nullptr) return movie;
    EXPECT_EQ(AVIFileGetStream(file, &stream, streamtypeVIDEO, 0), AVIERR_OK);
    if (stream != nullptr) {
        EXPECT_EQ(AVIStreamInfoW(stream, &movie.info, sizeof movie.info), AVIERR_OK);
        LONG size = 0;
        EXPECT_EQ(AVIStreamReadFormat(stream, 0, nullptr, &size), AVIERR_OK);
        movie.format.resize(static_cast<std::size_t>(size));
        EXPECT_EQ(AVIStreamReadFormat(stream, 0, movie.format.data(), &size), AVIERR_OK);
        for (LONG i = 0; i < static_cast<LONG>(movie.info.dwLength); ++i) {
            LONG bytes = 0;
            AVIStreamRead(stream, i, 1, nullptr, 0, &bytes, nullptr);
            Bytes& sample = movie.samples.emplace_back(static_cast<std::size_t>(bytes));
            if (bytes > 0) AVIStreamRead(stream, i, 1, sample.data(), bytes, &bytes, nullptr);
        }
        AVIStreamRelease(stream);
    }
    AVIFileRelease(file);
    return movie;
}

// ---- the writer

class OpenWriter final : public CAVIFileVFW {
  public:
    using CAVIFileVFW::CAVIFileVFW;
    ~OpenWriter() override { Stop(); }
    std::uint64_t position() const { return position_; }
    std::uint64_t projectedSize() const { return projectedSize_; }
    void beginFile() { position_ = projectedSize_ = 0; }  // as the writer's thread does ahead of each
};

struct CodecWriterTest : testing::Test {
    static constexpr std::uint32_t kWidth = 16, kHeight = 10;

    const TempFolder folder;
    const InstalledCodec codec;
    MovieFilesDouble noFiles;
    PointerQueue<FrameBuffer> filled, free;
    std::deque<FrameBuffer> buffers;
    std::uint32_t bits = 24;
    OpenWriter writer{noFiles};

    CodecWriterTest() {
        framesLeft = kNoLimit;
        writer.filledFrames = &filled;
        writer.freeFrames = &free;
    }

    std::u16string name(const char* file) const { return (folder / file).u16string(); }
    std::uint32_t stride() const { return kWidth * bits / 8; }
    std::uint32_t imageBytes() const { return stride() * kHeight; }

    void prepare(std::uint32_t compressor) {
        writer.SetCompressor(compressor);
        writer.settings.rate = 30;
        writer.settings.scale = 2;
        writer.settings.rowStride = stride();
        writer.settings.imageBytes = imageBytes();
        writer.settings.image =
            movie::ImageDescription::of(kWidth, kHeight, stride(), static_cast<std::uint16_t>(bits));
    }
    Bytes picture(std::uint32_t seed) const {
        Bytes image(imageBytes());
        for (std::size_t i = 0; i < image.size(); ++i)
            image[i] = static_cast<std::uint8_t>(i * 3 + seed * 50);
        return image;
    }
    Bytes compressedPicture(std::uint32_t seed) const {
        Bytes image = picture(seed);
        image.pop_back();
        for (std::uint8_t& byte : image) byte = static_cast<std::uint8_t>(~byte);
        return image;
    }
    void fill(std::initializer_list<std::uint32_t> positions) {
        for (const std::uint32_t position : positions) {
            FrameBuffer& frame = buffers.emplace_back();
            ASSERT_TRUE(frame.allocate(imageBytes()).ok());
            const Bytes image = picture(position);
            std::memcpy(frame.image(), image.data(), image.size());
            frame.position = position;
            filled.push(&frame);
        }
    }
    Status run() {
        EXPECT_TRUE(writer.Start().ok());
        writer.Stop();
        return writer.result();
    }
};

TEST_F(CodecWriterTest, TheCodecCompressesEveryFrame) {
    prepare(kTestCodec);
    writer.settings.quality = 63;
    ASSERT_EQ(writer.addFile(name("a.avi")).code(), 0u);
    fill({0, 1, 2});
    EXPECT_EQ(run().code(), 0u);
    const ReadMovie movie = readMovie(folder / "a.avi");
    ASSERT_EQ(movie.format.size(), sizeof(BITMAPINFOHEADER));
    EXPECT_EQ(reinterpret_cast<const BITMAPINFOHEADER*>(movie.format.data())->biCompression, kTestCodec);
    EXPECT_EQ(movie.info.dwRate, 30u);
    EXPECT_EQ(movie.info.dwScale, 2u);
    EXPECT_EQ(movie.info.rcFrame.right, static_cast<LONG>(kWidth));
    EXPECT_EQ(movie.info.rcFrame.bottom, static_cast<LONG>(kHeight));
    EXPECT_EQ(qualityOfLastFrame, 6300u) << "in hundredths";
    ASSERT_EQ(movie.samples.size(), 3u);
    for (std::uint32_t i = 0; i < 3; ++i) EXPECT_EQ(movie.samples[i], compressedPicture(i)) << i;
}

TEST_F(CodecWriterTest, TheFramesPerFileHoldForEachFile) {
    prepare(kTestCodec);
    writer.settings.framesPerFile = 2;
    ASSERT_TRUE(writer.addFile(name("a.avi")).ok());
    ASSERT_TRUE(writer.addFile(name("b.avi")).ok());
    fill({0, 1, 2});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(readMovie(folder / "a.avi").samples.size(), 2u);
    EXPECT_EQ(readMovie(folder / "b.avi").samples, std::vector<Bytes>{compressedPicture(2)});
}

TEST_F(CodecWriterTest, ASkippedFrameKeepsItsPlace) {
    prepare(kTestCodec);
    ASSERT_TRUE(writer.addFile(name("a.avi")).ok());
    fill({10, 13, 14});
    EXPECT_TRUE(run().ok());
    const ReadMovie movie = readMovie(folder / "a.avi");
    ASSERT_EQ(movie.samples.size(), 5u);
    EXPECT_EQ(movie.samples[0], compressedPicture(10));
    EXPECT_EQ(movie.samples[3], compressedPicture(13));
    EXPECT_EQ(movie.samples[4], compressedPicture(14));
}

TEST_F(CodecWriterTest, WithoutACompressorTheFramesStandAsTheyAre) {
    for (const std::uint32_t depth : {8u, 24u}) {
        bits = depth;
        prepare(0);
        ASSERT_TRUE(writer.addFile(name("a.avi")).ok());
        fill({0, 1});
        EXPECT_TRUE(run().ok());
        const ReadMovie movie = readMovie(folder / "a.avi");
        EXPECT_EQ(movie.samples, (std::vector<Bytes>{picture(0), picture(1)})) << depth;
        EXPECT_EQ(movie.format.size(), depth == 8 ? 1064u : 40u);
    }
}

// 2048 bytes of headers, 4096 for an uncompressed stream with its palette; each sample to an even size; 24
// bytes of index a frame; in sectors of 512.
TEST_F(CodecWriterTest, TheProjectedSizeFollowsTheFrames) {
    struct Case {
        std::uint32_t compressor, depth;
        std::uint64_t start, sample;
    };
    for (const Case& each : {Case{kTestCodec, 24, 2048, 480}, Case{kTestCodec, 8, 2048, 160},
                             Case{0, 24, 2048, 480}, Case{0, 8, 4096, 160}}) {
        bits = each.depth;
        prepare(each.compressor);
        std::unique_ptr<movie::FileRecord> record;
        ASSERT_TRUE(writer.OpenFile(name("a.avi"), record).ok());
        writer.beginFile();
        std::uint64_t position = each.start;
        for (std::uint32_t index = 0; index < 3; ++index) {
            Bytes image = picture(index);
            ASSERT_TRUE(writer.WriteFrame(*record, image.data(), index, 0).ok());
            position += each.sample;
            EXPECT_EQ(writer.position(), position) << each.compressor << ", " << each.depth;
            EXPECT_EQ(writer.projectedSize(), (position + 8 + (index + 1) * 24 + 511) / 512 * 512);
        }
        EXPECT_TRUE(writer.CloseFile(*record).ok());
    }
}

TEST_F(CodecWriterTest, ACodecThatIsNotInstalled) {
    prepare(kNoCodec);
    EXPECT_EQ(writer.addFile(name("a.avi")).code(), 0xE000000Au);
}

TEST_F(CodecWriterTest, AFileThatCannotBeOpened) {
    prepare(kTestCodec);
    EXPECT_EQ(writer.addFile(name("missing\\a.avi")).code(), 0xE000000Cu);
}

TEST_F(CodecWriterTest, ACodecThatFailsEndsTheRecordingWithItsCode) {
    prepare(kTestCodec);
    ASSERT_TRUE(writer.addFile(name("a.avi")).ok());
    framesLeft = 0;
    fill({0, 1});
    ASSERT_TRUE(writer.Start().ok());
    EXPECT_TRUE(writer.ended().wait(platform::kWaitForever)) << "by itself";
    writer.Stop();
    EXPECT_FALSE(writer.result().ok());
    EXPECT_EQ(filled.size(), 1u);
}

TEST_F(CodecWriterTest, ACodecThatFailsInTheMiddleLeavesTheFramesBeforeIt) {
    prepare(kTestCodec);
    ASSERT_TRUE(writer.addFile(name("a.avi")).ok());
    framesLeft = 3;
    fill({0, 1, 2, 3, 4});
    ASSERT_TRUE(writer.Start().ok());
    EXPECT_TRUE(writer.ended().wait(platform::kWaitForever));
    writer.Stop();
    EXPECT_FALSE(writer.result().ok());
    const ReadMovie movie = readMovie(folder / "a.avi");
    ASSERT_GE(movie.samples.size(), 3u);
    for (std::uint32_t i = 0; i < 3; ++i) EXPECT_EQ(movie.samples[i], compressedPicture(i)) << i;
}

TEST_F(CodecWriterTest, StoresRowsFromTheBottomUpAndEndsAtTwoGibibytes) {
    EXPECT_TRUE(writer.StoresBottomUp());
    EXPECT_EQ(writer.GetMaxFileSize(), 0x80000000u);
}

// ---- the system's dialog, answered from another thread

class DialogAnswer {
  public:
    explicit DialogAnswer(WPARAM button)
        : button_(button), process_(GetCurrentProcessId()), thread_([this] { run(); }) {}
    ~DialogAnswer() {
        done_ = true;
        thread_.join();
    }
    DialogAnswer(const DialogAnswer&) = delete;
    DialogAnswer& operator=(const DialogAnswer&) = delete;

    int answered() const { return answered_; }

  private:
    void run() {
        while (!done_) {
            EnumWindows(&DialogAnswer::look, reinterpret_cast<LPARAM>(this));
            SwitchToThread();
        }
    }
    static BOOL CALLBACK look(HWND window, LPARAM self) {
        auto& answer = *reinterpret_cast<DialogAnswer*>(self);
        char kind[16] = {};
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        GetClassNameA(window, kind, sizeof kind);
        if (process != answer.process_ || std::strcmp(kind, "#32770") != 0 || !IsWindowVisible(window) ||
            window == answer.last_) {
            return TRUE;
        }
        answer.last_ = window;
        ++answer.answered_;
        PostMessageA(window, WM_COMMAND, answer.button_, 0);
        return TRUE;
    }

    const WPARAM button_;
    const DWORD process_;
    HWND last_ = nullptr;
    std::atomic<bool> done_{false};
    std::atomic<int> answered_{0};
    std::thread thread_;
};

TEST_F(CodecWriterTest, AUserMayCancel) {
    prepare(kUserChooses);
    const DialogAnswer user(IDCANCEL);
    EXPECT_EQ(writer.addFile(name("a.avi")).code(), 0xE000000Du);
    EXPECT_EQ(user.answered(), 1);
    EXPECT_TRUE(folder.isEmpty());
}

TEST_F(CodecWriterTest, TheFirstFileAsksForAllOfARecording) {
    prepare(kUserChooses);
    writer.settings.framesPerFile = 1;
    {
        const DialogAnswer user(IDOK);
        ASSERT_EQ(writer.addFile(name("a.avi")).code(), 0u);
        ASSERT_EQ(writer.addFile(name("b.avi")).code(), 0u);
        EXPECT_EQ(user.answered(), 1);
    }
    fill({0, 1});
    EXPECT_TRUE(run().ok());
    EXPECT_EQ(readMovie(folder / "a.avi").samples.size(), 1u);
    EXPECT_EQ(readMovie(folder / "b.avi").samples.size(), 1u);
}

}  // namespace
}  // namespace tavra::test
