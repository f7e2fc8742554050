// Every shipped model: what it sends, and that all of it arrives.
#include <array>
#include <ostream>

#include "e2e/camera_fixture.h"

namespace tavra::e2e {
namespace {

struct Shipped {
    const char* name;
    std::uint16_t colorArray;
    std::uint32_t transferCode;
    std::uint32_t bits;  // of a pixel on the wire
    std::uint32_t previewBytes;
};

void PrintTo(const Shipped& model, std::ostream* stream) {
    *stream << model.name;
}

constexpr std::uint32_t kWidth = 66, kHeight = 48;  // rows of the preview need padding

constexpr std::array kShipped{
    Shipped{"alc", 1, 1, 8, 1},
    Shipped{"bayer", 2, 1, 8, 3},
    Shipped{"bayer12p", 3, 0x20000, 12, 3},
    Shipped{"bgr", 2, 1024, 24, 3},
    Shipped{"binning", 1, 1, 8, 1},
    Shipped{"legacy1541", 1, 1, 8, 1},
    Shipped{"legacy1797", 2, 1, 8, 3},
    Shipped{"legacy2053", 2, 1, 8, 3},
    Shipped{"legacy773", 1, 1, 8, 1},
    Shipped{"mirror", 5, 1, 8, 3},
    Shipped{"mono", 1, 1, 8, 1},
    Shipped{"mono16", 1, 16, 16, 1},
    Shipped{"pattern", 12, 1, 8, 1},
    Shipped{"quad", 16, 1, 8, 3},
    Shipped{"statusword", 2, 1, 8, 3},
    Shipped{"usb2", 1, 1, 8, 1},
    Shipped{"wb", 2, 1, 8, 3},
    Shipped{"ycbcr", 2, 0x2000, 16, 3},
};

class ShippedModel : public ::testing::TestWithParam<Shipped> {
  protected:
    static std::uint32_t rawSize() { return kWidth * kHeight * GetParam().bits / 8; }
    static std::uint32_t lineBytes() { return (kWidth * GetParam().previewBytes + 3) / 4 * 4; }

    static void expectFiveFrames(Camera& camera) {
        FrameLog log;
        log.takeRawOf(camera);
        camera.start();
        const std::vector<Frame> frames = log.waitFor(5);
        camera.stop();
        ASSERT_GE(frames.size(), 5u);
        for (const Frame& frame : frames) {
            EXPECT_EQ(frame.bytes.size(), rawSize());
            EXPECT_EQ(frame.width, kWidth);
            EXPECT_EQ(frame.height, kHeight);
            EXPECT_EQ(frame.colorArray, GetParam().colorArray);
            EXPECT_EQ(frame.code, GetParam().transferCode);
        }
        expectRisingNumbers(frames);
        ASSERT_TRUE(Tavra_RemoveAllRawCallback(camera));
    }

    static void expectPreview(Camera& camera) {
        std::uint32_t total = 0, width = 0, height = 0, line = 0, format = 0;
        ASSERT_TRUE(Tavra_GetPreviewDataSize(camera, &total, &width, &height, &line));
        ASSERT_TRUE(Tavra_GetPreviewPixelFormat(camera, &format));
        EXPECT_EQ(width, kWidth);
        EXPECT_EQ(height, kHeight);
        EXPECT_EQ(line, lineBytes());
        EXPECT_EQ(total, lineBytes() * kHeight);
        EXPECT_EQ(format, GetParam().previewBytes == 1 ? TAVRA_PIXEL_MONO_8 : TAVRA_PIXEL_BGR_24);
        const Bytes image = takePreview(camera);
        ASSERT_EQ(image.size(), total);
        EXPECT_NE(image, Bytes(total, image[0])) << "a picture has more than one value";
        camera.expect(TAVRA_MESSAGE_TRANSFER_STARTED);
        EXPECT_EQ(camera.expectEnd(), 0u);
    }
};

TEST_P(ShippedModel, StreamsGivesAPreviewAndOpensAgain) {
    useCameras(std::string(GetParam().name) + ":geometry.width_step=2:width=66:height=48:pace=off");
    EXPECT_EQ(Tavra_CameraCount(), 1u);
    for (int opening = 0; opening < 2; ++opening) {
        Camera camera;
        ASSERT_TRUE(camera.isOpen()) << std::hex << Tavra_GetLastError(nullptr);
        EXPECT_EQ(rawSizeOf(camera), rawSize());
        expectFiveFrames(camera);
        expectPreview(camera);
        camera.expectNoMessage();
    }
}

INSTANTIATE_TEST_SUITE_P(All, ShippedModel, ::testing::ValuesIn(kShipped),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(ShippedModels, RegionsSendAllTheirPixels) {
    useCameras("regions:pace=off");
    for (int opening = 0; opening < 2; ++opening) {
        Camera camera;
        ASSERT_TRUE(camera.isOpen());
        std::uint32_t count = 0, pixels = 0;
        ASSERT_TRUE(Tavra_GetMaxROICount(camera, &count));
        EXPECT_EQ(count, 8u);
        for (std::uint32_t i = 0; i < count; ++i) {
            std::uint32_t enabled = 0, width = 0, height = 0;
            ASSERT_TRUE(Tavra_GetROI(camera, i, &enabled, nullptr, nullptr, &width, &height));
            if (enabled != 0) pixels += width * height;
        }
        EXPECT_EQ(rawSizeOf(camera), pixels);
        FrameLog log;
        log.takeRawOf(camera);
        camera.start();
        for (const Frame& frame : log.waitFor(5)) EXPECT_EQ(frame.bytes.size(), pixels);
        camera.stop();
    }
}

}  // namespace
}  // namespace tavra::e2e
