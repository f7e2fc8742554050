#include "stages/shading_correction/calibration.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace tavra::shading {
namespace {

// The black level is 0, so a mean is the light above it.
constexpr std::int32_t kMaximumGain = 16;
constexpr unsigned kGainShift = 7;
constexpr std::uint32_t kTargetUnmeasured = 128;

constexpr std::size_t positionOf(std::size_t x, std::size_t y) {
    return (x & 1) + 2 * (y & 1);
}

// Sums of a square in the middle, by position.
struct Measure {
    std::array<double, 4> sums{};
    std::array<std::uint32_t, 4> counts{};
};

Measure measureMiddle(const FlatField& field) {
    std::size_t side = std::min(field.width, field.height);
    if (side >= 4) side /= 4;
    const std::size_t left = (field.width - side) / 2;
    const std::size_t top = (field.height - side) / 2;
    Measure measure;
    for (std::size_t y = top; y < top + side; ++y) {
        for (std::size_t x = left; x < left + side; ++x) {
            measure.sums[positionOf(x, y)] += field.mean[y * field.width + x];
            ++measure.counts[positionOf(x, y)];
        }
    }
    return measure;
}

std::uint16_t levelOf(double sum, std::uint32_t count, std::uint32_t maximum) {
    const double limit = maximum;
    return static_cast<std::uint16_t>(std::min(limit, count != 0 ? sum / count : kTargetUnmeasured));
}

// An entry for each pixel from its mean and its position.
template <class Entry>
void buildMap(const FlatField& field, const MapRows& map, Entry entryOf) {
    for (std::size_t y = 0; y < field.height; ++y) {
        const double* const mean = field.mean + y * field.width;
        std::uint8_t* const row = map.row(y);
        for (std::size_t x = 0; x < field.width; ++x) {
            const std::int32_t entry = entryOf(mean[x], positionOf(x, y));
            std::memcpy(row + x * sizeof entry, &entry, sizeof entry);
        }
    }
}

}  // namespace

template <class Sample>
void addToMean(const Sample* samples, std::size_t count, std::uint32_t frames, double* mean) {
    const double before = frames;
    for (std::size_t i = 0; i < count; ++i) mean[i] = (before * mean[i] + samples[i]) / (before + 1.0);
}

template void addToMean(const std::uint8_t*, std::size_t, std::uint32_t, double*);
template void addToMean(const std::uint16_t*, std::size_t, std::uint32_t, double*);

Targets measuredTargets(const FlatField& field, const Targets& targets, bool mono, std::uint32_t maximum) {
    if (std::ranges::find(targets, 0) == targets.end()) return targets;
    const Measure measure = measureMiddle(field);
    Targets result = targets;
    if (mono) {
        double sum = 0;
        std::uint32_t count = 0;
        for (std::size_t k = 0; k < result.size(); ++k) {
            sum += measure.sums[k];
            count += measure.counts[k];
        }
        result.fill(levelOf(sum, count, maximum));
        return result;
    }
    for (std::size_t k = 0; k < result.size(); ++k) {
        if (result[k] == 0) result[k] = levelOf(measure.sums[k], measure.counts[k], maximum);
    }
    return result;
}

// By design: just above the limit a gain can come out a little higher than the highest, since the limit is
// cut to a whole level; only what is at or below it gets the highest gain itself.
void buildGainMap(const FlatField& field, const Targets& targets, const MapRows& map) {
    constexpr double kLargest = std::numeric_limits<std::int32_t>::max();
    std::array<double, 4> numerators, limits;
    for (std::size_t k = 0; k < targets.size(); ++k) {
        numerators[k] = static_cast<double>(std::uint32_t{targets[k]} << kGainShift);
        const std::int32_t limit = targets[k] / kMaximumGain;  // whole levels
        limits[k] = limit;
    }
    buildMap(field, map, [&](double mean, std::size_t k) {
        if (mean <= 0 || mean <= limits[k]) return kMaximumGain << kGainShift;
        return static_cast<std::int32_t>(std::min(numerators[k] / mean, kLargest));
    });
}

void buildOffsetMap(const FlatField& field, const Targets& targets, const MapRows& map) {
    buildMap(field, map, [&](double mean, std::size_t k) {
        return std::int32_t{targets[k]} - static_cast<std::int32_t>(mean);
    });
}

}  // namespace tavra::shading
