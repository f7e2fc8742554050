#include "platform/codec_movie.h"

#include <windows.h>
// Behind windows.h:
#include <vfw.h>

#include <algorithm>
#include <utility>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

constexpr DWORD kDeviceIndependentBitmap = mmioFOURCC('D', 'I', 'B', ' ');
constexpr DWORD kDefaultQuality = 0xFFFFFFFF;
constexpr DWORD kQualityUnits = 100;       // a codec's quality goes to 10,000
constexpr DWORD kBytesPerKilobyte = 1024;  // a choice's data rate is in kilobytes a second

// The description of the frames, which the framework's calls take without const.
void* mutableHeader(BitmapHeader image) {
    return const_cast<std::uint8_t*>(image.data());
}

const BITMAPINFOHEADER& headerOf(BitmapHeader image) {
    return *reinterpret_cast<const BITMAPINFOHEADER*>(image.data());
}

// The failures of a file that have a code of ours; any other is told as it is.
Status fileFailure(HRESULT result) {
    if (result == static_cast<HRESULT>(AVIERR_MEMORY)) return failWith(error::kOutOfMemory);
    if (result == static_cast<HRESULT>(AVIERR_FILEOPEN)) return failWith(error::kCodecFile);
    return failWith(static_cast<std::uint32_t>(result));
}

Status compressorFailure(HRESULT result) {
    switch (static_cast<std::uint32_t>(result)) {
        case static_cast<std::uint32_t>(AVIERR_UNSUPPORTED): return failWith(error::kCodecRefuses);
        case static_cast<std::uint32_t>(AVIERR_MEMORY): return failWith(error::kOutOfMemory);
        case static_cast<std::uint32_t>(AVIERR_NOCOMPRESSOR): return failWith(error::kCodecMissing);
        default: return failWith(error::kFileStream);
    }
}

AVISTREAMINFOW streamInfo(const CodecMovieSettings& settings) {
    const BITMAPINFOHEADER& header = headerOf(settings.image);
    AVISTREAMINFOW info{};
    info.fccType = streamtypeVIDEO;
    info.fccHandler = kDeviceIndependentBitmap;
    info.dwScale = settings.scale;
    info.dwRate = settings.rate;
    info.dwLength = settings.frames;
    info.dwQuality = kDefaultQuality;
    info.rcFrame.right = header.biWidth;
    info.rcFrame.bottom = header.biHeight;
    return info;
}

AVICOMPRESSOPTIONS plainOptions(const CodecMovieSettings& settings) {
    AVICOMPRESSOPTIONS options{};
    options.fccType = streamtypeVIDEO;
    options.fccHandler = settings.compressor;
    options.dwQuality = settings.quality * kQualityUnits;
    options.dwFlags = AVICOMPRESSF_VALID;
    return options;
}

AVICOMPRESSOPTIONS chosenOptions(const COMPVARS& choice) {
    AVICOMPRESSOPTIONS options{};
    options.fccType = streamtypeVIDEO;
    options.fccHandler = choice.fccHandler;
    options.dwKeyFrameEvery = static_cast<DWORD>(choice.lKey);
    options.dwQuality = static_cast<DWORD>(choice.lQ);
    options.dwBytesPerSecond = static_cast<DWORD>(choice.lDataRate) * kBytesPerKilobyte;
    if (choice.lDataRate > 0) options.dwFlags |= AVICOMPRESSF_DATARATE;
    if (choice.lKey > 0) options.dwFlags |= AVICOMPRESSF_KEYFRAMES;
    if (choice.lpbiOut != nullptr) {
        options.lpFormat = choice.lpbiOut;
        options.cbFormat = choice.lpbiOut->bmiHeader.biSize +
                           choice.lpbiOut->bmiHeader.biClrUsed * static_cast<DWORD>(sizeof(RGBQUAD));
    }
    options.lpParms = choice.lpState;
    options.cbParms = static_cast<DWORD>(choice.cbState);
    return options;
}

}  // namespace

CodecFramework::CodecFramework() {
    AVIFileInit();
}

CodecFramework::~CodecFramework() {
    AVIFileExit();
}

struct CodecChoice::Native {
    COMPVARS choice{};

