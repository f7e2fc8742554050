#include "capture/read_engine.h"

#include <gtest/gtest.h>

#include <numeric>
#include <optional>

#include "capture/scripted_stream.h"

namespace tavra {
namespace {

using test::ScriptedStream;
using Bytes = std::vector<std::uint8_t>;
using Calls = std::vector<std::string>;

// Bytes that tell frames and places in them apart.
Bytes frame(std::size_t size, std::uint8_t seed) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), seed);
    return bytes;
}

Bytes part(const Bytes& bytes, std::size_t first, std::size_t size) {
    return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(first),
                 bytes.begin() + static_cast<std::ptrdiff_t>(first + size));
}

// The test's thread is the capture thread.
class ReadEngine : public testing::Test {
  protected:
    // Frames of up to 63 bytes: one read of 64 each, 4 in flight, 9 slots.
    static constexpr FrameLayout kSmall{16, 40, 64};
    // Frames of up to 127 bytes: two reads of 64 each, 4 in flight, 14 slots.
    static constexpr FrameLayout kLarge{16, 100, 64};
    static constexpr std::uint32_t kRead = 64;

    void make(const FrameLayout& layout, bool withMemory = false) {
        usb = stream.table(withMemory);
        engine.emplace(usb, ScriptedStream::kDevice, layout, kRead);
    }

    void start(const FrameLayout& layout) {
        make(layout);
        ASSERT_TRUE(engine->start().ok());
        ASSERT_TRUE(stream.waitInFlight(4));
    }

    FrameBlock& nextBlock() {
        FrameBlock& block = engine->queue().current();
        EXPECT_TRUE(block.filled.wait(10000));
        return block;
    }

    Bytes contents(const FrameBlock& block) { return Bytes(block.data, block.data + block.length); }

    // Completes one read and waits until another is in flight for it.
    void completeAndRefill(const Bytes& bytes) {
        const std::size_t before = stream.started().size();
        stream.complete(bytes);
        ASSERT_TRUE(stream.waitStarted(before + 1));
    }

    void takeAndRelease(const Bytes& expected) {
        const FrameBlock& block = nextBlock();
        EXPECT_EQ(block.status, 0u);
        EXPECT_EQ(contents(block), expected);
        engine->queue().release();
    }

    ScriptedStream stream;
    platform::UsbAccess usb{};
    std::optional<CReadEngine> engine;
};

TEST_F(ReadEngine, QueuesTheFirstReadsBackToBack) {
    start(kLarge);
    const auto reads = stream.started();
    ASSERT_EQ(reads.size(), 4u);
    for (std::size_t i = 0; i < reads.size(); ++i) {
        EXPECT_EQ(reads[i].size, kRead);
        EXPECT_EQ(reads[i].buffer, reads[0].buffer + i * kRead);
    }
    EXPECT_EQ(stream.calls(), Calls{"begin"});
}

TEST_F(ReadEngine, AFrameOfOneReadIsHandedOverWhereItLies) {
    start(kSmall);
    const Bytes sent = frame(56, 1);
    stream.complete(sent);
    const FrameBlock& block = nextBlock();
    EXPECT_EQ(block.status, 0u);
    EXPECT_EQ(block.data, stream.started()[0].buffer);
    EXPECT_EQ(contents(block), sent);
    EXPECT_EQ(block.capacity, 64u);
}

TEST_F(ReadEngine, AFrameOfTwoReadsIsWholeWithoutACopy) {
    start(kLarge);
    const Bytes sent = frame(116, 3);
    completeAndRefill(part(sent, 0, 64));
    EXPECT_FALSE(engine->queue().current().filled.wait(0)) << "a full read does not end a frame";
    completeAndRefill(part(sent, 64, 52));
    const FrameBlock& block = nextBlock();
    EXPECT_EQ(block.data, stream.started()[0].buffer);
    EXPECT_EQ(contents(block), sent);
}

TEST_F(ReadEngine, AnEmptyReadEndsAFrameThatFillsItsReads) {
    start(kLarge);
    const Bytes sent = frame(64, 3);
    completeAndRefill(sent);
    completeAndRefill({});
    takeAndRelease(sent);
}

