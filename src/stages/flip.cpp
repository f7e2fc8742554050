#include "stages/flip.h"

#include <cstring>
#include <new>
#include <utility>

#include "platform/last_error.h"
#include "stages/flip/mirror.h"
#include "stages/flip/orientation.h"
#include "stages/flip/transpose.h"

namespace tavra {
namespace {

// 0 for a number of samples that no operation takes.
constexpr std::size_t servedPixelBytes(std::uint16_t samples, std::size_t sampleBytes) {
    return samples == 1 || samples == 3 || samples == 4 ? samples * sampleBytes : 0;
}

// A mirror behind the exchange of rows and columns is the other image's rows taken from the last one on.
flip::Transposition transpositionOf(const std::uint8_t* source, std::uint8_t* destination, std::size_t width,
                                    std::size_t height, std::size_t pixelBytes, Orientation orientation) {
    const auto sourceStride = static_cast<std::ptrdiff_t>(width * pixelBytes);
    const auto destinationStride = static_cast<std::ptrdiff_t>(height * pixelBytes);
    flip::Transposition image = {source, sourceStride, width, height, destination, destinationStride};
    if (orientation.mirrorX) {
        image.source += static_cast<std::ptrdiff_t>(height - 1) * sourceStride;
        image.sourceStride = -sourceStride;
    }
    if (orientation.mirrorY) {
        image.destination += static_cast<std::ptrdiff_t>(width - 1) * destinationStride;
        image.destinationStride = -destinationStride;
    }
    return image;
}

}  // namespace

std::uint32_t CFlip::Flip8(std::uint8_t mirror, std::uint8_t rotation, std::uint32_t* width,
                           std::uint32_t* height, const std::uint8_t* source, std::uint8_t* destination,
                           std::uint16_t bytesPerPixel) {
    return flip({mirror, rotation, width, height, source, destination, servedPixelBytes(bytesPerPixel, 1)});
}

std::uint32_t CFlip::Flip16(std::uint8_t mirror, std::uint8_t rotation, std::uint32_t* width,
                            std::uint32_t* height, const std::uint16_t* source, std::uint16_t* destination,
                            std::uint16_t wordsPerPixel) {
    return flip({mirror, rotation, width, height, source, destination, servedPixelBytes(wordsPerPixel, 2)});
}

std::uint32_t CFlip::FlipRaw8(std::uint8_t mirror, std::uint8_t rotation, std::uint32_t* width,
                              std::uint32_t* height, const std::uint8_t* source, std::uint8_t* destination,
                              std::uint16_t* colorArray) {
    return flipRaw({mirror, rotation, width, height, source, destination, 1}, colorArray);
}

std::uint32_t CFlip::FlipRaw16(std::uint8_t mirror, std::uint8_t rotation, std::uint32_t* width,
                               std::uint32_t* height, const std::uint16_t* source, std::uint16_t* destination,
                               std::uint16_t* colorArray) {
    return flipRaw({mirror, rotation, width, height, source, destination, 2}, colorArray);
}

std::uint32_t CFlip::flipRaw(const Request& request, std::uint16_t* colorArray) {
    const Orientation orientation = orientationOf(request.mirror, request.rotation);
    if (orientation.asSent()) return error::kNone;
    if (colorArray == nullptr) return platform::failWith(error::kInvalidArgument).code();
    const std::uint32_t result = flip(request);
    if (result == error::kNone) *colorArray = turnedColorArray(*colorArray, orientation);
    return result;
}

// By design: nothing to turn is success before anything else is looked at, also with two buffers.
std::uint32_t CFlip::flip(const Request& request) {
    const Orientation orientation = orientationOf(request.mirror, request.rotation);
    if (orientation.asSent()) return error::kNone;
    if (request.pixelBytes == 0 || request.width == nullptr || request.height == nullptr ||
        request.source == nullptr || request.destination == nullptr) {
        return platform::failWith(error::kInvalidArgument).code();
    }
    const std::size_t width = *request.width, height = *request.height;
    const auto* source = static_cast<const std::uint8_t*>(request.source);
    auto* const destination = static_cast<std::uint8_t*>(request.destination);
    const bool empty = width == 0 || height == 0;
    if (!orientation.transpose) {
        if (!empty)
            flip::mirrorImage(request.pixelBytes, width, height, source, destination, orientation.mirrorX,
                              orientation.mirrorY);
        return error::kNone;
    }
    if (!empty) {
        if (source == destination) {
            if (!copyToScratch(source, width, height, request.pixelBytes))
                return platform::failWith(error::kOutOfMemory).code();
            source = scratch_.get();
        }
        flip::transpose(request.pixelBytes,
                        transpositionOf(source, destination, width, height, request.pixelBytes, orientation));
    }
    std::swap(*request.width, *request.height);
    return error::kNone;
}

bool CFlip::copyToScratch(const std::uint8_t* source, std::size_t width, std::size_t height,
                          std::size_t pixelBytes) {
    // Too large for any buffer, which `new` would answer with an exception.
    if (width > PTRDIFF_MAX / pixelBytes / height) return false;
    const std::size_t size = width * height * pixelBytes;
    if (size > scratchSize_) {
        auto* const grown = new (std::nothrow) std::uint8_t[size];
        if (grown == nullptr) return false;
        scratch_.reset(grown);
        scratchSize_ = size;
    }
    std::memcpy(scratch_.get(), source, size);
    return true;
}

}  // namespace tavra
