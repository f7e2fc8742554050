#include "stages/wb/histogram.h"

#include <algorithm>

#include "base/error_codes.h"
#include "platform/last_error.h"

namespace tavra::white_balance {
namespace {

// A colour that has not reached its target is raised step by step up to this gain, 5.0.
constexpr std::uint16_t kSearchLimit = 640;
constexpr double kHighestGain = 65535;
constexpr std::uint16_t kFirstMosaic = 2;
constexpr std::uint16_t kLastMosaic = 5;

void clear(Histograms& histograms) {
    for (Histogram& histogram : histograms) histogram = Histogram{};
}

template <class Sample>
void countRow(const Sample* row, std::size_t width, Histogram& even, Histogram& odd) {
    constexpr unsigned kLast = Histogram::kLevels - 1;
    std::size_t x = 0;
    for (; x + 1 < width; x += 2) {
        ++even.levels[std::min<unsigned>(row[x], kLast)];
        ++odd.levels[std::min<unsigned>(row[x + 1], kLast)];
    }
    if (x < width) ++even.levels[std::min<unsigned>(row[x], kLast)];
}

// Count and mean from the levels: the sum is exact, whatever the order.
void finish(Histogram& histogram) {
    std::uint64_t sum = 0;
    std::uint32_t count = 0;
    for (std::size_t level = 0; level < Histogram::kLevels; ++level) {
        sum += std::uint64_t{histogram.levels[level]} * level;
        count += histogram.levels[level];
    }
    histogram.count = count;
    histogram.mean = count == 0 ? 0 : static_cast<double>(sum) / count;
}

// The mean that a colour would have after a gain, clipped at the top of the depth.
class MeanAfterGain {
  public:
    MeanAfterGain(const Histogram& histogram, std::uint16_t bits)
        : histogram_(histogram), top_((1u << bits) - 1) {
        std::uint64_t above = 0;
        for (unsigned level = 0; level <= top_; ++level) above += histogram.levels[level];
        for (unsigned limit = 0; limit < top_; ++limit) {
            above -= histogram.levels[limit];
            sums_[limit + 1] = sums_[limit] + above;  // each sample above the limit adds one more
        }
    }

    double operator()(std::uint16_t gain) const {
        if (gain == 0) return 0;
        const unsigned clipped = (top_ << 7) / gain;  // samples from here on end at the top
        if (top_ <= clipped) return gain * histogram_.mean * (1.0 / 128);
        if (histogram_.count == 0) return 0;
        return gain * (static_cast<double>(sums_[clipped]) / histogram_.count) * (1.0 / 128);
    }

  private:
    const Histogram& histogram_;
    unsigned top_;
    // The sum of min(sample, limit) over the samples of the depth, for each limit.
    std::array<std::uint64_t, Histogram::kLevels> sums_{};
};

std::uint16_t startGain(const Histogram& histogram, double target) {
    // Too dark to tell: less than one level in all.
    if (histogram.count == 0 || 1.0 / histogram.count > histogram.mean) return kUnityGain;
    return static_cast<std::uint16_t>(std::min(target / histogram.mean * kUnityGain, kHighestGain));
}

std::uint16_t gainFor(const Histogram& histogram, std::uint16_t bits, double target) {
    std::uint16_t gain = startGain(histogram, target);
    const MeanAfterGain meanAfter(histogram, bits);
    while (gain < kSearchLimit && !(meanAfter(gain) >= target)) ++gain;
    return gain;
}

}  // namespace

template <class Sample>
void measure(const Mosaic<Sample>& mosaic, Histograms& histograms) {
    clear(histograms);
    for (std::size_t y = 0; y < mosaic.height; ++y) {
        const std::size_t position = 2 * (y & 1);
        countRow(mosaic.row(y), mosaic.width, histograms[position], histograms[position + 1]);
    }
    for (Histogram& histogram : histograms) finish(histogram);
}

template void measure(const Mosaic<std::uint8_t>&, Histograms&);
template void measure(const Mosaic<std::uint16_t>&, Histograms&);

Status balance(const Histograms& histograms, std::uint16_t colorArray, std::uint16_t bits, Gains& gains) {
    if (colorArray == 0) return platform::failWith(error::kInvalidArgument);
    if (colorArray > kLastMosaic) return Status(error::kInvalidArgument);
    // R moves through the cell from array to array, B stands across from it, G takes the other two.
    const std::size_t red = std::max(colorArray, kFirstMosaic) - kFirstMosaic;
    const std::size_t blue = 3 - red;
    const bool redOnDiagonal = red == 0 || red == 3;
    const double target =
        (histograms[redOnDiagonal ? 1 : 0].mean + histograms[redOnDiagonal ? 2 : 3].mean) / 2;
    gains[0] = gainFor(histograms[red], bits, target);
    gains[3] = gainFor(histograms[blue], bits, target);
    return {};
}

}  // namespace tavra::white_balance
