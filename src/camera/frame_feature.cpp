#include "camera/frame_feature.h"

#include "camera/register_map.h"

namespace tavra {
namespace {

constexpr std::uint32_t kRegionModeOffset = 4;

}  // namespace

std::uint32_t CFrameFeature::GetMaxROICount() {
    const std::lock_guard lock(mutex_);
    return record_.regionCount();
}

std::uint32_t CFrameFeature::GetROIMode() {
    std::uint32_t mode = 0;
    if (GetMaxROICount() < 2 || registerPages == nullptr) return 0;
    if (!registerPages->read(page::kRegions, kRegionModeOffset, mode).ok()) return 0;
    return mode;
}

void CFrameFeature::GetROI(std::uint32_t index, std::uint32_t* enabled, std::uint32_t* x, std::uint32_t* y,
                           std::uint32_t* width, std::uint32_t* height) {
    const std::lock_guard lock(mutex_);
    const ScanRecord::Region region = record_.region(index);
    *enabled = record_.regionEnabled(index) ? 1 : 0;
    *x = region.x;
    *y = region.y;
    *width = region.width;
    *height = region.height;
}

std::uint32_t CFrameFeature::GetROIGroup() {
    switch (const std::uint32_t count = GetMaxROICount()) {
        case 8: return 1;
        case 16: return 4;
        default: return count;
    }
}

ScanRecord CFrameFeature::scanRecord() const {
    const std::lock_guard lock(mutex_);
    return record_;
}

void CFrameFeature::storeScanRecord(const ScanRecord& record) {
    const std::lock_guard lock(mutex_);
    record_ = record;
}

ImageSize CFrameFeature::imageSize() const {
    const std::lock_guard lock(mutex_);
    return composedSize_.value_or(ImageSize{record_.width(), record_.height()});
}

void CFrameFeature::storeComposedSize(std::optional<ImageSize> size) {
    const std::lock_guard lock(mutex_);
    composedSize_ = size;
}

CameraClock CFrameFeature::clock() const {
    const std::lock_guard lock(mutex_);
    return clock_;
}

void CFrameFeature::storeClock(const CameraClock& clock) {
    const std::lock_guard lock(mutex_);
    clock_ = clock;
}

ImageSize CFrameFeature::rawSize() const {
    const std::lock_guard lock(mutex_);
    return {record_.width(), record_.height()};
}

}  // namespace tavra
