// What a virtual camera reads out: regions, skipping and binning, transfer format; and the scan record that
// tells and sets it. Belongs to one camera, which locks around it.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "model.h"

namespace tavra::usbd {

// How many sensor pixels go into one that is sent, on each axis.
struct ReadoutFactors {
    std::uint32_t skipX = 1, skipY = 1, binX = 1, binY = 1;
    bool sum = false;  // binned pixels are added up, not averaged

    std::uint32_t x() const { return skipX * binX; }
    std::uint32_t y() const { return skipY * binY; }

    // The nibbles of status word 33: horizontal skipping in bits 12 to 15, horizontal binning 8 to 11,
    // vertical skipping 4 to 7, vertical binning 0 to 3. A nibble n stands for 2 to the power n, at most 8.
    static ReadoutFactors fromWord(std::uint16_t word);

    friend bool operator==(const ReadoutFactors&, const ReadoutFactors&) = default;
};

// Fields of the scan record that follow from the timing.
struct ScanTiming {
    std::uint16_t linesPerFrame = 0, clocksPerLine = 0;
    std::uint32_t lastExposureClock = 0, shortClock = 0, shortLines = 0, longClock = 0, longLines = 0;
};

class Geometry {
  public:
    explicit Geometry(const GeometryModel& model);

    const std::array<Region, kMaxRegions>& regions() const { return regions_; }
    std::uint32_t transferBits() const { return transferBits_; }
    void setTransferBits(std::uint32_t code) { transferBits_ = code; }
    const ReadoutFactors& factors() const { return factors_; }
    std::uint16_t scanMode() const { return scanMode_; }
    std::uint32_t imageHeight() const { return regions_[0].height; }

    // Other factors: the regions are scaled to cover the same part of the sensor.
    void setFactors(const ReadoutFactors& factors);

    // The regions that are sent, in the order of the frame.
    std::vector<Region> sentRegions() const;
    // Bytes of a frame without its header. With region mode 2 the grid that the regions span, else the
    // regions one after another; every row begins at a byte.
    std::uint32_t rawSize() const;
    // Width and height of the grid of region mode 2: columns and rows that at least one region covers.
    std::vector<std::uint32_t> coveredColumns() const;
    std::vector<std::uint32_t> coveredRows() const;
    bool packsGrid() const { return model_.regionMode == 2 && sentRegions().size() > 1; }

    // The scan record. `write` takes what a host sends and makes it fit: sizes and places go down to their
    // step, sizes up to the minimum, and everything is moved into the sensor; false when the record is too
    // short to mean anything.
    std::vector<std::uint8_t> record(const ScanTiming& timing) const;
    bool write(std::span<const std::uint8_t> record);

  private:
    void fit(Region& region) const;
    std::uint32_t readableWidth() const { return model_.sensorWidth / factors_.x(); }
    std::uint32_t readableHeight() const { return model_.sensorHeight / factors_.y(); }

    const GeometryModel& model_;
    std::array<Region, kMaxRegions> regions_;
    std::uint32_t transferBits_;
    std::uint16_t scanMode_;
    ReadoutFactors factors_;
};

}  // namespace tavra::usbd
