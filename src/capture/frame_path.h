// The way of one frame through the library, from the untouched raw data to the published preview image.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "camera/common_param.h"
#include "capture/draw_worker.h"
#include "capture/frame_queue.h"
#include "capture/pixel_class.h"
#include "capture/run_state.h"
#include "platform/bitmap.h"

namespace tavra {

// Made by the capture thread for its run and used by it alone. Frames are worked on where they lie, in the
// read memory; nothing is copied between USB and the stages.
class FramePath {
  public:
    FramePath(TAVRA_COMMON_PARAM& camera, RunState& run, FrameQueue& queue, CWorkerDrawTimming& drawWorker)
        : camera_(camera), run_(run), queue_(queue), drawWorker_(drawWorker) {}

    // Takes the raw data of the queue's current block all the way, and releases the block on it. Whether the
    // run goes on stands in its state.
    void process(std::uint8_t* data);

    // At the end of a run: an image that was begun and not finished becomes the ready one all the same.
    void publishPending();

  private:
    // How far the steps that need the frame's data came.
    enum class Image { None, Made, Abandoned };

    Image workOnFrame();
    void finishImage();

    // In the order in which a frame meets them.
    void findColorArrayInForce();
    bool serveRawSnapshot();
    void callRawCallbacks();
    void decideWhatIsDue();
    bool controlIsDue() const { return exposureDue_ || whiteBalanceDue_; }
    bool composeRegions();
    void classify();
    bool frameHoldsImage() const;
    void reduceToBytes();
    void reduceNoise();
    void applyWhiteBalance();
    bool controlCamera();
    void correctShading();
    void applyRawGamma();
    bool turnFrame();
    void narrowWordPixels();
    bool chooseTarget();
    void recordRaw();
    Status makeImage();
    Status interpolateMosaic();
    Status convertYcbcr();
    bool turnImage();
    void releaseBlock();
    bool finishPixels();
    bool spreadGrey();
    void recordImage();
    bool servePreviewSnapshot();
    void callPreviewBitmapCallbacks();
    bool imageIsShown();
    void drawIntoImage();
    void askForRedraw();
    void publish();
    void postFrameFinished();

    void record(const std::uint8_t* frame, std::uint32_t tag, bool raw);
    void endRun(std::uint32_t code);
    std::uint32_t imageBytes() const { return static_cast<std::uint32_t>(target_->shape().bytes()); }
    std::uint8_t* imagePixels() const { return target_->image(chosen_).bitmap.pixels(); }

    TAVRA_COMMON_PARAM& camera_;
    RunState& run_;
    FrameQueue& queue_;
    CWorkerDrawTimming& drawWorker_;

    // The frame at hand: in the read memory, or composed of its regions.
    std::uint8_t* data_ = nullptr;
    std::uint32_t dataSize_ = 0;  // bytes
    bool previewWanted_ = false;
    bool whiteBalanceDue_ = false;
    bool exposureDue_ = false;
    std::uint8_t mirror_ = 0;  // what is left to software
    std::uint8_t rotation_ = 0;
    std::uint32_t width_ = 0;  // as the stages see it, after mirror and rotation
    std::uint32_t height_ = 0;
    std::uint32_t frameCode_ = 0;  // transfer bits of what data_ holds now
    PixelClass class_ = PixelClass::Unknown;
    bool mono_ = false;

    // The image it goes into; null while none is begun.
    ImageBufferSet* target_ = nullptr;
    std::uint32_t chosen_ = 0;
    platform::DrawingMemory drawingMemory_;  // what callbacks draw in, from image to image
};

}  // namespace tavra
