// Movies through FFmpeg's encoders, read back with its reader.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <numeric>
#include <random>

#include "media/movie/avi_file_vfw.h"
#include "media/movie/smf_builder.h"
#include "media/movie/smf_converter.h"
#include "support/ffmpeg_reader.h"
#include "support/movie_files_double.h"
#include "support/temp_folder.h"
#include "tavra/tavra_host.h"

namespace {

bool librariesAreMissing = false;

}  // namespace

// The linker sends the loading of libraries here (--wrap).
extern "C" {
void* __real_dlopen(const char*, int);
void* __wrap_dlopen(const char*, int);

void* __wrap_dlopen(const char* name, int mode) {
    const bool ffmpeg = name != nullptr && std::string_view(name).starts_with("libav");
    return librariesAreMissing && ffmpeg ? nullptr : __real_dlopen(name, mode);
}
}

namespace tavra::test {
namespace {

using movie::CAVIFile;
using movie::CAVIFileVFW;
using movie::FrameBuffer;
using movie::PointerQueue;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kMissing = 0xE000000A;
constexpr std::uint32_t kRefuses = 0xE000000B;
constexpr std::uint32_t kNoFile = 0xE000000C;
constexpr std::uint32_t kCancelled = 0xE000000D;

constexpr std::uint32_t fourcc(const char (&name)[5]) {
    std::uint32_t code = 0;
    for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<std::uint8_t>(name[i]);
    return code;
}

// Frames as they lie in a recorder's buffer: rows from the bottom up, filled up to four bytes.
struct Picture {
    std::uint32_t width, height, bits;

    std::uint32_t stride() const { return (width * bits / 8 + 3) / 4 * 4; }
    std::uint32_t bytes() const { return stride() * height; }

    // The colour of a pixel, counted from the top: noise, or something smooth that a codec likes.
    template <typename Color>
    Bytes draw(Color color) const {
        Bytes image(bytes(), 0xA5);
        for (std::uint32_t y = 0; y < height; ++y) {
            std::uint8_t* const row = image.data() + std::size_t{height - 1 - y} * stride();
            for (std::uint32_t x = 0; x < width; ++x) {
                for (std::uint32_t c = 0; c < bits / 8; ++c) row[x * (bits / 8) + c] = color(x, y, c);
            }
        }
        return image;
    }
    Bytes noise(std::uint32_t seed) const {
        std::minstd_rand random(seed + 1);
        return draw([&](auto, auto, auto) { return static_cast<std::uint8_t>(random() >> 8); });
    }
    Bytes smooth(std::uint32_t shift) const {
        return draw([&](std::uint32_t x, std::uint32_t y, std::uint32_t c) {
            return static_cast<std::uint8_t>(128 + 90 * std::sin((x + 2.0 * shift) / 40.0 + c) *
                                                       std::cos(y / 30.0));
        });
    }
    // The same from the top, in three bytes, nothing between the rows.
    Bytes asRead(const Bytes& image) const {
        Bytes result;
        for (std::uint32_t y = 0; y < height; ++y) {
            const std::uint8_t* const row = image.data() + std::size_t{height - 1 - y} * stride();
            for (std::uint32_t x = 0; x < width; ++x) {
                for (std::uint32_t c = 0; c < 3; ++c) result.push_back(bits == 8 ? row[x] : row[3 * x + c]);
            }
        }
        return result;
    }
};

double meanSquareError(const Bytes& a, const Bytes& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += std::pow(a[i] - b[i], 2);
    return sum / static_cast<double>(a.size());
}

class OpenWriter final : public CAVIFileVFW {
  public:
    using CAVIFileVFW::CAVIFileVFW;
    ~OpenWriter() override { Stop(); }
    std::uint64_t position() const { return position_; }
    std::uint64_t projectedSize() const { return projectedSize_; }
};

struct CodecWriterTest : testing::Test {
    TempFolder folder;
    MovieFilesDouble noFiles;
    PointerQueue<FrameBuffer> filled, free;
    std::deque<FrameBuffer> buffers;
    Picture picture{64, 48, 24};

    CodecWriterTest() { silenceFfmpeg(); }
    ~CodecWriterTest() override { TavraHost_SetCodecChooser(nullptr, nullptr); }

    std::u16string name(const char* file) const { return wideName(folder / file); }

