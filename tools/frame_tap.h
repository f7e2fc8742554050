// Copies of raw frames or of finished images, taken from a running stream when asked.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "camera.h"

namespace tavra::tool {

struct TappedFrame {
    std::vector<std::uint8_t> data;
    std::uint32_t width = 0, height = 0, number = 0;
    std::uint16_t colorArray = 0;    // of a raw frame
    std::uint32_t transferBits = 0;  // of a raw frame
    std::uint32_t pixelFormat = 0;   // of an image
};

// Registers itself with the camera. Made before the stream starts, gone after it has stopped. The capture
// thread fills it, another thread asks and takes out.
class FrameTap {
  public:
    enum class What : std::uint8_t { RawFrames, Images };

    FrameTap(const Camera& camera, What what);
    ~FrameTap();
    FrameTap(const FrameTap&) = delete;
    FrameTap& operator=(const FrameTap&) = delete;

    // The next frame is copied.
    void ask();
    // Takes the copy, if there is one, without waiting.
    bool take(TappedFrame& frame);

  private:
    static void onRaw(void* data, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                      std::uint32_t number, std::uint16_t colorArray, std::uint32_t transferBits,
                      void* context, std::uint32_t* word);
    static void onImage(void* data, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                        std::uint32_t number, std::uint32_t pixelFormat, void* context, std::uint32_t* word);
    void keep(const void* data, std::uint32_t size, const TappedFrame& description);

    const Camera& camera_;
    What what_;
    std::uint32_t identifier_ = 0;
    std::mutex mutex_;
    bool wanted_ = false;
    bool full_ = false;
    TappedFrame kept_;
};

}  // namespace tavra::tool
