#include "capture/frame_path.h"

#include <optional>

#include "base/pixel_format.h"
#include "capture/consumers.h"
#include "capture/snapshot.h"
#include "platform/bitmap.h"
#include "platform/messages.h"
#include "stages/bgr_conversion.h"
#include "stages/bit_reduction.h"
#include "stages/color_interpolation.h"
#include "stages/grey_spread.h"

namespace tavra {
namespace {

constexpr std::uint32_t kGreyFormat = 1;

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
    // Places of the white balance and exposure controls: a frame that is due for one goes on without a
    // preview.
    if (!previewWanted_) return Image::None;
    // Place of region composition (pixel format codes in roi_pixel_format.h): its image takes the frame's
    // place; none abandons the frame.
    classify();
    if (!frameHoldsImage()) return Image::Abandoned;
    reduceToBytes();
    // Raw path only. Place of noise reduction, with the trigger word's bits 0 or 1 and 12 or 13 set.
    // Raw path only. Place of the white balance gains on the mosaic.
    // Raw path only. Place of the frame statistics, then of one exposure step and one white balance step.
    // From here on a frame without a preview has nothing to do. Raw path only. Places of shading correction,
    // of the gamma of the mosaic's positions, and of mirror and rotation, which changes width, height and
    // colour array; a failure abandons the frame. Not raw path and not YCbCr. Place of mirror and rotation
    // with the frame's own bytes a pixel.
    if (!chooseTarget()) return Image::Abandoned;
    // Raw path only. Place of a recorder that takes raw frames.
    const Status made = makeImage();
    if (!made.ok()) {
        endRun(made.code());
        return Image::Abandoned;
    }
    // YCbCr only. Place of mirror and rotation in the image.
    return Image::Made;
}

// Everything that needs only the image. The read thread may already reuse the frame's data.
void FramePath::finishImage() {
    // Places of luminance gamma and of sharpness, whose failure ends the run.
    spreadGrey();
    // Colour frames only. Places of colour matrix and of chroma suppression, whose failure ends the run.
    // Place of a recorder that takes finished images.
    if (!servePreviewSnapshot()) {
        run_.goOn = false;
        return;
    }
    callPreviewBitmapCallbacks();
    if (imageIsShown()) {
        camera_.displayRotation = rotation_;
        callPreviewGdiCallbacks();
        publish();
        postFrameFinished();
        // Place of the preview window: while a recorder exists, a redraw at once unless the next block has
        // arrived; else drawWorker_.request(window).
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

void FramePath::decideWhatIsDue() {
    previewWanted_ = previewWanted(camera_);
    rotation_ = camera_.rotationMode;
}

void FramePath::classify() {
    width_ = run_.image.width;
    height_ = run_.image.height;
    class_ = pixelClass(run_.transferBits);
    mono_ = isMonoFrame(class_, run_.colorArray);
}

// A camera may declare a size and send less than that takes. Such a frame has no preview; its raw consumers
// have been served with what there is.
bool FramePath::frameHoldsImage() const {
    if (class_ == PixelClass::Unknown) return false;
    const std::uint64_t rowBytes = (std::uint64_t{width_} * transferBitsStored(run_.transferBits) + 7) / 8;
    return rowBytes == 0 || height_ <= run_.rawSize / rowBytes;
}

void FramePath::reduceToBytes() {
    if (needsReduction(class_)) reduceTo8Bits(width_, height_, run_.transferBits, data_, data_);
}

// Also makes sure that the image has the size and depth that the stages will write.
bool FramePath::chooseTarget() {
    if (!camera_.buffersExist) return false;
    ImageBufferSet& set = rotation_ != 0 ? camera_.imagesB : camera_.imagesA;
    const platform::BitmapShape& shape = set.shape();
    if (shape.width != width_ || shape.height != height_) return false;
    if (shape.bitCount != 8 * bytesPerPixel(run_.previewFormat)) return false;
    chosen_ = set.chooseFree(run_.frameNumber);
    target_ = &set;
    return true;
}

Status FramePath::makeImage() {
    switch (class_) {
        case PixelClass::Bgr:
            return convertBgrFrame(run_.transferBits, width_, height_, data_, run_.previewFormat,
                                   imagePixels());
        case PixelClass::Ycbcr: return convertYcbcr();
        default: return interpolateMosaic();
    }
}

Status FramePath::interpolateMosaic() {
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

// A mono image's rows are its width rounded up to 4 until here.
void FramePath::spreadGrey() {
    if (!mono_) return;
    const Status spread = spreadGreyInPlace(width_, height_, run_.previewFormat, imagePixels());
    if (!spread.ok()) endRun(spread.code());  // not with the formats that can be set
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

// Place of the preview window, whose existence counts too. Without both nothing is published and nothing
// posted.
bool FramePath::imageIsShown() {
    return !camera_.previewGdiCallbacks.empty();
}

// The context ends before the image is published: what was drawn is in the pixels then.
void FramePath::callPreviewGdiCallbacks() {
    std::optional<platform::MemoryContext> context;
    camera_.previewGdiCallbacks.forEach([&](auto& node) {
        if (!context) context.emplace(target_->image(chosen_).bitmap);
        if (context->dc() == nullptr) return;  // nothing to draw on could be made
        node.function(context->dc(), width_, height_, run_.frameNumber, node.context, node.word);
    });
    // Place of the information overlay, under the same mutex and on the same context.
}

void FramePath::publish() {
    target_->publish(chosen_);
}

void FramePath::publishPending() {
    if (target_ != nullptr) publish();
}

void FramePath::postFrameFinished() {
    const TavraWindow receiver = camera_.receiver;
    if (receiver == nullptr) return;
    // A full queue loses the message.
    static_cast<void>(platform::postMessage(receiver, TAVRA_MESSAGE_FRAME_FINISHED,
                                            reinterpret_cast<std::uintptr_t>(&camera_), run_.frameNumber));
}

void FramePath::endRun(std::uint32_t code) {
    run_.error = code;
    run_.goOn = false;
}

}  // namespace tavra