    void prepare(CAVIFile& writer, std::uint32_t compressor) {
        writer.filledFrames = &filled;
        writer.freeFrames = &free;
        writer.SetCompressor(compressor);
        writer.settings.rate = 30;
        writer.settings.rowStride = picture.stride();
        writer.settings.imageBytes = picture.bytes();
        writer.settings.image = movie::ImageDescription::of(picture.width, picture.height, picture.stride(),
                                                            static_cast<std::uint16_t>(picture.bits));
    }
    void fill(std::uint32_t position, const Bytes& image) {
        FrameBuffer& frame = buffers.emplace_back();
        ASSERT_TRUE(frame.allocate(image.size()).ok());
        std::copy(image.begin(), image.end(), frame.image());
        frame.position = position;
        filled.push(&frame);
    }
    // What is filled goes to the files that have been added.
    static Status run(CAVIFile& writer) {
        EXPECT_TRUE(writer.Start().ok());
        writer.Stop();
        return writer.result();
    }
    // A movie of one file with these frames at positions from 0.
    void record(std::uint32_t compressor, const std::vector<Bytes>& images, std::uint32_t quality = 75) {
        const auto writer = movie::makeCodecWriter(noFiles);
        ASSERT_NE(writer, nullptr);
        prepare(*writer, compressor);
        writer->settings.quality = quality;
        ASSERT_EQ(writer->addFile(name("a.avi")).code(), 0u);
        std::uint32_t position = 0;
        for (const Bytes& image : images) fill(position++, image);
        EXPECT_EQ(run(*writer).code(), 0u);
        EXPECT_EQ(filled.size(), 0u);
    }
    ReadMovie read(const char* file = "a.avi") const {
        std::optional<ReadMovie> found = readMovie(folder / file);
        EXPECT_TRUE(found) << file;
        return found.value_or(ReadMovie());
    }
};

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

TEST_F(CodecWriterTest, ASkippedFrameKeepsItsPlace) {
    const auto writer = movie::makeCodecWriter(noFiles);
    prepare(*writer, fourcc("FFV1"));
    ASSERT_TRUE(writer->addFile(name("a.avi")).ok());
    for (const std::uint32_t position : {10u, 13u, 14u}) fill(position, picture.noise(position));
    EXPECT_TRUE(run(*writer).ok());
    const ReadMovie movie = read();
    EXPECT_EQ(movie.frameCount, 5);
    ASSERT_EQ(movie.frames.size(), 3u);
    const std::uint32_t positions[] = {0, 3, 4};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(movie.frames[i].position, positions[i]);
        EXPECT_EQ(movie.frames[i].pixels, picture.asRead(picture.noise(10 + positions[i])));
    }
}

// FFmpeg would fill the gap with empty frames, 24 bytes each with their entries.
TEST_F(CodecWriterTest, AGapThatTwoGibibytesDoNotHoldEndsTheFile) {
    constexpr std::uint32_t kTooFar = 0x80000000 / 24;
    for (const bool another : {false, true}) {
        while (filled.pop() != nullptr) {  // what the turn before has left
        }
        const auto writer = movie::makeCodecWriter(noFiles);
        prepare(*writer, fourcc("FFV1"));
        writer->settings.framesPerFile = 0xFFFFFFFF;
        ASSERT_TRUE(writer->addFile(name("a.avi")).ok());
        ASSERT_TRUE(!another || writer->addFile(name("b.avi")).ok());
        for (const std::uint32_t position : {7u, 8u, 7 + kTooFar, 8 + kTooFar}) {
            fill(position, picture.noise(position));
        }
        EXPECT_EQ(run(*writer).code(), another ? 0u : 223u);
        const ReadMovie first = read("a.avi");
        EXPECT_EQ(first.frameCount, 2);
        ASSERT_EQ(first.frames.size(), 2u);
        EXPECT_EQ(first.frames[1].pixels, picture.asRead(picture.noise(8)));
        if (!another) continue;
        const ReadMovie second = read("b.avi");
        ASSERT_EQ(second.frames.size(), 2u);
        EXPECT_EQ(second.frames[0].pixels, picture.asRead(picture.noise(7 + kTooFar)));
        EXPECT_EQ(second.frames[1].position, 1);
    }
}

TEST_F(CodecWriterTest, AFrameThatDoesNotAdvanceIsTheNext) {
    const auto writer = movie::makeCodecWriter(noFiles);
    prepare(*writer, fourcc("FFV1"));
    ASSERT_TRUE(writer->addFile(name("a.avi")).ok());
    const std::uint32_t positions[] = {5, 5, 6, 9, 7, 9, 11};
    const std::int64_t places[] = {0, 1, 2, 4, 5, 6, 7};
    for (std::uint32_t i = 0; i < 7; ++i) fill(positions[i], picture.noise(i));
    EXPECT_TRUE(run(*writer).ok());
    const ReadMovie movie = read();
    EXPECT_EQ(movie.frameCount, 8);
    ASSERT_EQ(movie.frames.size(), 7u);
    for (std::uint32_t i = 0; i < 7; ++i) {
        EXPECT_EQ(movie.frames[i].position, places[i]) << i;
        EXPECT_EQ(movie.frames[i].pixels, picture.asRead(picture.noise(i))) << i;
    }
}

TEST_F(CodecWriterTest, AMovieWhoseNumbersRepeatOrFallIsDevelopedWhole) {
    SmfBuilder builder(36, 17, 8);
    const std::uint32_t numbers[] = {0, 0, 1, 1, 6, 3, 4, 8};
    std::vector<Bytes> images;
    for (std::uint32_t i = 0; i < 8; ++i) {
        images.push_back(Bytes(36 * 17, static_cast<std::uint8_t>(20 * i)));
        builder.addFrame(numbers[i], 1, images[i]);
    }
    builder.put32(40, fourcc("FFV1"));
    builder.write(folder / "a.smf");
    movie::CReadSMF source;
    ASSERT_TRUE(source.open(name("a.smf")).ok());
    EXPECT_TRUE(movie::convertSmf(source, {name("a.avi"), 0, nullptr, nullptr, nullptr}).ok());
    const ReadMovie movie = read();
    const std::int64_t places[] = {0, 1, 2, 3, 6, 7, 8, 9};
    EXPECT_EQ(movie.frameCount, 10);
    ASSERT_EQ(movie.frames.size(), 8u);
    for (std::uint32_t i = 0; i < 8; ++i) {
        EXPECT_EQ(movie.frames[i].position, places[i]) << i;
        EXPECT_EQ(movie.frames[i].pixels, Bytes(3 * 36 * 17, static_cast<std::uint8_t>(20 * i))) << i;
    }
}

TEST_F(CodecWriterTest, TheRateStandsExactlyInTheFile) {
    for (const std::uint32_t codec : {fourcc("FFV1"), fourcc("XVID")}) {
        const auto writer = movie::makeCodecWriter(noFiles);
        prepare(*writer, codec);
        writer->settings.rate = 48'000'000;
        writer->settings.scale = 1'600'123;
        ASSERT_TRUE(writer->addFile(name("a.avi")).ok());
        fill(0, picture.noise(0));
        fill(1, picture.noise(1));
        EXPECT_TRUE(run(*writer).ok());
        const ReadMovie movie = read();
        EXPECT_EQ(movie.rate, 48'000'000) << std::hex << codec;
        EXPECT_EQ(movie.scale, 1'600'123) << std::hex << codec;
    }
}

TEST_F(CodecWriterTest, TheFramesPerFileHoldForEachFile) {
    const auto writer = movie::makeCodecWriter(noFiles);
    prepare(*writer, fourcc("HFYU"));
    writer->settings.framesPerFile = 2;
    ASSERT_TRUE(writer->addFile(name("a.avi")).ok());
    ASSERT_TRUE(writer->addFile(name("b.avi")).ok());
    for (std::uint32_t i = 0; i < 3; ++i) fill(i, picture.noise(i));
    EXPECT_TRUE(run(*writer).ok());
    EXPECT_EQ(read("a.avi").frames.size(), 2u);
    const ReadMovie second = read("b.avi");
    ASSERT_EQ(second.frames.size(), 1u);
    EXPECT_EQ(second.frames[0].position, 0);
    EXPECT_EQ(second.frames[0].pixels, picture.asRead(picture.noise(2)));
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

TEST_F(CodecWriterTest, AMovieWithoutFramesIsWhole) {
    record(fourcc("FFV1"), {});
    const Bytes file = readFile(folder / "a.avi");
    ASSERT_GT(file.size(), 12u);
    EXPECT_EQ(std::string(file.begin(), file.begin() + 4), "RIFF");
    EXPECT_EQ(file[4] | file[5] << 8 | file[6] << 16 | file[7] << 24, static_cast<int>(file.size()) - 8);
}

TEST_F(CodecWriterTest, AFileThatWasNotBegunIsClosedWithItsWriter) {
    {
        const auto writer = movie::makeCodecWriter(noFiles);
        prepare(*writer, fourcc("FFV1"));
        ASSERT_TRUE(writer->addFile(name("a.avi")).ok());
    }
    EXPECT_GT(readFile(folder / "a.avi").size(), 12u);
}

TEST_F(CodecWriterTest, WhatNothingEncodesLeavesNoFile) {
    const auto writer = movie::makeCodecWriter(noFiles);
    for (const std::uint32_t compressor : {fourcc("zzzz"), fourcc("IV50"), fourcc("YV12"), 1u, 0u}) {
        prepare(*writer, compressor);
        EXPECT_EQ(writer->addFile(name("a.avi")).code(), kMissing) << std::hex << compressor;
    }
    EXPECT_TRUE(folder.isEmpty());
}

TEST_F(CodecWriterTest, AnEncoderThatDoesNotTakeTheFramesLeavesNoFile) {
    const auto writer = movie::makeCodecWriter(noFiles);
    prepare(*writer, fourcc("mpg1"));
    writer->settings.rate = 48'000'000;  // MPEG-1 knows eight rates
    writer->settings.scale = 1'600'123;
    EXPECT_EQ(writer->addFile(name("a.avi")).code(), kRefuses);
    EXPECT_TRUE(folder.isEmpty());
}

TEST_F(CodecWriterTest, NoRateIsNoStream) {
    const auto writer = movie::makeCodecWriter(noFiles);
    prepare(*writer, fourcc("FFV1"));
    writer->settings.rate = 0;
    EXPECT_EQ(writer->addFile(name("a.avi")).code(), 0xE0000009u);
    writer->settings.rate = 1;
    writer->settings.scale = 0;
    EXPECT_EQ(writer->addFile(name("a.avi")).code(), 0xE0000009u);
    EXPECT_TRUE(folder.isEmpty());
}

TEST_F(CodecWriterTest, AFileThatCannotBeOpened) {
    const auto writer = movie::makeCodecWriter(noFiles);
    prepare(*writer, fourcc("FFV1"));
    EXPECT_EQ(writer->addFile(name("missing/a.avi")).code(), kNoFile);
    EXPECT_EQ(writer->addFile(wideName(folder.path())).code(), kNoFile);
}

TEST_F(CodecWriterTest, ADiskThatIsFullFromTheStartTakesNoMovie) {
    std::filesystem::create_symlink("/dev/full", folder / "a.avi");
    const auto writer = movie::makeCodecWriter(noFiles);
    prepare(*writer, fourcc("FFV1"));
    EXPECT_EQ(writer->addFile(name("a.avi")).code(), 112u);
}

// The limit of a file's size stands for a disk that fills up. The header comes to tell of the frames all the
// same, and those that fitted can be read.
TEST_F(CodecWriterTest, ADiskThatFillsUpEndsTheRecordingWithItsCode) {
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    picture = {320, 240, 24};
    const auto writer = movie::makeCodecWriter(noFiles);
    prepare(*writer, fourcc("FFV1"));
    ASSERT_TRUE(writer->addFile(name("a.avi")).ok());
    for (std::uint32_t i = 0; i < 20; ++i) fill(i, picture.noise(i));
    const rlimit limited{picture.bytes() * 4, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    const Status started = writer->Start();
    const bool endedByItself = started.ok() && writer->ended().wait(platform::kWaitForever);
    writer->Stop();
    setrlimit(RLIMIT_FSIZE, &before);
    ASSERT_TRUE(endedByItself);
    EXPECT_EQ(writer->result().code(), 223u);
    EXPECT_GT(filled.size(), 10u);
    const Bytes file = readFile(folder / "a.avi");
    EXPECT_EQ(file.size(), limited.rlim_cur);
    EXPECT_GT(file.at(48), 2) << "frames, in the main header";
}

TEST_F(CodecWriterTest, EveryDescriptorIsClosed) {
    const auto descriptors = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    record(fourcc("FFV1"), {picture.noise(0)});  // the libraries are there now
    const auto before = descriptors();
    {
        const auto writer = movie::makeCodecWriter(noFiles);
        prepare(*writer, fourcc("FFV1"));
        EXPECT_TRUE(writer->addFile(name("b.avi")).ok());
        EXPECT_TRUE(writer->addFile(name("c.avi")).ok());
        EXPECT_FALSE(writer->addFile(name("missing/d.avi")).ok());
        fill(0, picture.noise(0));
        EXPECT_TRUE(run(*writer).ok());
    }
    record(fourcc("FFV1"), {picture.noise(0)});
    EXPECT_EQ(descriptors(), before);
}

// The size is projected from what is written: 2048 bytes of headers, the packets, 24 bytes of index a frame,
// in sectors of 512.
TEST_F(CodecWriterTest, TheProjectedSizeFollowsTheFrames) {
    picture = {33, 17, 24};
    OpenWriter writer{noFiles};
    prepare(writer, fourcc("FFV1"));
    std::unique_ptr<movie::FileRecord> record;
    ASSERT_TRUE(writer.OpenFile(name("a.avi"), record).ok());
    std::vector<std::uint64_t> positions, projections;
    for (const std::uint32_t index : {0u, 1u, 5u}) {
        Bytes image = picture.noise(index);
        image.resize(image.size() + FrameBuffer::kSpareRoom);
        ASSERT_TRUE(writer.WriteFrame(*record, image.data(), index, 0).ok());
        positions.push_back(writer.position());
        projections.push_back(writer.projectedSize());
    }
    EXPECT_TRUE(writer.CloseFile(*record).ok());
    const ReadMovie movie = read();
    ASSERT_EQ(movie.packets.size(), 3u);
    std::uint64_t position = 2048;
    const std::uint64_t entries[] = {1, 2, 6};
    for (std::size_t i = 0; i < 3; ++i) {
        position += (movie.packets[i].size + 1) / 2 * 2;
        EXPECT_EQ(positions[i], position);
        const std::uint64_t projected = position + 8 + entries[i] * 24;
        EXPECT_EQ(projections[i], (projected + 511) / 512 * 512);
    }
}

TEST_F(CodecWriterTest, TheProjectedSizeGrowsWithEveryFrameWhateverItsNumber) {
    OpenWriter writer{noFiles};
    prepare(writer, fourcc("FFV1"));
    std::unique_ptr<movie::FileRecord> record;
    ASSERT_TRUE(writer.OpenFile(name("a.avi"), record).ok());
    std::uint64_t last = 0;
    for (const std::uint32_t index : {0u, 0u, 0u, 3u, 1u, 0u}) {
        Bytes image = picture.noise(index);
        image.resize(image.size() + FrameBuffer::kSpareRoom);
        ASSERT_TRUE(writer.WriteFrame(*record, image.data(), index, 0).ok());
        EXPECT_GT(writer.projectedSize(), last);
        last = writer.projectedSize();
    }
    EXPECT_TRUE(writer.CloseFile(*record).ok());
}

TEST_F(CodecWriterTest, StoresRowsFromTheBottomUpAndEndsAtTwoGibibytes) {
    const auto writer = movie::makeCodecWriter(noFiles);
    EXPECT_TRUE(writer->StoresBottomUp());
    EXPECT_EQ(writer->GetMaxFileSize(), 0x80000000u);
}

// The application's chooser, with what it was asked and what it answers.
struct Question {
    int asked = 0;
    std::uint32_t width = 0, height = 0, bits = 0;
    TavraCodecChoice offered{};
    TavraCodecChoice answer{};
    bool cancels = false;

    static TavraBool ask(void* context, std::uint32_t width, std::uint32_t height, std::uint32_t bitCount,
                         TavraCodecChoice* choice) {
        Question& self = *static_cast<Question*>(context);
        ++self.asked;
        self.width = width;
        self.height = height;
        self.bits = bitCount;
        self.offered = *choice;
        *choice = self.answer;
        return self.cancels ? 0 : 1;
    }
};

struct ChosenCodecTest : CodecWriterTest {
    Question question;
    std::unique_ptr<CAVIFile> writer = movie::makeCodecWriter(noFiles);

    ChosenCodecTest() {
        prepare(*writer, 0xFFFFFFFF);
        TavraHost_SetCodecChooser(&Question::ask, &question);
        question.answer = {fourcc("XVID"), 0xFFFFFFFF, 0, 0};
    }
    std::uintmax_t recordedSize(std::uint32_t frames) {
        EXPECT_TRUE(writer->addFile(name("a.avi")).ok());
        for (std::uint32_t i = 0; i < frames; ++i) fill(i, picture.noise(i));
        EXPECT_TRUE(run(*writer).ok());
        return std::filesystem::file_size(folder / "a.avi");
    }
};

TEST_F(ChosenCodecTest, NobodyToAskIsACancel) {
    TavraHost_SetCodecChooser(nullptr, nullptr);
    EXPECT_EQ(writer->addFile(name("a.avi")).code(), kCancelled);
    EXPECT_TRUE(folder.isEmpty());
}

TEST_F(ChosenCodecTest, AUserMayCancelAndIsAskedAgainNextTime) {
    question.cancels = true;
    EXPECT_EQ(writer->addFile(name("a.avi")).code(), kCancelled);
    EXPECT_TRUE(folder.isEmpty());
    question.cancels = false;
    EXPECT_TRUE(writer->addFile(name("a.avi")).ok());
    EXPECT_EQ(question.asked, 2);
}

TEST_F(ChosenCodecTest, TheFirstFileAsksForAllOfARecording) {
    picture = {34, 18, 8};
    prepare(*writer, 0xFFFFFFFF);
    question.answer.compressor = fourcc("FFV1");
    for (int recording = 1; recording <= 2; ++recording) {
        writer->settings.framesPerFile = 1;
        EXPECT_TRUE(writer->addFile(name("a.avi")).ok());
        EXPECT_TRUE(writer->addFile(name("b.avi")).ok());
        EXPECT_EQ(question.asked, recording);
        fill(0, picture.noise(0));
        fill(1, picture.noise(1));
        EXPECT_TRUE(run(*writer).ok());
        EXPECT_EQ(read("a.avi").fourcc, fourcc("FFV1"));
        EXPECT_EQ(read("b.avi").frames.at(0).pixels, picture.asRead(picture.noise(1)));
    }
    EXPECT_EQ(question.width, 34u);
    EXPECT_EQ(question.height, 18u);
    EXPECT_EQ(question.bits, 8u);
    EXPECT_EQ(question.offered.compressor, 0u);
    EXPECT_EQ(question.offered.quality, 0xFFFFFFFFu);
    EXPECT_EQ(question.offered.keyFrameEvery, 0u);
    EXPECT_EQ(question.offered.dataRate, 0u);
}

TEST_F(ChosenCodecTest, AChosenCodecThatNothingEncodesIsMissing) {
    question.answer.compressor = fourcc("zzzz");
    EXPECT_EQ(writer->addFile(name("a.avi")).code(), kMissing);
    question.answer.compressor = 0;
    EXPECT_EQ(writer->addFile(name("a.avi")).code(), kMissing);
}

TEST_F(ChosenCodecTest, TheChosenQualityCountsOrElseTheRecordings) {
    writer->settings.quality = 90;
    const std::uintmax_t ofRecording = recordedSize(3);
    question.answer.quality = 90;
    EXPECT_EQ(recordedSize(3), ofRecording);
    question.answer.quality = 10;
    EXPECT_LT(recordedSize(3), ofRecording);
}

TEST_F(ChosenCodecTest, KeyFramesComeAsOftenAsChosen) {
    question.answer.keyFrameEvery = 4;
    picture = {64, 64, 24};
    prepare(*writer, 0xFFFFFFFF);
    EXPECT_TRUE(writer->addFile(name("a.avi")).ok());
    for (std::uint32_t i = 0; i < 10; ++i) fill(i, picture.smooth(0));
    EXPECT_TRUE(run(*writer).ok());
    std::vector<std::int64_t> keys;
    for (const ReadMovie::Packet& packet : read().packets) {
        if (packet.key) keys.push_back(packet.position);
    }
    EXPECT_EQ(keys, (std::vector<std::int64_t>{0, 4, 8}));
}

TEST_F(ChosenCodecTest, ADataRateTakesThePlaceOfTheQuality) {
    question.answer.dataRate = 20'000;
    const std::uintmax_t low = recordedSize(60);
    question.answer.dataRate = 200'000;
    EXPECT_GT(recordedSize(60), low);
}

// In a process of its own, because libraries once loaded stay.
TEST(CodecWriterDeathTest, WithoutTheLibrariesThereIsNoCodecAndTheNextRecordingLooksAgain) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto look = [] {
        const TempFolder folder;
        MovieFilesDouble noFiles;
        const auto writer = movie::makeCodecWriter(noFiles);
        writer->SetCompressor(fourcc("FFV1"));
        writer->settings.image = movie::ImageDescription::of(16, 16, 48, 24);
        librariesAreMissing = true;
        const std::uint32_t missing = writer->addFile(wideName(folder / "a.avi")).code();
        const bool nothingWritten = folder.isEmpty();
        librariesAreMissing = false;
        const bool found = writer->addFile(wideName(folder / "a.avi")).ok();
        std::exit(missing == kMissing && nothingWritten && found ? 0 : 1);
    };
    EXPECT_EXIT(look(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tavra::test
