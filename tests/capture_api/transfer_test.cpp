// Start, run and end of the stream, and what of the camera's blocks becomes a frame.
#include <gtest/gtest.h>

#include <optional>
#include <thread>

#include "capture/transfer.h"
#include "capture_api/stream_fixture.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

class Transfer : public StreamTest {};

TEST_F(Transfer, TellsItsStartAndItsEnd) {
    openCamera();
    start();
    stopAndExpectCode(0);
    expectNoMessage();
}

TEST_F(Transfer, StopWithoutAStreamSucceeds) {
    openCamera();
    EXPECT_TRUE(Tavra_StopTransfer(handle));
    expectNoMessage();
}

TEST_F(Transfer, NoHandleIsRefused) {
    EXPECT_FALSE(Tavra_StartTransfer(nullptr));
    EXPECT_EQ(Tavra_GetLastError(nullptr), TAVRA_ERROR_INVALID_HANDLE);
    EXPECT_FALSE(Tavra_StopTransfer(nullptr));
}

TEST_F(Transfer, AStartWhileRunningEndsTheOldRunFirst) {
    openCamera();
    start();
    ASSERT_TRUE(Tavra_StartTransfer(handle));
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u);
    expectMessage(TAVRA_MESSAGE_TRANSFER_STARTED);
    stopAndExpectCode(0);
}

TEST_F(Transfer, CanBeStartedAndStoppedManyTimes) {
    openCamera();
    for (int i = 0; i < 50; ++i) {
        start();
        stopAndExpectCode(0);
    }
}

TEST_F(Transfer, WorksWithoutAReceiver) {
    openCamera();
    ASSERT_TRUE(Tavra_SetReceiveMsgWindow(handle, nullptr));
    collectRaw();
    ASSERT_TRUE(Tavra_StartTransfer(handle));
    sendFrame(1, pattern(0));
    EXPECT_EQ(raws.waitFor(1).size(), 1u);
    EXPECT_TRUE(Tavra_StopTransfer(handle));
    expectNoMessage();
}

TEST_F(Transfer, ChangesOfTheFormatAreRefusedMeanwhile) {
    openCamera();
    start();
    EXPECT_FALSE(Tavra_SetPreviewPixelFormat(handle, 4));
    EXPECT_EQ(lastError(), TAVRA_ERROR_TRANSFER_RUNNING);
    stopAndExpectCode(0);
    EXPECT_TRUE(Tavra_SetPreviewPixelFormat(handle, 4));
}

TEST_F(Transfer, ALostDeviceEndsTheRunWithCode5AndEveryLaterOne) {
    openCamera();
    collectRaw();
    start();
    ASSERT_TRUE(usb.waitForPendingReads(0, 4));
    const std::uint32_t before = lastError();
    usb.unplug(0);
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), TAVRA_ERROR_DEVICE_GONE);
    EXPECT_EQ(lastError(), before) << "failures of the stream are told by the message alone";
    EXPECT_TRUE(Tavra_StopTransfer(handle));
    usb.locked([&] { usb.camera().gone = false; });
    start();
    sendFrame(3, pattern(1));
    EXPECT_EQ(raws.waitFor(1).size(), 1u);
    stopAndExpectCode(TAVRA_ERROR_DEVICE_GONE);
}

TEST_F(Transfer, ADeviceLostBeforeTheStartEndsTheRunWithCode5) {
    openCamera();
    usb.unplug(0);
    start();
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), TAVRA_ERROR_DEVICE_GONE);
}

TEST_F(Transfer, ADeviceLostInACallbackEndsTheRunWithCode5) {
    openCamera();
    struct Context {
        UsbDouble& usb;
    } context{usb};
    std::uint32_t identifier = 0;
    const TavraRawCallback pull = [](void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                                     std::uint16_t, std::uint32_t, void* given,
                                     std::uint32_t*) { static_cast<Context*>(given)->usb.unplug(0); };
    ASSERT_TRUE(Tavra_AddRawCallback(handle, pull, &context, &identifier));
    start();
    sendFrame(1, pattern(0));
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), TAVRA_ERROR_DEVICE_GONE);
    Tavra_Close(handle);
    handle = nullptr;
    EXPECT_EQ(usb.openHandles(), 0u);
}

