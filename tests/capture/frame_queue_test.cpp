#include "capture/frame_queue.h"

#include <gtest/gtest.h>

namespace tavra {
namespace {

class Queue : public testing::Test {
  protected:
    void fill() {
        ASSERT_TRUE(queue.waitWritable());
        queue.pass(0);
        queue.advance();
    }

    platform::Event stop{platform::Event::Reset::Manual};
    FrameQueue queue{{16, 40, 64}, 64, stop};
};

TEST_F(Queue, HasSpaceUntilFourBlocksAreHeld) {
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(queue.waitSpace());
        fill();
    }
    stop.set();
    EXPECT_FALSE(queue.waitSpace());
    EXPECT_FALSE(queue.waitWritable());
}

TEST_F(Queue, AReleaseMakesSpace) {
    for (int i = 0; i < 4; ++i) fill();
    EXPECT_TRUE(queue.current().filled.wait(0));
    queue.release();
    EXPECT_TRUE(queue.waitSpace());
    EXPECT_TRUE(queue.waitWritable());
}

TEST_F(Queue, AReleasedBlockIsEmpty) {
    std::uint8_t byte = 0;
    FrameBlock& block = queue.writing();
    block.data = &byte;
    block.length = 1;
    fill();
    queue.release();
    EXPECT_EQ(block.data, nullptr);
    EXPECT_EQ(block.length, 0u);
    EXPECT_TRUE(block.free.wait(0));
    EXPECT_FALSE(block.filled.wait(0));
}

TEST_F(Queue, TellsWhetherTheCurrentBlockHasArrived) {
    EXPECT_FALSE(queue.hasArrived());
    fill();
    EXPECT_TRUE(queue.hasArrived());
    queue.release();
    EXPECT_FALSE(queue.hasArrived());
    fill();
    EXPECT_TRUE(queue.hasArrived());
}

TEST_F(Queue, RestartedWritingFindsSpaceAndEmptyBlocks) {
    for (int i = 0; i < 4; ++i) fill();
    queue.restartWriting();
    EXPECT_TRUE(queue.waitSpace());
    EXPECT_TRUE(queue.waitWritable());
    EXPECT_FALSE(queue.current().filled.wait(0));
}

}  // namespace
}  // namespace tavra
