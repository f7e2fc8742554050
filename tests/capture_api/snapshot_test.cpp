#include "capture/snapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "capture_api/stream_fixture.h"

namespace tavra::test {
namespace {

class Snapshot : public StreamTest {
  protected:
    bool take(std::uint32_t size, std::uint32_t timeoutMs = kPatienceMs, bool withNumbers = true) {
        buffer.assign(size + 1, 0xCD);
        numbers.assign(8, 0xDEAD);
        written = 0xDEAD;
        return Tavra_TakeRawSnapShot(handle, buffer.data(), size, &written,
                                     withNumbers ? numbers.data() : nullptr, timeoutMs) != 0;
    }
    Bytes frameAt(std::size_t index) const {
        const auto first = buffer.begin() + static_cast<std::ptrdiff_t>(index * rawSize);
        return Bytes(first, first + rawSize);
    }

    // Frames sent behind this are the snapshot's.
    void waitUntilActive() {
        SnapshotRequest& request = record().rawSnapshot;
        for (bool active = false; !active; std::this_thread::yield()) {
            const std::lock_guard lock(request.mutex);
            active = request.active;
        }
    }

    Bytes buffer;
    std::vector<std::uint32_t> numbers;
    std::uint32_t written = 0;
};

TEST_F(Snapshot, StartsAStreamForItselfAndEndsIt) {
    openCamera();
    sendFrame(7, pattern(1));
    ASSERT_TRUE(take(rawSize));
    EXPECT_EQ(written, rawSize);
    EXPECT_EQ(frameAt(0), pattern(1));
    EXPECT_EQ(numbers[0], 7u);
    expectMessage(TAVRA_MESSAGE_TRANSFER_STARTED);
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u);
    EXPECT_TRUE(Tavra_SetPreviewPixelFormat(handle, 4)) << "nothing runs any more";
}

TEST_F(Snapshot, TakesTheNextFramesOfARunningStream) {
    openCamera();
    collectRaw();
    start();
    sendFrame(1, pattern(1));
    ASSERT_EQ(raws.waitFor(1).size(), 1u);
    std::thread taker([&] { EXPECT_TRUE(take(rawSize)); });
    waitUntilActive();
    sendFrame(2, pattern(2));
    taker.join();
    EXPECT_EQ(numbers[0], 2u);
    EXPECT_EQ(frameAt(0), pattern(2));
    expectNoMessage();
    stopAndExpectCode(0);
}

TEST_F(Snapshot, TakesAsManyWholeFramesAsFit) {
    openCamera();
    for (std::uint32_t i = 0; i < 3; ++i) sendFrame(20 + i, pattern(static_cast<std::uint8_t>(i)));
    ASSERT_TRUE(take(rawSize * 5 / 2));
    EXPECT_EQ(written, 2 * rawSize);
    EXPECT_EQ(frameAt(0), pattern(0));
    EXPECT_EQ(frameAt(1), pattern(1));
    EXPECT_EQ(buffer[2 * rawSize], 0xCD);
    EXPECT_EQ(numbers[0], 20u);
    EXPECT_EQ(numbers[1], 21u);
    EXPECT_EQ(numbers[2], 0xDEADu);
}

TEST_F(Snapshot, NeedsNoFrameNumbers) {
    openCamera();
    sendFrame(1, pattern(1));
    EXPECT_TRUE(take(rawSize, kPatienceMs, false));
}

TEST_F(Snapshot, WithoutATimeLimitWaitsForTheFrame) {
    openCamera();
    std::thread sender([&] {
        EXPECT_TRUE(usb.waitForPendingReads(0, 4));
        sendFrame(1, pattern(1));
    });
    EXPECT_TRUE(take(rawSize, 0));
    sender.join();
}

TEST_F(Snapshot, ABufferBelowOneFrameIsRefusedBeforeAnythingStarts) {
    openCamera();
    EXPECT_FALSE(take(rawSize - 1));
    EXPECT_EQ(lastError(), TAVRA_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(written, 0xDEADu);
    expectNoMessage();
}

TEST_F(Snapshot, NoBufferIsRefused) {
    openCamera();
    EXPECT_FALSE(Tavra_TakeRawSnapShot(handle, nullptr, 1000, nullptr, nullptr, 1));
    EXPECT_EQ(lastError(), TAVRA_ERROR_INVALID_ARGUMENT);
}

TEST_F(Snapshot, NoHandleIsRefused) {
    EXPECT_FALSE(Tavra_TakeRawSnapShot(nullptr, &buffer, 1, nullptr, nullptr, 1));
    EXPECT_EQ(Tavra_GetLastError(nullptr), TAVRA_ERROR_INVALID_HANDLE);
}

TEST_F(Snapshot, AFrameWithoutBytesCannotBeTaken) {
    openCamera(1, 1, 0, 4);
    EXPECT_FALSE(take(100));
    EXPECT_EQ(lastError(), TAVRA_ERROR_INVALID_ARGUMENT);
}

TEST_F(Snapshot, LeavesTheBufferAloneOnceItsTimeHasRunOut) {
    openCamera();
    collectRaw();
    start();
    EXPECT_FALSE(take(rawSize, 5));
    EXPECT_EQ(lastError(), TAVRA_ERROR_TIMEOUT);
    sendFrame(1, pattern(1));
    ASSERT_EQ(raws.waitFor(1).size(), 1u);
    stopAndExpectCode(0);
    EXPECT_TRUE(std::all_of(buffer.begin(), buffer.end(), [](std::uint8_t byte) { return byte == 0xCD; }));
    EXPECT_EQ(numbers[0], 0xDEADu);
    EXPECT_EQ(written, 0xDEADu);
}

TEST_F(Snapshot, ATimeOutEndsTheStreamThatItStarted) {
    openCamera();
    EXPECT_FALSE(take(rawSize, 5));
    EXPECT_EQ(lastError(), TAVRA_ERROR_TIMEOUT);
    expectMessage(TAVRA_MESSAGE_TRANSFER_STARTED);
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u);
}

TEST_F(Snapshot, TheEndOfTheStreamIsATimeOut) {
    openCamera();
    std::thread puller([&] {
        EXPECT_TRUE(usb.waitForPendingReads(0, 4));
        usb.unplug(0);
    });
    EXPECT_FALSE(take(rawSize, 0));
    puller.join();
    EXPECT_EQ(lastError(), TAVRA_ERROR_TIMEOUT);
}

TEST_F(Snapshot, AStopOfTheStreamIsATimeOut) {
    openCamera();
    start();
    std::thread taker([&] { EXPECT_FALSE(take(rawSize, 0)); });
    waitUntilActive();
    ASSERT_TRUE(Tavra_StopTransfer(handle));
    taker.join();
    EXPECT_EQ(lastError(), TAVRA_ERROR_TIMEOUT);
}

// The wait is over however soon the next stream follows: no frame is sent that could end it otherwise.
TEST_F(Snapshot, ARestartOfTheStreamIsATimeOut) {
    openCamera();
    ASSERT_TRUE(Tavra_SetReceiveMsgWindow(handle, nullptr));
    ASSERT_TRUE(Tavra_StartTransfer(handle));
    for (int i = 0; i < 30; ++i) {
        std::thread taker([&] { EXPECT_FALSE(take(rawSize, 0)); });
        waitUntilActive();
        if (i % 2 == 0) {
            ASSERT_TRUE(Tavra_StopTransfer(handle));
        }
        ASSERT_TRUE(Tavra_StartTransfer(handle));
        taker.join();
        EXPECT_EQ(lastError(), TAVRA_ERROR_TIMEOUT);
    }
}

TEST_F(Snapshot, ACloseWaitsUntilASnapshotHasLetGo) {
    openCamera();
    ASSERT_TRUE(Tavra_SetReceiveMsgWindow(handle, nullptr));
    std::thread taker([&] { EXPECT_FALSE(take(rawSize, 0)); });
    ASSERT_TRUE(usb.waitForPendingReads(0, 4));
    Tavra_Close(handle);
    taker.join();
    handle = nullptr;
    EXPECT_EQ(usb.openHandles(), 0u);
}

TEST_F(Snapshot, TakesPreviewImages) {
    openCamera(1, 1, 6, 4);
    sendFrame(3, pattern(0));
    sendFrame(4, pattern(50));
    std::uint32_t total = 0;
    ASSERT_TRUE(Tavra_GetPreviewDataSize(handle, &total, nullptr, nullptr, nullptr));
    ASSERT_EQ(total, 8u * 4);
    buffer.assign(2 * total, 0xCD);
    numbers.assign(2, 0);
    ASSERT_TRUE(
        Tavra_TakePreviewSnapShot(handle, buffer.data(), 2 * total, &written, numbers.data(), kPatienceMs));
    EXPECT_EQ(written, 2 * total);
    EXPECT_EQ(numbers, (std::vector<std::uint32_t>{3, 4}));
    for (std::size_t image = 0; image < 2; ++image) {
        const Bytes raw = pattern(image == 0 ? 0 : 50);
        for (std::size_t y = 0; y < 4; ++y) {
            for (std::size_t x = 0; x < 6; ++x) EXPECT_EQ(buffer[image * total + y * 8 + x], raw[y * 6 + x]);
        }
    }
}

TEST_F(Snapshot, OfThePreviewAloneNeitherPublishesNorPosts) {
    openCamera(1, 1, 6, 4);
    sendFrame(3, pattern(0));
    buffer.assign(8 * 4, 0xCD);
    ASSERT_TRUE(Tavra_TakePreviewSnapShot(handle, buffer.data(), 8 * 4, &written, nullptr, kPatienceMs));
    expectMessage(TAVRA_MESSAGE_TRANSFER_STARTED);
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u);
    expectNoMessage();
}