// Pulled at the n-th start of a read, one after the other, from the first to well into the stream.
TEST_F(Transfer, ADevicePulledAtAnyReadEndsTheRunWithCode5) {
    for (std::size_t n = 0; n < 12; ++n) {
        usb.reset();
        DoubleCamera& camera = describe();
        camera.startReadErrors.assign(n, 0);
        camera.startReadErrors.push_back(1167);
        open();
        ASSERT_TRUE(Tavra_StartTransfer(handle));
        for (std::uint32_t i = 0; i < 12; ++i) sendFrame(i, pattern(0));
        expectMessage(TAVRA_MESSAGE_TRANSFER_STARTED);
        EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), TAVRA_ERROR_DEVICE_GONE) << n;
        Tavra_Close(handle);
        handle = nullptr;
        EXPECT_EQ(usb.openHandles(), 0u);
    }
}

TEST_F(Transfer, CloseEndsTheStream) {
    openCamera();
    start();
    Tavra_Close(handle);
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u);
    handle = nullptr;
}

class ReadingRestarts : public Transfer, public testing::WithParamInterface<std::uint32_t> {};

TEST_P(ReadingRestarts, AndTheStreamGoesOn) {
    openCamera();
    collectRaw();
    start();
    sendFrame(1, pattern(0));
    ASSERT_EQ(raws.waitFor(1).size(), 1u);
    sendError(GetParam());
    ASSERT_TRUE(waitForCalls("UsbBeginRead", 2));
    ASSERT_TRUE(usb.waitForPendingReads(0, 4));
    // The new run of the reader starts at its first block, the capture thread waits at its third.
    for (std::uint32_t i = 0; i < 4; ++i) sendFrame(10 + i, pattern(static_cast<std::uint8_t>(i)));
    const auto seen = raws.waitFor(5);
    ASSERT_EQ(seen.size(), 5u);
    std::vector<std::uint32_t> numbers;
    for (const SeenRaw& raw : seen) numbers.push_back(raw.number);
    EXPECT_EQ(numbers, (std::vector<std::uint32_t>{1, 12, 13, 10, 11}));
    EXPECT_EQ(callsOf("UsbBeginRead"), 2u);
    EXPECT_EQ(callsOf("UsbEndRead"), 1u);
    stopAndExpectCode(0);
}

// From a raw callback on: no allocation of the capture thread succeeds, that of the new read thread neither.
TEST_P(ReadingRestarts, OrTheRunEndsIfTheReadThreadCannot) {
    openCamera();
    const TavraRawCallback starve = [](void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                                       std::uint16_t, std::uint32_t, void*, std::uint32_t*) {
        static thread_local std::optional<FailAllocationsFrom> failing;  // as long as the thread
        failing.emplace(1);
    };
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddRawCallback(handle, starve, nullptr, &identifier));
    start();
    sendFrame(1, pattern(0));
    sendError(GetParam());
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u) << "no failure of the stream itself";
    EXPECT_EQ(callsOf("UsbBeginRead"), 1u);
    EXPECT_TRUE(record().captureThread.ended().wait(kPatienceMs));
    EXPECT_FALSE(record().transferRunning());
    ASSERT_TRUE(Tavra_RemoveRawCallback(handle, identifier));
    start();
    EXPECT_TRUE(waitForCalls("UsbBeginRead", 2)) << "the next run is as good as the first";
    stopAndExpectCode(0);
}

INSTANTIATE_TEST_SUITE_P(Codes, ReadingRestarts, testing::Values(31u, 23u));

TEST_F(Transfer, OtherFailuresOfAReadOnlyCostTheFrame) {
    openCamera();
    collectRaw();
    start();
    sendError(995);
    sendFrame(2, pattern(1));
    EXPECT_EQ(raws.waitFor(1)[0].number, 2u);
    EXPECT_EQ(callsOf("UsbBeginRead"), 1u);
    stopAndExpectCode(0);
}

TEST_F(Transfer, AHeaderMayComeInABlockOfItsOwn) {
    openCamera();
    collectRaw();
    start();
    send(header(0x01020304));
    send(pattern(9));
    const auto seen = raws.waitFor(1);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].number, 0x01020304u);
    EXPECT_EQ(seen[0].data, pattern(9));
}

