// The whole chain of a colour frame, every stage switched on, beside OpenCV doing the nearest equivalent on
// the same frame, and the chain's stages one by one. Full HD, one thread. The ratio is the reference's time
// over ours.
#include <algorithm>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "stages/chroma_suppress.h"
#include "stages/color_interpolation.h"
#include "stages/color_matrix.h"
#include "stages/gamma.h"
#include "stages/sharpness.h"
#include "support/full_hd.h"
#include "support/ratio_reporter.h"

namespace tavra::bench {
namespace {

constexpr std::uint32_t kBgr = 4;
constexpr std::uint16_t kRggb = 2;

// A scene, not only noise: large shapes with a little of it, as a camera sees.
std::vector<std::uint8_t> scene() {
    std::vector<std::uint8_t> frame = noise<std::uint8_t>(kPixels, 15);
    for (std::uint32_t y = 0; y < kHeight; ++y) {
        for (std::uint32_t x = 0; x < kWidth; ++x) {
            const std::uint32_t shade = (x / 7 + y / 5) % 160 + ((x / 240 + y / 180) % 2) * 60;
            std::uint8_t& sample = frame[std::size_t{y} * kWidth + x];
            sample = static_cast<std::uint8_t>(sample + shade);
        }
    }
    return frame;
}

// The stages with the settings of an ordinary picture.
struct Chain {
    Chain() {
        for (std::uint8_t index = 0; index < 5; ++index)
            gamma.SetGamma(index, 1, index == 0 ? 145 : 110, 0, 0, nullptr, 8);
        sharpness.SetMode(1, 80, 2);
        const std::int16_t coefficients[12] = {150, -35, -15, 0, -20, 140, -20, 0, -5, -45, 150, 0};
        matrix.SetColorMatrix(0xFF, coefficients);
        matrix.SetHueSaturation(1, 50, 110);
        chroma.SetLowThreshold(40);
        chroma.SetLowStrength(3);
        chroma.SetHighThreshold(220);
        chroma.SetHighStrength(3);
    }

    void process(std::uint8_t* frame, std::uint8_t* image) {
        gamma.ApplyRaw8(kWidth, kHeight, kWidth, kRggb, frame);
        interpolation.ConvertEx(kWidth, kHeight, kWidth, frame, 0, image, 3, kRggb, 3);
        finish(image);
    }
    void finish(std::uint8_t* image) {
        gamma.ApplyImage8(kWidth, kHeight, 0, kBgr, image);
        sharpness.Apply8(kWidth, kHeight, 0, kBgr, image, 8);
        matrix.Apply8(kWidth, kHeight, 0, kBgr, image, 8);
        chroma.Apply8(kWidth, kHeight, 0, kBgr, image);
    }

    CGamma gamma;
    CColorInterpolation interpolation;
    CSharpness sharpness;
    CColorMatrix matrix;
    CChromaSuppress chroma;
};

void addOurs(const std::string& name) {
    const auto chain = std::make_shared<Chain>();
    const auto fresh = std::make_shared<std::vector<std::uint8_t>>(scene());
    const auto frame = std::make_shared<std::vector<std::uint8_t>>(kPixels);
    const auto image = std::make_shared<std::vector<std::uint8_t>>(kPixels * 3);
    // The curves of the mosaic work in place; the copy that makes the frame new again is part of the time.
    add(name, [=] {
        std::copy(fresh->begin(), fresh->end(), frame->begin());
        chain->process(frame->data(), image->data());
    });
}

void addOpenCv(const std::string& name) {
    const auto frame = std::make_shared<std::vector<std::uint8_t>>(scene());
    const auto table = std::make_shared<std::vector<std::uint8_t>>(256);
    for (std::size_t i = 0; i < 256; ++i) (*table)[i] = static_cast<std::uint8_t>(255 - i / 2);
    const cv::Matx34f matrix(1.5F, -0.45F, -0.05F, 0, -0.2F, 1.4F, -0.2F, 0, -0.15F, -0.35F, 1.5F, 0);
    struct Images {
        cv::Mat colors, curved, turned, blurred, sharp;
    };
    const auto images = std::make_shared<Images>();
    add(name, [=] {
        const cv::Mat mosaic(kHeight, kWidth, CV_8U, frame->data());
        cv::cvtColor(mosaic, images->colors, cv::COLOR_BayerBG2BGR);
        cv::LUT(images->colors, cv::Mat(1, 256, CV_8U, table->data()), images->curved);
        cv::transform(images->curved, images->turned, matrix);
        cv::blur(images->turned, images->blurred, cv::Size(3, 3));
        cv::addWeighted(images->turned, 1.8, images->blurred, -0.8, 0, images->sharp);
    });
}

template <class Work>
void addStage(const std::string& name, const Work& work) {
    const auto chain = std::make_shared<Chain>();
    const auto frame = std::make_shared<std::vector<std::uint8_t>>(scene());
    const auto image = std::make_shared<std::vector<std::uint8_t>>(kPixels * 3);
    chain->interpolation.ConvertEx(kWidth, kHeight, kWidth, frame->data(), 0, image->data(), 3, kRggb, 3);
    add(name, [=] { work(*chain, frame->data(), image->data()); });
}

std::vector<Pair> addAll() {
    addOurs("chain");
    addOpenCv("opencv chain");
    addStage("gamma raw", [](Chain& c, std::uint8_t* frame, std::uint8_t*) {
        c.gamma.ApplyRaw8(kWidth, kHeight, kWidth, kRggb, frame);
    });
    addStage("interpolation", [](Chain& c, std::uint8_t* frame, std::uint8_t* image) {
        c.interpolation.ConvertEx(kWidth, kHeight, kWidth, frame, 0, image, 3, kRggb, 3);
    });
    addStage("gamma", [](Chain& c, std::uint8_t*, std::uint8_t* image) {
        c.gamma.ApplyImage8(kWidth, kHeight, 0, kBgr, image);
    });
    addStage("sharpness", [](Chain& c, std::uint8_t*, std::uint8_t* image) {
        c.sharpness.Apply8(kWidth, kHeight, 0, kBgr, image, 8);
    });
    addStage("color matrix", [](Chain& c, std::uint8_t*, std::uint8_t* image) {
        c.matrix.Apply8(kWidth, kHeight, 0, kBgr, image, 8);
    });
    addStage("chroma suppression", [](Chain& c, std::uint8_t*, std::uint8_t* image) {
        c.chroma.Apply8(kWidth, kHeight, 0, kBgr, image);
    });
    return {{"chain", "opencv chain", 1},
            {"gamma raw", "opencv chain", 0},
            {"interpolation", "opencv chain", 0},
            {"gamma", "opencv chain", 0},
            {"sharpness", "opencv chain", 0},
            {"color matrix", "opencv chain", 0},
            {"chroma suppression", "opencv chain", 0}};
}

}  // namespace
}  // namespace tavra::bench

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    return tavra::bench::runPairs(argc, argv, tavra::bench::addAll);
}
