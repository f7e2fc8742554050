#include "camera/geometry.h"

#include <array>
#include <bit>
#include <utility>

#include "base/little_endian.h"
#include "base/pixel_format.h"
#include "camera/common_param.h"
#include "camera/frame_timing.h"
#include "camera/function_table.h"
#include "camera/mirror.h"

namespace tavra {
namespace {

constexpr std::uint8_t kScanRequest = 18;
constexpr std::uint8_t kTransferBitsRequest = 19;

constexpr std::uint8_t kFrameSizeSelector = 17;
constexpr std::uint32_t kFrameSizeAddress = 8;

// Keeps a stream from beginning while formats change, since it works in what they rebuild; refused while one
// runs. Asked twice: a stream that runs may hold the mutex for as long as somebody waits for its end.
class FormatChange {
  public:
    explicit FormatChange(TAVRA_COMMON_PARAM& camera) {
        if (camera.transferRunning()) return;
        transfer_ = std::unique_lock(camera.transferMutex);
        allowed_ = !camera.transferRunning();
    }
    Status status() const { return allowed_ ? Status() : Status(error::kTransferRunning); }

  private:
    std::unique_lock<std::mutex> transfer_;
    bool allowed_ = false;
};

// Product of three numbers that a camera may choose.
// By design: 32 bits, as cameras of any age count; what allocates checks for itself.
std::uint32_t computedRawSize(const CFrameFeature& geometry) {
    const ImageSize size = geometry.rawSize();
    return size.width * size.height * transferBitsStored(geometry.transferBits) / 8;
}

// A failed read keeps the old size.
void updateRawDataSize(TAVRA_COMMON_PARAM& camera) {
    CFrameFeature& geometry = *camera.geometry;
    if (!camera.hasFunction(function::kRegisters)) {
        geometry.rawDataSize = computedRawSize(geometry);
        return;
    }
    std::array<std::uint8_t, 8> sizes{};
    const Status status = camera.control.readRegisters(kFrameSizeSelector, kFrameSizeAddress, sizes);
    camera.noteFailure(status);
    if (status.ok()) geometry.rawDataSize = loadLe32(sizes.data());
}

// Everything that depends on the size and the formats of frames, made anew. `store` puts the new values in
// place while nothing depends on them.
template <typename Store>
Status rebuildFor(TAVRA_COMMON_PARAM& camera, Store store) {
    if (camera.buffersWanted) destroyImageBuffers(camera);
    store();
    updateRawDataSize(camera);
    return camera.buffersWanted ? buildImageBuffers(camera) : Status();
}

// Changes a copy of the scan record and sends it. The mutex keeps the record whole meanwhile. A record that
// the camera did not take is not kept: images and frames go on agreeing about the size.
template <typename Change>
Status changeScanRecord(TAVRA_COMMON_PARAM& camera, Change change) {
    CFrameFeature& geometry = *camera.geometry;
    const std::lock_guard lock(geometry.mutex());
    ScanRecord record = geometry.lockedRecord();
    TAVRA_RETURN_IF_ERROR(change(record));
    const auto sent = std::span(record.bytes()).first(record.sentLength());
    TAVRA_RETURN_IF_ERROR(camera.control.out(kScanRequest, 0, 0, sent));
    geometry.lockedRecord() = record;
    return Status();
}

// Asks with the length that is known so far until the whole record is there.
Status requestScanRecord(ControlChannel& control, ScanRecord& record) {
    std::uint32_t asked = ScanRecord::kShortLength;
    for (;;) {
        std::uint32_t received = 0;
        TAVRA_RETURN_IF_ERROR(
            control.in(kScanRequest, 0, 0, std::span(record.bytes()).first(asked), received));
        if (received < asked && !record.completeWith(received)) return Status(error::kControlTransfer);
        const std::uint32_t declared = record.declaredLength();
        if (declared <= asked) return Status();
        asked = declared;
    }
}

void updatePreview(TAVRA_COMMON_PARAM& camera) {
    ImageSize size = camera.geometry->imageSize();
    if (isQuarterTurn(camera.rotationMode)) std::swap(size.width, size.height);
    const PreviewPlace whole{0, 0, size.width, size.height};
    camera.preview.setMask(whole);
    camera.preview.setDestination(whole);
    PreviewPlace window;
    Status resized = camera.preview.size(window);
    if (resized.ok()) resized = camera.preview.setSize({window.x, window.y, size.width, size.height});
    // That there is no window is no failure here, nor one that came before.
    if (resized.code() != error::kNoWindow) camera.noteFailure(resized);
    std::uint32_t noWindow = error::kNoWindow;
    camera.lastError.compare_exchange_strong(noWindow, error::kNone);
}

std::uint32_t bitCountOf(std::uint32_t previewFormat) {
    return 8 * bytesPerPixel(previewFormat);
}

}  // namespace

Status sendScanRecord(TAVRA_COMMON_PARAM& camera) {
    return changeScanRecord(camera, [](ScanRecord&) { return Status(); });
}

Status readScanInformation(TAVRA_COMMON_PARAM& camera) {
    ScanRecord record;
    TAVRA_RETURN_IF_ERROR(requestScanRecord(camera.control, record));
    if (camera.legacy() || !camera.can(3, 0)) record.deriveExposureLimits();
    camera.geometry->storeScanRecord(record);
    // A stream goes on with the layout that it began with.
    if (!camera.transferRunning()) camera.setUpRegions();
    return Status();
}

Status refreshGeometry(TAVRA_COMMON_PARAM& camera, PreviewUpdate update) {
    Status status = readScanInformation(camera);
    // The images of a stream are in use, and have the right size: what would change it is refused while it
    // runs. A rotation, which is not, only exchanges the sides that the preview shows.
    if (status.ok() && !camera.transferRunning()) status = rebuildFor(camera, [] {});
    if (update == PreviewUpdate::Yes) updatePreview(camera);
    camera.preview.imagesChanged();
    return status.ok() ? camera.reloadExposure() : status;
}

Status buildImageBuffers(TAVRA_COMMON_PARAM& camera) {
    const ImageSize size = camera.geometry->imageSize();
    const std::uint32_t bits = bitCountOf(camera.geometry->previewPixelFormat);
    camera.buffersWanted = true;
    Status status = camera.imagesA.create({size.width, size.height, bits});
    if (status.ok()) status = camera.imagesB.create({size.height, size.width, bits});
    if (!status.ok()) {
        destroyImageBuffers(camera);
        return status;
    }
    camera.buffersExist = true;
    return Status();
}

void destroyImageBuffers(TAVRA_COMMON_PARAM& camera) {
    camera.buffersExist = false;
    camera.imagesA.destroy();
    camera.imagesB.destroy();
}

Status setImageSize(TAVRA_COMMON_PARAM& camera, std::uint16_t mode, const ScanRecord::Region& region) {
    const FormatChange change(camera);
    TAVRA_RETURN_IF_ERROR(change.status());
    TAVRA_RETURN_IF_ERROR(changeScanRecord(camera, [&](ScanRecord& record) {
        record.setScanMode(mode);
        record.setRegion(0, region);
        return Status();
    }));
    TAVRA_RETURN_IF_ERROR(refreshGeometry(camera, PreviewUpdate::Yes));
    if (!isWideGainFamily(camera.info.productType)) return Status();
    // These change clock and transfer bits with the size.
    TAVRA_RETURN_IF_ERROR(readClock(camera));
    const std::uint32_t bitsBefore = camera.geometry->transferBits;
    TAVRA_RETURN_IF_ERROR(readTransferBits(camera));
    if (camera.geometry->transferBits != bitsBefore) updateRawDataSize(camera);
    return Status();
}

Status setRegion(TAVRA_COMMON_PARAM& camera, std::uint32_t index, std::uint32_t enabled,
                 const ScanRecord::Region& region) {
    const FormatChange change(camera);
    TAVRA_RETURN_IF_ERROR(change.status());
    TAVRA_RETURN_IF_ERROR(changeScanRecord(camera, [&](ScanRecord& record) {
        if (index >= record.regionCount() || enabled >= 2) return Status(error::kInvalidArgument);
        record.setRegionEnabled(index, enabled == 1);
        record.setRegion(index, region);
        return Status();
    }));
    // By design: a region leaves the part that the preview shows where the application put it.
    return refreshGeometry(camera, PreviewUpdate::No);
}

Status setPreviewPixelFormat(TAVRA_COMMON_PARAM& camera, std::uint32_t format) {
    const FormatChange change(camera);
    TAVRA_RETURN_IF_ERROR(change.status());
    CFrameFeature& geometry = *camera.geometry;
    if (!hasByteSamples(format) || (geometry.enablePreviewFormats & format) == 0)
        return Status(error::kInvalidArgument);
    const Status status = rebuildFor(camera, [&] { geometry.previewPixelFormat = format; });
    camera.preview.imagesChanged();
    return status;
}

Status readTransferBits(TAVRA_COMMON_PARAM& camera) {
    return getTransferBits(camera, camera.geometry->transferBits);
}

Status getTransferBits(TAVRA_COMMON_PARAM& camera, std::uint32_t& code) {
    if (camera.info.enableTransferBits == 1) {
        code = 1;
        return Status();
    }
    std::array<std::uint8_t, 6> reply{};
    TAVRA_RETURN_IF_ERROR(camera.control.inExactly(kTransferBitsRequest, 0, 0, reply));
    code = loadLe32(&reply[2]);
    return Status();
}

Status setTransferBits(TAVRA_COMMON_PARAM& camera, std::uint32_t code) {
    if (camera.info.enableTransferBits == 1) return Status();
    const FormatChange change(camera);
    TAVRA_RETURN_IF_ERROR(change.status());
    if (!std::has_single_bit(code) || (camera.info.enableTransferBits & code) == 0) {
        return Status(error::kInvalidArgument);
    }
    std::array<std::uint8_t, 6> request{6, kTransferBitsRequest};
    storeLe32(&request[2], code);
    Status written = camera.control.out(kTransferBitsRequest, 0, 0, request);
    if (written.ok()) written = readScanInformation(camera);
    // By design: the new code stays also when the camera did not take it; the failure is told after the
    // rebuild.
    const Status rebuilt = rebuildFor(camera, [&] { camera.geometry->transferBits = code; });
    return written.ok() ? rebuilt : written;
}

PreviewSize previewSize(const TAVRA_COMMON_PARAM& camera) {
    ImageSize size = camera.geometry->imageSize();
    if (isQuarterTurn(camera.rotationMode)) std::swap(size.width, size.height);
    PreviewSize preview{size.width, size.height};
    // By design: 32 bits, as the interface tells both sizes.
    preview.lineBytes = static_cast<std::uint32_t>(
        paddedStride(size.width, bytesPerPixel(camera.geometry->previewPixelFormat)));
    preview.total = preview.lineBytes * size.height;
    return preview;
}

}  // namespace tavra