TEST_F(Transfer, AFrameWithoutAHeaderTakesTheLastNumber) {
    openCamera();
    collectRaw();
    start();
    send(pattern(1));
    sendFrame(40, pattern(2));
    send(pattern(3));
    const auto seen = raws.waitFor(3);
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0].number, 0u);
    EXPECT_EQ(seen[1].number, 40u);
    EXPECT_EQ(seen[2].number, 40u);
}

TEST_F(Transfer, BlocksOfAnyOtherLengthVanish) {
    openCamera();
    collectRaw();
    start();
    const std::size_t whole = kHeaderSize + rawSize;
    for (const std::size_t length :
         {std::size_t{0}, std::size_t{1}, std::size_t{rawSize - 1}, std::size_t{rawSize + 1},
          std::size_t{kHeaderSize - 1}, std::size_t{kHeaderSize + 1}, whole - 1, whole + 1}) {
        send(Bytes(length, 0xAA));
    }
    sendFrame(5, pattern(0));
    const auto seen = raws.waitFor(1);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].number, 5u);
    expectNoMessage();
    stopAndExpectCode(0);
}

TEST_F(Transfer, ABlockThatCouldBeHeaderOrFrameIsAHeader) {
    openCamera(1, 1, 8, 8);
    ASSERT_EQ(rawSize, std::uint32_t{kHeaderSize});
    collectRaw();
    start();
    send(pattern(1));
    sendFrame(6, pattern(2));
    const auto seen = raws.waitFor(1);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].number, 6u);
}

TEST_F(Transfer, AFrameWithoutBytesIsServed) {
    openCamera(1, 1, 0, 4);
    ASSERT_EQ(rawSize, 0u);
    collectRaw();
    start();
    send(header(12));
    send({});
    const auto seen = raws.waitFor(1);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].number, 12u);
    EXPECT_TRUE(seen[0].data.empty());
    stopAndExpectCode(0);
}

TEST_F(Transfer, AFrameLargerThanOneReadComesWhole) {
    openCamera(1, 1, 1024, 600);  // 600 KiB
    collectRaw();
    start();
    for (std::uint32_t i = 0; i < 6; ++i) sendFrame(i, pattern(static_cast<std::uint8_t>(i)));
    const auto seen = raws.waitFor(6);
    ASSERT_EQ(seen.size(), 6u);
    for (std::uint32_t i = 0; i < 6; ++i) EXPECT_EQ(seen[i].data, pattern(static_cast<std::uint8_t>(i))) << i;
}

TEST_F(Transfer, ACameraWithoutAFrameHeaderIsServed) {
    DoubleCamera& camera = describe();
    camera.setIdentity16(12, 0);
    open();
    collectRaw();
    start();
    send({});
    send(pattern(1));
    const auto seen = raws.waitFor(1);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].data, pattern(1));
}

TEST_F(Transfer, ARunThatNobodyWantsAnyMoreEndsWithTheNextFrame) {
    openCamera();
    const std::uint32_t identifier = collectRaw();
    ASSERT_TRUE(startTransfer(record(), false).ok());
    expectMessage(TAVRA_MESSAGE_TRANSFER_STARTED);
    sendFrame(1, pattern(0));
    ASSERT_EQ(raws.waitFor(1).size(), 1u);
    ASSERT_TRUE(Tavra_RemoveRawCallback(handle, identifier));
    sendFrame(2, pattern(0));
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u);
    ASSERT_TRUE(record().captureThread.ended().wait(kPatienceMs));
    EXPECT_TRUE(Tavra_SetPreviewPixelFormat(handle, 4)) << "the ended thread is collected on the way";
}

TEST_F(Transfer, ARunEndsWithThePreviewThatItWasFor) {
    openCamera();
    const std::uint32_t identifier = collectImages();
    ASSERT_TRUE(startTransfer(record(), false).ok());
    expectMessage(TAVRA_MESSAGE_TRANSFER_STARTED);
    sendFrame(1, pattern(0));
    ASSERT_EQ(images.waitFor(1).size(), 1u);
    ASSERT_TRUE(Tavra_RemovePreviewBitmapCallback(handle, identifier));
    sendFrame(2, pattern(0));
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u);
}