TEST_F(Snapshot, OfThePreviewNeedsRoomForARotatedImage) {
    openCamera(1, 1, 6, 4);  // rotated: rows of 4 bytes, 6 of them; not rotated: 4 rows of 8
    record().rotationMode = 1;
    buffer.assign(32, 0xCD);
    EXPECT_FALSE(Tavra_TakePreviewSnapShot(handle, buffer.data(), 23, &written, nullptr, 5));
    EXPECT_EQ(lastError(), TAVRA_ERROR_INVALID_ARGUMENT);
    EXPECT_FALSE(Tavra_TakePreviewSnapShot(handle, buffer.data(), 24, &written, nullptr, 5));
    EXPECT_EQ(lastError(), TAVRA_ERROR_TIMEOUT) << "large enough, but no frame comes";
}

// The stream may also have ended by itself, and been collected by whoever asked whether it runs.
TEST_F(Snapshot, AStartAfterALostStreamIsATimeOut) {
    openCamera();
    ASSERT_TRUE(Tavra_SetReceiveMsgWindow(handle, nullptr));
    for (int i = 0; i < 30; ++i) {
        usb.locked([&] { usb.camera().gone = false; });
        ASSERT_TRUE(Tavra_StartTransfer(handle));
        std::thread taker([&] { EXPECT_FALSE(take(rawSize, 0)); });
        waitUntilActive();
        usb.unplug(0);
        EXPECT_TRUE(record().captureThread.ended().wait(kPatienceMs));
        usb.locked([&] { usb.camera().gone = false; });
        if (i % 2 == 0) {
            EXPECT_FALSE(record().transferRunning());
        }
        EXPECT_TRUE(Tavra_StartTransfer(handle));
        taker.join();
        EXPECT_EQ(lastError(), TAVRA_ERROR_TIMEOUT);
    }
}

