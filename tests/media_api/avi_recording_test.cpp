// Finished images from the stream into AVI files, read back.
#include <tuple>
#include <utility>

#include "media_api/avi_recording_fixture.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kNoSuchCodec = 'z' | 'z' << 8 | 'z' << 16 | 'z' << 24;
constexpr std::uint32_t kSkipped = 0x80000000;

constexpr std::uint32_t kWidth = 10, kHeight = 6;

struct Form {
    std::uint32_t previewFormat = 4;
    std::uint8_t rotation = 0;
    std::uint32_t priority = 0;  // 1: AVI 2.0
    std::uint8_t frameSize = 0;
    std::uint32_t compressor = 0;
};

class AviRecording : public AviRecordingTest {
  protected:
    PlainAvi recordMovie(const Form& form, const std::vector<std::uint32_t>& numbers) {
        openCamera(1, form.previewFormat == 1 ? 1 : 5, kWidth, kHeight);
        EXPECT_EQ(Tavra_SetPreviewPixelFormat(handle, form.previewFormat), 1);
        EXPECT_EQ(Tavra_SetRotationMode(handle, form.rotation), 1);
        EXPECT_EQ(Tavra_SetAVIPriorityFileFormat(handle, form.priority), 1);
        EXPECT_EQ(Tavra_SetAVIFrameSize(handle, form.frameSize), 1);
        return recordImages(numbers, form.compressor);
    }
};

class AviPictures
    : public AviRecording,
      public testing::WithParamInterface<std::tuple<std::uint32_t, std::uint8_t, std::uint32_t>> {};

TEST_P(AviPictures, AreThePreviewsPixelForPixel) {
    const auto [format, rotation, priority] = GetParam();
    const PlainAvi movie =
        recordMovie({.previewFormat = format, .rotation = rotation, .priority = priority}, {5, 6, 9});
    const std::uint32_t width = rotation == 1 ? kHeight : kWidth;
    const std::uint32_t pixel = format == 1 ? 1 : 3;
    EXPECT_EQ(movie.isAvi2(), priority == 1);
    EXPECT_EQ(movie.width(), width);
    EXPECT_EQ(movie.height(), rotation == 1 ? kWidth : kHeight);
    EXPECT_EQ(movie.bits(), 8 * pixel);
    EXPECT_EQ(movie.length(), 5u) << "from frame 5 to 9";
    ASSERT_EQ(seen.size(), 3u);
    expectSeen(movie);
}

INSTANTIATE_TEST_SUITE_P(All, AviPictures,
                         testing::Combine(testing::Values(1u, 4u, 8u),
                                          testing::Values(std::uint8_t{0}, std::uint8_t{1}),
                                          testing::Values(0u, 1u)));

TEST_F(AviRecording, HasAGreyPaletteForBytes) {
    const PlainAvi movie = recordMovie({.previewFormat = 1}, {0});
    const Bytes palette = movie.palette();
    ASSERT_EQ(palette.size(), 1024u);
    for (std::size_t i = 0; i < 256; ++i) {
        const auto grey = static_cast<std::uint8_t>(i);
        EXPECT_EQ(Bytes(&palette[4 * i], &palette[4 * i] + 4), (Bytes{grey, grey, grey, 0}));
    }
}

class AviThinning : public AviRecording, public testing::WithParamInterface<int> {};

TEST_P(AviThinning, LeavesRowsAndPixelsOut) {
    const auto shift = static_cast<std::uint8_t>(GetParam());
    for (const std::uint32_t format : {8u, 4u}) {
        const PlainAvi movie = recordMovie({.previewFormat = format, .frameSize = shift}, {0});
        EXPECT_EQ(movie.width(), kWidth >> shift);
        EXPECT_EQ(movie.height(), kHeight >> shift);
        ASSERT_EQ(movie.pictures().size(), 1u);
        EXPECT_EQ(withoutPadding(movie.pictures()[0], (kWidth >> shift) * 3), asStored(seen[0], shift));
        startOver();
    }
}

INSTANTIATE_TEST_SUITE_P(All, AviThinning, testing::Values(1, 2));

// An uncompressed movie opens with an empty chunk; each frame that the camera lost is an empty one in its
// place.
TEST_F(AviRecording, KeepsThePlaceOfLostFramesInAvi1) {
    const PlainAvi movie = recordMovie({}, {5, 6, 9});
    const std::size_t bytes = 32 * kHeight;
    EXPECT_EQ(movie.sizes(), (std::vector<std::size_t>{0, bytes, bytes, 0, 0, bytes}));
    EXPECT_EQ(movie.frames()[0].id, "00dc");
    for (std::size_t i = 1; i < 6; ++i) EXPECT_EQ(movie.frames()[i].id, "00db") << i;
    EXPECT_EQ(movie.handler(), "DIB ");
}

TEST_F(AviRecording, KeepsThePlaceOfLostFramesInTheIndexOfAvi2) {
    const PlainAvi movie = recordMovie({.priority = 1}, {5, 6, 9});
    const std::uint32_t bytes = 32 * kHeight;
    EXPECT_EQ(movie.sizes(), (std::vector<std::size_t>{0, bytes, bytes, bytes}));
    EXPECT_EQ(movie.indexedSizes(), (PlainAvi::IndexedSizes{bytes, bytes, kSkipped, kSkipped, bytes}));
    EXPECT_EQ(movie.totalFrames(), 5u);
}

