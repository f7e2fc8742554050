// The map of a shading correction, made from the mean of frames of a flat field. Pure functions; any thread.
//
// The four positions of a mosaic's cell are numbered (x & 1) + 2 x (y & 1), counted from the corner of the
// image.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavra::shading {

// Levels that a flat field is to have after correction, by position; 0: to be taken from the image.
using Targets = std::array<std::uint16_t, 4>;

// The mean of the frames so far, rows dense.
struct FlatField {
    const double* mean;
    std::size_t width, height;
};

// Rows of int32_t entries at any address, `stride` bytes apart.
struct MapRows {
    std::uint8_t* entries;
    std::size_t stride;

    std::uint8_t* row(std::size_t y) const { return entries + y * stride; }
};

// One row of one more frame into the mean of `frames` frames.
template <class Sample>
void addToMean(const Sample* samples, std::size_t count, std::uint32_t frames, double* mean);

// Targets without a 0: the mean of a centred square, a quarter of the smaller side long, not above `maximum`.
// A colour image has a mean for each position, and keeps the targets that are set. A mono image has one for
// all four positions, which replaces also those that are set. Without a 0 nothing changes.
Targets measuredTargets(const FlatField& field, const Targets& targets, bool mono, std::uint32_t maximum);

// A gain for each pixel, 128 for 1.0; where the field is too dark for its target, the highest gain.
void buildGainMap(const FlatField& field, const Targets& targets, const MapRows& map);
// A difference in levels for each pixel.
void buildOffsetMap(const FlatField& field, const Targets& targets, const MapRows& map);

}  // namespace tavra::shading
