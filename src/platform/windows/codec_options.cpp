#include "platform/windows/codec_options.h"

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

constexpr DWORD kQualityUnits = 100;       // a codec's quality goes to 10,000
constexpr DWORD kBytesPerKilobyte = 1024;  // a choice's data rate is in kilobytes a second

const BITMAPINFOHEADER& headerOf(BitmapHeader image) {
    return *reinterpret_cast<const BITMAPINFOHEADER*>(image.data());
}

}  // namespace

void* mutableHeader(BitmapHeader image) {
    return const_cast<std::uint8_t*>(image.data());
}

Status codecFileFailure(HRESULT result) {
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

}  // namespace tavra::platform
