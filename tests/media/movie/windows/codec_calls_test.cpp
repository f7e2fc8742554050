// What Video for Windows is called with, and what becomes of its interfaces when a call fails. The linker
// sends the library's calls here (--wrap); they go on to the system unless a test lets them fail.
#include <gtest/gtest.h>
#include <windows.h>
// Behind windows.h:
#include <vfw.h>

#include <cstring>
#include <deque>
#include <optional>
#include <vector>

#include "media/movie/avi_file_vfw.h"
#include "media/movie/no_files.h"
#include "support/temp_folder.h"

namespace {

struct Choice {
    HWND window;
    UINT flags;
    LONG width, height, size;
    DWORD type, flagsOfRecord;
    LONG quality;
};

// The calls since a test began.
struct Calls {
    int inits = 0, exits = 0;
    std::vector<UINT> opens;  // their flags
    int filesOpen = 0, streamsOpen = 0;
    std::vector<Choice> choices;
    int choicesFreed = 0;
    struct Sample {
        LONG index, count, size;
        DWORD flags;
        PAVISTREAM stream;
        friend bool operator==(const Sample&, const Sample&) = default;
    };
    std::vector<Sample> samples;
    PAVISTREAM plain = nullptr, compressed = nullptr;  // of the last file
    PAVISTREAM formatted = nullptr;
    LONG formatPosition = -1;

    // What fails, and with what.
    HRESULT createStream = AVIERR_OK, makeCompressed = AVIERR_OK, setFormat = AVIERR_OK;
    BOOL chosen = TRUE;
};
Calls calls;

}  // namespace

extern "C" {
void WINAPI __real_AVIFileInit();
void WINAPI __real_AVIFileExit();
HRESULT WINAPI __real_AVIFileOpenW(PAVIFILE*, LPCWSTR, UINT, LPCLSID);
ULONG WINAPI __real_AVIFileRelease(PAVIFILE);
HRESULT WINAPI __real_AVIFileCreateStreamW(PAVIFILE, PAVISTREAM*, AVISTREAMINFOW*);
HRESULT WINAPI __real_AVIMakeCompressedStream(PAVISTREAM*, PAVISTREAM, AVICOMPRESSOPTIONS*, CLSID*);
ULONG WINAPI __real_AVIStreamRelease(PAVISTREAM);
HRESULT WINAPI __real_AVIStreamSetFormat(PAVISTREAM, LONG, LPVOID, LONG);
HRESULT WINAPI __real_AVIStreamWrite(PAVISTREAM, LONG, LONG, LPVOID, LONG, DWORD, LONG*, LONG*);

void WINAPI __wrap_AVIFileInit() {
    ++calls.inits;
    __real_AVIFileInit();
}

void WINAPI __wrap_AVIFileExit() {
    ++calls.exits;
    __real_AVIFileExit();
}

HRESULT WINAPI __wrap_AVIFileOpenW(PAVIFILE* file, LPCWSTR name, UINT flags, LPCLSID handler) {
    calls.opens.push_back(flags);
    const HRESULT result = __real_AVIFileOpenW(file, name, flags, handler);
    calls.filesOpen += result == AVIERR_OK ? 1 : 0;
    return result;
}

ULONG WINAPI __wrap_AVIFileRelease(PAVIFILE file) {
    --calls.filesOpen;
    return __real_AVIFileRelease(file);
}

HRESULT WINAPI __wrap_AVIFileCreateStreamW(PAVIFILE file, PAVISTREAM* stream, AVISTREAMINFOW* info) {
    if (calls.createStream != AVIERR_OK) return calls.createStream;
    const HRESULT result = __real_AVIFileCreateStreamW(file, stream, info);
    calls.plain = *stream;
    calls.streamsOpen += result == AVIERR_OK ? 1 : 0;
    return result;
}

HRESULT WINAPI __wrap_AVIMakeCompressedStream(PAVISTREAM* stream, PAVISTREAM source,
                                              AVICOMPRESSOPTIONS* options, CLSID* handler) {
    if (calls.makeCompressed != AVIERR_OK) return calls.makeCompressed;
    const HRESULT result = __real_AVIMakeCompressedStream(stream, source, options, handler);
    calls.compressed = *stream;
    calls.streamsOpen += result == AVIERR_OK ? 1 : 0;
    return result;
}

ULONG WINAPI __wrap_AVIStreamRelease(PAVISTREAM stream) {
    --calls.streamsOpen;
    return __real_AVIStreamRelease(stream);
}

HRESULT WINAPI __wrap_AVIStreamSetFormat(PAVISTREAM stream, LONG position, LPVOID format, LONG size) {
    calls.formatted = stream;
    calls.formatPosition = position;
    if (calls.setFormat != AVIERR_OK) return calls.setFormat;
    return __real_AVIStreamSetFormat(stream, position, format, size);
}

HRESULT WINAPI __wrap_AVIStreamWrite(PAVISTREAM stream, LONG index, LONG count, LPVOID data, LONG size,
                                     DWORD flags, LONG* samples, LONG* bytes) {
    calls.samples.push_back({index, count, size, flags, stream});
    return __real_AVIStreamWrite(stream, index, count, data, size, flags, samples, bytes);
}

// The user, who takes frames without compression or cancels.
BOOL WINAPI __wrap_ICCompressorChoose(HWND window, UINT flags, LPVOID image, LPVOID, PCOMPVARS choice,
                                      LPSTR) {
    const auto* const header = static_cast<const BITMAPINFOHEADER*>(image);
    calls.choices.push_back({window, flags, header->biWidth, header->biHeight, choice->cbSize,
                             choice->fccType, choice->dwFlags, choice->lQ});
    choice->fccHandler = mmioFOURCC('D', 'I', 'B', ' ');
    return calls.chosen;
}

void WINAPI __wrap_ICCompressorFree(PCOMPVARS) {
    ++calls.choicesFreed;
}
}