TEST_F(Transfer, ARunThatNobodyWantsEndsWithoutAFrame) {
    openCamera();
    ASSERT_TRUE(startTransfer(record(), false).ok());
    expectMessage(TAVRA_MESSAGE_TRANSFER_STARTED);
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u);
}

TEST_F(Transfer, ReadsTheTriggerWordOnceARun) {
    openCamera();
    usb.camera().status(48) = 0x3001;
    collectRaw();
    usb.forgetTraffic();
    start();
    for (std::uint32_t i = 0; i < 3; ++i) sendFrame(i, pattern(0));
    ASSERT_EQ(raws.waitFor(3).size(), 3u);
    EXPECT_EQ(usb.requests(), (std::vector<ControlTransfer>{toHost(128, 48, 0, 4)}));
}

TEST_F(Transfer, ReadsWithThePacketsOfTheLink) {
    DoubleCamera& camera = describe();
    camera.configDescriptor[22] = 0;  // packets of 512 bytes: high speed
    camera.configDescriptor[23] = 2;
    open();
    start();
    ASSERT_TRUE(usb.waitForPendingReads(0, 4));
    EXPECT_EQ(usb.locked([&] { return usb.camera().pending.front().size; }), 512u);
    stopAndExpectCode(0);
}

TEST_F(Transfer, AFrameThatNoMemoryHoldsEndsTheRunAtOnce) {
    DoubleCamera& camera = describe();
    camera.addRegisterPages();
    camera.registers[{17, 8}] = 0xFFFFFFFF;
    open();
    ASSERT_TRUE(Tavra_StartTransfer(handle));
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u);
    EXPECT_EQ(callsOf("UsbBeginRead"), 0u);
}

// A callback that lasts until the test lets it go.
struct Stall {
    TavraHandle handle = nullptr;
    platform::Event entered{platform::Event::Reset::Manual};
    platform::Event go{platform::Event::Reset::Manual};
    TavraBool setterResult = 1;

    static void callback(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t,
                         std::uint32_t, void* context, std::uint32_t*) {
        auto& stall = *static_cast<Stall*>(context);
        stall.entered.set();
        stall.go.wait(kPatienceMs);
        stall.setterResult = Tavra_SetPreviewPixelFormat(stall.handle, 4);
    }
};

TEST_F(Transfer, StopWaitsForACallbackThatAsksWhetherTheStreamRuns) {
    openCamera();
    Stall stall;
    stall.handle = handle;
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddRawCallback(handle, Stall::callback, &stall, &identifier));
    start();
    sendFrame(1, pattern(0));
    ASSERT_TRUE(stall.entered.wait(kPatienceMs));
    std::thread stopper([&] { EXPECT_TRUE(Tavra_StopTransfer(handle)); });
    ASSERT_TRUE(record().stopEvent.wait(kPatienceMs));
    EXPECT_TRUE(record().transferRunning()) << "the stop waits";
    stall.go.set();
    stopper.join();
    EXPECT_FALSE(stall.setterResult) << "refused, not blocked";
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u);
}

TEST_F(Transfer, FramesThatArriveDuringALongCallbackAreNotLost) {
    openCamera();
    Stall stall;
    stall.handle = handle;
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddRawCallback(handle, Stall::callback, &stall, &identifier));
    collectRaw();
    start();
    for (std::uint32_t i = 0; i < 12; ++i) sendFrame(i, pattern(static_cast<std::uint8_t>(i)));
    ASSERT_TRUE(stall.entered.wait(kPatienceMs));
    stall.go.set();
    const auto seen = raws.waitFor(12);
    ASSERT_EQ(seen.size(), 12u);
    for (std::uint32_t i = 0; i < 12; ++i) {
        EXPECT_EQ(seen[i].number, i);
        EXPECT_EQ(seen[i].data, pattern(static_cast<std::uint8_t>(i)));
    }
}

TEST_F(Transfer, StartsAndStopsOfManyThreadsFollowOneAnother) {
    openCamera();
    ASSERT_TRUE(Tavra_SetReceiveMsgWindow(handle, nullptr));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 15; ++i) {
                EXPECT_TRUE(Tavra_StartTransfer(handle));
                EXPECT_TRUE(Tavra_StopTransfer(handle));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_TRUE(Tavra_SetPreviewPixelFormat(handle, 4)) << "no stream is left";
}

}  // namespace
}  // namespace tavra::test
