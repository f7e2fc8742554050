#include "read_queue.h"

#include <gtest/gtest.h>

#include <numeric>
#include <thread>

#include "platform/event.h"

namespace tavra::usbd {
namespace {

constexpr std::uint32_t kPacket = 512;

struct QueuedRead {
    explicit QueuedRead(std::uint32_t size) : bytes(size, 0xEE) { record.event = event.native(); }
    platform::Event event{platform::Event::Reset::Manual, true};
    std::vector<std::uint8_t> bytes;
    TavraUsbRead record{};

    std::uint32_t start(ReadQueue& queue) {
        return queue.start(bytes.data(), static_cast<std::uint32_t>(bytes.size()), record);
    }
};

std::vector<std::uint8_t> transferOf(std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    return bytes;
}

// Lengths of the reads that one transfer ends, all of one size; the bytes are compared as well.
std::vector<std::uint32_t> lengths(std::size_t transferSize, std::uint32_t readSize, int reads) {
    ReadQueue queue(kPacket);
    queue.open();
    std::vector<std::unique_ptr<QueuedRead>> all;
    for (int i = 0; i < reads; ++i) {
        all.push_back(std::make_unique<QueuedRead>(readSize));
        EXPECT_EQ(all.back()->start(queue), 997u);
    }
    const auto transfer = transferOf(transferSize);
    EXPECT_TRUE(queue.send(transfer, nullptr));
    std::vector<std::uint32_t> found;
    std::size_t at = 0;
    for (const auto& read : all) {
        std::uint32_t count = 0;
        const ErrorCode result = queue.result(read->record, count, false);
        EXPECT_EQ(result == 0, read->event.wait(0)) << "the event stands for completion";
        if (result == 996) break;
        EXPECT_EQ(result, 0u);
        EXPECT_TRUE(std::equal(read->bytes.begin(), read->bytes.begin() + count,
                               transfer.begin() + static_cast<long>(at)));
        EXPECT_TRUE(
            std::all_of(read->bytes.begin() + count, read->bytes.end(), [](auto b) { return b == 0xEE; }));
        at += count;
        found.push_back(count);
    }
    EXPECT_EQ(at, transferSize);
    queue.cancelAll(995);
    return found;
}

using Lengths = std::vector<std::uint32_t>;

TEST(BulkPipe, AShortPacketEndsARead) {
    EXPECT_EQ(lengths(1000, 4096, 2), (Lengths{1000}));
    EXPECT_EQ(lengths(1, 512, 2), (Lengths{1}));
}

TEST(BulkPipe, AFullReadGoesOnInTheNext) {
    EXPECT_EQ(lengths(2500, 1024, 4), (Lengths{1024, 1024, 452}));
}

TEST(BulkPipe, AWholeNumberOfPacketsEndsWithAnEmptyOne) {
    EXPECT_EQ(lengths(1024, 4096, 2), (Lengths{1024})) << "the empty packet ends the read";
    EXPECT_EQ(lengths(1024, 1024, 3), (Lengths{1024, 0}))
        << "a full read leaves the empty packet to the next";
    EXPECT_EQ(lengths(2048, 1024, 4), (Lengths{1024, 1024, 0}));
    EXPECT_EQ(lengths(0, 1024, 2), (Lengths{0}));
}

TEST(BulkPipe, AShortPacketThatFillsItsReadEndsTheTransfer) {
    // A read of 700 bytes takes one packet and the short one of 188 bytes exactly.
    EXPECT_EQ(lengths(700, 700, 2), (Lengths{700}));
}

TEST(BulkPipe, AReadThatEndsInsideAPacketIsOverrun) {
    ReadQueue queue(kPacket);
    queue.open();
    QueuedRead odd(700), rest(4096);
    odd.start(queue);
    rest.start(queue);
    EXPECT_TRUE(queue.send(transferOf(2000), nullptr));
    std::uint32_t count = 0;
    EXPECT_EQ(queue.result(odd.record, count, true), 23u);
    EXPECT_EQ(count, 512u);
    EXPECT_EQ(queue.result(rest.record, count, true), 0u);
    EXPECT_EQ(count, 2000u - 1024u) << "the packet that did not fit is lost";
}

TEST(BulkPipe, TheFrameNumberIsPutInWhereverReadsAreCut) {
    const auto transfer = transferOf(3 * kPacket + 5);
    for (const std::size_t offset : {std::size_t{12}, std::size_t{510}, std::size_t{1022}}) {
        ReadQueue queue(kPacket);
        queue.open();
        QueuedRead a(512), b(512), c(512), d(512);
        for (auto* read : {&a, &b, &c, &d}) read->start(queue);
        const FrameNumber number{offset, 0x44332211};
        EXPECT_TRUE(queue.send(transfer, &number));
        std::vector<std::uint8_t> expected = transfer, got;
        for (int i = 0; i < 4; ++i)
            expected[offset + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(0x11 * (i + 1));
        for (auto* read : {&a, &b, &c, &d}) {
            std::uint32_t count = 0;
            ASSERT_EQ(queue.result(read->record, count, true), 0u);
            got.insert(got.end(), read->bytes.begin(), read->bytes.begin() + count);
        }
        EXPECT_EQ(got, expected);
    }
}

TEST(BulkPipe, ANewReadResetsItsEvent) {
    ReadQueue queue(kPacket);
    QueuedRead read(512);
    EXPECT_TRUE(read.event.wait(0));
    read.start(queue);
    EXPECT_FALSE(read.event.wait(0));
    std::uint32_t count = 9;
    EXPECT_EQ(queue.result(read.record, count, false), 996u);
    queue.cancelAll(995);
    EXPECT_TRUE(read.event.wait(0));
    EXPECT_EQ(queue.result(read.record, count, false), 995u);
    EXPECT_EQ(count, 0u);
}

TEST(BulkPipe, AWaiterGetsTheResultWithoutPolling) {
    ReadQueue queue(kPacket);
    queue.open();
    QueuedRead read(512);
    read.start(queue);
    std::thread waiter([&] {
        std::uint32_t count = 0;
        EXPECT_EQ(queue.result(read.record, count, true), 0u);
        EXPECT_EQ(count, 100u);
    });
    EXPECT_TRUE(queue.send(transferOf(100), nullptr));
    waiter.join();
}

TEST(BulkPipe, StoppingEndsTheSendersWaits) {
    ReadQueue queue(kPacket);
    queue.open();
    std::thread sender([&] { EXPECT_FALSE(queue.send(transferOf(100), nullptr)); });
    queue.stopSending();
    sender.join();
    EXPECT_FALSE(queue.waitForRead());
    EXPECT_FALSE(queue.fail(23));
}

TEST(BulkPipe, ABrokenPipeRefusesReads) {
    ReadQueue queue(kPacket);
    QueuedRead read(512);
    queue.breakOff(1167);
    EXPECT_EQ(read.start(queue), 1167u);
    queue.breakOff(0);
    EXPECT_EQ(read.start(queue), 997u);
    queue.cancelAll(995);
}

TEST(BulkPipe, OneReadCanBeMadeToFail) {
    ReadQueue queue(kPacket);
    queue.open();
    QueuedRead bad(512), good(512);
    bad.start(queue);
    good.start(queue);
    EXPECT_TRUE(queue.fail(23));
    EXPECT_TRUE(queue.send(transferOf(10), nullptr));
    std::uint32_t count = 0;
    EXPECT_EQ(queue.result(bad.record, count, true), 23u);
    EXPECT_EQ(queue.result(good.record, count, true), 0u);
    EXPECT_EQ(count, 10u);
}

}  // namespace
}  // namespace tavra::usbd
