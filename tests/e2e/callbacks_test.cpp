#include <thread>

#include "e2e/camera_fixture.h"

namespace tavra::e2e {
namespace {

// Holds its camera's capture thread in the first frame until it is let go.
class Gate {
  public:
    static void onRaw(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t,
                      std::uint32_t, void* context, std::uint32_t*) {
        static_cast<Gate*>(context)->pass();
    }
    void stallOn(TavraHandle handle) {
        std::uint32_t identifier = 0;
        ASSERT_TRUE(Tavra_AddRawCallback(handle, &Gate::onRaw, this, &identifier));
    }
    void waitUntilReached() { wait(reached_); }
    void open() { set(open_); }

  private:
    void pass() {
        set(reached_);
        wait(open_);
    }
    void set(bool& flag) {
        const std::lock_guard lock(mutex_);
        flag = true;
        changed_.notify_all();
    }
    void wait(const bool& flag) {
        std::unique_lock lock(mutex_);
        EXPECT_TRUE(changed_.wait_for(lock, std::chrono::milliseconds(kPatienceMs), [&] { return flag; }));
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    bool reached_ = false, open_ = false;
};

TEST(Callbacks, ThatStallLoseNothingThatTheCameraKeeps) {
    useCameras("mono:width=32:height=8:pace=off");
    Camera camera;
    Gate gate;
    FrameLog log;
    gate.stallOn(camera);
    log.takeRawOf(camera);
    camera.start();
    gate.waitUntilReached();
    EXPECT_EQ(log.count(), 0u);
    gate.open();
    const std::vector<Frame> frames = log.waitFor(40);
    camera.stop();
    for (std::uint32_t i = 0; i < 40; ++i) EXPECT_EQ(frames[i].number, i);
}

// The frames of another camera of the same rate are the clock. Four blocks fill, and the four reads that are
// queued; then nothing is read, and the camera's further frames are lost with their numbers. A few may be
// lost before, where a busy system lets the reader run late.
TEST(Callbacks, ThatStallHoldNoMoreThanFourFramesAndTheReadsUnderWay) {
    useCameras("mono:width=32:height=8:userid=1,mono:width=32:height=8:userid=2");
    Camera stalled(1), clock(2);
    Gate gate;
    FrameLog log, ticks;
    gate.stallOn(stalled);
    log.takeRawOf(stalled);
    ticks.takeRawOf(clock);
    stalled.start();
    gate.waitUntilReached();
    clock.start();
    ticks.waitFor(60);
    gate.open();
    const std::vector<Frame> frames = log.waitFor(20);
    stalled.stop();
    clock.stop();
    expectRisingNumbers(frames);
    std::size_t held = 1;
    while (held < frames.size() && frames[held].number <= frames[held - 1].number + 20) ++held;
    ASSERT_LT(held, frames.size()) << "the camera went on meanwhile";
    EXPECT_GE(held, 4u);
    EXPECT_LE(held, 9u);
}

TEST(Callbacks, ThatStallHoldUpAStopAndNothingElse) {
    useCameras("mono:width=32:height=8:pace=off");
    Camera camera;
    Gate gate;
    gate.stallOn(camera);
    camera.start();
    gate.waitUntilReached();
    std::uint32_t mode = 0;
    EXPECT_TRUE(Tavra_GetTriggerMode(camera, &mode)) << "requests do not wait for it";
    EXPECT_FALSE(Tavra_SetPreviewPixelFormat(camera, TAVRA_PIXEL_BGR_24));
    EXPECT_EQ(Tavra_GetLastError(camera), TAVRA_ERROR_TRANSFER_RUNNING);
    std::thread stopper([&] { EXPECT_TRUE(Tavra_StopTransfer(camera)); });
    gate.open();
    stopper.join();
    EXPECT_EQ(camera.expectEnd(), 0u);
}

// Changes the list once, from inside.
struct Changer {
    TavraHandle handle = nullptr;
    std::uint32_t remove = 0;
    FrameLog* add = nullptr;
    bool done = false;
    std::uint32_t added = 0;

    static void onRaw(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t,
                      std::uint32_t, void* context, std::uint32_t*) {
        static_cast<Changer*>(context)->change();
    }
    void change() {
        if (done) return;
        done = true;
        if (remove != 0) {
            EXPECT_TRUE(Tavra_RemoveRawCallback(handle, remove));
        }
        if (add != nullptr) {
            EXPECT_TRUE(Tavra_AddRawCallback(handle, &FrameLog::onRaw, add, &added));
        }
    }
};

TEST(Callbacks, MayRemoveOthersAndAddNewOnes) {
    useCameras("mono:width=32:height=8:pace=off");
    Camera camera;
    FrameLog before, removed, added;
    Changer changer;
    changer.handle = camera;
    changer.add = &added;
    std::uint32_t identifier = 0;
    before.takeRawOf(camera);
    ASSERT_TRUE(Tavra_AddRawCallback(camera, &Changer::onRaw, &changer, &identifier));
    EXPECT_EQ(identifier, 2u);
    ASSERT_TRUE(Tavra_AddRawCallback(camera, &FrameLog::onRaw, &removed, &changer.remove));
    EXPECT_EQ(changer.remove, 3u);
    camera.start();
    added.waitFor(3);
    camera.stop();
    EXPECT_EQ(removed.count(), 0u) << "it stood behind the one that removed it";
    EXPECT_GE(before.count(), 3u);
    EXPECT_EQ(changer.added, 3u) << "one above the highest that was left";
    std::uint32_t count = 0;
    ASSERT_TRUE(Tavra_GetRawCallbackCount(camera, &count));
    EXPECT_EQ(count, 3u);
}

TEST(Callbacks, AreNotCalledOnceTheyAreRemoved) {
    useCameras("mono:width=32:height=8:pace=off");
    Camera camera;
    FrameLog first, second, image;
    first.takeRawOf(camera);
    image.takePreviewOf(camera);
    camera.start();
    image.waitFor(3);
    second.takeRawOf(camera);
    second.waitFor(2);
    ASSERT_TRUE(Tavra_RemoveRawCallback(camera, 1));
    const std::size_t frames = first.count();
    ASSERT_TRUE(Tavra_RemoveAllPreviewBitmapCallback(camera));
    const std::size_t images = image.count();
    second.waitFor(second.count() + 5);
    EXPECT_EQ(first.count(), frames);
    EXPECT_EQ(image.count(), images);
    camera.stop();
}

TEST(Callbacks, OfImagesGetTheFormatThatIsSet) {
    useCameras("bayer:width=64:height=48:pace=off");
    Camera camera;
    ASSERT_TRUE(Tavra_SetPreviewPixelFormat(camera, TAVRA_PIXEL_BGR_32));
    FrameLog log;
    log.takePreviewOf(camera);
    camera.start();
    for (const Frame& image : log.waitFor(3)) {
        EXPECT_EQ(image.bytes.size(), 64u * 48u * 4u);
        EXPECT_EQ(image.code, static_cast<std::uint32_t>(TAVRA_PIXEL_BGR_32));
    }
    camera.stop();
}

}  // namespace
}  // namespace tavra::e2e
