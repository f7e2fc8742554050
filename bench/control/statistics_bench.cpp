// Frame statistics beside a read of the frame and beside OpenCV's mean; the gains on the mosaic beside memcpy
// and beside OpenCV's table look-up. A full HD mosaic, one thread. The ratio is the reference's time over
// ours: 1 is as fast, 2 is twice as fast.
#include <cstring>
#include <functional>
#include <memory>
#include <numeric>
#include <opencv2/core.hpp>
#include <random>

#include "control/average_pixel_value.h"
#include "control/white_balance_gains.h"
#include "support/full_hd.h"
#include "support/ratio_reporter.h"

namespace tavra::bench {
namespace {

const std::vector<std::uint8_t>& mosaic() {
    static const auto samples = noise<std::uint8_t>(kPixels, 255);
    return samples;
}

void addStatistics(const std::string& name, std::uint16_t colorArray) {
    const auto statistics = std::make_shared<CAveragePixelValue>();
    add(name, [=] { statistics->Accumulate(kWidth, kHeight, colorArray, mosaic().data()); });
}

void addGains(const std::string& name, const std::array<std::uint16_t, 4>& gains) {
    std::array<GainCurve, 4> curves;
    for (std::size_t i = 0; i < curves.size(); ++i) curves[i] = GainCurve(gains[i]);
    const auto image = std::make_shared<std::vector<std::uint8_t>>(mosaic());
    add(name, [=] { applyGains(kWidth, kHeight, curves, image->data()); });
}

void addReferences() {
    add("read", [] {
        benchmark::DoNotOptimize(std::accumulate(mosaic().begin(), mosaic().end(), std::uint32_t{0}));
    });
    const cv::Mat frame(kHeight, kWidth, CV_8U, const_cast<std::uint8_t*>(mosaic().data()));
    add("opencv mean", [=] { benchmark::DoNotOptimize(cv::mean(frame)); });
    const auto image = std::make_shared<std::vector<std::uint8_t>>(kPixels);
    add("memcpy", [=] { std::memcpy(image->data(), mosaic().data(), kPixels); });
    // Rows of pairs of samples, as two channels with a table each; the gains differ from row to row, which
    // one call cannot do.
    const auto pairs = std::make_shared<cv::Mat>(kHeight, kWidth / 2, CV_8UC2);
    const auto table = std::make_shared<cv::Mat>(1, 256, CV_8UC2, cv::Scalar(1, 2));
    add("opencv look-up", [=] {
        const cv::Mat source(kHeight, kWidth / 2, CV_8UC2, const_cast<std::uint8_t*>(mosaic().data()));
        cv::LUT(source, *table, *pairs);
    });
}

std::vector<Pair> addAll() {
    addReferences();
    addStatistics("statistics, monochrome", 1);
    addStatistics("statistics, mosaic", 2);
    addStatistics("statistics, quad mosaic", 16);
    addGains("gains", {300, 140, 150, 500});
    addGains("gains, green at unity", {300, 128, 128, 500});
    return {
        {"statistics, monochrome", "read", 0.5},
        {"statistics, mosaic", "read", 0.5},
        {"statistics, quad mosaic", "read", 0.5},
        {"statistics, mosaic", "opencv mean", 0},
        {"gains", "memcpy", 0.125},
        {"gains, green at unity", "memcpy", 0.125},
        {"gains", "opencv look-up", 0},
    };
}

}  // namespace
}  // namespace tavra::bench

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    return tavra::bench::runPairs(argc, argv, tavra::bench::addAll);
}