// A request that is active and has had all its frames: seen only between the last frame and the caller.
class SpentSnapshot : public Snapshot {
  protected:
    static void set(SnapshotRequest& request, bool active) {
        const std::lock_guard lock(request.mutex);
        request.active = active;
        request.framesLeft = 0;
    }
};

TEST_F(SpentSnapshot, OfRawFramesPassesFramesOver) {
    openCamera();
    collectRaw();
    set(record().rawSnapshot, true);
    start();
    for (std::uint32_t i = 0; i < 6; ++i) sendFrame(i, pattern(0));
    // All six are read: the fifth got its block only when the first was released.
    ASSERT_TRUE(usb.waitForPendingReads(0, 4));
    set(record().rawSnapshot, false);
    sendFrame(100, pattern(0));
    std::vector<SeenRaw> seen;
    for (std::size_t n = 1; seen.empty() || seen.back().number != 100; ++n) {
        seen = raws.waitFor(n);
        ASSERT_GE(seen.size(), n) << "the stream went on behind the frames passed over";
    }
    EXPECT_NE(seen.front().number, 0u) << "no callback saw the first frame";
    stopAndExpectCode(0);
}

TEST_F(SpentSnapshot, OfThePreviewEndsTheRunAndPublishesTheImage) {
    openCamera();
    collectImages();
    set(record().previewSnapshot, true);
    start();
    sendFrame(9, pattern(0));
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 0u);
    EXPECT_EQ(images.count(), 0u) << "the callbacks come behind the snapshot";
    EXPECT_EQ(record().imagesA.takeReady(), 1u) << "image 0 was ready and shown";
    EXPECT_EQ(record().imagesA.image(1).frameNumber, 9u);
    set(record().previewSnapshot, false);
}

