// Colour interpolation beside OpenCV's demosaicing, and the conversions of the preview path beside memcpy.
// A full HD frame, one thread. The ratio is the reference's time over ours: 1 is as fast, 2 is twice as fast.
#include <cstring>
#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>

#include "stages/bgr_conversion.h"
#include "stages/bit_reduction.h"
#include "stages/channel_swap.h"
#include "stages/color_interpolation.h"
#include "stages/grey_spread.h"
#include "support/full_hd.h"
#include "support/ratio_reporter.h"

namespace tavra::bench {
namespace {

const std::vector<std::uint8_t>& mosaic8() {
    static const auto samples = noise<std::uint8_t>(std::size_t{kWidth} * kHeight * 4, 255);
    return samples;
}

const std::vector<std::uint16_t>& mosaic16() {
    static const auto samples = noise<std::uint16_t>(std::size_t{kWidth} * kHeight, 4095);
    return samples;
}

void addOurs8(const std::string& name, std::uint8_t method, std::uint16_t colorArray,
              std::uint16_t bytesPerPixel) {
    const auto image = std::make_shared<std::vector<std::uint8_t>>(std::size_t{kWidth} * kHeight * 4);
    add(name, [=] {
        static CColorInterpolation stage;
        stage.Convert(kWidth, kHeight, mosaic8().data(), image->data(), method, colorArray, bytesPerPixel);
    });
}

void addOurs16(const std::string& name, std::uint8_t method) {
    const auto image = std::make_shared<std::vector<std::uint16_t>>(std::size_t{kWidth} * kHeight * 3);
    add(name, [=] {
        static CColorInterpolation stage;
        stage.Convert16(kWidth, kHeight, mosaic16().data(), image->data(), method, 2, 3);
    });
}

// `channels` is 1 for a mosaic, 2 for packed 4:2:2.
void addOpenCv(const std::string& name, int depth, int code, int channels = 1) {
    const void* const samples =
        depth == CV_8U ? static_cast<const void*>(mosaic8().data()) : mosaic16().data();
    const cv::Mat frame(kHeight, kWidth, CV_MAKETYPE(depth, channels), const_cast<void*>(samples));
    const auto image = std::make_shared<cv::Mat>(kHeight, kWidth, CV_MAKETYPE(depth, 3));
    add(name, [=] { cv::cvtColor(frame, *image, code); });
}

void addReduction(const std::string& name, std::uint32_t transferCode) {
    const auto image = std::make_shared<std::vector<std::uint8_t>>(std::size_t{kWidth} * kHeight);
    add(name, [=] { reduceTo8Bits(kWidth, kHeight, transferCode, mosaic16().data(), image->data()); });
}

void addConversions() {
    const auto image = std::make_shared<std::vector<std::uint8_t>>(std::size_t{kWidth} * kHeight * 4);
    add("bgr24 to bgr32",
        [=] { (void)convertBgrFrame(1024, kWidth, kHeight, mosaic8().data(), 8, image->data()); });
    add("bgr10 to bgr24",
        [=] { (void)convertBgrFrame(2048, kWidth, kHeight, mosaic8().data(), 4, image->data()); });
    add("grey to bgr24 in place", [=] { (void)spreadGreyInPlace(kWidth, kHeight, 4, image->data()); });
    add("swap red and blue", [=] { swapRedBlue24(kWidth, kHeight, image->data()); });
    add("memcpy bgr24",
        [=] { std::memcpy(image->data(), mosaic8().data(), std::size_t{kWidth} * kHeight * 3); });
    add("memcpy grey", [=] { std::memcpy(image->data(), mosaic8().data(), std::size_t{kWidth} * kHeight); });
}

std::vector<Pair> addAll() {
    const char* const bilinear = "opencv bilinear";
    const char* const bilinear16 = "opencv bilinear 16-bit";
    const char* const vng = "opencv vng";
    addOpenCv(bilinear, CV_8U, cv::COLOR_BayerBG2BGR);
    addOpenCv(bilinear16, CV_16U, cv::COLOR_BayerBG2BGR);
    addOpenCv(vng, CV_8U, cv::COLOR_BayerBG2BGR_VNG);

    addOpenCv("opencv yuyv", CV_8U, cv::COLOR_YUV2BGR_YUYV, 2);

    addOurs8("1 raw colour", 1, 2, 3);
    addOurs8("2 nearest", 2, 2, 3);
    addOurs8("3 bilinear", 3, 2, 3);
    addOurs8("3 bilinear, four bytes", 3, 2, 4);
    addOurs8("3 bilinear, quad mosaic", 3, 16, 3);
    addOurs8("4 four-tap", 4, 2, 3);
    addOurs8("5 cell-centre bilinear", 5, 2, 3);
    addOurs8("6 cell-centre nearest", 6, 2, 3);
    addOurs8("ycbcr 4:2:2", 2, 6, 3);
    addOurs8("grey to bgr24", 0, 1, 3);
    for (std::uint8_t method = 1; method <= 6; ++method)
        addOurs16("16-bit method " + std::to_string(method), method);
    addReduction("10 bits in words to 8", 2);
    addReduction("10 bits packed to 8", 0x10000);
    addReduction("12 bits packed to 8", 0x20000);
    addConversions();

    return {
        {"1 raw colour", bilinear, 0},
        {"2 nearest", bilinear, 0.35},
        {"3 bilinear", bilinear, 0.5},
        {"3 bilinear, four bytes", bilinear, 0},
        {"3 bilinear, quad mosaic", bilinear, 0},
        {"4 four-tap", vng, 3},
        {"4 four-tap", bilinear, 0},
        {"5 cell-centre bilinear", bilinear, 0.35},
        {"6 cell-centre nearest", bilinear, 0.35},
        {"16-bit method 1", bilinear16, 0.5},
        {"16-bit method 2", bilinear16, 0.5},
        {"16-bit method 3", bilinear16, 0.5},
        {"16-bit method 4", bilinear16, 0.5},
        {"16-bit method 5", bilinear16, 0.5},
        {"16-bit method 6", bilinear16, 0.5},
        {"ycbcr 4:2:2", "opencv yuyv", 0},
        {"grey to bgr24", "memcpy bgr24", 0},
        {"10 bits in words to 8", "memcpy grey", 0},
        {"10 bits packed to 8", "memcpy grey", 0},
        {"12 bits packed to 8", "memcpy grey", 0},
        {"bgr24 to bgr32", "memcpy bgr24", 0},
        {"bgr10 to bgr24", "memcpy bgr24", 0},
        {"grey to bgr24 in place", "memcpy bgr24", 0},
        {"swap red and blue", "memcpy bgr24", 0},
    };
}

}  // namespace
}  // namespace tavra::bench

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    return tavra::bench::runPairs(argc, argv, tavra::bench::addAll);
}
