#include <gmock/gmock.h>

#include <cerrno>
#include <ostream>
#include <thread>

#include "libusb_test.h"

namespace tavra::usbd {
namespace {

using test::Bytes;

TEST_F(OpenCameraTest, AReadIsInFlightUntilItsDataCome) {
    ASSERT_EQ(device->beginRead(), 0u);
    Read read;
    EXPECT_EQ(read.start(*device), 997u);
    EXPECT_FALSE(read.signalled());
    EXPECT_EQ(device->readResult(read.record, read.transferred, false), 996u);
    camera.send(pattern(4096));
    EXPECT_EQ(read.finish(*device), 0u);
    EXPECT_EQ(read.data(), pattern(4096));
}

TEST_F(OpenCameraTest, AShortPacketEndsARead) {
    Read read;
    ASSERT_EQ(read.start(*device), 997u);
    camera.send(pattern(1000));
    EXPECT_EQ(read.finish(*device), 0u);
    EXPECT_EQ(read.transferred, 1000u);
    EXPECT_EQ(read.buffer[1000], 0xEE) << "nothing is written behind the data";
}

TEST_F(OpenCameraTest, AnEmptyPacketEndsAReadWithNothing) {
    Read read;
    ASSERT_EQ(read.start(*device), 997u);
    camera.send({});
    EXPECT_EQ(read.finish(*device), 0u);
    EXPECT_EQ(read.transferred, 0u);
}

TEST_F(OpenCameraTest, ATransferLongerThanAReadFillsTheReadsInOrder) {
    const auto reads = makeReads(3);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    const Bytes frame = pattern(10'000);
    camera.send(frame);
    Bytes got;
    for (const auto& read : reads) {
        EXPECT_EQ(read->finish(*device), 0u);
        const Bytes part = read->data();
        got.insert(got.end(), part.begin(), part.end());
    }
    EXPECT_EQ(got, frame);
    EXPECT_EQ(reads[2]->transferred, 10'000u - 2 * 4096);
}

TEST_F(OpenCameraTest, AnEventThatIsSetFromBeforeIsResetByTheStart) {
    Read read;
    read.event.set();
    ASSERT_EQ(read.start(*device), 997u);
    EXPECT_FALSE(read.signalled());
}

TEST_F(OpenCameraTest, WaitingForAResultBlocksUntilItIsThere) {
    Read read;
    ASSERT_EQ(read.start(*device), 997u);
    std::atomic<bool> waiting{false};
    ErrorCode result = 9;
    std::thread reader([&] {
        waiting = true;
        result = device->readResult(read.record, read.transferred, true);
    });
    while (!waiting) std::this_thread::yield();
    camera.send(pattern(77));
    reader.join();
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(read.transferred, 77u);
}

TEST_F(OpenCameraTest, SixtyFourReadsInFlightCompleteInOrder) {
    const auto reads = makeReads(64);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    EXPECT_TRUE(camera.waitForReadsInFlight(64));
    for (unsigned i = 0; i < 64; ++i) camera.send(pattern(100 + i, i));
    for (unsigned i = 0; i < 64; ++i) {
        EXPECT_EQ(reads[i]->finish(*device), 0u);
        EXPECT_EQ(reads[i]->data(), pattern(100 + i, i));
    }
}

TEST_F(OpenCameraTest, AReadIsStartedAgainAsSoonAsItsResultIsTaken) {
    const auto reads = makeReads(4);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    for (unsigned i = 0; i < 400; ++i) {
        camera.send(pattern(500, i));
        Read& read = *reads[i % 4];
        ASSERT_EQ(read.finish(*device), 0u);
        ASSERT_EQ(read.data(), pattern(500, i));
        ASSERT_EQ(read.start(*device), 997u);
    }
    EXPECT_EQ(camera.counts().reads, 404u);
}

struct StatusCase {
    int status;
    ErrorCode error;
    friend void PrintTo(const StatusCase& which, std::ostream* out) { *out << "status " << which.status; }
};

class BulkStatus : public OpenCameraTest, public testing::WithParamInterface<StatusCase> {};

TEST_P(BulkStatus, BecomesTheResultOfTheRead) {
    Read read;
    ASSERT_EQ(read.start(*device), 997u);
    camera.failNextRead(GetParam().status, 512);
    EXPECT_EQ(read.finish(*device), GetParam().error);
    EXPECT_EQ(read.transferred, 512u) << "what came before is told";
}

INSTANTIATE_TEST_SUITE_P(Kernel, BulkStatus,
                         testing::Values(StatusCase{0, 0}, StatusCase{-EPIPE, 31}, StatusCase{-EOVERFLOW, 23},
                                         StatusCase{-EPROTO, 23}, StatusCase{-EILSEQ, 23},
                                         StatusCase{-ETIME, 23}, StatusCase{-ENODEV, 1167},
                                         StatusCase{-ESHUTDOWN, 1167}));

TEST_F(OpenCameraTest, AfterAStallTheReadsGoOnWithEndAndBegin) {
    ASSERT_EQ(device->beginRead(), 0u);
    const auto reads = makeReads(4);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    camera.failNextRead(-EPIPE);
    EXPECT_EQ(reads[0]->finish(*device), 31u);
    EXPECT_TRUE(device->canResumeRead());
    EXPECT_EQ(device->endRead(), 0u);
    for (unsigned i = 1; i < 4; ++i) EXPECT_EQ(reads[i]->finish(*device), 995u);
    EXPECT_EQ(device->beginRead(), 0u);
    EXPECT_EQ(camera.counts().haltsCleared, 1u);
    ASSERT_EQ(reads[0]->start(*device), 997u);
    camera.send(pattern(10));
    EXPECT_EQ(reads[0]->finish(*device), 0u);
}

TEST_F(OpenCameraTest, BeginningDoesNotTouchAnEndpointThatIsNotHalted) {
    EXPECT_EQ(device->beginRead(), 0u);
    EXPECT_EQ(device->endRead(), 0u);
    EXPECT_EQ(device->beginRead(), 0u);
    EXPECT_EQ(camera.counts().haltsCleared, 0u);
}

TEST_F(OpenCameraTest, AHaltLeftBySomebodyElseIsCleared) {
    camera.haltEndpoint();
    EXPECT_EQ(device->beginRead(), 0u);
    EXPECT_EQ(camera.counts().haltsCleared, 1u);
}

TEST_F(OpenCameraTest, ADeviceThatIsGoneCannotBegin) {
    camera.unplug();
    EXPECT_EQ(device->beginRead(), 1167u);
}

TEST_F(OpenCameraTest, EndingCancelsEveryReadInFlightBeforeItReturns) {
    const auto reads = makeReads(32);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    EXPECT_EQ(device->endRead(), 0u);
    EXPECT_EQ(camera.counts().readsInFlight, 0u);
    for (const auto& read : reads) {
        EXPECT_TRUE(read->signalled());
        EXPECT_EQ(device->readResult(read->record, read->transferred, false), 995u);
    }
}

TEST_F(OpenCameraTest, EndingWithNothingInFlightIsFine) {
    EXPECT_EQ(device->endRead(), 0u);
    EXPECT_EQ(device->endRead(), 0u);
}

TEST_F(OpenCameraTest, EndingWakesAThreadThatWaitsForAResult) {
    Read read;
    ASSERT_EQ(read.start(*device), 997u);
    ErrorCode result = 0;
    std::thread reader([&] { result = device->readResult(read.record, read.transferred, true); });
    EXPECT_EQ(device->endRead(), 0u);
    reader.join();
    EXPECT_EQ(result, 995u);
}

TEST_F(OpenCameraTest, ClosingWithReadsInFlightEndsThem) {
    const auto reads = makeReads(16);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    device.reset();
    for (const auto& read : reads) {
        EXPECT_TRUE(read->signalled());
        EXPECT_EQ(read->record.status, 995u);
    }
    EXPECT_EQ(camera.counts().readsInFlight, 0u);
}

TEST_F(OpenCameraTest, ClosingEndsOnlyTheReadsOfThatOpening) {
    ErrorCode error = 1;
    auto second = source->open("usb:1-1", error);
    ASSERT_NE(second, nullptr);
    Read mine;
    Read other;
    ASSERT_EQ(mine.start(*device), 997u);
    ASSERT_EQ(other.start(*second), 997u);
    second.reset();
    EXPECT_TRUE(other.signalled());
    EXPECT_FALSE(mine.signalled());
    camera.send(pattern(5));
    EXPECT_EQ(mine.finish(*device), 0u);
}

TEST_F(OpenCameraTest, APulledCableEndsAllReadsWith1167) {
    const auto reads = makeReads(8);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    camera.send(pattern(6000));  // one read and a part of the next: the frame is not over
    EXPECT_EQ(reads[0]->finish(*device), 0u);
    EXPECT_EQ(reads[1]->finish(*device), 0u);
    camera.unplug();
    for (unsigned i = 2; i < 8; ++i) EXPECT_EQ(reads[i]->finish(*device), 1167u);
    EXPECT_EQ(reads[0]->start(*device), 1167u) << "nothing is queued any more";
    EXPECT_EQ(device->endRead(), 0u);
}

TEST_F(OpenCameraTest, AReadOnADeviceFoundGoneIsNotQueued) {
    camera.unplug();
    Read read;
    EXPECT_EQ(read.start(*device), 1167u);
}

TEST_F(OpenCameraTest, AReadThatTheKernelRefusesCompletesWithItsErrorInsteadOfInvitingARetry) {
    camera.refuseReads(EIO, 1);
    Read read;
    EXPECT_EQ(read.start(*device), 997u);
    EXPECT_TRUE(read.signalled());
    EXPECT_EQ(read.finish(*device), 31u);
    EXPECT_EQ(read.transferred, 0u);
    EXPECT_EQ(read.start(*device), 997u);
    camera.send(pattern(3));
    EXPECT_EQ(read.finish(*device), 0u);
}

TEST_F(OpenCameraTest, AReadOfMoreThanTwoGigabytesIsRefusedAsItsResult) {
    Read read;
    EXPECT_EQ(device->startRead(read.buffer.data(), 0x8000'0000u, read.record), 997u);
    EXPECT_EQ(read.finish(*device), 87u);
}

// The kernel's budget of bytes in flight (usbfs_memory_mb).

TEST_F(OpenCameraTest, ReadsAboveTheKernelsBudgetWaitAndKeepTheirOrder) {
    camera.setBudget(4 * 4096);
    const auto reads = makeReads(16);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    EXPECT_TRUE(camera.waitForReadsInFlight(4));
    EXPECT_EQ(camera.counts().refused, 1u) << "those behind the first refused one are not even tried";
    for (unsigned i = 0; i < 16; ++i) {
        camera.send(pattern(200, i));
        ASSERT_EQ(reads[i]->finish(*device), 0u);
        EXPECT_EQ(reads[i]->data(), pattern(200, i));
    }
    EXPECT_EQ(camera.counts().mostInFlight, 4u);
    std::vector<std::uint64_t> order;
    for (const auto& read : reads) order.push_back(reinterpret_cast<std::uintptr_t>(read->buffer.data()));
    EXPECT_EQ(camera.counts().order, order);
}

TEST_F(OpenCameraTest, ReadsThatWaitForTheBudgetEndWithTheOthers) {
    camera.setBudget(2 * 4096);
    const auto reads = makeReads(6);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    EXPECT_EQ(device->endRead(), 0u);
    for (const auto& read : reads) EXPECT_EQ(read->finish(*device), 995u);
    EXPECT_EQ(camera.counts().reads, 2u);
}

TEST_F(OpenCameraTest, ReadsThatWaitForTheBudgetFindOutThatTheDeviceIsGone) {
    camera.setBudget(2 * 4096);
    const auto reads = makeReads(6);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    camera.unplug();
    for (const auto& read : reads) EXPECT_EQ(read->finish(*device), 1167u);
}

TEST_F(OpenCameraTest, ABudgetThatOthersHoldIsWaitedForWithoutSpinning) {
    camera.setBudget(0);
    Read read;
    ASSERT_EQ(read.start(*device), 997u);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(camera.waitUntil([](const auto& counts) { return counts.refused >= 5; }));
    const auto passed = std::chrono::steady_clock::now() - begin;
    // The first refusal was in the start; four more are at least three intervals of 5 ms apart.
    EXPECT_GE(passed, std::chrono::milliseconds(14));
    EXPECT_FALSE(read.signalled());
    camera.setBudget(4096);
    camera.send(pattern(9));
    EXPECT_EQ(read.finish(*device), 0u);
}

TEST_F(OpenCameraTest, AStreamAboveTheBudgetGoesOnAndKeepsItsOrder) {
    constexpr std::size_t kReads = 8;
    constexpr std::size_t kRounds = 900;
    camera.setBudget(3 * 4096);
    camera.sendEndlessly();
    const auto reads = makeReads(kReads);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    for (std::size_t i = 0; i < kRounds; ++i) {
        Read& read = *reads[i % kReads];
        ASSERT_EQ(read.finish(*device), 0u) << i;
        ASSERT_EQ(read.start(*device), 997u);
    }
    EXPECT_EQ(device->endRead(), 0u);
    const std::vector<std::uint64_t> order = camera.counts().order;
    ASSERT_GE(order.size(), kRounds);
    for (std::size_t i = 0; i < order.size(); ++i) {
        ASSERT_EQ(order[i], reinterpret_cast<std::uintptr_t>(reads[i % kReads]->buffer.data())) << i;
    }
}

TEST_F(OpenCameraTest, ABudgetThatOthersHoldDoesNotKeepFromEnding) {
    camera.setBudget(0);
    const auto reads = makeReads(3);
    for (const auto& read : reads) ASSERT_EQ(read->start(*device), 997u);
    EXPECT_EQ(device->endRead(), 0u);
    for (const auto& read : reads) EXPECT_EQ(read->finish(*device), 995u);
}

TEST_F(OpenCameraTest, ControlRequestsRunBesideReadsInFlight) {
    camera.onControl([](const test::ControlRequest& request) {
        return test::ControlAnswer{0, pattern(request.length, request.value)};
    });
    camera.sendEndlessly();
    std::atomic<bool> stop{false};
    std::thread streamer([&] {
        const auto reads = makeReads(8);
        for (const auto& read : reads) EXPECT_EQ(read->start(*device), 997u);
        for (std::size_t i = 0; !stop; ++i) {
            Read& read = *reads[i % 8];
            EXPECT_EQ(read.finish(*device), 0u);
            EXPECT_EQ(read.start(*device), 997u);
        }
        EXPECT_EQ(device->endRead(), 0u);
    });
    for (std::uint16_t i = 0; i < 200; ++i) {
        Bytes data(64);
        std::uint32_t transferred = 0;
        EXPECT_EQ(device->controlTransfer({0xC0, 128, i, 0}, data, transferred), 0u);
        EXPECT_EQ(data, pattern(64, i));
    }
    stop = true;
    streamer.join();
}

TEST_F(OpenCameraTest, EndingBesideStartsLeavesNothingInFlight) {
    camera.sendEndlessly();
    for (unsigned round = 0; round < 50; ++round) {
        const auto reads = makeReads(8);
        std::atomic<bool> started{false};
        std::thread starter([&] {
            for (const auto& read : reads) EXPECT_EQ(read->start(*device), 997u);
            started = true;
        });
        while (!started) EXPECT_EQ(device->endRead(), 0u);
        starter.join();
        EXPECT_EQ(device->endRead(), 0u);
        for (const auto& read : reads) {
            const ErrorCode code = read->finish(*device);
            EXPECT_TRUE(code == 0 || code == 995) << code;
        }
    }
}

}  // namespace
}  // namespace tavra::usbd