namespace tavra::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kUserChooses = 0xFFFFFFFF;
constexpr std::uint32_t kSomeCodec = mmioFOURCC('T', 'v', 'T', '2');
constexpr HRESULT kSomeFailure = static_cast<HRESULT>(0x80044066);
constexpr HRESULT kUnsupported = static_cast<HRESULT>(0x80044065);
constexpr std::uint32_t kKeyFrame = 16;
constexpr LONG kWidth = 16, kHeight = 10, kImageBytes = kWidth * 3 * kHeight;

class OpenWriter final : public movie::CAVIFileVFW {
  public:
    using CAVIFileVFW::CAVIFileVFW;
    ~OpenWriter() override { Stop(); }
};

class CodecCalls : public testing::Test {
  protected:
    CodecCalls() {
        calls = {};
        writer.emplace(noFiles);
        writer->filledFrames = &filled;
        writer->freeFrames = &free;
        writer->settings.rowStride = kWidth * 3;
        writer->settings.imageBytes = kImageBytes;
        writer->settings.image = movie::ImageDescription::of(kWidth, kHeight, kWidth * 3, 24);
    }
    std::uint32_t add(const char* file) { return writer->addFile((folder / file).u16string()).code(); }
    std::uint32_t run(std::initializer_list<std::uint32_t> positions) {
        for (const std::uint32_t position : positions) {
            movie::FrameBuffer& frame = buffers.emplace_back();
            EXPECT_TRUE(frame.allocate(kImageBytes).ok());
            frame.position = position;
            filled.push(&frame);
        }
        EXPECT_TRUE(writer->Start().ok());
        writer->Stop();
        return writer->result().code();
    }
    // The file can be taken away, which a file that is open cannot be.
    void expectAllReleased(const char* file) {
        EXPECT_EQ(calls.filesOpen, 0);
        EXPECT_EQ(calls.streamsOpen, 0);
        std::error_code failed;
        std::filesystem::remove(folder / file, failed);
        EXPECT_FALSE(failed) << failed.message();
        EXPECT_TRUE(folder.isEmpty());
    }

    const TempFolder folder;
    NoFiles noFiles;
    movie::PointerQueue<movie::FrameBuffer> filled, free;
    std::deque<movie::FrameBuffer> buffers;
    std::optional<OpenWriter> writer;
};

// A codec of this process that is there, and refuses every frame or takes all.
bool codecRefuses = false;
int codecAsked = 0;

