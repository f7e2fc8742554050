// The request that makes a camera drop its buffered data.
#include "capture_api/trigger_fixture.h"

namespace tavra::test {
namespace {

TEST_F(TriggerTest, ClearBufferIsOneRequestWithoutData) {
    usb.addCamera();
    open();
    EXPECT_EQ(Tavra_ClearBuffer(handle), 1);
    EXPECT_EQ(traffic(), (Traffic{clearBuffer()}));
    usb.failRequest(32);
    EXPECT_EQ(Tavra_ClearBuffer(handle), 0);
    EXPECT_EQ(lastError(), 0xE0000005u);
}

TEST_F(TriggerTest, ClearBufferIsNotForLegacyCameras) {
    usb.addCamera().setIdentity16(4, 1797);
    open();
    EXPECT_EQ(Tavra_ClearBuffer(handle), 0);
    EXPECT_EQ(lastError(), 0xE0000021u);
    EXPECT_TRUE(traffic().empty());
}

}  // namespace
}  // namespace tavra::test
