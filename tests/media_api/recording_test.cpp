// Raw frames from the stream into a movie.
#include "media_api/recording_fixture.h"

namespace tavra::test {
namespace {

class Recording : public RecordingTest {};

TEST_F(Recording, KeepsTheMosaicAsItComesAndEndsTheStreamThatItStarted) {
    openCamera(1, 5);
    startBoth(3);
    for (std::uint32_t i = 0; i < 4; ++i) sendFrame(10 + i, framePattern(i));
    expectMessages({{kRecordingEnded, 0}});
    sendFrame(14, framePattern(4));
    expectMessages({{TAVRA_MESSAGE_TRANSFER_ENDED, 0}});
    EXPECT_EQ(status(), 0);
    const RawMovie recorded = movie();
    EXPECT_EQ(recorded.field(8), 6u);
    EXPECT_EQ(recorded.field(12), 4u);
    EXPECT_EQ(loadLe16(&recorded.header[22]), 24u);
    EXPECT_EQ(recorded.field(44), 3u);
    ASSERT_EQ(recorded.frames.size(), 3u);
    for (std::uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(recorded.frames[i].number, i);
        EXPECT_EQ(recorded.frames[i].tag, 5u);
        EXPECT_EQ(recorded.frames[i].image, framePattern(i));
    }
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    expectNoMessage();
}

TEST_F(Recording, CountsFramesThatTheCameraLost) {
    openCamera();
    collectRaw();
    startBoth();
    for (const std::uint32_t number : {7u, 9u, 12u, 13u}) sendFrame(number, framePattern(number));
    ASSERT_EQ(raws.waitFor(4).size(), 4u);
    std::uint8_t state = 9;
    std::uint32_t frames = 0, position = 0;
    ASSERT_EQ(Tavra_GetAVIStatus(handle, &state, &frames, &position), 1);
    EXPECT_EQ(state, 1);
    EXPECT_EQ(frames, 1000u);
    EXPECT_GE(position, 5u);
    ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    const RawMovie recorded = movie();
    ASSERT_GE(recorded.frames.size(), 3u);
    EXPECT_EQ(recorded.frames[0].number, 0u);
    EXPECT_EQ(recorded.frames[1].number, 2u);
    EXPECT_EQ(recorded.frames[2].number, 5u);
}

TEST_F(Recording, KeepsBytesOfWiderSamples) {
    openCamera(16, 1, 5, 3);
    const RawMovie recorded = recordRaw(1);
    ASSERT_GE(recorded.frames.size(), 1u);
    const Bytes raw = framePattern(0);
    for (std::size_t i = 0; i < 15; ++i) EXPECT_EQ(recorded.frames[0].image[i], raw[2 * i + 1]);
}

TEST_F(Recording, KeepsFramesTurned) {
    openCamera(1, 5);
    ASSERT_EQ(Tavra_SetRotationMode(handle, 1), 1);
    const RawMovie recorded = recordRaw(1);
    ASSERT_GE(recorded.frames.size(), 1u);
    EXPECT_EQ(recorded.field(8), 4u);
    EXPECT_EQ(recorded.field(12), 6u);
    EXPECT_EQ(recorded.frames[0].tag, 4u) << "B G / G R turned clockwise is G B / R G";
    EXPECT_EQ(recorded.frames[0].image, turnedClockwise(framePattern(0), 6));
}

class WithoutMosaic : public Recording, public testing::WithParamInterface<std::uint32_t> {};

TEST_P(WithoutMosaic, ThereAreNoRawFrames) {
    openCamera(GetParam(), 1, 8, 4);
    EXPECT_TRUE(recordRaw(2).frames.empty());
    expectMessages({{kRecordingEnded, 0}});
}

// Mono, BGR, and YCbCr.
INSTANTIATE_TEST_SUITE_P(TransferFormats, WithoutMosaic,
                         testing::Values(32u, 64u, 0x100000u, 1024u, 2048u, 4096u, 8192u, 16384u, 0x1000000u,
                                         0x2000000u, 0x4000000u));

TEST_F(Recording, ThinsByTheFrameSize) {
    openCamera();
    ASSERT_EQ(Tavra_SetAVIFrameSize(handle, 1), 1);
    const RawMovie recorded = recordRaw(1);
    EXPECT_EQ(recorded.field(8), 3u);
    EXPECT_EQ(recorded.field(12), 2u);
    ASSERT_GE(recorded.frames.size(), 1u);
    const Bytes raw = framePattern(0);
    EXPECT_EQ(recorded.frames[0].image, (Bytes{raw[0], raw[2], raw[4], raw[12], raw[14], raw[16]}));
}

}  // namespace
}  // namespace tavra::test
