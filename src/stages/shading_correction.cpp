#include "stages/shading_correction.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "base/color_array.h"
#include "platform/last_error.h"
#include "stages/shading_correction/correction.h"

namespace tavra {
namespace {

namespace mode {
constexpr std::uint32_t kCalibrateGain = 1;
constexpr std::uint32_t kGain = 2;
constexpr std::uint32_t kCalibrateOffset = 3;
constexpr std::uint32_t kOffset = 4;
constexpr std::uint32_t kShowMap = 255;
}  // namespace mode

constexpr std::size_t kEntryBytes = sizeof(std::int32_t);

constexpr bool calibrates(std::uint32_t mode) {
    return mode == mode::kCalibrateGain || mode == mode::kCalibrateOffset;
}

template <class Sample>
constexpr std::uint32_t maximumLevel(std::uint16_t bits) {
    constexpr std::uint32_t kHeld = 8 * sizeof(Sample);
    return (1u << std::min<std::uint32_t>(bits, kHeld)) - 1;
}

constexpr shading::Targets unpackTargets(std::uint64_t packed) {
    shading::Targets targets{};
    for (std::uint16_t& target : targets) {
        target = static_cast<std::uint16_t>(packed);
        packed >>= 16;
    }
    return targets;
}

// Zeroed; null also for what no memory holds, which `new` would answer with an exception.
template <class T>
std::unique_ptr<T[]> allocate(std::uint64_t count) {
    if (count > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T)) return nullptr;
    return std::unique_ptr<T[]>(new (std::nothrow) T[static_cast<std::size_t>(count)]());
}

template <class Sample>
constexpr shading::CorrectRow<Sample> correctionOf(std::uint32_t mode) {
    switch (mode) {
        case mode::kGain: return shading::multiplyRow<Sample>;
        case mode::kOffset: return shading::addRow<Sample>;
        default: return shading::showRow<Sample>;
    }
}

}  // namespace

template <class Sample>
Sample* CShadingCorrection::Frame<Sample>::row(std::size_t y) const {
    return static_cast<Sample*>(
        static_cast<void*>(static_cast<std::uint8_t*>(static_cast<void*>(pixels)) + y * stride));
}

std::uint32_t CShadingCorrection::SetMode(std::uint32_t mode) {
    const std::lock_guard lock(mutex_);
    mode_ = mode;
    if (calibrates(mode)) frameCount_ = 0;
    return error::kNone;
}

std::uint32_t CShadingCorrection::GetMode(std::uint32_t* mode) {
    const std::lock_guard lock(mutex_);
    if (mode != nullptr) *mode = mode_;
    return error::kNone;
}

std::uint32_t CShadingCorrection::Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                          std::uint16_t* pixels, std::uint16_t bits) {
    return apply(Frame<std::uint16_t>{width, height, stride != 0 ? stride : 2 * width, pixels}, bits);
}

std::uint32_t CShadingCorrection::Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                         std::uint8_t* pixels, std::uint16_t bits) {
    return apply(Frame<std::uint8_t>{width, height, stride != 0 ? stride : width, pixels}, bits);
}

template <class Sample>
std::uint32_t CShadingCorrection::apply(const Frame<Sample>& frame, std::uint16_t bits) {
    const std::lock_guard lock(mutex_);
    const bool corrects = mode_ == mode::kGain || mode_ == mode::kOffset || mode_ == mode::kShowMap;
    if (!corrects && !calibrates(mode_)) return error::kNone;
    if (frame.pixels == nullptr && frame.width != 0 && frame.height != 0)
        return platform::failWith(error::kInvalidArgument).code();
    if (!corrects) return calibrate(frame).code();
    const std::uint32_t maximum = maximumLevel<Sample>(bits);
    if (frameCount_ != 0) finishCalibration(maximum);
    correct(frame, maximum);
    return error::kNone;
}

template <class Sample>
Status CShadingCorrection::calibrate(const Frame<Sample>& frame) {
    if (size_ != MapSize{frame.width, frame.height, frame.stride}) frameCount_ = 0;
    if (frameCount_ == 0) TAVRA_RETURN_IF_ERROR(beginCalibration(frame.width, frame.height));
    for (std::size_t y = 0; y < frame.height; ++y) {
        shading::addToMean(frame.row(y), frame.width, frameCount_, mean_.get() + y * frame.width);
    }
    ++frameCount_;
    return {};
}

