#include "e2e/camera_fixture.h"

namespace tavra::e2e {
namespace {

const std::string kSmall = "mono:noise=off:pace=off" + kSmallSensor;

// The first opening loads the USB access library, which keeps descriptors for good.
void warmUp() {
    const Camera camera;
    ASSERT_TRUE(camera.isOpen());
    ASSERT_FALSE(takePreview(camera).empty());
}

TEST(Endurance, TwoThousandOpeningsKeepNothing) {
    useCameras(kSmall);
    warmUp();
    const std::size_t before = test::openHandles();
    for (int i = 0; i < 2000; ++i) {
        const TavraHandle handle = Tavra_Open(0);
        ASSERT_NE(handle, nullptr) << i;
        Tavra_Close(handle);
    }
    EXPECT_LE(test::openHandles(), before + test::kLateHandles);
}

TEST(Endurance, ThreeHundredStartsAndStopsKeepNothing) {
    useCameras(kSmall);
    warmUp();
    const std::size_t before = test::openHandles();
    {
        Camera camera;
        ASSERT_TRUE(camera.isOpen());
        FrameLog log;
        log.takeRawOf(camera);
        camera.start();
        log.waitFor(1);
        camera.stop();
        const std::size_t stopped = test::openHandles();
        for (int i = 0; i < 300; ++i) {
            camera.start();
            if (i % 3 == 0) log.waitFor(log.count() + 1);
            camera.stop();
        }
        EXPECT_LE(test::openHandles(), stopped + test::kLateHandles);
    }
    EXPECT_LE(test::openHandles(), before + test::kLateHandles);
}

TEST(Endurance, SnapshotsOneByOneKeepNothing) {
    useCameras(kSmall);
    warmUp();
    const std::size_t before = test::openHandles();
    {
        const Camera camera;
        const Bytes first = takeRaw(camera);
        ASSERT_EQ(first.size(), 32u * 8u);
        for (int i = 0; i < 200; ++i) ASSERT_EQ(takeRaw(camera), first) << i;
    }
    EXPECT_LE(test::openHandles(), before + test::kLateHandles);
}

}  // namespace
}  // namespace tavra::e2e
