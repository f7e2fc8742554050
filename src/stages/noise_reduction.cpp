#include "stages/noise_reduction.h"

#include <cstring>
#include <new>

#include "base/error_codes.h"
#include "platform/last_error.h"
#include "stages/noise_reduction/dark.h"
#include "stages/noise_reduction/median.h"

namespace tavra {
namespace {

constexpr std::uint16_t kMono = 1;
constexpr std::uint16_t kRedFirst = 2;
constexpr std::uint16_t kBlueFirst = 5;

bool fail(std::uint32_t code) {
    return platform::failWith(code).ok();
}

std::unique_ptr<std::uint8_t[]> allocate(std::size_t size) {
    // Too large for any buffer, which `new` would answer with an exception.
    if (size > PTRDIFF_MAX) return nullptr;
    return std::unique_ptr<std::uint8_t[]>(new (std::nothrow) std::uint8_t[size]);
}

}  // namespace

bool CNoiseReduction::Process(std::uint32_t width, std::uint32_t height, std::uint16_t colorArray,
                              std::uint8_t* pixels) {
    switch (mode_) {
        case TAVRA_NOISE_REDUCTION_MEDIAN: return limitToMedian(width, height, colorArray, pixels);
        case TAVRA_NOISE_REDUCTION_DARK_FRAME: return subtractDarkFrame(width, height, colorArray, pixels);
        case TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME: return takeDarkFrame(width, height, colorArray, pixels);
        default: return true;
    }
}

// By design: colour arrays 3 and 4 are refused, the neighbours of their green sites are others.
bool CNoiseReduction::limitToMedian(std::uint32_t width, std::uint32_t height, std::uint16_t colorArray,
                                    std::uint8_t* pixels) {
    if (colorArray != kMono && colorArray != kRedFirst && colorArray != kBlueFirst) {
        return fail(error::kInvalidArgument);
    }
    const std::size_t size = std::size_t{width} * height;
    if (!copyFrame(pixels, size)) return fail(error::kOutOfMemory);
    noise::limitToMedian({copy_.get(), width, height}, colorArray != kMono, pixels);
    return true;
}

bool CNoiseReduction::takeDarkFrame(std::uint32_t width, std::uint32_t height, std::uint16_t colorArray,
                                    const std::uint8_t* pixels) {
    const std::size_t size = std::size_t{width} * height;
    darkFrame_.reset();  // first, so that two large frames need not fit beside one another
    darkFrame_ = allocate(size);
    if (darkFrame_ == nullptr) return fail(error::kOutOfMemory);
    if (size != 0) std::memcpy(darkFrame_.get(), pixels, size);
    darkWidth_ = width;
    darkHeight_ = height;
    darkColorArray_ = colorArray;
    noise::subtractBlackLevels(width, height, darkFrame_.get());
    return true;
}

bool CNoiseReduction::subtractDarkFrame(std::uint32_t width, std::uint32_t height, std::uint16_t colorArray,
                                        std::uint8_t* pixels) {
    if (darkFrame_ == nullptr || width != darkWidth_ || height != darkHeight_ ||
        colorArray != darkColorArray_) {
        return fail(error::kInvalidArgument);
    }
    const std::size_t size = std::size_t{width} * height;
    if (!copyFrame(pixels, size)) return fail(error::kOutOfMemory);
    noise::subtract(darkFrame_.get(), size, pixels);
    // By design: every other array, 5 too, keeps the subtraction and is told as a failure.
    if (colorArray != kMono && colorArray != kRedFirst) return fail(error::kInvalidArgument);
    noise::restoreSaturated({copy_.get(), width, height}, colorArray != kMono, pixels);
    return true;
}

bool CNoiseReduction::copyFrame(const std::uint8_t* pixels, std::size_t size) {
    if (copy_ == nullptr || size != copySize_) {
        copy_.reset();
        copy_ = allocate(size);
        copySize_ = size;
    }
    if (copy_ == nullptr) return false;
    if (size != 0) std::memcpy(copy_.get(), pixels, size);
    return true;
}

}  // namespace tavra