TEST_F(ReadEngine, AFullBlockIsPassedOnAtItsCapacity) {
    start(kLarge);
    const Bytes sent = frame(128, 9);
    completeAndRefill(part(sent, 0, 64));
    completeAndRefill(part(sent, 64, 64));
    takeAndRelease(sent);
    completeAndRefill(frame(20, 50));
    takeAndRelease(frame(20, 50));
}

TEST_F(ReadEngine, AFrameThatWrapsPastTheLastSlotIsCopiedBehindIt) {
    start(kLarge);
    // 13 frames of one read leave slot 13, the last, for the first half of the next.
    for (std::uint8_t i = 0; i < 13; ++i) {
        completeAndRefill(frame(30, i));
        takeAndRelease(frame(30, i));
    }
    const Bytes sent = frame(116, 77);
    completeAndRefill(part(sent, 0, 64));
    completeAndRefill(part(sent, 64, 52));
    const FrameBlock& block = nextBlock();
    EXPECT_EQ(block.data, stream.started()[0].buffer + 13 * kRead);
    EXPECT_EQ(contents(block), sent);
}

TEST_F(ReadEngine, RunsManyTimesRoundTheRing) {
    start(kLarge);
    for (unsigned i = 0; i < 200; ++i) {
        const Bytes sent = frame(65 + i % 62, static_cast<std::uint8_t>(i));
        completeAndRefill(part(sent, 0, 64));
        completeAndRefill(part(sent, 64, sent.size() - 64));
        takeAndRelease(sent);
    }
}

TEST_F(ReadEngine, ADeviceThatSettlesIsAskedUntilItIsReady) {
    stream.beginErrors = {31, 31, 31};
    start(kSmall);
    EXPECT_EQ(stream.calls(), (Calls{"begin", "begin", "begin", "begin"}));
}

TEST_F(ReadEngine, StopEndsTheWaitForADeviceThatNeverSettles) {
    stream.beginErrors.assign(1000000, 31);
    make(kSmall);
    ASSERT_TRUE(engine->start().ok());
    ASSERT_TRUE(stream.waitBegun(2));
    engine->stop();
    EXPECT_EQ(stream.started().size(), 0u);
    EXPECT_EQ(engine->status(), 0u);
}

TEST_F(ReadEngine, AnotherFailureOfTheBeginningFallsThrough) {
    stream.beginErrors = {87};
    start(kSmall);
    EXPECT_EQ(stream.calls(), Calls{"begin"});
}

TEST_F(ReadEngine, AReadThatCannotBeQueuedIsTriedAgain) {
    stream.startErrors = {0, 8, 8, 0xFFFF, 0};  // 0xFFFF: success in place of pending
    start(kSmall);
    const auto reads = stream.started();
    EXPECT_EQ(reads[1].buffer, reads[0].buffer + kRead);
}

TEST_F(ReadEngine, StopEndsTheRetriesOfARead) {
    make(kSmall);
    stream.startErrors.assign(1000000, 8);
    ASSERT_TRUE(engine->start().ok());
    ASSERT_TRUE(stream.waitBegun(1));
    engine->stop();
    EXPECT_EQ(stream.calls(), (Calls{"begin", "end"}));
    EXPECT_EQ(engine->status(), 0u);
}

class DeviceGone : public ReadEngine, public testing::WithParamInterface<std::uint32_t> {
  protected:
    void expectEnd() {
        EXPECT_TRUE(engine->ended().wait(10000));
        EXPECT_EQ(engine->status(), 5u);
        EXPECT_EQ(stream.calls(), (Calls{"begin", "end"}));
        EXPECT_EQ(stream.inFlight(), 0u);
    }
};

TEST_P(DeviceGone, WhileTheFirstReadsAreQueuedGivesABlock) {
    make(kSmall);
    stream.startErrors = {0, 0, GetParam()};
    ASSERT_TRUE(engine->start().ok());
    EXPECT_EQ(nextBlock().status, 5u);
    expectEnd();
}

TEST_P(DeviceGone, WhileAFurtherReadIsQueuedGivesABlock) {
    make(kSmall);
    stream.startErrors = {0, 0, 0, 0, GetParam()};
    ASSERT_TRUE(engine->start().ok());
    ASSERT_TRUE(stream.waitInFlight(4));
    stream.complete(frame(56, 1));
    EXPECT_EQ(nextBlock().status, 5u);
    expectEnd();
}

