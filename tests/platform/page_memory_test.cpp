#include "platform/page_memory.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tavra::platform {
namespace {

TEST(PageBlock, StartsAtAPageAndIsZero) {
    for (const std::size_t size : {1u, 2064u, 4096u, 1'000'003u}) {
        PageBlock block;
        ASSERT_TRUE(block.allocate(size).ok());
        EXPECT_EQ(block.size(), size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block.data()) % 4096, 0u);
        EXPECT_TRUE(std::all_of(block.data(), block.data() + size, [](std::uint8_t b) { return b == 0; }));
        std::fill_n(block.data(), size, std::uint8_t{0xFF});
    }
}

TEST(PageBlock, AllocatingAgainGivesFreshBytes) {
    PageBlock block;
    ASSERT_TRUE(block.allocate(100).ok());
    block.data()[99] = 7;
    ASSERT_TRUE(block.allocate(200).ok());
    EXPECT_EQ(block.size(), 200u);
    EXPECT_EQ(block.data()[99], 0);
    block.free();
    EXPECT_EQ(block.data(), nullptr);
    EXPECT_EQ(block.size(), 0u);
    block.free();
}

TEST(PageBlock, WhatCannotBeHadIsCode8AndLeavesItEmpty) {
    PageBlock block;
    ASSERT_TRUE(block.allocate(100).ok());
    EXPECT_EQ(block.allocate(std::size_t{1} << 60).code(), 8u);
    EXPECT_EQ(block.data(), nullptr);
    EXPECT_EQ(block.size(), 0u);
    EXPECT_EQ(block.allocate(0).code(), 8u);
    EXPECT_EQ(block.data(), nullptr);
}

TEST(PageBlock, Moves) {
    PageBlock first, second;
    ASSERT_TRUE(first.allocate(10).ok());
    ASSERT_TRUE(second.allocate(20).ok());
    std::uint8_t* const memory = first.data();
    second = std::move(first);
    EXPECT_EQ(second.data(), memory);
    EXPECT_EQ(second.size(), 10u);
    const PageBlock third(std::move(second));
    EXPECT_EQ(third.data(), memory);
}

TEST(PageMemory, SomePhysicalMemoryIsFree) {
    EXPECT_GT(freePhysicalMemory(), 1u << 20);
    EXPECT_LT(freePhysicalMemory(), std::uint64_t{1} << 50) << "bytes";
}

}  // namespace
}  // namespace tavra::platform
