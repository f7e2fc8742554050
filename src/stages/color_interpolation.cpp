#include "stages/color_interpolation.h"

#include <cstdint>
#include <memory>
#include <new>

#include "base/color_array.h"
#include "base/pixel_format.h"
#include "base/status.h"
#include "platform/last_error.h"
#include "stages/interpolation/kernels.h"

namespace tavra {
namespace {

using interpolation::Frame;
using interpolation::Image;

constexpr std::uint16_t kLastColorArray = 19;
constexpr std::uint8_t kLastMethod = 6;
constexpr std::size_t kBgrChannels = 3;

template <class Sample>
using Kernel = void (*)(const Frame<Sample>&, const Image<Sample>&);

template <class Sample>
constexpr Kernel<Sample> kKernels[kLastMethod] = {
    interpolation::rawColor<Sample>,           interpolation::nearestNeighbour<Sample>,
    interpolation::bilinear<Sample>,           interpolation::fourTap<Sample>,
    interpolation::cellCentreBilinear<Sample>, interpolation::cellCentreNearest<Sample>,
};

template <class Sample>
void run(Kernel<Sample> kernel, const Frame<Sample>& frame, const Image<Sample>& image) {
    if (frame.width != 0 && frame.height != 0) kernel(frame, image);
}

template <class Sample>
Status convertOff(const Frame<Sample>& frame, const Image<Sample>& image) {
    if (isYcbcr(frame.colorArray)) {
        run<Sample>(interpolation::ycbcrToGrey, frame, image);
    } else if (image.pitch == 1) {
        run<Sample>(interpolation::copyPlane, frame, image);
    } else if (image.pitch >= kBgrChannels) {
        run<Sample>(interpolation::spreadGrey, frame, image);
    } else {
        return Status(error::kInvalidArgument);
    }
    return {};
}

template <class Sample>
Status convertMosaic(const Frame<Sample>& frame, const Image<Sample>& image, std::uint8_t method) {
    if (!isQuad(frame.colorArray)) {
        run(kKernels<Sample>[method - 1], frame, image);
        return {};
    }
    if (frame.width == 0 || frame.height == 0) return {};
    // Too large for any buffer, which `new` would answer with an exception.
    if (frame.width > PTRDIFF_MAX / sizeof(Sample) / frame.height) return Status(error::kOutOfMemory);
    const std::unique_ptr<Sample[]> mosaic(new (std::nothrow) Sample[frame.width * frame.height]);
    if (mosaic == nullptr) return Status(error::kOutOfMemory);
    interpolation::reduceQuad(frame, mosaic.get());
    const Frame<Sample> reduced = {mosaic.get(), frame.width * sizeof(Sample), frame.width, frame.height,
                                   static_cast<std::uint16_t>(frame.colorArray - 14)};
    run(kKernels<Sample>[method - 1], reduced, image);
    return {};
}

template <class Sample>
Status convert(const Frame<Sample>& frame, const Image<Sample>& image, std::uint8_t method) {
    if (frame.colorArray == 0 || frame.colorArray > kLastColorArray)
        return platform::failWith(error::kInvalidArgument);
    if (method == 0 || isMonoLike(frame.colorArray)) return convertOff(frame, image);
    const bool ycbcr = isYcbcr(frame.colorArray);
    if (!ycbcr && method > kLastMethod) return platform::failWith(error::kInvalidArgument);
    if (image.pitch < kBgrChannels) return Status(error::kInvalidArgument);
    if (!ycbcr) return convertMosaic(frame, image, method);
    run<Sample>(interpolation::ycbcrToBgr, frame, image);
    return {};
}

// The arguments as the interface gives them, with the strides that 0 stands for.
template <class Sample>
std::uint32_t convertStrided(std::uint32_t width, std::uint32_t height, std::uint32_t sourceStride,
                             const Sample* source, std::uint32_t destinationStride, Sample* destination,
                             std::uint8_t method, std::uint16_t colorArray, std::uint16_t samplesPerPixel) {
    const std::size_t rowSamples =
        isYcbcr(colorArray) ? interpolation::ycbcrRowSamples(colorArray, width) : width;
    const std::size_t rowBytes = paddedStride(width, samplesPerPixel * sizeof(Sample));
    const Frame<Sample> frame = {source, sourceStride != 0 ? sourceStride : rowSamples * sizeof(Sample),
                                 width, height, colorArray};
    const Image<Sample> image = {destination, destinationStride != 0 ? destinationStride : rowBytes,
                                 samplesPerPixel};
    return convert(frame, image, method).code();
}

}  // namespace

std::uint32_t CColorInterpolation::ConvertEx(std::uint32_t width, std::uint32_t height,
                                             std::uint32_t sourceStride, const std::uint8_t* source,
                                             std::uint32_t destinationStride, std::uint8_t* destination,
                                             std::uint8_t method, std::uint16_t colorArray,
                                             std::uint16_t bytesPerPixel) {
    return convertStrided(width, height, sourceStride, source, destinationStride, destination, method,
                          colorArray, bytesPerPixel);
}

std::uint32_t CColorInterpolation::Convert(std::uint32_t width, std::uint32_t height,
                                           const std::uint8_t* source, std::uint8_t* destination,
                                           std::uint8_t method, std::uint16_t colorArray,
                                           std::uint16_t bytesPerPixel) {
    return ConvertEx(width, height, 0, source, 0, destination, method, colorArray, bytesPerPixel);
}

std::uint32_t CColorInterpolation::ConvertEx16(std::uint32_t width, std::uint32_t height,
                                               std::uint32_t sourceStride, const std::uint16_t* source,
                                               std::uint32_t destinationStride, std::uint16_t* destination,
                                               std::uint8_t method, std::uint16_t colorArray,
                                               std::uint16_t wordsPerPixel) {
    return convertStrided(width, height, sourceStride, source, destinationStride, destination, method,
                          colorArray, wordsPerPixel);
}

std::uint32_t CColorInterpolation::Convert16(std::uint32_t width, std::uint32_t height,
                                             const std::uint16_t* source, std::uint16_t* destination,
                                             std::uint8_t method, std::uint16_t colorArray,
                                             std::uint16_t wordsPerPixel) {
    return ConvertEx16(width, height, 0, source, 0, destination, method, colorArray, wordsPerPixel);
}

}  // namespace tavra
