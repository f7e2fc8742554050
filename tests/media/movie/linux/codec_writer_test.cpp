// Which frame stands where in a movie of FFmpeg's encoders, and what becomes of its files.
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>

#include "media/movie/linux/codec_writer_fixture.h"
#include "media/movie/smf_builder.h"
#include "media/movie/smf_converter.h"

namespace tavra::test {
namespace {

using movie::CAVIFileVFW;

class OpenWriter final : public CAVIFileVFW {
  public:
    using CAVIFileVFW::CAVIFileVFW;
    ~OpenWriter() override { Stop(); }
    std::uint64_t position() const { return position_; }
    std::uint64_t projectedSize() const { return projectedSize_; }
};

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

}  // namespace
}  // namespace tavra::test
