// A virtual camera that goes on counting its frames while the disk of its recording stands still.
#include <optional>
#include <vector>

#include "e2e/camera_fixture.h"
#include "media_api/attached_recording.h"

namespace tavra::test {
namespace {

using e2e::Camera;

constexpr std::uint32_t kBefore = 20, kWhileStalled = 256, kAfter = 20;
constexpr std::uint32_t kFrames = kBefore + kWhileStalled + kAfter;
constexpr std::uint32_t kWidth = 32, kHeight = 8, kPixels = kWidth * kHeight;

// The callbacks of tests with cameras of another kind.
struct Callbacks : StreamTest {
    using StreamTest::seeImage;
    using StreamTest::seeRaw;
};

// A frame for each trigger, and triggers are kept until their frame can be sent.
class TriggeredRecording : public testing::TestWithParam<RecordingLayout> {
  protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(e2e::useCameras("bayer:transfer=1:pace=off:width=32:height=8"));
        camera.emplace();
        ASSERT_TRUE(camera->isOpen());
    }

    void trigger(std::uint32_t count) {
        for (std::uint32_t i = 0; i < count; ++i) {
            ASSERT_TRUE(Tavra_TriggerSoftware(*camera, TAVRA_TRIGGER_SELECTOR_2));
        }
    }
    void expectStatus(std::uint32_t position) {
        std::uint8_t state = 9;
        std::uint32_t told = 0;
        ASSERT_EQ(Tavra_GetAVIStatus(*camera, &state, nullptr, &told), 1);
        EXPECT_EQ(state, 1);
        EXPECT_EQ(told, position);
    }
    void start() {
        ASSERT_EQ(Tavra_SetPreviewPixelFormat(*camera, TAVRA_PIXEL_BGR_24), 1);
        ASSERT_EQ(Tavra_SetWhiteBalanceMode(*camera, 0), 1);  // what is recorded is what came
        ASSERT_EQ(Tavra_SetTriggerMode2(*camera, TAVRA_TRIGGER_SELECTOR_2, 1), 1);
        std::uint32_t identifier = 0;
        ASSERT_TRUE(Tavra_AddRawCallback(*camera, Callbacks::seeRaw, &raws, &identifier));
        ASSERT_TRUE(Tavra_AddPreviewBitmapCallback(*camera, Callbacks::seeImage, &images, &identifier));
        camera->takePlaces(0);
        camera->start();
    }

    void expectWhole(const RawMovie& movie) {
        ASSERT_EQ(movie.frames.size(), kFrames);
        const std::vector<SeenRaw> sent = raws.waitFor(kFrames);
        for (std::uint32_t i = 0; i < kFrames; ++i) {
            EXPECT_EQ(movie.frames[i].number, i);
            EXPECT_EQ(movie.frames[i].image, sent[i].data) << i;
        }
    }
    void expectWhole(const PlainAvi& movie) {
        EXPECT_EQ(movie.length(), kFrames);
        EXPECT_EQ(movie.totalFrames(), kFrames);
        EXPECT_EQ(movie.frames().size(), 1 + kFrames) << "behind the chunk that leads";
        EXPECT_EQ(movie.indexedSizes(), PlainAvi::IndexedSizes(kFrames, 3 * kPixels)) << "none is left out";
        const std::vector<Bytes> pictures = movie.pictures();
        ASSERT_EQ(pictures.size(), kFrames);
        const std::vector<SeenImage> shown = images.waitFor(kFrames);
        for (std::size_t i = 0; i < kFrames; ++i) {
            EXPECT_TRUE(isImageFromTheBottom(pictures[i], shown[i].data, 3 * kWidth)) << i;
        }
    }

    Collected<SeenRaw> raws;
    Collected<SeenImage> images;
    MovieFilesDouble files;
    std::optional<Camera> camera;
};

TEST_P(TriggeredRecording, OfADiskThatStandsStillHasEveryFrame) {
    ASSERT_NO_FATAL_FAILURE(start());
    auto& record = *static_cast<TAVRA_COMMON_PARAM*>(static_cast<TavraHandle>(*camera));
    ASSERT_NO_FATAL_FAILURE(attachRecorder(record, GetParam(), files, 10000));
    EXPECT_EQ(camera->expect(TAVRA_MESSAGE_RECORDING_PROGRESS), 0u);

    trigger(kBefore);
    EXPECT_EQ(images.waitFor(kBefore).size(), kBefore);
    files.stallWrites();
    trigger(kWhileStalled);
    EXPECT_TRUE(files.stalled().wait(e2e::kPatienceMs));
    awaitWaitingFrame(record.recording, [&] { return images.count() >= kBefore + kWhileStalled; });
    EXPECT_LT(images.count(), kBefore + kWhileStalled);
    files.releaseWrites();
    EXPECT_EQ(images.waitFor(kBefore + kWhileStalled).size(), kBefore + kWhileStalled);
    expectStatus(kBefore + kWhileStalled - 1);
    trigger(kAfter);
    EXPECT_EQ(images.waitFor(kFrames).size(), kFrames);
    expectStatus(kFrames - 1);

    ASSERT_EQ(Tavra_SetAVIStatus(*camera, 0), 1);
    EXPECT_EQ(camera->expect(TAVRA_MESSAGE_RECORDING_ENDED), 0u);
    EXPECT_EQ(files.openFiles(), 0u);
    const Bytes file = files.bytes(kAttachedMovie);
    if (GetParam().raw()) {
        expectWhole(readRawMovie(file));
    } else {
        expectWhole(PlainAvi(file));
    }
    camera->stop();
}

INSTANTIATE_TEST_SUITE_P(Layouts, TriggeredRecording, testing::Values(kAvi2Layout, kSmfLayout),
                         [](const auto& layout) { return std::string(layout.param.name); });

}  // namespace
}  // namespace tavra::test