    Native() {
        choice.cbSize = sizeof choice;
        choice.dwFlags = ICMF_COMPVARS_VALID;
        choice.fccType = kDeviceIndependentBitmap;
        choice.lQ = static_cast<LONG>(kDefaultQuality);
    }
    ~Native() { ICCompressorFree(&choice); }
    Native(const Native&) = delete;
    Native& operator=(const Native&) = delete;
};

CodecChoice::CodecChoice() = default;
CodecChoice::~CodecChoice() = default;

Status CodecChoice::ask(BitmapHeader frames) {
    native_.reset();
    auto asked = std::make_unique<Native>();
    if (!ICCompressorChoose(nullptr, ICMF_CHOOSE_KEYFRAME | ICMF_CHOOSE_DATARATE, mutableHeader(frames),
                            nullptr, &asked->choice, nullptr)) {
        return failWith(error::kCodecCancelled);
    }
    native_ = std::move(asked);
    return {};
}

struct CodecMovie::Native {
    PAVIFILE file = nullptr;
    PAVISTREAM stream = nullptr;
    PAVISTREAM compressed = nullptr;  // null: the stream takes the frames as they are
    Status failure;
    bool compresses = false;

    ~Native() {
        if (compressed != nullptr) AVIStreamRelease(compressed);
        if (stream != nullptr) AVIStreamRelease(stream);
        if (file != nullptr) AVIFileRelease(file);
    }

    PAVISTREAM target() const { return compressed != nullptr ? compressed : stream; }

    Status open(const std::u16string& name, const CodecMovieSettings& settings) {
        const HRESULT opened = AVIFileOpenW(&file, reinterpret_cast<const wchar_t*>(name.c_str()),
                                            OF_WRITE | OF_CREATE, nullptr);
        if (opened != AVIERR_OK) return fileFailure(opened);
        AVISTREAMINFOW info = streamInfo(settings);
        if (AVIFileCreateStreamW(file, &stream, &info) != AVIERR_OK) return failWith(error::kFileStream);
        TAVRA_RETURN_IF_ERROR(compress(settings));
        const HRESULT formatted = AVIStreamSetFormat(target(), 0, mutableHeader(settings.image),
                                                     static_cast<LONG>(settings.image.size()));
        return formatted == AVIERR_OK ? Status() : failWith(error::kFileStream);
    }

    Status compress(const CodecMovieSettings& settings) {
        const bool chosen = settings.choice != nullptr;
        if (!chosen && settings.compressor == 0) return {};
        AVICOMPRESSOPTIONS options =
            chosen ? chosenOptions(settings.choice->native_->choice) : plainOptions(settings);
        const HRESULT made = AVIMakeCompressedStream(&compressed, stream, &options, nullptr);
        compresses = options.fccHandler != kDeviceIndependentBitmap;
        return made == AVIERR_OK ? Status() : compressorFailure(made);
    }
};

CodecMovie::CodecMovie() = default;
CodecMovie::~CodecMovie() = default;

Status CodecMovie::open(const std::u16string& name, const CodecMovieSettings& settings) {
    auto opened = std::make_unique<Native>();
    TAVRA_RETURN_IF_ERROR(opened->open(name, settings));
    native_ = std::move(opened);
    return {};
}

Status CodecMovie::write(std::uint32_t index, const std::uint8_t* image, std::size_t size,
                         std::uint32_t& written) {
    LONG samples = 0, bytes = 0;
    const HRESULT result =
        AVIStreamWrite(native_->target(), static_cast<LONG>(index), 1, const_cast<std::uint8_t*>(image),
                       static_cast<LONG>(size), AVIIF_KEYFRAME, &samples, &bytes);
    // Wine gives the two figures of a compressed stream the other way round; a sample has a byte at least.
    written = static_cast<std::uint32_t>(std::max(samples, bytes));
    if (result == AVIERR_OK) return {};
    const Status failure = failWith(static_cast<std::uint32_t>(result));
    if (native_->failure.ok()) native_->failure = failure;
    return failure;
}

bool CodecMovie::isCompressed() const {
    return native_->compresses;
}

Status CodecMovie::close() {
    if (!native_) return {};
    const Status result = native_->failure;
    native_.reset();
    return result;
}

}  // namespace tavra::platform
