// In every container: a recording that its camera, its handle or its stream leaves is whole up to there.
#include <string>

#include "media_api/avi_recording_fixture.h"

namespace tavra::test {
namespace {

struct Container {
    const char* name;
    const char* file;
    std::uint32_t compressor, priority;
};

constexpr Container kContainers[] = {{"Avi1", "a.avi", 0, 0},
                                     {"Avi1Mjpeg", "a.avi", kMotionJpeg, 0},
                                     {"Avi2", "a.avi", 0, 1},
                                     {"Avi2Mjpeg", "a.avi", kMotionJpeg, 1},
                                     {"Smf", "a.smf", 0, 0}};

class RecordingLoss : public AviRecordingTest, public testing::WithParamInterface<Container> {
  protected:
    static constexpr std::uint32_t kFrames = 3;

    // Frames 0 to kFrames - 1 have been through the whole chain when this returns.
    void recordFrames() {
        openCamera(1, 5, 10, 6);
        ASSERT_EQ(Tavra_SetAVIPriorityFileFormat(handle, GetParam().priority), 1);
        forgetPlaces();
        collectImages();
        ASSERT_EQ(save(GetParam().file, 1000, GetParam().compressor), 1) << lastError();
        expectMessages({{kRecordingStarted, 0}, {TAVRA_MESSAGE_TRANSFER_STARTED, 0}});
        for (std::uint32_t i = 0; i < kFrames; ++i) sendFrame(i, framePattern(i));
        seen = images.waitFor(kFrames);
        ASSERT_EQ(seen.size(), kFrames);
    }

    void expectWhole() const {
        if (GetParam().file == std::string("a.smf")) {
            const RawMovie recorded = movie();
            ASSERT_EQ(recorded.frames.size(), kFrames);
            for (std::uint32_t i = 0; i < kFrames; ++i) {
                EXPECT_EQ(recorded.frames[i].image, framePattern(i));
            }
            return;
        }
        const PlainAvi recorded(readFile(folder / GetParam().file));
        EXPECT_EQ(recorded.length(), kFrames) << "the header was completed";
        EXPECT_EQ(recorded.isAvi2(), GetParam().priority == 1);
        EXPECT_EQ(recorded.pictures().size(), kFrames);
        EXPECT_EQ(recorded.indexedSizes().size(), GetParam().priority == 1 ? kFrames : 0u);
        if (GetParam().compressor == 0) expectSeen(recorded);
    }
};

TEST_P(RecordingLoss, TheCameraLeaves) {
    ASSERT_NO_FATAL_FAILURE(recordFrames());
    usb.unplug(0);
    expectMessages({{kRecordingEnded, 0}, {TAVRA_MESSAGE_TRANSFER_ENDED, 5}});
    EXPECT_EQ(status(), 0);
    expectWhole();
}

TEST_P(RecordingLoss, TheHandleIsClosed) {
    ASSERT_NO_FATAL_FAILURE(recordFrames());
    Tavra_Close(handle);
    handle = nullptr;
    expectWhole();
}

TEST_P(RecordingLoss, TheStreamIsStopped) {
    ASSERT_NO_FATAL_FAILURE(recordFrames());
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    expectMessages({{kRecordingEnded, 0}, {TAVRA_MESSAGE_TRANSFER_ENDED, 0}});
    expectWhole();
}

INSTANTIATE_TEST_SUITE_P(Containers, RecordingLoss, testing::ValuesIn(kContainers),
                         [](const auto& container) { return std::string(container.param.name); });

}  // namespace
}  // namespace tavra::test
