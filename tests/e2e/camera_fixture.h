// Virtual cameras behind the exported interface: naming them, an open one with its messages, its frames as
// they come.
//
// Every wait is for a message, a frame or a thread. Tests own everything here; FrameLog is called by capture
// threads.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "support/message_receiver.h"
#include "support/process.h"
#include "tavra/tavra_api.h"

namespace tavra::e2e {

using Bytes = std::vector<std::uint8_t>;

// What never takes this long has gone wrong.
constexpr std::uint32_t kPatienceMs = 20000;

// For the image of 32 x 8 of cameras that are named by the hundred: drawing the scene of a whole sensor takes
// longest.
inline const std::string kSmallSensor =
    ":geometry.sensor_width=64:geometry.sensor_height=16:width=32:height=8";

// Makes the cameras of the list the only ones, freshly powered up.
inline void useCameras(const std::string& list) {
    test::setEnvironment("TAVRA_USBD", TAVRA_USBD_LIBRARY);
    test::setEnvironment("TAVRA_VIRTUAL_CAMERAS", "");
    ASSERT_EQ(Tavra_CameraCount(), 0u) << "a real camera is connected";
    test::setEnvironment("TAVRA_VIRTUAL_CAMERAS", list);
}

inline std::uint32_t rawSizeOf(TavraHandle handle) {
    std::uint32_t size = 0;
    EXPECT_TRUE(Tavra_GetRawDataSize(handle, &size));
    return size;
}

inline std::uint32_t previewSizeOf(TavraHandle handle) {
    std::uint32_t size = 0;
    EXPECT_TRUE(Tavra_GetPreviewDataSize(handle, &size, nullptr, nullptr, nullptr));
    return size;
}

// A snapshot of one frame; empty when it failed.
inline Bytes takeRaw(TavraHandle handle, std::uint32_t timeoutMs = kPatienceMs) {
    Bytes frame(rawSizeOf(handle));
    std::uint32_t written = 0;
    const TavraBool good = Tavra_TakeRawSnapShot(
        handle, frame.data(), static_cast<std::uint32_t>(frame.size()), &written, nullptr, timeoutMs);
    frame.resize(good ? written : 0);
    return frame;
}

inline Bytes takePreview(TavraHandle handle, std::uint32_t timeoutMs = kPatienceMs) {
    Bytes image(previewSizeOf(handle));
    std::uint32_t written = 0;
    const TavraBool good = Tavra_TakePreviewSnapShot(
        handle, image.data(), static_cast<std::uint32_t>(image.size()), &written, nullptr, timeoutMs);
    image.resize(good ? written : 0);
    return image;
}

// An open camera that posts its messages to a receiver of its own.
class Camera {
  public:
    explicit Camera(std::uint32_t userId = 0) : handle_(Tavra_Open(userId)) {
        EXPECT_NE(receiver_.window(), nullptr);
        if (handle_ != nullptr) {
            EXPECT_TRUE(Tavra_SetReceiveMsgWindow(handle_, receiver_.window()));
        }
    }
    ~Camera() { close(); }
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    bool isOpen() const { return handle_ != nullptr; }
    operator TavraHandle() const { return handle_; }
    void close() {
        if (handle_ != nullptr) Tavra_Close(handle_);
        handle_ = nullptr;
    }

    // The next message, which must be this one. Its second parameter.
    std::uint64_t expect(std::uint32_t message) {
        test::ReceivedMessage got;
        EXPECT_TRUE(receiver_.wait(got, kPatienceMs)) << message << " did not come";
        EXPECT_EQ(got.message, message);
        return got.parameter2;
    }
    // The next message and its second parameter, whatever it is; 0 for none.
    std::pair<std::uint32_t, std::uint64_t> next() {
        test::ReceivedMessage got;
        EXPECT_TRUE(receiver_.wait(got, kPatienceMs)) << "no message came";
        return {got.message, got.parameter2};
    }
    // Takes what comes in this time, which must be a new mask or destination of the preview.
    void takePlaces(std::uint32_t timeoutMs) {
        test::ReceivedMessage got;
        while (receiver_.wait(got, timeoutMs)) {
            EXPECT_TRUE(got.message == TAVRA_MESSAGE_MASK_CHANGED ||
                        got.message == TAVRA_MESSAGE_DESTINATION_CHANGED)
                << got.message;
        }
    }
    void expectNoMessage() {
        test::ReceivedMessage got;
        EXPECT_FALSE(receiver_.wait(got, 0)) << got.message;
    }
    void start() {
        ASSERT_TRUE(Tavra_StartTransfer(handle_));
        expect(TAVRA_MESSAGE_TRANSFER_STARTED);
    }
    std::uint64_t expectEnd() { return expect(TAVRA_MESSAGE_TRANSFER_ENDED); }
    void stop() {
        ASSERT_TRUE(Tavra_StopTransfer(handle_));
        EXPECT_EQ(expectEnd(), 0u);
    }

  private:
    TavraHandle handle_;
    test::MessageReceiver receiver_;
};

struct Frame {
    Bytes bytes;
    std::uint32_t width = 0, height = 0, number = 0, code = 0;  // code: of the transfer, or the pixel format
    std::uint16_t colorArray = 0;
};

// Keeps the first frames that a camera gives to a callback, and counts the others.
class FrameLog {
  public:
    static void onRaw(void* data, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                      std::uint32_t number, std::uint16_t colorArray, std::uint32_t code, void* context,
                      std::uint32_t*) {
        static_cast<FrameLog*>(context)->add(data, size, {{}, width, height, number, code, colorArray});
    }
    static void onPreview(void* image, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                          std::uint32_t number, std::uint32_t format, void* context, std::uint32_t*) {
        static_cast<FrameLog*>(context)->add(image, size, {{}, width, height, number, format, 0});
    }

    void takeRawOf(TavraHandle handle) {
        std::uint32_t identifier = 0;
        ASSERT_TRUE(Tavra_AddRawCallback(handle, &FrameLog::onRaw, this, &identifier));
    }
    void takePreviewOf(TavraHandle handle) {
        std::uint32_t identifier = 0;
        ASSERT_TRUE(Tavra_AddPreviewBitmapCallback(handle, &FrameLog::onPreview, this, &identifier));
    }

    // The frames there are once there are so many.
    std::vector<Frame> waitFor(std::size_t count) {
        std::unique_lock lock(mutex_);
        EXPECT_TRUE(
            changed_.wait_for(lock, std::chrono::milliseconds(kPatienceMs), [&] { return count_ >= count; }))
            << count_ << " of " << count << " frames came";
        return frames_;
    }
    std::size_t count() {
        const std::lock_guard lock(mutex_);
        return count_;
    }

  private:
    static constexpr std::size_t kKept = 128;

    void add(const void* data, std::uint32_t size, Frame frame) {
        const std::lock_guard lock(mutex_);
        if (frames_.size() < kKept) {
            const auto* const first = static_cast<const std::uint8_t*>(data);
            frame.bytes.assign(first, first + size);
            frames_.push_back(std::move(frame));
        }
        ++count_;
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Frame> frames_;
    std::size_t count_ = 0;
};

inline void expectRisingNumbers(const std::vector<Frame>& frames) {
    for (std::size_t i = 1; i < frames.size(); ++i) EXPECT_GT(frames[i].number, frames[i - 1].number);
}

}  // namespace tavra::e2e
