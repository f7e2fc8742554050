#include <atomic>

#include "camera/global_last_error.h"
#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using namespace request;
using Close = CameraTest;

TEST_F(Close, WritesTheCameraModeAndClosesTheDevice) {
    open();
    close();
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(101, {1, 0})));
    EXPECT_EQ(usb.openHandles(), 0u);
}

TEST_F(Close, ANullHandleOnlyLeavesItsCode) {
    globalLastError = 0;
    Tavra_Close(nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u);
    EXPECT_THAT(usb.calls(), IsEmpty());
}

TEST_F(Close, EndsTheStreamBeforeTheCameraMode) {
    open();
    std::atomic<std::size_t> requestsAtTheEnd{99};
    ASSERT_TRUE(record()
                    .captureThread
                    .start("test-stream", platform::ThreadPriority::Normal,
                           [&, &camera = record()] {
                               camera.stopEvent.wait(platform::kWaitForever);
                               requestsAtTheEnd = usb.requests().size();
                           })
                    .ok());
    close();
    EXPECT_EQ(requestsAtTheEnd, 0u);
    EXPECT_EQ(usb.openHandles(), 0u);
}

TEST_F(Close, WorksOnACameraThatIsGone) {
    open();
    usb.unplug(0);
    std::uint32_t value = 0;
    EXPECT_EQ(Tavra_SetClock(handle, 0, 1), 0);
    EXPECT_EQ(lastError(), 0xE0000005u);
    EXPECT_EQ(Tavra_GetRawDataSize(handle, &value), 1) << "the handle stays valid";
    close();
    EXPECT_EQ(usb.openHandles(), 0u);
}

TEST_F(Close, ACameraCanBeOpenedAgain) {
    for (int i = 0; i < 3; ++i) {
        open();
        close();
    }
    EXPECT_EQ(usb.openHandles(), 0u);
}

}  // namespace
}  // namespace tavra::test
