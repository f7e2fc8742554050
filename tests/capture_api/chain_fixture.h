// A stream whose stages all act, and the same settings for the chain that its images are compared with.
#pragma once

#include <vector>

#include "capture_api/plain_chain.h"
#include "capture_api/stream_fixture.h"

namespace tavra::test {

// Settings under which no two neighbouring stages can change places without a change of the image.
inline void dress(TAVRA_COMMON_PARAM& stages, std::uint32_t width, std::uint32_t height) {
    stages.noiseReduction.setMode(TAVRA_NOISE_REDUCTION_MEDIAN);
    ASSERT_TRUE(stages.whiteBalance->setMode(TAVRA_WHITE_BALANCE_MANUAL).ok());
    ASSERT_TRUE(stages.whiteBalance->setGains({200, 140, 120, 90}).ok());
    std::vector<std::int32_t> map(std::size_t{width} * height);
    for (std::size_t i = 0; i < map.size(); ++i) map[i] = static_cast<std::int32_t>(100 + i * 7 % 60);
    ASSERT_EQ(stages.shadingCorrection->SetMap(width, height, 4 * width, map.data()), 0u);
    ASSERT_EQ(stages.shadingCorrection->SetMode(2), 0u);
    for (std::uint8_t curve = 0; curve < 5; ++curve) {
        const auto exponent = static_cast<std::uint16_t>(140 + 30 * curve);
        ASSERT_EQ(stages.gamma->SetGamma(curve, 1, exponent, 5, 130, nullptr, 8), 0u);
    }
    ASSERT_EQ(stages.sharpness->SetMode(1, 150, 2), 0u);
    const std::int16_t matrix[12] = {120, -30, 10, 3, -20, 130, -10, 0, 15, -25, 110, -2};
    ASSERT_EQ(stages.colorMatrix->SetColorMatrix(0xFF, matrix), 0u);
    ASSERT_EQ(stages.colorMatrix->SetHueSaturation(1, 100, 120), 0u);
    ASSERT_EQ(stages.chromaSuppress->SetHighThreshold(140), 0u);
    ASSERT_EQ(stages.chromaSuppress->SetHighStrength(90), 0u);
    ASSERT_EQ(stages.chromaSuppress->SetLowThreshold(60), 0u);
    ASSERT_EQ(stages.chromaSuppress->SetLowStrength(150), 0u);
}

class ChainTest : public StreamTest {
  protected:
    static constexpr std::uint32_t kReducingTrigger = 0x1001;  // first mode, exposure mode 2

    void openWithTriggerWord(const ChainFrame& frame, std::uint32_t word) {
        DoubleCamera& camera = describe(frame.transferBits, frame.colorArray, frame.width, frame.height);
        camera.status(48) = static_cast<std::uint16_t>(word);
        camera.status(49) = static_cast<std::uint16_t>(word >> 16);
        open();
        ASSERT_EQ(rawSize, frame.width * frame.height * transferBitsPerPixel(frame.transferBits) / 8);
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, frame.previewFormat));
        ASSERT_TRUE(Tavra_SetColorInterpolationMethod(handle, frame.method));
        ASSERT_TRUE(Tavra_SetMirrorMode(handle, frame.mirror));
        ASSERT_TRUE(Tavra_SetRotationMode(handle, frame.rotation));
    }
    void open(const ChainFrame& frame) {
        openWithTriggerWord(frame, frame.reducesNoise ? kReducingTrigger : 0);
    }
    using StreamTest::open;
    void close() {
        if (handle != nullptr) Tavra_Close(handle);
        handle = nullptr;
        usb.reset();
    }

    // Bytes without any order, the same for the same seed.
    Bytes noise(std::uint32_t seed) const {
        Bytes raw(rawSize);
        for (std::uint8_t& byte : raw) {
            seed = seed * 1664525 + 1013904223;
            byte = static_cast<std::uint8_t>(seed >> 24);
        }
        return raw;
    }

    // The preview of one frame, in a run of its own.
    SeenImage preview(const Bytes& raw) {
        Collected<SeenImage> seen;
        std::uint32_t identifier = 0;
        EXPECT_TRUE(Tavra_AddPreviewBitmapCallback(handle, seeImage, &seen, &identifier));
        start();
        sendFrame(1, raw);
        const auto all = seen.waitFor(1);
        stopAndExpectCode(0);
        EXPECT_TRUE(Tavra_RemovePreviewBitmapCallback(handle, identifier));
        EXPECT_EQ(all.size(), 1u);
        return all.empty() ? SeenImage{} : all[0];
    }
};

}  // namespace tavra::test
