#include "capture/read_sizes.h"

#include <gtest/gtest.h>

namespace tavra {
namespace {

ReadSizes sizesOf(const FrameLayout& layout) {
    return readSizes(layout, maximumTransfer(layout)).value();
}

TEST(ReadSizes, ASmallFrameIsReadInOneRead) {
    const ReadSizes sizes = sizesOf({64, 307200, 512});
    EXPECT_EQ(sizes.blockSize, 307712u);
    EXPECT_EQ(sizes.readSize, 307712u);
    EXPECT_EQ(sizes.firstDepth, 4u);
    EXPECT_EQ(sizes.slotCount, 9u);
    EXPECT_EQ(sizes.bufferSize, 10u * 307712u);
}

TEST(ReadSizes, ALargeFrameIsReadInPiecesOf512KiB) {
    const ReadSizes sizes = sizesOf({64, 5000000, 1024});
    EXPECT_EQ(sizes.readSize, 524288u);
    EXPECT_EQ(sizes.blockSize, 5242880u);
    EXPECT_EQ(sizes.firstDepth, 20u);
    EXPECT_EQ(sizes.slotCount, 70u);
    EXPECT_EQ(sizes.bufferSize, 8u * 5242880u);
}

TEST(ReadSizes, AFrameOfWholePacketsGetsRoomForOneMore) {
    EXPECT_EQ(sizesOf({64, 1024 - 64, 512}).blockSize, 1536u);
    EXPECT_EQ(sizesOf({64, 1024 - 63, 512}).blockSize, 1536u);
    EXPECT_EQ(sizesOf({64, 1024 - 65, 512}).blockSize, 1024u);
}

TEST(ReadSizes, AFrameOfExactly512KiBNeedsASecondRead) {
    // The block takes the frame and a packet; the read is cut at 512 KiB, so the block becomes two reads.
    const ReadSizes sizes = sizesOf({64, 0x80000 - 64, 512});
    EXPECT_EQ(sizes.readSize, 0x80000u);
    EXPECT_EQ(sizes.blockSize, 0x100000u);
    EXPECT_EQ(sizes.firstDepth, 4u);
    EXPECT_EQ(sizes.slotCount, 14u);  // 4 reads of 512 KiB are two blocks: (3 + 4) x 2
}

TEST(ReadSizes, AnEmptyFrameStillHasAPacket) {
    const ReadSizes sizes = sizesOf({0, 0, 1024});
    EXPECT_EQ(sizes.blockSize, 1024u);
    EXPECT_EQ(sizes.slotCount, 9u);
}

TEST(ReadSizes, TheLargestCountIsNotCutTo32Bits) {
    const ReadSizes sizes = sizesOf({64, 0x80000000, 1024});
    EXPECT_EQ(sizes.blockSize, 0x80080000u);
    EXPECT_EQ(sizes.firstDepth, 2u * 4097u);
    EXPECT_EQ(sizes.bufferSize, std::uint64_t{8} * 0x80080000u);
}

TEST(ReadSizes, AFrameThatCannotBeCountedIsRefused) {
    const FrameLayout layout{64, 0xFFFFFFFF, 1024};
    EXPECT_FALSE(readSizes(layout, maximumTransfer(layout)).has_value());
}

TEST(ReadSizes, SlotsCoverTheBlocksAndOneIsSpare) {
    for (std::uint32_t raw = 1; raw < 4000000; raw = raw * 5 / 4 + 7) {
        for (const std::uint32_t packet : {512u, 1024u}) {
            const ReadSizes sizes = sizesOf({64, raw, packet});
            ASSERT_GT(sizes.blockSize, 64 + raw);
            ASSERT_EQ(sizes.blockSize % sizes.readSize, 0u);
            ASSERT_EQ(sizes.readSize % packet, 0u);
            const std::uint64_t slots = std::uint64_t{sizes.slotCount} * sizes.readSize;
            ASSERT_EQ(slots + sizes.blockSize, sizes.bufferSize);
            ASSERT_GE(std::uint64_t{sizes.firstDepth} * sizes.readSize, 2ull * sizes.blockSize);
            // Four held blocks, all reads in flight and the one just taken have slots of their own.
            const std::uint32_t readsOfBlock = sizes.blockSize / sizes.readSize;
            ASSERT_GE(sizes.slotCount, 4 * readsOfBlock + sizes.firstDepth + 1);
        }
    }
}

}  // namespace
}  // namespace tavra
