#include "capture/frame_path.h"

#include <optional>

#include "base/color_array.h"
#include "base/pixel_format.h"
#include "camera/mirror.h"
#include "capture/consumers.h"
#include "capture/information_overlay.h"
#include "capture/recording.h"
#include "capture/roi_pixel_format.h"
#include "capture/snapshot.h"
#include "capture/trigger_registers.h"
#include "control/luminance_ctrl_usb.h"
#include "control/white_balance_ctrl_usb.h"
#include "platform/last_error.h"
#include "stages/bgr_conversion.h"
#include "stages/bit_reduction.h"
#include "stages/chroma_suppress.h"
#include "stages/color_interpolation.h"
#include "stages/color_matrix.h"
#include "stages/flip.h"
#include "stages/gamma.h"
#include "stages/grey_spread.h"
#include "stages/multi_roi_image.h"
#include "stages/shading_correction.h"
#include "stages/sharpness.h"

namespace tavra {
namespace {

constexpr std::uint32_t kGreyFormat = 1;
constexpr std::uint32_t kBgr24Transfer = 1024;
constexpr std::uint32_t kBgr10Transfer = 2048;
constexpr std::uint8_t kImageBits = 8;       // of a sample, in the frame and in the image
constexpr std::uint16_t kBgrBytes = 3;       // of a pixel with its colours, when it is turned
constexpr std::uint8_t kSoftwareMirror = 3;  // of the mirror mode; the camera does the rest

}  // namespace

void FramePath::process(std::uint8_t* data) {
    data_ = data;
    target_ = nullptr;
    const Image image = workOnFrame();
    releaseBlock();
    if (!run_.goOn || image == Image::Abandoned) return;
    if (image == Image::Made) finishImage();
    if (run_.endAfterFrame) run_.goOn = false;
}

// Everything that needs the frame's data. The block stays held meanwhile.
FramePath::Image FramePath::workOnFrame() {
    findColorArrayInForce();
    if (!serveRawSnapshot()) return Image::None;
    callRawCallbacks();
    decideWhatIsDue();
    if (!previewWanted_ && !controlIsDue()) return Image::None;
    if (!composeRegions()) return Image::Abandoned;
    classify();
    if (!frameHoldsImage()) return Image::Abandoned;
    reduceToBytes();
    if (takesRawPath(class_)) {
        reduceNoise();
        applyWhiteBalance();
        if (!controlCamera()) return Image::Abandoned;
    }
    if (!previewWanted_) return Image::None;
    if (takesRawPath(class_)) {
        correctShading();
        applyRawGamma();
    }
    if (class_ != PixelClass::Ycbcr && !turnFrame()) return Image::Abandoned;
    if (!chooseTarget()) return Image::Abandoned;
    if (takesRawPath(class_)) recordRaw();
    const Status made = makeImage();
    if (!made.ok()) {
        endRun(made.code());
        return Image::Abandoned;
    }
    if (class_ == PixelClass::Ycbcr && !turnImage()) return Image::Abandoned;
    return Image::Made;
}

// Everything that needs only the image. The read thread may already reuse the frame's data.
void FramePath::finishImage() {
    if (!finishPixels()) {
        endRun(platform::lastSystemError());
        return;
    }
    recordImage();
    if (!servePreviewSnapshot()) {
        run_.goOn = false;
        return;
    }
    callPreviewBitmapCallbacks();
    if (imageIsShown()) {
        camera_.displayRotation = rotation_;
        drawIntoImage();
        publish();
        postFrameFinished();
        askForRedraw();
    }
    target_ = nullptr;
}

void FramePath::findColorArrayInForce() {
    run_.colorArray = camera_.colorArrayInForce();
}

bool FramePath::serveRawSnapshot() {
    return serveSnapshot(camera_.rawSnapshot, data_, run_.rawSize, run_.frameNumber);
}

void FramePath::callRawCallbacks() {
    camera_.rawCallbacks.forEach([this](auto& node) {
        node.function(data_, run_.rawSize, run_.raw.width, run_.raw.height, run_.frameNumber, run_.colorArray,
                      run_.transferBits, node.context, &node.word);
    });
}

// The controls are asked once a frame: each counts down the frames that it leaves out.
void FramePath::decideWhatIsDue() {
    previewWanted_ = previewWanted(camera_);
    whiteBalanceDue_ = camera_.whiteBalance->frameIsDue();
    exposureDue_ = camera_.exposure->due();
    mirror_ = camera_.mirrorMode & kSoftwareMirror;
    rotation_ = camera_.rotationMode;
}

// The frame itself with fewer than two regions, else the image composed of them. False: none came out.
bool FramePath::composeRegions() {
    width_ = run_.image.width;
    height_ = run_.image.height;
    dataSize_ = run_.rawSize;
    IMultiROIImage* const regions = run_.regions;
    if (regions == nullptr || regions->GetRegionCount() < 2) return true;
    if (!camera_.buffersExist) return false;  // nor would there be memory for this
    regions->ClearComposed();
    std::uint8_t* const composed =
        regions->Compose(0, data_, dataSize_, roiPixelFormat(run_.transferBits, run_.colorArray));
    if (composed == nullptr) return false;
    if (composed != data_) {
        dataSize_ = static_cast<std::uint32_t>(regions->GetComposedStride() * regions->GetComposedSize(1));
    }
    data_ = composed;
    return true;
}

void FramePath::classify() {
    frameCode_ = run_.transferBits;
    class_ = pixelClass(frameCode_);
    mono_ = isMonoFrame(class_, run_.colorArray);
}

// A camera may declare a size and send less than that takes. Such a frame has no preview; its raw consumers
// have been served with what there is.
bool FramePath::frameHoldsImage() const {
    if (class_ == PixelClass::Unknown) return false;
    const std::uint64_t rowBits = std::uint64_t{width_} * transferBitsStored(run_.transferBits);
    // A last pixel of its own has no chroma in a row of YCbCr.
    const std::uint64_t rowBytes = class_ == PixelClass::Ycbcr ? rowBits / 8 : (rowBits + 7) / 8;
    return rowBytes == 0 || height_ <= dataSize_ / rowBytes;
}

void FramePath::reduceToBytes() {
    if (needsReduction(class_)) reduceTo8Bits(width_, height_, run_.transferBits, data_, data_);
}

// Only where a trigger also makes the exposure. What it cannot do leaves the frame as it is.
void FramePath::reduceNoise() {
    if ((run_.triggerWord & trigger::kOnMask) == 0 || (run_.triggerWord & trigger::kExposureMask) == 0)
        return;
    static_cast<void>(camera_.noiseReduction.Process(width_, height_, run_.colorArray, data_));
}

// Not on cameras that have balanced the frame themselves.
void FramePath::applyWhiteBalance() {
    static_cast<void>(camera_.whiteBalance->ApplyGain(width_, height_, run_.colorArray, data_));
}

// Measures the frame, and lets the controls that are due take a step. False: exposure control has failed, the
// run ends.
bool FramePath::controlCamera() {
    // The information overlay wants the statistics of every frame.
    if (!controlIsDue() && camera_.preview.displayInfoMode == 0) return true;
    camera_.statistics.Accumulate(width_, height_, run_.colorArray, data_);
    if (exposureDue_ && !camera_.exposure->step(camera_.statistics).ok()) {
        // Only a request to the camera can fail here, and its error is that of the USB access library.
        endRun(camera_.control.access()->getLastError());
        return false;
    }
    if (whiteBalanceDue_) static_cast<void>(camera_.whiteBalance->controlStep(camera_.statistics));
    return true;
}

void FramePath::correctShading() {
    static_cast<void>(camera_.shadingCorrection->Apply8(width_, height_, 0, data_, kImageBits));
}

// The rows of a raw frame are dense.
void FramePath::applyRawGamma() {
    if (mono_) return;
    static_cast<void>(camera_.gamma->ApplyRaw8(width_, height_, width_, run_.colorArray, data_));
}

// Mirror and rotation of the frame, in place. A mosaic's colour array turns along for what follows. A failure
// costs this frame its preview, and nothing more, and stands as the code of the run's end.
bool FramePath::turnFrame() {
    if (mirror_ == 0 && rotation_ == 0) return true;
    std::uint32_t failure = 0;
    if (takesRawPath(class_)) {
        failure =
            camera_.flip->FlipRaw8(mirror_, rotation_, &width_, &height_, data_, data_, &run_.colorArray);
    } else {
        narrowWordPixels();
        failure =
            camera_.flip->Flip8(mirror_, rotation_, &width_, &height_, data_, data_, mono_ ? 1 : kBgrBytes);
    }
    if (failure != 0) run_.error = failure;
    return failure == 0;
}

// A quarter turn moves three bytes of a pixel. What the image takes of a word with three colours are three
// bytes, too.
void FramePath::narrowWordPixels() {
    if (frameCode_ != kBgr10Transfer) return;
    narrowBgr10Frame(width_, height_, data_);
    frameCode_ = kBgr24Transfer;
}

// The same for frames that become an image as they come, in the image.
// By design: pixels of colour count as three bytes, in an image of four too, and rows as dense, also where
// they are padded.
bool FramePath::turnImage() {
    if (mirror_ == 0 && rotation_ == 0) return true;
    const std::uint16_t pixelBytes = run_.previewFormat == kGreyFormat ? 1 : kBgrBytes;
    const std::uint32_t failure =
        camera_.flip->Flip8(mirror_, rotation_, &width_, &height_, imagePixels(), imagePixels(), pixelBytes);
    if (failure != 0) run_.error = failure;
    return failure == 0;
}

// Also makes sure that the image has the size and depth that the stages will write.
bool FramePath::chooseTarget() {
    if (!camera_.buffersExist) return false;
    ImageBufferSet& set = isQuarterTurn(rotation_) ? camera_.imagesB : camera_.imagesA;
    const platform::BitmapShape& shape = set.shape();
    if (shape.bitCount != 8 * bytesPerPixel(run_.previewFormat)) return false;
    const bool turnsLater = class_ == PixelClass::Ycbcr && isQuarterTurn(rotation_);
    if (shape.width != (turnsLater ? height_ : width_)) return false;
    if (shape.height != (turnsLater ? width_ : height_)) return false;
    // Before its turn the image may take more bytes, as rows are padded.
    if (turnsLater && paddedStride(width_, bytesPerPixel(run_.previewFormat)) * height_ > shape.bytes())
        return false;
    chosen_ = set.chooseFree(run_.frameNumber);
    target_ = &set;
    return true;
}

// For a raw movie: reduced, balanced, corrected and turned. The rows are dense.
void FramePath::recordRaw() {
    record(data_, run_.colorArray, true);
}

Status FramePath::makeImage() {
    switch (class_) {
        case PixelClass::Bgr:
            return convertBgrFrame(frameCode_, width_, height_, data_, run_.previewFormat, imagePixels());
        case PixelClass::Ycbcr: return convertYcbcr();
        default: return interpolateMosaic();
    }
}

// A camera may declare a colour array that is none of a raw frame. A layout of YCbCr would be read past the
// frame's end.
Status FramePath::interpolateMosaic() {
    if (!mono_ && isYcbcr(run_.colorArray)) return Status(error::kInvalidArgument);
    const std::uint16_t colorArray = mono_ ? 1 : run_.colorArray;
    const std::uint32_t pixelBytes = mono_ ? 1 : bytesPerPixel(run_.previewFormat);
    return Status(camera_.colorInterpolation->ConvertEx(width_, height_, width_, data_, 0, imagePixels(),
                                                        camera_.interpolationMethod, colorArray,
                                                        static_cast<std::uint16_t>(pixelBytes)));
}

Status FramePath::convertYcbcr() {
    const std::uint8_t method = run_.previewFormat == kGreyFormat ? 0 : 2;
    return Status(camera_.colorInterpolation->ConvertEx(
        width_, height_, 0, data_, 0, imagePixels(), method, ycbcrColorArray(run_.transferBits),
        static_cast<std::uint16_t>(bytesPerPixel(run_.previewFormat))));
}

void FramePath::releaseBlock() {
    data_ = nullptr;
    queue_.release();
}

// The stages of the finished image, each under its own switch. False: one has failed, with the thread's last
// error.
bool FramePath::finishPixels() {
    const std::uint32_t format = mono_ ? kGreyFormat : run_.previewFormat;
    const auto stride = static_cast<std::uint32_t>(paddedStride(width_, bytesPerPixel(format)));
    std::uint8_t* const pixels = imagePixels();
    static_cast<void>(camera_.gamma->ApplyImage8(width_, height_, stride, format, pixels));
    if (camera_.sharpness->Apply8(width_, height_, stride, format, pixels, kImageBits) != 0) return false;
    if (mono_) return spreadGrey();
    if (camera_.colorMatrix->Apply8(width_, height_, stride, format, pixels, kImageBits) != 0) return false;
    return camera_.chromaSuppress->Apply8(width_, height_, stride, format, pixels) == 0;
}

// A mono image's rows are its width rounded up to 4 until here.
bool FramePath::spreadGrey() {
    return spreadGreyInPlace(width_, height_, run_.previewFormat, imagePixels()).ok();
}

void FramePath::recordImage() {
    record(imagePixels(), 0, false);
}

bool FramePath::servePreviewSnapshot() {
    return serveSnapshot(camera_.previewSnapshot, imagePixels(), imageBytes(), run_.frameNumber);
}

void FramePath::callPreviewBitmapCallbacks() {
    camera_.previewBitmapCallbacks.forEach([this](auto& node) {
        node.function(imagePixels(), imageBytes(), width_, height_, run_.frameNumber, run_.previewFormat,
                      node.context, &node.word);
    });
}

// Without both nothing is published and nothing posted. A window that the user has closed is none.
bool FramePath::imageIsShown() {
    return camera_.preview.alive() || !camera_.previewGdiCallbacks.empty();
}

// The application's callbacks, and over what they drew the information overlay. The context ends before the
// image is published: what was drawn is in the pixels then.
void FramePath::drawIntoImage() {
    std::optional<platform::MemoryContext> context;
    const auto drawOn = [&]() -> platform::MemoryContext& {
        return context ? *context : context.emplace(target_->image(chosen_).bitmap, &drawingMemory_);
    };
    camera_.previewGdiCallbacks.forEach(
        [&](auto& node) {
            const TavraDC dc = drawOn().dc();
            if (dc == nullptr) return;  // nothing to draw on could be made
            node.function(dc, width_, height_, run_.frameNumber, node.context, node.word);
        },
        [&] {
            const std::uint32_t infoMode = camera_.preview.displayInfoMode;  // a callback may have set it
            if (infoMode != 0) drawInformation(camera_, drawOn().paint(), infoMode);
        });
}

void FramePath::publish() {
    target_->publish(chosen_);
}

void FramePath::publishPending() {
    if (target_ == nullptr) return;
    camera_.displayRotation = rotation_;
    publish();
}

// A full queue loses the message.
void FramePath::postFrameFinished() {
    static_cast<void>(camera_.postToReceiver(TAVRA_MESSAGE_FRAME_FINISHED, run_.frameNumber));
}

// While a recorder exists the window is drawn as long as the next block has not arrived, so that drawing
// never delays a recording; otherwise at the worker's pace.
void FramePath::askForRedraw() {
    if (!camera_.preview.alive()) return;
    if (!camera_.recording.exists()) {
        drawWorker_.request(camera_.preview.window());
    } else if (!queue_.hasArrived()) {
        camera_.preview.invalidate();
    }
}

// Waits while the writer lags. A stream that is there for the recording ends with it.
void FramePath::record(const std::uint8_t* frame, std::uint32_t tag, bool raw) {
    if (!camera_.recording.exists()) return;
    const RecordedFrame recorded{frame, run_.frameNumber, tag, raw, target_->shape()};
    if (!recordFrame(camera_.recording, recorded)) run_.endAfterFrame = true;
}

void FramePath::endRun(std::uint32_t code) {
    run_.error = code;
    run_.goOn = false;
}

}  // namespace tavra
