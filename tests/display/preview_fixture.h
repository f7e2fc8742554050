// A preview window that exists in memory only, and the camera that it shows.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "display/preview_window.h"
#include "support/window_double.h"

namespace tavra::test {

using testing::ElementsAre;
using testing::IsEmpty;

inline constexpr std::uint32_t kScrolls = platform::kStyleHorizontalScroll | platform::kStyleVerticalScroll;

// A camera with images of 64 x 48 pixels that remembers what was posted.
class CameraDouble final : public IPreviewCamera {
  public:
    CameraDouble() {
        EXPECT_TRUE(imagesA.create({64, 48, 24}).ok());
        EXPECT_TRUE(imagesB.create({48, 64, 24}).ok());
    }
    ImageSize previewImageSize() const override {
        if (whenAskedForTheImage) whenAskedForTheImage();
        return size;
    }
    std::uint32_t previewPixelFormat() const override { return format; }
    bool previewIsRotated() const override { return rotated; }
    ImageBufferSet& previewImages(bool turned) override { return turned ? imagesB : imagesA; }
    Status postToReceiver(std::uint32_t message, std::uint64_t parameter) override {
        posts.emplace_back(message, parameter);
        return postResult;
    }
    void notePreviewFailure(Status status) override {
        if (!status.ok()) lastError = status.code();
    }

    using Post = std::pair<std::uint32_t, std::uint64_t>;
    std::vector<Post> takePosts() { return std::exchange(posts, {}); }

    ImageSize size{64, 48};
    std::uint32_t format = 4;
    bool rotated = false;
    ImageBufferSet imagesA, imagesB;
    std::vector<Post> posts;
    Status postResult;
    std::uint32_t lastError = 0;
    std::function<void()> whenAskedForTheImage;
};

class Preview : public testing::Test {
  protected:
    Preview() {
        window.mask.store({0, 0, 64, 48});
        window.destination.store({0, 0, 64, 48});
    }

    // A window with a client area of 100 x 80.
    void open(std::uint32_t style = 0) {
        PreviewRequest request;
        request.style = style;
        request.place = {20, 30, 100, 80};
        request.parent = parent;
        ASSERT_TRUE(window.create(request).ok());
        system.setClient(20, 30, 100, 80);
        system.takeLog();
        camera.takePosts();
    }
    std::vector<std::string> paint() {
        RecordingPaint recorder;
        const Rectangle& client = system.client;
        system.events->onPaint(recorder, {static_cast<std::uint32_t>(client.width()),
                                          static_cast<std::uint32_t>(client.height())});
        return recorder.log;
    }
    void mouse(std::uint32_t message, int x, int y) { system.events->onMouse({message, 0, x, y}); }
    static CameraDouble::Post message(std::uint32_t code, std::uint64_t parameter = 0) {
        return {code, parameter};
    }
    std::uint64_t windowNumber() { return reinterpret_cast<std::uintptr_t>(system.handle()); }

    WindowDouble system;
    CameraDouble camera;
    PreviewWindow window{camera, system};
    TavraWindow parent = nullptr;
};

}  // namespace tavra::test
