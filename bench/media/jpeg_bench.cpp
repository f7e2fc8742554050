// The JPEG encoder beside libjpeg-turbo, which has hand-written code for the processor's vector units. A full
// HD picture from pixels of B, G, R to a stream in memory, one thread; the same quantisation and Huffman
// tables on both sides, and the reference's accurate transform. The ratio is the reference's time over ours:
// 1 is as fast, 0.5 half as fast.
#include <cstdio>  // jpeglib.h needs it
//
#include <jpeglib.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <numbers>

#include "media/jpeg/jpeg_encoder.h"
#include "media/jpeg/memory_output.h"
#include "support/full_hd.h"
#include "support/ratio_reporter.h"

namespace tavra::bench {
namespace {

// Like a photograph: a soft background, things with edges and with texture, and the noise of a sensor.
std::uint8_t sampleOfChart(double x, double y, int channel, double noise) {
    const double pi = std::numbers::pi;
    double light = 110 + 60 * std::sin(2 * pi * (x / 1900 + 0.1 * channel)) * std::cos(pi * y / 1300);
    const double radius = std::hypot(std::fmod(x, 320) - 160, std::fmod(y, 270) - 135);
    if (radius < 100) light += (channel == 1 ? 45 : -30) + 0.25 * radius;
    if (std::fmod(x, 640) > 500) light += 25 * std::sin(x * y / 9000) + 12 * std::sin(y / 2.5);
    if (std::fmod(y, 270) > 240) light = std::fmod(x, 60) < 30 ? 215 : 40;
    return static_cast<std::uint8_t>(std::clamp(light + noise, 0.0, 255.0));
}

const std::vector<std::uint8_t>& picture() {
    static const std::vector<std::uint8_t> pixels = [] {
        std::mt19937 random(1);
        std::normal_distribution<double> noise(0, 4);
        std::vector<std::uint8_t> samples(3 * kPixels);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const std::size_t pixel = i / 3;
            samples[i] =
                sampleOfChart(static_cast<double>(pixel % kWidth), static_cast<double>(pixel / kWidth),
                              static_cast<int>(i % 3), noise(random));
        }
        return samples;
    }();
    return pixels;
}

constexpr std::size_t kCapacity = 3 * kPixels;

struct Ours {
    CJPEGEncoder encoder;
    std::vector<std::uint8_t> memory = std::vector<std::uint8_t>(kCapacity);
    CMemoryOutput output{memory.data(), 0, memory.size()};
};

std::size_t encode(Ours& ours, JpegSampling sampling, unsigned quality) {
    CJPEGEncoder& encoder = ours.encoder;
    ours.output.Reset();
    const bool good = encoder.SetSource(picture().data(), 3 * kWidth, kWidth, kHeight, 3, JpegColor::Bgr,
                                        JpegSampling::Sampling444) == JpegError::None &&
                      encoder.SetDestination(&ours.output) == JpegError::None &&
                      encoder.SetParams(JpegMode::Baseline, JpegColor::YCbCr, sampling, 0, false, quality) ==
                          JpegError::None &&
                      encoder.WriteHeader() == JpegError::None && encoder.WriteData() == JpegError::None;
    if (!good) std::abort();
    return ours.output.length();
}

std::size_t encodeWithReference(std::vector<std::uint8_t>& memory, JpegSampling sampling, unsigned quality) {
    jpeg_compress_struct jpeg;
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* buffer = memory.data();
    unsigned long size = memory.size();
    jpeg_mem_dest(&jpeg, &buffer, &size);
    jpeg.image_width = kWidth;
    jpeg.image_height = kHeight;
    jpeg.input_components = 3;
    jpeg.in_color_space = JCS_EXT_BGR;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, static_cast<int>(quality), TRUE);
    jpeg.comp_info[0].h_samp_factor = sampling == JpegSampling::Sampling422 ? 2 : 1;
    jpeg.comp_info[0].v_samp_factor = 1;
    jpeg_start_compress(&jpeg, TRUE);
    while (jpeg.next_scanline < kHeight) {
        JSAMPROW row = const_cast<JSAMPROW>(picture().data() + std::size_t{jpeg.next_scanline} * 3 * kWidth);
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    return size;
}

Pair addPair(const std::string& name, JpegSampling sampling, unsigned quality) {
    const auto ours = std::make_shared<Ours>();
    const auto referenceMemory = std::make_shared<std::vector<std::uint8_t>>(kCapacity);
    std::printf("%-20s %zu bytes, libjpeg-turbo %zu\n", name.c_str(), encode(*ours, sampling, quality),
                encodeWithReference(*referenceMemory, sampling, quality));
    add("encode " + name, [=] { encode(*ours, sampling, quality); });
    add("libjpeg-turbo " + name, [=] { encodeWithReference(*referenceMemory, sampling, quality); });
    return {"encode " + name, "libjpeg-turbo " + name, 0.6};
}

std::vector<Pair> addAll() {
    std::vector<Pair> pairs;
    for (const unsigned quality : {75U, 90U, 95U}) {
        const std::string number = std::to_string(quality);
        pairs.push_back(addPair("4:4:4, quality " + number, JpegSampling::Sampling444, quality));
        pairs.push_back(addPair("4:2:2, quality " + number, JpegSampling::Sampling422, quality));
    }
    return pairs;
}

}  // namespace
}  // namespace tavra::bench

int main(int argc, char** argv) {
    return tavra::bench::runPairs(argc, argv, tavra::bench::addAll);
}