// ---- cameras that send no mosaic

class AviTransferFormat : public AviRecording,
                          public testing::WithParamInterface<std::tuple<std::uint32_t, std::uint32_t>> {};

TEST_P(AviTransferFormat, IsRecordedAsThePreviewShowsIt) {
    const auto [transferBits, previewFormat] = GetParam();
    openCamera(transferBits, 1, 8, kHeight);
    ASSERT_EQ(Tavra_SetPreviewPixelFormat(handle, previewFormat), 1);
    const PlainAvi movie = recordImages({0, 1});
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_NE(seen[0].data, seen[1].data);
    EXPECT_EQ(movie.bits(), previewFormat == 1 ? 8u : 24u);
    expectSeen(movie);
}

// Mono of 8 bits, 10 bits and packed; BGR of 24 and 32 bits; the six YCbCr layouts.
INSTANTIATE_TEST_SUITE_P(All, AviTransferFormat,
                         testing::Combine(testing::Values(32u, 64u, 0x100000u, 1024u, 2048u, 4096u, 8192u,
                                                          16384u, 0x1000000u, 0x2000000u, 0x4000000u),
                                          testing::Values(1u, 4u, 8u)));

// ---- compressed

// Width and height as the picture itself tells them, in its frame header.
std::pair<std::uint32_t, std::uint32_t> sizeInJpeg(const Bytes& picture) {
    for (std::size_t at = 2; at + 9 <= picture.size() && picture[at] == 0xFF;) {
        if (picture[at + 1] == 0xC0) {
            return {picture[at + 7] << 8 | picture[at + 8], picture[at + 5] << 8 | picture[at + 6]};
        }
        at += 2 + std::size_t(picture[at + 2] << 8 | picture[at + 3]);
    }
    return {0, 0};
}

TEST_F(AviRecording, HoldsAJpegForEachFrame) {
    for (const std::uint32_t priority : {0u, 1u}) {
        SCOPED_TRACE(priority);
        const PlainAvi movie = recordMovie({.priority = priority, .compressor = kMotionJpeg}, {0, 1, 3});
        EXPECT_EQ(movie.isAvi2(), priority == 1);
        EXPECT_EQ(movie.handler(), "MJPG");
        EXPECT_EQ(movie.quality(), 7500u);
        EXPECT_EQ(movie.totalFrames(), 4u);
        const std::vector<Bytes> pictures = movie.pictures();
        ASSERT_EQ(pictures.size(), 3u);
        for (const Bytes& picture : pictures) {
            EXPECT_EQ(Bytes(picture.begin(), picture.begin() + 2), (Bytes{0xFF, 0xD8}));
            EXPECT_EQ(Bytes(picture.end() - 2, picture.end()), (Bytes{0xFF, 0xD9}));
            EXPECT_EQ(sizeInJpeg(picture), std::pair(kWidth, kHeight));
        }
        for (const PlainAvi::Chunk& chunk : movie.frames()) EXPECT_EQ(chunk.id, "00dc");
        startOver();
    }
}

TEST_F(AviRecording, HasTheQualityOfItsStart) {
    openCamera(1, 5, kWidth, kHeight);
    ASSERT_EQ(Tavra_SetAVIQuality(handle, 31), 1);
    ASSERT_EQ(save("a.avi", 10, kMotionJpeg), 1);
    ASSERT_EQ(Tavra_SetAVIQuality(handle, 32), 1);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(PlainAvi(readFile(folder / "a.avi")).quality(), 3100u);
}

// ---- which kind

TEST_F(AviRecording, IsChosenByTheExtensionAndThePriority) {
    openCamera(1, 5, kWidth, kHeight);
    for (const char* file : {"a.avi", "a.A", "a.av", "a.AVI", "a.b.aVi"}) {
        for (const std::uint32_t compressor : {0u, kMotionJpeg}) {
            for (const std::uint32_t priority : {0u, 1u}) {
                SCOPED_TRACE(testing::Message() << file << ' ' << compressor << ' ' << priority);
                ASSERT_EQ(Tavra_SetAVIPriorityFileFormat(handle, priority), 1);
                ASSERT_EQ(save(file, 1, compressor), 1);
                EXPECT_EQ(Tavra_SetAVIPriorityFileFormat(handle, 1 - priority), 1) << "for the next one";
                ASSERT_EQ(Tavra_StopTransfer(handle), 1);
                const PlainAvi movie(readFile(folder / file));
                EXPECT_EQ(movie.isAvi2(), priority == 1);
                EXPECT_EQ(movie.handler(), compressor == 0 ? "DIB " : "MJPG");
            }
        }
    }
    for (const char* file : {"a.avix", "a.vi", "a.av ", "avi"}) expectFailure(save(file), 0xE000000F);
}

TEST_F(AviRecording, ThroughACodecIsAvi1WhateverThePriority) {
    openCamera(1, 5, kWidth, kHeight);
    ASSERT_EQ(Tavra_SetAVIPriorityFileFormat(handle, 1), 1);
    expectFailure(save("a.avi", 1, kNoSuchCodec), 0xE000000A);
    EXPECT_EQ(status(), 0);
    EXPECT_EQ(Tavra_SetAVIFrameSize(handle, 1), 1) << "no recording exists";
}

}  // namespace
}  // namespace tavra::test