TEST_P(DeviceGone, InAReadGivesABlockThatKeepsItsData) {
    start(kLarge);
    completeAndRefill(frame(64, 5));
    stream.fail(GetParam());
    const FrameBlock& block = nextBlock();
    EXPECT_EQ(block.status, 5u);
    EXPECT_EQ(contents(block), frame(64, 5));
    expectEnd();
}

INSTANTIATE_TEST_SUITE_P(Codes, DeviceGone, testing::Values(1167u, 5u));

TEST_F(ReadEngine, AFailureWithoutResumeGivesABlockAndReadingGoesOn) {
    start(kSmall);
    for (const std::uint32_t code : {31u, 23u, 995u}) {
        stream.fail(code);
        EXPECT_EQ(nextBlock().status, code);
        engine->queue().release();
        ASSERT_TRUE(stream.waitInFlight(4));
        completeAndRefill(frame(56, 8));
        takeAndRelease(frame(56, 8));
    }
    EXPECT_EQ(stream.calls(), Calls{"begin"});
}

TEST_F(ReadEngine, AnEmptyFailureEndsTheFrameLikeAShortRead) {
    start(kLarge);
    completeAndRefill(frame(64, 5));
    stream.fail(0);
    takeAndRelease(frame(64, 5));
}

TEST_F(ReadEngine, ADeviceThatResumesIsBegunAgain) {
    stream.canResume = true;
    start(kSmall);
    stream.fail(31);
    ASSERT_TRUE(stream.waitBegun(2));
    ASSERT_TRUE(stream.waitInFlight(4));
    EXPECT_EQ(stream.calls(), (Calls{"begin", "end", "begin"}));
    completeAndRefill(frame(56, 4));
    takeAndRelease(frame(56, 4));
}

TEST_F(ReadEngine, AResumeLeavesFramesAloneThatAreStillHeld) {
    stream.canResume = true;
    start(kSmall);
    completeAndRefill(frame(56, 1));
    completeAndRefill(frame(56, 2));
    ASSERT_TRUE(nextBlock().filled.wait(0));
    const std::size_t before = stream.started().size();
    stream.fail(31);
    ASSERT_TRUE(stream.waitBegun(2));
    ASSERT_TRUE(stream.waitStarted(before + 5));  // one ahead of the failure, four after it
    ASSERT_TRUE(stream.waitInFlight(4));
    for (std::uint8_t i = 0; i < 2; ++i) completeAndRefill(frame(56, static_cast<std::uint8_t>(10 + i)));
    takeAndRelease(frame(56, 1));
    takeAndRelease(frame(56, 2));
    takeAndRelease(frame(56, 10));
    takeAndRelease(frame(56, 11));
}

TEST_F(ReadEngine, WhatCameBeforeAResumeBelongsToTheDamagedFrame) {
    stream.canResume = true;
    start(kLarge);
    stream.fail(31, frame(24, 1));  // shorter than the read, and yet no end of a frame
    ASSERT_TRUE(stream.waitBegun(2));
    ASSERT_TRUE(stream.waitInFlight(4));
    completeAndRefill(frame(20, 40));
    Bytes together = frame(24, 1);
    const Bytes second = frame(20, 40);
    together.insert(together.end(), second.begin(), second.end());
    takeAndRelease(together);
}

TEST_F(ReadEngine, ADamagedFrameIsCutAtTheCapacity) {
    stream.canResume = true;
    start(kSmall);
    stream.fail(31, frame(30, 1));
    ASSERT_TRUE(stream.waitBegun(2));
    ASSERT_TRUE(stream.waitInFlight(4));
    completeAndRefill(frame(60, 100));
    Bytes together = frame(30, 1);
    const Bytes second = frame(34, 100);
    together.insert(together.end(), second.begin(), second.end());
    takeAndRelease(together);
}

// With four blocks held no further read is started, and nothing is lost.
TEST_F(ReadEngine, AStalledCaptureThreadHoldsTheReaderUp) {
    start(kSmall);
    for (std::uint8_t i = 0; i < 4; ++i) completeAndRefill(frame(56, i));
    stream.complete(frame(56, 4));
    EXPECT_EQ(stream.started().size(), 8u);
    for (std::uint8_t i = 0; i < 5; ++i) takeAndRelease(frame(56, i));
    ASSERT_TRUE(stream.waitStarted(9));
    completeAndRefill(frame(56, 5));
    takeAndRelease(frame(56, 5));
}