// The capture thread's side alone.
struct Served {
    SnapshotRequest request;
    Bytes buffer = Bytes(10, 0);
    std::uint32_t number = 0;

    void activate(std::uint32_t frames) {
        request.active = true;
        request.destination = buffer.data();
        request.size = 10;
        request.framesLeft = frames;
    }
};

TEST(ServeSnapshot, LeavesAnInactiveRequestAlone) {
    Served served;
    const std::uint8_t frame[4] = {1, 2, 3, 4};
    EXPECT_TRUE(serveSnapshot(served.request, frame, 4, 1));
    EXPECT_FALSE(served.request.done.wait(0));
}

TEST(ServeSnapshot, IsDoneWithTheLastFrame) {
    Served served;
    served.activate(2);
    const std::uint8_t frame[4] = {1, 2, 3, 4};
    EXPECT_TRUE(serveSnapshot(served.request, frame, 4, 1));
    EXPECT_FALSE(served.request.done.wait(0));
    EXPECT_TRUE(serveSnapshot(served.request, frame, 4, 2));
    EXPECT_TRUE(served.request.done.wait(0));
    EXPECT_FALSE(served.request.active);
    EXPECT_EQ(served.buffer, (Bytes{1, 2, 3, 4, 1, 2, 3, 4, 0, 0}));
}

TEST(ServeSnapshot, TellsOfAnActiveRequestThatHasHadItsFrames) {
    Served served;
    served.activate(0);
    EXPECT_FALSE(serveSnapshot(served.request, served.buffer.data(), 4, 1));
}

TEST(ServeSnapshot, TheEndOfAStreamIsThatOfARequestWhichExpectedIt) {
    Served served;
    served.activate(1);
    abandonSnapshot(served.request);
    EXPECT_TRUE(served.request.active) << "its own stream is still to be started";
    EXPECT_FALSE(served.request.done.wait(0));
    expectStream(served.request);
    abandonSnapshot(served.request);
    EXPECT_FALSE(served.request.active);
    EXPECT_TRUE(served.request.done.wait(0));
    EXPECT_EQ(served.request.result, TAVRA_ERROR_TIMEOUT);
}

TEST(ServeSnapshot, NeverWritesPastTheBuffer) {
    Served served;
    served.activate(2);
    const std::uint8_t frame[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_TRUE(serveSnapshot(served.request, frame, 8, 1));
    EXPECT_TRUE(serveSnapshot(served.request, frame, 8, 2));
    EXPECT_TRUE(served.request.done.wait(0));
    EXPECT_EQ(served.request.result, TAVRA_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(served.buffer[8], 0);
}

}  // namespace
}  // namespace tavra::test
