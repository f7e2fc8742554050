// Movies that FFmpeg's encoders cannot write: nothing that encodes, no place for the file, a full disk.
#include <dlfcn.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "media/movie/linux/codec_writer_fixture.h"

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

constexpr std::uint32_t kNoFile = 0xE000000C;

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
