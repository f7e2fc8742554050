#include "geometry.h"

#include <algorithm>

#include "base/little_endian.h"
#include "base/pixel_format.h"

namespace tavra::usbd {
namespace {

constexpr std::size_t kRegionTable = 64;  // where region 1 stands in the record
constexpr std::size_t kRegionBytes = 16;
constexpr std::uint32_t kLongLength = 255;  // in byte 0: the length stands at byte 24

std::uint32_t down(std::uint32_t value, std::uint32_t step) {
    return value - value % step;
}
std::uint32_t up(std::uint32_t value, std::uint32_t step) {
    return down(value + step - 1, step);
}

// Size and place on one axis.
void fitAxis(std::uint32_t& at, std::uint32_t& size, std::uint32_t most, std::uint32_t least,
             std::uint32_t sizeStep, std::uint32_t placeStep) {
    const std::uint32_t top = std::max(down(most, sizeStep), std::min(most, sizeStep));
    size = std::clamp(down(std::min(size, most), sizeStep), std::min(up(least, sizeStep), top), top);
    at = down(std::min(at, most - size), placeStep);
}

std::vector<std::uint32_t> covered(const std::vector<Region>& regions, std::uint32_t Region::*at,
                                   std::uint32_t Region::*size) {
    std::vector<std::uint32_t> places;
    for (const Region& region : regions) {
        for (std::uint32_t i = 0; i < region.*size; ++i) places.push_back(region.*at + i);
    }
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    return places;
}

std::uint32_t rowBytes(std::uint32_t width, std::uint32_t bits) {
    return (width * bits + 7) / 8;
}

Region loadRegion(const std::uint8_t* width) {
    return {loadLe32(width + 8), loadLe32(width + 12), loadLe32(width), loadLe32(width + 4), false};
}

void storeRegion(std::uint8_t* width, const Region& region) {
    storeLe32(width, region.width);
    storeLe32(width + 4, region.height);
    storeLe32(width + 8, region.x);
    storeLe32(width + 12, region.y);
}

}  // namespace

ReadoutFactors ReadoutFactors::fromWord(std::uint16_t word) {
    const auto factor = [word](int shift) { return 1u << std::min(word >> shift & 15, 3); };
    return {factor(12), factor(4), factor(8), factor(0), false};
}

Geometry::Geometry(const GeometryModel& model)
    : model_(model), regions_(model.regions), transferBits_(model.transferBits), scanMode_(model.scanMode) {
    if (regions_[0].width == 0) regions_[0].width = model.sensorWidth;
    if (regions_[0].height == 0) regions_[0].height = model.sensorHeight;
    regions_[0].enabled = true;
    fit(regions_[0]);
    for (std::size_t i = 1; i < kMaxRegions; ++i) {
        if (regions_[i].enabled) fit(regions_[i]);
    }
}

void Geometry::fit(Region& region) const {
    fitAxis(region.x, region.width, readableWidth(), model_.minimumWidth, model_.widthStep, model_.xStep);
    fitAxis(region.y, region.height, readableHeight(), model_.minimumHeight, model_.heightStep, model_.yStep);
}

void Geometry::setFactors(const ReadoutFactors& factors) {
    const ReadoutFactors before = factors_;
    factors_ = factors;
    if (before.x() == factors.x() && before.y() == factors.y()) return;
    for (Region& region : regions_) {
        region.x = region.x * before.x() / factors.x();
        region.width = region.width * before.x() / factors.x();
        region.y = region.y * before.y() / factors.y();
        region.height = region.height * before.y() / factors.y();
        if (region.enabled) fit(region);
    }
}

std::vector<Region> Geometry::sentRegions() const {
    std::vector<Region> sent;
    for (std::size_t i = 0; i < model_.regionCount; ++i) {
        const Region& region = regions_[i];
        if (region.enabled && region.width > 0 && region.height > 0) sent.push_back(region);
    }
    return sent;
}

std::vector<std::uint32_t> Geometry::coveredColumns() const {
    return covered(sentRegions(), &Region::x, &Region::width);
}

std::vector<std::uint32_t> Geometry::coveredRows() const {
    return covered(sentRegions(), &Region::y, &Region::height);
}

std::uint32_t Geometry::rawSize() const {
    const std::uint32_t bits = transferBitsStored(transferBits_);
    if (packsGrid()) {
        return rowBytes(static_cast<std::uint32_t>(coveredColumns().size()), bits) *
               static_cast<std::uint32_t>(coveredRows().size());
    }
    std::uint32_t bytes = 0;
    for (const Region& region : sentRegions()) bytes += rowBytes(region.width, bits) * region.height;
    return bytes;
}

std::vector<std::uint8_t> Geometry::record(const ScanTiming& timing) const {
    std::vector<std::uint8_t> record(model_.recordLength);
    record[0] = static_cast<std::uint8_t>(std::min(model_.recordLength, kLongLength));
    record[1] = 18;
    storeRegion(&record[6], regions_[0]);
    storeLe16(&record[22], scanMode_);
    storeLe16(&record[24], static_cast<std::uint16_t>(model_.recordLength));
    storeLe16(&record[26], timing.linesPerFrame);
    storeLe16(&record[28], timing.clocksPerLine);
    storeLe16(&record[30], model_.maximumGain);
    storeLe16(&record[32], model_.defaultGain);
    storeLe16(&record[34], model_.defaultDigitalGain);
    storeLe32(&record[36], timing.lastExposureClock);
    storeLe32(&record[40], timing.shortClock);
    storeLe32(&record[44], timing.shortLines);
    storeLe32(&record[48], timing.longClock);
    storeLe32(&record[52], timing.longLines);
    storeLe32(&record[56], model_.regionCount);
    std::uint32_t enabled = 0;
    for (std::size_t i = 0; i < model_.regionCount; ++i) {
        if (regions_[i].enabled) enabled |= 1u << i;
        if (i > 0) storeRegion(&record[kRegionTable + (i - 1) * kRegionBytes], regions_[i]);
    }
    storeLe32(&record[60], enabled);
    return record;
}

bool Geometry::write(std::span<const std::uint8_t> record) {
    constexpr std::size_t kShortest = 24;  // up to the scan mode
    if (record.size() < kShortest) return false;
    regions_[0] = loadRegion(&record[6]);
    if (regions_[0].width == 0 && regions_[0].height == 0) {
        regions_[0].width = readableWidth();
        regions_[0].height = readableHeight();
    }
    // By design: region 0 is always sent, so that the image size of the record is that of a frame with one
    // region.
    regions_[0].enabled = true;
    fit(regions_[0]);
    scanMode_ = loadLe16(&record[22]);
    if (record.size() < kRegionTable) return true;
    const std::uint32_t enabled = loadLe32(&record[60]);
    for (std::size_t i = 1; i < model_.regionCount; ++i) {
        const std::size_t at = kRegionTable + (i - 1) * kRegionBytes;
        if (at + kRegionBytes > record.size()) break;
        regions_[i] = loadRegion(&record[at]);
        regions_[i].enabled = (enabled >> i & 1) != 0;
        if (regions_[i].enabled) fit(regions_[i]);
    }
    return true;
}

}  // namespace tavra::usbd
