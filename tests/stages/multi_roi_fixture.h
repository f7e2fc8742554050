// Layouts of regions, and the stage that composes them.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "stages/factory.h"
#include "stages/multi_roi_image.h"

namespace tavra::test {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint64_t kMono8 = 0x01080001;
inline constexpr std::uint64_t kMono10Packed = 0x010A0046;
inline constexpr std::uint64_t kMono12Packed = 0x010C0047;
inline constexpr std::uint64_t kMono16 = 0x01100007;

struct Rect {
    std::uint32_t x, y, width, height;
    bool enabled = true;
};

class Layout final : public IRegionInfo {
  public:
    explicit Layout(std::vector<Rect> all, std::uint32_t regionMode = 0)
        : rects(std::move(all)), mode(regionMode) {}

    std::uint32_t GetMaxROICount() override {
        if (count != 0) return count;
        return static_cast<std::uint32_t>(rects.size());
    }
    std::uint32_t GetROIMode() override { return mode; }
    void GetROI(std::uint32_t index, std::uint32_t* enabled, std::uint32_t* x, std::uint32_t* y,
                std::uint32_t* width, std::uint32_t* height) override {
        if (index == failsAt) throw std::runtime_error("no answer");
        const Rect rect = rects.at(index);
        *enabled = rect.enabled ? 1 : 0;
        *x = rect.x;
        *y = rect.y;
        *width = rect.width;
        *height = rect.height;
    }
    std::uint32_t GetROIGroup() override { return 0; }

    std::vector<Rect> rects;
    std::uint32_t mode;
    std::uint32_t count = 0;  // in place of the number of rectangles
    std::uint32_t failsAt = 0xFFFFFFFF;
};

struct Release {
    void operator()(IMultiROIImage* stage) const { stage->Release(); }
};

class MultiRoiImage : public testing::Test {
  protected:
    std::uint32_t setup(std::vector<Rect> rects, std::uint32_t alignment = 1, std::uint32_t mode = 0) {
        Layout layout(std::move(rects), mode);
        return stage->Setup(&layout, alignment);
    }
    Bytes canvas(const std::uint8_t* image) {
        return {image, image + stage->GetComposedStride() * stage->GetComposedSize(1)};
    }
    std::uint8_t* compose(Bytes& frame, std::uint64_t format = kMono8, std::uint64_t id = 0) {
        return stage->Compose(id, frame.data(), frame.size(), format);
    }

    std::unique_ptr<IMultiROIImage, Release> stage{static_cast<IMultiROIImage*>(CreateStageObject(160))};
};

// Every region of a frame of its own value: 1, 2, ...
inline Bytes plainFrame(const std::vector<Rect>& rects, std::size_t pixelBytes = 1) {
    Bytes frame;
    std::uint8_t value = 0;
    for (const Rect& rect : rects) {
        frame.insert(frame.end(), std::size_t{rect.width} * rect.height * pixelBytes, ++value);
    }
    return frame;
}

}  // namespace tavra::test