LRESULT CALLBACK someCodec(DWORD_PTR, HDRVR, UINT message, LPARAM first, LPARAM second) {
    const auto* const input = reinterpret_cast<const BITMAPINFOHEADER*>(first);
    const auto sizeOf = [](const BITMAPINFOHEADER& header) {
        return static_cast<LRESULT>(header.biSizeImage);
    };
    switch (message) {
        case DRV_LOAD:
        case DRV_ENABLE:
        case DRV_DISABLE:
        case DRV_FREE:
        case DRV_OPEN:
        case DRV_CLOSE: return 1;
        case ICM_GETINFO: {
            auto& info = *reinterpret_cast<ICINFO*>(first);
            info = {};
            info.dwSize = sizeof info;
            info.fccType = ICTYPE_VIDEO;
            info.fccHandler = kSomeCodec;
            info.dwVersionICM = ICVERSION;
            return sizeof info;
        }
        case ICM_COMPRESS_QUERY: ++codecAsked; return codecRefuses ? ICERR_BADFORMAT : ICERR_OK;
        case ICM_COMPRESS_GET_FORMAT: {
            ++codecAsked;
            if (codecRefuses) return ICERR_BADFORMAT;
            if (second == 0) return sizeof(BITMAPINFOHEADER);
            auto& output = *reinterpret_cast<BITMAPINFOHEADER*>(second);
            output = *input;
            output.biCompression = kSomeCodec;
            return ICERR_OK;
        }
        case ICM_COMPRESS_GET_SIZE: return sizeOf(*input);
        case ICM_COMPRESS_BEGIN: return codecRefuses ? ICERR_BADFORMAT : ICERR_OK;
        case ICM_COMPRESS_END: return ICERR_OK;
        case ICM_COMPRESS: {
            const auto& job = *reinterpret_cast<const ICCOMPRESS*>(first);
            std::memcpy(job.lpOutput, job.lpInput, job.lpbiInput->biSizeImage);
            job.lpbiOutput->biSizeImage = job.lpbiInput->biSizeImage;
            if (job.lpdwFlags != nullptr) *job.lpdwFlags = AVIIF_KEYFRAME;
            return ICERR_OK;
        }
        default: return ICERR_UNSUPPORTED;
    }
}

class InstalledCodec {
  public:
    explicit InstalledCodec(bool refuses) {
        codecRefuses = refuses;
        codecAsked = 0;
        EXPECT_TRUE(ICInstall(ICTYPE_VIDEO, kSomeCodec, reinterpret_cast<LPARAM>(&someCodec), nullptr,
                              ICINSTALL_FUNCTION));
    }
    ~InstalledCodec() { ICRemove(ICTYPE_VIDEO, kSomeCodec, 0); }
    InstalledCodec(const InstalledCodec&) = delete;
    InstalledCodec& operator=(const InstalledCodec&) = delete;
};

TEST_F(CodecCalls, AStreamThatCannotBeMadeIsTold) {
    for (const std::uint32_t compressor : {0u, kSomeCodec}) {
        writer->SetCompressor(compressor);
        calls.createStream = kSomeFailure;
        EXPECT_EQ(add("a.avi"), 0xE0000009u);
        expectAllReleased("a.avi");
    }
    calls.createStream = AVIERR_OK;
    writer->SetCompressor(0);
    EXPECT_EQ(add("a.avi"), 0u) << "and leaves nothing behind";
}

TEST_F(CodecCalls, AFormatThatIsRefusedIsTold) {
    const InstalledCodec codec(false);
    for (const std::uint32_t compressor : {0u, kSomeCodec}) {
        writer->SetCompressor(compressor);
        calls.setFormat = kSomeFailure;
        EXPECT_EQ(add("a.avi"), 0xE0000009u);
        expectAllReleased("a.avi");
        calls.setFormat = AVIERR_OK;
        calls.compressed = nullptr;
        ASSERT_EQ(add("a.avi"), 0u);
        EXPECT_EQ(calls.formatted, compressor == 0 ? calls.plain : calls.compressed);
        EXPECT_EQ(calls.formatPosition, 0);
        EXPECT_EQ(run({0}), 0u);
        expectAllReleased("a.avi");
    }
}

