// Operations on the geometry of a camera: image size, regions, skipping and binning, formats, and the refresh
// that follows a change. On the application's threads only; a change of what the capture thread works with is
// refused while one runs (0xE0000004).
#pragma once

#include <cstdint>

#include "base/status.h"
#include "camera/frame_feature.h"

namespace tavra {

class TAVRA_COMMON_PARAM;

// Reads the camera's scan record into the geometry.
Status readScanInformation(TAVRA_COMMON_PARAM& camera);

enum class PreviewUpdate { No, Yes };
// Reads the scan record again and rebuilds what follows from it.
Status refreshGeometry(TAVRA_COMMON_PARAM& camera, PreviewUpdate update);

// Sends the scan record as it stands: what was written about frame timing then takes effect.
Status sendScanRecord(TAVRA_COMMON_PARAM& camera);

// Makes the two sets of preview images for the geometry in force, at open and after each change.
Status buildImageBuffers(TAVRA_COMMON_PARAM& camera);
void destroyImageBuffers(TAVRA_COMMON_PARAM& camera);

Status setImageSize(TAVRA_COMMON_PARAM& camera, std::uint16_t mode, const ScanRecord::Region& region);
Status setRegion(TAVRA_COMMON_PARAM& camera, std::uint32_t index, std::uint32_t enabled,
                 const ScanRecord::Region& region);

// Factors of 4 bits, horizontal and vertical; what is above them does not travel.
struct SkippingAndBinning {
    std::uint8_t horizontalSkipping = 0;
    std::uint8_t verticalSkipping = 0;
    std::uint8_t horizontalBinning = 0;
    std::uint8_t verticalBinning = 0;
};
Status getSkippingAndBinning(TAVRA_COMMON_PARAM& camera, SkippingAndBinning& factors);
Status setSkippingAndBinning(TAVRA_COMMON_PARAM& camera, const SkippingAndBinning& factors);

Status getBinningSumMode(TAVRA_COMMON_PARAM& camera, std::uint16_t& mode);
Status setBinningSumMode(TAVRA_COMMON_PARAM& camera, std::uint16_t mode);

Status setPreviewPixelFormat(TAVRA_COMMON_PARAM& camera, std::uint32_t format);

Status getTransferBits(TAVRA_COMMON_PARAM& camera, std::uint32_t& code);
Status setTransferBits(TAVRA_COMMON_PARAM& camera, std::uint32_t code);
// Reads the transfer bits in force into the geometry.
Status readTransferBits(TAVRA_COMMON_PARAM& camera);

struct PreviewSize {
    std::uint32_t width = 0;  // pixels, after rotation
    std::uint32_t height = 0;
    std::uint32_t lineBytes = 0;
    std::uint32_t total = 0;  // bytes
};
PreviewSize previewSize(const TAVRA_COMMON_PARAM& camera);

}  // namespace tavra
