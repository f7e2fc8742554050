// White balance, sharpening and noise reduction beside memcpy of the image and beside OpenCV's nearest
// equivalents. Full HD, one thread. The ratio is the reference's time over ours: 1 is as fast, 1/8 takes
// eight times as long.
#include <cstring>
#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>

#include "stages/noise_reduction.h"
#include "stages/sharpness.h"
#include "stages/wb.h"
#include "support/full_hd.h"
#include "support/ratio_reporter.h"

namespace tavra::bench {
namespace {

// The stages work in place: each pass takes what the one before left. Sharpening and gains of nearly 1 keep
// noise what it is.
template <class Sample>
void addSharpness(const std::string& name, unsigned channels, std::uint32_t format, std::uint16_t bits) {
    const auto image =
        std::make_shared<std::vector<Sample>>(noise<Sample>(kPixels * channels, (1u << bits) - 1));
    const auto stage = std::make_shared<CSharpness>();
    stage->SetMode(1, 40, 3);
    add(name, [=] {
        if constexpr (sizeof(Sample) == 1) {
            stage->Apply8(kWidth, kHeight, 0, format, image->data(), bits);
        } else {
            stage->Apply16(kWidth, kHeight, 0, format, image->data(), bits);
        }
    });
}

template <class Sample>
void addWhiteBalance(const std::string& name, std::uint8_t mode, std::uint16_t bits) {
    const auto frame = std::make_shared<std::vector<Sample>>(noise<Sample>(kPixels, (1u << bits) - 1));
    const auto stage = std::make_shared<CWB>();
    const std::uint16_t gains[4] = {129, 127, 127, 129};
    stage->SetGains(gains);
    stage->SetMode(mode);
    add(name, [=] {
        if constexpr (sizeof(Sample) == 1) {
            stage->Apply8(kWidth, kHeight, 0, 2, frame->data(), bits);
        } else {
            stage->Apply16(kWidth, kHeight, 0, 2, frame->data(), bits);
        }
    });
}

// `dark`: what the dark frame has in each sample at most.
void addNoiseReduction(const std::string& name, std::uint32_t mode, std::uint16_t colorArray,
                       std::uint8_t least, unsigned dark) {
    auto frame = noise<std::uint8_t>(kPixels, 255);
    for (std::uint8_t& s : frame) s = std::max(s, least);
    const auto fresh = std::make_shared<std::vector<std::uint8_t>>(frame);
    const auto work = std::make_shared<std::vector<std::uint8_t>>(frame);
    const auto stage = std::make_shared<CNoiseReduction>();
    stage->setMode(TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME);
    stage->Process(kWidth, kHeight, colorArray, noise<std::uint8_t>(kPixels, dark).data());
    stage->setMode(mode);
    // What it changes must be there again for the next pass; that copy is part of the time.
    add(name, [=] {
        std::memcpy(work->data(), fresh->data(), fresh->size());
        stage->Process(kWidth, kHeight, colorArray, work->data());
    });
}

template <class Sample>
void addCopy(const std::string& name, unsigned channels) {
    const auto from = std::make_shared<std::vector<Sample>>(noise<Sample>(kPixels * channels, 255));
    const auto to = std::make_shared<std::vector<Sample>>(from->size());
    add(name, [=] { std::memcpy(to->data(), from->data(), from->size() * sizeof(Sample)); });
}

void addOpenCvSharpness(const std::string& name, int type, unsigned channels) {
    const auto from = std::make_shared<cv::Mat>(kHeight, kWidth, type);
    const auto samples = noise<std::uint8_t>(kPixels * channels, 255);
    std::memcpy(from->data, samples.data(), samples.size());
    const auto blurred = std::make_shared<cv::Mat>();
    const auto to = std::make_shared<cv::Mat>();
    add(name, [=] {
        cv::blur(*from, *blurred, cv::Size(3, 3));
        cv::addWeighted(*from, 1.4, *blurred, -0.4, 0, *to);
    });
}

void addOpenCvMedian(const std::string& name) {
    const auto from = std::make_shared<cv::Mat>(kHeight, kWidth, CV_8U);
    const auto samples = noise<std::uint8_t>(kPixels, 255);
    std::memcpy(from->data, samples.data(), samples.size());
    const auto to = std::make_shared<cv::Mat>();
    add(name, [=] { cv::medianBlur(*from, *to, 3); });
}

std::vector<Pair> addAll() {
    addCopy<std::uint8_t>("memcpy grey", 1);
    addCopy<std::uint8_t>("memcpy bgr24", 3);
    addCopy<std::uint8_t>("memcpy bgr32", 4);
    addCopy<std::uint16_t>("memcpy grey words", 1);
    addCopy<std::uint16_t>("memcpy bgr words", 3);
    addOpenCvSharpness("opencv unsharp grey", CV_8U, 1);
    addOpenCvSharpness("opencv unsharp bgr24", CV_8UC3, 3);
    addOpenCvMedian("opencv median 3");

    addSharpness<std::uint8_t>("sharpness grey", 1, 1, 8);
    addSharpness<std::uint8_t>("sharpness bgr24", 3, 4, 8);
    addSharpness<std::uint8_t>("sharpness bgr32", 4, 8, 8);
    addSharpness<std::uint16_t>("sharpness grey words", 1, 16, 12);
    addSharpness<std::uint16_t>("sharpness bgr words", 3, 256, 12);
    addWhiteBalance<std::uint8_t>("white balance", 1, 8);
    addWhiteBalance<std::uint16_t>("white balance words", 1, 12);
    addWhiteBalance<std::uint8_t>("white balance from the frame", 2, 8);
    addNoiseReduction("median limit mono", TAVRA_NOISE_REDUCTION_MEDIAN, 1, 0, 0);
    addNoiseReduction("median limit mosaic", TAVRA_NOISE_REDUCTION_MEDIAN, 2, 0, 0);
    addNoiseReduction("dark frame mono", TAVRA_NOISE_REDUCTION_DARK_FRAME, 1, 0, 5);
    addNoiseReduction("dark frame mosaic", TAVRA_NOISE_REDUCTION_DARK_FRAME, 2, 0, 5);
    addNoiseReduction("dark frame, all saturated", TAVRA_NOISE_REDUCTION_DARK_FRAME, 2, 253, 30);

    constexpr double kEightTimes = 1.0 / 8;
    constexpr double kNoiseTarget = 1.0 / 25;
    constexpr double kBlurTarget = 1;
    return {
        {"sharpness grey", "memcpy grey", kEightTimes},
        {"sharpness grey", "opencv unsharp grey", kBlurTarget},
        {"sharpness bgr24", "memcpy bgr24", kEightTimes},
        {"sharpness bgr24", "opencv unsharp bgr24", kBlurTarget},
        {"sharpness bgr32", "memcpy bgr32", kEightTimes},
        {"sharpness grey words", "memcpy grey words", kEightTimes},
        {"sharpness bgr words", "memcpy bgr words", kEightTimes},
        {"white balance", "memcpy grey", kEightTimes},
        {"white balance words", "memcpy grey words", kEightTimes},
        {"white balance from the frame", "memcpy grey", 0},
        {"median limit mono", "memcpy grey", kNoiseTarget},
        {"median limit mono", "opencv median 3", 0},
        {"median limit mosaic", "memcpy grey", kNoiseTarget},
        {"median limit mosaic", "opencv median 3", 0},
        {"dark frame mono", "memcpy grey", kNoiseTarget},
        {"dark frame mosaic", "memcpy grey", kNoiseTarget},
        {"dark frame, all saturated", "memcpy grey", 0},
    };
}

}  // namespace
}  // namespace tavra::bench

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    return tavra::bench::runPairs(argc, argv, tavra::bench::addAll);
}
