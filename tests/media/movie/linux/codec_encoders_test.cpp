// What each of FFmpeg's encoders makes of the pixels.
#include <cmath>
#include <filesystem>

#include "media/movie/linux/codec_writer_fixture.h"

namespace tavra::test {
namespace {

double meanSquareError(const Bytes& a, const Bytes& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += std::pow(a[i] - b[i], 2);
    return sum / static_cast<double>(a.size());
}

struct Lossless {
    const char* name;
    std::uint32_t compressor;
    Picture picture;
};

class LosslessCodec : public testing::WithParamInterface<Lossless>, public CodecWriterTest {};

TEST_P(LosslessCodec, GivesBackEveryPixel) {
    picture = GetParam().picture;
    std::vector<Bytes> images;
    for (std::uint32_t i = 0; i < 5; ++i) images.push_back(i % 2 == 0 ? picture.noise(i) : picture.smooth(i));
    record(GetParam().compressor, images);
    const ReadMovie movie = read();
    EXPECT_EQ(movie.width, static_cast<int>(picture.width));
    EXPECT_EQ(movie.height, static_cast<int>(picture.height));
    EXPECT_EQ(movie.fourcc, GetParam().compressor);
    EXPECT_EQ(movie.rate, 30);
    EXPECT_EQ(movie.scale, 1);
    EXPECT_EQ(movie.frameCount, 5);
    ASSERT_EQ(movie.frames.size(), images.size());
    for (std::size_t i = 0; i < images.size(); ++i) {
        EXPECT_EQ(movie.frames[i].pixels, picture.asRead(images[i])) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Codecs, LosslessCodec,
                         testing::Values(Lossless{"Huffyuv", fourcc("HFYU"), {64, 48, 24}},
                                         Lossless{"HuffyuvOdd", fourcc("HFYU"), {33, 17, 24}},
                                         Lossless{"HuffyuvGray", fourcc("HFYU"), {34, 17, 8}},
                                         Lossless{"Ffv1", fourcc("FFV1"), {64, 48, 24}},
                                         Lossless{"Ffv1Odd", fourcc("FFV1"), {33, 17, 24}},
                                         Lossless{"Ffv1Gray", fourcc("FFV1"), {33, 17, 8}},
                                         Lossless{"Ffv1OneRow", fourcc("FFV1"), {16, 1, 24}},
                                         Lossless{"RawGray", fourcc("Y800"), {36, 17, 8}},
                                         Lossless{"Png", fourcc("MPNG"), {35, 20, 24}}),
                         [](const auto& test) { return std::string(test.param.name); });

struct Lossy {
    const char* name;
    std::uint32_t compressor;
    const char* codec;
    Picture picture;
};

class LossyCodec : public testing::WithParamInterface<Lossy>, public CodecWriterTest {};

TEST_P(LossyCodec, FollowsTheQualityInSizeAndInError) {
    picture = GetParam().picture;
    std::vector<Bytes> images;
    for (std::uint32_t i = 0; i < 12; ++i) images.push_back(picture.smooth(i));
    std::uintmax_t sizeBefore = 0;
    double errorBefore = 65025;
    for (const std::uint32_t quality : {0u, 60u, 100u}) {
        record(GetParam().compressor, images, quality);
        const ReadMovie movie = read();
        EXPECT_EQ(movie.codec, GetParam().codec);
        EXPECT_EQ(movie.fourcc, GetParam().compressor);
        EXPECT_EQ(movie.frameCount, 12);
        ASSERT_EQ(movie.frames.size(), images.size());
        double error = 0;
        for (std::size_t i = 0; i < images.size(); ++i) {
            error = std::max(error, meanSquareError(movie.frames[i].pixels, picture.asRead(images[i])));
            EXPECT_EQ(movie.frames[i].position, static_cast<std::int64_t>(i));
        }
        const std::uintmax_t size = std::filesystem::file_size(folder / "a.avi");
        EXPECT_GT(size, sizeBefore) << quality;
        EXPECT_LT(error, errorBefore) << quality;
        sizeBefore = size;
        errorBefore = error;
    }
    EXPECT_LT(errorBefore, 6.5) << "40 dB at the finest";
}

INSTANTIATE_TEST_SUITE_P(Codecs, LossyCodec,
                         testing::Values(Lossy{"Mpeg4", fourcc("XVID"), "mpeg4", {320, 240, 24}},
                                         Lossy{"MotionJpeg", fourcc("MJPG"), "mjpeg", {320, 240, 24}},
                                         Lossy{"MotionJpegGray", fourcc("MJPG"), "mjpeg", {161, 121, 8}}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(CodecWriterTest, H264WhereItIsInstalled) {
    picture = {320, 240, 24};
    std::vector<Bytes> images;
    for (std::uint32_t i = 0; i < 70; ++i) images.push_back(picture.smooth(i));
    const auto writer = movie::makeCodecWriter(noFiles);
    prepare(*writer, fourcc("H264"));
    const Status opened = writer->addFile(name("a.avi"));
    if (opened.code() == kMissing || opened.code() == kRefuses) GTEST_SKIP() << "no encoder for it here";
    ASSERT_TRUE(opened.ok());
    for (std::uint32_t i = 0; i < 70; ++i) fill(i, images[i]);
    EXPECT_TRUE(run(*writer).ok());
    const ReadMovie movie = read();
    EXPECT_EQ(movie.codec, "h264");
    ASSERT_EQ(movie.frames.size(), 70u) << "those that the encoder held to the end as well";
    for (std::size_t i = 0; i < images.size(); ++i) {
        EXPECT_LT(meanSquareError(movie.frames[i].pixels, picture.asRead(images[i])), 20.0) << i;
    }
}

TEST_F(CodecWriterTest, RedAndBlueOfAnRgbImageChangePlaces) {
    const auto writer = movie::makeCodecWriter(noFiles);
    prepare(*writer, fourcc("FFV1"));
    writer->settings.swapRedBlue = true;
    ASSERT_TRUE(writer->addFile(name("a.avi")).ok());
    const Bytes image = picture.noise(0);
    fill(0, image);
    EXPECT_TRUE(run(*writer).ok());
    Bytes expected = picture.asRead(image);
    for (std::size_t i = 0; i < expected.size(); i += 3) std::swap(expected[i], expected[i + 2]);
    EXPECT_EQ(read().frames.at(0).pixels, expected);
}

}  // namespace
}  // namespace tavra::test
