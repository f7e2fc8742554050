// A draw object on surfaces without pixels: a window with a client area of 100 x 80 at (20, 30) of the
// desktop, and images of 64 x 48 pixels with three bytes each.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <string>
#include <vector>

#include "support/surface_double.h"
#include "support/window_double.h"

namespace tavra::test {

using Log = std::vector<std::string>;

inline Log operator+(Log first, const Log& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// Runs on another thread, to the end.
template <typename Work>
auto elsewhere(Work work) {
    return std::async(std::launch::async, work).get();
}

template <typename BackEnd>
class SurfaceFixture : public testing::Test {
  protected:
    static constexpr std::uint32_t kFailure = SurfaceSystemDouble::kFailure;
    static constexpr std::uint32_t kNotReady = 0x887601CC;
    static constexpr std::uint32_t kOrder16 = 0, kOrder32 = 1;

    explicit SurfaceFixture(std::uint32_t order = kOrder16) : object(system, surfaces, order) {
        system.exists = true;
        system.setClient(20, 30, 100, 80);
        EXPECT_TRUE(image.create({64, 48, 24}).ok());
        surfaces.memory.resize(1 << 16);
        surfaces.pitch = 256;
        info.deviceContext = &paint;
        info.bitmap = &image;
        info.frameId = 1;
    }

    std::uint32_t create() { return object.Create(system.handle(), 64, 48, 8); }
    void createQuietly() {
        ASSERT_EQ(create(), 0u);
        surfaces.takeLog();
    }
    void setImage(const platform::BitmapShape& shape) {
        ASSERT_TRUE(image.create(shape).ok());
        source = {0, 0, static_cast<int>(shape.width), static_cast<int>(shape.height)};
    }
    // Of the next frame, unless told otherwise.
    std::uint32_t draw() {
        info.bits = image.pixels();
        return object.Draw(&source, &destination, background, info);
    }
    std::uint32_t drawNext() {
        ++info.frameId;
        return draw();
    }
    Log logOf(std::uint32_t (SurfaceFixture::*operation)()) {
        surfaces.takeLog();
        (this->*operation)();
        return surfaces.takeLog();
    }

    WindowDouble system;
    SurfaceSystemDouble surfaces;
    RecordingPaint paint;
    platform::Bitmap image;
    DrawImageInfo info;
    Rectangle source{0, 0, 64, 48};
    Rectangle destination{18, 16, 82, 64};
    BackgroundRectangles background{
        Rectangle{0, 0, 18, 80}, {18, 0, 100, 16}, {82, 16, 100, 80}, {18, 64, 82, 80}};
    BackEnd object;
};

}  // namespace tavra::test