TEST_F(CodecCalls, ACompressorThatFailsIsTold) {
    const struct {
        std::uint32_t result, code;
    } rows[] = {
        {0x80044065, 0xE000000B}, {0x80044067, 8}, {0x80044071, 0xE000000A}, {0x80044066, 0xE0000009}};
    writer->SetCompressor(kSomeCodec);
    for (const auto& row : rows) {
        calls.makeCompressed = static_cast<HRESULT>(row.result);
        EXPECT_EQ(add("a.avi"), row.code) << std::hex << row.result;
        expectAllReleased("a.avi");
    }
}

// Some systems ask the codec when the compressed stream is made, some with its format.
TEST_F(CodecCalls, ACodecThatRefusesTheFramesIsTold) {
    const InstalledCodec codec(true);
    writer->SetCompressor(kSomeCodec);
    const std::uint32_t code = add("a.avi");
    EXPECT_GT(codecAsked, 0);
    EXPECT_TRUE(code == 0xE000000B || code == 0xE0000009) << std::hex << code;
    expectAllReleased("a.avi");
    calls.makeCompressed = kUnsupported;
    EXPECT_EQ(add("a.avi"), 0xE000000Bu);
    expectAllReleased("a.avi");
}

TEST_F(CodecCalls, EveryFrameIsAKeyFrameAtItsPlace) {
    const InstalledCodec codec(false);
    for (const std::uint32_t compressor : {0u, kSomeCodec}) {
        calls.samples.clear();
        calls.opens.clear();
        writer->SetCompressor(compressor);
        ASSERT_EQ(add("a.avi"), 0u);
        EXPECT_EQ(calls.opens, std::vector<UINT>{4097}) << "to write, anew";
        PAVISTREAM const target = compressor == 0 ? calls.plain : calls.compressed;
        EXPECT_EQ(run({10, 11, 14}), 0u);
        EXPECT_EQ(calls.samples, (std::vector<Calls::Sample>{{0, 1, kImageBytes, kKeyFrame, target},
                                                             {1, 1, kImageBytes, kKeyFrame, target},
                                                             {4, 1, kImageBytes, kKeyFrame, target}}));
        expectAllReleased("a.avi");
    }
}

TEST_F(CodecCalls, AUserIsAskedOnceForEachRecording) {
    writer->SetCompressor(kUserChooses);
    writer->settings.framesPerFile = 1;
    ASSERT_EQ(add("a.avi"), 0u);
    ASSERT_EQ(add("b.avi"), 0u);
    ASSERT_EQ(calls.choices.size(), 1u);
    const Choice asked = calls.choices[0];
    EXPECT_EQ(asked.window, nullptr);
    EXPECT_EQ(asked.flags, 3u) << "key frames and data rate may be chosen, too";
    EXPECT_EQ(asked.width, kWidth);
    EXPECT_EQ(asked.height, kHeight);
    EXPECT_EQ(asked.size, 96);
    EXPECT_EQ(asked.flagsOfRecord, 1u);
    EXPECT_EQ(asked.type, mmioFOURCC('D', 'I', 'B', ' '));
    EXPECT_EQ(asked.quality, -1);
    EXPECT_EQ(run({0, 1}), 0u);
    EXPECT_EQ(calls.choicesFreed, 0) << "it holds until there is another";

    ASSERT_EQ(add("c.avi"), 0u);
    EXPECT_EQ(calls.choices.size(), 2u) << "the next recording";
    EXPECT_EQ(calls.choicesFreed, 1) << "the earlier choice";
    EXPECT_EQ(run({0}), 0u);

    calls.chosen = FALSE;
    EXPECT_EQ(add("d.avi"), 0xE000000Du);
    EXPECT_EQ(calls.choices.size(), 3u);
    EXPECT_EQ(calls.filesOpen, 0);
    writer.reset();
    EXPECT_EQ(calls.choicesFreed, static_cast<int>(calls.choices.size()));
}

TEST_F(CodecCalls, TheLibraryIsHeldReadyForAsLongAsThereIsAWriter) {
    EXPECT_EQ(calls.inits, 1);
    EXPECT_EQ(calls.exits, 0);
    writer.reset();
    EXPECT_EQ(calls.inits, 1);
    EXPECT_EQ(calls.exits, 1);
}

}  // namespace
}  // namespace tavra::test
