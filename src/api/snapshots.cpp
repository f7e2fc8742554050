// Exports that take single frames, and look at a pixel of the preview.
#include <cstddef>
#include <mutex>

#include "api/call.h"
#include "base/pixel_format.h"
#include "camera/mirror.h"
#include "capture/snapshot.h"
#include "tavra/tavra_api.h"

namespace tavra::api {
namespace {

using Take = Status (*)(TAVRA_COMMON_PARAM&, const SnapshotOrder&, std::uint32_t&);

// Keeps a close on another thread from freeing the record until this call has let go of it.
class InProgress {
  public:
    explicit InProgress(SnapshotRequest& request) : request_(request) {
        const std::lock_guard lock(request_.mutex);
        ++request_.calls;
    }
    // Tells with the mutex held: the record may be gone as soon as it is released.
    ~InProgress() {
        const std::lock_guard lock(request_.mutex);
        --request_.calls;
        request_.callsEnded.notify_all();
    }
    InProgress(const InProgress&) = delete;
    InProgress& operator=(const InProgress&) = delete;

  private:
    SnapshotRequest& request_;
};

TavraBool snapshot(TavraHandle handle, SnapshotRequest TAVRA_COMMON_PARAM::*request, Take take,
                   const SnapshotOrder& order, std::uint32_t* bytesWritten) {
    TAVRA_COMMON_PARAM* const record = validated(handle);
    if (record == nullptr) return 0;
    const InProgress inProgress(record->*request);
    return call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        if (order.buffer == nullptr) return Status(error::kInvalidArgument);
        std::uint32_t written = 0;
        TAVRA_RETURN_IF_ERROR(take(camera, order, written));
        if (bytesWritten != nullptr) *bytesWritten = written;
        return Status();
    });
}

// 0x00BBGGRR; 0 for anything but gray, B, G, R or B, G, R with a fourth byte.
std::uint32_t pixelValue(const platform::BitmapShape& shape, const std::uint8_t* pixels, std::uint32_t x,
                         std::uint32_t y) {
    if (pixels == nullptr || x >= shape.width || y >= shape.height) return 0;
    const std::size_t stride = paddedStride(shape.width, shape.bitCount / 8);
    const std::uint8_t* const pixel = pixels + y * stride + std::size_t{shape.bitCount} * x / 8;
    switch (shape.bitCount) {
        case 8: return pixel[0] * 0x010101u;
        case 24:
        case 32: return std::uint32_t{pixel[0]} << 16 | std::uint32_t{pixel[1]} << 8 | pixel[2];
        default: return 0;
    }
}

}  // namespace
}  // namespace tavra::api

using tavra::Status;
using tavra::TAVRA_COMMON_PARAM;

TavraBool Tavra_TakeRawSnapShot(TavraHandle handle, void* buffer, std::uint32_t size,
                                std::uint32_t* bytesWritten, std::uint32_t* frameNumbers,
                                std::uint32_t timeoutMs) {
    return tavra::api::snapshot(handle, &TAVRA_COMMON_PARAM::rawSnapshot, tavra::takeRawSnapshot,
                                {buffer, size, frameNumbers, timeoutMs}, bytesWritten);
}

TavraBool Tavra_TakePreviewSnapShot(TavraHandle handle, void* buffer, std::uint32_t size,
                                    std::uint32_t* bytesWritten, std::uint32_t* frameNumbers,
                                    std::uint32_t timeoutMs) {
    return tavra::api::snapshot(handle, &TAVRA_COMMON_PARAM::previewSnapshot, tavra::takePreviewSnapshot,
                                {buffer, size, frameNumbers, timeoutMs}, bytesWritten);
}

TavraBool Tavra_GetPreviewImagePixelValue(TavraHandle handle, std::uint32_t x, std::uint32_t y,
                                          std::uint32_t* value) {
    return tavra::api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        if (value == nullptr) return Status(tavra::error::kInvalidArgument);
        auto& images = tavra::isQuarterTurn(camera.displayRotation) ? camera.imagesB : camera.imagesA;
        images.lookAtReady([&](const tavra::platform::BitmapShape& shape, const auto& image) {
            *value = tavra::api::pixelValue(shape, image.bitmap.pixels(), x, y);
        });
        return Status();
    });
}
