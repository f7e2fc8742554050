// What Video for Windows is told of a movie, and what its failures mean.
#include "platform/windows/codec_options.h"

#include <gtest/gtest.h>

#include <vector>

#include "media/movie/image_description.h"
#include "platform/last_error.h"

namespace tavra::platform {
namespace {

struct Row {
    std::uint32_t result, code;
};

TEST(CodecFailure, OfAFileHasACodeOrIsToldAsItIs) {
    for (const Row& row : {Row{0x80044067, 8},
                           {0x8004406F, 0xE000000C},
                           {0x80044065, 0x80044065},
                           {0x80044071, 0x80044071},
                           {0x80040154, 0x80040154},
                           {0x8007000E, 0x8007000E}}) {
        EXPECT_EQ(codecFileFailure(static_cast<HRESULT>(row.result)).code(), row.code)
            << std::hex << row.result;
        EXPECT_EQ(lastSystemError(), row.code);
    }
}

TEST(CodecFailure, OfACompressorAlwaysHasACode) {
    for (const Row& row : {Row{0x80044065, 0xE000000B},
                           {0x80044067, 8},
                           {0x80044071, 0xE000000A},
                           {0x8004406F, 0xE0000009},
                           {0x80004005, 0xE0000009}}) {
        EXPECT_EQ(compressorFailure(static_cast<HRESULT>(row.result)).code(), row.code)
            << std::hex << row.result;
        EXPECT_EQ(lastSystemError(), row.code);
    }
}

TEST(CodecOptions, DescribeTheStream) {
    const auto image = movie::ImageDescription::of(640, 480, 1920, 24);
    const CodecMovieSettings settings{
        .rate = 24000000,
        .scale = 800000,
        .frames = 77,
        .image = BitmapHeader(reinterpret_cast<const std::uint8_t*>(&image), image.usedBytes())};
    const AVISTREAMINFOW info = streamInfo(settings);
    EXPECT_EQ(info.fccType, mmioFOURCC('v', 'i', 'd', 's'));
    EXPECT_EQ(info.fccHandler, mmioFOURCC('D', 'I', 'B', ' '));
    EXPECT_EQ(info.dwRate, 24000000u);
    EXPECT_EQ(info.dwScale, 800000u);
    EXPECT_EQ(info.dwLength, 77u);
    EXPECT_EQ(info.dwQuality, 0xFFFFFFFFu);
    EXPECT_EQ(info.rcFrame.left, 0);
    EXPECT_EQ(info.rcFrame.top, 0);
    EXPECT_EQ(info.rcFrame.right, 640);
    EXPECT_EQ(info.rcFrame.bottom, 480);
}

TEST(CodecOptions, OfAFourCharacterCodeAreItselfAndTheQuality) {
    CodecMovieSettings settings;
    settings.compressor = mmioFOURCC('T', 'v', 'T', '1');
    settings.quality = 63;
    const AVICOMPRESSOPTIONS options = plainOptions(settings);
    EXPECT_EQ(options.fccType, mmioFOURCC('v', 'i', 'd', 's'));
    EXPECT_EQ(options.fccHandler, mmioFOURCC('T', 'v', 'T', '1'));
    EXPECT_EQ(options.dwQuality, 6300u);
    EXPECT_EQ(options.dwFlags, 8u);
    EXPECT_EQ(options.dwKeyFrameEvery, 0u);
    EXPECT_EQ(options.dwBytesPerSecond, 0u);
    EXPECT_EQ(options.lpFormat, nullptr);
    EXPECT_EQ(options.lpParms, nullptr);
}

TEST(CodecOptions, OfAChoiceAreTheChoices) {
    BITMAPINFO format{};
    format.bmiHeader.biSize = 40;
    format.bmiHeader.biClrUsed = 3;
    std::uint8_t state[5] = {1, 2, 3, 4, 5};
    COMPVARS choice{};
    choice.fccHandler = mmioFOURCC('T', 'v', 'T', '1');
    choice.lQ = 8100;
    choice.lKey = 15;
    choice.lDataRate = 300;  // kilobytes a second
    choice.lpbiOut = &format;
    choice.lpState = state;
    choice.cbState = 5;
    const AVICOMPRESSOPTIONS options = chosenOptions(choice);
    EXPECT_EQ(options.fccType, mmioFOURCC('v', 'i', 'd', 's'));
    EXPECT_EQ(options.fccHandler, mmioFOURCC('T', 'v', 'T', '1'));
    EXPECT_EQ(options.dwKeyFrameEvery, 15u);
    EXPECT_EQ(options.dwQuality, 8100u);
    EXPECT_EQ(options.dwBytesPerSecond, 300u * 1024);
    EXPECT_EQ(options.lpFormat, &format);
    EXPECT_EQ(options.cbFormat, 40u + 3 * 4);
    EXPECT_EQ(options.lpParms, state);
    EXPECT_EQ(options.cbParms, 5u);
    EXPECT_EQ(options.dwFlags, 2u | 4u);
}

TEST(CodecOptions, OfAChoiceFlagWhatIsChosenAlone) {
    const auto flags = [](LONG dataRate, LONG keyRate) {
        COMPVARS choice{};
        choice.lDataRate = dataRate;
        choice.lKey = keyRate;
        return chosenOptions(choice).dwFlags;
    };
    EXPECT_EQ(flags(0, 0), 0u);
    EXPECT_EQ(flags(1, 0), 2u);
    EXPECT_EQ(flags(0, 1), 4u);
    COMPVARS nothing{};
    EXPECT_EQ(chosenOptions(nothing).lpFormat, nullptr);
    EXPECT_EQ(chosenOptions(nothing).cbFormat, 0u);
}

}  // namespace
}  // namespace tavra::platform
