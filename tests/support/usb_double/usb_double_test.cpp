// What tests rely on in the double's bulk stream.
#include <vector>

#include "platform/event.h"
#include "platform/usb_access.h"
#include "support/usb_double/usb_double_fixture.h"

namespace tavra::test {
namespace {

struct Read {
    platform::Event event{platform::Event::Reset::Manual, true};
    TavraUsbRead read{0, 0, 0, event.native()};
    Bytes buffer = Bytes(4);
};

class UsbDoubleStream : public UsbDoubleTest {
  protected:
    UsbDoubleStream() {
        usb.addCamera();
        EXPECT_TRUE(platform::loadUsbAccess(access).ok());
        device = access->openByIndex(0);
    }

    void start(Read& read) {
        EXPECT_EQ(access->startRead(device, read.buffer.data(), 4, &read.read), 0);
        EXPECT_EQ(access->getLastError(), 997u);
    }

    // Bytes read, or minus the error.
    std::int64_t result(Read& read) {
        std::uint32_t transferred = 0;
        if (access->getReadResult(device, &read.read, &transferred, 0) != 0) return transferred;
        return -std::int64_t{access->getLastError()};
    }

    const platform::UsbAccess* access = nullptr;
    TavraUsbDevice device = 0;
    Read first, second;
};

TEST_F(UsbDoubleStream, AReadWaitsForATransferAndIsSignalled) {
    start(first);
    EXPECT_FALSE(first.event.wait(0));
    EXPECT_EQ(result(first), -996);
    usb.pushBulk(0, {{1, 2, 3}});
    EXPECT_TRUE(first.event.wait(0));
    EXPECT_EQ(result(first), 3);
    EXPECT_EQ(first.buffer, (Bytes{1, 2, 3, 0}));
}

TEST_F(UsbDoubleStream, ALongTransferGoesOnInTheNextRead) {
    usb.pushBulk(0, {{1, 2, 3, 4, 5, 6}});
    start(first);
    start(second);
    EXPECT_EQ(result(first), 4);
    EXPECT_EQ(result(second), 2);
    EXPECT_EQ(second.buffer, (Bytes{5, 6, 0, 0}));
}

TEST_F(UsbDoubleStream, NothingPassesAHoldUntilItIsReleased) {
    usb.pushBulk(0, {{}, 0, true});
    usb.pushBulk(0, {{9}});
    start(first);
    EXPECT_EQ(result(first), -996);
    usb.releaseReads(0);
    EXPECT_EQ(result(first), 1);
}

TEST_F(UsbDoubleStream, ErrorsComeInTheirPlace) {
    usb.pushBulk(0, {{}, 31});
    usb.pushBulk(0, {});
    start(first);
    start(second);
    EXPECT_EQ(result(first), -31);
    EXPECT_EQ(result(second), 0);
}

TEST_F(UsbDoubleStream, EndReadAndUnplugEndWhatIsInFlight) {
    start(first);
    access->endRead(device);
    EXPECT_EQ(result(first), -995);
    start(second);
    usb.unplug(0);
    EXPECT_EQ(result(second), -1167);
    EXPECT_EQ(access->startRead(device, first.buffer.data(), 4, &first.read), 0);
    EXPECT_EQ(access->getLastError(), 1167u);
}

}  // namespace
}  // namespace tavra::test
