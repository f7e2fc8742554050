// Starting and stopping, and what the receiver is told.
#include "e2e/camera_fixture.h"

namespace tavra::e2e {
namespace {

const std::string kSmall = "mono:noise=off:pace=off" + kSmallSensor;

TEST(Streams, TellTheirStartAndTheirEnd) {
    useCameras(kSmall);
    Camera camera;
    camera.start();
    camera.expectNoMessage();
    camera.stop();
    camera.expectNoMessage();
    EXPECT_TRUE(Tavra_StopTransfer(camera)) << "nothing runs, which is what was asked for";
    camera.expectNoMessage();
}

TEST(Streams, StartedTwiceEndAndStartAnew) {
    useCameras(kSmall);
    Camera camera;
    camera.start();
    ASSERT_TRUE(Tavra_StartTransfer(camera));
    EXPECT_EQ(camera.expectEnd(), 0u);
    camera.expect(TAVRA_MESSAGE_TRANSFER_STARTED);
    camera.stop();
}

TEST(Streams, StopWhileTheCameraIsSilent) {
    for (const char* const model : {"bayer", "statusword"}) {
        useCameras(std::string(model) + ":width=32:height=8");
        Camera camera;
        FrameLog log;
        log.takeRawOf(camera);
        ASSERT_TRUE(Tavra_SetTriggerMode2(camera, TAVRA_TRIGGER_SELECTOR_2, 1));
        camera.start();
        camera.stop();
        EXPECT_EQ(log.count(), 0u);
    }
}

TEST(Streams, EndWhenTheCameraIsClosed) {
    useCameras(kSmall);
    for (int i = 0; i < 10; ++i) {
        Camera camera;
        FrameLog log;
        log.takeRawOf(camera);
        camera.start();
        log.waitFor(1);
        camera.close();
        EXPECT_EQ(camera.expectEnd(), 0u);
    }
}

TEST(Streams, OfACameraThatWasNeverStoppedBeginWithTheSamePicture) {
    useCameras(kSmall);
    Bytes first;
    for (int i = 0; i < 5; ++i) {
        Camera camera;
        const Bytes frame = takeRaw(camera);
        if (first.empty()) first = frame;
        EXPECT_EQ(frame, first);
        camera.start();
    }
}

}  // namespace
}  // namespace tavra::e2e
