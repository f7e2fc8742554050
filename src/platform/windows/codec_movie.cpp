#include "platform/codec_movie.h"

#include <algorithm>
#include <utility>

#include "platform/last_error.h"
#include "platform/windows/codec_options.h"

namespace tavra::platform {

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
        if (opened != AVIERR_OK) return codecFileFailure(opened);
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