// Memory of the right size is used again: on a camera's stream this runs with each frame of a calibration.
Status CShadingCorrection::beginCalibration(std::uint32_t width, std::uint32_t height) {
    const auto stride = static_cast<std::uint32_t>(kEntryBytes * width);
    const bool addressable = stride / kEntryBytes == width;
    const MapSize size{width, height, stride};
    if (map_ != nullptr && size == size_) {
        std::memset(map_.get(), 0, static_cast<std::size_t>(size.bytes()));
    } else {
        map_.reset();
        if (addressable) map_ = allocate<std::uint8_t>(size.bytes());
    }
    size_ = size;
    const std::uint64_t count = std::uint64_t{width} * height;
    if (mean_ == nullptr || meanCount_ != count) {
        mean_.reset();
        mean_ = allocate<double>(count);
        meanCount_ = static_cast<std::size_t>(count);
    }
    if (mean_ == nullptr) {
        map_.reset();
        return platform::failWith(error::kOutOfMemory);
    }
    return {};
}

void CShadingCorrection::finishCalibration(std::uint32_t maximum) {
    frameCount_ = 0;
    if (map_ == nullptr || mode_ == mode::kShowMap) return;
    const shading::FlatField field = {mean_.get(), size_.width, size_.height};
    const shading::Targets targets =
        shading::measuredTargets(field, unpackTargets(targets_), isMonoLike(colorArray_), maximum);
    const shading::MapRows map = {map_.get(), size_.stride};
    if (mode_ == mode::kGain) {
        shading::buildGainMap(field, targets, map);
    } else {
        shading::buildOffsetMap(field, targets, map);
    }
}

template <class Sample>
void CShadingCorrection::correct(const Frame<Sample>& frame, std::uint32_t maximum) const {
    if (map_ == nullptr || frame.width != size_.width || frame.height != size_.height) return;
    const shading::CorrectRow<Sample> correctRow = correctionOf<Sample>(mode_);
    for (std::size_t y = 0; y < frame.height; ++y) {
        correctRow(frame.row(y), map_.get() + y * size_.stride, frame.width, maximum);
    }
}

std::uint32_t CShadingCorrection::SetTarget(std::uint16_t target) {
    return SetTargets(target * std::uint64_t{0x0001'0001'0001'0001});
}

std::uint32_t CShadingCorrection::GetTarget(std::uint16_t* target) {
    std::uint32_t sum = 0;
    for (const std::uint16_t each : unpackTargets(targets_)) sum += each;
    if (target != nullptr) *target = static_cast<std::uint16_t>(sum >> 2);
    return error::kNone;
}

std::uint32_t CShadingCorrection::SetTargets(std::uint64_t targets) {
    targets_ = targets;
    return error::kNone;
}

std::uint32_t CShadingCorrection::GetTargets(std::uint64_t* targets) {
    if (targets != nullptr) *targets = targets_;
    return error::kNone;
}

std::uint32_t CShadingCorrection::SetColorArray(std::uint16_t colorArray) {
    colorArray_ = colorArray;
    return error::kNone;
}

std::uint32_t CShadingCorrection::GetColorArray(std::uint16_t* colorArray) {
    if (colorArray != nullptr) *colorArray = colorArray_;
    return error::kNone;
}

std::uint32_t CShadingCorrection::SetMap(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                         const void* data) {
    const MapSize size{width, height, stride};
    const bool rowsFit = height == 0 || stride >= std::uint64_t{width} * kEntryBytes;
    if (!rowsFit || (data == nullptr && size.bytes() != 0))
        return platform::failWith(error::kInvalidArgument).code();
    const std::lock_guard lock(mutex_);
    if (map_ == nullptr || size != size_) {
        auto map = allocate<std::uint8_t>(size.bytes());
        if (map == nullptr) return platform::failWith(error::kOutOfMemory).code();
        if (size != size_) frameCount_ = 0;  // the mean does not fit this map
        map_ = std::move(map);
        size_ = size;
    }
    if (data != nullptr) std::memcpy(map_.get(), data, static_cast<std::size_t>(size.bytes()));
    return error::kNone;
}

std::uint32_t CShadingCorrection::GetMap(std::uint32_t* width, std::uint32_t* height, std::uint32_t* stride,
                                         void* data) {
    const std::lock_guard lock(mutex_);
    const MapSize size = map_ != nullptr ? size_ : MapSize{};
    if (width != nullptr) *width = size.width;
    if (height != nullptr) *height = size.height;
    if (stride != nullptr) *stride = size.stride;
    if (map_ != nullptr && data != nullptr)
        std::memcpy(data, map_.get(), static_cast<std::size_t>(size.bytes()));
    return error::kNone;
}

}  // namespace tavra
