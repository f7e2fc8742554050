// Colour matrix, tone curves and chroma suppression beside memcpy of the same image, and beside what OpenCV
// has nearest to them: transform (a matrix in floating point) and LUT.
//
// A full HD frame, one thread. The ratio is the reference's time over ours: 1 is as fast, 0.125 takes eight
// times as long.
#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "stages/chroma_suppress.h"
#include "stages/color_matrix.h"
#include "stages/gamma.h"
#include "support/full_hd.h"
#include "support/ratio_reporter.h"

namespace tavra::bench {
namespace {

using Image = std::vector<std::uint8_t>;

// That a stage does not use up in place: the bytes of every repetition are still all over the range.
std::shared_ptr<Image> noiseImage(std::size_t bytes) {
    return std::make_shared<Image>(noise<std::uint8_t>(bytes, 255));
}

void addMemcpy(const std::string& name, std::size_t bytes) {
    const auto from = noiseImage(bytes), to = noiseImage(bytes);
    add(name, [=] { std::memcpy(to->data(), from->data(), bytes); });
}

std::size_t bytesOf(std::uint32_t format) {
    return kPixels * (format == 1 ? 1 : format == 4 ? 3 : 4);
}

void addColorMatrix(const std::string& name, std::uint32_t format) {
    const auto stage = std::make_shared<CColorMatrix>();
    const std::int16_t matrix[12] = {104, -3, -2, 0, -2, 105, -4, 0, -1, -5, 104, 0};
    stage->SetColorMatrix(0xFF, matrix);
    stage->SetHueSaturation(1, 70, 110);
    const auto image = noiseImage(bytesOf(format));
    add(name, [=] { stage->Apply8(kWidth, kHeight, 0, format, image->data(), 8); });
}

// Curves that permute the levels, so that noise stays noise.
std::shared_ptr<CGamma> permutingCurves() {
    const auto stage = std::make_shared<CGamma>();
    for (std::uint8_t index = 0; index < 5; ++index) {
        std::uint8_t table[256];
        for (unsigned i = 0; i < 256; ++i) table[i] = static_cast<std::uint8_t>(i * (2 * index + 3) + 17);
        stage->SetGamma(index, 255, 100, 0, 0, table, 8);
    }
    return stage;
}

void addGammaRaw(const std::string& name) {
    const auto stage = permutingCurves();
    const auto frame = noiseImage(kPixels);
    add(name, [=] { stage->ApplyRaw8(kWidth, kHeight, 0, 2, frame->data()); });
}

void addGammaImage(const std::string& name, std::uint32_t format) {
    const auto stage = permutingCurves();
    const auto image = noiseImage(bytesOf(format));
    add(name, [=] { stage->ApplyImage8(kWidth, kHeight, 0, format, image->data()); });
}

void addChroma(const std::string& name, std::uint32_t format, std::uint16_t low, std::uint16_t high) {
    const auto stage = std::make_shared<CChromaSuppress>();
    stage->SetLowThreshold(low);
    stage->SetLowStrength(3);
    stage->SetHighThreshold(high);
    stage->SetHighStrength(3);
    const auto image = noiseImage(bytesOf(format));
    add(name, [=] { stage->Apply8(kWidth, kHeight, 0, format, image->data()); });
}

void addOpenCvTransform(const std::string& name) {
    const auto from = noiseImage(kPixels * 3), to = noiseImage(kPixels * 3);
    const cv::Matx34f matrix(1.04F, -0.05F, -0.01F, 0, -0.04F, 1.05F, -0.02F, 0, -0.02F, -0.03F, 1.04F, 0);
    add(name, [=] {
        const cv::Mat source(kHeight, kWidth, CV_8UC3, from->data());
        cv::Mat destination(kHeight, kWidth, CV_8UC3, to->data());
        cv::transform(source, destination, matrix);
    });
}

void addOpenCvLut(const std::string& name, int channels) {
    const std::size_t bytes = kPixels * static_cast<std::size_t>(channels);
    const auto from = noiseImage(bytes), to = noiseImage(bytes), table = noiseImage(256);
    add(name, [=] {
        const cv::Mat source(kHeight, kWidth, CV_8UC(channels), from->data());
        cv::Mat destination(kHeight, kWidth, CV_8UC(channels), to->data());
        cv::LUT(source, cv::Mat(1, 256, CV_8U, table->data()), destination);
    });
}

std::vector<Pair> addAll() {
    addMemcpy("memcpy grey", kPixels);
    addMemcpy("memcpy bgr24", kPixels * 3);
    addMemcpy("memcpy bgr32", kPixels * 4);
    addOpenCvTransform("opencv transform");
    addOpenCvLut("opencv lut grey", 1);
    addOpenCvLut("opencv lut bgr24", 3);

    addColorMatrix("color matrix bgr24", 4);
    addColorMatrix("color matrix bgr32", 8);
    addGammaRaw("gamma raw");
    addGammaImage("gamma grey", 1);
    addGammaImage("gamma bgr24", 4);
    addGammaImage("gamma bgr32", 8);
    // A third of the pixels out of the bands, and all of them.
    addChroma("chroma suppression bgr24", 4, 100, 150);
    addChroma("chroma suppression bgr32", 8, 100, 150);
    addChroma("chroma suppression, none", 4, 1, 254);

    constexpr double kEightTimes = 1.0 / 8;
    return {
        {"color matrix bgr24", "memcpy bgr24", kEightTimes},
        {"color matrix bgr24", "opencv transform", 1},
        {"color matrix bgr32", "memcpy bgr32", kEightTimes},
        {"gamma raw", "memcpy grey", kEightTimes},
        {"gamma raw", "opencv lut grey", 1},
        {"gamma grey", "memcpy grey", kEightTimes},
        {"gamma grey", "opencv lut grey", 1},
        {"gamma bgr24", "memcpy bgr24", kEightTimes},
        {"gamma bgr24", "opencv lut bgr24", 1},
        {"gamma bgr32", "memcpy bgr32", kEightTimes},
        {"chroma suppression bgr24", "memcpy bgr24", kEightTimes},
        {"chroma suppression bgr32", "memcpy bgr32", kEightTimes},
        {"chroma suppression, none", "memcpy bgr24", kEightTimes},
    };
}

}  // namespace
}  // namespace tavra::bench

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    return tavra::bench::runPairs(argc, argv, tavra::bench::addAll);
}