TEST_F(ReadEngine, StopGetsThroughToAReaderThatIsHeldUp) {
    start(kSmall);
    for (std::uint8_t i = 0; i < 4; ++i) completeAndRefill(frame(56, i));
    stream.complete(frame(56, 4));
    engine->stop();
    EXPECT_EQ(engine->status(), 0u);
    EXPECT_EQ(stream.inFlight(), 0u);
}

TEST_F(ReadEngine, StopWithReadsInFlightEndsThem) {
    start(kSmall);
    engine->stop();
    EXPECT_EQ(stream.calls(), (Calls{"begin", "end"}));
    EXPECT_EQ(stream.inFlight(), 0u);
    EXPECT_EQ(engine->status(), 0u);
    EXPECT_TRUE(engine->ended().wait(0));
}

// The reader begins at the first block again, the capture thread goes on where it stood.
TEST_F(ReadEngine, AfterARestartFramesComeThroughInRotatedOrder) {
    start(kSmall);
    completeAndRefill(frame(56, 0));
    takeAndRelease(frame(56, 0));
    completeAndRefill(frame(56, 1));
    takeAndRelease(frame(56, 1));
    engine->stop();
    ASSERT_TRUE(engine->start().ok());
    ASSERT_TRUE(stream.waitInFlight(4));
    for (std::uint8_t i = 10; i < 14; ++i) completeAndRefill(frame(56, i));
    takeAndRelease(frame(56, 12));
    takeAndRelease(frame(56, 13));
    takeAndRelease(frame(56, 10));
    takeAndRelease(frame(56, 11));
    completeAndRefill(frame(56, 14));
    completeAndRefill(frame(56, 15));
    completeAndRefill(frame(56, 16));
    takeAndRelease(frame(56, 16));
}

TEST_F(ReadEngine, ARestartAfterAHeldUpRunStartsAfresh) {
    start(kSmall);
    for (std::uint8_t i = 0; i < 4; ++i) completeAndRefill(frame(56, i));
    engine->stop();
    ASSERT_TRUE(engine->start().ok());
    EXPECT_FALSE(engine->ended().wait(0)) << "the event of the end is current again";
    ASSERT_TRUE(stream.waitInFlight(4));
    for (std::uint8_t i = 20; i < 40; ++i) {
        completeAndRefill(frame(56, i));
        takeAndRelease(frame(56, i));
    }
}

TEST_F(ReadEngine, ARestartAfterALostDeviceClearsTheStatus) {
    start(kSmall);
    stream.fail(1167);
    ASSERT_TRUE(engine->ended().wait(10000));
    engine->stop();
    ASSERT_TRUE(engine->start().ok());
    ASSERT_TRUE(stream.waitInFlight(4));
    EXPECT_EQ(engine->status(), 0u);
}

TEST_F(ReadEngine, ReadsIntoMemoryOfTheLibraryAndGivesItBackLast) {
    make(kSmall, true);
    ASSERT_TRUE(engine->start().ok());
    ASSERT_TRUE(stream.waitInFlight(4));
    engine.reset();
    EXPECT_EQ(stream.calls(), (Calls{"alloc", "begin", "end", "free"}));
    EXPECT_FALSE(stream.memoryFreedWithReadsInFlight());
}

TEST_F(ReadEngine, TakesOrdinaryPagesWhereTheLibraryHasNone) {
    stream.memoryRefused = true;
    make(kSmall, true);
    ASSERT_TRUE(engine->start().ok());
    ASSERT_TRUE(stream.waitInFlight(4));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(stream.started()[0].buffer) % 4096, 0u);
    completeAndRefill(frame(56, 1));
    takeAndRelease(frame(56, 1));
    engine.reset();
    EXPECT_EQ(stream.calls(), (Calls{"begin", "end"}));
}

TEST_F(ReadEngine, AFrameOfAnUncountableSizeFailsTheStart) {
    make({64, 0xFFFFFFFF, 1024});
    EXPECT_EQ(engine->start().code(), 8u);
    EXPECT_EQ(stream.calls(), Calls{});
}

}  // namespace
}  // namespace tavra
